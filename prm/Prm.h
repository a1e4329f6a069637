#pragma once

/// An index: every public class under the header that declares it.
namespace Prm {

// prm/Time.h
class Time;
class Frame;

// prm/TimeSpan.h
struct TimeSpan; // the times from one to another
class TimeSpans; // a set of times

// prm/View.h
class View;

// prm/AnimationState.h
class AnimationFlags;
class AnimationState;

// prm/Context.h
class BaseContext;
class Context;
class KeyframeIndex;

// prm/ProxyScale.h
class ProxyScale;

// prm/Interpolation.h
struct IType; // a keyframe's interpolation kind and its shape numbers

// prm/Easing.h
struct Easing; // a named course of a segment

// prm/KeyframeData.h
template <class T> struct KeyframeData; // one keyframe: time, value, interpolation
struct BoundingKeyframes;

// prm/ViewInterpolation.h
struct MVInterpolationParams; // how the value of a view without data is computed

// prm/TextStreamOperators.h
// text of bool, unsigned char, QPoint and QPointF

// prm/ValueType.h
template <class T> struct GeneralValueType;
template <class T> struct ValueType; // what the library needs to know of a type of values

// prm/ProjectFileVersion.h
class BuildVersion;
class ProjectFileVersion;

// prm/Views.h
class IAnimationStateProvider; // the host's
class IViewsProvider;
class Views;

// prm/ParameterChange.h
class ParameterChange;
class ScopedSignalPermit;

// prm/BasicParameter.h
class BasicParameter;

// prm/ParameterWithoutType.h
class ParameterWithoutType;

// prm/ParameterWithoutTypeBase.h
class ParameterWithoutTypeBase;

// prm/Explanation.h
struct Explanation; // why a parameter has its value: made by explain()

// prm/NumericParameterWithoutType.h
class NumericParameterWithoutType;

// prm/SerialisedKeyframe.h
class SerialisedKeyframe;

// prm/Retiming.h
struct Retiming;

// prm/KeyframeHandles.h
struct HandlePoint;
struct KeyframeHandles;
struct HandleChange;

// prm/KeyframeChange.h
struct KeyframeChange; // what an edit does with selected keyframes

// prm/UndoableEdit.h
struct EditSummary;
class UndoableEdit; // a command with a text; undoText() and mergeEdits() serve undo stacks

// prm/ParameterEdit.h
struct EditWords;
class ParameterEdit; // a change that can be undone
class ParameterSnapshotEdit;

// prm/ParameterEdits.h: classes derived from it
class ParameterSettingEdit;
class ParameterAddKeyEdit;
class ParameterDeleteKeyEdit;
class ParameterDeleteAllKeysEdit;
class ParameterInterpolationEdit;
class ParameterInterpolationDataEdit;
class ParameterExtrapolationBeforeEdit;
class ParameterExtrapolationAfterEdit;
class ParameterSetValueEdit;
class ParameterSetStaticValueEdit;
class ParameterResetEdit;
class ParameterSplitViewEdit;
class ParameterDeleteViewEdit;
class ParameterRetimeEdit;
class ParameterPasteKeyframesEdit;
class ParameterAddConstrainedParameterEdit;
class ParameterWithoutTypeHideEdit;
class ParameterWithoutTypeLockEdit;
class ParameterWithoutTypeUnconstrainEdit;

// prm/MoveKeyframeEdit.h
class MoveKeyframeEdit;

// prm/ReshapingEdits.h
class ParameterReshapeEdit; // an edit of keyframes as a whole; derived classes:
class ParameterInsertKeyframeEdit;
class ParameterEaseEdit;
class ParameterSimplifyEdit;
class ParameterBakeEdit;
class ParameterSmoothEdit;
class ParameterReverseEdit;
class ParameterScaleValuesEdit;
struct KeyframeSpan;
struct ValueScaling;

// prm/HandlesEdit.h
class ParameterHandlesEdit; // and handles(), which returns them as points

// prm/ParameterOptions.h
// ParameterOption, ParameterOptions: Keyframed, Splittable, Locked, Hidden

// prm/Parameter.h
class Cache; // the host's
template <class T> class Parameter;

// prm/CurveParameter.h
template <class T> class CurveParameter;

// prm/Answers.h
// constantAround, isConstant, bounds, slope, keyframes, polyline, sampleValues: questions about spans of times

// prm/RangeHash.h
// hashRange, hashAt: hashes of all values in a span

// prm/NumericParameter.h
template <class T> class NumericParameter;

// prm/StaticParameter.h
template <class T> class StaticParameter;
template <class T> class VirtualParameter;     // its value is a variable of the host
template <class T> class OwnedStaticParameter; // stores its value itself

// prm/MovedParameter.h
class MovedParameter;

// prm/ParameterTree.h
struct ParameterTree; // the host's

// prm/ParameterSet.h
class ParameterSet;

// prm/CompoundParameter.h
class CompoundParameter;

// prm/ParameterSetEdits.h
class ParameterSetEdit; // adds or removes a member; derived classes:
class ParameterSetAddEdit;
class ParameterSetRemoveEdit;

// prm/KeyframeSelection.h
class KeyframeSelection; // keyframes of several parameters

// prm/KeyframeSelectionEdit.h
class KeyframeSelectionEdit;
class InteractiveKeyframeEdit; // drags a selection

// prm/KeyframeClipboard.h
class KeyframeClipboard; // copies and pastes them as text

// prm/Extent.h
class Extent; // where values may differ after a change

// prm/ChangedSince.h
class ChangedSince; // what has changed below a set since it was asked last

// prm/ProjectFile.h
struct ProjectFileFinding;
class ProjectFile;

// prm/GuessedSets.h
// sets and parameters for a project text whose application is not there

// prm/ProjectDiff.h
struct ProjectDifference; // one thing that two project texts do not say alike

// prm/ProjectMerge.h
struct ProjectConflict; // one thing that both sides have changed
struct MergedProject;

// prm/Exchange.h
struct ImportedText;
struct ExportOptions;
struct ExportedText; // a project text in another form

} // namespace Prm

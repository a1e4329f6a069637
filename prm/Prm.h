#pragma once

/// The index of the house: every public class under the header that declares it.
namespace Prm {

// prm/Time.h
class Time;
class Frame;

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

// prm/NumericParameterWithoutType.h
class NumericParameterWithoutType;

// prm/SerialisedKeyframe.h
class SerialisedKeyframe;

} // namespace Prm

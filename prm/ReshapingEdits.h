#pragma once

#include "prm/Easing.h"
#include "prm/Export.h"
#include "prm/ParameterEdits.h"

#include <QString>

#include <memory>

namespace Prm {

namespace detail {
struct Reshaping;
class ReshapingPlan;
} // namespace detail

/// The keyframes of a view, or of all views with data, from one time to another, both included. A new one has all
/// keyframes of all views.
///
/// \snippet reshaping.cpp simplify
/// \threads A plain value.
struct PRM_EXPORT KeyframeSpan {
    KeyframeSpan in(const View& only) const { return {only, first, last}; }
    KeyframeSpan between(Time from, Time to) const { return {view, from, to}; }

    View view = View(View::INVALID());
    Time first = detail::Place::earliest();
    Time last = Time::LAST;
};

/// An edit that reshapes the keyframes of a parameter as a whole; of a compound, those of each part. A parameter that
/// is not splittable has one place for all views.
///
/// Everything is computed before anything changes. If one part or view refuses, nothing is done. Where a compound keys
/// its parts together, each part keeps a keyframe at every time at which another one has one; keyframes that are added
/// for that keep the curve. A locked flag is for the host.
///
/// Emits for each parameter that changes: one KEYFRAME_MOVED for each view if only times have changed, in the same
/// order; otherwise one PARAMETER_ASSIGNED, for all views, whose extent is the difference. VIEW_ADDED comes before it
/// where a view gains data. Nothing is emitted if nothing changes.
///
/// \snippet reshaping.cpp insert
class PRM_EXPORT ParameterReshapeEdit : public ParameterSnapshotEdit {
public:
    ~ParameterReshapeEdit() override;
    /// Why doing the edit now would be refused, in words that follow a colon; empty if it would not.
    QString refusal() const;

protected:
    /// In one view; in all views with data for the invalid view.
    ParameterReshapeEdit(ParameterWithoutType& parameter, const View& view, const detail::Reshaping& how);

    bool applies() override;
    void apply() override;
    int countNow() const override;
    detail::Places places() const override;

private:
    std::unique_ptr<detail::ReshapingPlan> planned() const;

    View m_view;
    std::unique_ptr<const detail::Reshaping> m_how;
    /// From `applies` to `apply`.
    std::unique_ptr<const detail::ReshapingPlan> m_plan;
};

/// Inserts a keyframe and keeps the curve: a Bezier segment is cut by de Casteljau's algorithm, and both halves are as
/// before within 1e-12 of their values. A view without data gets a copy of what it shows. Does nothing where there is
/// a keyframe.
///
/// Refuses where the values are computed by a function or a class of the application, where a view without data shows a
/// blend of others, and in a segment that is vertical within.
///
/// \snippet reshaping.cpp insert
class PRM_EXPORT ParameterInsertKeyframeEdit : public ParameterReshapeEdit {
public:
    enum Inexact {
        /// Where a half would begin and end at one value although it bends, a shape cannot say that: it also gets a
        /// keyframe at its extremum. The value of `int` and `unsigned int` is rounded, and the halves keep their
        /// shapes: before rounding, the curve moves by half a whole number at most.
        AddOrRound,
        /// Refuses in these cases.
        Refuse
    };

    /// At the context's time in its view; in all views with data for the invalid view.
    ParameterInsertKeyframeEdit(ParameterWithoutType& parameter, const Context& at, Inexact inexact = AddOrRound);
};

/// Gives the segments between the keyframes of a span an easing; a span of one time, the segment that begins there. An
/// easing of several parts adds keyframes, except between equal values, which no easing changes.
///
/// \snippet reshaping.cpp ease
class PRM_EXPORT ParameterEaseEdit : public ParameterReshapeEdit {
public:
    ParameterEaseEdit(ParameterWithoutType& parameter, const KeyframeSpan& span, const Easing& easing);
};

/// Removes keyframes of a span as long as no value moves by more than an error, before rounding to whole numbers. The
/// error holds at every time: it is bounded where the difference is greatest, not at samples. Keyframes that are kept
/// keep time and value, and their curve where none was removed after them.
///
/// Kept are the ends of the span, corners and extrema that stand out by more than the error, holds, the segments that
/// linear extrapolation continues, and segments that a function of the application computes. Refuses for classes that
/// compute values themselves.
///
/// \snippet reshaping.cpp simplify
class PRM_EXPORT ParameterSimplifyEdit : public ParameterReshapeEdit {
public:
    enum Curves {
        Bezier, ///< segments of both kinds
        Linear  ///< straight segments only; keyframes may be added on Bezier segments
    };

    ParameterSimplifyEdit(ParameterWithoutType& parameter, const KeyframeSpan& span, double error,
                          Curves curves = Bezier);
};

/// Replaces the keyframes of a span by one at every step from its first time on, and one at its last, each with the
/// value that is shown: of a master, which is then removed, of other views, of functions and classes of the
/// application. Segments also pass the values at a third and at two thirds of the step where a curve can, and comes
/// near what is shown, as it does not at the end of a hold; otherwise, and with `Linear`, they are straight. They are
/// Constant if values do not blend. A step that leads to a keyframe, as far as single precision can tell, is at its
/// time. Outside the span the curve is kept; a keyframe is inserted at its ends for that. A view that is named and has
/// no data gets some.
///
/// Does nothing for a span without end in a view without keyframes. Refuses steps that are not above 0, and more than
/// 2^24 of them. A part of a compound keeps its master.
///
/// \snippet reshaping.cpp bake
class PRM_EXPORT ParameterBakeEdit : public ParameterReshapeEdit {
public:
    enum Curves { Bezier, Linear };

    ParameterBakeEdit(ParameterWithoutType& parameter, const KeyframeSpan& span, double step = 1.0,
                      Curves curves = Bezier);

protected:
    bool applies() override;
    void apply() override;
    detail::State takeState() const override;
    bool mayUndo(const detail::State& former) const override;
};

/// Replaces the keyframes of a span by means: bakes it with a step, makes each value but the first and last the mean of
/// those around it with the weights of a normal distribution, and simplifies the result within an error.
///
/// \snippet reshaping.cpp smooth
class PRM_EXPORT ParameterSmoothEdit : public ParameterReshapeEdit {
public:
    /// `radius` is the standard deviation, in frames.
    ParameterSmoothEdit(ParameterWithoutType& parameter, const KeyframeSpan& span, double radius, double error,
                        double step = 1.0);
};

/// Reverses time for the keyframes of a span: t becomes 2 * pivot - t, and curves run the other way. The invalid pivot
/// means the middle of each view's keyframes. A hold keeps the value of its other end. A keyframe that meets one
/// outside the span replaces it. Extrapolation stays. Twice gives the same keyframes, to the bit for times and shapes
/// that are decimals of up to 15 digits after the point.
///
/// \snippet reshaping.cpp reverse
class PRM_EXPORT ParameterReverseEdit : public ParameterReshapeEdit {
public:
    ParameterReverseEdit(ParameterWithoutType& parameter, const KeyframeSpan& span, Time pivot = Time(Time::INVALID));
};

/// A mapping of values: v becomes `pivot + scale * (v - pivot) + offset`.
///
/// \snippet reshaping.cpp values
/// \threads A plain value.
struct PRM_EXPORT ValueScaling {
    static ValueScaling shifted(double offset) { return {1.0, 0.0, offset}; }
    static ValueScaling scaled(double factor, double pivot = 0.0) { return {factor, pivot, 0.0}; }
    static ValueScaling mirrored(double pivot = 0.0) { return {-1.0, pivot, 0.0}; }

    double scale = 1.0;
    double pivot = 0.0;
    double offset = 0.0;
    /// Of a point, 0 for x, 1 for y; -1 for both.
    int component = -1;
};

/// Maps the values of the keyframes of a span, and the static value of a view without keyframes. Curves keep their
/// shape. Offsets and mirroring twice, there and back, give the same values to the bit if these are decimals of up to
/// 15 digits after the point; so does scaling by powers of two. Refuses types that do not blend, and results that are
/// not finite.
///
/// \snippet reshaping.cpp values
class PRM_EXPORT ParameterScaleValuesEdit : public ParameterReshapeEdit {
public:
    ParameterScaleValuesEdit(ParameterWithoutType& parameter, const KeyframeSpan& span, const ValueScaling& scaling);
};

} // namespace Prm

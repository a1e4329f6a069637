#pragma once

#include "prm/Export.h"
#include "prm/Parameter.h"
#include "prm/TimeSpan.h"
#include "prm/track/ConstantSpan.h"
#include "prm/track/Polyline.h"
#include "prm/track/Ranges.h"
#include "prm/track/SlopeAfter.h"

#include <QVector>

#include <algorithm>
#include <utility>

namespace Prm {

// Questions that a renderer and an editor ask about what a parameter shows in a view over a span of times. The values
// are those of `Parameter<T>::value`: of the master if there is one of the same type, of the source data in a view
// without data, or a blend of the views with data.
//
// What cannot be known is never claimed. A function that a host registered for a custom kind, and the hooks of a
// host's class, may compute any value: such values are constant at a single time only, their bounds are those of the
// type, slopes are difference quotients, and curves are sampled. A class of a host that overrides nothing of evaluation
// is as well known as the library's own. Of a value type of a host's that blends, its components must rise and fall
// with what `fromComponents` is given.
//
// All are safe on any thread where `value` is. Each answers about one state, as `value` does: the data are held while
// it works. An edit of the same view meanwhile copies the list of keyframes.

/// A point of a curve: time and value.
template <class T> using CurvePoint = std::pair<Time, T>;

/// The longest span around the context's time in which the value stays the same, by `ValueType<T>::equal`; it contains
/// that time. It ends at keyframes or is endless; that of `int` and `unsigned int` may end between keyframes. In a view
/// that blends others it ends where one of these changes. Takes O(log keyframes), and O(1) for each keyframe that it
/// passes.
template <class T> TimeSpan constantAround(const Parameter<T>& parameter, const Context& context);

/// The same for parameters of any kind. A static parameter is constant; a compound is while all its subparameters are,
/// from which a host's class of compounds has to compute its value; of a host's other kinds nothing is known.
PRM_EXPORT TimeSpan constantAround(const BasicParameter& parameter, const Context& context);

/// Whether the parameter has one value, by `ValueType<T>::equal`, at all times of the span; true for an empty span.
template <class T> bool isConstant(const Parameter<T>& parameter, const View& view, const TimeSpan& span);

/// The same for parameters of any kind.
PRM_EXPORT bool isConstant(const BasicParameter& parameter, const View& view, const TimeSpan& span);

/// The least and the greatest value in the span, each component on its own: extrema of Bezier segments, extrapolation
/// and what excluded ends come close to included. For types that blend, `bool` and `QPoint`.
///
/// - Exact for one view. Where a curve turns within a Bezier segment, the bound is beyond the extremum by a few last
///   digits, so that every value is within the bounds; where the span ends in a Bezier segment, values within the
///   rounding of that end may be outside by as much.
/// - A view that blends others: contains every value; wider where the others differ in the same stretch.
/// - Linear extrapolation in an endless span: infinite, or the limits of the type.
/// - Where a value is not a number, and where values cannot be known: the limits of the type. Twice NaN if all values
///   are NaN.
/// - An empty span: the value at its beginning.
///
/// Takes O(log keyframes + keyframes in the span).
template <class T> std::pair<T, T> bounds(const Parameter<T>& parameter, const View& view, const TimeSpan& span);

/// The change per frame of each component, for types that blend. At corners and steps it is the slope after the time,
/// at the last keyframe that of the extrapolation. 0 where the value is held; infinite where a Bezier segment is
/// vertical. For values that are rounded: that of the curve before rounding, rounded itself. Where a function or hook
/// of a host's computes the value: the difference quotient over the next 1/1024 of a frame.
template <class T> T slope(const Parameter<T>& parameter, const Context& context);

/// The keyframes of the view at the times of the span, those that `keyframeCount` and `keyframe` return: none in a view
/// without data of a splittable parameter, and not those of a master. Takes O(log keyframes + keyframes in the span).
template <class T>
QVector<KeyframeData<T>> keyframes(const Parameter<T>& parameter, const View& view, const TimeSpan& span);

/// Points, in ascending order of time, between which straight lines show the curve in the span: no value is further
/// from the line at its time than the tolerance, in any component. A step is two points at one time. For the types of
/// `bounds`.
///
/// - `resolution`, in frames, is what an editor cannot show apart, normally the width of a pixel. Of each stretch of
///   that length with more than four keyframes, only the first and the last value, the least and the greatest are
///   returned, the latter two in its middle. 0, the default: everything.
/// - Endless spans are cut at the first and the last keyframe. At an excluded end the curve begins or ends at the next
///   time in the span.
/// - A tolerance that is negative or NaN counts as 0. Tolerances below 3e-8 of the height of a Bezier segment count as
///   that, and `int` and `unsigned int` are not resolved finer than 1/65536 of their range between two keyframes.
/// - Of a host's type that rounds, the tolerance is that of the curve before rounding.
/// - Segments with a function of a host's are sampled at 64 times, parameters with hooks at 1025: there the tolerance
///   is not promised.
///
/// Takes O(log keyframes + keyframes in the span), and as many evaluations as it has points at Bezier segments.
template <class T>
QVector<CurvePoint<T>> polyline(const Parameter<T>& parameter, const View& view, const TimeSpan& span, double tolerance,
                                double resolution = 0.0);

/// The values at `count` times from the first one on, `step` frames apart; times may be negative. Nothing if `count` is
/// not positive.
template <class T>
QVector<T> sampleValues(const Parameter<T>& parameter, const View& view, Time first, double step, int count);

namespace detail {

/// What these questions read of a parameter.
class Ask {
public:
    template <class T> static Shown<T> shownIn(const Parameter<T>& parameter, const View& view) {
        return parameter.shownIn(view);
    }
    template <class T>
    static QVector<KeyframeData<T>> keyframesIn(const Parameter<T>& parameter, const View& view, const TimeSpan& span) {
        return parameter.keyframesIn(view, span);
    }
    template <class T>
    static QVector<CurvePoint<T>> sampledPoints(const Parameter<T>& parameter, const View& view, const Moments& span) {
        constexpr int steps = 1024;
        QVector<Time> times;
        for (int i = 0; i < steps; ++i)
            times.append(Time::fromDouble(span.at(1.0 * i / steps)));
        times.append(Time::fromDouble(span.last));
        QVector<T> values(times.size());
        parameter.sampleValues(times.constData(), times.size(), view, values.data());
        QVector<CurvePoint<T>> points;
        for (int i = 0; i < times.size(); ++i)
            points.append({times.at(i), values.at(i)});
        return points;
    }
};

} // namespace detail

template <class T> TimeSpan constantAround(const Parameter<T>& parameter, const Context& context) {
    const detail::Shown<T> shown = detail::Ask::shownIn(parameter, context.view);
    return shown.hooks ? TimeSpan::at(context.time) : detail::ConstantSpan<T>(shown, context.time).find();
}

template <class T> bool isConstant(const Parameter<T>& parameter, const View& view, const TimeSpan& span) {
    const detail::Moments moments = detail::Moments::of(span);
    if (moments.isEmpty() || moments.first == moments.last)
        return true;
    const detail::Shown<T> shown = detail::Ask::shownIn(parameter, view);
    return !shown.hooks && detail::isConstant(shown, moments);
}

template <class T> std::pair<T, T> bounds(const Parameter<T>& parameter, const View& view, const TimeSpan& span) {
    static_assert(detail::hasOrder<T>, "values of this type have no order");
    const detail::Shown<T> shown = detail::Ask::shownIn(parameter, view);
    const detail::Moments moments = detail::Moments::of(span);
    if (!(moments.first < moments.last)) {
        const T value = parameter.value({Time::fromDouble(moments.isEmpty() ? span.from : moments.first), view});
        return {value, value};
    }
    const auto range =
        shown.hooks ? detail::Range<T>::everything() : detail::rangeIn(shown, moments, detail::Slack::None);
    return {range.least, range.greatest};
}

template <class T> T slope(const Parameter<T>& parameter, const Context& context) {
    static_assert(blends<T>, "values of this type have no slope");
    const detail::Shown<T> shown = detail::Ask::shownIn(parameter, context.view);
    if (!shown.hooks)
        return detail::SlopeAfter<T>(shown, context.time).find();
    constexpr double step = 1.0 / 1024.0;
    Context later = context;
    later.time = context.time + step;
    return detail::SlopeAfter<T>::between(parameter.value(context), parameter.value(later), step);
}

template <class T>
QVector<KeyframeData<T>> keyframes(const Parameter<T>& parameter, const View& view, const TimeSpan& span) {
    return detail::Ask::keyframesIn(parameter, view, span);
}

template <class T>
QVector<CurvePoint<T>> polyline(const Parameter<T>& parameter, const View& view, const TimeSpan& span, double tolerance,
                                double resolution) {
    static_assert(detail::hasOrder<T>, "values of this type have no order");
    const detail::Shown<T> shown = detail::Ask::shownIn(parameter, view);
    const detail::Moments moments = detail::finiteMoments(shown, span);
    if (moments.isEmpty())
        return {};
    return shown.hooks ? detail::Ask::sampledPoints(parameter, view, moments)
                       : detail::Flattening<T>(shown, tolerance).find(moments, resolution);
}

template <class T>
QVector<T> sampleValues(const Parameter<T>& parameter, const View& view, Time first, double step, int count) {
    QVector<Time> times;
    for (int i = 0; i < count; ++i)
        times.append(first + i * step);
    QVector<T> values(times.size());
    parameter.sampleValues(times.constData(), times.size(), view, values.data());
    return values;
}

} // namespace Prm

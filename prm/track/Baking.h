#pragma once

#include "prm/track/KeyInsertion.h"
#include "prm/track/ReshapedTrack.h"

#include <algorithm>
#include <cmath>

namespace Prm::detail {

/// The times of the steps, the last one at the end of the span; none for spans without end and for too many steps.
template <class T> QVector<Time> bakedTimes(const Track<T>& track, const Baking& act) {
    constexpr double most = 0x1p24;
    const auto& list = track.keyframes;
    const bool hasKeyframes = !list.isEmpty();
    const double first = std::isfinite(act.range.first.toDouble()) || !hasKeyframes ? act.range.first.toDouble()
                                                                                    : list.first().time.toDouble();
    const double last =
        act.range.last < Time::LAST || !hasKeyframes ? act.range.last.toDouble() : list.last().time.toDouble();
    QVector<Time> times;
    const bool isSpan = std::isfinite(first) && last >= first && last <= Time::LARGEST_VALID_VALUE;
    if (!isSpan || !(act.step > 0.0) || !((last - first) / act.step <= most))
        return times;
    const auto count = static_cast<int>(std::ceil((last - first) / act.step));
    times.reserve(count + 1);
    // A step may be less than times can say there.
    const auto add = [&](Time time) {
        if (times.isEmpty() || time > times.last())
            times.append(time);
    };
    for (int i = 0; i < count; ++i)
        add(Time::fromDouble(first + i * act.step));
    add(Time::fromDouble(last));
    return times;
}

/// A static value, and times that are those of the keyframes.
template <class T> bool hasNothingToBake(const Track<T>& track, const Baking& act) {
    return track.keyframes.isEmpty() && (std::isinf(act.range.first.toDouble()) || act.range.last == Time::LAST);
}

/// Replaces the keyframes from the first to the last of these times, which ascend. Those outside keep their curves.
template <class T>
const char* replaceStretch(ReshapedTrack<T>& track, const QVector<Time>& times, const QVector<T>& values) {
    for (const Time end : {times.first(), times.last()}) {
        const QVector<KeyframeData<T>>& list = track.now.keyframes;
        const bool isOutside = list.isEmpty() || list.last().time < end || end < list.first().time;
        const char* const refusal = isOutside ? nullptr : reshape(track, KeyInsertion{end});
        if (refusal)
            return refusal;
    }
    const QVector<KeyframeData<T>> list = track.now.keyframes;
    const auto [begin, end] = positionsIn(list, {times.first(), times.last()});
    const IType kind = track.holds ? Interpolation::Constant : Interpolation::Linear;
    QVector<KeyframeData<T>> all = list.mid(0, begin);
    all.reserve(all.size() + times.size() + list.size() - end);
    for (int i = 0; i < times.size(); ++i)
        all.append({times.at(i), values.at(i), kind});
    // The segment after them is as it was.
    if (end > begin)
        all.last().interpolationData = list.at(end - 1).interpolationData;
    all += list.mid(end);
    track.now.keyframes = all;
    return nullptr;
}

/// The shape that passes two values, at a third and at two thirds of the time: the solution of two linear equations.
/// Straight where that would go far beyond the ends, as beside a step.
template <class T> IType shapeThrough(const T& from, const T& first, const T& second, const T& to) {
    constexpr double farthest = 8.0;
    const auto start = Components<T>::of(from);
    const auto end = Components<T>::of(to);
    const auto a = Components<T>::of(first);
    const auto b = Components<T>::of(second);
    double square = 0.0;
    double atFirst = 0.0;
    double atSecond = 0.0;
    for (std::size_t c = 0; c < start.size(); ++c) {
        const double change = end[c] - start[c];
        square += change * change;
        atFirst += change * (a[c] - start[c]);
        atSecond += change * (b[c] - start[c]);
    }
    const double p = 27.0 * atFirst / square - 1.0;
    const double q = 27.0 * atSecond / square - 8.0;
    const double y1 = (2.0 * p - q) / 18.0;
    const double y2 = (2.0 * q - p) / 18.0;
    constexpr double third = 1.0 / 3.0;
    constexpr double rounding = 1e-9;
    const bool isCurve = square > 0.0 && std::abs(y1) <= farthest && std::abs(y2) <= farthest;
    if (!isCurve || (std::abs(y1 - third) < rounding && std::abs(y2 - 2.0 * third) < rounding))
        return Interpolation::Linear;
    return {Interpolation::Bezier, 1.0 / 3.0, y1, 2.0 / 3.0, y2};
}

/// Gives the keyframes at these times the shapes that pass what is shown between them.
template <class T> void bendBaked(ReshapedTrack<T>& track, const QVector<Time>& times, const QVector<T>& thirds) {
    QVector<KeyframeData<T>>& list = track.now.keyframes;
    const int begin = lowerBound(list, times.first());
    for (int i = 0; i + 1 < times.size(); ++i)
        list[begin + i].interpolationData = shapeThrough(list.at(begin + i).value, thirds.at(2 * i),
                                                         thirds.at(2 * i + 1), list.at(begin + i + 1).value);
}

template <class T> const char* reshape(ReshapedTrack<T>& track, const Baking& act) {
    if (hasNothingToBake(track.now, act))
        return nullptr;
    const QVector<Time> times = bakedTimes(track.now, act);
    if (times.isEmpty())
        return isEmptySpan;
    QVector<Time> thirds;
    for (int i = 0; act.isCurved && i + 1 < times.size(); ++i) {
        for (const double part : {1.0 / 3.0, 2.0 / 3.0})
            thirds.append(times.at(i) + (times.at(i + 1) - times.at(i)) * part);
    }
    const QVector<T> values = track.shownAt(times);
    const QVector<T> between = track.shownAt(thirds);
    const char* const refusal = replaceStretch(track, times, values);
    if constexpr (blends<T>) {
        if (!refusal && act.isCurved && !track.holds)
            bendBaked(track, times, between);
    }
    return refusal;
}

} // namespace Prm::detail

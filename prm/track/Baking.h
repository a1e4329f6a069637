#pragma once

#include "prm/track/KeyInsertion.h"
#include "prm/track/ReshapedTrack.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace Prm::detail {

/// The keyframe that a step leads to, as far as single precision can tell, which project text has: 1.2 after twelve
/// tenths. Otherwise the step.
template <class T> Time stepOrKeyframe(const QVector<KeyframeData<T>>& list, Time step, double length) {
    constexpr double precision = 0x1p-24;
    const double near = std::min(precision * std::abs(step.toDouble()), length / 4.0);
    const int after = lowerBound(list, step);
    for (const int position : {after, after - 1}) {
        const bool isThere = position >= 0 && position < list.size();
        if (isThere && std::abs(list.at(position).time - step) <= near)
            return list.at(position).time;
    }
    return step;
}

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
        add(std::min(stepOrKeyframe(list, Time::fromDouble(first + i * act.step), act.step), Time::fromDouble(last)));
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

/// Where a step is looked at between its ends: at both thirds, and between these.
constexpr std::array<double, 5> bakedParts = {1.0 / 6.0, 1.0 / 3.0, 0.5, 2.0 / 3.0, 5.0 / 6.0};

/// What is shown at the parts of a step, as a sequence of `bakedParts`.
template <class T> using BakedStep = typename QVector<T>::const_iterator;

/// How far y1 and y2, of a shape with the thirds as x1 and x2, lead away from what is shown at the parts, squared.
template <class T> double distance(const T& from, BakedStep<T> shown, const T& to, double y1, double y2) {
    const auto start = Components<T>::of(from);
    const auto end = Components<T>::of(to);
    double most = 0.0;
    for (const double part : bakedParts) {
        const double rest = 1.0 - part;
        const double progress = part * (3.0 * rest * (rest * y1 + part * y2) + part * part);
        const auto wanted = Components<T>::of(*shown++);
        double square = 0.0;
        for (std::size_t c = 0; c < start.size(); ++c) {
            const double difference = start[c] + progress * (end[c] - start[c]) - wanted[c];
            square += difference * difference;
        }
        most = std::max(most, square);
    }
    return most;
}

/// The shape that passes the values at both thirds of the time: the solution of two linear equations. Straight where
/// that is not much nearer to what is shown, as at the end of a hold, and where it would go far beyond the ends.
template <class T> IType shapeThrough(const T& from, BakedStep<T> shown, const T& to) {
    constexpr double farthest = 8.0;
    const auto start = Components<T>::of(from);
    const auto end = Components<T>::of(to);
    const auto a = Components<T>::of(shown[1]);
    const auto b = Components<T>::of(shown[3]);
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
    // A jump at an end of the step leaves three eighths.
    if (9.0 * distance(from, shown, to, y1, y2) > distance(from, shown, to, third, 2.0 * third))
        return Interpolation::Linear;
    return {Interpolation::Bezier, 1.0 / 3.0, y1, 2.0 / 3.0, y2};
}

/// The shapes of all steps, of which as many are looked at together as fit into a cache.
template <class T>
std::vector<IType> bakedShapes(const ReshapedTrack<T>& track, const QVector<Time>& times, const QVector<T>& values) {
    constexpr int most = 1024;
    const int steps = times.size() - 1;
    std::vector<IType> shapes;
    shapes.reserve(static_cast<std::size_t>(steps));
    QVector<Time> parts;
    for (int i = 0; i < steps;) {
        const int end = std::min(i + most, steps);
        parts.clear();
        for (int step = i; step < end; ++step) {
            for (const double part : bakedParts)
                parts.append(times.at(step) + (times.at(step + 1) - times.at(step)) * part);
        }
        const QVector<T> between = track.shownAt(parts);
        for (BakedStep<T> shown = between.cbegin(); i < end; ++i, shown += bakedParts.size())
            shapes.push_back(shapeThrough<T>(values.at(i), shown, values.at(i + 1)));
    }
    return shapes;
}

template <class T> const char* reshape(ReshapedTrack<T>& track, const Baking& act) {
    if (hasNothingToBake(track.now, act))
        return nullptr;
    const QVector<Time> times = bakedTimes(track.now, act);
    if (times.isEmpty())
        return isEmptySpan;
    const QVector<T> values = track.shownAt(times);
    std::vector<IType> shapes;
    if constexpr (blends<T>) {
        if (act.isCurved && !track.holds)
            shapes = bakedShapes(track, times, values);
    }
    const char* const refusal = replaceStretch(track, times, values);
    if (refusal)
        return refusal;
    int position = lowerBound(track.now.keyframes, times.first());
    for (const IType& shape : shapes)
        track.now.keyframes[position++].interpolationData = shape;
    return nullptr;
}

} // namespace Prm::detail

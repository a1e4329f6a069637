#pragma once

#include "prm/track/CurveShapes.h"
#include "prm/track/KeyframeSearch.h"
#include "prm/track/Track.h"

#include <algorithm>

namespace Prm::detail {

/// Of several keyframes at one time, which `adjustKeyframesTime` may leave, the first one counts, as for edits.
template <class Keyframe> PRM_ALWAYS_INLINE int firstAtTime(const QVector<Keyframe>& keyframes, int found) {
    const Time time = keyframes.at(found).time;
    return found > 0 && keyframes.at(found - 1).time == time ? lowerBound(keyframes, time) : found;
}

/// Whether a function that a host registered computes the value there.
template <class Keyframe>
PRM_ALWAYS_INLINE bool asksHost(const QVector<Keyframe>& keyframes, Bracket at, Outside outside) {
    if (at.before < 0 || at.after < 0)
        return (at.before < 0 ? outside.before : outside.after) >= Extrapolation::Custom0;
    return isCustom(keyframes.at(at.before).interpolationData);
}

/// How a value follows from the keyframes, noted for an explanation.
struct Course {
    /// The keyframes around the time.
    Bracket at;
    SegmentPart part;
    /// Where a straight line continues the keyframes: dy/dx of the easing at its start; 0 where it holds.
    double slope = 0.0;
    /// The time in the range of the keyframes that a custom extrapolation shows.
    Time shown = Time(Time::INVALID);
};

inline SegmentPart* partOf(Course* course) {
    return course ? &course->part : nullptr;
}

/// The value at a time before all keyframes, or after them. There must be a keyframe.
template <class T>
T outsideValue(const QVector<KeyframeData<T>>& keyframes, bool before, Extrapolation kind, Time time,
               Course* course = nullptr) {
    const int count = keyframes.size();
    const KeyframeData<T>& edge = before ? keyframes.first() : keyframes.last();
    if constexpr (blends<T>) {
        if (count < 2 || kind == Extrapolation::Constant)
            return edge.value;
        if (kind == Extrapolation::Linear) {
            const KeyframeData<T>& from = before ? edge : keyframes.at(count - 2);
            const KeyframeData<T>& to = before ? keyframes.at(1) : edge;
            const double slope = before ? startSlope(from.interpolationData) : endSlope(from.interpolationData);
            if (course)
                course->slope = slope;
            return continuedValue(edge.value, from, to, slope, time - edge.time);
        }
        Time inside;
        if (mapIntoRange(kind, time, keyframes.first().time, keyframes.last().time, inside)) {
            const Bracket at = bracket(keyframes.constData(), count, inside);
            if (course)
                course->shown = inside;
            if (at.before >= 0 && at.after >= 0)
                return segmentValue(keyframes.at(at.before), keyframes.at(at.after), inside, partOf(course));
        }
    }
    return edge.value;
}

/// The value between two keyframes. Types that do not blend hold each keyframe's value.
template <class T>
PRM_ALWAYS_INLINE T valueBetween(const KeyframeData<T>& from, const KeyframeData<T>& to, Time time,
                                 SegmentPart* part = nullptr) {
    if constexpr (blends<T>)
        return segmentValue(from, to, time, part);
    else
        return from.value;
}

/// The value at a time whose place among the keyframes is known.
template <class T>
PRM_ALWAYS_INLINE T valueAround(const QVector<KeyframeData<T>>& keyframes, Bracket at, Outside outside, Time time,
                                Course* course = nullptr) {
    if (course)
        course->at = at;
    if (at.before == at.after)
        return keyframes.at(firstAtTime(keyframes, at.before)).value;
    if (at.before < 0 || at.after < 0)
        return outsideValue(keyframes, at.before < 0, at.before < 0 ? outside.before : outside.after, time, course);
    const KeyframeData<T>* const from = keyframes.constData() + at.before;
    return valueBetween(from[0], from[1], time, partOf(course));
}

/// The value at a time. `cursor` is the position where the last time was found; any number will do. `course`, unless
/// null, is that of a new object at the call, and stays so where there are no keyframes.
template <class T>
PRM_ALWAYS_INLINE T evaluate(const Track<T>& track, Outside outside, Time time, int& cursor, Course* course = nullptr) {
    const QVector<KeyframeData<T>>& keyframes = track.keyframes;
    if (keyframes.isEmpty())
        return track.staticValue;
    const Bracket at = bracketNear(keyframes.constData(), keyframes.size(), time, cursor);
    return valueAround(keyframes, at, outside, time, course);
}

/// The values at many times; a place is searched once for all times in a row that lie there.
template <class T> void evaluate(const Track<T>& track, Outside outside, const Time* times, int count, T* out) {
    const QVector<KeyframeData<T>>& keyframes = track.keyframes;
    if (keyframes.isEmpty()) {
        std::fill_n(out, count, track.staticValue);
        return;
    }
    const Time first = keyframes.first().time;
    const Time last = keyframes.last().time;
    int cursor = 0;
    for (int i = 0; i < count;) {
        const Bracket at = bracketNear(keyframes.constData(), keyframes.size(), times[i], cursor);
        const auto repeat = [&](const auto& liesThere, const auto& valueAt) {
            do
                out[i] = valueAt(times[i]);
            while (++i < count && liesThere(times[i]));
        };
        if (at.before == at.after) {
            out[i] = valueAround(keyframes, at, outside, times[i]);
            ++i;
        } else if (at.before < 0 || at.after < 0) {
            repeat([&](Time time) { return at.before < 0 ? time < first : time > last; },
                   [&](Time time) { return valueAround(keyframes, at, outside, time); });
        } else {
            // Copies: the compiler cannot know that `out` is not a part of the keyframes.
            const KeyframeData<T> from = keyframes.at(at.before);
            const KeyframeData<T> to = keyframes.at(at.after);
            repeat([&](Time time) { return from.time < time && time < to.time; },
                   [&](Time time) { return valueBetween(from, to, time); });
        }
    }
}

} // namespace Prm::detail

#pragma once

#include "prm/Export.h"
#include "prm/KeyframeData.h"

#include <QVector>

namespace Prm::detail {

// Searches in a list of keyframes, or of anything with a time, in ascending order. Times are compared exactly. In a
// list that is not ascending the results have no meaning, but are always positions in the list.

/// The position of the first keyframe that is not before the time, or the number of keyframes. The steps are added, not
/// chosen: a processor cannot foresee which half it will be.
template <class Keyframe> int lowerBound(const Keyframe* keyframes, int count, Time time) {
    if (count == 0)
        return 0;
    const Keyframe* first = keyframes;
    while (count > 1) {
        const int half = count / 2;
        first += half & -static_cast<int>(first[half - 1].time < time);
        count -= half;
    }
    return static_cast<int>(first - keyframes) + (first->time < time ? 1 : 0);
}

/// The same, faster for the last keyframe and after it, where most edits are.
template <class Keyframe> PRM_ALWAYS_INLINE int lowerBound(const QVector<Keyframe>& keyframes, Time time) {
    const Keyframe* const first = keyframes.constData();
    const int last = keyframes.size() - 1;
    if (last > 0 && first[last - 1].time < time)
        return first[last].time < time ? last + 1 : last;
    return lowerBound(first, keyframes.size(), time);
}

/// The position of the keyframe at the time, or -1.
template <class Keyframe> int positionAt(const QVector<Keyframe>& keyframes, Time time) {
    const int position = lowerBound(keyframes, time);
    return position < keyframes.size() && keyframes.at(position).time == time ? position : -1;
}

/// Whether a keyframe lies at the time; it is copied to `out` unless that is null.
template <class T>
bool findKeyframeAtTime(const QVector<KeyframeData<T>>& keyframes, const Time& time, KeyframeData<T>* out) {
    const int position = positionAt(keyframes, time);
    if (position < 0)
        return false;
    if (out)
        *out = keyframes.at(position);
    return true;
}

/// The position of the first keyframe after the time, or the number of keyframes. Several may be at one time.
template <class Keyframe> int firstAfter(const QVector<Keyframe>& keyframes, Time time) {
    int next = lowerBound(keyframes, time);
    while (next < keyframes.size() && !(keyframes.at(next).time > time))
        ++next;
    return next;
}

/// The position of the nearest keyframe, the later one of two that are equally near. There must be a keyframe.
template <class Keyframe> int nearestPosition(const QVector<Keyframe>& keyframes, Time time) {
    const int next = firstAfter(keyframes, time);
    if (next == keyframes.size())
        return next - 1;
    if (next == 0)
        return 0;
    const double ahead = keyframes.at(next).time - time;
    const double behind = time - keyframes.at(next - 1).time;
    return ahead <= behind ? next : next - 1;
}

/// The position of the first keyframe after the time; -1 when there is none.
template <class Keyframe> int nextPosition(const QVector<Keyframe>& keyframes, Time time) {
    const int next = firstAfter(keyframes, time);
    return next < keyframes.size() ? next : -1;
}

/// The positions around a time: -1 where there is none, the same twice where a keyframe lies exactly at the time,
/// otherwise neighbours.
struct Bracket {
    int before = -1;
    int after = -1;
};

/// Whether the time lies strictly between a keyframe and the next one; false for positions that have none.
template <class Keyframe> PRM_ALWAYS_INLINE bool isBetween(const Keyframe* keyframes, int count, Time time, int from) {
    return from >= 0 && from + 1 < count && keyframes[from].time < time && time < keyframes[from + 1].time;
}

/// Whether the time lies at a keyframe or between it and the next one; false for positions that have none.
template <class Keyframe>
PRM_ALWAYS_INLINE bool isInSegment(const Keyframe* keyframes, int count, Time time, int from) {
    return from >= 0 && from + 1 < count && keyframes[from].time <= time && time < keyframes[from + 1].time;
}

/// The bracket of a time in the segment.
template <class Keyframe> PRM_ALWAYS_INLINE Bracket inSegment(const Keyframe* keyframes, Time time, int from) {
    return {from, keyframes[from].time == time ? from : from + 1};
}

/// The segment in which a time between the first and the last keyframe lies if they are evenly spaced.
template <class Keyframe> int evenSegment(const Keyframe* keyframes, int count, Time time) {
    const double part = (time - keyframes[0].time) / (keyframes[count - 1].time - keyframes[0].time);
    return part >= 0.0 && part < 1.0 ? static_cast<int>(part * (count - 1)) : 0;
}

template <class Keyframe> Bracket bracket(const Keyframe* keyframes, int count, Time time) {
    if (time < keyframes[0].time)
        return {-1, 0};
    if (time > keyframes[count - 1].time)
        return {count - 1, -1};
    if (time == keyframes[0].time)
        return {0, 0};
    if (time == keyframes[count - 1].time)
        return {count - 1, count - 1};
    if (count <= 2)
        return {0, count - 1};
    const int guess = evenSegment(keyframes, count, time);
    for (const int from : {guess, guess + 1, guess - 1}) {
        if (isInSegment(keyframes, count, time, from))
            return inSegment(keyframes, time, from);
    }
    // Strictly between the first and the last one, so the position found is neither 0 nor the end.
    const int position = 1 + lowerBound(keyframes + 1, count - 2, time);
    if (keyframes[position].time == time)
        return {position, position};
    return {position - 1, position};
}

/// The same, for times that often come in order: looks at the segment of the last time, which `last` keeps, and at the
/// one after it before it searches. `last` may be any number.
template <class Keyframe>
PRM_ALWAYS_INLINE Bracket bracketNear(const Keyframe* keyframes, int count, Time time, int& last) {
    if (isInSegment(keyframes, count, time, last))
        return inSegment(keyframes, time, last);
    if (last >= 0 && isInSegment(keyframes, count, time, last + 1))
        return inSegment(keyframes, time, ++last);
    const Bracket found = bracket(keyframes, count, time);
    last = found.before;
    return found;
}

/// The positions as keyframes of `parameter` in `view`.
inline BoundingKeyframes named(Bracket positions, View view, const ParameterWithoutType& parameter) {
    const auto index = [&](int position) {
        return position < 0 ? KeyframeIndex() : KeyframeIndex(&parameter, view, static_cast<quint32>(position));
    };
    return {index(positions.before), index(positions.after)};
}

/// The keyframes of `parameter` in `view` around the time. The locked list must not be empty.
template <class Locked>
BoundingKeyframes findClosestKeyframes(const Locked& locked, const Time& time, const View& view,
                                       const ParameterWithoutType& parameter) {
    const auto& keyframes = locked.keyframes();
    return named(bracket(keyframes.constData(), keyframes.size(), time), view, parameter);
}

} // namespace Prm::detail

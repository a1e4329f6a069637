#pragma once

#include "prm/TimeSpan.h"
#include "prm/track/CurveShapes.h"
#include "prm/track/KeyframeSearch.h"
#include "prm/track/Track.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace Prm::detail {

// At which times the values of one view may differ after an edit of its keyframes. A keyframe counts from the one
// before it to the one after it; where the segment before it holds, from itself on. Outside, values continue from the
// first or last keyframe; with Linear also from the segment that adjoins, with a custom kind from all keyframes.

constexpr double infinitelyFar = std::numeric_limits<double>::infinity();

/// Of values that do not blend, every segment holds, and the outside is constant.
template <class T> bool holdsAfter(const KeyframeData<T>& keyframe) {
    return !blends<T> || holds(keyframe.interpolationData);
}
template <class T> bool isConstant(Extrapolation kind) {
    return !blends<T> || kind <= Extrapolation::Constant;
}

inline TimeSpan between(double from, double to) {
    return {from, to, from == -infinitelyFar, false};
}
inline TimeSpan before(Time first) {
    return between(-infinitelyFar, first.toDouble());
}
inline TimeSpan after(Time last) {
    return between(last.toDouble(), infinitelyFar);
}

/// What an edit leaves as it is: the keyframes up to one and from another one on; -1 and the number of keyframes where
/// there are none.
struct Unchanged {
    int upTo = -1;
    int from = 0;
    /// Whether those between are as many as before, at the same times.
    bool isWhole = false;
};

/// Adds the outside where the first or the last segment, or any, has changed.
template <class T>
void addOutside(TimeSpans& times, const QVector<KeyframeData<T>>& keyframes, Outside outside, bool first, bool last) {
    const auto concerns = [](Extrapolation kind, bool adjoins) {
        return !isConstant<T>(kind) && (adjoins || kind != Extrapolation::Linear);
    };
    if (concerns(outside.before, first))
        times.add(before(keyframes.first().time));
    if (concerns(outside.after, last))
        times.add(after(keyframes.last().time));
}

/// Where keyframes have come, gone or got other values; none of them lies, or lay, before the first time.
template <class T>
TimeSpans changedTimes(const QVector<KeyframeData<T>>& keyframes, Outside outside, Unchanged ends, double firstTime) {
    const int count = keyframes.size();
    const bool hasStart = ends.upTo >= 0;
    const bool hasEnd = ends.from < count;
    if (!hasStart && !hasEnd)
        return TimeSpan::all();
    TimeSpan span = TimeSpan::all();
    if (hasEnd)
        span = before(keyframes.at(ends.from).time);
    if (hasStart) {
        const KeyframeData<T>& start = keyframes.at(ends.upTo);
        const bool holds = holdsAfter(start) && (hasEnd || ends.isWhole || isConstant<T>(outside.after));
        span.withFrom = holds && firstTime > start.time.toDouble();
        span.from = span.withFrom ? firstTime : start.time.toDouble();
    }
    TimeSpans times(span);
    addOutside(times, keyframes, outside, ends.upTo == 0 && !holdsAfter(keyframes.first()), ends.from == count - 1);
    return times;
}

/// Where one keyframe has come, or has got another value.
template <class T>
TimeSpans timesOfKeyframe(const QVector<KeyframeData<T>>& keyframes, Outside outside, int position, bool isNew) {
    return changedTimes(keyframes, outside, {position - 1, position + 1, !isNew},
                        keyframes.at(position).time.toDouble());
}

/// Where one keyframe was at a time.
template <class T> TimeSpans timesOfRemoval(const QVector<KeyframeData<T>>& keyframes, Outside outside, Time time) {
    const int position = lowerBound(keyframes, time);
    const bool isThere = position < keyframes.size() && keyframes.at(position).time == time;
    return changedTimes(keyframes, outside, {position - 1, isThere ? position + 1 : position}, time.toDouble());
}

/// Where the kind or the shape of one keyframe's segment has changed.
template <class T> TimeSpans timesOfSegment(const QVector<KeyframeData<T>>& keyframes, Outside outside, int position) {
    if (!blends<T> || position + 1 >= keyframes.size())
        return {};
    TimeSpans times(between(keyframes.at(position).time.toDouble(), keyframes.at(position + 1).time.toDouble()));
    addOutside(times, keyframes, outside, position == 0, position + 2 == keyframes.size());
    return times;
}

/// Whether the values of two segments between the same keyframes are the same.
template <class T> bool sameSegment(const KeyframeData<T>& a, const KeyframeData<T>& b) {
    const IType& one = a.interpolationData;
    const IType& other = b.interpolationData;
    const bool isLinear = one.interpolation == Interpolation::Linear && other.interpolation == Interpolation::Linear;
    return (holdsAfter(a) && holdsAfter(b)) || isLinear || one == other;
}

/// One view before and after. Static values are a track without keyframes.
template <class T> class ChangedTrack {
public:
    using Keyframes = QVector<KeyframeData<T>>;

    ChangedTrack(const Track<T>& former, Outside formerOutside, const Track<T>& now, Outside outside)
        : m_tracks{&former, &now}, m_outside{formerOutside, outside} {}

    /// At which times the values differ.
    TimeSpans times() {
        if (const T* const former = constantOf(0); former && constantOf(1))
            return ValueType<T>::equal(*former, *constantOf(1)) ? TimeSpans() : TimeSpans(TimeSpan::all());
        if (keyframes(0).isEmpty() || keyframes(1).isEmpty())
            return TimeSpan::all();
        const bool isShared = keyframes(0).constData() == keyframes(1).constData();
        if (!isShared && !compare())
            return TimeSpan::all();
        m_sameFirst = m_sameFirst || isShared;
        m_sameLast = m_sameLast || isShared;
        addOutsides();
        return m_times;
    }

private:
    /// The positions of a keyframe that both have, at the same time with the same value.
    struct Common {
        int former;
        int now;
    };

    const Keyframes& keyframes(int which) const { return m_tracks[static_cast<std::size_t>(which)]->keyframes; }
    Extrapolation kindBefore(int which) const { return m_outside[static_cast<std::size_t>(which)].before; }
    Extrapolation kindAfter(int which) const { return m_outside[static_cast<std::size_t>(which)].after; }

    /// The one value of a track; null for one with several keyframes.
    const T* constantOf(int which) const {
        const Keyframes& list = keyframes(which);
        if (list.isEmpty())
            return &m_tracks[static_cast<std::size_t>(which)]->staticValue;
        return list.size() == 1 ? &list.first().value : nullptr;
    }

    /// False for lists that do not ascend.
    bool compare() {
        const Keyframes& former = keyframes(0);
        const Keyframes& now = keyframes(1);
        Common at{0, 0};
        Common last{-1, -1};
        while (at.former < former.size() && at.now < now.size()) {
            const KeyframeData<T>& one = former.at(at.former);
            const KeyframeData<T>& other = now.at(at.now);
            if (one.time == other.time && ValueType<T>::equal(one.value, other.value))
                addBetween(std::exchange(last, at), at);
            const bool isEarlier = one.time < other.time;
            const bool isLater = other.time < one.time;
            if ((!isLater && !ascends(former, at.former)) || (!isEarlier && !ascends(now, at.now)))
                return false;
            at.former += isLater ? 0 : 1;
            at.now += isEarlier ? 0 : 1;
        }
        for (; at.former < former.size(); ++at.former)
            if (!ascends(former, at.former))
                return false;
        for (; at.now < now.size(); ++at.now)
            if (!ascends(now, at.now))
                return false;
        addBetween(last, {former.size(), now.size()});
        return true;
    }
    static bool ascends(const Keyframes& list, int position) {
        return position + 1 == list.size() || list.at(position).time < list.at(position + 1).time;
    }

    /// What differs between two common keyframes that follow each other, or outside the first or last one.
    void addBetween(Common start, Common end) {
        const bool adjoin = end.former == start.former + 1 && end.now == start.now + 1;
        const bool hasStart = start.former >= 0;
        const bool hasEnd = end.former < keyframes(0).size() && end.now < keyframes(1).size();
        if (!hasStart && hasEnd && adjoin)
            m_sameFirst = true;
        if (!hasEnd && hasStart && adjoin)
            m_sameLast = true;
        if (adjoin && (!hasStart || !hasEnd))
            return;
        if (adjoin && sameSegment(keyframes(0).at(start.former), keyframes(1).at(start.now)))
            return;
        if (start.former == 0)
            m_firstSegment = !holdsAfter(keyframes(0).first()) || !holdsAfter(keyframes(1).first());
        if (end.former + 1 == keyframes(0).size())
            m_lastSegment = true;
        TimeSpan span = hasEnd ? before(keyframes(1).at(end.now).time) : TimeSpan::all();
        if (hasStart)
            beginAfter(span, start, end);
        m_times.add(span);
    }

    void beginAfter(TimeSpan& span, Common start, Common end) const {
        const double time = keyframes(1).at(start.now).time.toDouble();
        double first = infinitelyFar;
        bool holds = true;
        for (const int which : {0, 1}) {
            const Keyframes& list = keyframes(which);
            const int position = which == 0 ? start.former : start.now;
            const int next = position + 1;
            const bool isLast = next == list.size();
            holds = holds && (isLast ? isConstant<T>(kindAfter(which)) : holdsAfter(list.at(position)));
            if (next < (which == 0 ? end.former : end.now))
                first = std::min(first, list.at(next).time.toDouble());
        }
        span.withFrom = holds && first < infinitelyFar;
        span.from = span.withFrom ? first : time;
    }

    /// The outside of a keyframe that is the first or the last one in both.
    void addOutsides() {
        if constexpr (!blends<T>)
            return;
        const bool any = !m_times.isEmpty();
        if (m_sameFirst && outsideDiffers(kindBefore(0), kindBefore(1), m_firstSegment, any))
            m_times.add(before(keyframes(1).first().time));
        if (m_sameLast && outsideDiffers(kindAfter(0), kindAfter(1), m_lastSegment, any))
            m_times.add(after(keyframes(1).last().time));
    }
    static bool outsideDiffers(Extrapolation former, Extrapolation now, bool segment, bool any) {
        if (isConstant<T>(former) && isConstant<T>(now))
            return false;
        return former != now || (now == Extrapolation::Linear ? segment : any);
    }

    std::array<const Track<T>*, 2> m_tracks;
    std::array<Outside, 2> m_outside;
    /// Whether both have the same first keyframe, and the same last one.
    bool m_sameFirst = false;
    bool m_sameLast = false;
    /// Whether the segment that adjoins it has changed.
    bool m_firstSegment = false;
    bool m_lastSegment = false;
    TimeSpans m_times;
};

} // namespace Prm::detail

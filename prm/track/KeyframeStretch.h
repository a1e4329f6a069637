#pragma once

#include "prm/KeyframeData.h"
#include "prm/ValueType.h"
#include "prm/track/ChangedTimes.h"
#include "prm/track/KeyframeSearch.h"
#include "prm/track/Place.h"

#include <QVector>

#include <algorithm>
#include <vector>

namespace Prm::detail {

/// Makes the list one's own, with room for so many more keyframes: then changing it cannot fail.
template <class Keyframe> void makeRoom(QVector<Keyframe>& keyframes, int more) {
    keyframes.detach();
    const int needed = keyframes.size() + more;
    if (keyframes.capacity() < needed)
        keyframes.reserve(needed + needed / 2);
}

/// The keyframes of a list from one time to another, both included.
template <class T> struct KeyframeStretch {
    using Keyframes = QVector<KeyframeData<T>>;

    /// From the keyframe before a place to the one after it, or to the end of all times; still without keyframes.
    static KeyframeStretch around(const Keyframes& list, const Place& place) {
        const int before = lowerBound(list, place.first) - 1;
        const int after = endOf(list, place.last);
        return {before < 0 ? Place::earliest() : list.at(before).time,
                after == list.size() ? Time(Time::LAST) : list.at(after).time,
                {}};
    }

    static KeyframeStretch none() { return {Time(Time::LAST), Place::earliest(), {}}; }
    static KeyframeStretch all() { return {Place::earliest(), Time(Time::LAST), {}}; }

    bool isNone() const { return last < first; }
    bool isWhole() const { return first == Place::earliest() && last == Time::LAST; }
    void fill(const Keyframes& list) {
        const int begin = lowerBound(list, first);
        keyframes = isNone() ? Keyframes() : list.mid(begin, endOf(list, last) - begin);
    }

    /// Whether the stretch of the list is the same.
    bool equals(const Keyframes& list) const {
        const int begin = lowerBound(list, first);
        const int end = endOf(list, last);
        const bool isShared = list.constData() == keyframes.constData() && list.size() == keyframes.size();
        return isShared || std::equal(list.begin() + begin, list.begin() + end, keyframes.begin(), keyframes.end(),
                                      [](const KeyframeData<T>& a, const KeyframeData<T>& b) {
                                          return a.time == b.time && ValueType<T>::equal(a.value, b.value) &&
                                                 a.interpolationData == b.interpolationData;
                                      });
    }

    /// Where values differ in a list that is the same outside the stretch.
    TimeSpans timesOfDifference(const Keyframes& list, Outside outside) const {
        const int begin = lowerBound(list, first);
        const int end = endOf(list, last);
        const Track<T> former{T(), keyframes};
        const Track<T> now{T(), list.mid(begin, end - begin)};
        if (former.keyframes.size() < 2 && now.keyframes.size() < 2)
            return equals(list) ? TimeSpans() : TimeSpans(TimeSpan::all());
        // The ends of the stretch are seldom those of the list.
        if (begin > 0)
            outside.before = Extrapolation::Constant;
        if (end < list.size())
            outside.after = Extrapolation::Constant;
        return ChangedTrack<T>(former, outside, now, outside).times();
    }

    /// Makes the stretch of the list what it was. The list has room.
    void putBack(Keyframes& list) const {
        const int begin = lowerBound(list, first);
        const int surplus = endOf(list, last) - begin - keyframes.size();
        if (surplus > 0)
            list.remove(begin, surplus);
        else if (surplus < 0)
            list.insert(begin, -surplus, KeyframeData<T>());
        std::copy(keyframes.cbegin(), keyframes.cend(), list.begin() + begin);
    }

    Time first;
    Time last;
    Keyframes keyframes;

private:
    static int endOf(const Keyframes& list, Time time) {
        const int position = lowerBound(list, time);
        return position < list.size() && list.at(position).time == time ? position + 1 : position;
    }
};

/// The keyframes of a list with other times: those that are moved keep their order, take the place of those that stay
/// at their times, and of several at one time the last one is left.
template <class T, class Mapping>
QVector<KeyframeData<T>> retimed(const QVector<KeyframeData<T>>& list, const Mapping& mapping) {
    struct Moved {
        Time time;
        bool isMoved = false;
        int from = 0;
    };
    std::vector<Moved> order;
    order.reserve(static_cast<std::size_t>(list.size()));
    for (int i = 0; i < list.size(); ++i) {
        const Time time = mapping(list.at(i).time);
        order.push_back({time, time != list.at(i).time, i});
    }
    std::stable_sort(order.begin(), order.end(), [](const Moved& a, const Moved& b) {
        return a.time != b.time ? a.time < b.time : a.isMoved < b.isMoved;
    });
    QVector<KeyframeData<T>> result;
    result.reserve(list.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        if (i + 1 < order.size() && order[i + 1].time == order[i].time)
            continue;
        result.append(list.at(order[i].from));
        result.last().time = order[i].time;
    }
    return result;
}

} // namespace Prm::detail

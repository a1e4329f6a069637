#pragma once

#include "prm/KeyframeData.h"
#include "prm/track/KeyframeSearch.h"

#include <QVector>

#include <algorithm>
#include <limits>

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

    static KeyframeStretch between(const Keyframes& list, Time first, Time last) {
        const int begin = lowerBound(list, first);
        return {first, last, list.mid(begin, behind(list, last) - begin)};
    }
    /// From the keyframe before the time to the one behind it, or to the end of all times.
    static KeyframeStretch around(const Keyframes& list, Time time) {
        const int before = lowerBound(list, time) - 1;
        const int after = behind(list, time);
        return between(list, before < 0 ? earliest() : list.at(before).time,
                       after == list.size() ? Time(Time::LAST) : list.at(after).time);
    }
    KeyframeStretch present(const Keyframes& list) const { return between(list, first, last); }

    /// Makes the stretch of the list what it was. The list has room.
    void putBack(Keyframes& list) const {
        const int begin = lowerBound(list, first);
        const int surplus = behind(list, last) - begin - keyframes.size();
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
    static constexpr Time earliest() { return Time::fromDouble(-std::numeric_limits<double>::infinity()); }
    static int behind(const Keyframes& list, Time time) {
        const int position = lowerBound(list, time);
        return position < list.size() && list.at(position).time == time ? position + 1 : position;
    }
};

} // namespace Prm::detail

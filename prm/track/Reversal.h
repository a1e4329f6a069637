#pragma once

#include "prm/track/DecimalNumbers.h"
#include "prm/track/Ranges.h"
#include "prm/track/ReshapedTrack.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace Prm::detail {

/// The shape of a segment that runs the other way.
inline IType reversed(const IType& shape) {
    if (!isBent(shape))
        return shape;
    const auto rest = [](double part) { return decimalSum(1.0, -part); };
    return {shape.interpolation, rest(shape.x2), rest(shape.y2), rest(shape.x1), rest(shape.y1)};
}

/// A keyframe that meets one outside the range replaces it.
template <class T> const char* reshape(ReshapedTrack<T>& track, const Reversal& act) {
    QVector<KeyframeData<T>>& list = track.now.keyframes;
    const auto [begin, end] = positionsIn(list, act.range);
    if (track.hasHooks)
        return hasHooks;
    if (begin == end)
        return nullptr;
    const double ends = act.pivot.isValid()
                            ? decimalSum(act.pivot.toDouble(), act.pivot.toDouble())
                            : decimalSum(list.at(begin).time.toDouble(), list.at(end - 1).time.toDouble());
    QVector<KeyframeData<T>> turned;
    for (int i = end; i-- > begin;) {
        const Time time = Time::fromDouble(decimalSum(ends, -list.at(i).time.toDouble()));
        if (!time.isValid() || !std::isfinite(time.toDouble()))
            return invalidTime;
        if (i > begin && isCustom(list.at(i - 1).interpolationData))
            return hasCustomKind;
        turned.append(list.at(i));
        turned.last().time = time;
        turned.last().interpolationData =
            i > begin ? reversed(list.at(i - 1).interpolationData) : list.at(end - 1).interpolationData;
    }
    QVector<KeyframeData<T>> others = list.mid(0, begin) + list.mid(end);
    QVector<KeyframeData<T>> all;
    // Times that are far from the pivot may have become one.
    const auto isOne = [](const KeyframeData<T>& a, const KeyframeData<T>& b) { return a.time == b.time; };
    turned.erase(std::unique(turned.begin(), turned.end(), isOne), turned.end());
    const auto isEarlier = [](const KeyframeData<T>& a, const KeyframeData<T>& b) { return a.time < b.time; };
    // Of two at one time, the first range's is taken.
    std::set_union(turned.begin(), turned.end(), others.begin(), others.end(), std::back_inserter(all), isEarlier);
    list = all;
    return nullptr;
}

} // namespace Prm::detail

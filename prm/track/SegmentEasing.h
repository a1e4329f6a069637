#pragma once

#include "prm/track/Ranges.h"
#include "prm/track/ReshapedTrack.h"

namespace Prm::detail {

/// The keyframes of a segment that takes an easing: its own one first.
template <class T>
void appendEased(QVector<KeyframeData<T>>& keyframes, const KeyframeData<T>& from, const KeyframeData<T>& to,
                 const std::vector<Easing::Part>& parts) {
    keyframes.append(from);
    keyframes.last().interpolationData = parts.front().shape;
    if (ValueType<T>::equal(from.value, to.value))
        return;
    if constexpr (blends<T>) {
        for (std::size_t i = 1; i < parts.size(); ++i) {
            const Time time = from.time + (to.time - from.time) * parts[i - 1].time;
            if (time > keyframes.last().time && time < to.time)
                keyframes.append({time, blended(from.value, to.value, parts[i - 1].change), parts[i].shape});
        }
    }
}

/// Between equal values, which no easing changes, no keyframes are added.
template <class T> const char* reshape(ReshapedTrack<T>& track, const SegmentEasing& act) {
    if (track.holds)
        return hasNoCurves;
    if (act.parts.size() > 1 && track.hasHooks)
        return hasHooks;
    const QVector<KeyframeData<T>> list = track.now.keyframes;
    const auto [begin, end] = positionsIn(list, act.range);
    const int last = act.range.first == act.range.last ? end : end - 1;
    QVector<KeyframeData<T>> eased = list.mid(0, begin);
    for (int i = begin; i < list.size(); ++i) {
        if (i < last && i + 1 < list.size())
            appendEased(eased, list.at(i), list.at(i + 1), act.parts);
        else
            eased.append(list.at(i));
    }
    track.now.keyframes = eased;
    return nullptr;
}

} // namespace Prm::detail

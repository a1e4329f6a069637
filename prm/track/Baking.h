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
    if (!std::isfinite(first) || !(last >= first) || !(act.step > 0.0) || !((last - first) / act.step <= most))
        return times;
    const auto count = static_cast<int>(std::ceil((last - first) / act.step));
    times.reserve(count + 1);
    for (int i = 0; i < count; ++i)
        times.append(Time::fromDouble(first + i * act.step));
    times.append(Time::fromDouble(last));
    return times;
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

template <class T> const char* reshape(ReshapedTrack<T>& track, const Baking& act) {
    const QVector<Time> times = bakedTimes(track.now, act);
    return times.isEmpty() ? isEmptySpan : replaceStretch(track, times, track.shownAt(times));
}

} // namespace Prm::detail

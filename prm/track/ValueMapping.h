#pragma once

#include "prm/track/DecimalNumbers.h"
#include "prm/track/Ranges.h"
#include "prm/track/ReshapedTrack.h"

#include <algorithm>
#include <cmath>

namespace Prm::detail {

inline double mapped(double value, const ValueMapping& act) {
    const double turned = act.scale == 1.0    ? value
                          : act.scale == -1.0 ? decimalSum(decimalSum(act.pivot, act.pivot), -value)
                                              : act.pivot + act.scale * (value - act.pivot);
    return act.offset == 0.0 ? turned : decimalSum(turned, act.offset);
}

/// Maps the values of keyframes; the static value where there are none. Shapes are parts of the change, and stay.
template <class T> const char* reshape(ReshapedTrack<T>& track, const ValueMapping& act) {
    if constexpr (blends<T>) {
        if (track.hasHooks)
            return hasHooks;
        bool isFinite = true;
        const auto map = [&](T& value) {
            auto numbers = Components<T>::of(value);
            for (std::size_t i = 0; i < numbers.size(); ++i) {
                if (act.component < 0 || act.component == static_cast<int>(i))
                    numbers[i] = mapped(numbers[i], act);
                isFinite = isFinite && std::isfinite(numbers[i]);
            }
            value = Components<T>::value(numbers);
        };
        QVector<KeyframeData<T>>& list = track.now.keyframes;
        const auto [begin, end] = positionsIn(list, act.range);
        if (list.isEmpty())
            map(track.now.staticValue);
        std::for_each(list.begin() + begin, list.begin() + end, [&](KeyframeData<T>& one) { map(one.value); });
        return isFinite ? nullptr : isNotFinite;
    } else {
        return hasNoCurves;
    }
}

} // namespace Prm::detail

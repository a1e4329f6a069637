#pragma once

#include "prm/track/Baking.h"
#include "prm/track/Simplification.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace Prm::detail {

/// The weights of a normal distribution, as far as they count.
inline std::vector<double> normalWeights(double radius, double step, int most) {
    constexpr double farthest = 4.0; // standard deviations
    const int count = static_cast<int>(std::min(std::ceil(farthest * radius / step), static_cast<double>(most)));
    std::vector<double> weights;
    for (int i = 0; i <= count; ++i)
        weights.push_back(std::exp(-0.5 * std::pow(i * step / radius, 2.0)));
    return weights;
}

/// The means of the neighbours of each value. Beyond both ends values go on turned about the end, which so stays.
template <class T> QVector<T> smoothed(const QVector<T>& values, const std::vector<double>& weights) {
    const int last = values.size() - 1;
    const auto numbersAt = [&](int i) {
        auto numbers = Components<T>::of(values.at(std::min(std::max(i < 0      ? -i
                                                                     : i > last ? 2 * last - i
                                                                                : i,
                                                                     0),
                                                            last)));
        const auto edge = Components<T>::of(values.at(i < 0 ? 0 : last));
        for (std::size_t c = 0; (i < 0 || i > last) && c < numbers.size(); ++c)
            numbers[c] = 2.0 * edge[c] - numbers[c];
        return numbers;
    };
    QVector<T> means = values;
    for (int i = 1; i < last; ++i) {
        typename Components<T>::Numbers sum{};
        double total = 0.0;
        for (int k = 1 - static_cast<int>(weights.size()); k < static_cast<int>(weights.size()); ++k) {
            const double weight = weights[static_cast<std::size_t>(std::abs(k))];
            const auto numbers = numbersAt(i + k);
            for (std::size_t c = 0; c < sum.size(); ++c)
                sum[c] += weight * numbers[c];
            total += weight;
        }
        for (double& number : sum)
            number /= total;
        means[i] = Components<T>::value(sum);
    }
    return means;
}

template <class T> const char* reshape(ReshapedTrack<T>& track, const Smoothing& act) {
    if constexpr (blends<T>) {
        if (track.hasHooks)
            return hasHooks;
        if (track.holds)
            return hasNoCurves;
        if (!(act.radius > 0.0))
            return isNotFinite;
        if (hasNothingToBake(track.now, act.baking))
            return nullptr;
        const QVector<Time> times = bakedTimes(track.now, act.baking);
        if (times.isEmpty())
            return isEmptySpan;
        const auto weights = normalWeights(act.radius, act.baking.step, times.size());
        constexpr double most = 0x1p32;
        if (static_cast<double>(weights.size()) * times.size() > most)
            return isTooWide;
        if (const char* const refusal = replaceStretch(track, times, smoothed(track.shownAt(times), weights)))
            return refusal;
        return reshape(track, Simplification{{times.first(), times.last()}, act.error});
    } else {
        return hasNoCurves;
    }
}

} // namespace Prm::detail

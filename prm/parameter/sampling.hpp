#pragma once

// Values at many times.

#include "prm/Parameter.h"

#include <algorithm>
#include <vector>

namespace Prm {

template <class T>
void Parameter<T>::sampleValues(const Time* times, int count, const View& view, T* out, Cache* cache) const {
    if (const Parameter* master = typedMaster()) {
        master->sampleValues(times, count, view, out, cache);
        return;
    }
    {
        const ReadBlock block = readShown(view);
        if (!isKeyframed()) {
            std::fill_n(out, count, block->staticValue);
            return;
        }
        if (answersAlone(block, view)) {
            sampleBlock(block, times, count, view, out, cache);
            return;
        }
    }
    detail::SourceViews sources;
    {
        const ReadBlock block = readSources(view, sources);
        if (sources.size() == 1) {
            sampleBlock(block, times, count, view, out, cache);
            return;
        }
    }
    sampleBlended(sources, times, count, view, out, cache);
}

template <class T>
void Parameter<T>::sampleBlock(const ReadBlock& block, const Time* times, int count, const View& view, T* out,
                               Cache* cache) const {
    detail::BracketCursor cursor;
    for (int i = 0; i < count; ++i) {
        const Context context(times[i], view);
        // Looked up again each time: a hook on the owning thread may edit the list.
        const KeyframeVector& keyframes = block.keyframes();
        out[i] = keyframes.isEmpty()
                     ? valueIn(block, context, cache)
                     : valueAround(block, cursor.at(keyframes.constData(), keyframes.size(), times[i]), context, cache);
    }
}

/// Each source view is sampled on its own, so that no two are held at once.
template <class T>
void Parameter<T>::sampleBlended(const detail::SourceViews& sources, const Time* times, int count, const View& view,
                                 T* out, Cache* cache) const {
    if constexpr (blends<T>) {
        const auto weights = detail::sourceWeights(sources, view);
        std::vector<detail::WeightedSum<T>> sums(static_cast<std::size_t>(std::max(count, 0)));
        for (int s = 0; s < sources.size(); ++s) {
            sampleBlock(read(sources[s]), times, count, view, out, cache);
            for (int i = 0; i < count; ++i)
                sums[static_cast<std::size_t>(i)].add(out[i], weights[static_cast<std::size_t>(s)]);
        }
        std::transform(sums.begin(), sums.end(), out, [](const auto& sum) { return sum.value(); });
    }
}

template <class T>
QVector<T> Parameter<T>::sampleValues(const Frame& first, const Frame& last, const View& view, Cache* cache) const {
    if (!first.isValid() || !last.isValid() || last < first)
        return {};
    const int count = static_cast<int>(std::min<quint32>(last.toUInt() - first.toUInt(), 2147483646u)) + 1;
    QVector<Time> times(count);
    for (int i = 0; i < count; ++i)
        times[i] = Time::fromUInt(first.toUInt() + static_cast<quint32>(i));
    QVector<T> values(count);
    sampleValues(times.constData(), count, view, values.data(), cache);
    return values;
}

} // namespace Prm

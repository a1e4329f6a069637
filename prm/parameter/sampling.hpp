#pragma once

// Values at many times.

#include "prm/Parameter.h"
#include "prm/track/CurveShapes.h"

#include <algorithm>
#include <vector>

namespace Prm {

template <class T>
void Parameter<T>::sampleValues(const Time* times, int count, const View& view, T* out, Cache* cache) const {
    askShown([&](const Parameter& shown) {
        if (&shown == this)
            sampleOwn(times, count, view, out, cache);
        else
            shown.sampleValues(times, count, view, out, cache);
        return true;
    });
}

template <class T>
void Parameter<T>::sampleOwn(const Time* times, int count, const View& view, T* out, Cache* cache) const {
    {
        const ReadBlock block = readShown(view);
        if (!answersKeyframed()) {
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
    int last = 0;
    for (int i = 0; i < count;) {
        // Looked up again each time: a hook on the owning thread may edit the list.
        const KeyframeVector& keyframes = block.keyframes();
        const int known = keyframes.isEmpty() ? 0 : sampleKnown(keyframes, times + i, count - i, last, out + i);
        if (known == 0)
            out[i] = valueIn(block, Context(times[i], view), cache);
        i += std::max(known, 1);
    }
}

/// As many values, from the first time on, as can be had at once without asking hooks.
template <class T>
int Parameter<T>::sampleKnown(const KeyframeVector& keyframes, const Time* times, int count, int& last, T* out) const {
    if (!isOfKnownClass())
        return 0;
    const detail::Bracket at = detail::bracketNear(keyframes.constData(), keyframes.size(), times[0], last);
    if (at.before < 0 || at.after < 0)
        return sampleEdge(keyframes, at, times, count, out);
    const int from = at.before;
    const bool beginsSegment = from + 1 < keyframes.size() && (at.after > from || exactKey(keyframes, from) == from);
    if constexpr (blends<T>) {
        if (beginsSegment) {
            last = from + 1;
            return detail::segmentValues(keyframes.at(from), keyframes.at(from + 1), times, count, out);
        }
    }
    out[0] = keyframes.at(exactKey(keyframes, from)).value;
    return 1;
}

/// The values at the times, from the first on, that lie on that side of all keyframes as long as the range holds.
template <class T>
int Parameter<T>::sampleEdge(const KeyframeVector& keyframes, detail::Bracket at, const Time* times, int count,
                             T* out) const {
    const bool isBefore = at.before < 0;
    if ((isBefore ? m_extrapolationBefore : m_extrapolationAfter).load() != Extrapolation::Constant)
        return 0;
    const KeyframeData<T>& edge = isBefore ? keyframes.first() : keyframes.last();
    const auto isBeyond = [&](Time time) { return isBefore ? time < edge.time : edge.time < time; };
    const int done = static_cast<int>(std::find_if_not(times, times + count, isBeyond) - times);
    std::fill_n(out, done, edge.value);
    return done;
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

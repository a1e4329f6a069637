#pragma once

// Values at many times.

#include "prm/Parameter.h"

#include <numeric>

namespace Prm {

template <class T>
void Parameter<T>::sampleValues(const Time* times, int count, const View& view, T* out, Cache* cache) const {
    if (const Parameter* master = typedMaster()) {
        master->sampleValues(times, count, view, out, cache);
        return;
    }
    // One lock for all: what is read inside is read already.
    const ReadBlock block = read(evaluationView(view));
    for (int i = 0; i < count; ++i)
        out[i] = value(Context(times[i], view), cache);
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

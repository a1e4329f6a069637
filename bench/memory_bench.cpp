// Bytes that the allocator hands out for one object, its own bookkeeping included. One iteration makes many objects.

#include "prm/NumericParameter.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <malloc.h>
#include <memory>
#include <vector>

namespace {

using Number = Prm::NumericParameter<double>;

template <class Make> void bytesOfEach(benchmark::State& state, const Make& make) {
    constexpr int count = 10000;
    using Object = decltype(make(0));
    for (auto _ : state) {
        std::vector<Object> objects;
        objects.reserve(count);
        const std::size_t before = mallinfo2().uordblks;
        for (int i = 0; i < count; ++i)
            objects.push_back(make(i));
        state.counters["bytes"] = std::round(static_cast<double>(mallinfo2().uordblks - before) / count);
    }
}

void bareObject(benchmark::State& state) {
    bytesOfEach(state, [](int) { return std::make_unique<QObject>(); });
}
BENCHMARK(bareObject)->Iterations(1);

void unwritten(benchmark::State& state) {
    const QString name = QStringLiteral("opacity");
    bytesOfEach(state, [&](int) { return std::make_unique<Number>(name); });
}
BENCHMARK(unwritten)->Iterations(1);

void unwrittenOwnName(benchmark::State& state) {
    bytesOfEach(state, [](int i) { return std::make_unique<Number>(QStringLiteral("opacity%1").arg(i)); });
}
BENCHMARK(unwrittenOwnName)->Iterations(1);

std::unique_ptr<Number> writtenNumber(const QString& name) {
    auto number = std::make_unique<Number>(name);
    number->vSetValue(1.0, Prm::Time(Prm::Time::INVALID));
    return number;
}

void written(benchmark::State& state) {
    const QString name = QStringLiteral("opacity");
    bytesOfEach(state, [&](int) { return writtenNumber(name); });
}
BENCHMARK(written)->Iterations(1);

void writtenOwnName(benchmark::State& state) {
    bytesOfEach(state, [](int i) { return writtenNumber(QStringLiteral("opacity%1").arg(i)); });
}
BENCHMARK(writtenOwnName)->Iterations(1);

} // namespace

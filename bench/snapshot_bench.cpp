// What a snapshot costs: beside a copy of all keyframes, and a hundred of them with an edit after each beside the same
// copies of a bare, implicitly shared list.

#include "prm/NumericParameter.h"

#include <QVector>
#include <benchmark/benchmark.h>

#include <vector>

namespace {

using Prm::Context;
using Prm::Time;
using Number = Prm::NumericParameter<double>;
using Keyframes = QVector<Prm::KeyframeData<double>>;

Keyframes keyframes(int count) {
    Keyframes list;
    list.reserve(count);
    for (int i = 0; i < count; ++i)
        list.append({Time::fromInt(i), i * 0.5, Prm::Interpolation::Linear});
    return list;
}

void fill(Number& parameter, int count) {
    for (const auto& keyframe : keyframes(count))
        parameter.vSetValue(keyframe.value, Context(keyframe.time));
}

void deepCopy(benchmark::State& state) {
    const Keyframes list = keyframes(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        Keyframes copy = list;
        copy.detach();
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(deepCopy)->Arg(1000)->Arg(10000)->Arg(100000);

void snapshot(benchmark::State& state) {
    Number parameter("number");
    fill(parameter, static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(parameter.exportState());
}
BENCHMARK(snapshot)->Arg(1000)->Arg(10000)->Arg(100000);

void hundredCopies(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        Keyframes list = keyframes(100000);
        std::vector<Keyframes> kept;
        state.ResumeTiming();
        for (int i = 0; i < 100; ++i) {
            kept.push_back(list);
            list[i * 1000].value = -1;
        }
        state.PauseTiming();
        kept.clear();
        list = Keyframes();
        state.ResumeTiming();
    }
}
BENCHMARK(hundredCopies)->Unit(benchmark::kMillisecond);

void hundredSnapshots(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto parameter = std::make_unique<Number>("number");
        fill(*parameter, 100000);
        std::vector<boost::shared_ptr<Bsc::MementoBase>> kept;
        state.ResumeTiming();
        for (int i = 0; i < 100; ++i) {
            kept.push_back(parameter->exportState());
            parameter->vSetValue(-1, Context(Time::fromInt(i * 1000)));
        }
        state.PauseTiming();
        kept.clear();
        parameter.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(hundredSnapshots)->Unit(benchmark::kMillisecond);

} // namespace

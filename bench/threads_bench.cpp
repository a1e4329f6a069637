// Two threads that evaluate, each as fast as one alone.

#include "bench/Curves.h"

#include <array>

namespace {

using Bench::ParameterCurve;

constexpr int keyframes = 1000;

/// Argument: one curve for all threads, or one for each.
void evaluateOnThreads(benchmark::State& state) {
    static const std::array<ParameterCurve, 2> curves{ParameterCurve(keyframes), ParameterCurve(keyframes)};
    const auto number = static_cast<std::size_t>(state.range(0) != 0 ? state.thread_index() : 0);
    const std::vector<double> times = Bench::timesWithin(keyframes, Bench::Order::FrameAfterFrame);
    for (auto _ : state)
        benchmark::DoNotOptimize(Bench::sumOf(curves[number], times));
    state.SetItemsProcessed(state.iterations() * Bench::evaluationsPerBatch);
}
BENCHMARK(evaluateOnThreads)->Arg(0)->Arg(1)->ThreadRange(1, 2)->UseRealTime();

} // namespace

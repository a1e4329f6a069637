// What an editor draws of a curve of many keyframes, beside asking for values and copying keyframes.

#include "bench/Curves.h"
#include "prm/Answers.h"

#include <memory>

namespace {

using Prm::Context;
using Prm::Time;
using Prm::TimeSpan;
using Prm::View;
using Number = Prm::NumericParameter<double>;

constexpr int keyframes = 100000;
constexpr int pixels = 800;

const Number& curve() {
    static const auto made = [] {
        auto parameter = std::make_unique<Number>(QStringLiteral("curve"));
        Bench::fill(*parameter, keyframes, {Prm::Interpolation::Linear});
        return parameter;
    }();
    return *made;
}

TimeSpan spanOf(int first, int count) {
    return {Bench::keyTime(first), Bench::keyTime(first + count - 1), true, true};
}

// --- a window of keyframes -------------------------------------------------------------------------------------------

void windowOfKeyframes(benchmark::State& state) {
    const TimeSpan span = spanOf(keyframes / 2, 100);
    if (Prm::keyframes(curve(), View(), span).size() != 100)
        state.SkipWithError("there are other keyframes");
    for (auto _ : state)
        benchmark::DoNotOptimize(Prm::keyframes(curve(), View(), span));
}
BENCHMARK(windowOfKeyframes);

void copyOfKeyframes(benchmark::State& state) {
    const QVector<Prm::KeyframeData<double>> list = Prm::keyframes(curve(), View(), spanOf(keyframes / 2, 100));
    for (auto _ : state)
        benchmark::DoNotOptimize(QVector<Prm::KeyframeData<double>>(list).data());
}
BENCHMARK(copyOfKeyframes);

// --- a picture of a curve: argument: the keyframes in it -------------------------------------------------------------

void curvePolyline(benchmark::State& state) {
    const TimeSpan span = spanOf(keyframes / 10, static_cast<int>(state.range(0)));
    const double resolution = (span.to - span.from) / pixels;
    for (auto _ : state)
        benchmark::DoNotOptimize(Prm::polyline(curve(), View(), span, 0.1, resolution));
}
BENCHMARK(curvePolyline)->Arg(80)->Arg(80000);

void curveValues(benchmark::State& state) {
    const TimeSpan span = spanOf(keyframes / 10, static_cast<int>(state.range(0)));
    const double step = (span.to - span.from) / (10 * pixels);
    for (auto _ : state) {
        for (int i = 0; i < 10 * pixels; ++i)
            benchmark::DoNotOptimize(curve().value(Time::fromDouble(span.from + i * step)));
    }
}
BENCHMARK(curveValues)->Arg(80)->Arg(80000);

} // namespace

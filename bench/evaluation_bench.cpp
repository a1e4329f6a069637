// Values at a time: of one parameter, beside the floors of Curves.h and what Qt has.

#include "bench/Curves.h"

#include <QObject>
#include <QVariant>
#include <QVariantAnimation>

#include <memory>

namespace {

using Bench::linearAtRandom;
using Bench::linearInOrder;
using Prm::Time;
using Prm::View;
using Number = Prm::NumericParameter<double>;

// --- a static value --------------------------------------------------------------------------------------------------

void staticParameter(benchmark::State& state) {
    Number parameter(QStringLiteral("opacity"), 0.5);
    parameter.vSetValue(0.75, Time(Time::INVALID));
    for (auto _ : state)
        benchmark::DoNotOptimize(parameter.value(Time()));
}
BENCHMARK(staticParameter);

void staticProperty(benchmark::State& state) {
    QObject object;
    object.setProperty("opacity", 0.75);
    for (auto _ : state)
        benchmark::DoNotOptimize(object.property("opacity").toDouble());
}
BENCHMARK(staticProperty);

// --- curves ----------------------------------------------------------------------------------------------------------

/// What Qt offers: a time in whole milliseconds, a list of keyframes between 0 and 1, one type of easing.
class QtCurve {
public:
    using Floor = Bench::PlainCurve;

    explicit QtCurve(int count) {
        const double end = Bench::keyTime(count - 1);
        QVariantAnimation::KeyValues keys;
        for (int i = 0; i < count; ++i)
            keys.append({Bench::keyTime(i) / end, Bench::keyValue(i)});
        m_animation->setDuration(static_cast<int>(end));
        m_animation->setKeyValues(keys);
    }

    double value(double time) const {
        m_animation->setCurrentTime(static_cast<int>(time));
        return m_animation->currentValue().toDouble();
    }

private:
    std::unique_ptr<QVariantAnimation> m_animation = std::make_unique<QVariantAnimation>();
};

BENCHMARK_TEMPLATE(linearInOrder, Bench::ParameterCurve)->Arg(2)->Arg(1000)->Arg(100000);
BENCHMARK_TEMPLATE(linearInOrder, Bench::LockedCurve)->Arg(2)->Arg(1000)->Arg(100000);
BENCHMARK_TEMPLATE(linearAtRandom, Bench::ParameterCurve)->Arg(2)->Arg(1000)->Arg(100000);
BENCHMARK_TEMPLATE(linearAtRandom, Bench::LockedCurve)->Arg(2)->Arg(1000)->Arg(100000);
BENCHMARK_TEMPLATE(linearAtRandom, QtCurve)->Arg(1000);

void easedParameter(benchmark::State& state) {
    const Bench::ParameterCurve curve(static_cast<int>(state.range(0)), Bench::ease());
    Bench::evaluate<Bench::ParameterCurve, Bench::EasedCurve>(state, curve, Bench::Order::Random);
}
BENCHMARK(easedParameter)->Arg(2)->Arg(1000)->Arg(100000);

void easedFloor(benchmark::State& state) {
    const Bench::EasedCurve curve(static_cast<int>(state.range(0)));
    Bench::evaluate<Bench::EasedCurve, Bench::EasedCurve>(state, curve, Bench::Order::Random);
}
BENCHMARK(easedFloor)->Arg(2)->Arg(1000)->Arg(100000);

// --- many values -----------------------------------------------------------------------------------------------------

constexpr int sampledFrames = 1000;

std::vector<Time> sampledTimes() {
    std::vector<Time> times;
    for (int i = 0; i < sampledFrames; ++i)
        times.push_back(Time::fromInt(i));
    return times;
}

void thousandSamples(benchmark::State& state) {
    Number parameter(QStringLiteral("x"));
    Bench::fill(parameter, static_cast<int>(state.range(0)), {Prm::Interpolation::Linear});
    const std::vector<Time> times = sampledTimes();
    std::vector<double> values(times.size());
    for (auto _ : state) {
        parameter.sampleValues(times.data(), sampledFrames, View(), values.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(thousandSamples)->Arg(10)->Arg(100)->Arg(1000);

void thousandValues(benchmark::State& state) {
    Number parameter(QStringLiteral("x"));
    Bench::fill(parameter, static_cast<int>(state.range(0)), {Prm::Interpolation::Linear});
    const std::vector<Time> times = sampledTimes();
    std::vector<double> values(times.size());
    for (auto _ : state) {
        for (std::size_t i = 0; i < times.size(); ++i)
            values[i] = parameter.value(times[i]);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(thousandValues)->Arg(10)->Arg(100)->Arg(1000);

/// A whole comp at one frame after another.
template <class Curve> void comp(benchmark::State& state) {
    std::vector<std::unique_ptr<Curve>> curves;
    for (int i = 0; i < state.range(0); ++i)
        curves.push_back(std::make_unique<Curve>(10));
    int frame = 0;
    for (auto _ : state) {
        const double time = 1 + frame++ % 90;
        double sum = 0.0;
        for (const auto& curve : curves)
            sum += curve->value(time);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK_TEMPLATE(comp, Bench::ParameterCurve)->Arg(1000)->Arg(10000)->Arg(100000);
BENCHMARK_TEMPLATE(comp, Bench::PlainCurve)->Arg(1000)->Arg(10000)->Arg(100000);

} // namespace

// Edits, and what is told of them.

#include "bench/Curves.h"
#include "bench/Signals.h"

#include <QVector>

#include <memory>

namespace {

using Prm::ParameterChange;
using Prm::Time;
using Number = Prm::NumericParameter<double>;

// --- appending, from nothing to the argument -------------------------------------------------------------------------

void appendToParameter(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        auto parameter = std::make_unique<Number>();
        parameter->vSetDefaultInterpolation(Prm::Interpolation::Linear);
        state.ResumeTiming();
        for (int i = 0; i < count; ++i)
            parameter->vSetValue(i * 0.5, Time::fromInt(i));
        state.PauseTiming();
        parameter.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(appendToParameter)->Arg(1000)->Arg(10000)->Arg(100000);

void appendToVector(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        auto list = std::make_unique<QVector<Prm::KeyframeData<double>>>();
        state.ResumeTiming();
        for (int i = 0; i < count; ++i)
            list->append({Time::fromInt(i), i * 0.5, Prm::Interpolation::Linear});
        benchmark::DoNotOptimize(list->data());
        state.PauseTiming();
        list.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(appendToVector)->Arg(1000)->Arg(10000)->Arg(100000);

// --- being told; argument: the number of receivers -------------------------------------------------------------------

std::vector<std::unique_ptr<Bench::Receiver>> receivers(const QObject& sender, qint64 count) {
    std::vector<std::unique_ptr<Bench::Receiver>> made;
    for (qint64 i = 0; i < count; ++i) {
        made.push_back(std::make_unique<Bench::Receiver>());
        QObject::connect(&sender, SIGNAL(changed(Prm::ParameterChange&)), made.back().get(),
                         SLOT(hear(Prm::ParameterChange&)), Qt::DirectConnection);
    }
    return made;
}

void emitChange(benchmark::State& state) {
    Number parameter;
    const auto listening = receivers(parameter, state.range(0));
    ParameterChange change(ParameterChange::VALUE_CHANGED, parameter, 0);
    for (auto _ : state)
        parameter.emitChange(change);
}
BENCHMARK(emitChange)->Arg(0)->Arg(1)->Arg(10);

void emitBare(benchmark::State& state) {
    Number parameter;
    Bench::BareSender sender;
    const auto listening = receivers(sender, state.range(0));
    ParameterChange change(ParameterChange::VALUE_CHANGED, parameter, 0);
    for (auto _ : state)
        Q_EMIT sender.changed(change);
}
BENCHMARK(emitBare)->Arg(0)->Arg(1)->Arg(10);

} // namespace

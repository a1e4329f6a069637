// Edits, and emitting their changes.

#include "bench/Curves.h"
#include "bench/Signals.h"
#include "prm/ChangedSince.h"
#include "prm/MoveKeyframeEdit.h"
#include "prm/ParameterSet.h"
#include "prm/ReshapingEdits.h"

#include <QVector>

#include <cmath>
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

// --- simplifying; argument: the number of keyframes, of a wave of 314 frames
// ------------------------------------------

std::unique_ptr<Number> waveOf(int count) {
    auto wave = std::make_unique<Number>();
    wave->vSetDefaultInterpolation(Prm::Interpolation::Linear);
    for (int i = 0; i < count; ++i)
        wave->vSetValue(std::sin(i * 0.02), Time::fromInt(i));
    return wave;
}

void simplifiedWave(benchmark::State& state) {
    const auto wave = waveOf(static_cast<int>(state.range(0)));
    Prm::ParameterSimplifyEdit simplify(*wave, {}, 0.002);
    simplify.doIt();
    if (wave->keyframeCount(Prm::View()) * 100 > state.range(0))
        state.SkipWithError("too many keyframes are left");
    simplify.undoIt();
    for (auto _ : state) {
        simplify.doIt();
        state.PauseTiming();
        simplify.undoIt();
        state.ResumeTiming();
    }
}
BENCHMARK(simplifiedWave)->Arg(10000)->Arg(1000000);

void keyframeValuesOfWave(benchmark::State& state) {
    const auto wave = waveOf(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        for (unsigned int i = 0; i < state.range(0); ++i)
            benchmark::DoNotOptimize(wave->keyframeValue(i, Prm::View()));
    }
}
BENCHMARK(keyframeValuesOfWave)->Arg(10000)->Arg(1000000);

// --- emitting a change; argument: the number of receivers ------------------------------------------------------------

std::vector<std::unique_ptr<Bench::Receiver>> receivers(const QObject& sender, qint64 count) {
    std::vector<std::unique_ptr<Bench::Receiver>> made;
    for (qint64 i = 0; i < count; ++i) {
        made.push_back(std::make_unique<Bench::Receiver>());
        QObject::connect(&sender, SIGNAL(changed(Prm::ParameterChange&)), made.back().get(),
                         SLOT(onChanged(Prm::ParameterChange&)), Qt::DirectConnection);
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

// --- what a change reaches, in the slot, and what has changed since the last frame -----------------------------------

void extentOfChange(benchmark::State& state) {
    Number parameter;
    const auto count = static_cast<int>(state.range(0));
    for (int i = 0; i < count; ++i)
        parameter.vSetValue(i * 0.5, Time::fromInt(i));
    ParameterChange change(ParameterChange::KEYFRAME_CHANGED_VALUE, parameter, static_cast<unsigned int>(count / 2));
    for (auto _ : state)
        benchmark::DoNotOptimize(Prm::extentOf(change));
}
BENCHMARK(extentOfChange)->Arg(1000)->Arg(100000);

/// The time for one parameter of a set in which nothing has changed.
void nothingChanged(benchmark::State& state) {
    Prm::ParameterSet set;
    std::vector<std::unique_ptr<Number>> parameters;
    for (int i = 0; i < state.range(0); ++i) {
        parameters.push_back(std::make_unique<Number>(QString::number(i)));
        parameters.back()->vSetValue(1.0, Time::fromInt(1));
        set.addParameter(*parameters.back());
    }
    Prm::ChangedSince changes(set);
    for (auto _ : state)
        benchmark::DoNotOptimize(changes.take());
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(nothingChanged)->Arg(1000)->Arg(10000);

/// One edit of a long list between two questions, with and without somebody who asks.
void editBetween(benchmark::State& state) {
    Prm::ParameterSet set;
    Number parameter;
    set.addParameter(parameter);
    for (int i = 0; i < state.range(0); ++i)
        parameter.vSetValue(i * 0.5, Time::fromInt(i));
    std::unique_ptr<Prm::ChangedSince> changes;
    if (state.range(1) != 0)
        changes = std::make_unique<Prm::ChangedSince>(set);
    double value = 0.0;
    for (auto _ : state) {
        parameter.vSetValue(value += 1.0, Time::fromInt(1));
        if (changes)
            benchmark::DoNotOptimize(changes->take());
    }
}
BENCHMARK(editBetween)->ArgsProduct({{1000, 100000}, {0, 1}});

// --- edits of a keyframe, with one receiver, and without any beside bare signals -------------------------------------

constexpr int editsPerBatch = 1000;

struct Append {
    static constexpr int before = 0;
    static void edit(Number& parameter, int number) { parameter.vSetValue(number * 0.5, Time::fromInt(number)); }
};

struct SetValue {
    static constexpr int before = editsPerBatch;
    static void edit(Number& parameter, int number) { parameter.vSetValue(number + 0.25, Time::fromInt(number)); }
};

/// To the frame between its own and the next, as the command does it, without what undo keeps.
struct Move {
    static constexpr int before = editsPerBatch;
    static void edit(Number& parameter, int number) {
        const Time from = Time::fromInt(number);
        Prm::MoveKeyframeEdit move(parameter, from, from + 0.5);
        move.doMoveKeyframe(from, from + 0.5);
    }
};

/// A parameter with a keyframe at each frame before, and afterwards a thousand edits. After each as many bare signals
/// as the argument says, to a slot of their own.
template <class Act> void editBatches(benchmark::State& state, bool isObserved, qint64 bareSignals) {
    Bench::BareSender sender;
    const auto listening = receivers(sender, 1);
    int received = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto parameter = std::make_unique<Number>();
        parameter->vSetDefaultInterpolation(Prm::Interpolation::Linear);
        for (int i = 0; i < Act::before; ++i)
            parameter->vSetValue(i * 0.5, Time::fromInt(i));
        auto observing = receivers(*parameter, isObserved ? 1 : 0);
        ParameterChange change(ParameterChange::VALUE_CHANGED, *parameter, 0);
        state.ResumeTiming();
        for (int i = 0; i < editsPerBatch; ++i) {
            Act::edit(*parameter, i);
            for (qint64 signal = 0; signal < bareSignals; ++signal)
                Q_EMIT sender.changed(change);
        }
        state.PauseTiming();
        received = isObserved ? observing.front()->received : received;
        parameter.reset();
        observing.clear();
        state.ResumeTiming();
    }
    if (isObserved && received == 0)
        state.SkipWithError("the receiver received nothing");
    state.SetItemsProcessed(state.iterations() * editsPerBatch);
}

template <class Act> void editObserved(benchmark::State& state) {
    editBatches<Act>(state, true, 0);
}
BENCHMARK_TEMPLATE(editObserved, Append);
BENCHMARK_TEMPLATE(editObserved, SetValue);
BENCHMARK_TEMPLATE(editObserved, Move);

template <class Act> void editAndSignals(benchmark::State& state) {
    editBatches<Act>(state, false, state.range(0));
}
BENCHMARK_TEMPLATE(editAndSignals, Append)->Arg(2);
BENCHMARK_TEMPLATE(editAndSignals, SetValue)->Arg(1)->Arg(2);
BENCHMARK_TEMPLATE(editAndSignals, Move)->Arg(2);

} // namespace

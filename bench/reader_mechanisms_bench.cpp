// Ways to evaluate a curve on many threads while its owner edits it, each doing the same work: the search for the
// segment at a time and its straight line, and the insertion of a keyframe.

#include "prm/NumericParameter.h"
#include "prm/detail/CurveShapes.h"
#include "prm/detail/FastViewMap.h"
#include "prm/detail/KeyframeInsertion.h"
#include "prm/detail/KeyframeSearch.h"
#include "prm/detail/RecursiveMutex.h"

#include <QVector>
#include <benchmark/benchmark.h>

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <utility>

namespace {

using Prm::Time;
using Keyframes = QVector<Prm::KeyframeData<double>>;

/// Distance between keyframes, in frames. All times that are evaluated lie half a frame beside a whole one, so that
/// each lies inside a segment.
constexpr int spacing = 10;
constexpr int evaluationsPerBatch = 1 << 14;
constexpr int appendsPerBatch = 16;

Prm::KeyframeData<double> keyframe(int number) {
    return {Time::fromInt(number * spacing), (number % 100) * 0.7, Prm::Interpolation::Linear};
}

/// The floor: nothing keeps readers and the writer apart.
struct Unguarded {
    template <class Function> double read(const Function& function) const { return function(m_keyframes); }
    template <class Function> void edit(const Function& function) { function(m_keyframes); }
    Keyframes m_keyframes;
};

struct MutexPerView : Unguarded {
    template <class Function> double read(const Function& function) const {
        const std::lock_guard<Prm::detail::RecursiveMutex> lock(m_mutex);
        return Unguarded::read(function);
    }
    template <class Function> void edit(const Function& function) {
        const std::lock_guard<Prm::detail::RecursiveMutex> lock(m_mutex);
        Unguarded::edit(function);
    }
    mutable Prm::detail::RecursiveMutex m_mutex;
};

struct PublishedBlocks {
    template <class Function> double read(const Function& function) const {
        const std::shared_ptr<const Keyframes> block = std::atomic_load(&m_block);
        return function(*block);
    }
    template <class Function> void edit(const Function& function) {
        Keyframes copy = *m_block;
        function(copy);
        std::atomic_store(&m_block, std::make_shared<const Keyframes>(std::move(copy)));
    }
    std::shared_ptr<const Keyframes> m_block = std::make_shared<const Keyframes>();
};

/// What the library does, without the rest of a parameter.
struct ReaderRecords {
    template <class Function> double read(const Function& function) const {
        const Prm::detail::ReadBlock<double> block(m_views, Prm::View());
        return function(block.keyframes());
    }
    template <class Function> void edit(const Function& function) {
        Prm::detail::LockedKeyframes<double> lock(&m_views[Prm::View()]);
        function(lock.keyframes());
    }
    Prm::detail::FastViewMap<double> m_views;
};

/// The work, the same for all mechanisms.
template <class Mechanism> struct Curve : Mechanism {
    double value(Time time) const {
        return this->read([=](const Keyframes& keyframes) {
            const auto [before, after] = Prm::detail::bracket(keyframes.constData(), keyframes.size(), time);
            return Prm::detail::segmentValue(keyframes.at(before), keyframes.at(after), time);
        });
    }
    void append(int from, int count) {
        const auto keepKind = [](const auto&, const auto&, Prm::Interpolation kind) { return Prm::IType(kind); };
        this->edit([=](Keyframes& keyframes) {
            for (int i = from; i < from + count; ++i)
                Prm::detail::insertKeyframe(keyframes, keyframe(i), Prm::Interpolation::Linear, false, keepKind);
        });
    }
    void remove(int number) {
        this->edit([=](Keyframes& keyframes) { keyframes.remove(number); });
    }
};

/// The whole parameter: the mechanism above, masters, hooks, and the changes that are sent.
struct WholeParameter {
    WholeParameter() { m_parameter.vSetDefaultInterpolation(Prm::Interpolation::Linear); }

    double value(Time time) const { return m_parameter.value(time); }
    void append(int from, int count) {
        for (int i = from; i < from + count; ++i)
            m_parameter.vSetValue(keyframe(i).value, keyframe(i).time);
    }
    void remove(int number) { m_parameter.vDeleteKeyframe({keyframe(number).time, Prm::View()}); }
    Prm::NumericParameter<double> m_parameter;
};

/// Made once for all cases and threads.
template <class Candidate> const Candidate& madeCurve(int keyframes, int number) {
    static std::mutex mutex;
    static std::map<std::pair<int, int>, Candidate> curves;
    const std::lock_guard<std::mutex> lock(mutex);
    const auto [curve, isNew] = curves.try_emplace({keyframes, number});
    if (isNew)
        curve->second.append(0, keyframes);
    return curve->second;
}

QVector<Time> timesWithin(int keyframes, bool random) {
    const int frames = (keyframes - 1) * spacing;
    std::mt19937 numbers(1);
    std::uniform_int_distribution<int> anyFrame(0, frames - 1);
    QVector<Time> times(evaluationsPerBatch);
    for (int i = 0; i < times.size(); ++i)
        times[i] = Time::fromDouble((random ? anyFrame(numbers) : i % frames) + 0.5);
    return times;
}

/// Of its own, so that its instructions can be counted; so is the batch of appends.
template <class Candidate> [[gnu::noinline]] double evaluateBatch(const Candidate& curve, const QVector<Time>& times) {
    double sum = 0.0;
    for (const Time time : times)
        sum += curve.value(time);
    return sum;
}

template <class Candidate> [[gnu::noinline]] void appendBatch(Candidate& curve, int from) {
    for (int i = from; i < from + appendsPerBatch; ++i)
        curve.append(i, 1);
}

/// Arguments: keyframes, random frames or frame after frame, the same curve for all threads or one for each.
template <class Candidate> void evaluate(benchmark::State& state) {
    const int keyframes = static_cast<int>(state.range(0));
    const Candidate& curve = madeCurve<Candidate>(keyframes, state.range(2) != 0 ? state.thread_index() : 0);
    const QVector<Time> times = timesWithin(keyframes, state.range(1) != 0);
    if (evaluateBatch(curve, times) != evaluateBatch(madeCurve<Curve<Unguarded>>(keyframes, 0), times))
        state.SkipWithError("the values differ from the floor's");
    for (auto _ : state)
        benchmark::DoNotOptimize(evaluateBatch(curve, times));
    state.SetItemsProcessed(state.iterations() * evaluationsPerBatch);
}

/// Appends a few keyframes at a time to those present, and takes them away again while the clock stands.
template <class Candidate> void appendKeyframe(benchmark::State& state) {
    const int present = static_cast<int>(state.range(0));
    Candidate curve;
    curve.append(0, present);
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        appendBatch(curve, present);
        state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        for (int i = present + appendsPerBatch; i-- > present;)
            curve.remove(i);
    }
    state.SetItemsProcessed(state.iterations() * appendsPerBatch);
}

void evaluations(benchmark::internal::Benchmark* cases) {
    cases->ArgNames({"keyframes", "random", "apart"})
        ->ArgsProduct({{2, 1000, 100000}, {0, 1}, {0, 1}})
        ->ThreadRange(1, 2)
        ->UseRealTime();
}

BENCHMARK_TEMPLATE(evaluate, Curve<Unguarded>)->Apply(evaluations);
BENCHMARK_TEMPLATE(evaluate, Curve<MutexPerView>)->Apply(evaluations);
BENCHMARK_TEMPLATE(evaluate, Curve<PublishedBlocks>)->Apply(evaluations);
BENCHMARK_TEMPLATE(evaluate, Curve<ReaderRecords>)->Apply(evaluations);
BENCHMARK_TEMPLATE(evaluate, WholeParameter)->Apply(evaluations);

void appends(benchmark::internal::Benchmark* cases) {
    cases->ArgName("present")->Arg(10)->Arg(1000)->Arg(100000)->UseManualTime();
}

BENCHMARK_TEMPLATE(appendKeyframe, Curve<Unguarded>)->Apply(appends);
BENCHMARK_TEMPLATE(appendKeyframe, Curve<MutexPerView>)->Apply(appends);
BENCHMARK_TEMPLATE(appendKeyframe, Curve<PublishedBlocks>)->Apply(appends);
BENCHMARK_TEMPLATE(appendKeyframe, Curve<ReaderRecords>)->Apply(appends);
BENCHMARK_TEMPLATE(appendKeyframe, WholeParameter)->Apply(appends);

} // namespace

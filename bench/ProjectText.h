#pragma once

// Projects of any number of keyframe lines, for cases about project text.

#include "prm/NumericParameter.h"
#include "prm/ParameterSet.h"
#include "prm/ProjectFile.h"

#include <benchmark/benchmark.h>

#include <ctime>
#include <vector>

namespace Bench {

using Curve = Prm::NumericParameter<double>;
using Keyframe = Prm::KeyframeData<double>;
/// The keyframes of each curve, in plain memory.
using Content = std::vector<std::vector<Keyframe>>;

/// Sets of curves, without keyframes at first.
struct Project {
    explicit Project(qint64 keyframes);
    void animate();

    Prm::ParameterSet root;
    std::vector<boost::shared_ptr<Curve>> curves;
    Prm::ProjectFile file{root};
};

/// One such as a tracked shot makes: a keyframe on every frame, a third of them with shapes.
const Project& animatedProject(qint64 keyframes);
/// The same, as the library writes it.
const QByteArray& projectText(qint64 keyframes);
/// The same keyframes, curve after curve.
const Content& projectContent(qint64 keyframes);
/// Whether it is that content.
bool isContent(const Content& content, qint64 keyframes);

inline QString nameOf(const Curve& curve) {
    return curve.parentSet()->scriptName() + QLatin1Char('.') + curve.scriptName();
}

/// Processor time: a machine that is busy with other work does not change it much.
template <class Do> void measure(benchmark::State& state, const Do& act) {
    const std::clock_t start = std::clock();
    act();
    state.SetIterationTime(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
}

/// What the cases about project text have in common; the number of lines is that of keyframes.
inline void overLines(benchmark::internal::Benchmark* cases) {
    cases->UseManualTime()->Unit(benchmark::kMillisecond)->Arg(10000)->Arg(100000)->Arg(1000000);
}

} // namespace Bench

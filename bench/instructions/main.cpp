// One main path of the library, a thousand times, for a profiler that collects inside `counted` only: see
// bench/instructions/count.sh. Without an argument prints the names of the paths, with "--stamp" what the counts depend
// on.

#include "bench/Curves.h"
#include "bench/ProjectText.h"
#include "prm/Answers.h"
#include "prm/Extent.h"

#include <functional>
#include <gnu/libc-version.h>
#include <iostream>
#include <map>
#include <memory>
#include <string>

namespace {

using Prm::Interpolation;
using Prm::IType;
using Prm::Time;
using Prm::View;
using Number = Prm::NumericParameter<double>;

constexpr int runs = 1000;

/// What is counted: of its own, and with a name that no compiler changes.
extern "C" [[gnu::noinline]] void counted(const std::function<void(int)>& once) {
    for (int i = 0; i < runs; ++i)
        once(i);
}

/// What does a thousand at once.
void countAtOnce(const std::function<void()>& all) {
    counted([&](int i) {
        if (i == 0)
            all();
    });
}

/// Everything that happens once for a thread or a list happens here.
void countWarm(const std::function<void(int)>& once) {
    once(0);
    counted(once);
}

std::unique_ptr<Number> curve(int keyframes, const IType& shape) {
    auto made = std::make_unique<Number>(QStringLiteral("number"));
    Bench::fill(*made, keyframes, shape);
    return made;
}

void values(const Number& number, int keyframes, Bench::Order order, View view = View()) {
    const std::vector<double> times = Bench::timesWithin(keyframes, order);
    double sum = 0.0;
    countWarm(
        [&](int i) { sum += number.value(Prm::Context(Time::fromDouble(times[static_cast<std::size_t>(i)]), view)); });
    benchmark::DoNotOptimize(sum);
}

void values(int keyframes, const IType& shape, Bench::Order order) {
    values(*curve(keyframes, shape), keyframes, order);
}

void valuesOfTwoViews() {
    constexpr int keyframes = 1000;
    const auto number = curve(keyframes, {Interpolation::Linear});
    number->setSplittable(true);
    number->uniquifyView(View(1));
    values(*number, keyframes, Bench::Order::FrameAfterFrame, View(1));
}

void valuesOfMaster() {
    constexpr int keyframes = 1000;
    const auto master = curve(keyframes, {Interpolation::Linear});
    Number tied(QStringLiteral("tied"));
    master->bAddConstrainedParameter(&tied);
    values(tied, keyframes, Bench::Order::FrameAfterFrame);
}

void valuesByHook() {
    class WithHook : public Number {
        double interpolateValue(const Prm::BoundingKeyframes& around, const Prm::Context& context,
                                Prm::Cache* cache) const override {
            return Number::interpolateValue(around, context, cache) + 0.0;
        }
    };
    constexpr int keyframes = 1000;
    WithHook number;
    Bench::fill(number, keyframes, {Interpolation::Linear});
    values(number, keyframes, Bench::Order::FrameAfterFrame);
}

void staticValues() {
    Number number(QStringLiteral("number"), 0.5);
    number.vSetValue(0.75, Time(Time::INVALID));
    double sum = 0.0;
    countWarm([&](int) { sum += number.value(Time()); });
    benchmark::DoNotOptimize(sum);
}

void samples() {
    const auto number = curve(100, {Interpolation::Linear});
    std::vector<Time> times;
    std::vector<double> sampled(runs);
    for (int i = 0; i < runs; ++i)
        times.push_back(Time::fromInt(i));
    number->sampleValues(times.data(), runs, View(), sampled.data());
    countAtOnce([&] { number->sampleValues(times.data(), runs, View(), sampled.data()); });
}

void appends() {
    const auto number = curve(2, {Interpolation::Linear});
    countWarm([&](int i) { number->vSetValue(i * 0.5, Time::fromInt(100 + i)); });
}

void changedValues() {
    const auto number = curve(1000, {Interpolation::Linear});
    countWarm([&](int i) { number->vSetValue(i + 0.25, Time::fromDouble(Bench::keyTime(i))); });
}

void emissions() {
    Number number;
    Prm::ParameterChange change(Prm::ParameterChange::VALUE_CHANGED, number, 0);
    countWarm([&](int) { number.emitChange(change); });
}

void extents() {
    const auto number = curve(1000, {Interpolation::Linear});
    const Prm::ParameterChange change(Prm::ParameterChange::KEYFRAME_CHANGED_VALUE, *number, 500);
    countWarm([&](int) { benchmark::DoNotOptimize(Prm::extentOf(change)); });
}

/// An editor's window of 800 pixels.
void polylines() {
    const auto number = curve(100000, {Interpolation::Linear});
    const Prm::TimeSpan window{Bench::keyTime(10000), Bench::keyTime(10079), true, true};
    countWarm([&](int) {
        benchmark::DoNotOptimize(Prm::polyline(*number, View(), window, 0.1, (window.to - window.from) / 800));
    });
}

void snapshots() {
    const auto number = curve(1000, {Interpolation::Linear});
    countWarm([&](int) { number->exportState(); });
}

void parameters() {
    const QString name = QStringLiteral("number");
    countWarm([&](int) { const Number made(name); });
}

void linesWritten() {
    Bench::projectText(runs);
    countAtOnce([] { Bench::animatedProject(runs).file.text(); });
}

void linesRead() {
    Bench::Project project(runs);
    project.file.loadText(Bench::projectText(runs));
    Bench::Project fresh(runs);
    countAtOnce([&] { fresh.file.loadText(Bench::projectText(runs)); });
}

const std::map<std::string, std::function<void()>>& paths() {
    static const IType linear(Interpolation::Linear);
    static const std::map<std::string, std::function<void()>> all{
        {"value, static", staticValues},
        {"value, linear, 2 keyframes", [] { values(2, linear, Bench::Order::Random); }},
        {"value, linear, 100000 keyframes, in order", [] { values(100000, linear, Bench::Order::FrameAfterFrame); }},
        {"value, linear, 1000 keyframes, random", [] { values(1000, linear, Bench::Order::Random); }},
        {"value, Bezier, 2 keyframes", [] { values(2, Bench::ease(), Bench::Order::Random); }},
        {"value, linear, 1000 keyframes in each of two views, in order", valuesOfTwoViews},
        {"value, linear, 1000 keyframes of a master, in order", valuesOfMaster},
        {"value, linear, 1000 keyframes, by a hook, in order", valuesByHook},
        {"sampleValues, linear, one of 1000", samples},
        {"vSetValue, appending", appends},
        {"vSetValue, changing", changedValues},
        {"emitChange, no receiver", emissions},
        {"extentOf, a keyframe's value", extents},
        {"polyline, 80 of 100000 keyframes", polylines},
        {"exportState", snapshots},
        {"project text, a keyframe's line written", linesWritten},
        {"project text, a keyframe's line read", linesRead},
        {"a parameter, made and destroyed", parameters},
    };
    return all;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        for (const auto& path : paths())
            std::cout << path.first << '\n';
        return 0;
    }
    if (std::string(argv[1]) == "--stamp") {
        // The C library chooses how to copy and compare by what the processor can do.
        const char* const vectors = __builtin_cpu_supports("avx512f") ? "avx512"
                                    : __builtin_cpu_supports("avx2")  ? "avx2"
                                                                      : "sse";
        std::cout << "compiler " << __VERSION__ << "; Qt " << qVersion() << "; C library " << gnu_get_libc_version()
                  << "; " << vectors << "; flags " << PRM_BENCH_FLAGS << '\n';
        return 0;
    }
    const auto found = paths().find(argv[1]);
    if (found == paths().end())
        return 2;
    found->second();
}

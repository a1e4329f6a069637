// A whole frame of a project: parameters of all kinds, each observed, some split, some constrained. Two renderers show
// frame after frame while the owner edits, beside one renderer alone.

#include "bench/Signals.h"
#include "prm/CompoundParameter.h"
#include "prm/NumericParameter.h"

#include <QPoint>
#include <benchmark/benchmark.h>
#include <boost/make_shared.hpp>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <ctime>
#include <memory>
#include <random>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using Prm::Context;
using Prm::Interpolation;
using Prm::Time;
using Prm::View;
using Clock = std::chrono::steady_clock;

constexpr int parameters = 10000;
constexpr int keyframes = 10;
constexpr int frames = 90;
constexpr int framesPerBatch = 20;
constexpr auto betweenEdits = std::chrono::milliseconds(1);

// --- the parameters --------------------------------------------------------------------------------------------------

/// What the renderers and the owner do with a parameter.
class Layer {
public:
    virtual ~Layer() = default;
    virtual void render(const Context& context) const = 0;
    virtual void setValue(int number, const Context& context) = 0;
    virtual Prm::ParameterWithoutType& parameter() = 0;
};

template <class Class> class LayerOf : public Layer {
public:
    void render(const Context& context) const override { benchmark::DoNotOptimize(m_parameter.value(context)); }
    void setValue(int number, const Context& context) override { m_parameter.vSetValue(made(number), context); }
    Class& parameter() override { return m_parameter; }

private:
    using Value = decltype(std::declval<Class>().value(Context()));

    static Value made(int number) {
        if constexpr (std::is_same_v<Value, QString>)
            return QString::number(number);
        else if constexpr (std::is_same_v<Value, QPoint> || std::is_same_v<Value, QPointF>)
            return Value(number, number % 7);
        else
            return static_cast<Value>(number % 7);
    }

    Class m_parameter;
};

/// A class of a host, with a hook.
class Noisy : public Prm::NumericParameter<double> {
public:
    double interpolateValue(const Prm::BoundingKeyframes& around, const Context& context,
                            Prm::Cache* cache) const override {
        return NumericParameter::interpolateValue(around, context, cache) + 0.125;
    }
};

class CompoundLayer : public Layer {
public:
    CompoundLayer() {
        for (auto& part : m_parts) {
            part = boost::make_shared<Prm::NumericParameter<double>>(QStringLiteral("part"));
            m_parameter.addParameter(part);
        }
    }

    void render(const Context& context) const override { benchmark::DoNotOptimize(m_parameter.variantValue(context)); }
    void setValue(int number, const Context& context) override {
        for (const auto& part : m_parts)
            part->vSetValue(number % 7, context);
    }
    Prm::CompoundParameter& parameter() override { return m_parameter; }

private:
    Prm::CompoundParameter m_parameter{QStringLiteral("compound"), true};
    std::array<boost::shared_ptr<Prm::NumericParameter<double>>, 2> m_parts;
};

std::unique_ptr<Layer> made(int kind) {
    switch (kind) {
    case 0:
        return std::make_unique<LayerOf<Prm::NumericParameter<double>>>();
    case 1:
        return std::make_unique<LayerOf<Prm::NumericParameter<int>>>();
    case 2:
        return std::make_unique<LayerOf<Prm::NumericParameter<unsigned int>>>();
    case 3:
        return std::make_unique<LayerOf<Prm::PointParameter>>();
    case 4:
        return std::make_unique<LayerOf<Prm::Parameter<QPoint>>>();
    case 5:
        return std::make_unique<LayerOf<Prm::Parameter<bool>>>();
    case 6:
        return std::make_unique<LayerOf<Prm::Parameter<QString>>>();
    case 7:
        return std::make_unique<LayerOf<Noisy>>();
    default:
        return std::make_unique<CompoundLayer>();
    }
}
constexpr int kinds = 9;

/// Every tenth is split, every twentieth shows the one of its kind before it. Numbers without a common factor with the
/// number of kinds, so that all kinds are among both.
class Project {
public:
    Project() {
        for (int i = 0; i < parameters; ++i) {
            m_layers.push_back(made(i % kinds));
            fill(*m_layers.back(), i);
            if (i % 10 == 3)
                split(*m_layers.back(), i);
            if (i % 20 == 17 && i >= kinds)
                m_layers[static_cast<std::size_t>(i - kinds)]->parameter().bAddConstrainedParameter(
                    &m_layers.back()->parameter());
            m_layers.back()->parameter().attachObserver(&m_observer, SLOT(onChanged(Prm::ParameterChange&)));
        }
    }

    /// One eye after the other.
    void render(int frame) const {
        const Context context(Time::fromDouble(frame / 2 % frames + 0.5), View(static_cast<quint32>(frame % 2)));
        for (const auto& layer : m_layers)
            layer->render(context);
    }

    /// Of any parameter: a value set, a keyframe added, the same deleted, a kind of curve set.
    void edit(int number) {
        static constexpr int acts = 4;
        if (number % acts == 0 || number % acts == 1)
            m_chosen = static_cast<std::size_t>(m_anyLayer(m_numbers));
        Layer& layer = *m_layers[m_chosen];
        const Context atKeyframe(Time::fromInt(frames / keyframes * (number % keyframes)));
        const Context between(Time::fromDouble(atKeyframe.time.toDouble() + 4.25));
        switch (number % acts) {
        case 0:
            return layer.setValue(number, atKeyframe);
        case 1:
            return void(layer.parameter().iAddKeyframe(m_added = between));
        case 2:
            return layer.parameter().vDeleteKeyframe(Context::Explicit(m_added));
        default:
            layer.parameter().vSetInterpolation(number % 8 == 3 ? Interpolation::Linear : Interpolation::Bezier,
                                                atKeyframe);
        }
    }

    int changesReceived() const { return m_observer.received; }

private:
    static void fill(Layer& layer, int number) {
        if (number % 4 == 1) // static
            return layer.setValue(number, Context(Time::INVALID));
        layer.parameter().vSetDefaultInterpolation(number % 2 == 0 ? Interpolation::Linear : Interpolation::Bezier);
        for (int i = 0; i < keyframes; ++i)
            layer.setValue(number + i, Time::fromInt(frames / keyframes * i));
    }

    static void split(Layer& layer, int number) {
        layer.parameter().uniquifyView(View(1));
        layer.setValue(number + 1, Context(Time::fromInt(0), View(1)));
    }

    Bench::Receiver m_observer;
    std::vector<std::unique_ptr<Layer>> m_layers;
    std::mt19937 m_numbers{1};
    std::uniform_int_distribution<int> m_anyLayer{0, parameters - 1};
    std::size_t m_chosen = 0;
    Context m_added;
};

// --- the threads -----------------------------------------------------------------------------------------------------

enum Measured { Elapsed, Processor };

/// The seconds of this thread.
double now(Measured measured) {
    timespec time{};
    clock_gettime(measured == Elapsed ? CLOCK_MONOTONIC : CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double secondsOfBatch(const Project& project, Measured measured) {
    const double start = now(measured);
    for (int frame = 0; frame < framesPerBatch; ++frame)
        project.render(frame);
    return now(measured) - start;
}

/// The seconds of the slowest renderer. The owner, this thread, edits meanwhile if asked to.
double secondsOfRenderers(Project& project, int count, bool isEdited, Measured measured) {
    static int edits = 0;
    std::vector<double> seconds(static_cast<std::size_t>(count));
    std::atomic<int> rendering{count};
    std::vector<std::thread> renderers;
    for (double& taken : seconds)
        renderers.emplace_back([&project, &taken, &rendering, measured] {
            taken = secondsOfBatch(project, measured);
            --rendering;
        });
    for (auto next = Clock::now(); isEdited && rendering > 0; std::this_thread::sleep_until(next += betweenEdits))
        project.edit(edits++);
    for (std::thread& renderer : renderers)
        renderer.join();
    return *std::max_element(seconds.begin(), seconds.end());
}

/// Arguments: the renderers, whether the owner edits, and what is measured. On a machine with as many cores as
/// renderers the owner takes part of one: elapsed time has that in it, processor time has not.
void wholeFrame(benchmark::State& state) {
    static Project project;
    const bool isEdited = state.range(1) != 0;
    const int received = project.changesReceived();
    for (auto _ : state)
        state.SetIterationTime(secondsOfRenderers(project, static_cast<int>(state.range(0)), isEdited,
                                                  static_cast<Measured>(state.range(2))) /
                               framesPerBatch);
    if (isEdited && project.changesReceived() == received)
        state.SkipWithError("the observer received nothing");
}
BENCHMARK(wholeFrame)
    ->ArgNames({"renderers", "edited", "measured"})
    ->ArgsProduct({{1}, {0}, {Elapsed, Processor}})
    ->ArgsProduct({{2}, {1}, {Elapsed, Processor}})
    ->UseManualTime();

} // namespace

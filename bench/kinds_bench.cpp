// Values of what hosts have: classes of their own, types without curves, several views, masters. Beside the same
// keyframes in a plain `NumericParameter<double>`.

#include "bench/Curves.h"

#include <memory>

namespace {

using Bench::linearAtRandom;
using Bench::linearInOrder;
using Prm::BoundingKeyframes;
using Prm::Cache;
using Prm::Context;
using Prm::Time;
using Prm::View;
using Number = Prm::NumericParameter<double>;

// --- classes of a host -----------------------------------------------------------------------------------------------

/// Overrides nothing that evaluation uses.
class Derived : public Number {};

/// Overrides one hook, and uses what it overrides.
class WithHook : public Number {
public:
    double interpolateValue(const BoundingKeyframes& around, const Context& context, Cache* cache) const override {
        return Number::interpolateValue(around, context, cache) + 0.0;
    }
};

template <class Class> class CurveOf {
public:
    using Floor = Bench::PlainCurve;

    explicit CurveOf(int count) { Bench::fill(m_parameter, count, {Prm::Interpolation::Linear}); }

    double value(double time) const { return m_parameter.value(Time::fromDouble(time)); }

private:
    Class m_parameter;
};
using DerivedCurve = CurveOf<Derived>;
using HookedCurve = CurveOf<WithHook>;

// --- other types -----------------------------------------------------------------------------------------------------

bool isOn(int number) {
    return number % 3 == 0;
}

/// A `bool` holds until its next keyframe.
class SwitchFloor {
public:
    explicit SwitchFloor(int count) : m_count(count) {}

    double value(double time) const {
        int number = 0;
        while (number + 1 < m_count && Bench::keyTime(number + 1) <= time)
            ++number;
        return isOn(number) ? 1.0 : 0.0;
    }

private:
    int m_count;
};

class SwitchCurve {
public:
    using Floor = SwitchFloor;

    explicit SwitchCurve(int count) {
        for (int i = 0; i < count; ++i)
            m_parameter.vSetValue(isOn(i), Time::fromDouble(Bench::keyTime(i)));
    }

    double value(double time) const { return m_parameter.value(Time::fromDouble(time)) ? 1.0 : 0.0; }

private:
    Prm::Parameter<bool> m_parameter;
};

class PointCurve {
public:
    using Floor = Bench::PlainCurve;

    explicit PointCurve(int count) {
        m_parameter.vSetDefaultInterpolation(Prm::Interpolation::Linear);
        for (int i = 0; i < count; ++i) {
            const double value = Bench::keyValue(i);
            m_parameter.vSetValue({value / 4, value * 3 / 4}, Time::fromDouble(Bench::keyTime(i)));
        }
    }

    double value(double time) const {
        const QPointF point = m_parameter.value(Time::fromDouble(time));
        return point.x() + point.y();
    }

private:
    Prm::PointParameter m_parameter;
};

// --- views and masters -----------------------------------------------------------------------------------------------

/// Keyframes in view 0, which the parameter's other views, or other parameters, may show.
class Shown {
public:
    using Floor = Bench::PlainCurve;

    double value(double time) const { return m_shown->value(Context(Time::fromDouble(time), m_view)); }

protected:
    Shown(int count, Prm::ParameterOptions options, View view)
        : m_source(std::make_unique<Number>(QStringLiteral("source"), 0.0, options)), m_shown(m_source.get()),
          m_view(view) {
        Bench::fill(*m_source, count, {Prm::Interpolation::Linear});
    }

    std::unique_ptr<Number> m_source;
    const Number* m_shown;
    View m_view;
};

class TwoViews : public Shown {
public:
    explicit TwoViews(int count) : Shown(count, Prm::Keyframed | Prm::Splittable, View(1)) {
        m_source->uniquifyView(View(1));
    }
};

class ConstrainedCurve : public Shown {
public:
    explicit ConstrainedCurve(int count) : Shown(count, Prm::Keyframed | Prm::Splittable, View(0)) {
        m_source->bAddConstrainedParameter(m_constrained.get());
        m_shown = m_constrained.get();
    }

private:
    std::unique_ptr<Number> m_constrained = std::make_unique<Number>(QStringLiteral("constrained"));
};

class UnsplittableCurve : public Shown {
public:
    explicit UnsplittableCurve(int count) : Shown(count, Prm::Keyframed, View(1)) {}
};

#define PRM_BENCH_KIND(Curve)                                                                                          \
    BENCHMARK_TEMPLATE(linearInOrder, Curve)->Arg(1000);                                                               \
    BENCHMARK_TEMPLATE(linearAtRandom, Curve)->Arg(1000)

PRM_BENCH_KIND(DerivedCurve);
PRM_BENCH_KIND(HookedCurve);
PRM_BENCH_KIND(SwitchCurve);
PRM_BENCH_KIND(PointCurve);
PRM_BENCH_KIND(TwoViews);
PRM_BENCH_KIND(ConstrainedCurve);
PRM_BENCH_KIND(UnsplittableCurve);

} // namespace

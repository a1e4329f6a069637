#pragma once

// What the cases about evaluation have in common: the keyframes, the times, and the least work that could be done.

#include "prm/NumericParameter.h"

#include <QMutex>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <mutex>
#include <random>
#include <vector>

namespace Bench {

constexpr int spacing = 10;
constexpr int evaluationsPerBatch = 1 << 13;

/// Keyframes as a hand sets them: in order, and not evenly.
inline double keyTime(int number) {
    return number * spacing + number * 7 % 5;
}

inline double keyValue(int number) {
    return (number % 100) * 0.7;
}

inline const Prm::IType& ease() {
    static const Prm::IType shape(Prm::Interpolation::Bezier, 0.42, 0.0, 0.58, 1.0);
    return shape;
}

struct Key {
    double time;
    double value;
};

/// Floor a: a search and a straight line over a plain array, without a lock.
class PlainCurve {
public:
    using Floor = PlainCurve;

    explicit PlainCurve(int count) {
        for (int i = 0; i < count; ++i)
            m_keys.push_back({keyTime(i), keyValue(i)});
    }

    double value(double time) const {
        return around(time, [](double x) { return x; });
    }

protected:
    template <class Ease> double around(double time, const Ease& ease) const {
        const auto isBefore = [](const Key& key, double at) { return key.time < at; };
        const auto next = std::lower_bound(m_keys.begin(), m_keys.end(), time, isBefore);
        if (next == m_keys.begin())
            return next->value;
        const auto from = next - 1;
        if (next == m_keys.end())
            return from->value;
        return from->value + (next->value - from->value) * ease((time - from->time) / (next->time - from->time));
    }

private:
    std::vector<Key> m_keys;
};

/// Floor b: the same under a recursive mutex that no other thread locks.
class LockedCurve : public PlainCurve {
public:
    using PlainCurve::PlainCurve;

    double value(double time) const {
        const std::lock_guard<QRecursiveMutex> lock(m_mutex);
        return PlainCurve::value(time);
    }

private:
    mutable QRecursiveMutex m_mutex;
};

/// Floor a with an easing that is solved by Newton's method, as is common.
class EasedCurve : public PlainCurve {
public:
    using PlainCurve::PlainCurve;

    double value(double time) const { return around(time, eased); }

private:
    static double bernstein(double p1, double p2, double s) {
        const double t = 1.0 - s;
        return 3.0 * s * t * (t * p1 + s * p2) + s * s * s;
    }
    static double eased(double x) {
        const Prm::IType& shape = ease();
        double s = x;
        for (int i = 0; i < 8; ++i) {
            const double error = bernstein(shape.x1, shape.x2, s) - x;
            if (std::abs(error) < 1e-12)
                break;
            const double t = 1.0 - s;
            s -= error / (3.0 * (t * t * shape.x1 + 2.0 * s * t * (shape.x2 - shape.x1) + s * s * (1.0 - shape.x2)));
        }
        return bernstein(shape.y1, shape.y2, s);
    }
};

inline void fill(Prm::NumericParameter<double>& parameter, int count, const Prm::IType& shape) {
    for (int i = 0; i < count; ++i) {
        parameter.vSetValue(keyValue(i), Prm::Time::fromDouble(keyTime(i)));
        parameter.vSetInterpolationData(shape, static_cast<unsigned int>(i), Prm::View());
    }
}

/// The parameter, in the form of the floors.
class ParameterCurve {
public:
    using Floor = PlainCurve;

    explicit ParameterCurve(int count, const Prm::IType& shape = {Prm::Interpolation::Linear}) {
        fill(m_parameter, count, shape);
    }

    double value(double time) const { return m_parameter.value(Prm::Time::fromDouble(time)); }

private:
    Prm::NumericParameter<double> m_parameter;
};

enum class Order { FrameAfterFrame, Random };

inline std::vector<double> timesWithin(int keyframes, Order order) {
    const int frames = static_cast<int>(keyTime(keyframes - 1));
    std::mt19937 numbers(1);
    std::uniform_int_distribution<int> anyFrame(1, frames - 1);
    std::vector<double> times;
    for (int i = 0; i < evaluationsPerBatch; ++i)
        times.push_back(order == Order::Random ? anyFrame(numbers) : 1 + i % (frames - 1));
    return times;
}

template <class Curve> [[gnu::noinline]] double sumOf(const Curve& curve, const std::vector<double>& times) {
    double sum = 0.0;
    for (const double time : times)
        sum += curve.value(time);
    return sum;
}

/// Argument: the number of keyframes. The values must be those of the floor, their sum within the tolerance.
template <class Curve, class Floor>
void evaluate(benchmark::State& state, const Curve& curve, Order order, double tolerance = 1e-6) {
    const int keyframes = static_cast<int>(state.range(0));
    const std::vector<double> times = timesWithin(keyframes, order);
    if (std::abs(sumOf(curve, times) - sumOf(Floor(keyframes), times)) > tolerance)
        state.SkipWithError("the values differ from the floor's");
    for (auto _ : state)
        benchmark::DoNotOptimize(sumOf(curve, times));
    state.SetItemsProcessed(state.iterations() * evaluationsPerBatch);
}

template <class Curve> void linearInOrder(benchmark::State& state) {
    evaluate<Curve, typename Curve::Floor>(state, Curve(static_cast<int>(state.range(0))), Order::FrameAfterFrame);
}

template <class Curve> void linearAtRandom(benchmark::State& state) {
    evaluate<Curve, typename Curve::Floor>(state, Curve(static_cast<int>(state.range(0))), Order::Random);
}

} // namespace Bench

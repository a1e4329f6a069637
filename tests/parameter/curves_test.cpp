#include "prm/CurveKinds.h"
#include "prm/NumericParameter.h"
#include "tests/parameter/Keying.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace Prm;

namespace {

constexpr double largest = std::numeric_limits<double>::max();

Interpolation custom(quint32 k) {
    return static_cast<Interpolation>(4 + k);
}

Extrapolation customOutside(quint32 k) {
    return static_cast<Extrapolation>(3 + k);
}

/// Registers kinds for as long as it lives.
struct CustomKinds {
    CustomKinds() {
        registerInterpolation(custom(1), [](const IType& shape, double x) { return x * shape.y2; });
        registerInterpolation(custom(2), [](const IType&, double) { return NAN; });
        const auto cycle = [](Time time, Time first, Time last) {
            return time + (time < first ? last - first : first - last);
        };
        registerExtrapolation(customOutside(0), cycle);
        registerExtrapolation(customOutside(2), [](Time, Time, Time) { return Time(Time::INVALID); });
    }
    ~CustomKinds() {
        for (const quint32 k : {0u, 1u, 2u})
            registerInterpolation(custom(k), {}), registerExtrapolation(customOutside(k), {});
    }
    Q_DISABLE_COPY(CustomKinds)
};

TEST(Curves, KindsOfSegmentsAndTheLinesThatContinueThem) {
    const CustomKinds kinds;
    // A quarter and half way from 2 at time 10 to 10 at time 20, and five frames behind, where the chord gives 14.
    const std::tuple<const char*, IType, double, double, double> rows[] = {
        {"no named kind is written as constant", IType(), 2, 2, 10},
        {"linear ignores its numbers", {Interpolation::Linear, 1, 0, 1, 0}, 4, 6, 14},
        {"bezier overshoots", {Interpolation::Bezier, 1 / 3.0, 0, 2 / 3.0, 3}, 5.5, 12, -14},
        {"registered custom kind", {custom(1), 0, 0, 0, 2}, 6, 10, 14},
        {"unregistered custom kind is straight", {custom(7), 0, 0, 0, 2}, 4, 6, 14},
    };
    for (const auto& [name, shape, quarter, half, behind] : rows) {
        NumericParameter<double> parameter;
        key(parameter, {{10, 2.}, {20, 10.}});
        parameter.vSetInterpolationData(shape, 0, View());
        parameter.vSetExtrapolationAfter(Extrapolation::Linear);
        for (const auto& [time, value] : {std::pair(12.5, quarter), {15, half}, {25, behind}})
            EXPECT_NEAR(parameter.value(at(time, 3)), value, 1e-12) << name << ' ' << time;
    }
    EXPECT_FALSE(registerInterpolation(Interpolation::Bezier, [](const IType&, double) { return 0.0; }));
}

TEST(Curves, OutsideTheKeyframes) {
    const CustomKinds kinds;
    NumericParameter<double> parameter;
    key(parameter, {{1, 5.}, {2, 6.}, {3, 20.}, {4, 18.}});
    const std::tuple<const char*, Extrapolation, double, double> rows[] = {
        {"no finite line", Extrapolation::Linear, -INFINITY, 5},
        {"no named kind", Extrapolation{}, 0, 5},
        {"registered, before", customOutside(0), -0.5, 13},
        {"registered, behind", customOutside(0), 5.5, 13},
        {"unregistered", customOutside(1), 6, 18},
        {"held to the range", customOutside(2), 0, 18},
    };
    for (const auto& [name, kind, time, value] : rows) {
        parameter.vSetExtrapolationBefore(kind);
        parameter.vSetExtrapolationAfter(kind);
        EXPECT_NEAR(parameter.value(at(time)), value, 1e-12) << name;
    }
    EXPECT_FALSE(registerExtrapolation(Extrapolation::Linear, [](Time time, Time, Time) { return time; }));
}

/// The value at a time of a straight line from time 0 to 10.
template <class T> T straight(T first, T second, double time) {
    NumericParameter<T> parameter;
    key<T>(parameter, {{0, first}, {10, second}});
    parameter.vSetExtrapolationBefore(Extrapolation::Linear);
    parameter.vSetExtrapolationAfter(Extrapolation::Linear);
    return parameter.value(at(time));
}

TEST(Curves, NumbersAreRoundedAndHeldToTheirRange) {
    constexpr int top = std::numeric_limits<int>::max();
    constexpr int bottom = std::numeric_limits<int>::min();
    constexpr unsigned int most = std::numeric_limits<unsigned int>::max();
    const std::tuple<const char*, double, double> rows[] = {
        {"half rounds up", straight(0, 5, 1), 1},
        {"half rounds away from zero", straight(0, -5, 1), -1},
        {"less than a half", straight(0, -5, 0.9), 0},
        {"whole range", straight(bottom, top, 5), -1},
        {"above", straight(bottom, top, 1000), top},
        {"below", straight(bottom, top, -1000), bottom},
        {"unsigned, downwards", straight(most, 0u, 1), 3865470566.},
        {"unsigned, above", straight(0u, most, 11), most},
        {"unsigned, below", straight(5u, most, -1), 0},
        {"no overflow on the way", straight(-largest, largest, 5), 0},
        {"past the largest number", straight(-largest, largest, 20), largest},
        {"infinity", straight(0., static_cast<double>(INFINITY), 5), INFINITY},
        {"beside infinity", straight(0., static_cast<double>(INFINITY), 20), INFINITY},
    };
    for (const auto& [name, value, expected] : rows)
        EXPECT_EQ(value, expected) << name;
    EXPECT_TRUE(std::isnan(straight(std::nan(""), 1., 5)));
    const CustomKinds kinds;
    NumericParameter<int> parameter;
    key(parameter, {{0, 1}, {10, 2}, {-INFINITY, 4}});
    parameter.vSetInterpolation(custom(2), at(0));
    EXPECT_EQ(parameter.value(at(5)), 0) << "NaN";
    EXPECT_EQ(parameter.value(at(-1e300)), 4);
}

TEST(Curves, AHostsFunctionMayEditTheListThatItIsAskedAbout) {
    const CustomKinds kinds;
    NumericParameter<double> parameter;
    const auto refill = [&] {
        key(parameter, {{10, 2.}, {20, 10.}});
        parameter.vSetInterpolation(custom(0), at(10));
        parameter.vSetExtrapolationAfter(customOutside(1));
    };
    registerInterpolation(custom(0), [&](const IType& shape, double x) {
        parameter.vDeleteAllKeyframes(View());
        return shape.interpolation == custom(0) ? x : NAN;
    });
    registerExtrapolation(customOutside(1), [&](Time, Time first, Time) {
        parameter.clearViewData();
        return first + 2.5;
    });
    refill();
    EXPECT_EQ(parameter.value(at(15)), 6);
    refill();
    EXPECT_EQ(parameter.value(at(30)), 4);
}

} // namespace

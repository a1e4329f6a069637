#include "prm/CurveKinds.h"
#include "prm/NumericParameter.h"
#include "tests/parameter/EditTable.h"

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

TEST(Curves, ASegmentOfEachKindAndTheLinesThatContinueIt) {
    const CustomKinds kinds;
    const auto bezier = [](double x1, double y1, double x2, double y2) {
        return IType(Interpolation::Bezier, x1, y1, x2, y2);
    };
    // A quarter and half way from 2 at time 10 to 10 at time 20, and five frames outside, where the chord gives -2
    // and 14.
    const std::tuple<const char*, IType, double, double, double, double> rows[] = {
        {"constant", Interpolation::Constant, 2, 2, 2, 10},
        {"no named kind is written as constant", IType(), 2, 2, 2, 10},
        {"linear ignores its numbers", {Interpolation::Linear, 1, 0, 1, 0}, 4, 6, -2, 14},
        {"bezier without numbers is straight", Interpolation::Bezier, 4, 6, -2, 14},
        {"smooth bezier", bezier(1 / 3.0, 0, 2 / 3.0, 1), 3.25, 6, 2, 10},
        {"bezier overshoots", bezier(1 / 3.0, 0, 2 / 3.0, 3), 5.5, 12, 2, -14},
        {"steep ends", bezier(0.5, 1, 0.5, 0), NAN, 6, -6, 18},
        {"start handle on its key takes the other's", bezier(0, 0, 0.5, 1), NAN, NAN, -6, 10},
        {"end handle on its key takes the other's", bezier(0.5, 0, 1, 1), NAN, NAN, 2, 18},
        {"both on their keys take the chord", bezier(0, 0, 1, 1), 4, 6, -2, 14},
        {"vertical ends hold", bezier(0, 1, 1, 0), NAN, 6, 2, 10},
        {"registered custom kind", {custom(1), 0, 0, 0, 2}, 6, 10, -2, 14},
        {"unregistered custom kind is straight", {custom(7), 0, 0, 0, 2}, 4, 6, -2, 14},
    };
    for (const auto& [name, shape, quarter, half, before, after] : rows) {
        SCOPED_TRACE(name);
        NumericParameter<double> parameter;
        key(parameter, {{10, 2.}, {20, 10.}});
        parameter.vSetInterpolationData(shape, 0, View());
        EXPECT_TRUE(parameter.value(at(5)) == 2 && parameter.value(at(25)) == 10) << "held at first";
        parameter.vSetExtrapolationBefore(Extrapolation::Linear);
        parameter.vSetExtrapolationAfter(Extrapolation::Linear);
        for (const auto& [time, value] :
             {std::pair(10., 2.), {12.5, quarter}, {15, half}, {20, 10}, {5, before}, {25, after}}) {
            const double actual = parameter.value(at(time, 3));
            EXPECT_TRUE(std::isnan(value) || std::abs(actual - value) <= 1e-12) << time << ": " << actual;
        }
    }
}

TEST(Curves, OutsideTheKeyframes) {
    const CustomKinds kinds;
    NumericParameter<double> parameter;
    const auto extrapolate = [&](Extrapolation kind, double time) {
        parameter.vSetExtrapolationBefore(kind);
        parameter.vSetExtrapolationAfter(kind);
        return parameter.value(at(time));
    };
    key(parameter, {{1, 5.}});
    EXPECT_EQ(extrapolate(Extrapolation::Linear, -9), 5) << "one keyframe";
    key(parameter, {{2, 6.}, {3, 20.}, {4, 18.}});
    const std::tuple<const char*, Extrapolation, double, double> rows[] = {
        {"first segment", Extrapolation::Linear, 0, 4},
        {"last segment", Extrapolation::Linear, 6, 14},
        {"no finite line", Extrapolation::Linear, -INFINITY, 5},
        {"no named kind", Extrapolation{}, 0, 5},
        {"registered, before", customOutside(0), -0.5, 13},
        {"registered, behind", customOutside(0), 5.5, 13},
        {"unregistered", customOutside(1), 6, 18},
        {"held to the range", customOutside(2), 0, 18},
    };
    for (const auto& [name, kind, time, value] : rows)
        EXPECT_NEAR(extrapolate(kind, time), value, 1e-12) << name;
    EXPECT_FALSE(registerInterpolation(Interpolation::Bezier, [](const IType&, double) { return 0.0; }));
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

TEST(Curves, PointsMoveInBothCoordinates) {
    PointParameter parameter;
    key<QPointF>(parameter, {{0, {0, 10}}, {10, {4, 0}}});
    EXPECT_EQ(parameter.value(at(2.5)), QPointF(1, 7.5));
    parameter.vSetExtrapolationAfter(Extrapolation::Linear);
    EXPECT_EQ(parameter.value(at(15)), QPointF(6, -5));
}

TEST(Curves, ShapesOfNewSegments) {
    const IType standard(Interpolation::Bezier, 1 / 3.0, 0, 2 / 3.0, 1);
    const IType own(Interpolation::Bezier, 0.1, 0.2, 0.3, 0.4);
    const IType another(custom(0), 0.1);
    const std::tuple<const char*, IType, Interpolation, IType> rows[] = {
        {"bezier without numbers", Interpolation::Bezier, Interpolation::Bezier, standard},
        {"linear to bezier", Interpolation::Linear, Interpolation::Bezier, standard},
        {"a shape of its own is kept", own, Interpolation::Bezier, own},
        {"bezier to linear", own, Interpolation::Linear, Interpolation::Linear},
        {"custom numbers are kept", another, custom(0), another},
        {"numbers of another kind are not", another, Interpolation::Bezier, standard}};
    NumericParameter<double> parameter;
    parameter.vSetDefaultInterpolation(Interpolation::Bezier);
    key(parameter, {{0, 1.}, {9, 2.}, {4, 3.}});
    for (const auto& [index, shape] : {std::pair(0u, standard), {1u, standard}, {2u, IType(Interpolation::Bezier)}})
        EXPECT_EQ(parameter.interpolationData({&parameter, View(), index}), shape) << index;
    for (const auto& [name, present, kind, shape] : rows) {
        parameter.vSetInterpolationData(present, 0, View());
        parameter.vSetInterpolation(kind, at(0));
        EXPECT_EQ(parameter.interpolationData({&parameter, View(), 0}), shape) << name;
    }
    EXPECT_NE(dynamic_cast<const NumericParameterWithoutType*>(&parameter), nullptr);
}

} // namespace

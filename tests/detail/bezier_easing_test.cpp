#include "prm/detail/BezierEasing.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>

using namespace Prm;
using detail::easedProgress;

namespace {

const double noNumber = std::numeric_limits<double>::quiet_NaN();
const double infinite = std::numeric_limits<double>::infinity();

IType bezier(double x1, double y1, double x2, double y2) {
    return {Interpolation::Bezier, x1, y1, x2, y2};
}

#if defined(__SIZEOF_FLOAT128__)
__extension__ typedef __float128 Quad;
#else
using Quad = long double;
#endif

Quad coordinate(Quad first, Quad second, Quad s) {
    return 3 * (1 - s) * (1 - s) * s * first + 3 * (1 - s) * s * s * second + s * s * s;
}

/// The slow way to the parameter.
Quad bisect(double x1, double x2, double x) {
    Quad low = 0;
    Quad high = 1;
    for (int i = 0; i < 110; ++i) {
        const Quad middle = (low + high) / 2;
        (coordinate(x1, x2, middle) < Quad(x) ? low : high) = middle;
    }
    return low;
}

double growth(double x1, double x2, double s) {
    return 3 * ((1 - s) * (1 - s) * x1 + 2 * (1 - s) * s * (x2 - x1) + s * s * (1 - x2));
}

/// The largest faults over a set of shapes and times.
struct Worst {
    double backwards = 0;
    double value = 0;
    double steepValue = 0;

    void look(const IType& shape, double x) {
        const double s = detail::easingParameter(shape.x1, shape.x2, x);
        EXPECT_TRUE(s >= 0 && s <= 1);
        backwards = std::max(backwards, std::abs(double(coordinate(shape.x1, shape.x2, s) - Quad(x))));
        const Quad exactS = bisect(shape.x1, shape.x2, x);
        const Quad exact = coordinate(shape.y1, shape.y2, exactS);
        const double fault =
            std::abs(double(Quad(easedProgress(shape, x)) - exact)) / std::max(1.0, std::abs(double(exact)));
        double& worst = growth(shape.x1, shape.x2, double(exactS)) >= 1e-3 ? value : steepValue;
        worst = std::max(worst, fault);
    }
};

void expectExact(const Worst& worst) {
    EXPECT_LE(worst.backwards, 4 * 0x1p-52);
    EXPECT_LE(worst.value, 1e-12);
    EXPECT_LE(worst.steepValue, 5e-5);
}

} // namespace

TEST(BezierEasing, CornersOfTheHandlesAreExact) {
    Worst worst;
    for (const double x1 : {0.0, 1e-300, 1e-9, 1.0 / 3, 0.5, 2.0 / 3, 1 - 0x1p-53, 1.0}) {
        for (const double x2 : {0.0, 1e-9, 1.0 / 3, 0.5, 2.0 / 3, 1 - 1e-9, 1.0}) {
            for (const double y1 : {-2.0, 0.0, 1.0, 3.0}) {
                for (const double x : {5e-324, 1e-300, 1e-17, 1e-6, 0.1, 1.0 / 3, 0.5, 0.75, 1 - 1e-9, 1 - 0x1p-53})
                    worst.look(bezier(x1, y1, x2, 1 - y1), x);
            }
        }
    }
    expectExact(worst);
}

TEST(BezierEasing, RandomShapesAreExact) {
    Worst worst;
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> part(0, 1);
    std::uniform_real_distribution<double> free(-2, 3);
    for (int i = 0; i < 20000; ++i) {
        const double edge = i % 4 == 0 ? part(random) * 1e-3 : part(random);
        worst.look(bezier(i % 3 == 0 ? 1 - edge : part(random), free(random), edge, free(random)), part(random));
    }
    expectExact(worst);
}

struct SpecialCase {
    const char* name;
    IType shape;
    double x;
    double y;
};

class BezierEasingSpecial : public testing::TestWithParam<SpecialCase> {};

TEST_P(BezierEasingSpecial, Holds) {
    EXPECT_EQ(easedProgress(GetParam().shape, GetParam().x), GetParam().y);
}

INSTANTIATE_TEST_SUITE_P(Cases, BezierEasingSpecial,
                         testing::Values(SpecialCase{"AllZeroIsLinear", bezier(0, 0, 0, 0), 0.3, 0.3},
                                         SpecialCase{"DiagonalIsLinear", bezier(0.2, 0.2, 0.9, 0.9), 0.1, 0.1},
                                         SpecialCase{"Start", bezier(0.2, 5, 0.9, 7), 0, 0},
                                         SpecialCase{"End", bezier(0.2, 5, 0.9, 7), 1, 1},
                                         SpecialCase{"Before", bezier(0.2, 5, 0.9, 7), -infinite, 0},
                                         SpecialCase{"Behind", bezier(0.2, 5, 0.9, 7), 2, 1},
                                         SpecialCase{"NoTime", bezier(0.2, 5, 0.9, 7), noNumber, 0},
                                         SpecialCase{"Middle", bezier(1, 0, 0, 1), 0.5, 0.5},
                                         SpecialCase{"HandleHeld", bezier(-3, 0, 7, 1), 0.5, 0.5},
                                         SpecialCase{"NoHandle", bezier(noNumber, 0, 1, 1), 0.5, 0.5}),
                         [](const auto& row) { return row.param.name; });

struct SlopeCase {
    const char* name;
    IType shape;
    double start;
    double end;
};

class BezierEasingSlope : public testing::TestWithParam<SlopeCase> {};

TEST_P(BezierEasingSlope, AtTheEnds) {
    EXPECT_DOUBLE_EQ(detail::easingSlopeAtStart(GetParam().shape), GetParam().start);
    EXPECT_DOUBLE_EQ(detail::easingSlopeAtEnd(GetParam().shape), GetParam().end);
}

INSTANTIATE_TEST_SUITE_P(Cases, BezierEasingSlope,
                         testing::Values(SlopeCase{"Ordinary", bezier(0.25, 0.5, 0.5, 0), 2, 2},
                                         SlopeCase{"AllZero", bezier(0, 0, 0, 0), 1, 1},
                                         SlopeCase{"OnTheKeys", bezier(0, 0, 1, 1), 1, 1},
                                         SlopeCase{"OtherHandle", bezier(0, 0, 0.5, 1.5), 3, -1},
                                         SlopeCase{"OtherHandleAtEnd", bezier(0.5, -1, 1, 1), -2, 4},
                                         SlopeCase{"Vertical", bezier(0, 1, 1, 0), 0, 0},
                                         SlopeCase{"NotFinite", bezier(0.5, infinite, 0.5, noNumber), 0, 0}),
                         [](const auto& row) { return row.param.name; });

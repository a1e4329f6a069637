#include "prm/math/cuberoots.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>

struct CubicCase {
    const char* name;
    double coeffs[3];
    int real;
    double roots[3][2];
};

class CubeRoots : public testing::TestWithParam<CubicCase> {};

TEST_P(CubeRoots, InOrder) {
    double roots[3][2];
    EXPECT_EQ(Prm::cuberoots(GetParam().coeffs, roots), GetParam().real);
    for (int i = 0; i < 3; ++i) {
        for (int part = 0; part < 2; ++part) {
            if (std::isnan(GetParam().roots[i][part]))
                EXPECT_TRUE(std::isnan(roots[i][part]));
            else
                EXPECT_NEAR(roots[i][part], GetParam().roots[i][part], 1e-14) << i;
        }
    }
}

const double noRoot = std::numeric_limits<double>::quiet_NaN();

INSTANTIATE_TEST_SUITE_P(Cubics, CubeRoots,
                         testing::Values(CubicCase{"OneTwoThree", {-6, 11, -6}, 3, {{3, 0}, {1, 0}, {2, 0}}},
                                         CubicCase{"OneReal",
                                                   {-1, 0, 0},
                                                   1,
                                                   {{1, 0}, {-0.5, 0.8660254037844386}, {-0.5, -0.8660254037844386}}},
                                         CubicCase{"ZeroAndPair", {0, 1, 0}, 1, {{0, 0}, {0, 1}, {0, -1}}},
                                         CubicCase{"ZeroAndTwo", {0, -1, 0}, 3, {{0, 0}, {1, 0}, {-1, 0}}},
                                         CubicCase{"Double", {2, -3, 0}, 3, {{1, 0}, {1, 0}, {-2, 0}}},
                                         CubicCase{"Triple", {-1, 3, -3}, 3, {{noRoot, 0}, {noRoot, 0}, {noRoot, 0}}}),
                         [](const auto& row) { return row.param.name; });

#include "prm/math/cuberoots.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

TEST(CubeRoots, InOrder) {
    const double half = std::sqrt(3) / 2;
    const struct {
        const char* name;
        double coeffs[3];
        int real;
        double roots[3][2];
    } rows[] = {
        {"one, two, three", {-6, 11, -6}, 3, {{3, 0}, {1, 0}, {2, 0}}},
        {"one real", {-1, 0, 0}, 1, {{1, 0}, {-0.5, half}, {-0.5, -half}}},
        {"zero and a pair", {0, 1, 0}, 1, {{0, 0}, {0, 1}, {0, -1}}},
        {"zero and two", {0, -1, 0}, 3, {{0, 0}, {1, 0}, {-1, 0}}},
        {"double", {2, -3, 0}, 3, {{1, 0}, {1, 0}, {-2, 0}}},
        {"triple", {-1, 3, -3}, 3, {{NAN, 0}, {NAN, 0}, {NAN, 0}}},
    };
    for (const auto& row : rows) {
        double roots[3][2];
        EXPECT_EQ(Prm::cuberoots(row.coeffs, roots), row.real) << row.name;
        for (int i = 0; i < 6; ++i) {
            const double found = roots[i / 2][i % 2];
            const double expected = row.roots[i / 2][i % 2];
            EXPECT_TRUE(std::isnan(expected) ? std::isnan(found) : std::abs(found - expected) < 1e-14) << row.name << i;
        }
    }
}

} // namespace

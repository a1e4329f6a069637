#include "prm/track/BezierEasing.h"
#include "tests/support/Test.h"

#include <random>

using namespace Prm;
using detail::easedProgress;
using detail::easingParameter;

namespace {

constexpr double smallest = std::numeric_limits<double>::denorm_min();

IType bezier(double x1, double y1, double x2, double y2) {
    return {Interpolation::Bezier, x1, y1, x2, y2};
}

TEST(BezierEasing, IsExactAtPlacesThatAreKnown) {
    const IType overshoot = bezier(0.2, 5, 0.9, -7);
    const std::tuple<const char*, IType, double, double> rows[] = {
        {"all zero is linear", bezier(0, 0, 0, 0), 0.3, 0.3},
        {"the diagonal is linear", bezier(0.2, 0.2, 0.9, 0.9), 0.1, 0.1},
        {"start", overshoot, 0, 0},
        {"end", overshoot, 1, 1},
        {"before", overshoot, -infinity, 0},
        {"behind", overshoot, 2, 1},
        {"no time", overshoot, NAN, 0},
        {"start of a linear one", bezier(0.5, 0.5, 0.5, 0.5), -3, 0},
        {"start, y infinite", bezier(0.5, infinity, 0.5, NAN), 0, 0},
        {"end, y infinite", bezier(0.5, infinity, 0.5, NAN), 1, 1},
        {"inside, y infinite", bezier(0.5, infinity, 0.5, 0), 0.5, infinity},
        {"inside, y enormous", bezier(0.5, 1e308, 0.5, 1e308), 0.5, 0.75e308},
        {"vertical in the middle", bezier(1, 0, 0, 1), 0.5, 0.5},
        {"x = s^3", bezier(0, 1, 0, 0), 0.125, 0.5},
        {"handles held", bezier(-3, 1, -0.5, 0), 0.125, 0.5},
        {"handles held at 1", bezier(infinity, 0, 7, 1), 0.875, 0.5},
        {"handles held onto the diagonal", bezier(-1, 0, 2, 1), 0.1, 0.1},
        {"handles that are no numbers", bezier(NAN, 1, NAN, 0), 0.125, 0.5},
    };
    for (const auto& [name, shape, x, y] : rows)
        EXPECT_EQ(easedProgress(shape, x), y) << name;
    EXPECT_TRUE(std::isnan(easedProgress(bezier(0.5, NAN, 0.5, 0), 0.5)));
}

TEST(BezierEasing, VerySmallTimesKeepTheirRelativeAccuracy) {
    for (const double x : {smallest, 1e-310, 1e-300, 1e-100, 1e-20, 1e-10}) {
        SCOPED_TRACE(x);
        const double tolerance = 0x1p-48 + 2 * smallest / x;
        EXPECT_NEAR(easingParameter(0, 0, x) / std::cbrt(x), 1, tolerance);
        const double s = easingParameter(0, 2.0 / 3, x); // x = 2 s^2 - s^3
        EXPECT_NEAR(s * std::sqrt(2 - s) / std::sqrt(x), 1, tolerance);
        EXPECT_NEAR(easingParameter(1.0 / 3, 2.0 / 3, x), x, tolerance * x);
    }
}

TEST(BezierEasing, SlopesAtTheEnds) {
    const std::tuple<const char*, IType, double, double> rows[] = {
        {"ordinary", bezier(0.25, 0.5, 0.5, 0), 2, 2},
        {"all zero", bezier(0, 0, 0, 0), 1, 1},
        {"both on their keys", bezier(0, 0, 1, 1), 1, 1},
        {"both on the end key", bezier(1, 1, 1, 1), 1, 1},
        {"first on its key", bezier(0, 0, 0.5, 1.5), 3, -1},
        {"second on its key", bezier(0.5, -1, 1, 1), -2, 4},
        {"first on its key, the other above it", bezier(0, 0, 0, 2), 0, -1},
        {"vertical", bezier(0, 1, 1, 0), 0, 0},
        {"vertical as held", bezier(-1, 1, 2, 0), 0, 0},
        {"not finite", bezier(0.5, infinity, 0.5, NAN), 0, 0},
        {"too steep for a number", bezier(smallest, 1, 0.5, 0.5), 0, 1},
        {"handle that is no number", bezier(NAN, 0, 0.5, 1), 2, 0},
    };
    for (const auto& [name, shape, start, end] : rows) {
        EXPECT_EQ(detail::easingSlopeAtStart(shape), start) << name;
        EXPECT_EQ(detail::easingSlopeAtEnd(shape), end) << name;
    }
}

#if defined(__SIZEOF_FLOAT128__)

__extension__ typedef __float128 Quad; // NOLINT(modernize-use-using): only so is the extension no warning

Quad coordinate(Quad first, Quad second, Quad s) {
    const Quad t = 1 - s;
    return 3 * s * t * (t * first + s * second) + s * s * s;
}

double distance(Quad a, Quad b) {
    return static_cast<double>(a < b ? b - a : a - b);
}

/// The exact parameter by bisection, but for its first steps: it has to be close to the solution.
Quad exactParameter(const IType& shape, double x, double solution) {
    Quad low = std::max(0.0, solution - 0x1p-46);
    Quad high = std::min(1.0, solution + 0x1p-46);
    EXPECT_FALSE(coordinate(shape.x1, shape.x2, low) > x || coordinate(shape.x1, shape.x2, high) < x);
    for (int i = 0; i < 8; ++i) {
        const Quad middle = (low + high) / 2;
        (coordinate(shape.x1, shape.x2, middle) < x ? low : high) = middle;
    }
    return x == 1.0 ? 1 : low;
}

void expectExact(const IType& shape, double x) {
    const double s = easingParameter(shape.x1, shape.x2, x);
    const Quad y = coordinate(shape.y1, shape.y2, exactParameter(shape, x, s));
    const double scale = std::max(1.0, std::abs(static_cast<double>(y)));
    EXPECT_LE(distance(coordinate(shape.x1, shape.x2, s), x), 4 * 0x1p-52);
    EXPECT_LE(distance(y, easedProgress(shape, x)) / scale, 1e-13);
}

/// Both ends of [0,1], and what is close to them.
std::vector<double> withMirrored(std::vector<double> numbers) {
    for (std::size_t i = numbers.size(); i-- > 0;)
        numbers.push_back(1.0 - numbers[i]);
    return numbers;
}

TEST(BezierEasing, AgreesWithBisectionInTheCornersAndAnywhere) {
    const auto handles = withMirrored({0, smallest, 1e-300, 1e-17, 0x1p-53, 1e-9, 1e-4, 0.01, 1.0 / 3, 0.5});
    const auto times = withMirrored({smallest, 1e-300, 1e-30, 0x1p-53, 1e-9, 1e-4, 0.01, 0.25, 0.49999, 0.5 - 0x1p-54});
    for (const double x1 : handles) {
        for (const double x2 : handles) {
            for (const double x : times)
                expectExact(bezier(x1, 3, x2, -2), x);
        }
    }
    std::mt19937_64 random(20);
    std::uniform_real_distribution<double> part(0, 1);
    const auto nearby = [&] { return std::pow(10.0, -17.0 * part(random)); };
    // A third each: anywhere, close to 0, close to 1.
    const auto handle = [&] {
        const auto kind = random() % 3;
        return kind == 0 ? part(random) : kind == 1 ? nearby() : 1.0 - nearby();
    };
    for (int i = 0; i < 200000; ++i) {
        const double time = i % 4 == 0 ? 0.5 + 0.5 * nearby() * (2.0 * part(random) - 1.0) : handle();
        expectExact(bezier(handle(), 5.0 * part(random) - 2.0, handle(), 5.0 * part(random) - 2.0), time);
    }
}

#endif

} // namespace

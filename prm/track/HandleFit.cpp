#include "prm/track/HandleFit.h"

#include "prm/track/BezierEasing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace Prm::detail {

namespace {

constexpr std::size_t count = 4;
using Row = std::array<double, count>;

/// The numbers x1, y1, x2, y2, as a shape may have them. The curve stays away from being vertical.
Row held(Row numbers) {
    constexpr double least = 0.02;
    numbers[0] = std::min(1.0, std::max(0.0, numbers[0]));
    numbers[2] = std::min(1.0, std::max(0.0, numbers[2]));
    if (const double lack = least - (1.0 - numbers[0] + numbers[2]); lack > 0.0)
        numbers[0] -= lack;
    return numbers;
}

/// Normal equations of the linearised problem, and the sum of squares.
struct Equations {
    std::array<Row, count> matrix{};
    Row right{};
    double squares = 0.0;
};

Equations equationsOf(const Row& numbers, const std::vector<EasingPoint>& points) {
    Equations all;
    const auto [x1, y1, x2, y2] = numbers;
    for (const EasingPoint& point : points) {
        const double s = easingParameter(x1, x2, point.x);
        const double t = 1.0 - s;
        const double b1 = 3.0 * s * t * t;
        const double b2 = 3.0 * s * s * t;
        const double rest = point.y - (b1 * y1 + b2 * y2 + s * s * s);
        const double dx = t * t * x1 + 2.0 * s * t * (x2 - x1) + s * s * (1.0 - x2);
        const double dy = t * t * y1 + 2.0 * s * t * (y2 - y1) + s * s * (1.0 - y2);
        const double slope = dx > 1e-9 ? -dy / dx : 0.0;
        const Row gradient{slope * b1, b1, slope * b2, b2};
        for (std::size_t i = 0; i < count; ++i) {
            for (std::size_t k = 0; k < count; ++k)
                all.matrix[i][k] += gradient[i] * gradient[k];
            all.right[i] += gradient[i] * rest;
        }
        all.squares += rest * rest;
    }
    return all;
}

/// By elimination; the matrix is positive definite.
Row solved(std::array<Row, count> matrix, Row right, double damping) {
    for (std::size_t i = 0; i < count; ++i)
        matrix[i][i] = matrix[i][i] * (1.0 + damping) + 1e-12;
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t k = i + 1; k < count; ++k) {
            const double factor = matrix[k][i] / matrix[i][i];
            for (std::size_t j = i; j < count; ++j)
                matrix[k][j] -= factor * matrix[i][j];
            right[k] -= factor * right[i];
        }
    }
    for (std::size_t i = count; i-- > 0;) {
        for (std::size_t j = i + 1; j < count; ++j)
            right[i] -= matrix[i][j] * right[j];
        right[i] /= matrix[i][i];
    }
    return right;
}

} // namespace

IType fittedEasing(const IType& start, const std::vector<EasingPoint>& points, double error) {
    constexpr int mostSteps = 12;
    const double enough = 0.1 * error * error * static_cast<double>(points.size());
    Row numbers = held({start.x1, start.y1, start.x2, start.y2});
    Equations equations = equationsOf(numbers, points);
    double damping = 1e-3;
    for (int step = 0; step < mostSteps && equations.squares > enough; ++step) {
        const Row change = solved(equations.matrix, equations.right, damping);
        Row next = numbers;
        for (std::size_t i = 0; i < count; ++i)
            next[i] += change[i];
        next = held(next);
        Equations there = equationsOf(next, points);
        const bool isBetter = there.squares < equations.squares;
        const bool isSlow = isBetter && there.squares > 0.98 * equations.squares;
        damping *= isBetter ? 0.2 : 8.0;
        if (isBetter) {
            numbers = next;
            equations = there;
        }
        if (isSlow)
            break;
    }
    return {Interpolation::Bezier, numbers[0], numbers[1], numbers[2], numbers[3]};
}

} // namespace Prm::detail

#include "prm/detail/BezierEasing.h"

#include <algorithm>
#include <cmath>

namespace Prm::detail {

namespace {

double held(double handle) {
    return handle > 0.0 ? std::min(handle, 1.0) : 0.0;
}

/// One coordinate of the curve.
template <class Number> Number coordinate(Number first, Number second, Number s) {
    const Number rest = 1 - s;
    return s * (3 * rest * (rest * first + s * second) + s * s);
}

double growth(double first, double second, double s) {
    const double rest = 1.0 - s;
    return 3.0 * (rest * (rest * first + 2.0 * s * (second - first)) + s * s * (1.0 - second));
}

bool isStraight(const IType& shape) {
    const bool onDiagonal = shape.x1 == shape.y1 && shape.x2 == shape.y2;
    const bool allZero = onDiagonal && shape.x1 == 0.0 && shape.x2 == 0.0;
    const bool inRange = shape.x1 >= 0.0 && shape.x1 <= 1.0 && shape.x2 >= 0.0 && shape.x2 <= 1.0;
    return allZero || (onDiagonal && inRange);
}

/// The parameter in the left half, x up to 1/2. A mirrored right half gives its handles as 1 - x2 and 1 - x1.
double solveLeftHalf(long double x1, long double x2, double x) {
    constexpr int mostSteps = 64;
    constexpr double closeEnough = 0x1p-54;
    constexpr double steep = 0x1p-4;
    const auto first = static_cast<double>(x1);
    const auto second = static_cast<double>(x2);
    double low = 0.0;
    double high = 1.0;
    double s = x;
    double slope = 1.0;
    for (int i = 0; i < mostSteps; ++i) {
        const double error = coordinate(first, second, s) - x;
        slope = growth(first, second, s);
        (error < 0.0 ? low : high) = s;
        const double step = error / slope;
        double next = s - step;
        if (!(next > low && next < high))
            next = low + 0.5 * (high - low);
        const bool settled = std::abs(error) <= closeEnough || next == s || next == low || next == high;
        if (settled)
            break;
        s = next;
    }
    // Where the curve is nearly vertical the rounding of x(s) itself would show in y.
    if (slope < steep && slope > 0.0) {
        const auto errorAt = [&](double at) {
            return coordinate<long double>(x1, x2, at) - static_cast<long double>(x);
        };
        const long double error = errorAt(s);
        const double better = s - static_cast<double>(error) / slope;
        if (better >= low && better <= high && std::abs(errorAt(better)) < std::abs(error))
            s = better;
    }
    return s;
}

double finiteOr0(double slope) {
    return std::isfinite(slope) ? slope : 0.0;
}

/// The direction of a control point as seen from its end; 0 for a vertical one.
double slopeTowards(double dx, double dy) {
    return dx > 0.0 ? finiteOr0(dy / dx) : 0.0;
}

/// The slope at the start of a curve with these control points.
double startSlopeOf(double x1, double y1, double x2, double y2) {
    if (x1 != 0.0 || y1 != 0.0)
        return slopeTowards(x1, y1);
    if (x2 != 0.0 || y2 != 0.0)
        return slopeTowards(x2, y2);
    return 1.0;
}

} // namespace

double easingParameter(double x1, double x2, double x) {
    if (x <= 0.5)
        return solveLeftHalf(x1, x2, x);
    return 1.0 - solveLeftHalf(1.0L - static_cast<long double>(x2), 1.0L - static_cast<long double>(x1), 1.0 - x);
}

double easedProgress(const IType& shape, double x) {
    if (!(x > 0.0))
        return 0.0;
    if (x >= 1.0)
        return 1.0;
    if (isStraight(shape))
        return x;
    const double x1 = held(shape.x1);
    const double x2 = held(shape.x2);
    if (x <= 0.5)
        return coordinate(shape.y1, shape.y2, solveLeftHalf(x1, x2, x));
    // Mirrored, so that the last part of the curve is as exact as the first.
    const double s = solveLeftHalf(1.0L - static_cast<long double>(x2), 1.0L - static_cast<long double>(x1), 1.0 - x);
    return 1.0 - coordinate(1.0 - shape.y2, 1.0 - shape.y1, s);
}

double easingSlopeAtStart(const IType& shape) {
    return startSlopeOf(held(shape.x1), shape.y1, held(shape.x2), shape.y2);
}

double easingSlopeAtEnd(const IType& shape) {
    if (isStraight(shape))
        return 1.0;
    return startSlopeOf(1.0 - held(shape.x2), 1.0 - shape.y2, 1.0 - held(shape.x1), 1.0 - shape.y1);
}

} // namespace Prm::detail

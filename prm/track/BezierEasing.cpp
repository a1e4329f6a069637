#include "prm/track/BezierEasing.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Prm::detail {

namespace {

/// c h + b h^2 + a h^3: how far time is from where it is at some point of the curve, h from there.
struct Cubic {
    double c;
    double b;
    double a;

    double errorAt(double h, double target) const { return h * (c + a * (h * h)) + (b * (h * h) - target); }
    double slopeAt(double h) const { return c + h * (2.0 * b + 3.0 * a * h); }
    double bendAt(double h) const { return 2.0 * b + 6.0 * a * h; }
};

/// x(s), with h = s.
Cubic aboutStart(double x1, double x2) {
    return {3.0 * x1, 3.0 * (x2 - 2.0 * x1), 1.0 + 3.0 * (x1 - x2)};
}

/// 2 x(s) - 1 + b, with h = 2 s - 1. Where c and b are small, they are accurate in themselves, not only beside 1.
Cubic aboutMiddle(double x1, double x2) {
    const double rest = 1.0 - x1;
    const double c = 0.75 * (rest + x2);
    return {c, 0.75 * (rest - x2), 1.0 - c};
}

/// A value near the root: where the strongest of the three terms alone reaches the target.
double reach(const Cubic& cubic, double target) {
    double h = 1.0;
    if (cubic.c > 0.0)
        h = std::min(h, target / cubic.c);
    if (cubic.b > 0.0)
        h = std::min(h, std::sqrt(target) / std::sqrt(cubic.b));
    if (cubic.a > 0.0)
        h = std::min(h, std::cbrt(target) / std::cbrt(cubic.a));
    return h;
}

/// Where a cubic that rises from 0 to at least the target does so within [0,1]. Newton's method, which divides only by
/// the slope and so bears the smallest numbers; a step that would leave the bracket halves it instead.
double bracketedRoot(const Cubic& cubic, double target) {
    constexpr int mostSteps = 64;
    constexpr double smallStep = 0x1p-30; // beside h; the error that is left is about its square
    double low = 0.0;
    double high = 1.0;
    double h = reach(cubic, target);
    for (int i = 0; i < mostSteps; ++i) {
        const double error = cubic.errorAt(h, target);
        if (error == 0.0)
            break;
        (error < 0.0 ? low : high) = h;
        double next = h - error / cubic.slopeAt(h);
        if (!(next >= low && next <= high))
            next = low + 0.5 * (high - low);
        const double step = std::abs(next - h);
        h = next;
        if (step <= smallStep * h)
            break;
    }
    return h;
}

/// The parameter for every curve and time. A curve can be vertical only at its start, in its middle and at its end, and
/// is solved as seen from the nearest of them: there the numbers are small, and rounding is small beside them.
double carefulParameter(double x1, double x2, double x) {
    if (x > 0.75)
        return 1.0 - carefulParameter(1.0 - x2, 1.0 - x1, 1.0 - x);
    if (x < 0.25)
        return bracketedRoot(aboutStart(x1, x2), x);
    const Cubic middle = aboutMiddle(x1, x2);
    const double target = 2.0 * x - 1.0 + middle.b;
    const double h =
        target < 0.0 ? -bracketedRoot({middle.c, -middle.b, middle.a}, -target) : bracketedRoot(middle, target);
    return 0.5 + 0.5 * h;
}

/// From the middle, time is w = h - (1 - h^2) (b + a h). So h = w + (1 - w^2) (b + a w) in the first order; the last
/// factor is that of the second order, damped for the strongest curves.
double guess(const Cubic& middle, double w) {
    const double square = w * w;
    const double correction = 1.0 + 0.375 * middle.a * (1.0 - 3.0 * square) - 2.0 * middle.b * w;
    return w + (1.0 - square) * (middle.b + middle.a * w) * correction;
}

/// Householder's method of the third order: Newton's with two more derivatives. Each step takes the error to its
/// fourth power, for the same one division.
double householderStep(const Cubic& cubic, double h, double target) {
    const double error = cubic.errorAt(h, target);
    const double slope = cubic.slopeAt(h);
    const double bent = error * cubic.bendAt(h);
    const double square = slope * slope;
    return error * (square - 0.5 * bent) / (slope * (square - bent) + cubic.a * (error * error));
}

double parameter(double x1, double x2, double x) {
    constexpr int mostSteps = 4;
    constexpr double smallStep = 0x1p-16;
    constexpr double leastSlope = 0x1p-4;
    constexpr double farthest = 1.0 - 0x1p-8;
    const Cubic middle = aboutMiddle(x1, x2);
    const double w = 2.0 * x - 1.0;
    const double target = w + middle.b;
    double h = guess(middle, w);
    double step = 1.0;
    for (int i = 0; i < mostSteps && std::abs(step) > smallStep; ++i) {
        step = householderStep(middle, h, target);
        h -= step;
    }
    const bool isSure = std::abs(step) <= smallStep && std::abs(h) <= farthest && middle.slopeAt(h) >= leastSlope;
    return isSure ? 0.5 + 0.5 * h : carefulParameter(x1, x2, x);
}

/// NaN gives 0.
double heldToUnit(double number) {
    return std::min(1.0, std::max(0.0, number));
}

double progressAt(double y1, double y2, double s) {
    const double t = 1.0 - s;
    return 3.0 * s * t * (t * y1 + s * y2) + s * s * s;
}

/// A handle as seen from a key.
struct Direction {
    double dx;
    double dy;
};

double slopeOfFirst(const std::array<Direction, 2>& handles) {
    for (const Direction& handle : handles) {
        const double slope = handle.dy / handle.dx;
        if (handle.dx != 0.0)
            return std::isfinite(slope) ? slope : 0.0;
        if (handle.dy != 0.0)
            return 0.0;
    }
    return 1.0;
}

} // namespace

double easingParameter(double x1, double x2, double x) {
    return parameter(x1, x2, x);
}

double easedProgress(const IType& shape, double x) {
    const double part = heldToUnit(x);
    const double x1 = heldToUnit(shape.x1);
    const double x2 = heldToUnit(shape.x2);
    const bool isStraight = x1 == shape.y1 && x2 == shape.y2;
    if (isStraight || part == 0.0 || part == 1.0)
        return part;
    return progressAt(shape.y1, shape.y2, parameter(x1, x2, part));
}

double easingSlopeAtStart(const IType& shape) {
    return slopeOfFirst({{{heldToUnit(shape.x1), shape.y1}, {heldToUnit(shape.x2), shape.y2}}});
}

double easingSlopeAtEnd(const IType& shape) {
    return slopeOfFirst({{{1.0 - heldToUnit(shape.x2), 1.0 - shape.y2}, {1.0 - heldToUnit(shape.x1), 1.0 - shape.y1}}});
}

} // namespace Prm::detail

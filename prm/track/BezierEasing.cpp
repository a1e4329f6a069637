#include "prm/track/BezierEasing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

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

/// A coordinate of the curve, by its two inner control points.
struct Coordinate {
    double first;
    double second;

    double at(double s) const { return progressAt(first, second, s); }
    /// A third of the first derivative, a sixth of the second one.
    double slopeAt(double s) const {
        const double t = 1.0 - s;
        return t * t * first + 2.0 * s * t * (second - first) + s * s * (1.0 - second);
    }
    double bendAt(double s) const { return (1.0 - s) * (second - 2.0 * first) + s * (1.0 - 2.0 * second + first); }
};

struct Curve {
    explicit Curve(const IType& shape)
        : x{heldToUnit(shape.x1), heldToUnit(shape.x2)}, y{shape.y1, shape.y2},
          height(std::max({1.0, std::abs(shape.y1), std::abs(shape.y2)})) {}

    double parameterAt(double part) const {
        return part <= 0.0 ? 0.0 : part >= 1.0 ? 1.0 : parameter(x.first, x.second, part);
    }

    Coordinate x;
    Coordinate y;
    double height;
};

/// Where y may turn: the roots of a s^2 + 2 b s + c, a third of its derivative.
std::array<double, 2> turns(const Coordinate& y) {
    const double scale = std::max({1.0, std::abs(y.first), std::abs(y.second)});
    const double a = (3.0 * (y.first / scale - y.second / scale)) + 1.0 / scale;
    const double b = y.second / scale - 2.0 * (y.first / scale);
    const double c = y.first / scale;
    const double q = -(b + std::copysign(std::sqrt(std::max(0.0, b * b - a * c)), b));
    return {q / a, c / q};
}

/// A piece of the curve differs from its chord by at most h^2/8 of the second derivative in each coordinate; what time
/// is off counts by the slope of the chord.
void addFlat(const Curve& curve, double from, double to, double tolerance, int depth, std::vector<double>& parts) {
    constexpr int deepest = 48;
    const double h = to - from;
    const double width = curve.x.at(to) - curve.x.at(from);
    const auto bend = [&](const Coordinate& of) {
        return 6.0 * std::max(std::abs(of.bendAt(from)), std::abs(of.bendAt(to)));
    };
    const double chord = std::abs(curve.y.at(to) - curve.y.at(from)) / width;
    const double error = h * h / 8.0 * (bend(curve.y) + chord * bend(curve.x));
    if (error <= tolerance || depth == deepest || !(width > 0.0))
        return;
    const double middle = from + h / 2.0;
    addFlat(curve, from, middle, tolerance, depth + 1, parts);
    parts.push_back(curve.x.at(middle));
    addFlat(curve, middle, to, tolerance, depth + 1, parts);
}

} // namespace

bool isStraightEasing(const IType& shape) {
    return heldToUnit(shape.x1) == shape.y1 && heldToUnit(shape.x2) == shape.y2;
}

std::pair<double, double> easedRange(const IType& shape, double from, double to, double slack) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const Curve curve(shape);
    if (!std::isfinite(shape.y1) || !std::isfinite(shape.y2))
        return {-infinity, infinity};
    const double begin = std::max(0.0, from - slack);
    const double end = std::min(1.0, to + slack);
    const auto [least, greatest] = std::minmax({easedProgress(shape, begin), easedProgress(shape, end)});
    std::pair<double, double> range(least - slack * curve.height, greatest + slack * curve.height);
    if (isStraightEasing(shape))
        return range;
    const double noise = 0x1p-50 * curve.height;
    const double first = curve.parameterAt(begin);
    const double last = curve.parameterAt(end);
    for (const double turn : turns(curve.y)) {
        const double y = curve.y.at(turn);
        if (!(turn > first && turn < last))
            continue;
        range.first = y < range.first ? y - noise : range.first;
        range.second = y > range.second ? y + noise : range.second;
    }
    return range;
}

double easedSlope(const IType& shape, double x) {
    if (isStraightEasing(shape))
        return 1.0;
    const Curve curve(shape);
    const double s = curve.parameterAt(x);
    const double dx = curve.x.slopeAt(s);
    const double dy = curve.y.slopeAt(s);
    if (dx > 0.0)
        return dy / dx;
    // Here the curve stands still or is vertical: the direction in which it goes on decides.
    if (dy == 0.0 && s == 0.0 && curve.x.second > 0.0)
        return curve.y.second / curve.x.second;
    const double direction = dy != 0.0 ? dy : curve.y.bendAt(s);
    return direction != 0.0 ? std::copysign(std::numeric_limits<double>::infinity(), direction) : 1.0;
}

void addFlatParts(const IType& shape, double from, double to, double tolerance, std::vector<double>& parts) {
    constexpr double largest = 1e200; // beyond it the estimate of the error may overflow
    const Curve curve(shape);
    if (isStraightEasing(shape) || !(std::abs(shape.y1) <= largest && std::abs(shape.y2) <= largest))
        return;
    const double least = std::max(0x1p-26 * curve.height, tolerance);
    addFlat(curve, curve.parameterAt(from), curve.parameterAt(to), least, 0, parts);
}

double easingParameter(double x1, double x2, double x) {
    return parameter(x1, x2, x);
}

double easedProgress(const IType& shape, double x) {
    const double part = heldToUnit(x);
    const double x1 = heldToUnit(shape.x1);
    const double x2 = heldToUnit(shape.x2);
    if (isStraightEasing(shape) || part == 0.0 || part == 1.0)
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

#pragma once

#include <algorithm>
#include <array>
#include <cmath>

namespace Prm::detail {

inline double between(double from, double to, double part) {
    return from + (to - from) * part;
}

/// One coordinate of a cubic Bezier curve from 0 to an end.
struct CubicCoordinate {
    double first;
    double second;
    double end = 1.0;

    /// The blossom, of which the control points of each piece are values.
    double at(double a, double b, double c) const {
        const double start = between(0.0, first, a);
        const double middle = between(first, second, a);
        const double last = between(second, end, a);
        return between(between(start, middle, b), between(middle, last, b), c);
    }
    double at(double s) const { return at(s, s, s); }
    /// The inner control points of the piece from one parameter to another, as parts of its extent.
    std::array<double, 2> within(double from, double to) const {
        const double start = at(from);
        const double extent = at(to) - start;
        return {(at(from, from, to) - start) / extent, (at(from, to, to) - start) / extent};
    }
    /// How far the control points of a piece are from its start.
    double reach(double from, double to) const {
        const double start = at(from);
        return std::max(
            {std::abs(at(from, from, to) - start), std::abs(at(from, to, to) - start), std::abs(at(to) - start)});
    }
};

/// As part of a segment's time.
inline double held(double number) {
    return std::min(1.0, std::max(0.0, number));
}

} // namespace Prm::detail

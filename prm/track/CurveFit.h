#pragma once

#include "prm/Interpolation.h"
#include "prm/track/BezierEasing.h"
#include "prm/track/HandleFit.h"
#include "prm/track/Ranges.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace Prm::detail {

/// A vertex of the straight lines that show a curve.
template <class T> struct CurveVertex {
    double time = 0.0;
    typename Components<T>::Numbers value{};
};

/// A coordinate of a segment as a polynomial of the curve's parameter, from 0 to 1.
struct CubicPart {
    static CubicPart straight() { return {1.0, 0.0, 0.0}; }
    static CubicPart ofHandles(double first, double second) {
        return {3.0 * first, 3.0 * (second - 2.0 * first), 1.0 + 3.0 * (first - second)};
    }

    double at(double s) const { return s * (a + s * (b + s * c)); }
    double bendAt(double s) const { return 2.0 * b + 6.0 * c * s; }

    double a;
    double b;
    double c;
};

/// Fits one segment to the lines from one vertex to another; it begins and ends as they do.
template <class T> class CurveFit {
public:
    using Vertices = std::vector<CurveVertex<T>>;

    CurveFit(const Vertices& vertices, std::size_t first, std::size_t last)
        : m_vertices(vertices), m_first(first), m_last(last), m_start(vertices[first].time),
          m_duration(vertices[last].time - m_start) {
        for (std::size_t c = 0; c < m_change.size(); ++c) {
            m_change[c] = vertices[last].value[c] - vertices[first].value[c];
            m_square += m_change[c] * m_change[c];
        }
    }

    /// Whether a straight segment is within the error of the lines everywhere.
    bool isStraight(double error) const {
        return isWithin(CubicPart::straight(), CubicPart::straight(), error, [](double x) { return x; });
    }
    /// Whether a Bezier segment is that was fitted by least squares; `shape` becomes its. First with handles at thirds
    /// of the time, which takes two linear equations; if that comes near, with free ones.
    bool isBezier(double error, IType& shape) const {
        double y1 = 0.0;
        double y2 = 0.0;
        if (!(m_square > 0.0) || !findHandles(y1, y2))
            return false;
        IType fitted(Interpolation::Bezier, 1.0 / 3.0, y1, 2.0 / 3.0, y2);
        const bool isThird =
            isWithin(CubicPart::straight(), CubicPart::ofHandles(y1, y2), error, [](double x) { return x; });
        if (!isThird && !(m_last - m_first > 2 && findFreeHandles(error, fitted)))
            return false;
        shape = fitted;
        return true;
    }

private:
    double partAt(std::size_t i) const { return (m_vertices[i].time - m_start) / m_duration; }

    /// Normal equations over vertices and the middles of lines, each with its share of the time.
    bool findHandles(double& y1, double& y2) const {
        double s11 = 0.0;
        double s12 = 0.0;
        double s22 = 0.0;
        double r1 = 0.0;
        double r2 = 0.0;
        const auto add = [&](double x, double weight, double rest) {
            const double t = 1.0 - x;
            const double b1 = 3.0 * x * t * t;
            const double b2 = 3.0 * x * x * t;
            s11 += weight * b1 * b1;
            s12 += weight * b1 * b2;
            s22 += weight * b2 * b2;
            r1 += weight * b1 * rest;
            r2 += weight * b2 * rest;
        };
        double x = 0.0;
        double progress = 0.0;
        for (std::size_t i = m_first + 1; i <= m_last; ++i) {
            const double nextX = i == m_last ? 1.0 : partAt(i);
            const double next = i == m_last ? 1.0 : progressAt(i);
            const double weight = nextX - x;
            const double middle = 0.5 * (x + nextX);
            add(middle, 2.0 * weight, 0.5 * (progress + next) - middle * middle * middle);
            add(nextX, weight, next - nextX * nextX * nextX);
            x = nextX;
            progress = next;
        }
        const double determinant = s11 * s22 - s12 * s12;
        if (!(determinant > 1e-12 * s11 * s22))
            return false;
        y1 = (r1 * s22 - r2 * s12) / determinant;
        y2 = (r2 * s11 - r1 * s12) / determinant;
        constexpr double farthest = 1e6;
        return std::abs(y1) <= farthest && std::abs(y2) <= farthest;
    }

    /// The part of the change that is nearest to the vertex.
    double progressAt(std::size_t i) const {
        double sum = 0.0;
        for (std::size_t c = 0; c < m_change.size(); ++c)
            sum += m_change[c] * (m_vertices[i].value[c] - m_vertices[m_first].value[c]);
        return sum / m_square;
    }

    bool findFreeHandles(double error, IType& shape) const {
        constexpr std::size_t most = 24;
        const std::size_t step = (m_last - m_first + most - 1) / most;
        std::vector<EasingPoint> points;
        points.reserve(most);
        for (std::size_t i = m_first + 1; i < m_last; i += step)
            points.push_back({partAt(i), progressAt(i)});
        const IType fitted = fittedEasing(shape, points, error / std::sqrt(m_square));
        const auto parameterAt = [&](double x) { return easingParameter(fitted.x1, fitted.x2, x); };
        if (!isWithin(CubicPart::ofHandles(fitted.x1, fitted.x2), CubicPart::ofHandles(fitted.y1, fitted.y2), error,
                      parameterAt))
            return false;
        shape = fitted;
        return true;
    }

    /// Of a segment whose time and value are polynomials of a parameter, which is known for each part of the time.
    template <class Parameter>
    bool isWithin(const CubicPart& x, const CubicPart& y, double error, const Parameter& parameterAt) const {
        double from = 0.0;
        for (std::size_t i = m_first; i < m_last; ++i) {
            const double to = i + 1 == m_last ? 1.0 : parameterAt(partAt(i + 1));
            for (std::size_t c = 0; c < m_change.size(); ++c) {
                if (!isWithin(x, y, {i, c, from, to}, error))
                    return false;
            }
            from = to;
        }
        return true;
    }

    /// One component of one line, and the parameters of the segment beside it.
    struct Line {
        std::size_t vertex;
        std::size_t component;
        double from;
        double to;
    };
    /// The difference of the segment and one line is a polynomial of the third degree of the parameter: greatest at an
    /// end or where its derivative is 0. Half the bend of its ends often says enough.
    bool isWithin(const CubicPart& x, const CubicPart& y, const Line& line, double error) const {
        const double first = m_vertices[line.vertex].value[line.component];
        const double last = m_vertices[line.vertex + 1].value[line.component];
        const double start = partAt(line.vertex);
        const double width = (line.vertex + 1 == m_last ? 1.0 : partAt(line.vertex + 1)) - start;
        const double change = m_change[line.component];
        const double base = m_vertices[m_first].value[line.component];
        const double slope = (last - first) / width;
        const auto difference = [&](double s) { return base + change * y.at(s) - first - slope * (x.at(s) - start); };
        const double ends =
            std::max(std::abs(base + change * y.at(line.from) - first), std::abs(base + change * y.at(line.to) - last));
        if (!(ends <= error))
            return false;
        const auto bendAt = [&](double s) { return std::abs(change * y.bendAt(s) - slope * x.bendAt(s)); };
        const double length = line.to - line.from;
        if (ends + length * length / 8.0 * std::max(bendAt(line.from), bendAt(line.to)) <= error)
            return true;
        const double a = change * y.a - slope * x.a;
        const double b = change * y.b - slope * x.b;
        const double c = 3.0 * (change * y.c - slope * x.c);
        const double q = -(b + std::copysign(std::sqrt(std::max(0.0, b * b - a * c)), b));
        const auto isNear = [&](double s) {
            return !(s > line.from && s < line.to) || std::abs(difference(s)) <= error;
        };
        return isNear(q / c) && isNear(a / q);
    }

    const Vertices& m_vertices;
    const std::size_t m_first;
    const std::size_t m_last;
    const double m_start;
    const double m_duration;
    typename Components<T>::Numbers m_change{};
    double m_square = 0.0;
};

} // namespace Prm::detail

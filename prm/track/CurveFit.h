#pragma once

#include "prm/Interpolation.h"
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

/// The part of the change that a segment has reached, as a polynomial of the part x of its time, without constant term:
/// that of handles at a third and at two thirds of the time.
struct Progress {
    static Progress straight() { return {1.0, 0.0, 0.0}; }
    static Progress ofHandles(double y1, double y2) { return {3.0 * y1, 3.0 * (y2 - 2.0 * y1), 1.0 + 3.0 * (y1 - y2)}; }

    double at(double x) const { return x * (a + x * (b + x * c)); }

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
    bool isStraight(double error) const { return isWithin(Progress::straight(), error); }
    /// Whether the Bezier segment with the least squares of differences is; `shape` becomes its.
    bool isBezier(double error, IType& shape) const {
        double y1 = 0.0;
        double y2 = 0.0;
        if (!(m_square > 0.0) || !findHandles(y1, y2) || !isWithin(Progress::ofHandles(y1, y2), error))
            return false;
        shape = {Interpolation::Bezier, 1.0 / 3.0, y1, 2.0 / 3.0, y2};
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

    bool isWithin(const Progress& progress, double error) const {
        for (std::size_t i = m_first; i < m_last; ++i) {
            for (std::size_t c = 0; c < m_change.size(); ++c) {
                if (!isWithin(progress, i, c, error))
                    return false;
            }
        }
        return true;
    }

    /// The difference of the segment and one line: greatest at an end or where its derivative, of the second degree, is
    /// 0. Half the bend of its ends often says enough.
    bool isWithin(const Progress& progress, std::size_t i, std::size_t c, double error) const {
        const double x0 = partAt(i);
        const double x1 = i + 1 == m_last ? 1.0 : partAt(i + 1);
        const double base = m_vertices[m_first].value[c];
        const double change = m_change[c];
        const double from = m_vertices[i].value[c];
        const double to = m_vertices[i + 1].value[c];
        const double d0 = base + change * progress.at(x0) - from;
        const double d1 = base + change * progress.at(x1) - to;
        const double most = std::max(std::abs(d0), std::abs(d1));
        const double width = x1 - x0;
        const double bend = std::abs(change) * std::max(std::abs(2.0 * progress.b + 6.0 * progress.c * x0),
                                                        std::abs(2.0 * progress.b + 6.0 * progress.c * x1));
        if (!(most <= error))
            return false;
        if (most + width * width / 8.0 * bend <= error || change == 0.0)
            return true;
        const double slope = (to - from) / (width * change);
        const auto isNear = [&](double x) {
            if (!(x > x0 && x < x1))
                return true;
            const double line = from + (to - from) * ((x - x0) / width);
            return std::abs(base + change * progress.at(x) - line) <= error;
        };
        const double root = std::sqrt(std::max(0.0, progress.b * progress.b - 3.0 * progress.c * (progress.a - slope)));
        const double q = -(progress.b + std::copysign(root, progress.b));
        return isNear(q / (3.0 * progress.c)) && isNear((progress.a - slope) / q);
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

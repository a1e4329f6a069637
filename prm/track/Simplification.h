#pragma once

#include "prm/track/CurveFit.h"
#include "prm/track/CurveShapes.h"
#include "prm/track/ReshapedTrack.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <vector>

namespace Prm::detail {

/// Fewer keyframes that show the same within an error. From a keyframe that is kept, one segment goes as far as it
/// fits; how far is found by doubling and halving. Keyframes are kept at the ends of the range, beside holds and custom
/// segments, at corners and at extrema, unless these are within the error.
template <class T> class FewerKeyframes {
public:
    using Keyframes = QVector<KeyframeData<T>>;

    FewerKeyframes(ReshapedTrack<T>& track, const Simplification& act)
        : m_track(track), m_list(track.now.keyframes), m_error(act.error), m_isLinear(act.isLinear) {
        std::tie(m_begin, m_end) = positionsIn(m_list, act.range);
    }

    void find() {
        m_found.reserve(m_list.size());
        m_found += m_list.mid(0, m_begin);
        for (int i = m_begin; i < m_end;) {
            const int end = isHeld(i) ? addHeld(i) : addRun(i);
            i = std::max(i + 1, end);
        }
        m_found += m_list.mid(m_end);
        m_track.now.keyframes = m_found;
    }

private:
    using Numbers = typename Components<T>::Numbers;

    /// The last keyframe of the range has no segment in it.
    bool isHeld(int i) const { return i + 1 < m_end && (m_track.holds || holds(m_list.at(i).interpolationData)); }
    bool isCurve(int i) const {
        const bool isContinued = (i == 0 && m_track.outside.before == Extrapolation::Linear) ||
                                 (i + 2 == m_list.size() && m_track.outside.after == Extrapolation::Linear);
        return i + 1 < m_end && !isHeld(i) && !isRegistered(m_list.at(i).interpolationData.interpolation) &&
               isFiniteSegment(i) && !isContinued && !isTooBent(i);
    }
    /// Of so many lines for its error that it stays as it is.
    bool isTooBent(int i) const {
        constexpr double least = 0x1p-18;
        const IType& shape = m_list.at(i).interpolationData;
        const double height = std::max({1.0, std::abs(shape.y1), std::abs(shape.y2)});
        return isBent(shape) && flatness() < least * height * distance(m_list.at(i).value, m_list.at(i + 1).value);
    }
    bool isFiniteSegment(int i) const {
        const auto a = Components<T>::of(m_list.at(i).value);
        const auto b = Components<T>::of(m_list.at(i + 1).value);
        const IType& shape = m_list.at(i).interpolationData;
        bool all = std::isfinite(m_list.at(i + 1).time - m_list.at(i).time) && std::isfinite(shape.y1) &&
                   std::isfinite(shape.y2);
        for (std::size_t c = 0; c < a.size(); ++c)
            all = all && std::isfinite(a[c]) && std::isfinite(b[c]) && std::isfinite(b[c] - a[c]);
        return all;
    }
    bool isNear(const T& a, const T& b) const {
        if constexpr (blends<T>)
            return ValueType<T>::equal(a, b) || distance(a, b) <= m_error;
        else
            return ValueType<T>::equal(a, b);
    }
    static double distance(const T& a, const T& b) {
        const auto from = Components<T>::of(a);
        const auto to = Components<T>::of(b);
        double most = 0.0;
        for (std::size_t c = 0; c < from.size(); ++c)
            most = std::isfinite(to[c] - from[c]) ? std::max(most, std::abs(to[c] - from[c])) : infinite;
        return most;
    }

    /// Adds a keyframe that holds, and returns the next one that differs, or that ends the holds.
    int addHeld(int i) {
        m_found.append(m_list.at(i));
        int next = i + 1;
        while (isHeld(next) && isNear(m_list.at(i).value, m_list.at(next).value))
            ++next;
        return next;
    }

    /// Adds the keyframes of the curve that begins at one, without its last one, which it returns.
    int addRun(int i) {
        int last = i;
        if constexpr (blends<T>) {
            while (isCurve(last))
                ++last;
        }
        if (last == i) {
            m_found.append(m_list.at(i));
            return i + 1;
        }
        if constexpr (blends<T>)
            addFitted(i, last);
        return last;
    }

    // --- fitting -----------------------------------------------------------------------------------------------------

    /// A vertex that may become a keyframe.
    struct Stop {
        std::size_t vertex;
        /// The position in the list; -1 for a point within a segment.
        int keyframe;
        bool isKept;
    };

    double flatness() const { return m_error * (m_isLinear ? 0.25 : 0.0625); }

    void addFitted(int first, int last) {
        m_vertices.clear();
        m_stops.clear();
        for (int i = first; i < last; ++i) {
            addStop(i, isNeeded(i, first, last));
            addWithin(m_list.at(i), m_list.at(i + 1));
        }
        addStop(last, true);
        keepExtrema();
        for (std::size_t at = 0; at + 1 < m_stops.size();)
            at = addSegment(at);
    }

    void addStop(int i, bool isKept) {
        m_stops.push_back({m_vertices.size(), i, isKept});
        m_vertices.push_back({m_list.at(i).time.toDouble(), Components<T>::of(m_list.at(i).value)});
    }
    /// The points between which a segment is nearly straight.
    void addWithin(const KeyframeData<T>& from, const KeyframeData<T>& to) {
        const double height = distance(from.value, to.value);
        if (!isBent(from.interpolationData) || height == 0.0)
            return;
        std::vector<double> parts;
        addFlatParts(from.interpolationData, 0.0, 1.0, flatness() / height, parts);
        const auto start = Components<T>::of(from.value);
        const auto end = Components<T>::of(to.value);
        for (const double part : parts) {
            const double time = from.time.toDouble() + (to.time - from.time) * part;
            if (!(time > m_vertices.back().time && time < to.time.toDouble()))
                continue;
            CurveVertex<T> vertex{time, start};
            const double progress = segmentProgress(from.interpolationData, part);
            for (std::size_t c = 0; c < start.size(); ++c)
                vertex.value[c] = mix(start[c], end[c], progress);
            if (m_isLinear)
                m_stops.push_back({m_vertices.size(), -1, false});
            m_vertices.push_back(vertex);
        }
    }

    bool isNeeded(int i, int first, int last) const { return i == first || i == last || isCorner(i, first, last); }
    /// Whether the change of direction stands out: by more than the error over a quarter of the shorter segment, and
    /// beside those of the neighbours, as in no smooth curve.
    bool isCorner(int i, int first, int last) const {
        constexpr double leastRatio = 3.0;
        for (std::size_t c = 0; c < Numbers().size(); ++c) {
            const double turn = turnAt(i, c);
            const double before = i - 1 > first ? turnAt(i - 1, c) : 0.0;
            const double after = i + 1 < last ? turnAt(i + 1, c) : 0.0;
            if (turn > m_error && turn > leastRatio * std::max(before, after))
                return true;
        }
        return false;
    }
    double turnAt(int i, std::size_t c) const {
        const KeyframeData<T>& before = m_list.at(i - 1);
        const KeyframeData<T>& here = m_list.at(i);
        const KeyframeData<T>& after = m_list.at(i + 1);
        const double left = here.time - before.time;
        const double right = after.time - here.time;
        const double value = Components<T>::of(here.value)[c];
        const double slopeBefore =
            (value - Components<T>::of(before.value)[c]) * endSlope(before.interpolationData) / left;
        const double slopeAfter =
            (Components<T>::of(after.value)[c] - value) * startSlope(here.interpolationData) / right;
        return std::abs(slopeAfter - slopeBefore) * std::min(left, right) / 4.0;
    }

    /// Keyframes at which a component turns by more than twice the error on both sides.
    void keepExtrema() {
        for (std::size_t c = 0; c < Numbers().size(); ++c)
            keepExtrema(c);
    }
    void keepExtrema(std::size_t c) {
        const auto valueOf = [&](std::size_t stop) { return m_vertices[m_stops[stop].vertex].value[c]; };
        const double leastTurn = 2.0 * m_error;
        std::size_t low = 0;
        std::size_t high = 0;
        int direction = 0;
        for (std::size_t i = 1; i < m_stops.size(); ++i) {
            low = valueOf(i) < valueOf(low) ? i : low;
            high = valueOf(i) > valueOf(high) ? i : high;
            const bool rises = direction <= 0 && valueOf(i) - valueOf(low) > leastTurn;
            const bool falls = direction >= 0 && valueOf(high) - valueOf(i) > leastTurn;
            if (!rises && !falls)
                continue;
            m_stops[rises ? low : high].isKept = true;
            direction = rises ? 1 : -1;
            low = high = i;
        }
    }

    /// Adds the keyframe of a stop with the longest segment that fits, and returns the stop where that ends.
    std::size_t addSegment(std::size_t at) {
        std::size_t limit = at + 1;
        IType shape = ownShape(at);
        std::size_t good = at + 1;
        std::size_t bad = 0;
        for (std::size_t step = 2; bad == 0 && !m_stops[limit].isKept; step *= 2) {
            while (limit < at + step && !m_stops[limit].isKept)
                ++limit;
            if (limit > good)
                (fits(at, limit, shape) ? good : bad) = limit;
        }
        while (bad > good + 1) {
            const std::size_t middle = good + (bad - good) / 2;
            (fits(at, middle, shape) ? good : bad) = middle;
        }
        addKeyframe(at, shape);
        return good;
    }
    /// That of the segment that begins there, if nothing is left out after it.
    IType ownShape(std::size_t at) const {
        const bool isWhole = m_stops[at].keyframe >= 0 && m_stops[at + 1].keyframe >= 0;
        return isWhole && !(m_isLinear && isBent(m_list.at(m_stops[at].keyframe).interpolationData))
                   ? m_list.at(m_stops[at].keyframe).interpolationData
                   : IType(Interpolation::Linear);
    }
    bool fits(std::size_t from, std::size_t to, IType& shape) const {
        const CurveFit<T> fit(m_vertices, m_stops[from].vertex, m_stops[to].vertex);
        const double error = m_error - flatness() - rounding(from, to);
        if (fit.isStraight(error)) {
            shape = Interpolation::Linear;
            return true;
        }
        return !m_isLinear && fit.isBezier(error, shape);
    }
    /// What evaluating may add; nothing between equal values.
    double rounding(std::size_t from, std::size_t to) const {
        const Numbers& a = m_vertices[m_stops[from].vertex].value;
        const Numbers& b = m_vertices[m_stops[to].vertex].value;
        double largest = 0.0;
        for (std::size_t c = 0; c < a.size(); ++c)
            largest = a[c] == b[c] ? largest : std::max({largest, std::abs(a[c]), std::abs(b[c])});
        return 0x1p-48 * largest;
    }
    void addKeyframe(std::size_t at, const IType& shape) {
        const Stop& stop = m_stops[at];
        const CurveVertex<T>& vertex = m_vertices[stop.vertex];
        m_found.append(stop.keyframe >= 0
                           ? m_list.at(stop.keyframe)
                           : KeyframeData<T>(Time::fromDouble(vertex.time), Components<T>::value(vertex.value)));
        m_found.last().interpolationData = shape;
    }

    ReshapedTrack<T>& m_track;
    const Keyframes m_list;
    const double m_error;
    const bool m_isLinear;
    int m_begin = 0;
    int m_end = 0;
    std::vector<CurveVertex<T>> m_vertices;
    std::vector<Stop> m_stops;
    Keyframes m_found;
};

template <class T> const char* reshape(ReshapedTrack<T>& track, const Simplification& act) {
    if (track.hasHooks)
        return hasHooks;
    if (!(act.error >= 0.0))
        return isNegativeError;
    FewerKeyframes<T>(track, act).find();
    return nullptr;
}

} // namespace Prm::detail

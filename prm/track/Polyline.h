#pragma once

#include "prm/track/ConstantSpan.h"
#include "prm/track/Ranges.h"

#include <QVector>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

namespace Prm::detail {

template <class T> using CurvePoints = QVector<std::pair<Time, T>>;

/// The largest distance in a component; infinite where one is no finite number.
template <class T> double distanceOf(const T& a, const T& b) {
    const auto from = Components<T>::of(a);
    const auto to = Components<T>::of(b);
    double most = 0.0;
    for (std::size_t c = 0; c < from.size(); ++c) {
        const double distance = std::abs(to[c] - from[c]);
        if (!std::isfinite(distance))
            return infinite;
        most = std::max(most, distance);
    }
    return most;
}

/// Takes points in ascending order of time and keeps those between which straight lines stay within the tolerance of
/// all of them (a cone of slopes from the last point that was kept). Two points at one time, a step, are both kept.
template <class T> class Simplifier {
public:
    explicit Simplifier(double tolerance) : m_tolerance(tolerance) {}

    void add(Time time, const T& value) {
        const bool isStep = !m_points.isEmpty() && time == m_last.first;
        if (m_points.isEmpty() || isStep || !narrow(time, value)) {
            keepLast();
            if (m_points.isEmpty() || (isStep && distanceOf(m_points.last().second, value) != 0.0))
                m_points.append({time, value});
            m_least.fill(-infinite);
            m_greatest.fill(infinite);
            narrow(time, value);
        }
        m_last = {time, value};
    }
    CurvePoints<T> take() {
        keepLast();
        return std::move(m_points);
    }

private:
    using Numbers = typename Components<T>::Numbers;

    void keepLast() {
        if (!m_points.isEmpty() && m_last.first > m_points.last().first)
            m_points.append(m_last);
    }
    /// False, and nothing done, where a line to the point would leave others.
    bool narrow(Time time, const T& value) {
        const double distance = time - m_points.last().first;
        if (!(distance > 0.0) || distance == infinite)
            return distance != infinite;
        const Numbers from = Components<T>::of(m_points.last().second);
        const Numbers to = Components<T>::of(value);
        Numbers least = m_least;
        Numbers greatest = m_greatest;
        bool fits = true;
        for (std::size_t c = 0; c < to.size(); ++c) {
            const double slope = (to[c] - from[c]) / distance;
            fits = fits && slope >= least[c] && slope <= greatest[c];
            least[c] = std::max(least[c], (to[c] - m_tolerance - from[c]) / distance);
            greatest[c] = std::min(greatest[c], (to[c] + m_tolerance - from[c]) / distance);
        }
        if (fits) {
            m_least = least;
            m_greatest = greatest;
        }
        return fits;
    }

    const double m_tolerance;
    CurvePoints<T> m_points;
    std::pair<Time, T> m_last;
    Numbers m_least{};
    Numbers m_greatest{};
};

/// The straight lines that show what a parameter shows. The tolerance is shared: an eighth of it hides steps, half of
/// it goes to curves, three eighths to points that are left out.
template <class T> class Flattening {
public:
    Flattening(const Shown<T>& shown, double tolerance)
        : m_shown(shown), m_tolerance(tolerance > 0.0 ? tolerance : 0.0), m_points(m_tolerance * 0.375) {}

    CurvePoints<T> find(const Moments& span, double resolution) {
        if (resolution > 0.0)
            addReduced(span, resolution);
        else
            addAll(span);
        return m_points.take();
    }

private:
    void add(double time, const T& value) { m_points.add(Time::fromDouble(time), value); }
    T valueOf(double time) { return valueAt(m_shown, Time::fromDouble(time), m_cursors); }
    bool isNear(const T& a, const T& b) const { return distanceOf(a, b) <= m_tolerance * 0.125; }

    /// Between keyframes that a line joins, nothing is evaluated.
    void addAll(const Moments& span) {
        m_isFirst = true;
        double done = span.first;
        if constexpr (blends<T> && !rounds<T>) {
            const QVector<KeyframeData<T>>& keyframes = m_shown[0].keyframes;
            const int begin = m_shown.count > 1 ? keyframes.size() : lowerBound(keyframes, Time::fromDouble(done));
            for (int i = begin; i + 1 < keyframes.size() && keyframes.at(i + 1).time.toDouble() <= span.last; ++i) {
                if (!isStraight(keyframes.at(i), keyframes.at(i + 1)))
                    continue;
                addPieces({done, keyframes.at(i).time.toDouble()});
                i = addStraight(keyframes, i, span.last);
                done = timeAfter(keyframes.at(i).time.toDouble());
            }
        }
        addPieces({done, span.last});
    }

    /// Whether a line between the two keyframes is the curve.
    static bool isStraight(const KeyframeData<T>& from, const KeyframeData<T>& to) {
        return from.interpolationData.interpolation == Interpolation::Linear && from.time < to.time &&
               distanceOf(from.value, to.value) < infinite;
    }
    /// Adds the keyframes after one up to a time, as long as lines lead from one to the next. Returns the last one.
    int addStraight(const QVector<KeyframeData<T>>& keyframes, int position, double time) {
        while (position + 1 < keyframes.size() && keyframes.at(position + 1).time.toDouble() <= time &&
               isStraight(keyframes.at(position), keyframes.at(position + 1))) {
            ++position;
            m_points.add(keyframes.at(position).time, keyframes.at(position).value);
        }
        m_former = keyframes.at(position).value;
        return position;
    }

    void addPieces(const Moments& span) {
        forEachPiece(m_shown, span, [&](const Piece<T>& piece, const Moments& times) {
            if (piece.isInstant()) {
                const T value = valueOf(piece.from());
                if (!m_isFirst && !isNear(m_former, value))
                    add(piece.from(), m_former);
                add(piece.from(), m_former = value);
            } else {
                const T begin = valueOf(times.first);
                if (m_isFirst || !isNear(m_former, begin))
                    add(m_isFirst ? times.first : piece.from(), begin);
                m_former = valueOf(times.last);
                m_parts = 0;
                addWithin(piece, times, begin, m_former);
                if (times.last == span.last)
                    add(times.last, m_former);
            }
            m_isFirst = false;
            return true;
        });
    }

    void addWithin(const Piece<T>& piece, const Moments& times, const T& begin, const T& end) {
        if (asksFunction(m_shown, piece))
            addSamples(times);
        else if constexpr (rounds<T>)
            addSteps(piece, times, begin, end, rangeOf(m_shown, piece, times, Slack::None).height() * 0x1p-16);
        else
            addCurves(piece, times);
    }

    void addSamples(const Moments& times) {
        constexpr int count = 64;
        for (int i = 1; i < count; ++i)
            add(times.at(1.0 * i / count), valueOf(times.at(1.0 * i / count)));
    }

    void addCurves(const Piece<T>& piece, const Moments& times) {
        std::vector<double> all;
        for (int i = 0; i < m_shown.count; ++i)
            addTimes(m_shown[i].keyframes, piece.at(i), times, m_shown.count, std::abs(m_shown.weight(i)), all);
        if (m_shown.count > 1)
            std::sort(all.begin(), all.end());
        for (const double time : all)
            add(time, valueOf(time));
    }

    /// The times between which a segment is flat enough. Of several tracks, each point of one splits the lines of the
    /// others, which then may be twice as far from their curves.
    void addTimes(const QVector<KeyframeData<T>>& keyframes, Bracket at, const Moments& times, int count, double weight,
                  std::vector<double>& all) const {
        if (at.before < 0 || at.after < 0 || at.before == at.after)
            return;
        const KeyframeData<T>& from = keyframes.at(at.before);
        const KeyframeData<T>& to = keyframes.at(at.after);
        const IType& shape = from.interpolationData;
        const double start = from.time.toDouble();
        const double duration = to.time - from.time;
        const double height = distanceOf(from.value, to.value);
        if (height == 0.0)
            return;
        std::vector<double> parts;
        if (isBent(shape) && duration > 0.0 && duration < infinite)
            addFlatParts(shape, (times.first - start) / duration, (times.last - start) / duration,
                         m_tolerance / (count > 1 ? 4.0 * count * weight : 2.0) / height, parts);
        for (const double part : parts) {
            const double time = start + duration * part;
            if (time > times.first && time < times.last)
                all.push_back(time);
        }
    }

    /// Each step of values that are rounded, down to a part of all of them.
    void addSteps(const Piece<T>& piece, const Moments& times, const T& begin, const T& end, double least) {
        // The range of a part is that of the whole where shape numbers are not finite.
        constexpr int most = 1 << 18;
        const double height = rangeOf(m_shown, piece, times, Slack::None).height();
        if (height <= std::max(m_tolerance / 2.0, least) || ++m_parts > most ||
            (height == 1.0 && addOnlyStep(piece, times)))
            return;
        const double middle = times.first + (times.last - times.first) / 2.0;
        if (!(middle > times.first && middle < times.last)) {
            if (!ValueType<T>::equal(begin, end))
                addStep(times.last, begin, end);
            return;
        }
        const T value = valueOf(middle);
        addSteps(piece, {times.first, middle}, begin, value, least);
        add(middle, value);
        addSteps(piece, {middle, times.last}, value, end, least);
    }
    void addStep(double time, const T& begin, const T& end) {
        add(time, begin);
        add(time, end);
    }
    /// Adds the only step between two times; false, and nothing added, where there is another one.
    bool addOnlyStep(const Piece<T>& piece, const Moments& times) {
        const T begin = valueOf(times.first);
        const T end = valueOf(times.last);
        if (ValueType<T>::equal(begin, end))
            return false;
        const auto isBegin = [&](double time) { return ValueType<T>::equal(valueOf(time), begin); };
        const double last = furthest(times.first, times.last, isBegin);
        const double first = timeAfter(last);
        const auto isOnly = [&](const Moments& part, const T& value) {
            return rangeOf(m_shown, piece, part, Slack::None).isOnly(value);
        };
        if (!isOnly({times.first, last}, begin) || !isOnly({first, times.last}, end))
            return false;
        addStep(first, begin, end);
        return true;
    }

    /// Of stretches as long as the resolution that have more than a few keyframes, only what can be seen.
    void addReduced(const Moments& span, double resolution) {
        constexpr int few = 4;
        const QVector<KeyframeData<T>>& keyframes = longestTrack();
        double done = span.first;
        for (int i = lowerBound(keyframes, Time::fromDouble(span.first)); i < keyframes.size();) {
            const double time = keyframes.at(i).time.toDouble();
            const double begin = std::max(done, span.first + std::floor((time - span.first) / resolution) * resolution);
            const Moments column{begin, std::min(begin + resolution, span.last)};
            if (time > span.last || !(column.last > column.first))
                break;
            const int next = afterColumn(keyframes, i, column.last);
            if (next - i > few) {
                if (begin > done)
                    addAll({done, begin});
                addColumn(column, i, next - 1);
                done = column.last;
            }
            i = next;
        }
        addAll({done, span.last});
    }

    /// The position of the first keyframe after the time, near the position.
    static int afterColumn(const QVector<KeyframeData<T>>& keyframes, int position, double time) {
        int step = 1;
        while (position + step < keyframes.size() && keyframes.at(position + step).time.toDouble() <= time)
            step *= 2;
        const int begin = position + step / 2;
        const int count = std::min(position + step, keyframes.size()) - begin;
        const int after = begin + lowerBound(keyframes.constData() + begin, count, Time::fromDouble(timeAfter(time)));
        return std::max(after, position + 1);
    }

    /// What can be seen of the keyframes from one position to another. The ends of a column are beside these.
    void addColumn(const Moments& column, int first, int last) {
        const double middle = column.first + (column.last - column.first) / 2.0;
        const Range<T> range = rangeOfColumn(column, first, last);
        m_cursors[0] = first - 1;
        add(column.first, valueOf(column.first));
        add(middle, range.least);
        add(middle, range.greatest);
        m_cursors[0] = last;
        add(column.last, valueOf(column.last));
    }

    Range<T> rangeOfColumn(const Moments& column, int first, int last) const {
        if constexpr (blends<T>) {
            if (m_shown.count == 1)
                return rangeOfKeyframes(m_shown, column, first, last, Slack::None);
        }
        return rangeIn(m_shown, column, Slack::None);
    }

    const QVector<KeyframeData<T>>& longestTrack() const {
        int longest = 0;
        for (int i = 1; i < m_shown.count; ++i)
            longest = m_shown[i].keyframes.size() > m_shown[longest].keyframes.size() ? i : longest;
        return m_shown[longest].keyframes;
    }

    const Shown<T>& m_shown;
    const double m_tolerance;
    Cursors m_cursors;
    /// Whether no point was added yet, and the value at which the last piece ended.
    bool m_isFirst = true;
    T m_former{};
    /// Into how many parts a piece was divided.
    int m_parts = 0;
    Simplifier<T> m_points;
};

/// Infinite ends become the first and the last keyframe.
template <class T> Moments finiteMoments(const Shown<T>& shown, const TimeSpan& span) {
    if (span.isEmpty())
        return Moments::of(span);
    double first = infinite;
    double last = -infinite;
    for (int i = 0; i < shown.count; ++i) {
        const auto& keyframes = shown[i].keyframes;
        if (keyframes.isEmpty())
            continue;
        first = std::min(first, keyframes.first().time.toDouble());
        last = std::max(last, keyframes.last().time.toDouble());
    }
    if (first > last)
        first = last = std::isfinite(span.from) ? span.from : std::isfinite(span.to) ? span.to : 0.0;
    TimeSpan finite = span;
    if (!std::isfinite(span.from))
        finite.from = std::min(first, span.to);
    if (!std::isfinite(span.to))
        finite.to = std::max(last, finite.from);
    finite.withFrom = span.withFrom || !std::isfinite(span.from);
    finite.withTo = span.withTo || !std::isfinite(span.to);
    // Outside the keyframes one time is left.
    if (finite.from == finite.to)
        finite.withFrom = finite.withTo = true;
    return Moments::of(finite);
}

} // namespace Prm::detail

#pragma once

// The answers about a span of times, of one parameter in one view, beside its values at many times.

#include "fuzz/Fuzz.h"
#include "prm/Answers.h"
#include "tests/world/World.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace Worlds {

constexpr double infinity = std::numeric_limits<double>::infinity();

template <class T> bool equal(const T& a, const T& b) {
    return ValueType<T>::equal(a, b);
}

template <class T> std::vector<double> numbersOf(const T& value) {
    if constexpr (std::is_same_v<T, QPointF>)
        return {value.x(), value.y()};
    else
        return {static_cast<double>(value)};
}

/// What is known of one parameter in one view.
template <class T> class Asked {
public:
    Asked(const Parameter<T>& parameter, View view, bool hasHooks, std::mt19937& random)
        : m_parameter(parameter), m_view(view), m_shown(detail::Ask::shownIn(parameter, view)), m_hasHooks(hasHooks),
          m_random(random) {
        if constexpr (detail::hasOrder<T>) {
            const auto shown = bounds(parameter, view, TimeSpan{-2000, 2000, true, true});
            m_isLarge = detail::distanceOf(shown.first, shown.second) > 1e4;
        }
    }

    void checkSpan(const TimeSpan& span) {
        m_times = timesIn(span);
        checkConstant(span);
        checkKeyframes(span);
        if constexpr (!std::is_same_v<T, QString>) {
            checkBounds(span);
            checkPolyline(span);
        }
        if (span.from == span.to || m_times.empty())
            return;
        for (int i = 0; i < 6; ++i)
            checkAround(m_times[m_random() % m_times.size()]);
        if constexpr (std::is_same_v<T, double> || std::is_same_v<T, QPointF>)
            for (int i = 0; i < 6; ++i)
                checkSlope(m_times[m_random() % m_times.size()]);
    }

private:
    T at(double time) const { return m_parameter.value({Time::fromDouble(time), m_view}); }
    [[noreturn]] void fail(const char* what, double time, const QString& more = {}) const {
        QString text = ValueType<T>::name() + QStringLiteral(" at %1 in view %2: %3 %4\n")
                                                  .arg(time, 0, 'g', 17)
                                                  .arg(m_view.id())
                                                  .arg(exact(at(time)))
                                                  .arg(more);
        for (int i = 0; i < m_shown.count; ++i)
            for (const KeyframeData<T>& key : m_shown[i].keyframes)
                text += QStringLiteral("%1: %2 = %3 kind %4 %5 %6 %7 %8\n")
                            .arg(m_shown.weight(i))
                            .arg(key.time.toDouble(), 0, 'g', 17)
                            .arg(exact(key.value))
                            .arg(static_cast<quint32>(key.interpolationData.interpolation))
                            .arg(key.interpolationData.x1)
                            .arg(key.interpolationData.y1)
                            .arg(key.interpolationData.x2)
                            .arg(key.interpolationData.y2);
        Fuzz::fail(what, text + QStringLiteral("outside %1 %2")
                                    .arg(static_cast<quint32>(m_shown.outside.before))
                                    .arg(static_cast<quint32>(m_shown.outside.after)));
    }
    static QString exact(double value) { return QString::number(value, 'g', 17); }
    template <class U> static QString exact(const U& value) { return Worlds::exact(QVariant::fromValue(value)); }

    /// Whether only keyframes decide.
    bool isKnown() const {
        bool asksFunction = m_hasHooks || m_shown.outside.before == Extrapolation::Custom0 ||
                            m_shown.outside.after == Extrapolation::Custom0;
        for (const detail::Track<T>& track : m_shown.tracks)
            for (const KeyframeData<T>& key : track.keyframes)
                asksFunction = asksFunction || key.interpolationData.interpolation == Interpolation::Custom0;
        return !asksFunction;
    }
    /// Those of one view.
    bool isExact() const { return isKnown() && m_shown.count == 1; }

    /// Random ones, those of keyframes, and those beside the ends and the keyframes.
    std::vector<double> timesIn(const TimeSpan& span) {
        const double from = std::max(span.from, -1000.);
        const double to = std::min(span.to, 1000.);
        std::vector<double> times{from, to, (from + to) / 2};
        for (const detail::Track<T>& track : m_shown.tracks)
            addTimes(track.keyframes, times);
        for (std::size_t i = times.size(); i > 0; --i)
            for (const double towards : {-infinity, infinity})
                times.push_back(std::nextafter(times[i - 1], towards));
        for (int i = 0; i < 60; ++i)
            times.push_back(from + (to - from) * std::uniform_real_distribution<double>()(m_random));
        const auto isOutside = [&](double time) { return !span.contains(Time::fromDouble(time)); };
        times.erase(std::remove_if(times.begin(), times.end(), isOutside), times.end());
        std::sort(times.begin(), times.end());
        return times;
    }

    /// Those of the keyframes, and some between each two, most of them near one.
    static void addTimes(const QVector<KeyframeData<T>>& keyframes, std::vector<double>& times) {
        for (int i = 0; i < keyframes.size(); ++i) {
            times.push_back(keyframes[i].time.toDouble());
            const double length = i > 0 ? keyframes[i].time - keyframes[i - 1].time : 0;
            for (int part = 1; part < 16 && length > 0; ++part)
                for (const double x : {part / 16., std::exp2(-part), 1 - std::exp2(-part)})
                    times.push_back(keyframes[i - 1].time.toDouble() + length * x);
        }
    }

    void checkConstant(const TimeSpan& span) const {
        const bool isConstant = Prm::isConstant(m_parameter, m_view, span);
        const BasicParameter& untyped = m_parameter;
        HOLD(Prm::isConstant(untyped, m_view, span) == isConstant);
        bool isSame = true;
        for (const double time : m_times) {
            isSame = isSame && equal(at(time), at(m_times[0]));
            if (isConstant && !isSame)
                fail("isConstant", time);
        }
        const bool isOne = m_times.empty() || m_times.front() == m_times.back();
        if (isSame && !isConstant && isExact() && !std::is_same_v<T, double> && !std::is_same_v<T, QPointF> && !isOne &&
            m_times.size() > 60)
            fail("isConstant, not found", m_times[0]);
    }

    void checkAround(double time) const {
        const Context context(Time::fromDouble(time), m_view);
        const TimeSpan span = constantAround(m_parameter, context);
        const BasicParameter& untyped = m_parameter;
        HOLD(constantAround(untyped, context) == span);
        HOLD(span.contains(context.time));
        HOLD(Prm::isConstant(m_parameter, m_view, span));
        const T value = at(time);
        for (const double other : m_times)
            if (span.contains(Time::fromDouble(other)) && !equal(at(other), value))
                fail("constantAround", other, exact(time));
        if (isExact())
            for (const bool later : {false, true})
                checkEnd(later ? span.to : span.from, later ? span.withTo : span.withFrom, later ? 1 : -1, value);
    }

    /// Beyond the end there is another value.
    void checkEnd(double end, bool isIncluded, int sign, const T& value) const {
        if (std::isinf(end) || (!isIncluded && !equal(at(end), value)))
            return;
        for (double distance = 0x1p-34; distance < 1; distance *= 8)
            if (!equal(at(end + sign * distance), value))
                return;
        // In a long segment of small change values that are rounded come later.
        if (!detail::rounds<T> || !isIncluded || equal(at(std::nextafter(end, sign * infinity)), value))
            fail("constantAround is the longest", end, exact(value) + (isIncluded ? " included" : ""));
    }

    void checkBounds(const TimeSpan& span) {
        const auto [least, greatest] = bounds(m_parameter, m_view, span);
        for (std::size_t c = 0; c < numbersOf(least).size(); ++c) {
            const double low = numbersOf(least)[c];
            const double high = numbersOf(greatest)[c];
            double nearLow = infinity;
            double nearHigh = -infinity;
            for (const double time : m_times) {
                const double number = numbersOf(at(time))[c];
                const double digits = 4e-15 * std::max(std::abs(number), std::min(high - low, 1e300));
                if (!(number >= low - digits && number <= high + digits))
                    fail("bounds", time, exact(low) + " to " + exact(high));
                nearLow = std::min(nearLow, number);
                nearHigh = std::max(nearHigh, number);
            }
            if (m_times.empty() || !isExact() || std::isinf(low) || std::isinf(high))
                continue;
            if (!std::isinf(span.from) && !std::isinf(span.to)) {
                checkReached(c, low, high - low, 1);
                checkReached(c, high, high - low, -1);
            }
        }
    }

    /// Descends from the lowest times to the least value near them.
    void checkReached(std::size_t c, double bound, double height, int sign) const {
        const auto rank = [&](double time) { return sign * numbersOf(at(time))[c]; };
        double best = infinity;
        for (std::size_t i = 0; i < m_times.size(); ++i) {
            // Those beside it may be the next numbers.
            double low = m_times[i > 3 ? i - 3 : 0];
            double high = m_times[std::min(i + 3, m_times.size() - 1)];
            best = std::min(best, rank(m_times[i]));
            if (rank(m_times[i]) > std::min(rank(low), rank(high)))
                continue;
            for (int step = 0; step < 60; ++step) {
                const double third = (high - low) / 3;
                (rank(low + third) > rank(high - third) ? low : high) =
                    rank(low + third) > rank(high - third) ? low + third : high - third;
            }
            best = std::min(best, rank(std::min(std::max((low + high) / 2, m_times.front()), m_times.back())));
        }
        if (!(best - sign * bound <= 1e-12 * height + 4e-15 * std::abs(bound)))
            fail("bounds are reached", m_times[0], exact(bound) + " not " + exact(sign * best));
    }

    void checkSlope(double time) const {
        const auto slopes = numbersOf(slope(m_parameter, {Time::fromDouble(time), m_view}));
        const detail::Piece<T> piece(m_shown, time);
        const double room = std::min({1., time - piece.from(), piece.to() - time}) / 4;
        if (!(room > 1e-3) || !isKnown())
            return;
        for (std::size_t c = 0; c < slopes.size(); ++c) {
            const auto difference = [&](double h) {
                return (numbersOf(at(time + h))[c] - numbersOf(at(time - h))[c]) / (2 * h);
            };
            const auto refined = [&](double h) { return (4 * difference(h / 2) - difference(h)) / 3; };
            const double wanted = refined(room / 64);
            const double magnitude = std::max(1., std::abs(numbersOf(at(time))[c]));
            const double unsure = std::abs(wanted - refined(room / 16)) * 4 + 1e-11 * magnitude / room;
            if (unsure < 1e-7 * std::max(1., std::abs(wanted)) &&
                !(std::abs(slopes[c] - wanted) <= 1e-6 * std::max(1., std::abs(wanted))))
                fail("slope", time, exact(slopes[c]) + " is " + exact(wanted));
        }
    }

    void checkKeyframes(const TimeSpan& span) const {
        const auto found = keyframes(m_parameter, m_view, span);
        int count = 0;
        for (unsigned int i = 0; i < m_parameter.keyframeCount(m_view); ++i) {
            const KeyframeData<T> key = m_parameter.keyframe(i, m_view);
            if (!span.contains(key.time))
                continue;
            HOLD(count < found.size() && found[count].time == key.time && equal(found[count].value, key.value));
            HOLD(found[count++].interpolationData == key.interpolationData);
        }
        HOLD(count == found.size());
    }

    void checkPolyline(const TimeSpan& span) {
        static const double tolerances[] = {0.001, 0.03, 0.5, 1, 4};
        const double tolerance = tolerances[m_random() % 5];
        const auto points = polyline(m_parameter, m_view, span, tolerance);
        const bool isPromised = isKnown();
        HOLD(points.isEmpty() || std::isinf(span.from) || std::abs(points.first().first.toDouble() - span.from) < 1e-9);
        HOLD(points.isEmpty() || std::isinf(span.to) || std::abs(points.last().first.toDouble() - span.to) < 1e-9);
        HOLD(!points.isEmpty() || span.isEmpty() || std::isinf(span.from) || std::isinf(span.to));
        for (int i = 0; i + 1 < points.size(); ++i) {
            const double from = points[i].first.toDouble();
            const double length = points[i + 1].first - points[i].first;
            HOLD(length >= 0);
            for (int part = 1; part < 10 && length > 0 && isPromised; ++part)
                checkOnLine(from + length * part / 10, length, points[i], points[i + 1], tolerance);
        }
    }

    void checkOnLine(double time, double length, const CurvePoint<T>& from, const CurvePoint<T>& to,
                     double tolerance) const {
        const double part = (time - from.first.toDouble()) / length;
        for (std::size_t c = 0; c < numbersOf(from.second).size(); ++c) {
            const double line = numbersOf(from.second)[c] * (1 - part) + numbersOf(to.second)[c] * part;
            const double number = numbersOf(at(time))[c];
            // A million, rounded to 65536 steps.
            const double coarse = detail::rounds<T> ? 100 : 0.2;
            if (!(std::abs(number - line) <= std::max(tolerance * (1 + 1e-9) + 1e-9, m_isLarge ? coarse : 0)))
                fail("polyline", time, exact(line));
        }
    }

    const Parameter<T>& m_parameter;
    const View m_view;
    const detail::Shown<T> m_shown;
    const bool m_hasHooks;
    std::mt19937& m_random;
    bool m_isLarge = false;
    std::vector<double> m_times;
};

} // namespace Worlds

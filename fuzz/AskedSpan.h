#pragma once

// The answers about a span of times, of one parameter in one view, beside its values at many times.

#include "fuzz/Fuzz.h"
#include "prm/Answers.h"
#include "tests/world/World.h"

#include <random>

namespace Worlds {

template <class T> class Asked {
public:
    Asked(const Parameter<T>& parameter, View view, std::mt19937& random)
        : m_parameter(parameter), m_view(view), m_shown(detail::Ask::shownIn(parameter, view)), m_random(random) {}

    void check(const TimeSpan& span) {
        findSamples(span);
        checkKeyframes(span);
        if constexpr (detail::hasOrder<T>) {
            checkBounds(span);
            checkPolyline(span);
        }
        for (int i = 0; i < 6 && !m_samples.empty(); ++i) {
            const Sample& sample = m_samples[m_random() % m_samples.size()];
            checkAround(sample, span);
            if constexpr (blends<T> && !detail::rounds<T>)
                checkSlope(sample.first);
        }
    }

private:
    using Sample = std::pair<double, T>;

    T at(double time) const { return m_parameter.value({Time::fromDouble(time), m_view}); }
    static auto numbersOf(const T& value) { return detail::Components<T>::of(value); }
    static bool equal(const T& a, const T& b) { return ValueType<T>::equal(a, b); }
    template <class Value> static QString textOf(const Value& value) { return exact(QVariant::fromValue(value)); }
    [[noreturn]] void fail(const char* what, double time, const QString& more = {}) const {
        const QString text =
            QStringLiteral("at %1 in view %2: %3 ").arg(textOf(time)).arg(m_view.id()).arg(textOf(at(time)));
        Fuzz::fail(what, text + more + '\n' + QString::fromUtf8(stateOf(m_parameter)));
    }

    /// Whether only keyframes decide.
    bool isKnown() const {
        bool asksFunction = m_shown.hooks || m_shown.outside.before == Extrapolation::Custom0 ||
                            m_shown.outside.after == Extrapolation::Custom0;
        for (const detail::Track<T>& track : m_shown.tracks)
            for (const KeyframeData<T>& key : track.keyframes)
                asksFunction = asksFunction || key.interpolationData.interpolation == Interpolation::Custom0;
        return !asksFunction;
    }
    /// Those of one view.
    bool isExact() const { return isKnown() && m_shown.count == 1; }

    /// At random times, those of keyframes, between them, and beside all these.
    void findSamples(const TimeSpan& span) {
        const double from = std::max(span.from, -1000.);
        const double to = std::min(span.to, 1000.);
        std::vector<double> times{from, to, (from + to) / 2};
        for (const detail::Track<T>& track : m_shown.tracks)
            for (int i = 0; i < track.keyframes.size(); ++i) {
                const double time = track.keyframes[i].time.toDouble();
                const double former = track.keyframes[std::max(i - 1, 0)].time.toDouble();
                times.push_back(time);
                for (int part = 1; part < 16 && former < time; ++part)
                    for (const double x : {part / 16., std::exp2(-part), 1 - std::exp2(-part)})
                        times.push_back(former + (time - former) * x);
            }
        for (std::size_t i = times.size(); i > 0; --i)
            for (const double towards : {-infinity, infinity})
                times.push_back(std::nextafter(times[i - 1], towards));
        for (int i = 0; i < 60; ++i)
            times.push_back(from + (to - from) * std::uniform_real_distribution<double>()(m_random));
        std::sort(times.begin(), times.end());
        for (const double time : times)
            if (span.contains(Time::fromDouble(time)))
                m_samples.emplace_back(time, at(time));
    }

    void checkAround(const Sample& sample, const TimeSpan& span) const {
        const Context context(Time::fromDouble(sample.first), m_view);
        const BasicParameter& untyped = m_parameter;
        const TimeSpan found = constantAround(m_parameter, context);
        HOLD(constantAround(untyped, context) == found);
        HOLD(found.contains(context.time));
        for (const TimeSpan& other : {found, span}) {
            const detail::Moments all = detail::Moments::of(found);
            const detail::Moments wanted = detail::Moments::of(other);
            const bool isWithin = wanted.isEmpty() || (all.first <= wanted.first && wanted.last <= all.last);
            if (isConstant(m_parameter, m_view, other) != isWithin || isConstant(untyped, m_view, other) != isWithin)
                fail("isConstant", sample.first, textOf(found.from) + " to " + textOf(found.to));
        }
        for (const auto& [time, value] : m_samples)
            if (found.contains(Time::fromDouble(time)) && !equal(value, sample.second))
                fail("constantAround", time, textOf(sample.first));
        if (!isExact())
            return;
        checkEnd(found.from, found.withFrom, -1, sample.second);
        checkEnd(found.to, found.withTo, 1, sample.second);
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
            fail("constantAround is the longest", end, textOf(value) + (isIncluded ? " included" : ""));
    }

    void checkBounds(const TimeSpan& span) const {
        const auto [least, greatest] = bounds(m_parameter, m_view, span);
        const auto low = numbersOf(least);
        const auto high = numbersOf(greatest);
        for (std::size_t c = 0; c < low.size(); ++c) {
            for (const auto& [time, value] : m_samples) {
                const double number = numbersOf(value)[c];
                const double digits = 4e-15 * std::max(std::abs(number), std::min(high[c] - low[c], 1e300));
                if (!(number >= low[c] - digits && number <= high[c] + digits))
                    fail("bounds", time, textOf(least) + " to " + textOf(greatest));
            }
            const double height = high[c] - low[c];
            if (m_samples.empty() || !isExact() || std::isinf(height) || std::isinf(span.to - span.from))
                continue;
            checkReached(span, c, 1, low[c], height);
            checkReached(span, c, -1, high[c], height);
        }
    }

    /// Follows a bound into the half that has it.
    void checkReached(TimeSpan span, std::size_t c, int sign, double bound, double height) const {
        const auto least = [&](const TimeSpan& in) {
            const auto found = bounds(m_parameter, m_view, in);
            return sign * numbersOf(sign > 0 ? found.first : found.second)[c];
        };
        while (std::nextafter(std::nextafter(span.from, infinity), infinity) < span.to) {
            const double middle = span.from + (span.to - span.from) / 2;
            const TimeSpan early{span.from, middle, span.withFrom, true};
            const TimeSpan late{middle, span.to, true, span.withTo};
            span = least(early) <= least(late) ? early : late;
        }
        double best = infinity;
        // A bound of a Bezier segment's end counts from the time beside it.
        for (double time = std::nextafter(span.from, -infinity); time <= std::nextafter(span.to, infinity);
             time = std::nextafter(time, infinity))
            best = std::min(best, sign * numbersOf(at(time))[c]);
        if (!(best - sign * bound <= 1e-12 * height + 4e-15 * std::abs(bound)))
            fail("bounds are reached", span.from, textOf(bound));
    }

    void checkSlope(double time) const {
        const auto slopes = numbersOf(slope(m_parameter, {Time::fromDouble(time), m_view}));
        const detail::Piece<T> piece(m_shown, time);
        const double room = std::min({1., time - piece.from(), piece.to() - time}) / 4;
        for (std::size_t c = 0; c < slopes.size() && room > 1e-3 && isKnown(); ++c) {
            const auto difference = [&](double h) {
                return (numbersOf(at(time + h))[c] - numbersOf(at(time - h))[c]) / (2 * h);
            };
            const auto refined = [&](double h) { return (4 * difference(h / 2) - difference(h)) / 3; };
            const double wanted = refined(room / 64);
            const double most = std::max(1., std::abs(wanted));
            const double magnitude = std::max(1., std::abs(numbersOf(at(time))[c]));
            const double unsure = std::abs(wanted - refined(room / 16)) * 4 + 1e-11 * magnitude / room;
            if (unsure < 1e-7 * most && !(std::abs(slopes[c] - wanted) <= 1e-6 * most))
                fail("slope", time, textOf(slopes[c]) + " is " + textOf(wanted));
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

    void checkPolyline(const TimeSpan& span) const {
        static const double tolerances[] = {0.001, 0.03, 0.5, 1, 4};
        const double tolerance = tolerances[m_random() % 5];
        const auto points = polyline(m_parameter, m_view, span, tolerance);
        const auto isEnd = [](double end, Time time) {
            return std::isinf(end) || std::abs(time - Time::fromDouble(end)) < 1e-9;
        };
        HOLD(points.isEmpty() ? span.isEmpty() || std::isinf(span.to - span.from)
                              : isEnd(span.from, points.first().first) && isEnd(span.to, points.last().first));
        const auto shown = bounds(m_parameter, m_view, TimeSpan{-2000, 2000, true, true});
        const bool isLarge = detail::distanceOf(shown.first, shown.second) > 1e4;
        // A million, rounded to 65536 steps.
        const double most = std::max(tolerance * (1 + 1e-9) + 1e-9, !isLarge ? 0 : detail::rounds<T> ? 100 : 0.2);
        for (int i = 0; i + 1 < points.size(); ++i) {
            const double length = points[i + 1].first - points[i].first;
            HOLD(length >= 0);
            const auto from = numbersOf(points[i].second);
            const auto to = numbersOf(points[i + 1].second);
            // Beside a vertical end of a large segment, the last digits of a time decide.
            for (int part = 1; part < 10 && length > (isLarge ? 1e-6 : 0) && isKnown(); ++part) {
                const double time = points[i].first.toDouble() + length * part / 10;
                const auto numbers = numbersOf(at(time));
                for (std::size_t c = 0; c < from.size(); ++c)
                    if (!(std::abs(numbers[c] - from[c] * (1 - part / 10.) - to[c] * (part / 10.)) <= most))
                        fail("polyline", time);
            }
        }
    }

    const Parameter<T>& m_parameter;
    const View m_view;
    const detail::Shown<T> m_shown;
    std::mt19937& m_random;
    std::vector<Sample> m_samples;
};

} // namespace Worlds

#pragma once

#include "prm/track/BezierEasing.h"
#include "prm/track/CurveShapes.h"
#include "prm/track/Shown.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <tuple>
#include <type_traits>

namespace Prm::detail {

constexpr double infinite = std::numeric_limits<double>::infinity();

/// Whether values are rounded, so that they can stay the same while a curve rises.
template <class T> inline constexpr bool rounds = blends<T>&& std::is_integral_v<T>;

/// The components of a value.
template <class T, bool = blends<T>> struct Components {
    static constexpr int count = ValueType<T>::componentCount;
    using Numbers = std::array<double, static_cast<std::size_t>(count)>;

    static Numbers of(const T& value) {
        Numbers numbers{};
        for (int i = 0; i < count; ++i)
            numbers[static_cast<std::size_t>(i)] = ValueType<T>::component(value, i);
        return numbers;
    }
    static T value(const Numbers& numbers) { return ValueType<T>::fromComponents(numbers.data()); }
};
template <> struct Components<bool, false> {
    using Numbers = std::array<double, 1>;

    static Numbers of(bool value) { return {value ? 1.0 : 0.0}; }
    static bool value(const Numbers& numbers) { return numbers[0] > 0.0; }
};
template <> struct Components<QPoint, false> {
    using Numbers = std::array<double, 2>;

    static Numbers of(const QPoint& value) { return {static_cast<double>(value.x()), static_cast<double>(value.y())}; }
    static QPoint value(const Numbers& numbers) {
        return {ValueType<int>::fromComponents(&numbers[0]), ValueType<int>::fromComponents(&numbers[1])};
    }
};
/// Values without components have no order: only whether they are the same is known.
template <class T> struct Components<T, false> {
    using Numbers = std::array<double, 0>;

    static Numbers of(const T&) { return {}; }
    static T value(const Numbers&) { return {}; }
};

/// Whether values have components, so that there are a least and a greatest one.
template <class T> inline constexpr bool hasOrder = std::tuple_size_v<typename Components<T>::Numbers> > 0;

/// The least and the greatest value, component by component.
template <class T> class Range {
public:
    using Numbers = typename Components<T>::Numbers;

    explicit Range(const T& value) : least(value), greatest(value) {}
    /// The values between two, both included; all values where one is no number.
    static Range between(const T& a, const T& b) {
        Range range(a);
        range.add(Range(b));
        return range;
    }
    static Range everything() {
        Numbers lowest{};
        Numbers highest{};
        lowest.fill(-infinite);
        highest.fill(infinite);
        Range all(Components<T>::value(lowest));
        all.greatest = Components<T>::value(highest);
        all.m_isKnown = false;
        return all;
    }

    void add(const Range& other) {
        if (!m_isKnown || (isSingle() && other.isOnly(least)))
            return;
        Numbers low = Components<T>::of(least);
        Numbers high = Components<T>::of(greatest);
        const Numbers otherLow = Components<T>::of(other.least);
        const Numbers otherHigh = Components<T>::of(other.greatest);
        bool isOrdered = other.m_isKnown && !low.empty();
        for (std::size_t i = 0; i < low.size(); ++i) {
            isOrdered = isOrdered && low[i] <= high[i] && otherLow[i] <= otherHigh[i];
            low[i] = std::min(low[i], otherLow[i]);
            high[i] = std::max(high[i], otherHigh[i]);
        }
        if (!isOrdered) {
            *this = everything();
            return;
        }
        least = Components<T>::value(low);
        greatest = Components<T>::value(high);
    }

    bool isKnown() const { return m_isKnown; }
    bool isSingle() const { return m_isKnown && ValueType<T>::equal(least, greatest); }
    bool isOnly(const T& value) const { return isSingle() && ValueType<T>::equal(least, value); }
    /// The largest distance of two of its values in a component.
    double height() const {
        const Numbers low = Components<T>::of(least);
        const Numbers high = Components<T>::of(greatest);
        double most = 0.0;
        for (std::size_t i = 0; i < low.size(); ++i)
            most = std::max(most, high[i] - low[i]);
        return most;
    }

    T least;
    T greatest;

private:
    bool m_isKnown = true;
};

/// What the solver of Bezier segments and rounding may add to times and parts: with it, a range contains every value
/// that is computed. Without it the ends of a range are values at the ends of the times, but in the last digits values
/// beside them may be outside.
enum class Slack { None, Full };

inline double slackOf(Slack slack) {
    return slack == Slack::None ? 0.0 : 0x1p-47;
}

/// The segment after a keyframe is a Bezier one that is not straight.
inline bool isBent(const IType& shape) {
    return shape.interpolation == Interpolation::Bezier && !isStraightEasing(shape);
}

/// The values of a segment between two keyframes, at times from the first to the last one of `times`.
template <class T>
Range<T> segmentRange(const KeyframeData<T>& from, const KeyframeData<T>& to, const Moments& times, Slack slack) {
    if constexpr (blends<T>) {
        const IType& shape = from.interpolationData;
        const double duration = to.time - from.time;
        if (isRegistered(shape.interpolation))
            return Range<T>::everything();
        auto range = Range<T>::between(segmentValue(from, to, Time::fromDouble(times.first)),
                                       segmentValue(from, to, Time::fromDouble(times.last)));
        if (!isBent(shape) || !(duration > 0.0 && duration < infinite))
            return range;
        // Between keyframes that are both near the span, the ends are those of the segment.
        const double begin =
            times.first > timeAfter(from.time.toDouble()) ? (times.first - from.time.toDouble()) / duration : 0.0;
        const double end =
            times.last < timeBefore(to.time.toDouble()) ? (times.last - from.time.toDouble()) / duration : 1.0;
        const auto [least, greatest] = easedRange(shape, begin, end, slackOf(slack));
        range.add(Range<T>::between(blended(from.value, to.value, least), blended(from.value, to.value, greatest)));
        return range;
    } else {
        return Range<T>(from.value);
    }
}

/// The slope with which Linear extrapolation continues each component; 0 where it holds.
template <class T>
typename Components<T>::Numbers outsideRates(const QVector<KeyframeData<T>>& keyframes, bool before,
                                             Extrapolation kind) {
    typename Components<T>::Numbers rates{};
    if (keyframes.size() < 2 || kind != Extrapolation::Linear)
        return rates;
    const KeyframeData<T>& from = before ? keyframes.first() : keyframes.at(keyframes.size() - 2);
    const KeyframeData<T>& to = before ? keyframes.at(1) : keyframes.last();
    const double slope = before ? startSlope(from.interpolationData) : endSlope(from.interpolationData);
    const double duration = to.time - from.time;
    const auto a = Components<T>::of(from.value);
    const auto b = Components<T>::of(to.value);
    for (std::size_t i = 0; duration > 0.0 && i < rates.size(); ++i) {
        const double rate = (b[i] - a[i]) / duration * slope;
        rates[i] = std::isfinite(rate) ? rate : 0.0;
    }
    return rates;
}

/// The values before all keyframes, or after them, of a type that blends. A line without end reaches infinite values.
template <class T>
Range<T> outsideRange(const QVector<KeyframeData<T>>& keyframes, bool before, Extrapolation kind,
                      const Moments& times) {
    const KeyframeData<T>& edge = before ? keyframes.first() : keyframes.last();
    Range<T> range(edge.value);
    if constexpr (blends<T>) {
        const auto rates = outsideRates(keyframes, before, kind);
        if (std::all_of(rates.begin(), rates.end(), [](double rate) { return rate == 0.0; }))
            return range;
        const double firstDistance =
            times.first <= std::numeric_limits<double>::lowest() ? -infinite : times.first - edge.time.toDouble();
        const double lastDistance =
            times.last >= Time::INVALID_TIME_VALUE ? infinite : times.last - edge.time.toDouble();
        auto first = Components<T>::of(edge.value);
        auto last = first;
        bool isFinite = true;
        for (std::size_t i = 0; i < rates.size(); ++i) {
            first[i] += rates[i] == 0.0 ? 0.0 : rates[i] * firstDistance;
            last[i] += rates[i] == 0.0 ? 0.0 : rates[i] * lastDistance;
            isFinite = isFinite && std::isfinite(first[i]) && std::isfinite(last[i]);
        }
        auto line = Range<T>::between(Components<T>::value(first), Components<T>::value(last));
        if (isFinite)
            return line;
        // A line that is not finite holds.
        range.add(line);
    }
    return range;
}

template <class T> Range<T> rangeIn(const Shown<T>& shown, const Moments& span, Slack slack);

/// Whether a function that a host registered computes the values of the piece.
template <class T> bool asksFunction(const Shown<T>& shown, const Piece<T>& piece) {
    for (int i = 0; blends<T> && i < shown.count; ++i) {
        const auto& keyframes = shown[i].keyframes;
        const Bracket at = piece.at(i);
        if (keyframes.isEmpty() || at.before == at.after)
            continue;
        if (at.before < 0 || at.after < 0) {
            if (isRegistered(at.before < 0 ? shown.outside.before : shown.outside.after))
                return true;
        } else if (isRegistered(keyframes.at(at.before).interpolationData.interpolation)) {
            return true;
        }
    }
    return false;
}

/// The values of one track within a piece, at times from the first to the last one of `times`.
template <class T>
Range<T> trackRange(const Track<T>& track, Outside outside, Bracket at, const Moments& times, Slack slack) {
    const QVector<KeyframeData<T>>& keyframes = track.keyframes;
    if (keyframes.isEmpty())
        return Range<T>(track.staticValue);
    if (at.before == at.after)
        return Range<T>(keyframes.at(at.before).value);
    if (at.before >= 0 && at.after >= 0)
        return segmentRange(keyframes.at(at.before), keyframes.at(at.after), times, slack);
    const bool before = at.before < 0;
    const Extrapolation kind = before ? outside.before : outside.after;
    if (!blends<T> || keyframes.size() < 2 || !isRegistered(kind))
        return outsideRange(keyframes, before, kind, times);
    // The function shows times among the keyframes.
    Shown<T> inside;
    inside[0] = track;
    return rangeIn(inside, {keyframes.first().time.toDouble(), keyframes.last().time.toDouble()}, slack);
}

/// The sum of the tracks' ranges with their weights, widened by what rounding may add.
template <class T, std::size_t count>
Range<T> weightedRange(const Shown<T>& shown, const std::array<Range<T>, count>& ranges) {
    auto low = Components<T>::of(ranges[0].least);
    auto high = low;
    auto noise = low;
    low.fill(0.0);
    high.fill(0.0);
    noise.fill(0.0);
    for (int i = 0; i < shown.count; ++i) {
        const double weight = shown.weight(i);
        const Range<T>& range = ranges[static_cast<std::size_t>(i)];
        const auto least = Components<T>::of(weight < 0.0 ? range.greatest : range.least);
        const auto greatest = Components<T>::of(weight < 0.0 ? range.least : range.greatest);
        for (std::size_t c = 0; c < low.size(); ++c) {
            low[c] += weight * least[c];
            high[c] += weight * greatest[c];
            noise[c] += std::abs(weight) * std::max(std::abs(least[c]), std::abs(greatest[c]));
        }
    }
    for (std::size_t c = 0; c < low.size(); ++c) {
        low[c] -= 0x1p-48 * noise[c];
        high[c] += 0x1p-48 * noise[c];
    }
    return Range<T>::between(Components<T>::value(low), Components<T>::value(high));
}

/// The values within a piece, at times from the first to the last one of `times`.
template <class T> Range<T> rangeOf(const Shown<T>& shown, const Piece<T>& piece, const Moments& times, Slack slack) {
    if (!piece.isInstant() && times.first == times.last)
        return Range<T>(valueAt(shown, Time::fromDouble(times.first)));
    const auto ofTrack = [&](int i) { return trackRange(shown[i], shown.outside, piece.at(i), times, slack); };
    if constexpr (blends<T>) {
        if (shown.count > 1) {
            std::array<Range<T>, Shown<T>::capacity> ranges{ofTrack(0), ofTrack(1), ofTrack(shown.count - 1)};
            const auto end = ranges.begin() + shown.count;
            if (std::all_of(ranges.begin(), end, [](const Range<T>& range) { return range.isSingle(); }))
                return Range<T>(valueAt(shown, Time::fromDouble(times.first)));
            if (std::any_of(ranges.begin(), end, [](const Range<T>& range) { return !range.isKnown(); }))
                return Range<T>::everything();
            return weightedRange(shown, ranges);
        }
    }
    return ofTrack(0);
}

/// Whether all values of a segment lie between those of its keyframes, but for rounding.
inline bool staysBetween(const IType& shape) {
    const auto isInside = [](double y) { return y >= 0.0 && y <= 1.0; };
    if (shape.interpolation == Interpolation::Bezier)
        return isInside(shape.y1) && isInside(shape.y2);
    return !isCustom(shape);
}

/// Adds the values from one keyframe to another one, given by their positions.
template <class T>
void addKeyframes(Range<T>& range, const QVector<KeyframeData<T>>& keyframes, int first, int last, Slack slack) {
    auto low = Components<T>::of(range.least);
    auto high = Components<T>::of(range.greatest);
    bool isNumber = true;
    const auto add = [&](const T& value) {
        const auto numbers = Components<T>::of(value);
        for (std::size_t c = 0; c < low.size(); ++c) {
            isNumber = isNumber && numbers[c] == numbers[c];
            low[c] = std::min(low[c], numbers[c]);
            high[c] = std::max(high[c], numbers[c]);
        }
    };
    for (int i = first; i <= last; ++i) {
        const KeyframeData<T>& from = keyframes.at(i);
        add(from.value);
        if (i == last || holds(from.interpolationData))
            continue;
        const KeyframeData<T>& to = keyframes.at(i + 1);
        if (staysBetween(from.interpolationData)) {
            add(blended(from.value, to.value, 1.0));
            continue;
        }
        const Moments times{timeAfter(from.time.toDouble()), timeBefore(to.time.toDouble())};
        if (!times.isEmpty())
            range.add(segmentRange(from, to, times, slack));
    }
    if (isNumber)
        range.add(Range<T>::between(Components<T>::value(low), Components<T>::value(high)));
    else
        range = Range<T>::everything();
}

/// The values of the only track at the times of a span in which there are keyframes, from one position to another.
template <class T>
Range<T> rangeOfKeyframes(const Shown<T>& shown, const Moments& span, int first, int last, Slack slack) {
    const QVector<KeyframeData<T>>& keyframes = shown[0].keyframes;
    const double from = keyframes.at(first).time.toDouble();
    const double to = keyframes.at(last).time.toDouble();
    Range<T> all(keyframes.at(first).value);
    if (span.first < from)
        all.add(trackRange(shown[0], shown.outside, {first - 1, first}, {span.first, timeBefore(from)}, slack));
    addKeyframes(all, keyframes, first, last, slack);
    const int next = last + 1 < keyframes.size() ? last + 1 : -1;
    if (to < span.last)
        all.add(trackRange(shown[0], shown.outside, {last, next}, {timeAfter(to), span.last}, slack));
    return all;
}

/// The values at the times of a span that is not empty.
template <class T> Range<T> rangeIn(const Shown<T>& shown, const Moments& span, Slack slack) {
    if constexpr (blends<T>) {
        // Many keyframes of one track are looked through without pieces, several times as fast.
        const auto& keyframes = shown[0].keyframes;
        const int first = lowerBound(keyframes, Time::fromDouble(span.first));
        const int last = lowerBound(keyframes, Time::fromDouble(timeAfter(span.last))) - 1;
        if (shown.count == 1 && last > first && span.last < Time::INVALID_TIME_VALUE)
            return rangeOfKeyframes(shown, span, first, last, slack);
    }
    Range<T> all(valueAt(shown, Time::fromDouble(span.first)));
    forEachPiece(shown, span, [&](const Piece<T>& piece, const Moments& times) {
        all.add(rangeOf(shown, piece, times, slack));
        return all.isKnown();
    });
    return all;
}

/// Whether there is one value at all times of the span.
template <class T> bool isConstant(const Shown<T>& shown, const Moments& span) {
    if (span.isEmpty() || span.first == span.last)
        return true;
    const T value = valueAt(shown, Time::fromDouble(span.first));
    return forEachPiece(shown, span, [&](const Piece<T>& piece, const Moments& times) {
        return rangeOf(shown, piece, times, Slack::Full).isOnly(value);
    });
}

} // namespace Prm::detail

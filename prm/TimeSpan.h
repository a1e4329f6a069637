#pragma once

#include "prm/Export.h"
#include "prm/Time.h"
#include "prm/track/ShortList.h"

#include <algorithm>
#include <initializer_list>
#include <limits>
#include <utility>

class QDebug;

namespace Prm {

/// The times from one to another, in frames; each end belongs to the span or does not. Ends may be infinite. No time is
/// infinitely late, so an infinite `to` is excluded. A default span is empty.
///
/// \snippet curve_window.cpp answers
/// \threads A plain value.
struct PRM_EXPORT TimeSpan {
    /// Every time, also one that is infinitely early and the invalid time, which counts as a very late one.
    static constexpr TimeSpan all() {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        return {-infinity, infinity, true, false};
    }
    /// No time.
    static constexpr TimeSpan none() { return {}; }
    /// One time.
    static constexpr TimeSpan at(Time time) { return {time.toDouble(), time.toDouble(), true, true}; }

    /// Whether there is no time in the span: the ends are in descending order, equal and not both included, or NaN.
    constexpr bool isEmpty() const { return !(from < to || (from == to && withFrom && withTo)); }
    constexpr bool contains(Time time) const {
        const double frames = time.toDouble();
        return (from < frames || (from == frames && withFrom)) && (frames < to || (frames == to && withTo));
    }
    /// Whether there is a time in both.
    bool intersects(const TimeSpan& other) const { return !intersected(other).isEmpty(); }
    /// The times in both.
    TimeSpan intersected(const TimeSpan& other) const;

    double from = 0.0;
    double to = 0.0;
    bool withFrom = false;
    bool withTo = false;
};

/// Whether both have the same ends, each included in both or in neither; all empty spans are equal.
PRM_EXPORT bool operator==(const TimeSpan& a, const TimeSpan& b);
inline bool operator!=(const TimeSpan& a, const TimeSpan& b) {
    return !(a == b);
}

/// A set of times: spans in ascending order, of which no two touch.
///
/// \snippet frame_cache.cpp drop
/// \threads A plain value.
class PRM_EXPORT TimeSpans {
public:
    TimeSpans() = default;
    // By parts: a span that was just written in parts is read as a whole only after a wait.
    PRM_ALWAYS_INLINE TimeSpans(const TimeSpan& span)
        : m_spans(span.isEmpty() ? Spans() : Spans(std::in_place, span.from, span.to, span.withFrom, span.withTo)) {}
    TimeSpans(std::initializer_list<TimeSpan> spans);

    /// Unites the set with the span. Spans that overlap, or meet at an end that one of them includes, become one.
    /// Takes O(spans); O(1) for a span after all others.
    void add(const TimeSpan& span);
    TimeSpans& operator|=(const TimeSpans& other);

    /// Takes O(log spans).
    bool contains(Time time) const;
    /// Whether there is a time in both. Takes O(log spans).
    bool intersects(const TimeSpan& span) const;
    /// The times in both.
    TimeSpans intersected(const TimeSpan& span) const;

    bool isEmpty() const { return m_spans.isEmpty(); }
    int size() const { return m_spans.size(); }
    const TimeSpan* begin() const { return m_spans.begin(); }
    const TimeSpan* end() const { return m_spans.end(); }

    friend bool operator==(const TimeSpans& a, const TimeSpans& b) {
        return std::equal(a.begin(), a.end(), b.begin(), b.end());
    }
    friend bool operator!=(const TimeSpans& a, const TimeSpans& b) { return !(a == b); }

private:
    using Spans = detail::ShortList<TimeSpan>;

    const TimeSpan* firstNotBefore(const TimeSpan& span) const;

    Spans m_spans;
};

/// As an interval, "[0, 12)"; without times "{}".
PRM_EXPORT QDebug operator<<(QDebug debug, const TimeSpan& span);
/// The spans, joined by " + ".
PRM_EXPORT QDebug operator<<(QDebug debug, const TimeSpans& spans);

} // namespace Prm

Q_DECLARE_TYPEINFO(Prm::TimeSpan, Q_PRIMITIVE_TYPE);

#pragma once

#include "prm/track/Ranges.h"

#include <QtGlobal>

#include <algorithm>
#include <cstring>

namespace Prm::detail {

/// The place of a number in the order of all numbers.
inline qint64 rankOf(double number) {
    qint64 bits = 0;
    const double positive = std::abs(number);
    std::memcpy(&bits, &positive, sizeof bits);
    return number < 0.0 ? -bits : bits;
}
inline double ofRank(qint64 rank) {
    const qint64 bits = std::abs(rank);
    double number = 0.0;
    std::memcpy(&number, &bits, sizeof number);
    return rank < 0 ? -number : number;
}

/// The number furthest from `near` up to which the test holds, which does so for `near` and not for `far`.
template <class Test> double furthest(double near, double far, const Test& holds) {
    qint64 held = rankOf(near);
    qint64 failed = rankOf(far);
    for (;;) {
        // Their average, without overflow.
        const qint64 middle = (held & failed) + ((held ^ failed) >> 1);
        if (middle == held || middle == failed)
            return ofRank(held);
        (holds(ofRank(middle)) ? held : failed) = middle;
    }
}

/// The span around a time in which the value stays the same.
template <class T> class ConstantSpan {
public:
    ConstantSpan(const Shown<T>& shown, Time time)
        : m_shown(shown), m_time(time.toDouble()), m_value(valueAt(shown, time)) {}

    TimeSpan find() {
        const Piece<T> start(m_shown, m_time);
        extendLater(start);
        extendEarlier(start);
        return m_span;
    }

private:
    bool isSame(const Piece<T>& piece, const Moments& times) const {
        return times.isEmpty() || rangeOf(m_shown, piece, times, Slack::Full).isOnly(m_value);
    }

    void extendLater(Piece<T> piece) {
        for (double from = m_time;; from = piece.from()) {
            const Moments times = piece.moments().within({from, Time::INVALID_TIME_VALUE});
            if (!isSame(piece, times)) {
                extendWithin(piece, times.first, times.last, m_span.to, m_span.withTo);
                return;
            }
            m_span.to = piece.span().to;
            m_span.withTo = piece.span().withTo;
            if (!piece.next())
                return;
        }
    }

    void extendEarlier(Piece<T> piece) {
        for (double to = m_time;; to = piece.to()) {
            const Moments times = piece.moments().within({-infinite, to});
            if (!isSame(piece, times)) {
                extendWithin(piece, times.last, times.first, m_span.from, m_span.withFrom);
                return;
            }
            m_span.from = piece.span().from;
            m_span.withFrom = piece.span().withFrom;
            if (!piece.previous())
                return;
        }
    }

    /// Values that are rounded may stay the same for a part of a piece.
    void extendWithin(const Piece<T>& piece, double near, double far, double& end, bool& withEnd) const {
        const auto isSameTo = [&](double time) { return isSame(piece, {std::min(near, time), std::max(near, time)}); };
        if (!rounds<T> || !isSameTo(near))
            return;
        end = furthest(near, far, isSameTo);
        withEnd = true;
    }

    const Shown<T>& m_shown;
    const double m_time;
    const T m_value;
    TimeSpan m_span = TimeSpan::at(Time::fromDouble(m_time));
};

} // namespace Prm::detail

#pragma once

#include "prm/TimeSpan.h"
#include "prm/track/Evaluation.h"
#include "prm/track/SourceViews.h"
#include "prm/track/Track.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <typeinfo>

namespace Prm::detail {

/// What a parameter shows in one view, as plain data: the track that the view reads, or those of which view
/// interpolation blends its values. Copies share keyframes.
template <class T> struct Shown {
    static constexpr int capacity = SourceViews::capacity;

    Track<T>& operator[](int number) { return tracks[static_cast<std::size_t>(number)]; }
    const Track<T>& operator[](int number) const { return tracks[static_cast<std::size_t>(number)]; }
    double weight(int number) const { return weights[static_cast<std::size_t>(number)]; }

    std::array<Track<T>, capacity> tracks;
    std::array<double, capacity> weights{1.0};
    int count = 1;
    Outside outside;
    /// The class of a host whose hooks compute the values; null for values that the tracks determine.
    const std::type_info* hooks = nullptr;
};

/// Where each track was asked last, for times that come in order.
class Cursors {
public:
    Cursors() { m_positions.fill(-1); }
    int& operator[](int number) { return m_positions[static_cast<std::size_t>(number)]; }

private:
    std::array<int, SourceViews::capacity> m_positions{};
};

/// The value at a time, as `Parameter<T>::value` computes it without hooks.
template <class T> T valueAt(const Shown<T>& shown, Time time, Cursors& cursors) {
    if constexpr (blends<T>) {
        if (shown.count > 1) {
            WeightedSum<T> sum;
            for (int i = 0; i < shown.count; ++i)
                sum.add(evaluate(shown[i], shown.outside, time, cursors[i]), shown.weight(i));
            return sum.value();
        }
    }
    return evaluate(shown[0], shown.outside, time, cursors[0]);
}
template <class T> T valueAt(const Shown<T>& shown, Time time) {
    Cursors none;
    return valueAt(shown, time, none);
}

/// The last time before a time, the first time after it. Between `Time::LAST` and the invalid time there is none.
inline double timeBefore(double time) {
    if (time > Time::INVALID_TIME_VALUE)
        return Time::INVALID_TIME_VALUE;
    if (time > Time::LARGEST_VALID_VALUE)
        return Time::LARGEST_VALID_VALUE;
    return std::nextafter(time, -std::numeric_limits<double>::infinity());
}
inline double timeAfter(double time) {
    if (time >= Time::LARGEST_VALID_VALUE)
        return Time::INVALID_TIME_VALUE;
    return std::nextafter(time, std::numeric_limits<double>::infinity());
}

/// The first and the last time of a span: a span without ends that do not belong to it.
struct Moments {
    static Moments of(const TimeSpan& span) {
        const bool isLate = span.from >= Time::INVALID_TIME_VALUE && !span.contains(Time(Time::INVALID));
        if (span.isEmpty() || isLate)
            return {};
        Moments all{span.from, std::min(span.to, Time::INVALID_TIME_VALUE)};
        if (!span.withFrom || isNoTime(all.first))
            all.first = timeAfter(all.first);
        if ((!span.withTo && span.to <= all.last) || isNoTime(all.last))
            all.last = timeBefore(all.last);
        return all;
    }

    bool isEmpty() const { return !(first <= last); }
    Moments within(const Moments& other) const { return {std::max(first, other.first), std::min(last, other.last)}; }
    /// A time between both ends, which may be as far apart as times can be.
    double at(double part) const { return std::clamp(first * (1.0 - part) + last * part, first, last); }

    double first = 1.0;
    double last = 0.0;

private:
    static bool isNoTime(double time) { return time > Time::LARGEST_VALID_VALUE && time < Time::INVALID_TIME_VALUE; }
};

/// A stretch of time in which one rule gives the values of each track: the time of a keyframe of any of them, the times
/// between two that follow each other, or those outside all of them. Moves to its neighbours in constant time.
template <class T> class Piece {
public:
    /// The piece with the time.
    Piece(const Shown<T>& shown, double time) : m_shown(&shown), m_from(time), m_to(time) {
        bool isAtKeyframe = false;
        forEach([&](int i, const auto& keyframes) {
            before(i) = lowerBound(keyframes, Time::fromDouble(time));
            through(i) = pastAll(keyframes, before(i), time);
            isAtKeyframe = isAtKeyframe || before(i) < through(i);
        });
        if (!isAtKeyframe)
            open();
    }

    bool isInstant() const { return m_isInstant; }
    /// The times of the keyframes around the piece, or infinite ones.
    double from() const { return m_from; }
    double to() const { return m_to; }
    TimeSpan span() const {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        return {m_from, m_to, m_isInstant || m_from == -infinity, m_isInstant};
    }
    /// Empty where two keyframes leave no time between them.
    Moments moments() const { return Moments::of(span()); }
    Bracket at(int number) const {
        const int first = m_before[static_cast<std::size_t>(number)];
        const int end = m_through[static_cast<std::size_t>(number)];
        const int count = (*m_shown)[number].keyframes.size();
        return first < end ? Bracket{first, first} : Bracket{first - 1, first < count ? first : -1};
    }

    /// False, and nothing done, at the last piece.
    bool next() {
        if (!m_isInstant && m_to == std::numeric_limits<double>::infinity())
            return false;
        m_from = m_to;
        if (m_isInstant) {
            m_before = m_through;
            open();
        } else {
            m_isInstant = true;
            forEach([this](int i, const auto& keyframes) { through(i) = pastAll(keyframes, before(i), m_to); });
        }
        return true;
    }
    /// False, and nothing done, at the first piece.
    bool previous() {
        if (m_from == -std::numeric_limits<double>::infinity())
            return false;
        m_to = m_from;
        if (m_isInstant) {
            m_through = m_before;
            open();
        } else {
            m_isInstant = true;
            forEach([this](int i, const auto& keyframes) {
                while (before(i) > 0 && keyframes.at(before(i) - 1).time.toDouble() == m_from)
                    --before(i);
            });
        }
        return true;
    }

private:
    template <class Visit> void forEach(const Visit& visit) const {
        for (int i = 0; i < m_shown->count; ++i)
            visit(i, (*m_shown)[i].keyframes);
    }
    int& before(int number) { return m_before[static_cast<std::size_t>(number)]; }
    int& through(int number) { return m_through[static_cast<std::size_t>(number)]; }

    template <class Keyframes> static int pastAll(const Keyframes& keyframes, int position, double time) {
        while (position < keyframes.size() && keyframes.at(position).time.toDouble() == time)
            ++position;
        return position;
    }
    /// Becomes the piece between the keyframes around it.
    void open() {
        m_isInstant = false;
        m_from = -std::numeric_limits<double>::infinity();
        m_to = std::numeric_limits<double>::infinity();
        forEach([this](int i, const auto& keyframes) {
            if (before(i) > 0)
                m_from = std::max(m_from, keyframes.at(before(i) - 1).time.toDouble());
            if (before(i) < keyframes.size())
                m_to = std::min(m_to, keyframes.at(before(i)).time.toDouble());
        });
    }

    const Shown<T>* m_shown;
    double m_from;
    double m_to;
    bool m_isInstant = true;
    /// For each track, the number of keyframes before the piece, and that of those up to its end.
    std::array<int, Shown<T>::capacity> m_before{};
    std::array<int, Shown<T>::capacity> m_through{};
};

/// Calls `visit` with each piece that has times in common with the span, and these, until it returns false; returns
/// false then.
template <class T, class Visit> bool forEachPiece(const Shown<T>& shown, const Moments& span, const Visit& visit) {
    if (span.isEmpty())
        return true;
    Piece<T> piece(shown, span.first);
    do {
        const Moments within = piece.moments().within(span);
        if (!within.isEmpty() && !visit(piece, within))
            return false;
    } while (piece.to() <= span.last && piece.next());
    return true;
}

} // namespace Prm::detail

#pragma once

#include "prm/Export.h"

#include <QtGlobal>

class QDebug;
class QTextStream;

namespace Prm {

class BaseContext;

/// A point on the timeline in frames: 1.0 is one frame, fractions lie between frames, and times may be negative. NaN,
/// and times above `LAST`, are stored as `INVALID_TIME_VALUE`, so that times compare like plain doubles.
///
/// \snippet times_and_views.cpp time
/// \threads A plain value.
class PRM_EXPORT Time {
public:
    /// Tag that selects the invalid time.
    struct Invalid {};
    static constexpr Invalid INVALID{};
    static constexpr double INVALID_TIME_VALUE = 4294967295.0;
    static constexpr double LARGEST_VALID_VALUE = 2147483646.0;

    /// Reserved markers at the top of the valid range. The library treats them as any other time.
    static const Time FIRST;
    static const Time LAST;

    /// Time 0.
    constexpr Time() = default;
    constexpr Time(Invalid) : m_frames(INVALID_TIME_VALUE) {}

    /// An argument above `LARGEST_VALID_VALUE` or NaN gives the invalid time; there is no lower bound.
    static constexpr Time fromInt(int frames) { return fromDouble(frames); }
    static constexpr Time fromUInt(unsigned int frames) { return fromDouble(frames); }
    static constexpr Time fromFloat(float frames) { return fromDouble(static_cast<double>(frames)); }
    static constexpr Time fromDouble(double frames) {
        Time time;
        time.m_frames = frames <= LARGEST_VALID_VALUE ? frames : INVALID_TIME_VALUE;
        return time;
    }

    /// In frames.
    constexpr double toDouble() const { return m_frames; }
    /// Whether the time is at most `LARGEST_VALID_VALUE`.
    constexpr bool isValid() const { return m_frames <= LARGEST_VALID_VALUE; }

    friend constexpr bool operator==(Time a, Time b) { return a.m_frames == b.m_frames; }
    friend constexpr bool operator!=(Time a, Time b) { return a.m_frames != b.m_frames; }
    friend constexpr bool operator<(Time a, Time b) { return a.m_frames < b.m_frames; }
    friend constexpr bool operator<=(Time a, Time b) { return a.m_frames <= b.m_frames; }
    friend constexpr bool operator>(Time a, Time b) { return a.m_frames > b.m_frames; }
    friend constexpr bool operator>=(Time a, Time b) { return a.m_frames >= b.m_frames; }

    /// The time that many frames later, as `fromDouble` makes it.
    friend constexpr Time operator+(Time time, double frames) { return fromDouble(time.m_frames + frames); }
    /// The distance in frames.
    friend constexpr double operator-(Time a, Time b) { return a.m_frames - b.m_frames; }

private:
    double m_frames = 0.0;
};

inline constexpr Time Time::FIRST = Time::fromDouble(2147483645.0);
inline constexpr Time Time::LAST = Time::fromDouble(2147483646.0);

/// The time that a keyframe at `time` has after it was saved and loaded: project text has six significant digits, and
/// its times are read in single precision. A time that is returned as it is survives; keyframes for whose times this is
/// the same become one.
PRM_EXPORT Time writtenTime(Time time);

/// A whole frame number.
///
/// \snippet times_and_views.cpp time
/// \threads A plain value.
class PRM_EXPORT Frame {
public:
    /// Tag that selects the invalid frame.
    struct Invalid {};
    static constexpr Invalid INVALID{};
    static constexpr quint32 INVALID_FRAME_VALUE = 0xFFFFFFFFu;

    /// The largest ordinary frame, and two reserved markers above it. The library treats them as any other frame.
    static const Frame MAX;
    static const Frame FIRST;
    static const Frame LAST;

    /// Frame 0.
    constexpr Frame() = default;
    constexpr Frame(Invalid) : m_number(INVALID_FRAME_VALUE) {}
    /// The frame of the context's time: truncated towards zero to 64 bits, of which the low 32 are passed to
    /// `fromUInt`.
    Frame(const BaseContext& context);
    Frame& operator=(const BaseContext& context);

    /// Numbers above `LAST` are invalid.
    static constexpr Frame fromUInt(unsigned int number) {
        return Frame(number < 2147483647u ? number : INVALID_FRAME_VALUE);
    }
    /// Only 2147483647 is invalid; every other number, negative ones too, keeps its bits.
    static constexpr Frame fromInt(int number) {
        return Frame(number == 2147483647 ? INVALID_FRAME_VALUE : static_cast<quint32>(number));
    }
    /// Truncated towards zero, low 32 bits kept; above 2147483648, NaN, or outside 64 bits: invalid.
    static constexpr Frame fromFloat(float number) { return truncated(static_cast<double>(number), 2147483648.0); }
    /// As `fromFloat`, with the bound 2147483646.
    static constexpr Frame fromDouble(double number) { return truncated(number, 2147483646.0); }

    /// The number; `INVALID_FRAME_VALUE` for the invalid frame.
    constexpr quint32 toUInt() const { return m_number; }
    /// Whether this is not the invalid frame. Reserved markers are valid.
    constexpr bool isValid() const { return m_number != INVALID_FRAME_VALUE; }

    friend constexpr bool operator==(Frame a, Frame b) { return a.m_number == b.m_number; }
    friend constexpr bool operator!=(Frame a, Frame b) { return a.m_number != b.m_number; }
    friend constexpr bool operator<(Frame a, Frame b) { return a.m_number < b.m_number; }
    friend constexpr bool operator<=(Frame a, Frame b) { return a.m_number <= b.m_number; }
    friend constexpr bool operator>(Frame a, Frame b) { return a.m_number > b.m_number; }
    friend constexpr bool operator>=(Frame a, Frame b) { return a.m_number >= b.m_number; }

private:
    friend PRM_EXPORT QTextStream& operator>>(QTextStream& stream, Frame& frame);

    explicit constexpr Frame(quint32 number) : m_number(number) {}

    static constexpr Frame truncated(double number, double largest) {
        constexpr double below64Bits = -9223372036854775808.0;
        if (!(number <= largest) || number < below64Bits)
            return INVALID;
        return Frame(static_cast<quint32>(static_cast<qint64>(number)));
    }

    quint32 m_number = 0;
};

inline constexpr Frame Frame::MAX = Frame::fromInt(2147483644);
inline constexpr Frame Frame::FIRST = Frame::fromInt(2147483645);
inline constexpr Frame Frame::LAST = Frame::fromInt(2147483646);

/// Writes an unsigned decimal number; the stream's number settings are not used.
PRM_EXPORT QTextStream& operator<<(QTextStream& stream, const Frame& frame);
/// Stores the number as read, without the checks of the factories.
PRM_EXPORT QTextStream& operator>>(QTextStream& stream, Frame& frame);

PRM_EXPORT QDebug operator<<(QDebug debug, Time time);
PRM_EXPORT QDebug operator<<(QDebug debug, Frame frame);

} // namespace Prm

Q_DECLARE_TYPEINFO(Prm::Time, Q_PRIMITIVE_TYPE);
Q_DECLARE_TYPEINFO(Prm::Frame, Q_PRIMITIVE_TYPE);

#pragma once

#include "host/bsc/Hash.h"
#include "prm/track/Ranges.h"

#include <QtEndian>

#include <cmath>
#include <cstring>
#include <limits>

namespace Prm::detail {

/// Of the numbers that are equal, one: 0 has no sign, and there is one that is no number.
inline double canonical(double number) {
    return std::isnan(number) ? std::numeric_limits<double>::quiet_NaN() : number + 0.0;
}
inline QPointF canonical(const QPointF& point) {
    return {canonical(point.x()), canonical(point.y())};
}
template <class T> const T& canonical(const T& value) {
    return value;
}

template <class Number> void addNumber(Bsc::Hash& hash, Number number) {
    const Number bytes = qToLittleEndian(number);
    hash.addData(&bytes, sizeof bytes);
}
inline void addNumber(Bsc::Hash& hash, double number) {
    quint64 bits = 0;
    const double one = canonical(number);
    std::memcpy(&bits, &one, sizeof bits);
    addNumber(hash, bits);
}

/// What a run of bytes in a hash is about. Every run begins with one of these, so that runs of different kinds differ.
enum class HashMark : quint8 {
    Constant,
    Varying,
    Hooks,
    Other,
    Members,
    Track,
    Held,
    Line,
    Curve,
    Custom,
    Outside,
    End
};

inline void addMark(Bsc::Hash& hash, HashMark mark) {
    addNumber(hash, static_cast<quint8>(mark));
}

/// Adds to a hash the values of a type in one form, so that equal values add the same bytes.
template <class T> void addValue(Bsc::Hash& hash, const T& value) {
    ValueType<T>::addToHash(hash, canonical(value));
}

template <class T> void addConstant(Bsc::Hash& hash, const T& value) {
    addMark(hash, HashMark::Constant);
    addTextToHash(hash, ValueType<T>::name());
    addValue(hash, value);
}

template <class T> void addKeyframe(Bsc::Hash& hash, const KeyframeData<T>& keyframe) {
    addNumber(hash, keyframe.time.toDouble());
    addValue(hash, keyframe.value);
}

inline void addNumbers(Bsc::Hash& hash, const IType& shape) {
    for (const double number : {shape.x1, shape.y1, shape.x2, shape.y2})
        addNumber(hash, number);
}

/// How a segment runs, with shape numbers only if they matter.
inline void addShape(Bsc::Hash& hash, const IType& shape) {
    const auto held = [](double x) { return std::min(1.0, std::max(0.0, x)); };
    if (isBent(shape)) {
        addMark(hash, HashMark::Curve);
        addNumbers(hash, {shape.interpolation, held(shape.x1), shape.y1, held(shape.x2), shape.y2});
    } else if (isRegistered(shape.interpolation)) {
        addMark(hash, HashMark::Custom);
        addNumber(hash, static_cast<quint32>(shape.interpolation));
        addNumbers(hash, shape);
    } else {
        addMark(hash, holds(shape) ? HashMark::Held : HashMark::Line);
    }
}

/// Adds what determines the values of one track at the times of a span, and nothing else: values that are held, with
/// the times at which they begin, and the keyframes at both ends of the other segments.
template <class T> class TrackHash {
public:
    TrackHash(Bsc::Hash& hash, const Shown<T>& shown, const Moments& span)
        : m_hash(hash), m_shown(shown), m_span(span) {}

    void add() {
        addMark(m_hash, HashMark::Track);
        forEachPiece(m_shown, m_span, [this](const Piece<T>& piece, const Moments& times) {
            add(piece, times);
            return true;
        });
        addMark(m_hash, HashMark::End);
    }

private:
    void add(const Piece<T>& piece, const Moments& times) {
        const Bracket at = piece.at(0);
        const Range<T> range = rangeOf(m_shown, piece, times, Slack::Full);
        if (range.isSingle())
            return addHeld(piece, times, range.least);
        m_isHeld = false;
        if (at.before >= 0 && at.after >= 0)
            addSegment(keyframes().at(at.before), keyframes().at(at.after));
        else
            addOutside(at.before < 0);
    }

    const QVector<KeyframeData<T>>& keyframes() const { return m_shown[0].keyframes; }

    void addHeld(const Piece<T>& piece, const Moments& times, const T& value) {
        if (m_isHeld && ValueType<T>::equal(m_held, value))
            return;
        addMark(m_hash, HashMark::Held);
        // What began before the span shows the same as what begins with it.
        addNumber(m_hash, times.first == m_span.first ? m_span.first : piece.from());
        addValue(m_hash, value);
        m_isHeld = true;
        m_held = value;
    }

    void addSegment(const KeyframeData<T>& from, const KeyframeData<T>& to) {
        addShape(m_hash, from.interpolationData);
        addKeyframe(m_hash, from);
        addKeyframe(m_hash, to);
    }

    void addOutside(bool before) {
        const Extrapolation kind = before ? m_shown.outside.before : m_shown.outside.after;
        addMark(m_hash, HashMark::Outside);
        addNumber(m_hash, static_cast<quint32>(kind));
        const int count = keyframes().size();
        if (isRegistered(kind)) {
            // The function may show any of the times among them.
            addNumber(m_hash, static_cast<quint32>(count));
            for (const KeyframeData<T>& keyframe : keyframes()) {
                addShape(m_hash, keyframe.interpolationData);
                addKeyframe(m_hash, keyframe);
            }
            return;
        }
        const KeyframeData<T>& from = before ? keyframes().first() : keyframes().at(count - 2);
        const KeyframeData<T>& to = before ? keyframes().at(1) : keyframes().last();
        addKeyframe(m_hash, from);
        addKeyframe(m_hash, to);
        addNumber(m_hash, before ? startSlope(from.interpolationData) : endSlope(from.interpolationData));
    }

    Bsc::Hash& m_hash;
    const Shown<T>& m_shown;
    const Moments m_span;
    bool m_isHeld = false;
    T m_held{};
};

/// Adds to a hash what determines the values at the times of a span. Constant ones are the same in every span.
template <class T> void addRange(Bsc::Hash& hash, const Shown<T>& shown, const Moments& span) {
    if (span.isEmpty())
        return addMark(hash, HashMark::End);
    if (isConstant(shown, span))
        return addConstant(hash, valueAt(shown, Time::fromDouble(span.first)));
    addMark(hash, HashMark::Varying);
    addTextToHash(hash, ValueType<T>::name());
    addNumber(hash, span.first);
    addNumber(hash, span.last);
    addNumber(hash, static_cast<quint32>(shown.count));
    for (int i = 0; i < shown.count; ++i) {
        Shown<T> track;
        track[0] = shown[i];
        track.outside = shown.outside;
        addNumber(hash, shown.count > 1 ? shown.weight(i) : 1.0);
        TrackHash<T>(hash, track, span).add();
    }
}

inline void addSpan(Bsc::Hash& hash, const TimeSpan& span) {
    addNumber(hash, span.from);
    addNumber(hash, span.to);
    addNumber(hash, static_cast<quint8>((span.withFrom ? 1 : 0) + (span.withTo ? 2 : 0)));
}

/// The same where hooks of a class of a host compute the values: the class, and all that it may read of the parameter.
template <class T> void addHooks(Bsc::Hash& hash, const Shown<T>& shown, const TimeSpan& span, View view) {
    addMark(hash, HashMark::Hooks);
    addTextToHash(hash, QString::fromLatin1(shown.hooks->name()));
    addNumber(hash, view.id());
    addSpan(hash, span);
    addNumber(hash, static_cast<quint32>(shown.outside.before));
    addNumber(hash, static_cast<quint32>(shown.outside.after));
    for (int i = 0; i < shown.count; ++i) {
        const Track<T>& track = shown[i];
        addNumber(hash, shown.count > 1 ? shown.weight(i) : 1.0);
        addValue(hash, track.staticValue);
        addNumber(hash, static_cast<quint32>(track.keyframes.size()));
        for (const KeyframeData<T>& keyframe : track.keyframes) {
            addKeyframe(hash, keyframe);
            addNumber(hash, static_cast<quint32>(keyframe.interpolationData.interpolation));
            addNumbers(hash, keyframe.interpolationData);
        }
    }
}

} // namespace Prm::detail

#pragma once

#include "prm/KeyframeHandles.h"
#include "prm/track/HandleCurve.h"
#include "prm/track/KeyframeSearch.h"
#include "prm/track/Ranges.h"
#include "prm/track/ReshapedTrack.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

namespace Prm::detail {

/// A segment as one component sees it.
template <class T> HandleCurve handleCurve(const KeyframeData<T>& from, const KeyframeData<T>& to, int component) {
    return {{from.time.toDouble(), ValueType<T>::component(from.value, component)},
            {to.time.toDouble(), ValueType<T>::component(to.value, component)},
            from.interpolationData};
}

template <class T> KeyframeHandles handlesAt(const QVector<KeyframeData<T>>& keyframes, int position, int component) {
    KeyframeHandles handles;
    if (position > 0)
        handles.in = handleCurve(keyframes.at(position - 1), keyframes.at(position), component).in();
    if (position + 1 < keyframes.size())
        handles.out = handleCurve(keyframes.at(position), keyframes.at(position + 1), component).out();
    return handles;
}

/// Changes the handles of one keyframe. Each step returns why it is refused, or null.
template <class T> class HandleShaper {
public:
    HandleShaper(QVector<KeyframeData<T>>& keyframes, int position, const HandleChange& change)
        : m_keyframes(keyframes), m_position(position), m_change(change) {
        if (position > 0)
            m_before = handleCurve(keyframes.at(position - 1), keyframes.at(position), change.component);
        if (position + 1 < keyframes.size())
            m_after = handleCurve(keyframes.at(position), keyframes.at(position + 1), change.component);
    }

    const char* shape() {
        const bool isIn = m_change.concernsIn && m_before && m_before->hasHandles();
        const bool isOut = m_change.concernsOut && m_after && m_after->hasHandles();
        if (m_change.kind == HandleChange::Points) {
            if (const char* const refusal = movePoints())
                return refusal;
        } else if (m_change.kind == HandleChange::Flat) {
            flatten(isIn, isOut);
        } else if (isIn || isOut) {
            smooth(isIn, isOut);
        }
        // The later one first: it may add keyframes.
        const char* const refusal = store(m_after, m_position);
        return refusal ? refusal : store(m_before, m_position - 1);
    }

private:
    using Numbers = typename Components<T>::Numbers;
    using Segment = std::optional<HandleCurve>;

    static constexpr const char* hasNoSegment = "there is no segment on that side of the keyframe";
    static constexpr const char* holdsItsValue = "the segment holds its value";
    static constexpr const char* isFlat = "both keyframes have the same value, so that the handle has no height";
    static constexpr const char* sharesShape = "the components share one shape";
    static constexpr const char* isTooShort = "there is no room for a keyframe at the extremum";

    static const char* refusalOf(const Segment& segment, const IType& kind, const HandlePoint& point) {
        if (!segment)
            return hasNoSegment;
        if (!segment->hasHandles())
            return isCustom(kind) ? hasCustomKind : holdsItsValue;
        return std::isfinite(point.time) && std::isfinite(point.value) ? nullptr : isNotFinite;
    }
    const IType& kindAt(int position) const { return m_keyframes.at(std::max(position, 0)).interpolationData; }

    const char* movePoints() {
        if (m_change.in) {
            if (const char* const refusal = refusalOf(m_before, kindAt(m_position - 1), *m_change.in))
                return refusal;
            m_before->setIn(*m_change.in);
        }
        if (m_change.out) {
            if (const char* const refusal = refusalOf(m_after, kindAt(m_position), *m_change.out))
                return refusal;
            m_after->setOut(*m_change.out);
        }
        if (m_change.tie == HandleChange::Free || (m_change.in && m_change.out))
            return nullptr;
        if (m_change.in && m_after && m_after->hasHandles())
            m_after->setOut(tied(*m_before->in(), *m_after->out(), m_after->duration()));
        if (m_change.out && m_before && m_before->hasHandles())
            m_before->setIn(tied(*m_after->out(), *m_before->in(), m_before->duration()));
        return nullptr;
    }
    /// Where the other handle comes to when one was moved.
    HandlePoint tied(const HandlePoint& moved, const HandlePoint& other, double duration) const {
        const KeyframeData<T>& keyframe = m_keyframes.at(m_position);
        const double time = keyframe.time.toDouble();
        const double value = ValueType<T>::component(keyframe.value, m_change.component);
        const double width = time - moved.time;
        const double height = value - moved.value;
        if (m_change.tie == HandleChange::Mirrored) {
            const double part = std::min(1.0, duration / std::abs(width));
            return part < 1.0 ? HandlePoint{time + width * part, value + height * part}
                              : HandlePoint{time + width, value + height};
        }
        if (width == 0.0)
            return {time, value + std::copysign(std::abs(other.value - value), height)};
        const double former = std::abs(other.time - time);
        const double distance = std::copysign(former > 0.0 ? former : duration / 3.0, width);
        return {time + distance, value + height / width * distance};
    }

    void flatten(bool isIn, bool isOut) {
        if (isIn)
            m_before->setInPart(m_before->shape().x2 < 1.0 ? m_before->shape().x2 : 2.0 / 3.0, 1.0);
        if (isOut)
            m_after->setOutPart(m_after->shape().x1 > 0.0 ? m_after->shape().x1 : 1.0 / 3.0, 0.0);
    }

    /// The way from one keyframe to the next.
    struct Way {
        Numbers change;
        double duration;
        double length;

        double speed() const { return length / duration; }
    };
    Way wayFrom(int position) const {
        const KeyframeData<T>& from = m_keyframes.at(position);
        const KeyframeData<T>& to = m_keyframes.at(position + 1);
        Way way{Components<T>::of(to.value), to.time - from.time, 0.0};
        const Numbers start = Components<T>::of(from.value);
        for (std::size_t i = 0; i < start.size(); ++i) {
            way.change[i] -= start[i];
            way.length = std::hypot(way.length, way.change[i]);
        }
        return way;
    }
    bool isCurve(int position) const {
        return position >= 0 && position + 1 < m_keyframes.size() && !holds(kindAt(position)) &&
               !isCustom(kindAt(position));
    }
    static bool turns(const Way& a, const Way& b) {
        double product = 0.0;
        for (std::size_t i = 0; i < a.change.size(); ++i)
            product += a.change[i] / a.length * (b.change[i] / b.length);
        return !(product > 0.0);
    }

    void smooth(bool isIn, bool isOut) {
        const bool hasBoth = isCurve(m_position - 1) && isCurve(m_position);
        const double speed = hasBoth               ? speedBetween(wayFrom(m_position - 1), wayFrom(m_position))
                             : isCurve(m_position) ? speedAtEnd(m_position, m_position + 1)
                                                   : speedAtEnd(m_position - 1, m_position - 2);
        const auto height = [&](const Way& way) {
            return way.length > 0.0 ? std::min(1.0, speed / way.speed() / 3.0) : 0.0;
        };
        if (isIn)
            m_before->setInPart(2.0 / 3.0, 1.0 - height(wayFrom(m_position - 1)));
        if (isOut)
            m_after->setOutPart(1.0 / 3.0, height(wayFrom(m_position)));
    }
    static double speedBetween(const Way& a, const Way& b) {
        if (!(a.length > 0.0) || !(b.length > 0.0) || turns(a, b))
            return 0.0;
        const double first = 2.0 * b.duration + a.duration;
        const double second = b.duration + 2.0 * a.duration;
        return (first + second) / (first / a.speed() + second / b.speed());
    }
    /// Beside a curve's first or last keyframe, given the segment there and the next one.
    double speedAtEnd(int own, int next) const {
        const Way a = wayFrom(own);
        if (!isCurve(next))
            return a.speed();
        const Way b = wayFrom(next);
        const bool isTurn = !(a.length > 0.0) || !(b.length > 0.0) || turns(a, b);
        const double far = isTurn ? -b.speed() : b.speed();
        const double speed =
            ((2.0 * a.duration + b.duration) * a.speed() - a.duration * far) / (a.duration + b.duration);
        return std::max(0.0, isTurn ? std::min(speed, 3.0 * a.speed()) : speed);
    }

    const char* store(const Segment& segment, int position) {
        if (!segment || !segment->isChanged())
            return nullptr;
        if (!segment->isShape())
            return m_change.addsExtremum ? addExtremum(*segment, position) : isFlat;
        const IType& shape = segment->shape();
        if (!std::isfinite(shape.x1) || !std::isfinite(shape.y1) || !std::isfinite(shape.x2) ||
            !std::isfinite(shape.y2))
            return isNotFinite;
        m_keyframes[position].interpolationData = shape;
        return nullptr;
    }
    const char* addExtremum(const HandleCurve& segment, int position) {
        const T start = m_keyframes.at(position).value;
        if (!ValueType<T>::equal(start, m_keyframes.at(position + 1).value))
            return sharesShape;
        const std::vector<HandleCurve::Piece> pieces = segment.pieces();
        const Time end = m_keyframes.at(position + 1).time;
        m_keyframes[position].interpolationData = pieces.front().shape;
        for (std::size_t i = 1; i < pieces.size(); ++i) {
            Numbers numbers = Components<T>::of(start);
            numbers[static_cast<std::size_t>(m_change.component)] = pieces[i].value;
            const KeyframeData<T> added(Time::fromDouble(pieces[i].time), Components<T>::value(numbers),
                                        pieces[i].shape);
            if (ValueType<T>::equal(added.value, start))
                return isFlat;
            if (!(added.time > m_keyframes.at(position).time && added.time < end))
                return isTooShort;
            m_keyframes.insert(++position, added);
        }
        return nullptr;
    }

    QVector<KeyframeData<T>>& m_keyframes;
    const int m_position;
    const HandleChange m_change;
    Segment m_before;
    Segment m_after;
};

/// Nothing happens where there is no keyframe.
template <class T> const char* changeHandles(ReshapedTrack<T>& track, Time time, const HandleChange& change) {
    const int position = positionAt(track.now.keyframes, time);
    if (position < 0)
        return nullptr;
    if constexpr (blends<T>) {
        if (track.holds)
            return "the parameter has no curves";
        if (change.component < 0 || change.component >= ValueType<T>::componentCount)
            return "the value has no such component";
        return HandleShaper<T>(track.now.keyframes, position, change).shape();
    } else {
        return "values of its type do not blend";
    }
}

} // namespace Prm::detail

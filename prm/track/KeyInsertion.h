#pragma once

#include "prm/track/BezierEasing.h"
#include "prm/track/EasingPieces.h"
#include "prm/track/KeyframeStretch.h"
#include "prm/track/Ranges.h"
#include "prm/track/ReshapedTrack.h"
#include "prm/track/Reshaping.h"

#include <algorithm>
#include <cmath>

namespace Prm::detail {

/// Inserts a keyframe, and the others that the curve needs then. Each step returns why it is refused, or null.
template <class T> class KeptCurve {
public:
    KeptCurve(ReshapedTrack<T>& track, const KeyInsertion& act) : m_track(track), m_act(act) {}

    const char* insert() {
        Keyframes& keyframes = m_track.now.keyframes;
        if (!m_act.time.isValid() || !std::isfinite(m_act.time.toDouble()))
            return invalidTime;
        if (m_track.hasHooks)
            return hasHooks;
        if (m_track.showsOthers)
            return isBlend;
        const int position = lowerBound(keyframes, m_act.time);
        if (position < keyframes.size() && keyframes.at(position).time == m_act.time)
            return nullptr;
        if (keyframes.isEmpty())
            return insertAt(0, {m_act.time, m_track.now.staticValue, m_track.firstKind});
        return position == 0 || position == keyframes.size() ? insertOutside(position) : insertWithin(position);
    }

private:
    using Keyframes = QVector<KeyframeData<T>>;

    static constexpr const char* rounds = "the value there is not a whole number";
    static constexpr const char* isVertical = "the curve is vertical within the segment";
    static constexpr const char* needsMore = "one keyframe is not enough to keep the curve";

    const char* insertAt(int position, const KeyframeData<T>& keyframe) {
        m_track.now.keyframes.insert(position, keyframe);
        return nullptr;
    }

    const char* insertOutside(int position) {
        Keyframes& keyframes = m_track.now.keyframes;
        const bool isBefore = position == 0;
        const KeyframeData<T>& edge = isBefore ? keyframes.first() : keyframes.last();
        const Interpolation kind = edge.interpolationData.interpolation;
        KeyframeData<T> added(m_act.time, edge.value, edge.interpolationData);
        if (isBefore)
            added.interpolationData = initialShape(kind, kind);
        if constexpr (blends<T>) {
            if (!m_track.holds && (isRegistered(m_track.outside.before) || isRegistered(m_track.outside.after)))
                return hasCustomKind;
            const Extrapolation outside = isBefore ? m_track.outside.before : m_track.outside.after;
            const auto rates = outsideRates(keyframes, isBefore, outside);
            if (!m_track.holds && std::any_of(rates.begin(), rates.end(), [](double rate) { return rate != 0.0; })) {
                added.value = outsideValue(keyframes, isBefore, outside, m_act.time);
                if (!isExact(edge.value, rates, m_act.time - edge.time, added.value))
                    return rounds;
                (isBefore ? added : keyframes.last()).interpolationData = Interpolation::Linear;
            }
        }
        return insertAt(position, added);
    }

    const char* insertWithin(int position) {
        const KeyframeData<T> from = m_track.now.keyframes.at(position - 1);
        const KeyframeData<T> to = m_track.now.keyframes.at(position);
        const IType& shape = from.interpolationData;
        if (m_track.holds || holds(shape))
            return insertAt(position, {m_act.time, from.value, shape});
        if (isCustom(shape))
            return hasCustomKind;
        if constexpr (blends<T>) {
            if (!isFinite(from, to))
                return isNotFinite;
            if (isBent(shape) && !ValueType<T>::equal(from.value, to.value))
                return insertBent(position, from, to);
            return insertPiece(position, from, to, (m_act.time - from.time) / (to.time - from.time), m_act.time, shape);
        } else {
            return nullptr;
        }
    }

    static bool isFinite(const KeyframeData<T>& from, const KeyframeData<T>& to) {
        const auto a = Components<T>::of(from.value);
        const auto b = Components<T>::of(to.value);
        bool all = std::isfinite(from.interpolationData.y1) && std::isfinite(from.interpolationData.y2) &&
                   std::isfinite(to.time - from.time);
        for (std::size_t i = 0; i < a.size(); ++i)
            all = all && std::isfinite(b[i] - a[i]);
        return all;
    }

    const char* insertBent(int position, const KeyframeData<T>& from, const KeyframeData<T>& to) {
        const double duration = to.time - from.time;
        const auto pieces = cutEasing(from.interpolationData, (m_act.time - from.time) / duration);
        if (pieces.empty())
            return isVertical;
        if (pieces.size() > 2 && !m_act.mayAddMore)
            return needsMore;
        m_track.now.keyframes[position - 1].interpolationData = pieces.front().shape;
        const double x = (m_act.time - from.time) / duration;
        for (std::size_t i = 1; i < pieces.size(); ++i) {
            const EasingPiece& cut = pieces[i - 1];
            const Time time = cut.x == x ? m_act.time : from.time + duration * cut.x;
            // Those of a segment that is shorter than times can say are left out.
            if (!(time > m_track.now.keyframes.at(position - 1).time && time < to.time))
                continue;
            if (const char* const refusal = insertPiece(position++, from, to, cut.y, time, pieces[i].shape))
                return refusal;
        }
        return nullptr;
    }

    /// The keyframe of a segment where it has reached a part of its change.
    const char* insertPiece(int position, const KeyframeData<T>& from, const KeyframeData<T>& to, double part,
                            Time time, const IType& shape) {
        const T value = segmentValue(from, to, time);
        auto change = Components<T>::of(to.value);
        const auto start = Components<T>::of(from.value);
        for (std::size_t i = 0; i < change.size(); ++i)
            change[i] -= start[i];
        if (!m_act.mayAddMore && !isExact(from.value, change, part, value))
            return rounds;
        return insertAt(position, {time, value, shape});
    }

    /// Whether a value is the start and a part of the change, and not rounded to a whole number.
    static bool isExact(const T& start, const typename Components<T>::Numbers& change, double part, const T& value) {
        constexpr double tolerance = 1e-12;
        const auto from = Components<T>::of(start);
        const auto reached = Components<T>::of(value);
        for (std::size_t i = 0; i < from.size(); ++i) {
            const double exact = from[i] + change[i] * part;
            const double size = std::max({1e-300, std::abs(from[i]), std::abs(change[i]), std::abs(exact)});
            if (!(std::abs(reached[i] - exact) <= tolerance * size))
                return false;
        }
        return true;
    }

    ReshapedTrack<T>& m_track;
    const KeyInsertion m_act;
};

template <class T> const char* reshape(ReshapedTrack<T>& track, const KeyInsertion& act) {
    return KeptCurve<T>(track, act).insert();
}

} // namespace Prm::detail

#pragma once

#include "prm/track/Ranges.h"

#include <algorithm>

namespace Prm::detail {

/// The components' changes per frame after a time.
template <class T> class SlopeAfter {
public:
    using Numbers = typename Components<T>::Numbers;

    SlopeAfter(const Shown<T>& shown, Time time) : m_shown(shown), m_time(time), m_piece(shown, time.toDouble()) {
        while ((m_piece.isInstant() || m_piece.moments().isEmpty()) && m_piece.next()) {
        }
    }

    /// The change from one value to another, `frames` later.
    static T between(const T& now, const T& later, double frames) {
        return Components<T>::value(changes(now, later, 1.0 / frames));
    }

    T find() const {
        Numbers sum{};
        for (int i = 0; i < m_shown.count; ++i) {
            const Numbers slope = ofTrack(m_shown[i], m_piece.at(i));
            for (std::size_t c = 0; c < sum.size(); ++c)
                sum[c] += m_shown.count > 1 ? m_shown.weight(i) * slope[c] : slope[c];
        }
        return Components<T>::value(sum);
    }

private:
    Numbers ofTrack(const Track<T>& track, Bracket at) const {
        const auto& keyframes = track.keyframes;
        if (keyframes.isEmpty())
            return {};
        if (at.before < 0 || at.after < 0) {
            const Extrapolation kind = at.before < 0 ? m_shown.outside.before : m_shown.outside.after;
            return isRegistered(kind) ? differences(track) : outsideRates(keyframes, at.before < 0, kind);
        }
        const KeyframeData<T>& from = keyframes.at(at.before);
        const KeyframeData<T>& to = keyframes.at(at.after);
        const IType& shape = from.interpolationData;
        const double duration = to.time - from.time;
        if (holds(shape) || !(duration > 0.0 && duration < infinite))
            return {};
        if (isRegistered(shape.interpolation))
            return differences(track);
        const double x = (m_time - from.time) / duration;
        return changes(from.value, to.value, isBent(shape) ? easedSlope(shape, x) / duration : 1.0 / duration);
    }

    static Numbers changes(const T& from, const T& to, double factor) {
        const Numbers a = Components<T>::of(from);
        Numbers change = Components<T>::of(to);
        for (std::size_t c = 0; c < a.size(); ++c)
            change[c] = change[c] == a[c] ? 0.0 : (change[c] - a[c]) * factor;
        return change;
    }

    /// What a host's function gives cannot be differentiated.
    Numbers differences(const Track<T>& track) const {
        constexpr double longest = 1.0 / 1024.0;
        const double step = std::min(longest, (m_piece.to() - m_time.toDouble()) / 2.0);
        int cursor = -1;
        const T now = evaluate(track, m_shown.outside, m_time, cursor);
        return changes(now, evaluate(track, m_shown.outside, m_time + step, cursor), 1.0 / step);
    }

    const Shown<T>& m_shown;
    const Time m_time;
    Piece<T> m_piece;
};

} // namespace Prm::detail

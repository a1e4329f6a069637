#pragma once

#include "prm/track/HandleShaping.h"
#include "prm/track/KeyframeStretch.h"
#include "prm/track/Place.h"
#include "prm/track/ReshapedTrack.h"
#include "prm/track/SegmentEasing.h"
#include "prm/track/SelectedKeyframes.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Prm::detail {

/// Changes the selected keyframes of one view. Each step returns why it is refused, or null.
template <class T> class SelectionShaper {
public:
    SelectionShaper(ReshapedTrack<T>& track, const SelectedKeyframes& act) : m_track(track), m_act(act) {}

    const char* shape() {
        for (const auto step :
             {&SelectionShaper::changeValues, &SelectionShaper::changeShapes, &SelectionShaper::changeAllHandles,
              &SelectionShaper::changeTimes, &SelectionShaper::addParts}) {
            if (const char* const refusal = (this->*step)())
                return refusal;
        }
        return nullptr;
    }

private:
    using Keyframes = QVector<KeyframeData<T>>;

    static constexpr const char* isUnusable = "the numbers are not usable";

    Keyframes& keyframes() { return m_track.now.keyframes; }
    template <class Act> void forEachSelected(const Act& act) {
        for (const Time time : *m_act.selected) {
            const int position = positionAt(keyframes(), time);
            if (position >= 0)
                act(keyframes()[position]);
        }
    }
    static bool isIn(const SelectedKeyframes::Times& times, Time time) {
        return std::binary_search(times->begin(), times->end(), time);
    }

    const char* changeValues() {
        const KeyframeChange& change = m_act.change;
        if (change.valueScale == 1.0 && change.valueShift.empty())
            return nullptr;
        if constexpr (blends<T>) {
            bool isFinite = true;
            forEachSelected([&](KeyframeData<T>& keyframe) {
                auto numbers = Components<T>::of(keyframe.value);
                for (std::size_t i = 0; i < numbers.size(); ++i) {
                    const double former = numbers[i];
                    numbers[i] = changed(former, i < change.valueShift.size() ? change.valueShift[i] : 0.0);
                    isFinite = isFinite && (std::isfinite(numbers[i]) || !std::isfinite(former));
                }
                keyframe.value = Components<T>::value(numbers);
            });
            return isFinite ? nullptr : isNotFinite;
        } else {
            return "values of its type do not blend";
        }
    }
    double changed(double value, double shift) const {
        const KeyframeChange& change = m_act.change;
        const double scaled =
            change.valueScale == 1.0 ? value : change.valuePivot + change.valueScale * (value - change.valuePivot);
        return scaled + shift;
    }

    const char* changeShapes() {
        if (const auto& shape = m_act.change.shape)
            forEachSelected([&](KeyframeData<T>& keyframe) { keyframe.interpolationData = *shape; });
        return nullptr;
    }

    const char* changeAllHandles() {
        const char* refusal = nullptr;
        if (const auto& handles = m_act.change.handles) {
            for (const Time time : *m_act.selected)
                refusal = refusal ? refusal : changeHandles(m_track, time, *handles);
        }
        return refusal;
    }

    const char* changeTimes() {
        if (m_act.change.deletes)
            return deleteAll();
        return m_act.change.retiming ? retime(*m_act.change.retiming) : nullptr;
    }
    const char* deleteAll() {
        Keyframes& list = keyframes();
        if (list.isEmpty() || m_act.together->empty())
            return nullptr;
        const T last = list.constLast().value;
        KeyframeStretch<T> stretch{m_act.together->front(), m_act.together->back(), {}};
        stretch.fill(list);
        Keyframes& kept = stretch.keyframes;
        const auto isSelected = [&](const KeyframeData<T>& keyframe) { return isIn(m_act.together, keyframe.time); };
        kept.erase(std::remove_if(kept.begin(), kept.end(), isSelected), kept.end());
        stretch.putBack(list);
        if (list.isEmpty())
            m_track.now.staticValue = last;
        return nullptr;
    }
    const char* retime(const Retiming& retiming) {
        if (!retiming.isUsable())
            return isUnusable;
        // Project text has times in single precision.
        constexpr auto farthest = static_cast<double>(std::numeric_limits<float>::max());
        KeyframeStretch<T> stretch = KeyframeStretch<T>::none();
        for (const Time time : *m_act.together) {
            if (positionAt(keyframes(), time) < 0)
                continue;
            const Time target = retiming.moved(time);
            if (!target.isValid() || target.toDouble() < -farthest)
                return isOutOfRange;
            stretch.first = std::min({stretch.first, time, target});
            stretch.last = std::max({stretch.last, time, target});
        }
        if (stretch.isNone())
            return nullptr;
        stretch.fill(keyframes());
        stretch.keyframes = retimed(
            stretch.keyframes, [&](Time time) { return isIn(m_act.together, time) ? retiming.moved(time) : time; });
        stretch.putBack(keyframes());
        return nullptr;
    }

    /// The keyframes within the segments that start at the selected ones.
    const char* addParts() {
        const KeyframeChange& change = m_act.change;
        if (change.parts.empty() || m_act.selected->empty())
            return nullptr;
        if (m_track.holds || m_track.hasHooks)
            return m_track.holds ? hasNoCurves : hasHooks;
        std::vector<Time> starts = *m_act.selected;
        if (change.retiming)
            std::transform(starts.begin(), starts.end(), starts.begin(),
                           [&](Time time) { return change.retiming->moved(time); });
        const Keyframes list = keyframes();
        Keyframes eased;
        eased.reserve(list.size() + static_cast<int>(starts.size() * change.parts.size()));
        for (int i = 0; i < list.size(); ++i) {
            if (i + 1 < list.size() && std::binary_search(starts.begin(), starts.end(), list.at(i).time))
                appendEased(eased, list.at(i), list.at(i + 1), change.parts);
            else
                eased.append(list.at(i));
        }
        keyframes() = eased;
        return nullptr;
    }

    ReshapedTrack<T>& m_track;
    const SelectedKeyframes& m_act;
};

/// The times at which changing the selected keyframes of a list changes anything, and those of two more keyframes
/// before and after, on which their handles depend.
template <class T>
KeyframeStretch<T> stretchAround(const SelectedKeyframes& act, const QVector<KeyframeData<T>>& list) {
    const std::optional<Retiming>& retiming = act.change.retiming;
    KeyframeStretch<T> stretch = KeyframeStretch<T>::none();
    for (const Time time : *act.together) {
        if (positionAt(list, time) < 0)
            continue;
        const Time target = retiming && retiming->isUsable() ? retiming->moved(time) : time;
        stretch.first = std::min({stretch.first, time, target});
        stretch.last = std::max({stretch.last, time, target});
    }
    constexpr int more = 2;
    for (int i = 0; i < more && !stretch.isNone(); ++i)
        stretch = KeyframeStretch<T>::around(list, {View(), stretch.first, stretch.last});
    return stretch;
}

template <class T> const char* reshape(ReshapedTrack<T>& track, const SelectedKeyframes& act) {
    return SelectionShaper<T>(track, act).shape();
}

} // namespace Prm::detail

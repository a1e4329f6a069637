#pragma once

// Keyframes that are reshaped as a whole: computed, stored in one step for each view, announced.

#include "prm/Parameter.h"
#include "prm/parameter/differences.hpp"
#include "prm/track/Baking.h"
#include "prm/track/KeyInsertion.h"
#include "prm/track/ReshapedTrack.h"
#include "prm/track/Reversal.h"
#include "prm/track/SegmentEasing.h"
#include "prm/track/SelectionShaping.h"
#include "prm/track/Simplification.h"
#include "prm/track/Smoothing.h"
#include "prm/track/ValueMapping.h"
#include "prm/untyped/KeyframeReshaper.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <typeinfo>
#include <variant>
#include <vector>

namespace Prm {

template <class T> class Parameter<T>::Reshaper final : public detail::KeyframeReshaper {
public:
    static const detail::ReshaperFactory& ofType() {
        static const detail::ReshaperFactory factory{
            [](ParameterWithoutType& parameter) -> std::unique_ptr<detail::KeyframeReshaper> {
                return std::make_unique<Reshaper>(dynamic_cast<Parameter&>(parameter));
            }};
        return factory;
    }
    explicit Reshaper(Parameter& parameter) : KeyframeReshaper(parameter), m_own(parameter) {}

    std::vector<View> views() const override {
        std::vector<View> all;
        for (const View view : m_own.m_views.viewList()) {
            if (m_own.splittable() || view == View(View::defaultViewId()))
                all.push_back(view);
        }
        for (const OfView& one : m_ofViews) {
            if (one.isNew)
                all.push_back(one.view);
        }
        return all;
    }
    std::vector<Time> formerTimes(const View& view) const override { return timesOf(view, &OfView::first); }
    std::vector<Time> times(const View& view) const override { return timesOf(view, &OfView::now); }

    const char* reshape(const View& view, const detail::Reshaping& how) override {
        if (!m_own.isKeyframed())
            return "it has no keyframes";
        OfView* const one = ofView(view, how.givesData());
        if (!one)
            return nullptr;
        detail::ReshapedTrack<T> track;
        track.now = one->now;
        track.outside = m_own.outside();
        track.firstKind = m_own.defaultInterpolation();
        const bool isPlainClass = typeid(m_own) == typeid(Parameter);
        track.hasHooks = m_own.asksHooks() && !isPlainClass;
        track.holds = !blends<T> || (m_own.asksHooks() && isPlainClass);
        track.showsOthers =
            one->isNew && Differences::modeOf(m_own) != MVInterpolationParams::Off && m_own.numViews() > 0;
        track.shownAt = [&](const QVector<Time>& at) {
            QVector<T> values(at.size());
            m_own.sampleValues(at.constData(), at.size(), view, values.data());
            return values;
        };
        const char* const refusal = std::visit([&](const auto& act) { return detail::reshape(track, act); }, how.act);
        if (!refusal)
            one->now = std::move(track.now);
        return refusal;
    }
    void restart() override {
        for (OfView& one : m_ofViews) {
            one.isNew = !m_own.m_views.findRealViewData(one.view);
            one.present = m_own.m_views.resolve(one.view);
            one.now = one.first;
        }
    }
    detail::Places places() const override {
        detail::Places all;
        for (const OfView& one : m_ofViews) {
            if (one.changes())
                all.push_back(one.place());
        }
        return all;
    }

    void store() override {
        m_moved.clear();
        m_difference.emplace(m_own);
        m_isAssigned = false;
        const detail::LifeGuard guard(m_own);
        for (OfView& one : m_ofViews) {
            if (guard.alive() && one.changes())
                store(one);
        }
    }
    void announce() override {
        const detail::LifeGuard guard(m_own);
        const std::optional<typename Differences::Assigned> difference = std::move(m_difference);
        m_difference.reset();
        if (std::exchange(m_isAssigned, false))
            return ParameterChange::assigned(m_own, *difference);
        for (Moved& moved : std::exchange(m_moved, {})) {
            if (guard.alive())
                ParameterChange::keyframeMoved(m_own, moved.indices, moved.view);
        }
    }

private:
    using Track = detail::Track<T>;

    struct OfView {
        bool changes() const { return isNew || !isSame(present, now); }
        static bool isSame(const Track& a, const Track& b) {
            return detail::sameKeyframes(a.keyframes, b.keyframes) && ValueType<T>::equal(a.staticValue, b.staticValue);
        }
        /// Whether only times have changed.
        bool moves() const {
            return !isNew && ValueType<T>::equal(present.staticValue, now.staticValue) &&
                   std::equal(present.keyframes.begin(), present.keyframes.end(), now.keyframes.begin(),
                              now.keyframes.end(), [](const KeyframeData<T>& a, const KeyframeData<T>& b) {
                                  return ValueType<T>::equal(a.value, b.value) &&
                                         a.interpolationData == b.interpolationData;
                              });
        }
        QList<unsigned int> movedIndices() const {
            QList<unsigned int> moved;
            for (int i = 0; i < now.keyframes.size(); ++i) {
                if (present.keyframes.at(i).time != now.keyframes.at(i).time)
                    moved.append(static_cast<unsigned int>(i));
            }
            return moved;
        }
        /// From the first to the last keyframe that differs.
        detail::Place place() const {
            const KeyframeVector& a = present.keyframes;
            const KeyframeVector& b = now.keyframes;
            const auto start = std::mismatch(a.begin(), a.end(), b.begin(), b.end(), detail::sameKeyframe<T>);
            if (isNew)
                return detail::Place::whole(view);
            if (start.first == a.end() && start.second == b.end())
                return detail::Place::staticValue(view);
            const auto end = std::mismatch(std::make_reverse_iterator(a.end()), std::make_reverse_iterator(start.first),
                                           std::make_reverse_iterator(b.end()),
                                           std::make_reverse_iterator(start.second), detail::sameKeyframe<T>);
            detail::Place place = detail::Place::staticValue(view);
            const auto add = [&](auto from, auto to) {
                if (from == to)
                    return;
                place.first = place.hasTimes() ? std::min(place.first, from->time) : from->time;
                place.last = place.last.isValid() ? std::max(place.last, (to - 1)->time) : (to - 1)->time;
            };
            add(start.first, end.first.base());
            add(start.second, end.second.base());
            return place;
        }

        View view;
        /// Without data, so that storing makes some.
        bool isNew = false;
        Track first;
        Track present;
        Track now;
    };
    struct Moved {
        View view;
        QList<unsigned int> indices;
    };

    View writtenView(const View& view) const {
        if (!m_own.splittable())
            return View::defaultViewId();
        return view.isValid() || m_own.m_views.viewList().empty() ? view : m_own.m_views.viewList().front();
    }

    /// Null where the view has no data and is given none.
    OfView* ofView(const View& asked, bool givesData) {
        const View view = writtenView(asked);
        const auto found =
            std::find_if(m_ofViews.begin(), m_ofViews.end(), [&](auto& one) { return one.view == view; });
        if (found != m_ofViews.end())
            return &*found;
        const bool hasData = m_own.m_views.findRealViewData(view) != nullptr;
        if (!hasData && !givesData)
            return nullptr;
        const Track& shown = m_own.m_views.resolve(view);
        m_ofViews.push_back({view, !hasData, shown, shown, shown});
        return &m_ofViews.back();
    }

    std::vector<Time> timesOf(const View& asked, Track OfView::*track) const {
        const View view = writtenView(asked);
        const auto found =
            std::find_if(m_ofViews.begin(), m_ofViews.end(), [&](auto& one) { return one.view == view; });
        const PVData* const data = m_own.m_views.findRealViewData(view);
        std::vector<Time> times;
        const auto add = [&](const Track& of) {
            for (const KeyframeData<T>& keyframe : of.keyframes)
                times.push_back(keyframe.time);
        };
        if (found != m_ofViews.end())
            add((*found).*track);
        else if (data)
            add(*data);
        return times;
    }

    void store(OfView& one) {
        const bool moves = one.moves();
        const detail::LifeGuard guard(m_own);
        PVData* const data =
            one.isNew ? m_own.targetData(one.view, &one.now) : m_own.m_views.findRealViewData(one.view);
        if (!guard.alive() || !data)
            return;
        const bool isPresent = data->keyframes.constData() == one.present.keyframes.constData();
        if (!one.isNew && (!isPresent || data->keyframes.size() != one.present.keyframes.size()))
            return;
        {
            KeyframeVector keyframes = one.now.keyframes;
            LockedKeyframes lock(data);
            data->staticValue = one.now.staticValue;
            lock.swapKeyframes(keyframes);
            ++m_own.m_revision;
            ++m_own.m_changes;
        }
        m_isAssigned = m_isAssigned || !moves;
        if (moves)
            m_moved.push_back({one.view, one.movedIndices()});
        one.present = one.now;
        one.isNew = false;
    }

    Parameter& m_own;
    std::vector<OfView> m_ofViews;
    // What is to be announced.
    std::vector<Moved> m_moved;
    std::optional<typename Differences::Assigned> m_difference;
    bool m_isAssigned = false;
};

} // namespace Prm

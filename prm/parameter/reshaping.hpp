#pragma once

// Keyframes that are reshaped as a whole: computed, stored in one step for each view, announced.

#include "prm/Parameter.h"
#include "prm/parameter/differences.hpp"
#include "prm/parameter/snapshot.hpp"
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
    explicit Reshaper(Parameter& parameter)
        : KeyframeReshaper(parameter), m_own(parameter), m_stamp(Stamp::of(parameter)) {}

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
    std::vector<Time> formerTimes(const View& view) const override {
        return timesOf(view, [](const OfView& one) { return one.first.keyframes; });
    }
    std::vector<Time> times(const View& view) const override {
        return timesOf(view, [](const OfView& one) { return one.listWith(one.now); });
    }

    const char* reshape(const View& view, const detail::Reshaping& how) override {
        if (!m_own.isKeyframed())
            return "it has no keyframes";
        OfView* const one = ofView(view, how.givesData());
        if (!one)
            return nullptr;
        const auto* const selected = one->changed.isNone() ? std::get_if<detail::SelectedKeyframes>(&how.act) : nullptr;
        const Stretch changed = selected ? detail::stretchAround(*selected, one->first.keyframes) : Stretch::all();
        Stretch now = one->widened(changed);
        detail::ReshapedTrack<T> track;
        track.now = {one->nowValue, now.keyframes};
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
        if (!refusal) {
            now.keyframes = std::move(track.now.keyframes);
            one->setNow(std::move(now), track.now.staticValue, m_own.m_views.resolve(one->view));
            one->changed = changed;
        }
        return refusal;
    }
    void restart() override {
        const bool wasUntouched = isUntouched();
        m_stamp = Stamp::of(m_own);
        for (OfView& one : m_ofViews) {
            one.isNew = !m_own.m_views.findRealViewData(one.view);
            if (!wasUntouched)
                one.differs = Stretch::all();
            Stretch beginning = one.differs;
            beginning.fill(one.first.keyframes);
            one.setNow(std::move(beginning), one.first.staticValue, m_own.m_views.resolve(one.view));
            one.changed = Stretch::none();
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
        m_isAssigned = false;
        noteFormer();
        const detail::LifeGuard guard(m_own);
        for (OfView& one : m_ofViews) {
            if (guard.alive() && one.changes())
                store(one);
        }
    }
    void announce() override {
        const detail::LifeGuard guard(m_own);
        const auto assigned = std::exchange(m_assigned, std::nullopt);
        const auto around = std::exchange(m_around, std::nullopt);
        if (std::exchange(m_isAssigned, false)) {
            expectCount();
            return around ? ParameterChange::assigned(m_own, *around) : ParameterChange::assigned(m_own, *assigned);
        }
        for (Moved& moved : std::exchange(m_moved, {})) {
            if (!guard.alive())
                return;
            expectCount();
            ParameterChange::keyframeMoved(m_own, moved.indices, moved.view);
        }
    }

private:
    using Track = detail::Track<T>;
    using Stretch = detail::KeyframeStretch<T>;

    /// What counts the changes of a parameter.
    struct Stamp {
        static Stamp of(const Parameter& parameter) { return {parameter.m_revision, parameter.m_changes}; }
        bool operator==(const Stamp& other) const { return revision == other.revision && changes == other.changes; }

        quint64 revision;
        quint32 changes;
    };

    /// What a view had, has and gets. Outside of one stretch of times it has, and keeps, the keyframes of the
    /// beginning: changing a few keyframes so costs the same in lists of any length.
    struct OfView {
        OfView(const View& of, bool isNewView, const Track& shown)
            : view(of), isNew(isNewView), first(shown), presentValue(shown.staticValue), nowValue(shown.staticValue) {}

        KeyframeVector listWith(const Stretch& stretch) const {
            if (stretch.isWhole())
                return stretch.keyframes;
            KeyframeVector list = first.keyframes;
            if (!stretch.isNone())
                stretch.putBack(list);
            return list;
        }
        /// What the view gets at present, in a stretch that holds another one as well.
        Stretch widened(const Stretch& other) const {
            if (now.isWhole())
                return now;
            Stretch wider{std::min(now.first, other.first), std::max(now.last, other.last), {}};
            wider.fill(first.keyframes);
            if (!now.isNone())
                now.putBack(wider.keyframes);
            return wider;
        }
        void setNow(Stretch stretch, const T& value, const Track& shown) {
            now = std::move(stretch);
            nowValue = value;
            present = now;
            present.fill(shown.keyframes);
            presentValue = shown.staticValue;
        }
        bool changes() const {
            return isNew || !ValueType<T>::equal(presentValue, nowValue) ||
                   !detail::sameKeyframes(present.keyframes, now.keyframes);
        }
        /// Whether only times have changed.
        bool moves() const {
            return !isNew && ValueType<T>::equal(presentValue, nowValue) &&
                   std::equal(present.keyframes.begin(), present.keyframes.end(), now.keyframes.begin(),
                              now.keyframes.end(), [](const KeyframeData<T>& a, const KeyframeData<T>& b) {
                                  return ValueType<T>::equal(a.value, b.value) &&
                                         a.interpolationData == b.interpolationData;
                              });
        }
        QList<unsigned int> movedIndices() const {
            QList<unsigned int> moved;
            const int begin = detail::lowerBound(first.keyframes, now.first);
            for (int i = 0; i < now.keyframes.size(); ++i) {
                if (present.keyframes.at(i).time != now.keyframes.at(i).time)
                    moved.append(static_cast<unsigned int>(begin + i));
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
        bool isNew;
        Track first;
        /// Where the view differs from the beginning, and where it will: without keyframes.
        Stretch differs = Stretch::none();
        Stretch changed = Stretch::none();
        /// What a stretch that holds both has and gets, and the static values.
        Stretch present = Stretch::none();
        Stretch now = Stretch::none();
        T presentValue;
        T nowValue;
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
        m_ofViews.emplace_back(view, !hasData, m_own.m_views.resolve(view));
        return &m_ofViews.back();
    }

    template <class ListOf> std::vector<Time> timesOf(const View& asked, const ListOf& listOf) const {
        const View view = writtenView(asked);
        const auto found =
            std::find_if(m_ofViews.begin(), m_ofViews.end(), [&](auto& one) { return one.view == view; });
        const PVData* const data = m_own.m_views.findRealViewData(view);
        std::vector<Time> times;
        const KeyframeVector list = found != m_ofViews.end() ? listOf(*found)
                                    : data                   ? data->keyframes
                                                             : KeyframeVector();
        for (const KeyframeData<T>& keyframe : list)
            times.push_back(keyframe.time);
        return times;
    }

    /// What the parameter was before it is stored. Of stretches of long lists no more than these, because a list that
    /// is shared has to be copied.
    void noteFormer() {
        const auto isLocal = [](const OfView& one) { return !one.isNew && !one.now.isWhole(); };
        m_around.reset();
        m_assigned.reset();
        if (std::all_of(m_ofViews.begin(), m_ofViews.end(), isLocal)) {
            const StateAround former(m_own, places());
            if (former.isExact())
                m_around.emplace(m_own, former);
        }
        if (!m_around)
            m_assigned.emplace(m_own);
    }

    void store(OfView& one) {
        const bool moves = one.moves();
        const detail::LifeGuard guard(m_own);
        const Track contents{one.nowValue, one.isNew ? one.listWith(one.now) : KeyframeVector()};
        PVData* const data =
            one.isNew ? m_own.targetData(one.view, &contents) : m_own.m_views.findRealViewData(one.view);
        if (!guard.alive() || !data || !(one.isNew || isPresent(one, *data)))
            return;
        const bool wasUntouched = isUntouched();
        KeyframeVector whole = one.isNew ? contents.keyframes : one.now.keyframes;
        {
            LockedKeyframes lock(data);
            if (one.isNew || one.now.isWhole()) {
                lock.swapKeyframes(whole);
            } else {
                detail::makeRoom(lock.keyframes(), one.now.keyframes.size() - one.present.keyframes.size());
                one.now.putBack(lock.keyframes());
            }
            data->staticValue = one.nowValue;
            ++m_own.m_revision;
            ++m_own.m_changes;
        }
        if (wasUntouched)
            m_stamp = Stamp::of(m_own);
        m_isAssigned = m_isAssigned || !moves;
        if (moves)
            m_moved.push_back({one.view, one.movedIndices()});
        one.differs = one.changed;
        one.present = one.now;
        one.presentValue = one.nowValue;
        one.isNew = false;
    }
    /// Whether nothing else has changed the parameter since this object read or stored it.
    bool isUntouched() const { return m_stamp == Stamp::of(m_own); }
    /// A change that is emitted counts as well.
    void expectCount() { m_stamp.changes += isUntouched() ? 1 : 0; }
    /// Whether the list is what was read.
    bool isPresent(const OfView& one, const PVData& data) const {
        return isUntouched() || detail::sameKeyframes(one.listWith(one.present), data.keyframes);
    }

    Parameter& m_own;
    std::vector<OfView> m_ofViews;
    // What is to be announced.
    std::vector<Moved> m_moved;
    std::optional<typename Differences::Assigned> m_assigned;
    std::optional<typename StateAround::PutBack> m_around;
    bool m_isAssigned = false;
    /// After the last change that this object has made or read.
    Stamp m_stamp;
};

} // namespace Prm

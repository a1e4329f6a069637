#pragma once

// Where values differ after a change, and between two states.

#include "prm/Parameter.h"
#include "prm/track/ViewTracks.h"
#include "prm/untyped/Differences.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

namespace Prm {

template <class T> class Parameter<T>::Differences final : public detail::Differences {
public:
    static const Differences& ofType() {
        static const Differences one;
        return one;
    }

    const std::type_info& valueType() const override { return typeid(T); }
    bool asksHooks(const ParameterWithoutType& parameter) const override { return typed(parameter).asksHooks(); }
    detail::Reach reachOf(const ParameterWithoutType& parameter, const ParameterChange& change) const override {
        const Parameter& own = typed(parameter);
        return own.asksHooks() ? detail::everywhere() : AfterChange(own, change).reach();
    }
    std::unique_ptr<detail::TracksSnapshot> snapshot(const ParameterWithoutType& parameter) const override {
        return std::make_unique<Snapshot>(typed(parameter));
    }

    class Assigned;
    /// Static values are never made from several views, and values that do not blend from one.
    static MVInterpolationParams::Mode modeOf(const Parameter& parameter) {
        const auto mode = parameter.viewInterpolation().mode;
        if (mode == MVInterpolationParams::Off || !parameter.Parameter::isKeyframed())
            return MVInterpolationParams::Off;
        return blends<T> ? mode : MVInterpolationParams::Nearest;
    }
    /// The views that show the data of one. The data of the only view are read by all views, and so are the default
    /// values.
    static detail::ViewRanges readersOf(const Parameter& parameter, const detail::ViewRules& rules, View view) {
        const bool isOnly = rules.list.size() == 1 && rules.list.front() == view;
        const bool isAll = isOnly || !parameter.m_views.findRealViewData(view);
        return isAll ? detail::ViewRanges::all() : rules.readersOf(view);
    }

private:
    static const Parameter& typed(const ParameterWithoutType& parameter) {
        return *static_cast<const Parameter*>(parameter.asTyped(typeid(T)));
    }

    class AfterChange;
    class Snapshot;
};

/// Reads the parameter as it is after the change. What it was before is in the record as far as that names it.
template <class T> class Parameter<T>::Differences::AfterChange {
public:
    AfterChange(const Parameter& parameter, const ParameterChange& change)
        : m_parameter(parameter), m_change(change), m_rules{parameter.Parameter::splittable(), modeOf(parameter),
                                                            parameter.m_views.viewList()} {}

    detail::Reach reach() const {
        switch (m_change.type) {
        case ParameterChange::KEYFRAME_ADDED:
        case ParameterChange::KEYFRAME_REMOVED:
        case ParameterChange::KEYFRAME_CHANGED_VALUE:
        case ParameterChange::KEYFRAME_CHANGED_INTERPOLATION:
        case ParameterChange::KEYFRAME_MOVED:
            return isHidden() ? detail::Reach() : inReaders(writtenView(), [this] { return timesOfKeyframes(); });
        case ParameterChange::KEYFRAME_CHANGED_TIME_VALUE:
        case ParameterChange::VALUE_CHANGED:
        case ParameterChange::VIEW_RESET:
            return isHidden() ? detail::Reach() : allTimesIn(writtenView());
        case ParameterChange::VIEW_ADDED:
            return isHidden() ? detail::Reach() : allTimesIn(m_change.context.view);
        case ParameterChange::VIEW_REMOVED:
            if (isHidden())
                return {};
            return detail::Reach(std::in_place, m_rules.readersIfAdded(m_change.context.view), TimeSpan::all());
        case ParameterChange::PARAMETER_CHANGED_EXTRAPOLATION_BEFORE:
        case ParameterChange::PARAMETER_CHANGED_EXTRAPOLATION_AFTER:
            return isHidden() ? detail::Reach() : outsides();
        default:
            return detail::everywhere();
        }
    }

private:
    /// Whether a master's values are shown instead. Not for PARAMETER_ASSIGNED, by which a tie is cut.
    bool isHidden() const {
        const ParameterWithoutType* const master = m_parameter.masterParameter();
        return master && master->asTyped(typeid(T));
    }
    /// As edits address it.
    View writtenView() const {
        if (!m_rules.splittable)
            return View::defaultViewId();
        const View view = m_change.context.view;
        return view.isValid() || m_rules.list.empty() ? view : m_rules.list.front();
    }
    template <class Times> detail::Reach inReaders(View view, const Times& times) const {
        detail::ViewRanges readers = readersOf(m_parameter, m_rules, view);
        TimeSpans when = readers.isEmpty() ? TimeSpans() : times();
        return when.isEmpty() ? detail::Reach() : detail::Reach(std::in_place, std::move(readers), std::move(when));
    }
    detail::Reach allTimesIn(View view) const {
        return inReaders(view, [] { return TimeSpans(TimeSpan::all()); });
    }

    TimeSpans timesOfKeyframes() const {
        const PVData* const data = m_parameter.m_views.findRealViewData(writtenView());
        if (!data || !m_parameter.Parameter::isKeyframed())
            return TimeSpan::all();
        const KeyframeVector& keyframes = data->keyframes;
        if (m_change.type == ParameterChange::KEYFRAME_REMOVED)
            return detail::timesOfRemoval(keyframes, m_parameter.outside(), m_change.context.time);
        if (m_change.type == ParameterChange::KEYFRAME_MOVED)
            return timesOfMove(keyframes);
        // The static value is not shown beside keyframes.
        if (m_change.affectedIndex == KeyframeIndex::INVALID_INDEX && !keyframes.isEmpty())
            return {};
        if (m_change.affectedIndex >= static_cast<unsigned int>(keyframes.size()))
            return TimeSpan::all();
        const auto position = static_cast<int>(m_change.affectedIndex);
        if (m_change.type == ParameterChange::KEYFRAME_CHANGED_INTERPOLATION)
            return detail::timesOfSegment(keyframes, m_parameter.outside(), position);
        return detail::timesOfKeyframe(keyframes, m_parameter.outside(), position,
                                       m_change.type == ParameterChange::KEYFRAME_ADDED);
    }
    /// They kept their order, so those in a row were between the same neighbours.
    TimeSpans timesOfMove(const KeyframeVector& keyframes) const {
        TimeSpans times;
        if (!m_change.affectedIndices)
            return TimeSpan::all();
        const QList<unsigned int>& moved = *m_change.affectedIndices;
        for (int i = 0; i < moved.size();) {
            const unsigned int first = moved.at(i);
            unsigned int end = first;
            for (; i < moved.size() && moved.at(i) == end; ++i)
                ++end;
            if (end > static_cast<unsigned int>(keyframes.size()))
                return TimeSpan::all();
            times |= detail::changedTimes(keyframes, m_parameter.outside(),
                                          {static_cast<int>(first) - 1, static_cast<int>(end)}, -detail::infinitelyFar);
        }
        return times;
    }
    detail::Reach outsides() const {
        detail::Reach reach;
        for (const View view : m_rules.list) {
            const KeyframeVector& keyframes = m_parameter.m_views.findRealViewData(view)->keyframes;
            if (!blends<T> || keyframes.size() < 2)
                continue;
            const bool isBefore = m_change.type == ParameterChange::PARAMETER_CHANGED_EXTRAPOLATION_BEFORE;
            TimeSpans times = isBefore ? detail::before(keyframes.first().time) : detail::after(keyframes.last().time);
            for (const detail::ViewTimes& one : inReaders(view, [&] { return times; }))
                reach.append(one);
        }
        return reach;
    }

    const Parameter& m_parameter;
    const ParameterChange& m_change;
    detail::ViewRules m_rules;
};

template <class T> class Parameter<T>::Differences::Snapshot final : public detail::TracksSnapshot {
public:
    explicit Snapshot(const Parameter& parameter) : m_keyframed(parameter.Parameter::isKeyframed()) {
        m_state.splittable = parameter.Parameter::splittable();
        m_state.mode = modeOf(parameter);
        m_state.outside = parameter.outside();
        m_state.views = parameter.m_views.viewList();
        m_state.tracks.reserve(m_state.views.size());
        for (const View view : m_state.views)
            m_state.tracks.push_back(shown(*parameter.m_views.findRealViewData(view), m_keyframed));
        m_state.defaults.staticValue = parameter.m_views.templateData().staticValue;
    }

    bool isOf(const ParameterWithoutType& parameter) const override {
        const Parameter& now = typed(parameter);
        const detail::Outside outside = now.outside();
        if (m_keyframed != now.Parameter::isKeyframed() || m_state.splittable != now.Parameter::splittable() ||
            m_state.mode != modeOf(now) || m_state.outside.before != outside.before ||
            m_state.outside.after != outside.after || m_state.views != now.m_views.viewList())
            return false;
        if (m_state.views.empty())
            return ValueType<T>::equal(m_state.defaults.staticValue, now.m_views.templateData().staticValue);
        for (std::size_t i = 0; i < m_state.views.size(); ++i) {
            if (!isSame(m_state.tracks[i], *now.m_views.findRealViewData(m_state.views[i])))
                return false;
        }
        return true;
    }
    detail::Reach differenceTo(const detail::TracksSnapshot& other) const override {
        const auto* const now = dynamic_cast<const Snapshot*>(&other);
        return now ? detail::differenceOf(m_state, now->m_state) : detail::everywhere();
    }
    bool hasCustomKinds() const override {
        const auto isCustomSegment = [](const KeyframeData<T>& keyframe) {
            return detail::isCustom(keyframe.interpolationData);
        };
        const auto hasCustom = [&](const detail::Track<T>& track) {
            return std::any_of(track.keyframes.begin(), track.keyframes.end(), isCustomSegment);
        };
        return m_state.outside.before >= Extrapolation::Custom0 || m_state.outside.after >= Extrapolation::Custom0 ||
               std::any_of(m_state.tracks.begin(), m_state.tracks.end(), hasCustom);
    }
    void takeDefaultFrom(const detail::TracksSnapshot& other) override {
        if (const auto* const source = dynamic_cast<const Snapshot*>(&other))
            m_state.defaults = source->m_state.defaults;
    }

private:
    static detail::Track<T> shown(const detail::Track<T>& data, bool keyframed) {
        return keyframed ? data : detail::Track<T>{data.staticValue, {}};
    }
    bool isSame(const detail::Track<T>& former, const detail::Track<T>& now) const {
        const bool sameKeyframes = !m_keyframed || (former.keyframes.constData() == now.keyframes.constData() &&
                                                    former.keyframes.size() == now.keyframes.size());
        return sameKeyframes && ValueType<T>::equal(former.staticValue, now.staticValue);
    }

    bool m_keyframed;
    detail::ViewTracks<T> m_state;
};

/// Of an assignment of all data.
template <class T> class Parameter<T>::Differences::Assigned final : public detail::AssignedDifference {
public:
    explicit Assigned(const Parameter& parameter) : m_parameter(parameter) {
        if (parameter.emits(ParameterChange::PARAMETER_ASSIGNED))
            m_former.emplace(parameter);
    }

    detail::Reach reach() const override {
        return m_former ? m_former->differenceTo(Snapshot(m_parameter)) : detail::everywhere();
    }

private:
    const Parameter& m_parameter;
    std::optional<Snapshot> m_former;
};

} // namespace Prm

#pragma once

// The parameter's state, taken and put back.

#include "prm/Parameter.h"
#include "prm/parameter/differences.hpp"
#include "prm/track/KeyframeStretch.h"
#include "prm/untyped/PartialState.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <optional>
#include <tuple>
#include <typeinfo>
#include <utility>
#include <vector>

namespace Prm {

/// A complete copy; the keyframes are shared until one side changes.
template <class T> class Parameter<T>::ParameterMemento : public detail::WholeSnapshot {
public:
    explicit ParameterMemento(const Parameter& parameter) : state(parameter) {}

    const ParameterWithoutType& parameter() const override { return state; }

    const Parameter state;
};

/// What a state holds beside the views.
template <class T> struct Parameter<T>::Settings {
    explicit Settings(const Parameter& parameter)
        : keyframed(parameter.m_keyframed), splittable(parameter.m_splittable),
          viewInterpolation(parameter.m_viewInterpolation), before(parameter.m_extrapolationBefore),
          after(parameter.m_extrapolationAfter), defaultInterpolation(parameter.m_defaultInterpolation),
          own(parameter.ownAttributes()) {}

    void putBack(Parameter& parameter) const {
        parameter.m_keyframed.store(keyframed);
        parameter.m_splittable.store(splittable);
        parameter.m_viewInterpolation.store(viewInterpolation);
        parameter.m_extrapolationBefore.store(before);
        parameter.m_extrapolationAfter.store(after);
        parameter.m_defaultInterpolation.store(defaultInterpolation);
        parameter.takeOwnAttributes(own);
    }

    auto tied() const {
        return std::tie(keyframed, splittable, viewInterpolation, before, after, defaultInterpolation, own);
    }
    friend bool operator==(const Settings& a, const Settings& b) { return a.tied() == b.tied(); }

    bool keyframed;
    bool splittable;
    quint8 viewInterpolation;
    Extrapolation before;
    Extrapolation after;
    Interpolation defaultInterpolation;
    OwnAttributes own;
};

/// Of a small parameter the whole. Of another one the settings, and of some views whether they have data, the static
/// value, and stretches of their keyframes; these share nothing with the list, which the following edit so need not
/// copy, unless they are all of it.
template <class T> class Parameter<T>::StateAround : public detail::PartialState {
public:
    using Stretch = detail::KeyframeStretch<T>;
    class PutBack;

    StateAround(const Parameter& parameter, const detail::Places& places) : m_settings(parameter) {
        if (places.empty() || isSmall(parameter)) {
            m_whole = boost::make_shared<ParameterMemento>(parameter);
            return;
        }
        for (const detail::Place& place : writtenPlaces(parameter, places)) {
            if (m_views.empty() || m_views.back().view != place.view)
                m_views.emplace_back(parameter, place.view);
            m_views.back().add(parameter, place);
        }
        for (OfView& one : m_views)
            one.fill(parameter);
    }
    /// The present state of the same stretches. What a former state would take away is taken whole.
    StateAround(const Parameter& parameter, const StateAround& former) : m_settings(parameter) {
        if (former.m_whole)
            m_whole = boost::make_shared<ParameterMemento>(parameter);
        for (const OfView& one : former.m_views) {
            m_views.emplace_back(parameter, one.view);
            m_views.back().stretches = one.stretches;
            if (!one.hasData || !m_views.back().hasData)
                m_views.back().stretches = {Stretch::all()};
            m_views.back().fill(parameter);
        }
    }

    bool equals(const BasicParameter& parameter) const override {
        const auto* const typed = dynamic_cast<const Parameter*>(&parameter);
        return typed && Settings(*typed) == m_settings && (!m_whole || sameViews(m_whole->state, *typed)) &&
               std::all_of(m_views.begin(), m_views.end(), [&](const OfView& one) { return one.equals(*typed); });
    }
    boost::shared_ptr<Bsc::MementoBase> present(const BasicParameter& parameter) const override {
        return boost::make_shared<StateAround>(dynamic_cast<const Parameter&>(parameter), *this);
    }
    bool isWhole() const { return m_whole != nullptr; }
    /// Whether the difference to another state is known: not of a whole, nor with a custom extrapolation, which may
    /// depend on all keyframes.
    bool isExact() const { return !m_whole && std::max(m_settings.before, m_settings.after) < Extrapolation::Custom0; }
    /// Where the parameter's values are others now.
    detail::Reach differenceTo(const Parameter& now) const {
        const detail::Outside outside = now.outside();
        if (!isExact() || !(Settings(now) == m_settings))
            return detail::everywhere();
        const detail::ViewRules rules{now.Parameter::splittable(), Differences::modeOf(now), now.m_views.viewList()};
        detail::Reach reach;
        for (const OfView& one : m_views) {
            const PVData* const data = now.m_views.findRealViewData(one.view);
            const bool isStatic = data && (!now.Parameter::isKeyframed() || data->keyframes.isEmpty());
            if (!data || !one.hasData || (isStatic && !ValueType<T>::equal(data->staticValue, one.staticValue)))
                return detail::everywhere();
            TimeSpans times;
            for (const Stretch& stretch : one.stretches)
                times |= stretch.timesOfDifference(data->keyframes, outside);
            if (!times.isEmpty())
                reach.append({Differences::readersOf(now, rules, one.view), std::move(times)});
        }
        return reach;
    }
    void putBack(Parameter& parameter) const {
        if (m_whole)
            putBackWhole(parameter);
        for (const OfView& one : m_views)
            one.putBack(parameter);
        m_settings.putBack(parameter);
        ++parameter.m_revision;
    }

private:
    /// Where the views are the same, in place, which needs no memory.
    void putBackWhole(Parameter& parameter) const {
        const Parameter& former = m_whole->state;
        const std::vector<View>& views = former.m_views.viewList();
        if (views != parameter.m_views.viewList())
            return parameter.takeKeyframeData(former, true);
        for (const View view : views) {
            const PVData& was = dataOf(former, view);
            PVData* const data = parameter.m_views.findRealViewData(view);
            LockedKeyframes lock(data);
            lock.setKeyframes(was.keyframes);
            data->staticValue = was.staticValue;
        }
    }

    struct OfView {
        OfView(const Parameter& parameter, const View& of) : view(of) {
            const PVData* const data = parameter.m_views.findRealViewData(view);
            hasData = data != nullptr;
            if (data)
                staticValue = data->staticValue;
        }
        /// Places come in ascending order.
        void add(const Parameter& parameter, const detail::Place& place) {
            if (!hasData || !place.hasTimes())
                return;
            const Stretch added = Stretch::around(parameter.m_views.findRealViewData(view)->keyframes, place);
            if (stretches.empty() || stretches.back().last < added.first)
                stretches.push_back(added);
            else
                stretches.back().last = std::max(stretches.back().last, added.last);
        }
        void fill(const Parameter& parameter) {
            for (Stretch& stretch : stretches) {
                if (hasData)
                    stretch.fill(parameter.m_views.findRealViewData(view)->keyframes);
            }
        }
        bool equals(const Parameter& parameter) const {
            const PVData* const data = parameter.m_views.findRealViewData(view);
            if (!data || !hasData)
                return !data && !hasData;
            return ValueType<T>::equal(data->staticValue, staticValue) &&
                   std::all_of(stretches.begin(), stretches.end(),
                               [&](const Stretch& stretch) { return stretch.equals(data->keyframes); });
        }
        void putBack(Parameter& parameter) const {
            const bool isThere = parameter.m_views.findRealViewData(view) != nullptr;
            const bool isWhole = stretches.size() == 1 && stretches.front().isWhole();
            if (hasData && !isThere && isWhole) {
                const detail::Track<T> contents{staticValue, stretches.front().keyframes};
                parameter.ownData(view, &contents);
                return;
            }
            if (!hasData && isThere) {
                parameter.m_views.remove(view);
                parameter.m_isSplit.store(parameter.m_views.viewList().size() > 1);
            }
            if (PVData* const data = hasData ? parameter.m_views.findRealViewData(view) : nullptr)
                putBack(*data);
        }
        void putBack(PVData& data) const {
            LockedKeyframes lock(&data);
            int added = 0;
            for (const Stretch& stretch : stretches)
                added += stretch.isWhole() ? 0 : stretch.keyframes.size();
            if (added > 0)
                detail::makeRoom(lock.keyframes(), added);
            for (const Stretch& stretch : stretches) {
                if (stretch.isWhole())
                    lock.setKeyframes(stretch.keyframes);
                else
                    stretch.putBack(lock.keyframes());
            }
            data.staticValue = staticValue;
        }

        View view;
        bool hasData = false;
        T staticValue{};
        std::vector<Stretch> stretches;
    };

    /// The places as edits address them: a parameter that is not splittable has one for all views, and the invalid view
    /// means the source data. In ascending order.
    static detail::Places writtenPlaces(const Parameter& parameter, const detail::Places& places) {
        const std::vector<View>& views = parameter.m_views.viewList();
        const View source = views.empty() ? View(View::defaultViewId()) : views.front();
        detail::Places written;
        written.reserve(places.size());
        for (detail::Place place : places) {
            const View addressed = place.view;
            place.view = parameter.splittable() ? addressed : View(View::defaultViewId());
            if (!place.view.isValid())
                place.view = source;
            written.push_back(place);
            // Data that an unsplittable parameter has in other views are moved in time as well.
            if (addressed != place.view && parameter.m_views.findRealViewData(addressed)) {
                place.view = addressed;
                written.push_back(place);
            }
        }
        std::sort(written.begin(), written.end(), [](const detail::Place& a, const detail::Place& b) {
            return a.view != b.view ? a.view < b.view : a.first < b.first;
        });
        return written;
    }

    static bool isSmall(const Parameter& parameter) {
        constexpr std::size_t most = 64;
        std::size_t count = parameter.m_views.viewList().size() - 1;
        for (std::size_t i = 0; count <= most && i < parameter.m_views.viewList().size(); ++i)
            count += static_cast<std::size_t>(dataOf(parameter, parameter.m_views.viewList()[i]).keyframes.size());
        return parameter.m_views.viewList().empty() || count <= most;
    }
    static const PVData& dataOf(const Parameter& parameter, View view) {
        return *parameter.m_views.findRealViewData(view);
    }
    static bool sameViews(const Parameter& a, const Parameter& b) {
        const std::vector<View>& views = a.m_views.viewList();
        return views == b.m_views.viewList() && std::all_of(views.begin(), views.end(), [&](View view) {
                   const PVData& one = dataOf(a, view);
                   const PVData& other = dataOf(b, view);
                   const Stretch all{detail::Place::earliest(), Time(Time::LAST), one.keyframes};
                   return ValueType<T>::equal(one.staticValue, other.staticValue) && all.equals(other.keyframes);
               });
    }

    Settings m_settings;
    boost::shared_ptr<const ParameterMemento> m_whole;
    std::vector<OfView> m_views;
};

/// Of stretches that are put back. Takes no share in the list, which then need not be copied.
template <class T> class Parameter<T>::StateAround::PutBack final : public detail::AssignedDifference {
public:
    PutBack(const Parameter& parameter, const StateAround& state) : m_parameter(parameter) {
        if (parameter.emits(ParameterChange::PARAMETER_ASSIGNED))
            m_former.emplace(parameter, state);
    }

    detail::Reach reach() const override {
        return m_former ? m_former->differenceTo(m_parameter) : detail::everywhere();
    }

private:
    const Parameter& m_parameter;
    std::optional<StateAround> m_former;
};

template <class T> boost::shared_ptr<Bsc::MementoBase> Parameter<T>::exportState() const {
    return boost::make_shared<ParameterMemento>(*this);
}

template <class T>
boost::shared_ptr<Bsc::MementoBase> Parameter<T>::exportStateAround(const detail::Places& places) const {
    if (HookGate::overrides(*this, &Parameter::exportState)) {
        auto memento = exportState();
        const Bsc::MementoBase* const taken = memento.get();
        if (!taken || typeid(*taken) != typeid(ParameterMemento))
            return memento;
    }
    return boost::make_shared<StateAround>(*this, places);
}

template <class T> void Parameter<T>::doImportState(boost::shared_ptr<Bsc::MementoBase> snapshot) {
    const auto* const whole = dynamic_cast<const ParameterMemento*>(snapshot.get());
    const auto* const part = dynamic_cast<const StateAround*>(snapshot.get());
    if (!whole && !part)
        throw std::bad_cast();
    if (part && !part->isWhole()) {
        const typename StateAround::PutBack difference(*this, *part);
        part->putBack(*this);
        return ParameterChange::assigned(*this, difference);
    }
    const typename Differences::Assigned difference(*this);
    if (whole) {
        takeKeyframeData(whole->state, true);
        copyOwnAttributes(whole->state, NamePrefix::Copy);
    } else {
        part->putBack(*this);
    }
    ParameterChange::assigned(*this, difference);
}

} // namespace Prm

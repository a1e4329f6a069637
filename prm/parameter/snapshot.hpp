#pragma once

// The parameter's state, taken and put back.

#include "prm/Parameter.h"
#include "prm/track/KeyframeStretch.h"
#include "prm/untyped/PartialSnapshot.h"

#include <boost/make_shared.hpp>

#include <typeinfo>
#include <vector>

namespace Prm {

/// A complete copy; the keyframes are shared until one side changes.
template <class T> class Parameter<T>::ParameterMemento : public detail::WholeSnapshot {
public:
    explicit ParameterMemento(const Parameter& parameter) : state(parameter) {}

    const ParameterWithoutType& parameter() const override { return state; }

    const Parameter state;
};

/// Stretches of the keyframes of one view, and its static value. They share nothing: the edit that follows need not
/// copy the list.
template <class T> class Parameter<T>::StretchesMemento : public detail::PartialSnapshot {
public:
    using Stretch = detail::KeyframeStretch<T>;

    explicit StretchesMemento(const PVData& data) : m_view(data.view), m_staticValue(data.staticValue) {}

    void add(Stretch stretch) { m_stretches.push_back(std::move(stretch)); }

    boost::shared_ptr<Bsc::MementoBase> present(const BasicParameter& parameter) const override {
        const auto& typed = dynamic_cast<const Parameter&>(parameter);
        const PVData* const data = typed.m_views.findRealViewData(m_view);
        if (!data)
            return parameter.exportState();
        const auto memento = boost::make_shared<StretchesMemento>(*data);
        for (const Stretch& stretch : m_stretches)
            memento->add(stretch.present(data->keyframes));
        return memento;
    }

    void putBack(Parameter& parameter) const {
        PVData* const data = parameter.m_views.findRealViewData(m_view);
        if (!data)
            return;
        LockedKeyframes lock(data);
        int added = 0;
        for (const Stretch& stretch : m_stretches)
            added += stretch.keyframes.size();
        detail::makeRoom(lock.keyframes(), added);
        for (const Stretch& stretch : m_stretches)
            stretch.putBack(lock.keyframes());
        data->staticValue = m_staticValue;
        ++parameter.m_revision;
    }

private:
    View m_view;
    T m_staticValue;
    std::vector<Stretch> m_stretches;
};

template <class T> boost::shared_ptr<Bsc::MementoBase> Parameter<T>::exportState() const {
    return boost::make_shared<ParameterMemento>(*this);
}

template <class T>
boost::shared_ptr<Bsc::MementoBase> Parameter<T>::exportStateAround(const std::vector<Context>& places) const {
    constexpr int shortList = 64;
    const View view = places.empty() ? View::INVALID() : places.front().view;
    const PVData* const data = m_views.findRealViewData(splittable() ? view : View(View::defaultViewId()));
    if (!data || data->keyframes.size() <= shortList || !isOfKnownClass())
        return exportState();
    const auto memento = boost::make_shared<StretchesMemento>(*data);
    for (const Context& place : places) {
        if (place.time.isValid())
            memento->add(detail::KeyframeStretch<T>::around(data->keyframes, place.time));
    }
    return memento;
}

template <class T> void Parameter<T>::doImportState(boost::shared_ptr<Bsc::MementoBase> snapshot) {
    const auto* const whole = dynamic_cast<const ParameterMemento*>(snapshot.get());
    const auto* const part = dynamic_cast<const StretchesMemento*>(snapshot.get());
    if (whole) {
        takeKeyframeData(whole->state, true);
        copyOwnAttributes(whole->state, NamePrefix::Copy);
    } else if (part) {
        part->putBack(*this);
    } else {
        throw std::bad_cast();
    }
    ParameterChange::parameterAssigned(*this);
}

} // namespace Prm

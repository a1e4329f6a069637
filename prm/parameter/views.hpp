#pragma once

// Which views have data of their own.

#include "prm/Parameter.h"

namespace Prm {

template <class T> const std::vector<View>& Parameter<T>::viewList() const {
    return m_views.viewList();
}

template <class T> int Parameter<T>::numViews() const {
    return static_cast<int>(viewList().size());
}

/// Stores contents in a view, creating its data if need be, and notifies.
template <class T> bool Parameter<T>::giveViewData(const View& view, const detail::Track<T>& contents) {
    const View addressed = view;
    const T staticValue = contents.staticValue;
    KeyframeVector keyframes = contents.keyframes;
    PVData* const data = targetData(addressed, &contents);
    if (!data)
        return true;
    {
        LockedKeyframes lock(data);
        data->staticValue = staticValue;
        lock.swapKeyframes(keyframes);
        ++m_revision;
    }
    ParameterChange::valueChanged(*this, addressed);
    return true;
}

template <class T>
void Parameter<T>::copyViewData(const View& from, const View& to, const ParameterWithoutType* source) {
    const auto* const sameType = source ? dynamic_cast<const Parameter*>(source) : this;
    if (splittable() && sameType)
        giveViewData(to, sameType->m_views.resolve(from));
}

template <class T> void Parameter<T>::uniquifyView(const View& view) {
    initialiseHeroView(view, view);
}

template <class T> bool Parameter<T>::initialiseHeroView(const View& hero, const View& from) {
    if (!splittable() || !hero.isValid() || hasViewData(hero))
        return false;
    return giveViewData(hero, m_views.resolve(from));
}

template <class T> bool Parameter<T>::deleteView(const View& view) {
    const View removed = view;
    if (!m_views.findRealViewData(removed) || m_views.count() < 2)
        return false;
    {
        m_views.remove(removed);
        ++m_revision;
        m_isSplit.store(m_views.count() > 1);
    }
    ParameterChange::viewRemoved(*this, removed);
    return true;
}

template <class T> void Parameter<T>::clearViewData() {
    const std::vector<View> former = m_views.viewList();
    {
        m_views.clear();
        ++m_revision;
        m_isSplit.store(false);
    }
    const detail::LifeGuard guard(*this);
    for (const View view : former) {
        ParameterChange::viewRemoved(*this, view);
        if (!guard.alive())
            return;
    }
}

} // namespace Prm

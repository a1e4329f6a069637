#pragma once

// What a parameter stores: construction, flags and defaults, the block that an edit changes, assignment.

#include "prm/Parameter.h"

#include <QMetaType>

namespace Prm {

namespace detail {

template <class T> int parameterMetaType() {
    static const int id = [] {
        const QString name = QStringLiteral("Prm::Parameter<%1>").arg(ValueType<T>::name());
        return qRegisterMetaType<Parameter<T>>(name.toLatin1().constData());
    }();
    return id;
}

} // namespace detail

// Delegates, which the check overlooks. NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
template <class T> Parameter<T>::Parameter() : Parameter(QString()) {}

template <class T>
Parameter<T>::Parameter(const QString& name, const T& value, ParameterOptions options, ParameterSet* parent)
    : m_keyframed(options.testFlag(Keyframed)), m_splittable(options.testFlag(Splittable)),
      m_defaultInterpolation(blends<T> ? Interpolation::Linear : Interpolation::Constant), m_views(value) {
    initialise(options.testFlag(Locked), options.testFlag(Hidden), parent);
    ParameterWithoutType::setScriptName(name);
    if (!blends<T>)
        setEvaluated();
}

template <class T>
Parameter<T>::Parameter(const Parameter& other)
    : ParameterWithoutType(), m_keyframed(other.m_keyframed.load()), m_splittable(other.m_splittable.load()),
      m_isSplit(other.m_isSplit.load()), m_viewInterpolation(other.m_viewInterpolation.load()),
      m_extrapolationBefore(other.m_extrapolationBefore.load()),
      m_extrapolationAfter(other.m_extrapolationAfter.load()),
      m_defaultInterpolation(other.m_defaultInterpolation.load()), m_views(other.m_views, T()) {
    initialise(other);
    if (!blends<T>)
        setEvaluated();
}

template <class T> Parameter<T>::~Parameter() {
    announceDeletion();
}

template <class T> int Parameter<T>::qMetaType() const {
    return detail::parameterMetaType<T>();
}

template <class T> const std::type_info& Parameter<T>::tRawValueType() const {
    return typeid(T);
}

template <class T> bool Parameter<T>::isKeyframed() const {
    return m_keyframed.load(std::memory_order_relaxed);
}

template <class T> bool Parameter<T>::isSplit() const {
    return m_isSplit.load(std::memory_order_relaxed);
}

template <class T> bool Parameter<T>::splittable() const {
    return m_splittable.load(std::memory_order_relaxed);
}

template <class T> void Parameter<T>::setSplittable(bool splittable) {
    m_splittable.store(splittable);
    ++m_revision;
    ++m_changes;
}

template <class T> T Parameter<T>::defaultValue() const {
    detail::Protection protection;
    return m_views.protectTemplate(protection).staticValue;
}

template <class T> void Parameter<T>::vSetDefault(const T& value) {
    PVData& data = m_views.templateData();
    const LockedKeyframes lock(&data);
    data.staticValue = value;
    ++m_changes;
}

template <class T> Interpolation Parameter<T>::defaultInterpolation() const {
    return m_defaultInterpolation.load(std::memory_order_relaxed);
}

template <class T> void Parameter<T>::vSetDefaultInterpolation(Interpolation kind) {
    m_defaultInterpolation.store(kind);
}

template <class T> T Parameter<T>::staticValue(const View& view) const {
    return ask(view, [](const auto& track, View) { return track.staticValue; });
}

/// The data that a write addressed to the view changes; if they have to be made, they begin with the contents, or with
/// those of the template. Null when an observer of VIEW_ADDED has deleted the parameter.
template <class T> auto Parameter<T>::targetData(const View& view, const detail::Track<T>* contents) -> PVData* {
    const View target = splittable() ? view : View(View::defaultViewId());
    PVData* const own = m_views.findRealViewData(target);
    return own ? own : makeTargetData(view, target, contents);
}

template <class T>
auto Parameter<T>::makeTargetData(const View& view, View target, const detail::Track<T>* contents) -> PVData* {
    const View addressed = view;
    const std::size_t before = m_views.count();
    const bool hadData = m_views.findRealViewData(addressed) != nullptr;
    PVData* const data = ownData(target, contents);
    const bool gained = !hadData && m_views.findRealViewData(addressed) != nullptr;
    if (!gained || (before == 0 && addressed == View(View::defaultViewId())))
        return data;
    const detail::LifeGuard guard(*this);
    ParameterChange::viewAdded(*this, addressed);
    // An observer may have deleted that very view, or put all views back from a snapshot.
    return guard.alive() ? ownData(target, nullptr) : nullptr;
}

/// The view's data, made if need be.
template <class T> auto Parameter<T>::ownData(const View& view, const detail::Track<T>* contents) -> PVData* {
    const std::size_t before = m_views.count();
    PVData& data = m_views.obtain(view, contents ? *contents : m_views.templateData());
    const std::size_t now = m_views.count();
    if (now != before) {
        m_isSplit.store(now > 1);
        ++m_revision;
    }
    return &data;
}

/// Readers see all of it at once.
template <class T> void Parameter<T>::takeKeyframeData(const Parameter& source, bool withDefaultInterpolation) {
    m_views.assignViews(source.m_views, [&] {
        m_keyframed.store(source.m_keyframed.load());
        m_isSplit.store(source.m_isSplit.load());
        m_splittable.store(source.m_splittable.load());
        m_extrapolationBefore.store(source.m_extrapolationBefore.load());
        m_extrapolationAfter.store(source.m_extrapolationAfter.load());
        m_viewInterpolation.store(source.m_viewInterpolation.load());
        if (withDefaultInterpolation)
            m_defaultInterpolation.store(source.m_defaultInterpolation.load());
        ++m_revision;
    });
}

template <class T> void Parameter<T>::vCopyKeyframeDataFrom(const ParameterWithoutType* source) {
    const auto* sameType = dynamic_cast<const Parameter*>(source);
    if (!sameType)
        return;
    const typename Differences::Assigned difference(*this);
    takeKeyframeData(*sameType, false);
    ParameterChange::assigned(*this, difference);
}

template <class T> void Parameter<T>::assignFrom(const ParameterWithoutType& other) {
    ParameterWithoutType::assignFrom(other);
    const auto* sameType = dynamic_cast<const Parameter*>(&other);
    if (!sameType || sameType == this)
        return;
    const typename Differences::Assigned difference(*this);
    copyOwnAttributes(*sameType, NamePrefix::Keep);
    takeKeyframeData(*sameType, true);
    ParameterChange::assigned(*this, difference);
}

} // namespace Prm

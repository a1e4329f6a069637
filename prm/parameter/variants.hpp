#pragma once

// Values as variants.

#include "prm/Parameter.h"
#include "prm/untyped/KeptException.h"

#include <QCoreApplication>

#include <stdexcept>

namespace Prm {

namespace detail {

/// Throws an error whose text is translated in the context "Parameter".
[[noreturn]] PRM_EXPORT void throwTranslated(const char* text);

inline void checkVariantAccess(const ParameterWithoutType& parameter, const Context& context) {
    if (!parameter.splittable() && context.view != View(View::defaultViewId()))
        throwTranslated("Parameter not splittable");
    if (!parameter.isKeyframed() && Frame(context).isValid())
        throwTranslated("Parameter not animated");
}

template <class T>
void default_Parameter_setVariantValue_impl(Parameter<T>& parameter, const QVariant& variant, const Context& context) {
    const T value = ValueType<T>::fromVariant(variant);
    if (Frame(context).isValid() && parameter.isKeyframed()) {
        parameter.vSetValue(value, context);
        return;
    }
    const View view = context.view;
    auto* const data = parameter.targetData(view);
    if (data && storeStaticValue(*data, value))
        ParameterChange::valueChanged(parameter, view);
}

} // namespace detail

template <class T> void Parameter<T>::setVariantValue(const QVariant& variant, const Context& context) {
    detail::checkVariantAccess(*this, context);
    const detail::KeptException kept(*this);
    setVariantValue(variant, context, std::nothrow);
    kept.goOn();
}

template <class T>
void Parameter<T>::setVariantValue(const QVariant& variant, const Context& context, const std::nothrow_t&) {
    detail::KeptException::during(*this,
                                  [&] { detail::default_Parameter_setVariantValue_impl(*this, variant, context); });
}

template <class T> QVariant Parameter<T>::variantValue(const Context& context) const {
    detail::checkVariantAccess(*this, context);
    const detail::KeptException kept(*this);
    QVariant found = variantValue(context, std::nothrow);
    kept.goOn();
    return found;
}

template <class T> QVariant Parameter<T>::variantValue(const Context& context, const std::nothrow_t&) const {
    QVariant found;
    detail::KeptException::during(*this, [&] { found = ValueType<T>::toVariant(value(context, nullptr)); });
    return found;
}

} // namespace Prm

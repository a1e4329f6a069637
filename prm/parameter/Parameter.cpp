#include "prm/Parameter.hpp"

namespace Prm {

namespace detail {

void throwTranslated(const char* text) {
    throw std::runtime_error(QCoreApplication::translate("Parameter", text).toUtf8().toStdString());
}

} // namespace detail

template class Parameter<bool>;
template class Parameter<int>;
template class Parameter<unsigned int>;
template class Parameter<double>;
template class Parameter<QString>;
template class Parameter<QPointF>;
template class Parameter<QPoint>;

namespace detail {

template PRM_EXPORT void default_Parameter_setVariantValue_impl(Parameter<bool>&, const QVariant&, const Context&);
template PRM_EXPORT void default_Parameter_setVariantValue_impl(Parameter<int>&, const QVariant&, const Context&);
template PRM_EXPORT void default_Parameter_setVariantValue_impl(Parameter<unsigned int>&, const QVariant&,
                                                                const Context&);
template PRM_EXPORT void default_Parameter_setVariantValue_impl(Parameter<double>&, const QVariant&, const Context&);
template PRM_EXPORT void default_Parameter_setVariantValue_impl(Parameter<QString>&, const QVariant&, const Context&);
template PRM_EXPORT void default_Parameter_setVariantValue_impl(Parameter<QPointF>&, const QVariant&, const Context&);
template PRM_EXPORT void default_Parameter_setVariantValue_impl(Parameter<QPoint>&, const QVariant&, const Context&);

} // namespace detail

namespace {

/// Known by name before the first parameter is made.
const int metaTypes[] = {detail::parameterMetaType<bool>(),         detail::parameterMetaType<int>(),
                         detail::parameterMetaType<unsigned int>(), detail::parameterMetaType<double>(),
                         detail::parameterMetaType<QString>(),      detail::parameterMetaType<QPointF>(),
                         detail::parameterMetaType<QPoint>()};

} // namespace

} // namespace Prm

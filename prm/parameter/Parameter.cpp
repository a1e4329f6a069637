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

namespace {

/// Known by name before the first parameter is made.
const int metaTypes[] = {detail::parameterMetaType<bool>(),         detail::parameterMetaType<int>(),
                         detail::parameterMetaType<unsigned int>(), detail::parameterMetaType<double>(),
                         detail::parameterMetaType<QString>(),      detail::parameterMetaType<QPointF>(),
                         detail::parameterMetaType<QPoint>()};

} // namespace

} // namespace Prm

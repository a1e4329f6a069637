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

} // namespace Prm

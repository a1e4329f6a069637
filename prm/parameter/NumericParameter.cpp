#include "prm/NumericParameter.h"

namespace Prm {

template <class T> NumericParameter<T>::NumericParameter() : NumericParameter(QString()) {}

template <class T>
NumericParameter<T>::NumericParameter(const QString& name, const T& value, ParameterOptions options,
                                      ParameterSet* parent)
    : CurveParameter<T>(name, value, options, parent) {}

template <class T>
NumericParameter<T>::NumericParameter(const NumericParameter& other)
    : ParameterWithoutType(), CurveParameter<T>(other), NumericParameterWithoutType(other) {}

template <class T> NumericParameter<T>::~NumericParameter() {
    this->announceDeletion();
}

template class NumericParameter<double>;
template class NumericParameter<int>;
template class NumericParameter<unsigned int>;

} // namespace Prm

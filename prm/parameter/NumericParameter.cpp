#include "prm/NumericParameter.h"

namespace Prm {

template <class T> NumericParameter<T>::NumericParameter() : NumericParameter(QString()) {}

template <class T>
NumericParameter<T>::NumericParameter(const QString& name, const T& value, ParameterOptions options,
                                      ParameterSet* parent)
    : ParameterWithoutType(options.testFlag(Locked), options.testFlag(Hidden), parent), CurveParameter<T>(name, value,
                                                                                                          options,
                                                                                                          parent),
      NumericParameterWithoutType(parent) {
}

template <class T>
NumericParameter<T>::NumericParameter(const NumericParameter& other)
    : Bsc::MementoUndoable(other), ParameterWithoutType(other), CurveParameter<T>(other),
      NumericParameterWithoutType(other) {
}

template <class T> NumericParameter<T>::~NumericParameter() {
    this->announceDeletion();
}

template class NumericParameter<double>;
template class NumericParameter<int>;
template class NumericParameter<unsigned int>;

} // namespace Prm

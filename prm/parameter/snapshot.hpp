#pragma once

// The parameter's state, taken and put back.

#include "prm/Parameter.h"

#include <boost/make_shared.hpp>

#include <typeinfo>

namespace Prm {

/// A complete copy; the keyframes are shared until one side changes.
template <class T> class Parameter<T>::ParameterMemento : public Bsc::MementoBase {
public:
    explicit ParameterMemento(const Parameter& parameter) : state(parameter) {}

    const Parameter state;
};

template <class T> boost::shared_ptr<Bsc::MementoBase> Parameter<T>::exportState() const {
    return boost::make_shared<ParameterMemento>(*this);
}

template <class T> void Parameter<T>::doImportState(boost::shared_ptr<Bsc::MementoBase> snapshot) {
    const auto* const memento = dynamic_cast<const ParameterMemento*>(snapshot.get());
    if (!memento)
        throw std::bad_cast();
    const Parameter& state = memento->state;
    takeKeyframeData(state, true);
    copyOwnAttributes(state, NamePrefix::Copy);
    ParameterChange::parameterAssigned(*this);
}

} // namespace Prm

#include "prm/NumericParameterWithoutType.h"

namespace Prm {

NumericParameterWithoutType::NumericParameterWithoutType(ParameterSet* parent) {
    initialise(false, false, parent);
}

NumericParameterWithoutType::NumericParameterWithoutType(const NumericParameterWithoutType& other)
    : Bsc::MementoUndoable(other), ParameterWithoutType(other) {
    initialise(other);
}

NumericParameterWithoutType::~NumericParameterWithoutType() = default;

} // namespace Prm

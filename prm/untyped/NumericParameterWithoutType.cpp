#include "prm/NumericParameterWithoutType.h"

namespace Prm {

NumericParameterWithoutType::NumericParameterWithoutType(ParameterSet* parent)
    : ParameterWithoutType(false, false, parent) {}

NumericParameterWithoutType::NumericParameterWithoutType(const NumericParameterWithoutType& other)
    : Bsc::MementoUndoable(other), ParameterWithoutType(other) {}

NumericParameterWithoutType::~NumericParameterWithoutType() = default;

} // namespace Prm

// The undoable forms of the untyped operations.

#include "host/bsc/CompositeCommand.h"
#include "prm/ParameterEdits.h"

namespace Prm {

Bsc::CompositeCommand& ParameterWithoutType::bUnconstrainCommand(Bsc::CompositeCommand& command) {
    command.push_back(new ParameterWithoutTypeUnconstrainEdit(*this));
    return command;
}

Bsc::CompositeCommand& ParameterWithoutType::bRemoveConstrainedParameterCommand(ParameterWithoutType* parameter,
                                                                                Bsc::CompositeCommand& command) {
    if (parameter && parameter->masterParameter() == this)
        command.push_back(new ParameterWithoutTypeUnconstrainEdit(*parameter));
    return command;
}

Bsc::CompositeCommand& ParameterWithoutType::hideCommand(bool hidden, Bsc::CompositeCommand& command) {
    command.push_back(new ParameterWithoutTypeHideEdit(*this, hidden));
    return command;
}

Bsc::CompositeCommand& ParameterWithoutType::setLockedCommand(bool locked, Bsc::CompositeCommand& command) {
    command.push_back(new ParameterWithoutTypeLockEdit(*this, locked));
    return command;
}

} // namespace Prm

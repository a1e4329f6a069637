// The undoable forms of the untyped operations.

#include "prm/ParameterWithoutType.h"
#include "prm/detail/NotBuiltYet.h"

namespace Prm {

Bsc::CompositeCommand& ParameterWithoutType::bUnconstrainCommand(Bsc::CompositeCommand&) {
    detail::throwNotBuiltYet("bUnconstrainCommand");
}

Bsc::CompositeCommand& ParameterWithoutType::bRemoveConstrainedParameterCommand(ParameterWithoutType*,
                                                                                Bsc::CompositeCommand&) {
    detail::throwNotBuiltYet("bRemoveConstrainedParameterCommand");
}

Bsc::CompositeCommand& ParameterWithoutType::hideCommand(bool, Bsc::CompositeCommand&) {
    detail::throwNotBuiltYet("hideCommand");
}

} // namespace Prm

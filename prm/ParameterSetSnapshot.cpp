// The state of a set and of all below it, taken and put back.

#include "prm/BasicParameter.h"
#include "prm/ParameterSet.h"
#include "prm/ParameterWithoutType.h"
#include "prm/detail/NotBuiltYet.h"

namespace Prm {

boost::shared_ptr<Bsc::MementoBase> ParameterSet::exportState() const {
    detail::throwNotBuiltYet("ParameterSet::exportState");
}

void ParameterSet::doImportState(boost::shared_ptr<Bsc::MementoBase>) {
    detail::throwNotBuiltYet("ParameterSet::doImportState");
}

} // namespace Prm

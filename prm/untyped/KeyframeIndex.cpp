#include "prm/Context.h"
#include "prm/ParameterWithoutType.h"

namespace Prm {

Context KeyframeIndex::toContext() const {
    if (view == View::INVALID() || !parameter)
        return Context::INVALID_TIME;
    return parameter->keyframeTime(index, view);
}

} // namespace Prm

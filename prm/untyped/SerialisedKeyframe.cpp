#include "prm/SerialisedKeyframe.h"

namespace Prm {

SerialisedKeyframe::~SerialisedKeyframe() = default;

bool SerialisedKeyframe::equals(const SerialisedKeyframe&) const {
    return false;
}

} // namespace Prm

#include "prm/SerialisedKeyframe.h"

namespace Prm {

SerialisedKeyframe::~SerialisedKeyframe() = default;

bool SerialisedKeyframe::equals(const SerialisedKeyframe&) const {
    return false;
}

QString SerialisedKeyframe::toExactString() const {
    return toString();
}

} // namespace Prm

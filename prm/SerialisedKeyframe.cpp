#include "prm/SerialisedKeyframe.h"

namespace Prm {

SerialisedKeyframe::~SerialisedKeyframe() = default;

} // namespace Prm

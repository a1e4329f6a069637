#include "prm/untyped/Differences.h"

namespace Prm::detail {

TracksSnapshot::~TracksSnapshot() = default;

} // namespace Prm::detail

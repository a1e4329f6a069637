#include "host/bsc/MementoBase.h"

namespace Bsc {

MementoBase::~MementoBase() = default;

} // namespace Bsc

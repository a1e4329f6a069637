#pragma once

#include "prm/Export.h"

namespace Prm::detail {

/// a + b. Numbers that are decimals of up to 15 digits after the point are added as such: 0.1 + 0.2 is 0.3. So what is
/// added can be taken away again, to the bit; of other numbers only where no digit is lost.
PRM_EXPORT double decimalSum(double a, double b);

} // namespace Prm::detail

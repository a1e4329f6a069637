#pragma once

#include "prm/Export.h"

namespace Prm {

/// The three roots of the monic cubic x^3 + a2 x^2 + a1 x + a0, by Cardano's formula, in its trigonometric form when
/// all roots are real.
///
/// `coeffs` are a0, a1, a2; `roots` receives three pairs of real and imaginary part, the real root first when there is
/// only one. The result is the number of real roots, 3 or 1.
///
/// Nothing is checked. A triple root other than 0 gives three NaN and the result 3: the formula divides 0 by 0 there,
/// and callers that can meet one must test for it themselves.
PRM_EXPORT int cuberoots(const double* coeffs, double roots[][2]);

} // namespace Prm

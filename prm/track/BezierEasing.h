#pragma once

#include "prm/Export.h"
#include "prm/Interpolation.h"

#include <utility>
#include <vector>

namespace Prm::detail {

// An easing is the cubic Bezier curve from (0,0) to (1,1) with the inner control points (x1,y1) and (x2,y2). With the
// curve's parameter s and t = 1 - s, the Bernstein form gives
//
//     x(s) = 3 s t (t x1 + s x2) + s^3        y(s) = 3 s t (t y1 + s y2) + s^3
//
// x1 and x2 are held to [0,1], NaN counts as 0: so x rises with s, and y is a function of x. y is free; one that is not
// finite shows in the result, and harms nothing else.

/// The part of the value's change that is reached at part x of the segment's time. x is held to [0,1], NaN counts as 0;
/// the result is exactly 0 at 0 and exactly 1 at 1. Handles on the diagonal, x1 == y1 and x2 == y2, make a straight
/// line, which is x itself; all four numbers zero are such handles.
PRM_EXPORT double easedProgress(const IType& shape, double x);

/// dy/dx at the start or at the end of the curve. A handle that lies on its key leaves the direction to the other
/// handle; if that lies on a key too, the chord gives it: 1. A vertical end holds: 0. So does a slope that is not
/// finite.
PRM_EXPORT double easingSlopeAtStart(const IType& shape);
PRM_EXPORT double easingSlopeAtEnd(const IType& shape);

/// Whether the handles lie on the diagonal, so that the part is that of the time.
PRM_EXPORT bool isStraightEasing(const IType& shape);

/// The least and the greatest part that is reached from one part of the time to another, the parts at both included. An
/// extremum between them is widened by what the solver and rounding may add. `slack` widens the times, and the parts,
/// so that no value that is computed lies outside. Infinite where a y is not finite.
PRM_EXPORT std::pair<double, double> easedRange(const IType& shape, double from, double to, double slack);

/// dy/dx at part x of the time, of the curve after it; infinite where the curve is vertical.
PRM_EXPORT double easedSlope(const IType& shape, double x);

/// Appends parts of the time between two others, in ascending order: straight lines between them, and from and to the
/// two others, differ from the curve by the tolerance at most. Tolerances below 2^-26 of the curve's height count as
/// that.
PRM_EXPORT void addFlatParts(const IType& shape, double from, double to, double tolerance, std::vector<double>& parts);

/// The parameter s in [0,1] with x(s) = x; x(s) differs from x by at most 4 * 2^-52. The three numbers must lie in
/// [0,1].
PRM_EXPORT double easingParameter(double x1, double x2, double x);

} // namespace Prm::detail

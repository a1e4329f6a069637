#pragma once

#include "prm/Export.h"
#include "prm/Interpolation.h"

namespace Prm::detail {

// The easing of a segment: a cubic Bezier from (0,0) to (1,1) with the inner control points (x1,y1) and (x2,y2), where
// x is the part of the segment's time and y the part of its change:
//
//     x(s) = 3 (1-s)^2 s x1 + 3 (1-s) s^2 x2 + s^3,  y(s) likewise, s from 0 to 1
//
// x1 and x2 are held to [0,1] (NaN counts as 0), so that x grows with s and y is a function of x; y1 and y2 are free.
// All four numbers zero mean a straight line, and so does every shape whose control points lie on the diagonal.

/// The y at an x: exactly 0 at 0 and below (and for NaN), exactly 1 at 1 and above, exactly x on a straight line.
PRM_EXPORT double easedProgress(const IType& shape, double x);

/// The parameter s at an x in [0,1] for handles in [0,1]; its x(s) lies within 4 units in the last place of 1 of the x
/// asked for.
PRM_EXPORT double easingParameter(double x1, double x2, double x);

/// dy/dx at the start and at the end. A control point that lies on its end takes the direction of the other one, and
/// where that lies there too, of the straight line; a vertical end, or one that is not finite, gives 0.
PRM_EXPORT double easingSlopeAtStart(const IType& shape);
PRM_EXPORT double easingSlopeAtEnd(const IType& shape);

} // namespace Prm::detail

#pragma once

#include "prm/Export.h"
#include "prm/Interpolation.h"

#include <vector>

namespace Prm::detail {

/// A point that an easing should pass: parts of the time and of the change.
struct EasingPoint {
    double x;
    double y;
};

/// Moves the four numbers of a Bezier shape towards the least squares of the differences from the points, by the method
/// of Levenberg and Marquardt. Stops after a few steps; the result may be a local minimum.
PRM_EXPORT IType fittedEasing(const IType& start, const std::vector<EasingPoint>& points, double error);

} // namespace Prm::detail

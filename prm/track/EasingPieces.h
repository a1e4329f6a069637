#pragma once

#include "prm/Export.h"
#include "prm/Interpolation.h"

#include <vector>

namespace Prm::detail {

/// A part of an easing: where it ends, as parts of the time and of the change, and its own shape.
struct EasingPiece {
    double x = 1.0;
    double y = 1.0;
    IType shape;
};

/// Cuts a Bezier easing in two at part x of the time, by de Casteljau's algorithm at the solved parameter. A half that
/// begins and ends at one value although it bends has no shape: it is cut again where its value turns. So is one of
/// which a handle would lie outside its time, where that is fastest or slowest. Empty for a curve that is vertical
/// within, whose pieces would show the rounding of their shape numbers.
PRM_EXPORT std::vector<EasingPiece> cutEasing(const IType& shape, double x);

} // namespace Prm::detail

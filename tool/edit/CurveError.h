#pragma once

#include "prm/View.h"

namespace Prm {
class ParameterWithoutType;
} // namespace Prm

namespace Tool {

/// The greatest difference of two numbers or points in any component, in a view, from the first keyframe to the last:
/// where they differ, at all vertices of the lines that show the two curves within a tolerance, and just before them.
/// Of other types 0.
double greatestDifference(const Prm::ParameterWithoutType& a, const Prm::ParameterWithoutType& b, const Prm::View& view,
                          double tolerance);

} // namespace Tool

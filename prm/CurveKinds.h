#pragma once

#include "prm/Export.h"
#include "prm/Interpolation.h"
#include "prm/Time.h"

#include <boost/function.hpp>

namespace Prm {

/// A custom interpolation: from the keyframe's shape numbers and the fraction x of the segment's time, in [0,1],
/// returns the fraction of its change in value. Must return the same for the same arguments: extents rely on it.
using InterpolationFunction = boost::function<double(const IType& shape, double x)>;

/// A custom extrapolation: from a time outside the keyframed range, returns the time in the range (clamped to it) whose
/// value is used. A cycle, for example, subtracts whole ranges from the time. Must return the same for the same
/// arguments.
using ExtrapolationFunction = boost::function<Time(Time time, Time first, Time last)>;

/// Sets the function of a custom kind in the whole process; an empty function removes it. Returns false, and does
/// nothing, for kinds below `Interpolation::Custom0`. Only parameters whose values blend use it. Safe on any thread.
PRM_EXPORT bool registerInterpolation(Interpolation kind, InterpolationFunction function);

/// Sets the function of a custom kind in the whole process; an empty function removes it. Returns false, and does
/// nothing, for kinds below `Extrapolation::Custom0`. Safe on any thread.
PRM_EXPORT bool registerExtrapolation(Extrapolation kind, ExtrapolationFunction function);

} // namespace Prm

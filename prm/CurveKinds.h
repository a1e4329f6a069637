#pragma once

#include "prm/Export.h"
#include "prm/Interpolation.h"
#include "prm/Time.h"

#include <boost/function.hpp>

namespace Prm {

/// The shape of a custom interpolation: given the keyframe's shape numbers and the part x of the segment's time, in
/// [0,1], the part of its change in value.
using InterpolationFunction = boost::function<double(const IType& shape, double x)>;

/// A custom extrapolation: given a time outside the keyframed range, the time inside it whose value is shown (held to
/// the range). A cycle, for example, takes whole ranges off the time.
using ExtrapolationFunction = boost::function<Time(Time time, Time first, Time last)>;

/// Gives a custom kind its shape, in the whole process, or takes it away (empty function). Kinds below
/// `Interpolation::Custom0` are refused with false. Parameters whose values do not blend never ask for it. Any thread.
PRM_EXPORT bool registerInterpolation(Interpolation kind, InterpolationFunction function);

/// Gives a custom kind its meaning, in the whole process, or takes it away (empty function). Kinds below
/// `Extrapolation::Custom0` are refused with false. Any thread.
PRM_EXPORT bool registerExtrapolation(Extrapolation kind, ExtrapolationFunction function);

} // namespace Prm

#pragma once

#include "host/bsc/Hash.h"
#include "prm/Context.h"
#include "prm/Export.h"
#include "prm/TimeSpan.h"

namespace Prm {

class BasicParameter;
class CompoundParameter;
class ParameterSet;

/// Adds to a hash what determines the values of a parameter in a view, at all times of a span. Equal hashes mean equal
/// values at each of these times, for example for pictures in a cache. Unlike `calculateHash`, which adds one value.
///
/// The form is canonical: names, shape numbers of segments that are not curved, the sign of 0, the view from which
/// values are read, and keyframes that do not shape a value in the span make no difference. Nor does the span itself
/// where the value is constant; otherwise it does. Values that are equal may still have different hashes, for example
/// if there is one more keyframe on a straight line.
///
/// - A parameter adds the name of its value type and its values, those of its master if there is one.
/// - A static parameter adds its value, as a constant parameter of that type does. A moved parameter has no value and
///   adds only a mark.
/// - A compound and a set add all that they hold, in order (`ParameterSet::members`): for sets that differ in structure
///   hashes differ.
/// - A function that a host registered for a custom kind counts as the number of that kind: use another number for
///   another function.
/// - *Hooks of a host's class are not proven*: such a parameter adds the name of the class, the view, the span and all
///   data that are read in that view. If a hook reads anything else, add that to the hash as well. Of a host's own kind
///   of parameter the class, the span and its project text are added.
///
/// \threads For a `Parameter` any thread, as `value`; for compounds as `variantValue`; otherwise the owning thread.
PRM_EXPORT void hashRange(Bsc::Hash& hash, const BasicParameter& parameter, const View& view, const TimeSpan& span);
PRM_EXPORT void hashRange(Bsc::Hash& hash, const ParameterSet& set, const View& view, const TimeSpan& span);
PRM_EXPORT void hashRange(Bsc::Hash& hash, const CompoundParameter& compound, const View& view, const TimeSpan& span);

/// Adds the value at a context, of any time, also a negative one: what `hashRange` adds for a span of that time alone,
/// but for hooks of a host's class the value itself. Of a host's own kind of parameter the class and what its
/// `calculateHash` adds.
PRM_EXPORT void hashAt(Bsc::Hash& hash, const BasicParameter& parameter, const Context& context);
PRM_EXPORT void hashAt(Bsc::Hash& hash, const ParameterSet& set, const Context& context);
PRM_EXPORT void hashAt(Bsc::Hash& hash, const CompoundParameter& compound, const Context& context);

} // namespace Prm

#pragma once

#include "prm/ParameterWithoutType.h"

#include <QPointer>
#include <QString>
#include <boost/shared_ptr.hpp>

#include <vector>

namespace Prm {
class SerialisedKeyframe;
}

namespace Prm::detail {

using Owners = std::vector<QPointer<ParameterWithoutType>>;

/// The parameters whose keyframes a parameter shows: the parts of a compound, each once, otherwise itself.
Owners ownersOf(ParameterWithoutType& parameter);

using SerialisedKeyframes = std::vector<boost::shared_ptr<SerialisedKeyframe>>;

/// The times of a view's keyframes, in order.
std::vector<Time> keyframeTimes(const ParameterWithoutType& parameter, const View& view);

/// The number of a view's keyframes from one time to another, both included; of all views for the invalid view. Of a
/// parameter that is not splittable, those that are written. Takes O(log keyframes) for each view.
int countKeyframes(const ParameterWithoutType& parameter, const View& view, Time first, Time last);

/// The keyframes of a view at these times.
SerialisedKeyframes serialised(const ParameterWithoutType& parameter, const View& view, const std::vector<Time>& times);

/// The keyframes of a view at these times as lines of project text with all digits.
QString exactLines(const ParameterWithoutType& parameter, const View& view, const std::vector<Time>& times);

/// Shifts a keyframe to exactly this time.
void shiftTo(SerialisedKeyframe& keyframe, Time time);

/// Imports keyframes, and once more those that the import of the next ones has shaped anew. Observers may destroy the
/// parameter.
void importAll(ParameterWithoutType& parameter, const SerialisedKeyframes& keyframes);

/// Imports again whichever of these is not as it should be.
void mendAll(ParameterWithoutType& parameter, const SerialisedKeyframes& keyframes);

/// Whether both are none, or one like the other.
bool sameKeyframes(const SerialisedKeyframe* a, const SerialisedKeyframe* b);

/// Where an edit in the context writes: a parameter that is not splittable has one place for all views.
Context writtenAt(const BasicParameter& parameter, const Context& context);

} // namespace Prm::detail

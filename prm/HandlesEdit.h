#pragma once

#include "prm/Context.h"
#include "prm/Export.h"
#include "prm/KeyframeHandles.h"
#include "prm/ReshapingEdits.h"

namespace Prm {

/// The handles of a keyframe of a parameter whose values blend, for one component of its values. None if there is no
/// such keyframe.
PRM_EXPORT KeyframeHandles handles(const KeyframeIndex& keyframe, int component = 0);

/// Changes the handles of a keyframe, of a compound those of the keyframe of each part. Does nothing where there is no
/// keyframe.
///
/// Refuses to move a handle where there is no segment, or one that is held or of a custom kind; where the numbers would
/// not be finite; and, without `withExtremum`, a handle that is not flat between equal values. With it, the segment
/// gets a keyframe at the extremum of the curve that was asked for; this is refused if another component changes in the
/// segment, or if the type of values rounds the extremum away.
///
/// \snippet handles.cpp move
class PRM_EXPORT ParameterHandlesEdit : public ParameterReshapeEdit {
public:
    ParameterHandlesEdit(ParameterWithoutType& parameter, const Context::Explicit& keyframe,
                         const HandleChange& change);
};

} // namespace Prm

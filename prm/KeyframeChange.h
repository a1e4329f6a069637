#pragma once

#include "prm/Easing.h"
#include "prm/Export.h"
#include "prm/Interpolation.h"
#include "prm/KeyframeHandles.h"
#include "prm/Retiming.h"

#include <optional>
#include <vector>

namespace Prm {

/// What an edit of a selection does with each keyframe, in this order: values, shape, handles, deletion or new times,
/// and then the parts of an easing. Any of them may be combined.
///
/// \snippet selection.cpp edit
/// \threads A plain value.
struct PRM_EXPORT KeyframeChange {
    /// Moves keyframes by a number of frames, and each component of their values by a number. Components that are not
    /// given stay.
    static KeyframeChange moved(double frames, const std::vector<double>& values = {});
    /// Maps the times of those that are in the range of the mapping.
    static KeyframeChange retimed(const Retiming& retiming);
    /// Multiplies the distance of each component from a value by a factor.
    static KeyframeChange scaledValues(double factor, double pivot = 0.0);
    /// Gives the segments that start at the keyframes a kind and a shape.
    static KeyframeChange shaped(const IType& shape);
    /// Gives the segments that start at the keyframes an easing, once the keyframes are at their new times. One of
    /// several parts adds keyframes, except between equal values and after a last keyframe.
    static KeyframeChange eased(const Easing& easing);
    /// Changes the handles of each keyframe.
    static KeyframeChange withHandles(const HandleChange& handles);
    /// Deletes the keyframes. If a view has none left, the value of the last one becomes its static value.
    static KeyframeChange deleted();

    std::vector<double> valueShift;
    double valueScale = 1.0;
    double valuePivot = 0.0;
    std::optional<IType> shape;
    /// Of an easing of several parts; `shape` is that of the first one.
    std::vector<Easing::Part> parts;
    std::optional<HandleChange> handles;
    std::optional<Retiming> retiming;
    bool deletes = false;
};

} // namespace Prm

#pragma once

#include "prm/Export.h"

#include <optional>

namespace Prm {

/// A point of a curve: time in frames, and the value of one component.
///
/// \snippet handles.cpp handles
/// \threads A plain value.
struct HandlePoint {
    double time = 0.0;
    double value = 0.0;
};

/// The handles of a keyframe as points: the inner control points of the Bezier segments that end and begin there. None
/// on a side without a segment, and none of a segment that is held or of a custom kind. Those of a straight line are at
/// thirds of it.
///
/// \snippet handles.cpp handles
/// \threads A plain value.
struct KeyframeHandles {
    std::optional<HandlePoint> in;
    std::optional<HandlePoint> out;
};

/// A change of the handles of a keyframe. The segments concerned become Bezier ones; segments that are held or of a
/// custom kind have no handles and stay.
///
/// The shape of a segment is parts of its time and of its change in value. So a handle cannot lie outside its segment's
/// time, and is held to it; and between equal values a handle that is not flat cannot be expressed.
///
/// The components of a value share the shape. A handle is that of one component's curve; setting it moves those of the
/// others in proportion, so that the value stays on the straight line between the two keyframes' values.
///
/// \snippet handles.cpp move
/// \threads A plain value.
struct PRM_EXPORT HandleChange {
    /// What becomes of the other handle when one is moved.
    enum Tie {
        /// It stays.
        Free,
        /// It turns into the direction of the moved one and keeps its distance in time.
        Aligned,
        /// It becomes the reflection of the moved one; shorter, in the same direction, where its segment is too short.
        Mirrored
    };
    enum Kind { Points, Flat, Automatic };

    /// Moves the handle before or after the keyframe.
    static HandleChange movedIn(const HandlePoint& to, Tie tie = Free);
    static HandleChange movedOut(const HandlePoint& to, Tie tie = Free);
    /// Moves both.
    static HandleChange moved(const HandlePoint& in, const HandlePoint& out);
    /// Makes the curve flat at the keyframe. Handles keep their times.
    static HandleChange flat();
    /// Makes the curve smooth at the keyframe without overshoot: the slope is 0 at a turning point, otherwise the
    /// harmonic mean of Fritsch and Butland; beside the first and the last keyframe it follows three points. Of values
    /// of several components, it is that of the way along the straight lines between them.
    static HandleChange automatic();

    /// The same for one side only; for `flat` and `automatic`.
    HandleChange onlyIn() const;
    HandleChange onlyOut() const;
    /// The same for another component than the first one.
    HandleChange ofComponent(int index) const;
    /// The same, with a keyframe at the extremum of a curve between equal values instead of a refusal.
    HandleChange withExtremum() const;

    Kind kind = Points;
    Tie tie = Free;
    /// For `Points`: those that are moved.
    std::optional<HandlePoint> in;
    std::optional<HandlePoint> out;
    /// For the other kinds: which sides are concerned.
    bool concernsIn = true;
    bool concernsOut = true;
    int component = 0;
    bool addsExtremum = false;
};

} // namespace Prm

#pragma once

#include "prm/Export.h"
#include "prm/Time.h"

namespace Prm {

/// A mapping of time: keyframes from `first` to `last`, both included, move from t to
/// `pivot + scale * (t - pivot) + shift`.
///
/// \snippet every_edit.cpp times
/// \threads A plain value.
struct PRM_EXPORT Retiming {
    /// Moves all keyframes later by a number of frames.
    static Retiming shifted(double frames);
    /// Multiplies the distance of all keyframes from the pivot by a factor.
    static Retiming scaled(double factor, Time pivot = Time());
    /// The same mapping for the keyframes of a range only.
    Retiming between(Time from, Time to) const;

    /// Whether the scale is above 0 and all numbers are finite. Otherwise an edit with this mapping does nothing.
    bool isUsable() const;
    /// Whether the time is in the range.
    bool concerns(Time time) const { return time >= first && time <= last; }
    /// The time to which a keyframe of the range moves from this time.
    Time operator()(Time time) const;
    /// The same for any keyframe; outside the range, the same time.
    Time moved(Time time) const;

    Time first;
    Time last;
    Time pivot;
    double scale = 1.0;
    double shift = 0.0;
};

} // namespace Prm

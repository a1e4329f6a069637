#pragma once

#include "prm/Easing.h"
#include "prm/Time.h"
#include "prm/track/Place.h"
#include "prm/track/SelectedKeyframes.h"

#include <variant>
#include <vector>

namespace Prm::detail {

// Edits that reshape the keyframes of a view as a whole, as plain data. Each has a function `reshape` of a
// `ReshapedTrack`, in the header of its name.

/// A new keyframe at a time, after which values are as before.
struct KeyInsertion {
    Time time;
    /// Whether more keyframes may be added, and whole numbers rounded, where one keyframe does not keep the curve.
    bool mayAddMore = true;
};

/// The keyframes from one time to another, both included.
struct KeyframeRange {
    Time first = Place::earliest();
    Time last = Time::LAST;
};

/// The course of the segments between the keyframes of a range; of the one that begins there for a single time.
struct SegmentEasing {
    KeyframeRange range;
    std::vector<Easing::Part> parts;
};

/// Fewer keyframes, without any value moving by more than the error.
struct Simplification {
    KeyframeRange range;
    double error = 0.0;
    bool isLinear = false;
};

/// A keyframe at every step, with the value that is shown there.
struct Baking {
    KeyframeRange range;
    double step = 1.0;
    /// Whether segments pass the values at both thirds of the step; otherwise they are straight.
    bool isCurved = false;
};

/// Baked values, each a mean of its neighbours with the weights of a normal distribution, then simplified.
struct Smoothing {
    Baking baking;
    /// The standard deviation, in frames.
    double radius = 1.0;
    double error = 0.0;
};

/// Time runs the other way, about a pivot; about the middle of the keyframes for the invalid time.
struct Reversal {
    KeyframeRange range;
    Time pivot = Time(Time::INVALID);
};

/// pivot + scale * (value - pivot) + offset, for one component or for all.
struct ValueMapping {
    KeyframeRange range;
    double scale = 1.0;
    double pivot = 0.0;
    double offset = 0.0;
    int component = -1;
};

struct Reshaping {
    /// Whether a view without data gets those that it shows.
    bool givesData() const { return std::holds_alternative<KeyInsertion>(act) || std::holds_alternative<Baking>(act); }

    std::variant<KeyInsertion, SegmentEasing, Simplification, Baking, Smoothing, Reversal, ValueMapping,
                 SelectedKeyframes>
        act;
};

} // namespace Prm::detail

#pragma once

#include "prm/Time.h"

#include <variant>

namespace Prm::detail {

// Edits that reshape the keyframes of a view as a whole, as plain data. Each has a function `reshape` of a
// `ReshapedTrack`, in the header of its name.

/// A new keyframe at a time, after which values are as before.
struct KeyInsertion {
    Time time;
    /// Whether more keyframes may be added, and whole numbers rounded, where one keyframe does not keep the curve.
    bool mayAddMore = true;
};

struct Reshaping {
    /// Whether a view without data gets those that it shows.
    bool givesData() const { return std::holds_alternative<KeyInsertion>(act); }

    std::variant<KeyInsertion> act;
};

} // namespace Prm::detail

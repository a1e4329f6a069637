#pragma once

#include "prm/KeyframeChange.h"
#include "prm/Time.h"

#include <memory>
#include <vector>

namespace Prm::detail {

/// Why an edit of times is refused.
constexpr const char* isOutOfRange = "a keyframe would come to a time that is out of range";

/// The keyframes of one view that an edit of a selection changes.
struct SelectedKeyframes {
    using Times = std::shared_ptr<const std::vector<Time>>;

    /// In ascending order.
    Times selected;
    /// With those that move and are deleted with them, as parts of a compound that keys its parts together.
    Times together;
    KeyframeChange change;
};

} // namespace Prm::detail

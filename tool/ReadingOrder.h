#pragma once

#include "prm/ProjectFileVersion.h"
#include "tool/LineReading.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace Tool {

/// The time of a keyframe's line as its reader takes it, but 0 where that is no number.
float keyframeTime(std::string_view line);

/// Where a line may stand among those around it, as a time: that of a keyframe, first what is neither about keyframes
/// nor values, last what sets a static value. None for a line that clears what was read before it.
std::optional<float> readingPlace(const LineReading& line, const Prm::ProjectFileVersion& version);

/// The order in which lines of a parameter are read fastest, as positions, given their places. Between lines that
/// clear, the order is free, save that the last of equal places counts; in ascending order, no keyframe has to be put
/// before others.
std::vector<std::size_t> readingOrder(const std::vector<std::optional<float>>& places);

} // namespace Tool

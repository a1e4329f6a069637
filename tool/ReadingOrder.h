#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace Tool {

/// The time of a keyframe's line as its reader takes it, but 0 where that is no number.
float keyframeTime(std::string_view line);

/// The order in which lines of a parameter are read fastest, as positions. Given are the times of keyframes; other
/// lines have none. Keyframes that follow each other may come in any order, save that the last of equal times counts;
/// in ascending order, none has to be put before others.
std::vector<std::size_t> readingOrder(const std::vector<std::optional<float>>& times);

} // namespace Tool

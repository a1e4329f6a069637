#include "tool/ReadingOrder.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Tool {

float keyframeTime(std::string_view line) {
    const float time = toText(keyframeTimeText(line)).toFloat();
    return std::isnan(time) ? 0.0F : time;
}

std::optional<float> readingPlace(const LineReading& line, const Prm::ProjectFileVersion& version) {
    constexpr float last = HUGE_VALF;
    const bool clears = version.streamVersion >= Prm::StreamVersion::anyViewList;
    switch (line.key) {
    case Key::Keyframe: {
        const float time = keyframeTime(line.entry);
        return std::isinf(time) ? last : time;
    }
    case Key::Views:
        return clears ? std::nullopt : std::optional(last);
    case Key::Value:
        return clears && !line.view.isValid() ? std::nullopt : std::optional(last);
    default:
        return -last;
    }
}

std::vector<std::size_t> readingOrder(const std::vector<std::optional<float>>& places) {
    std::vector<std::size_t> order(places.size());
    std::iota(order.begin(), order.end(), std::size_t(0));
    for (auto run = order.begin(); run != order.end();) {
        run = std::find_if(run, order.end(), [&](std::size_t i) { return places[i].has_value(); });
        const auto end = std::find_if(run, order.end(), [&](std::size_t i) { return !places[i].has_value(); });
        std::stable_sort(run, end, [&](std::size_t a, std::size_t b) { return *places[a] < *places[b]; });
        run = end;
    }
    return order;
}

} // namespace Tool

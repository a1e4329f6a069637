#include "tool/ReadingOrder.h"

#include "tool/LineReading.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Tool {

float keyframeTime(std::string_view line) {
    const float time = toText(keyframeTimeText(line)).toFloat();
    return std::isnan(time) ? 0.0F : time;
}

std::vector<std::size_t> readingOrder(const std::vector<std::optional<float>>& times) {
    std::vector<std::size_t> order(times.size());
    std::iota(order.begin(), order.end(), std::size_t(0));
    for (auto run = order.begin(); run != order.end();) {
        run = std::find_if(run, order.end(), [&](std::size_t i) { return times[i].has_value(); });
        const auto end = std::find_if(run, order.end(), [&](std::size_t i) { return !times[i].has_value(); });
        std::stable_sort(run, end, [&](std::size_t a, std::size_t b) { return *times[a] < *times[b]; });
        run = end;
    }
    return order;
}

} // namespace Tool

#include "prm/detail/SourceViews.h"

#include <gtest/gtest.h>

using namespace Prm;
using Mode = MVInterpolationParams::Mode;

namespace {

using Ids = std::vector<quint32>;

TEST(SourceViews, EachModeChoosesItsViews) {
    constexpr quint32 largest = 2147483646;
    const Ids four{0, 4, 8, 12};
    const std::tuple<const char*, Mode, Ids, quint32, Ids> rows[] = {
        {"off", Mode::Off, four, 4, {}},
        {"no data at all", Mode::Smooth, {}, 1, {}},
        {"invalid view", Mode::Linear, four, 0x80000000u, {}},
        {"own data count alone", Mode::Smooth, four, 8, {8}},
        {"largest id", Mode::Linear, {0, largest}, largest - 1, {0, largest}},
        {"nearest, a tie goes to the lower", Mode::Nearest, four, 6, {4}},
        {"smooth, third one below", Mode::Smooth, four, 5, {0, 4, 8}},
        {"smooth, third one above", Mode::Smooth, four, 7, {4, 8, 12}},
        {"smooth, a tie goes to the lower", Mode::Smooth, four, 6, {0, 4, 8}},
    };
    for (const auto& [name, mode, withData, view, expected] : rows) {
        const std::vector<View> list(withData.begin(), withData.end());
        const detail::SourceViews sources = detail::interpolationSourceViews({mode}, View(view), list);
        const std::vector<View> views(sources.begin(), sources.end());
        EXPECT_EQ(views, std::vector<View>(expected.begin(), expected.end())) << name;
    }
}

} // namespace

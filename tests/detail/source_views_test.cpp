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
        {"before the first", Mode::Linear, {3, 5}, 1, {3}},
        {"behind the last", Mode::Smooth, four, 13, {12}},
        {"largest id", Mode::Linear, {0, largest}, largest - 1, {0, largest}},
        {"nearest below", Mode::Nearest, four, 5, {4}},
        {"nearest above", Mode::Nearest, four, 7, {8}},
        {"nearest, a tie goes to the lower", Mode::Nearest, four, 6, {4}},
        {"linear, the two neighbours", Mode::Linear, four, 5, {4, 8}},
        {"smooth between two", Mode::Smooth, {0, 4}, 1, {0, 4}},
        {"smooth, first gap", Mode::Smooth, four, 1, {0, 4, 8}},
        {"smooth, last gap", Mode::Smooth, four, 11, {4, 8, 12}},
        {"smooth, third one below", Mode::Smooth, four, 5, {0, 4, 8}},
        {"smooth, third one above", Mode::Smooth, four, 7, {4, 8, 12}},
        {"smooth, a tie goes to the lower", Mode::Smooth, four, 6, {0, 4, 8}},
    };
    for (const auto& [name, mode, withData, view, expected] : rows) {
        const std::vector<View> list(withData.begin(), withData.end());
        const detail::SourceViews sources = detail::interpolationSourceViews({mode}, View(view), list);
        const std::vector<View> views(sources.begin(), sources.end());
        EXPECT_EQ(views, std::vector<View>(expected.begin(), expected.end())) << name;
        double sum = sources.empty() ? 1 : 0;
        for (int i = 0; i < sources.size(); ++i)
            sum += detail::sourceWeights(sources, View(view))[static_cast<std::size_t>(i)];
        EXPECT_NEAR(sum, 1, 1e-12) << name;
    }
}

} // namespace

#include "prm/Parameter.h"

#include <gtest/gtest.h>

using namespace Prm;

namespace {

using Map = Parameter<int>::FastViewMap;
using Ids = std::vector<quint32>;

constexpr quint32 largest = 2147483646;

/// Every view that was written holds its id, the template 7.
Map mapOf(const Ids& written) {
    Map map(7);
    for (const quint32 id : written)
        map[View(id)].staticValue = static_cast<int>(id);
    return map;
}

void expectViews(const Map& map, const Ids& ids) {
    EXPECT_EQ(map.viewList(), std::vector<View>(ids.begin(), ids.end()));
}

/// What the view shows: to the owner, and to any thread.
int shown(const Map& map, quint32 view) {
    const detail::ReadBlock<int> block(map, View(view));
    EXPECT_EQ(block->staticValue, map.resolve(View(view)).staticValue) << view;
    EXPECT_EQ(block.belongsTo(View(view)), map.findRealViewData(View(view)) != nullptr) << view;
    return block->staticValue;
}

TEST(FastViewMap, WritesMakeDataAndReadsBorrowThem) {
    const std::tuple<const char*, Ids, Ids, std::vector<std::pair<quint32, int>>> rows[] = {
        {"never written", {}, {}, {{0, 7}, {5, 7}, {~0u, 7}}},
        {"view 0", {0}, {0}, {{0, 0}, {1, 0}, {largest, 0}, {~0u, 0}}},
        {"view 0 comes first", {3}, {0, 3}, {{0, 7}, {1, 7}, {3, 3}, {4, 7}}},
        {"any order", {9, 2, 5}, {0, 2, 5, 9}, {{2, 2}, {5, 5}, {9, 9}, {8, 7}, {10, 7}}},
        {"the largest ids", {largest, largest - 1}, {0, largest - 1, largest}, {{largest, largest}, {largest - 2, 7}}},
        {"an invalid view writes view 0", {~0u}, {0}, {{0, -1}, {1, -1}}},
        {"an invalid view writes the source data", {2, ~0u}, {0, 2}, {{0, -1}, {1, -1}, {2, 2}}},
    };
    for (const auto& [name, written, views, shows] : rows) {
        SCOPED_TRACE(name);
        const Map map = mapOf(written);
        expectViews(map, views);
        for (const auto& [view, value] : shows)
            EXPECT_EQ(shown(map, view), value) << view;
    }
}

TEST(FastViewMap, ACopyIsDeepAndTakesTheTemplate) {
    const Map original = mapOf({3, largest});
    Map assigned(99);
    assigned[View(8)];
    assigned = original;
    Map copied(original);
    for (Map* const copy : {&assigned, &copied}) {
        expectViews(*copy, {0, 3, largest});
        EXPECT_EQ(copy->templateData().staticValue, 7);
        (*copy)[View(3)].staticValue = -1;
        EXPECT_EQ(shown(*copy, 3), -1);
    }
    EXPECT_EQ(shown(original, 3), 3);
}

TEST(FastViewMap, InitSourceDataTakesTheNumberOfSlots) {
    Map map = mapOf({0, 2, 5});
    for (const auto& [slots, two, five] :
         {std::tuple(Ids{2}, true, false), {Ids{}, false, false}, {Ids{5}, true, true}}) {
        map.initSourceData(mapOf(slots));
        EXPECT_EQ(map.findRealViewData(View(2)) != nullptr, two) << slots.size();
        EXPECT_EQ(map.findRealViewData(View(5)) != nullptr, five) << slots.size();
    }
    Map empty;
    EXPECT_NO_THROW(empty.initSourceData(Map()));
    try {
        empty.initSourceData(mapOf({0}));
        ADD_FAILURE() << "one slot has nothing to show";
    } catch (const boost::bad_index& error) {
        EXPECT_STREQ(error.what(), "'at()' out of bounds");
    }
}

} // namespace

#include "prm/Parameter.h"

#include <gtest/gtest.h>

using namespace Prm;

namespace {

using Map = Parameter<int>::FastViewMap;
using Ids = std::vector<quint32>;

/// Every view that was written holds its id, the template 7.
Map mapOf(const Ids& written) {
    Map map(7);
    for (const quint32 id : written)
        map[View(id)].staticValue = static_cast<int>(id);
    return map;
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

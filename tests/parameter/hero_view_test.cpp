#include "tests/parameter/EditTable.h"

#include <gtest/gtest.h>

using namespace Prm;

namespace {

using P = Parameter<int>;
using Ids = std::vector<quint32>;

/// Marks every one of the views but the heroes.
void mark(Parameter<bool>& selector, const Ids& views, const Ids& heroes) {
    selector.clearViewData();
    for (const quint32 view : views)
        selector.vSetValue(true, still(view));
    for (const quint32 hero : heroes)
        selector.vSetValue(false, still(hero));
}

TEST(HeroView, IsTheOnlyViewThatIsNotMarked) {
    auto selector = std::make_unique<Parameter<bool>>("selector", false, Splittable);
    P parameter;
    EXPECT_EQ(parameter.heroView(), View::INVALID());
    parameter.setViewSelector(selector.get(), 5);
    const std::tuple<const char*, Ids, Ids, View> rows[] = {{"one of three", {0, 1, 2}, {1}, 1},
                                                            {"two", {0, 1, 2}, {0, 2}, View::INVALID()},
                                                            {"one view", {}, {0}, 0},
                                                            {"all marked", {0, 1}, {}, View::INVALID()},
                                                            {"no views", {}, {}, View::INVALID()},
                                                            {"view 0", {0, 1}, {0}, 0}};
    for (const auto& [name, views, heroes, hero] : rows) {
        mark(*selector, views, heroes);
        EXPECT_EQ(parameter.heroView(), hero) << name;
    }
    P assigned;
    assigned.assignFrom(parameter);
    EXPECT_EQ(assigned.heroView(), View(0));
    EXPECT_EQ(assigned.viewSelectorCompanion(), 5u);
    selector.reset();
    EXPECT_EQ(parameter.heroView(), View::INVALID());
}

TEST(HeroView, ResettingLeavesItsDataAlone) {
    static Parameter<bool> selector("selector", false, Splittable);
    const auto reset = [](P& p, const Words& w) {
        mark(selector, {0, 1, 2}, {w[1].toUInt()});
        p.setViewSelector(&selector);
        p.resetAll();
    };
    checkEdits({{"reset", reset}}, R"(
hero is the first view | ks6 | 0 1=1; 1 1=2; 2 | reset 0 | VIEW_CLEARED VIEW_RESET VIEW_CLEARED VIEW_RESET@1 VIEW_RESET@2 VIEW_REMOVED@2 VIEW_REMOVED@1 | 0(6)
in the middle          | ks6 | 0; 1; 2 | reset 1 | VIEW_RESET VIEW_RESET@1 VIEW_RESET@2 VIEW_REMOVED@2 VIEW_REMOVED | 1(6)
the last view          | ks6 | 0; 1; 2 | reset 2 | VIEW_RESET VIEW_RESET@1 VIEW_RESET@2 VIEW_REMOVED | 1(6); 2(6)
a view without data    | ks6 | 0; 1    | reset 2 | VIEW_RESET VIEW_RESET@1 VIEW_REMOVED@1 | 0(6)
never written          | ks6 |         | reset 0 |  |
static                 | s6  | 0(3)    | reset 0 | VIEW_RESET | 0(6)
)");
}

} // namespace

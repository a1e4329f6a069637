#include "tests/parameter/EditTable.h"

#include <gtest/gtest.h>

using namespace Prm;

namespace {

using P = Parameter<int>;

void copyFromAnother(P& p, const Words& w) {
    const auto source = made("ks", "0 10=1; 4(9) 20=2");
    p.copyViewData(w.view(1), w.view(2), source.get());
}

TEST(ViewData, ComesAndGoes) {
    const Verbs verbs = {
        {"uniquify", [](P& p, const Words& w) { p.uniquifyView(w.view(1)); }},
        {"hero", [](P& p, const Words& w) { return p.initialiseHeroView(w.view(1), w.view(2)); }},
        {"copy", [](P& p, const Words& w) { p.copyViewData(w.view(1), w.view(2), nullptr); }},
        {"copyFrom", copyFromAnother},
        {"copyOther",
         [](P& p, const Words&) { p.copyViewData(View(4), View(0), std::make_unique<Parameter<bool>>().get()); }},
        {"delete", [](P& p, const Words& w) { return p.deleteView(w.view(1)); }},
        {"deleteUnsplittable", [](P& p, const Words& w) { return p.setSplittable(false), p.deleteView(w.view(1)); }},
        {"clear", [](P& p, const Words&) { p.clearViewData(); }},
    };
    checkEdits(verbs, R"(
uniquify                       | ks | 0 10=1            | uniquify 3   | VIEW_ADDED@3 VALUE_CHANGED@3     | 0 10=1; 3 10=1
uniquify an own view           | ks | 0 10=1; 4 20=2    | uniquify 4   |                                  | =
uniquify, never written        | ks |                   | uniquify 3   | VIEW_ADDED@3 VALUE_CHANGED@3     | 0; 3
uniquify view 0, never written | ks |                   | uniquify 0   | VALUE_CHANGED                    | 0
uniquify an invalid view       | ks | 0 10=1            | uniquify -1  |                                  | =
uniquify, unsplittable         | k  | 0 10=1            | uniquify 3   |                                  | =
hero view                      | ks | 0 10=1; 4 20=2    | hero 2 4     | =1 VIEW_ADDED@2 VALUE_CHANGED@2  | 0 10=1; 2 20=2; 4 20=2
hero view, borrowed data       | ks | 0 10=1; 4 20=2    | hero 2 3     | =1 VIEW_ADDED@2 VALUE_CHANGED@2  | 0 10=1; 2 10=1; 4 20=2
hero view, static              | s  | 0; 4(5)           | hero 2 4     | =1 VIEW_ADDED@2 VALUE_CHANGED@2  | 0; 2(5); 4(5)
hero view with own data        | ks | 0 10=1; 4 20=2    | hero 4 0     | =0                               | =
hero view, invalid             | ks | 0 10=1            | hero -1 0    | =0                               | =
hero view, unsplittable        | k  | 0 10=1            | hero 2 0     | =0                               | =
copy                           | ks | 0 10=1; 4 20=2    | copy 4 0     | VALUE_CHANGED                    | 0 20=2; 4 20=2
copy onto itself               | ks | 0 10=1; 4 20=2    | copy 4 4     | VALUE_CHANGED@4                  | =
copy a borrowing view          | ks | 0 10=1; 4 20=2    | copy 2 4     | VALUE_CHANGED@4                  | 0 10=1; 4 10=1
copy from another to a new one | ks |                   | copyFrom 4 1 | VIEW_ADDED@1 VALUE_CHANGED@1     | 0; 1(9) 20=2
copy from another type         | ks | 0 10=1            | copyOther    |                                  | =
copy, unsplittable             | k  | 0 30=1            | copyFrom 4 0 |                                  | =
delete one of two              | ks | 0 10=1; 4 20=2    | delete 4     | =1 VIEW_REMOVED@4                | 0 10=1
delete the source data         | ks | 0 10=1; 4 20=2    | delete 0     | =1 VIEW_REMOVED                  | 4 20=2
delete when unsplittable       | ks | 0 10=1; 4 20=2    | deleteUnsplittable 4 | =1 VIEW_REMOVED@4        | 0 10=1
the only one stays             | ks | 0 10=1            | delete 0     | =0                               | =
delete a borrowing view        | ks | 0 10=1; 4 20=2    | delete 3     | =0                               | =
delete an invalid view         | ks | 0 10=1; 4 20=2    | delete -1    | =0                               | =
clear                          | ks | 0 10=1; 4 20=2    | clear        | VIEW_REMOVED VIEW_REMOVED@4      |
clear nothing                  | ks |                   | clear        |                                  |
)");
}

TEST(ViewData, WhatAParameterOwns) {
    const auto parameter = made("ks6", {});
    const std::vector<View>& views = parameter->viewList();
    EXPECT_TRUE(views.empty() && parameter->numViews() == 0 && !parameter->hasViewData(View(0)));
    parameter->vSetValue(1, still(3));
    parameter->vSetDefault(7);
    parameter->vSetValue(2, still(5));
    // The list that was asked for at first shows the present views.
    EXPECT_EQ(views, (std::vector<View>{View(0), View(3), View(5)}));
    const std::tuple<quint32, bool, int> rows[] = {{0, true, 6},  {1, false, 6},          {3, true, 1},   {5, true, 2},
                                                   {6, false, 6}, {2147483646, false, 6}, {~0u, false, 6}};
    for (const auto& [view, owns, value] : rows) {
        EXPECT_EQ(parameter->hasViewData(View(view)), owns) << view;
        EXPECT_EQ(parameter->staticValue(View(view)), value) << view;
    }
    parameter->vCopyKeyframeDataFrom(made("ks", "0 10=1").get());
    EXPECT_EQ(views.size(), 1u);
    parameter->clearViewData();
    EXPECT_TRUE(views.empty() && parameter->staticValue(View(3)) == 7);
}

TEST(ViewData, SplittableIsNothingButAFlag) {
    const auto parameter = made("ks", "0 10=1; 4 20=2 30=3");
    EXPECT_EQ(changesDuring(*parameter, [&] { parameter->setSplittable(false); }), "");
    EXPECT_TRUE(!parameter->splittable() && parameter->isSplit() && parameter->hasViewData(View(4)));
    EXPECT_EQ(parameter->value(at(20, 4)), 1);
    EXPECT_EQ(parameter->keyframeCount(View(4)), 2u);
    EXPECT_EQ(parameter->keyframeCount(View(9)), 1u);
}

} // namespace

#include "tests/support/Library.h"

#include <gtest/gtest.h>

using namespace Prm;

namespace {

// By the few ways in which they can be broken from outside.
TEST(Invariants, AreSeenToBeBroken) {
    Number x("x");
    CompoundParameter position("position");
    ParameterSet set("set");
    ParameterSet above("above");
    position.addParameter(x);
    set.addParameter(position);
    above.addParameterSet(set);
    key(x, {{0, 1.}, {4, 2.}, {6, 3.}});
    const auto broken = [](const auto& what) { return detail::verify(what).toStdString(); };
    EXPECT_EQ(broken(above), "");
    EXPECT_EQ(broken(x), "");

    x.adjustKeyframesTime([](Time time) { return time > Time::fromInt(4) ? time : Time::fromInt(4); });
    EXPECT_EQ(broken(above), "x: keyframes are not in ascending order of valid times");
    x.adjustKeyframesTime([](Time) { return Time::INVALID; });
    EXPECT_EQ(broken(x), "x: keyframes are not in ascending order of valid times");
    x.clearViewData();
    position.setUpstreamParameters({});
    EXPECT_EQ(broken(above), "position: the compound does not listen to one of its parts");
    EXPECT_EQ(broken(position), broken(set));
}

} // namespace

// Questions about a compound are questions about its parts.

#include "prm/Answers.h"
#include "prm/ChangedSince.h"
#include "tests/compound/Position.h"
#include "tests/support/Test.h"

using namespace Prm;

namespace {

TEST(CompoundAnswers, AreThoseOfAllParts) {
    Position p;
    Number held("held", 7);
    p.whole.addParameter(held);
    EXPECT_EQ(constantAround(p.whole, at(3)), TimeSpan::at(Time::fromInt(3))) << "x moves";
    EXPECT_EQ(constantAround(p.whole, at(7)), TimeSpan::at(Time::fromInt(7))) << "y moves";
    p.y->vSetInterpolation(Interpolation::Constant, at(5));
    p.x->vSetExtrapolationAfter(Extrapolation::Constant);
    EXPECT_EQ(constantAround(p.whole, at(7)), TimeSpan({5, 9, true, false}));
    EXPECT_TRUE(isConstant(p.whole, View(), {6, 8, true, true}));
    EXPECT_FALSE(isConstant(p.whole, View(), {6, 9, true, true}));
    EXPECT_TRUE(isConstant(p.whole, View(), {3, 3, true, true})) << "one time";
}

TEST(CompoundAnswers, StaticParametersAreConstant) {
    const OwnedStaticParameter<unsigned int> count("count");
    EXPECT_EQ(constantAround(count, at(3)), TimeSpan::all());
    EXPECT_TRUE(isConstant(count, View(), TimeSpan::all()));
}

TEST(CompoundAnswers, CompoundsDifferWhereTheirPartsDo) {
    Position before;
    Position after;
    after.y->vSetValue(5, at(9));
    const Extent extent = differenceOf(before.whole, after.whole);
    EXPECT_EQ(extent.in(after.y.get(), View()), extent.in(&after.whole, View()));
    EXPECT_TRUE(extent.touches(&after.whole, at(7)));
    EXPECT_FALSE(extent.touches(&after.whole, at(4)));
    EXPECT_TRUE(extent.in(after.x.get(), View()).isEmpty());
    EXPECT_TRUE(differenceOf(before.whole, before.whole).isEmpty());

    Number third("third");
    after.whole.addParameter(third);
    EXPECT_TRUE(differenceOf(before.whole, after.whole).touches(&after.whole, at(4))) << "other parts";
    EXPECT_TRUE(differenceOf(*before.x, after.whole).touches(&after.whole, at(4))) << "another kind";
}

} // namespace

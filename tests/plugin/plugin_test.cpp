// A value type that the library does not know, in a shared object that this program links to.

#include "tests/plugin/Colour.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

using namespace Prm;

namespace {

const Colour black{};
const Colour light{1, 0.5, 0.25};

TEST(Plugin, ItsTypeHasCurvesViewsTextAndAMetaType) {
    CurveParameter<Colour> colour(QStringLiteral("colour"), light);
    key(colour, {{0, black}, {10, light}});
    key(colour, {{0, light}}, 4);
    colour.setViewInterpolation({MVInterpolationParams::Linear});
    EXPECT_EQ(colour.value(at(5)), (Colour{0.5, 0.25, 0.125}));
    EXPECT_EQ(colour.value(at(0, 2)), (Colour{0.5, 0.25, 0.125}));
    EXPECT_EQ(colour.sampleValues(Frame(), Frame::fromUInt(10), View()).at(5), colour.value(at(5)));
    const int metaType = colour.qMetaType();
    EXPECT_EQ(metaType, QMetaType::type("Prm::Parameter<Colour>"));
    EXPECT_NE(metaType, QMetaType::UnknownType);
    EXPECT_EQ(qvariant_cast<Colour>(colour.variantValue(at(10))), light);

    QString written;
    QTextStream stream(&written);
    colour.bStreamOut(stream, QString(), true);
    EXPECT_TRUE(written.contains(QStringLiteral("1 0.5 0.25"))) << written.toStdString();
}

TEST(Plugin, ParametersCrossTheBorder) {
    NumericParameter<double> brightness;
    key(brightness, {{0, 0.}, {10, 1.}});
    DimmedColour dimmed(brightness);
    key(dimmed, {{0, light}, {10, light}});
    EXPECT_EQ(dimmed.value(at(5)), (Colour{0.5, 0.25, 0.125}));
    const ParameterWithoutType& untyped = dimmed;
    EXPECT_NE(dynamic_cast<const Parameter<Colour>*>(&untyped), nullptr);
    CurveParameter<Colour> copy;
    copy.assignFrom(untyped);
    EXPECT_EQ(copy.value(at(5)), light);
}

} // namespace

#include "prm/AnimationState.h"
#include "prm/Context.h"
#include "prm/Interpolation.h"
#include "prm/ParameterWithoutTypeBase.h"
#include "prm/ProjectFileVersion.h"
#include "prm/ProxyScale.h"

#include <QTextStream>
#include <gtest/gtest.h>

#include <limits>

using namespace Prm;

namespace {

const double noNumber = std::numeric_limits<double>::quiet_NaN();
const double infinite = std::numeric_limits<double>::infinity();
constexpr quint32 invalid = 0xFFFFFFFFu;

// Used before main: right only if they are constants in every translation unit.
const bool constantsAreThere = Time::LAST.toDouble() == 2147483646.0 && Frame::MAX.toUInt() == 2147483644u;

struct TimeCase {
    const char* name;
    Time time;
    double expected;
};

class TimeFrom : public testing::TestWithParam<TimeCase> {};

TEST_P(TimeFrom, Number) {
    EXPECT_EQ(GetParam().time.toDouble(), GetParam().expected);
    EXPECT_EQ(GetParam().time.isValid(), GetParam().expected != Time::INVALID_TIME_VALUE);
}

INSTANTIATE_TEST_SUITE_P(
    Values, TimeFrom,
    testing::Values(TimeCase{"Negative", Time::fromDouble(-5.5), -5.5}, TimeCase{"Last", Time::LAST, 2147483646.0},
                    TimeCase{"First", Time::FIRST, 2147483645.0},
                    TimeCase{"AboveLast", Time::fromDouble(2147483646.5), Time::INVALID_TIME_VALUE},
                    TimeCase{"NoNumber", Time::fromDouble(noNumber), Time::INVALID_TIME_VALUE},
                    TimeCase{"Infinite", Time::fromFloat(std::numeric_limits<float>::infinity()), 4294967295.0},
                    TimeCase{"MinusInfinite", Time::fromDouble(-infinite), -infinite},
                    TimeCase{"Unsigned", Time::fromUInt(invalid), Time::INVALID_TIME_VALUE},
                    TimeCase{"Int", Time::fromInt(-2147483647), -2147483647.0},
                    TimeCase{"Tag", Time(Time::INVALID), Time::INVALID_TIME_VALUE},
                    TimeCase{"Sum", Time::fromInt(2147483646) + 1.0, Time::INVALID_TIME_VALUE}),
    [](const auto& row) { return row.param.name; });

struct FrameCase {
    const char* name;
    Frame frame;
    quint32 expected;
};

Frame frameAt(double time) {
    return Context(Time::fromDouble(time));
}

class FrameFrom : public testing::TestWithParam<FrameCase> {};

TEST_P(FrameFrom, Number) {
    EXPECT_EQ(GetParam().frame.toUInt(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Values, FrameFrom,
                         testing::Values(FrameCase{"Largest", Frame::fromUInt(2147483646), 2147483646},
                                         FrameCase{"TooLarge", Frame::fromUInt(2147483647), invalid},
                                         FrameCase{"IntTooLarge", Frame::fromInt(2147483647), invalid},
                                         FrameCase{"IntMinus5", Frame::fromInt(-5), 4294967291u},
                                         FrameCase{"FloatBound", Frame::fromFloat(2147483648.0f), 2147483648u},
                                         FrameCase{"FloatAbove", Frame::fromFloat(2147484000.0f), invalid},
                                         FrameCase{"FloatMinus", Frame::fromFloat(-2.9f), 4294967294u},
                                         FrameCase{"FloatFarBelow", Frame::fromFloat(-1e30f), invalid},
                                         FrameCase{"DoubleBound", Frame::fromDouble(2147483647.0), invalid},
                                         FrameCase{"DoubleNoNumber", Frame::fromDouble(noNumber), invalid},
                                         FrameCase{"Context", frameAt(12.9), 12},
                                         FrameCase{"ContextMinus", frameAt(-0.5), 0},
                                         FrameCase{"ContextMinusOne", frameAt(-1.5), invalid},
                                         FrameCase{"ContextFarBelow", frameAt(-infinite), invalid},
                                         FrameCase{"ContextInvalid", Frame(Context(Context::INVALID_TIME)), invalid}),
                         [](const auto& row) { return row.param.name; });

} // namespace

TEST(Frame, StreamsIgnoreTheStreamsOwnFormat) {
    QString text;
    QTextStream out(&text);
    out.setIntegerBase(16);
    out.setFieldWidth(9);
    out << Frame::fromUInt(255);
    out.setFieldWidth(0);
    out << 255;
    EXPECT_EQ(text, "255ff");
    QString number("2147483647");
    QTextStream numbers(&number);
    Frame frame;
    numbers >> frame;
    EXPECT_EQ(frame.toUInt(), 2147483647u);
}

TEST(Constants, AreThereBeforeMain) {
    EXPECT_TRUE(constantsAreThere);
}

struct PrefixCase {
    const char* name;
    const char* text;
    const char* rest;
    quint32 view; // 77 for none
};

class ViewPrefix : public testing::TestWithParam<PrefixCase> {};

TEST_P(ViewPrefix, IsTakenOffOnce) {
    QString text = QString::fromUtf8(GetParam().text);
    View view(77);
    EXPECT_EQ(View::extractStringPrefix(text, view), GetParam().view != 77);
    EXPECT_EQ(text, QString::fromUtf8(GetParam().rest));
    EXPECT_EQ(view.id(), GetParam().view);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ViewPrefix,
    testing::Values(PrefixCase{"Plain", "view[12].value", "value", 12},
                    PrefixCase{"Twice", "view[1].view[2].x", "view[2].x", 1}, PrefixCase{"Zeros", "view[007].", "", 7},
                    PrefixCase{"Largest", "view[2147483646].x", "x", 2147483646u},
                    PrefixCase{"TooLarge", "view[2147483647].x", "view[2147483647].x", 77},
                    PrefixCase{"FarTooLarge", "view[18446744073709551617].x", "view[18446744073709551617].x", 77},
                    PrefixCase{"Case", "View[1].x", "View[1].x", 77}, PrefixCase{"Empty", "view[].x", "view[].x", 77},
                    PrefixCase{"Sign", "view[-1].x", "view[-1].x", 77}, PrefixCase{"NoDot", "view[1]x", "view[1]x", 77},
                    PrefixCase{"Cut", "view[1", "view[1", 77},
                    PrefixCase{"OtherDigits", "view[\u0661].x", "view[\u0661].x", 77}),
    [](const auto& row) { return row.param.name; });

TEST(View, PrefixesAreWrittenForEveryId) {
    EXPECT_EQ(View(12).toString(), "view[12].");
    EXPECT_EQ(View::INVALID().toString(), "view[4294967295].");
}

TEST(AnimationFlags, AreFourBits) {
    EXPECT_EQ(AnimationFlags().packed(), 3u);
    EXPECT_FALSE(AnimationFlags().allViews());
    EXPECT_TRUE(AnimationFlags(4).allViews());
    EXPECT_EQ(AnimationFlags(0xFF).packed(), 15u);
    EXPECT_EQ(AnimationState().views(), std::vector<View>{View(0)});
}

TEST(Context, IsKnownToQt) {
    const int id = QMetaType::type("Prm::Context");
    ASSERT_NE(id, int(QMetaType::UnknownType));
    const Context context(Time::fromInt(3), View(2), AnimationFlags(5));
    EXPECT_EQ(QVariant(id, &context).value<Context>(), context);
}

TEST(KeyframeIndex, WithoutParameterOrViewHasNoTime) {
    const ParameterWithoutTypeBase parameter(false, false, nullptr);
    for (const KeyframeIndex& index :
         {KeyframeIndex(nullptr, View(1), 0), KeyframeIndex(&parameter, View::INVALID(), 0)})
        EXPECT_EQ(index.toContext(), Context(Context::INVALID_TIME));
    EXPECT_EQ(KeyframeIndex(&parameter, View(1), 0).toContext(), Context(Time(), View(1)));
}

TEST(ProxyScale, DividesAsIntegers) {
    EXPECT_EQ(ProxyScale(2).toProxySize(QSize(1919, 1081)), QSize(479, 270));
    EXPECT_EQ(ProxyScale(ProxyScale::Half).toProxySize(QSize(-3, 3)), QSize(-1, 1));
    EXPECT_EQ(ProxyScale::SystemProxyScale.toProxySize(QSize(5, 7)), QSize(5, 7));
    EXPECT_THROW(ProxyScale(7).toProxySize(QSize(1, 1)), std::range_error);
}

struct KindCase {
    const char* name;
    const char* text;
    quint32 interpolation; // 0 for refused
    quint32 extrapolation;
};

class KindName : public testing::TestWithParam<KindCase> {};

TEST_P(KindName, IsRead) {
    Interpolation interpolation{};
    Extrapolation extrapolation{};
    EXPECT_EQ(bStringToInterpolationType(GetParam().text, interpolation), GetParam().interpolation != 0);
    EXPECT_EQ(bStringToExtrapolationType(GetParam().text, extrapolation), GetParam().extrapolation != 0);
    EXPECT_EQ(static_cast<quint32>(interpolation), GetParam().interpolation);
    EXPECT_EQ(static_cast<quint32>(extrapolation), GetParam().extrapolation);
}

INSTANTIATE_TEST_SUITE_P(Texts, KindName,
                         testing::Values(KindCase{"Constant", "Constant", 1, 1}, KindCase{"Lower", "linear", 0, 0},
                                         KindCase{"Bezier", "Bezier", 3, 0}, KindCase{"Custom", "Custom", 4, 3},
                                         KindCase{"Number", "Custom2", 6, 5},
                                         KindCase{"Inside", "xCustom7Custom9", 11, 10},
                                         KindCase{"NoNumber", "Custom-1", 4, 3},
                                         KindCase{"Sum", "Custom4294967293", 4, 3},
                                         KindCase{"Fits", "Custom4294967291", 4294967295u, 4294967294u}),
                         [](const auto& row) { return row.param.name; });

TEST(KindName, IsWritten) {
    const char* const interpolations[] = {"Constant", "Constant", "Linear", "Bezier", "Custom0", "Constant"};
    const char* const extrapolations[] = {"Constant", "Constant", "Linear", "Custom0", "Constant"};
    for (quint32 i = 0; i < 6; ++i)
        EXPECT_EQ(qstrInterpolationTypeString(static_cast<Interpolation>(i)), interpolations[i]);
    for (quint32 i = 0; i < 5; ++i)
        EXPECT_EQ(qstrExtrapolationTypeString(static_cast<Extrapolation>(i)), extrapolations[i]);
}

TEST(BuildVersion, ReadsAndCompares) {
    EXPECT_EQ(BuildVersion("4", "12").majorNumber(), 0);
    EXPECT_EQ(BuildVersion("4", "12").buildNumber(), 12);
    EXPECT_EQ(BuildVersion("4.1.2 beta", "").patchNumber(), 2);
    EXPECT_LT(BuildVersion("4.1", "12.3"), BuildVersion("4.1", "13"));
    EXPECT_LT(BuildVersion("4.1", "12"), BuildVersion("4.2", "0"));
    EXPECT_EQ(BuildVersion("4.1", "12.3"), BuildVersion("4.1.0", "12"));
}

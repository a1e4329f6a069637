#include "prm/ProxyScale.h"
#include "tests/support/Test.h"

using namespace Prm;

namespace {

constexpr quint32 invalid = 0xFFFFFFFFu;

// Used before main: right only if they are constants in every translation unit.
const bool constantsAreThere = Time::LAST.toDouble() == 2147483646.0 && Frame::MAX.toUInt() == 2147483644u;

TEST(Time, FromNumbers) {
    EXPECT_TRUE(constantsAreThere);
    const std::tuple<const char*, Time, double> rows[] = {
        {"negative", Time::fromDouble(-5.5), -5.5},
        {"above the last", Time::fromDouble(2147483646.5), invalid},
        {"no number", Time::fromDouble(NAN), invalid},
        {"infinite", Time::fromFloat(INFINITY), invalid},
        {"minus infinite", Time::fromDouble(-INFINITY), -INFINITY},
        {"invalid", Time::fromUInt(invalid), invalid},
        {"sum", Time::fromInt(2147483646) + 1.0, invalid},
        {"written with six digits", writtenTime(Time::fromInt(-1234567)), -1234570},
        {"read in single precision", writtenTime(Time::fromDouble(0.1)), static_cast<double>(0.1F)},
        {"written out of range", writtenTime(Time::INVALID), invalid},
    };
    for (const auto& [name, time, expected] : rows) {
        EXPECT_EQ(time.toDouble(), expected) << name;
        EXPECT_EQ(time.isValid(), expected != invalid) << name;
    }
}

TEST(Frame, FromNumbers) {
    const auto at = [](double time) { return Frame(Context(Time::fromDouble(time))); };
    const std::tuple<const char*, Frame, quint32> rows[] = {
        {"largest", Frame::fromUInt(2147483646), 2147483646},
        {"too large", Frame::fromUInt(2147483647), invalid},
        {"negative int", Frame::fromInt(-5), 4294967291u},
        {"float at the bound", Frame::fromFloat(2147483648.0f), 2147483648u},
        {"float above it", Frame::fromFloat(2147484000.0f), invalid},
        {"negative float", Frame::fromFloat(-2.9f), 4294967294u},
        {"float far below", Frame::fromFloat(-1e30f), invalid},
        {"no number", Frame::fromDouble(NAN), invalid},
        {"of a context", at(12.9), 12},
        {"just below zero", at(-0.5), 0},
        {"minus one", at(-1), invalid},
        {"of a context without time", Frame(Context(Context::INVALID_TIME)), invalid},
    };
    for (const auto& [name, frame, expected] : rows)
        EXPECT_EQ(frame.toUInt(), expected) << name;
}

TEST(Context, HasFourFlagsAndIsKnownToQt) {
    EXPECT_TRUE(AnimationFlags(4).allViews() && !AnimationFlags().allViews());
    EXPECT_EQ(AnimationFlags(0xFF).packed(), 15u);
    EXPECT_NE(QMetaType::type("Prm::Context"), QMetaType::UnknownType);
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

TEST(KindNames, AreReadAndWritten) {
    // 0 is refused.
    const std::tuple<const char*, quint32, quint32> rows[] = {
        {"Constant", 1, 1}, {"linear", 0, 0},           {"Bezier", 3, 0},
        {"Custom", 4, 3},   {"Custom2", 6, 5},          {"xCustom7Custom9", 11, 10},
        {"Custom-1", 4, 3}, {"Custom4294967293", 4, 3}, {"Custom4294967291", 4294967295u, 4294967294u},
    };
    for (const auto& [text, inside, outside] : rows) {
        Interpolation interpolation{};
        Extrapolation extrapolation{};
        EXPECT_EQ(bStringToInterpolationType(text, interpolation), inside != 0) << text;
        EXPECT_EQ(bStringToExtrapolationType(text, extrapolation), outside != 0) << text;
        EXPECT_EQ(static_cast<quint32>(interpolation), inside) << text;
        EXPECT_EQ(static_cast<quint32>(extrapolation), outside) << text;
    }
}

TEST(BuildVersion, ReadsAndCompares) {
    EXPECT_EQ(BuildVersion("4", "12").majorNumber(), 0);
    EXPECT_EQ(BuildVersion("4.1.2 beta", "").patchNumber(), 2);
    EXPECT_LT(BuildVersion("4.1", "12.3"), BuildVersion("4.1", "13"));
    EXPECT_LT(BuildVersion("4.1", "12"), BuildVersion("4.2", "0"));
    EXPECT_EQ(BuildVersion("4.1", "12.3"), BuildVersion("4.1.0", "12"));
}

} // namespace

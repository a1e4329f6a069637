// What fuzz/answers_fuzz.cpp cannot see: results at ends and corners, how few points a curve needs, what is in a hash.

#include "prm/Answers.h"
#include "prm/CurveKinds.h"
#include "prm/RangeHash.h"
#include "tests/support/Test.h"

using namespace Prm;

namespace {

const IType held(Interpolation::Constant);
const IType line(Interpolation::Linear);
const IType ease(Interpolation::Bezier, 1 / 3., 0, 2 / 3., 1);

template <class Kind> struct Curve : Kind {
    struct Keyframe {
        double time;
        double value;
        IType shape = line;
    };

    Curve(std::initializer_list<Keyframe> keyframes, Extrapolation after = Extrapolation::Constant) {
        for (const Keyframe& one : keyframes) {
            this->setVariantValue(one.value, at(one.time));
            this->vSetInterpolationData(one.shape, this->keyframeCount(View()) - 1, View());
        }
        this->vSetExtrapolationAfter(after);
    }
};

/// Whose classes compute the values.
struct Hooked : Number {
    double extrapolateValue(const BoundingKeyframes&, const Context&, Cache*) const override { return 7; }
};
struct OtherwiseHooked : Hooked {};

const Curve<Number> eased{{{0, 0, ease}, {10, 10}}, Extrapolation::Linear};
const Curve<Number> sharp{{{0, 0, {Interpolation::Bezier, 0, 1, 1, 0}}, {10, 10, held}, {20, 0}},
                          Extrapolation::Linear};
const Curve<Number> zigzag{{{0, 0}, {10, 10}, {20, -5}}, Extrapolation::Linear};

TEST(Answers, BoundsAndSlopes) {
    EXPECT_EQ(bounds(zigzag, View(), TimeSpan::all()), std::pair(-infinity, 10.));
    EXPECT_EQ(bounds(zigzag, View(), {4, 4, true, false}), std::pair(4., 4.)) << "no time";
    const std::tuple<const char*, const Number&, double, double> slopes[] = {
        {"flat start", eased, 0, 0},      {"middle", eased, 5, 1.5},     {"outside", eased, 11, 0},
        {"corner", zigzag, 10, -1.5},     {"last", zigzag, 20, -1.5},    {"held", sharp, 10, 0},
        {"vertical", sharp, 0, infinity}, {"before all", zigzag, -1, 0},
    };
    for (const auto& [name, parameter, time, expected] : slopes)
        EXPECT_DOUBLE_EQ(slope(parameter, at(time)), expected) << name;
}

TEST(Answers, AHostsHooksAreNotGuessed) {
    const Curve<Hooked> hooked{{{0, 1}, {10, 1}}};
    const TimeSpan span{0, 1, true, true};
    EXPECT_EQ(constantAround(hooked, at(5)), TimeSpan::at(Time::fromInt(5)));
    EXPECT_FALSE(isConstant(hooked, View(), span));
    EXPECT_EQ(bounds(hooked, View(), span).second, infinity);
    EXPECT_EQ(polyline(hooked, View(), span, 1).size(), 1025);
    Hooked endless;
    key(endless, {{-infinity, 1.}, {5, 2.}});
    for (const auto& [time, value] : polyline(endless, View(), TimeSpan::all(), 1))
        EXPECT_LE(time.toDouble(), 5);
    EXPECT_EQ(slope(hooked, at(20)), 0);
}

TEST(Answers, CurvesAreReducedToWhatCanBeSeen) {
    const Curve<Number> stepped{{{0, 0, held}, {10, 5}, {20, 10}, {30, 15}}};
    QVector<CurvePoint<double>> expected{
        {Time(), 0.0}, {Time::fromInt(10), 0.0}, {Time::fromInt(10), 5.0}, {Time::fromInt(30), 15.0}};
    EXPECT_EQ(polyline(stepped, View(), TimeSpan::all(), 0.1), expected);
    Number many;
    for (int i = 0; i < 10000; ++i)
        many.vSetValue(i % 7, at(i));
    EXPECT_GE(polyline(many, View(), TimeSpan::all(), 0.1).size(), 2800);
    EXPECT_LE(polyline(many, View(), TimeSpan::all(), 0.1, 100).size(), 401);
    EXPECT_EQ(sampleValues(many, View(), Time::fromInt(-2), 1, 5), (QVector<double>{0, 0, 0, 1, 2}));
    for (const double handle : {double{NAN}, 1.7e308, -infinity, 1e201}) {
        const IType wild(Interpolation::Bezier, 1e-9, handle, 0, 0);
        const Curve<Number> number{{{0, 0, wild}, {9, 1}}};
        EXPECT_LE(polyline(number, View(), TimeSpan::all(), 0.1).size(), 3) << handle;
    }
    const Curve<NumericParameter<int>> whole{{{0, 0, {Interpolation::Bezier, 0.3, NAN, 0.6, 1}}, {9, 1}}};
    EXPECT_LE(polyline(whole, View(), TimeSpan::all(), 0.1).size(), 6);
    // Each step is two points.
    const Curve<NumericParameter<int>> steep{{{0, 0}, {1, 19000}}};
    EXPECT_EQ(polyline(steep, View(), TimeSpan::all(), 0.1).size(), 38002);
    const std::pair<TimeSpan, int> spans[] = {{{50, infinity}, 1}, {{NAN, 5}, 0}, {{infinity, -infinity}, 0}};
    for (const auto& [span, size] : spans)
        EXPECT_EQ(polyline(stepped, View(), span, 0.1).size(), size) << span.from;
}

TEST(Answers, HashesOfSetsAreOfAllThatTheyHold) {
    Number number("number", 3);
    CompoundParameter pair("pair");
    NumericParameter<int> part("part", 4);
    OwnedStaticParameter<unsigned int> count("count", 5);
    ParameterSet set("set");
    ParameterSet root;
    pair.addParameter(part);
    set.addBasicParameter(count);
    root.addParameter(pair);
    root.addParameter(number);
    root.addParameterSet(set);
    QString seen;
    root.forEachBasicParameter([&](const BasicParameter* member) { seen += member->scriptName() + ' '; });
    EXPECT_EQ(seen, "pair part number count ");
    QStringList all;
    /// Whether the hashes are others than before.
    const auto change = [&](const std::function<void()>& act) {
        act();
        all << hashOf([&](Bsc::Hash& hash) {
            hashRange(hash, root, View(), {-5, 5, true, true});
            hashAt(hash, root, at(-2.5));
        });
        return all.removeDuplicates() == 0;
    };
    EXPECT_TRUE(change([] {}));
    EXPECT_FALSE(change([&] { number.setScriptName("other"); }));
    EXPECT_TRUE(change([&] { count.setValue(6); }));
    EXPECT_TRUE(change([&] { part.vSetValue(5, at(-2.5)); }));
    EXPECT_FALSE(change([&] { part.setSplittable(false); })) << "where values are stored";
    EXPECT_TRUE(change([&] { key(number, {{-5, 3.}, {5, 4.}}); }));
    EXPECT_TRUE(change([&] { set.addParameter(number); }));
    EXPECT_TRUE(change([&] { pair.addParameter(number); })) << "where it is listed";
}

/// The shape of the first segment.
template <int x1, int y1> void bend(Number& number) {
    number.vSetInterpolationData({Interpolation::Bezier, x1 / 10., y1 / 10., 0.7, 0.9}, 0, View());
}
template <Interpolation kind, int x1> void useKind(Number& number) {
    number.vSetInterpolationData({kind, x1 / 1.}, 0, View());
}
template <Extrapolation kind> void useOutside(Number& number) {
    number.vSetExtrapolationBefore(kind);
}
/// From 1 to 2 at a time, and to 3 at 8.
template <int time> void step(Number& number) {
    number.vDeleteAllKeyframes(View());
    number.vSetDefaultInterpolation(Interpolation::Constant);
    key(number, {{-20, 1.}, {time, 2.}, {8, 3.}});
}
void repeat(Number& number) {
    key(number, {{2, 1.}});
}
template <int sign> void useZero(Number& number) {
    number.vSetValue(sign * 0., at(0));
}
/// What must make no difference in the span.
template <class HashIn> void changeNothing(Number& number, const TimeSpan& span, const HashIn& hashIn) {
    const QString hash = hashIn(number, span, 0);
    Number tied;
    EXPECT_TRUE(number.bAddConstrainedParameter(&tied));
    EXPECT_EQ(hashIn(tied, span, 0), hash);
    number.setScriptName("other");
    number.hide(true);
    number.uniquifyView(View(1));
    // A custom kind shows any of the keyframes.
    if (number.extrapolationBefore() < Extrapolation::Custom0)
        number.vSetValue(8, at(30, 1));
    EXPECT_EQ(hashIn(number, span, 1), hash);
}

TEST(Answers, HashesOfSpansAreOfTheirValues) {
    constexpr auto first = Interpolation::Custom0;
    constexpr auto second = static_cast<Interpolation>(5);
    constexpr auto firstOutside = Extrapolation::Custom0;
    constexpr auto secondOutside = static_cast<Extrapolation>(4);
    for (const auto kind : {first, second})
        registerInterpolation(kind, [](const IType& shape, double x) { return x * shape.x1; });
    for (const auto kind : {firstOutside, secondOutside})
        registerExtrapolation(kind, [](Time time, Time, Time) { return time + 10; });
    const TimeSpan early{-4, -1, true, true};
    const TimeSpan inside{0, 10, true, true};
    using Make = void (*)(Number&);
    const std::tuple<const char*, TimeSpan, Make, Make, bool> rows[] = {
        {"the sign of 0", inside, useZero<1>, useZero<-1>, false},
        {"a handle", inside, bend<2, 3>, bend<2, 4>, true},
        {"a handle that is held", inside, bend<-5, 3>, bend<0, 3>, false},
        {"the slope before the first keyframe", early, bend<2, 3>, bend<2, 4>, true},
        {"the same slope", early, bend<2, 3>, bend<4, 6>, false},
        {"the kind of a segment", inside, useKind<first, 1>, useKind<second, 1>, true},
        {"a number of a line", inside, useKind<Interpolation::Linear, 1>, useKind<Interpolation::Linear, 2>, false},
        {"a number of a custom kind", inside, useKind<first, 1>, useKind<first, 2>, true},
        {"the kind outside", early, useOutside<firstOutside>, useOutside<secondOutside>, true},
        {"a segment that it shows", early, useOutside<firstOutside>, bend<2, 3>, true},
        {"the time of a step", inside, step<5>, step<6>, true},
        {"the time of a step before the span", inside, step<-5>, step<-6>, false},
        {"a keyframe that repeats the value", inside, step<5>, repeat, false},
    };
    const auto hashIn = [](const Number& number, const TimeSpan& span, quint32 view = 0) {
        return hashOf([&](Bsc::Hash& hash) { hashRange(hash, number, View(view), span); });
    };
    for (const auto& [name, span, former, now, differs] : rows) {
        Number number;
        key(number, {{0, 1.}, {10, 2.}});
        number.vSetExtrapolationBefore(Extrapolation::Linear);
        former(number);
        const QString hash = hashIn(number, span);
        now(number);
        EXPECT_EQ(hashIn(number, span) != hash, differs) << name;
        changeNothing(number, span, hashIn);
    }
    Number blended;
    blended.setViewInterpolation({MVInterpolationParams::Linear});
    for (const quint32 view : {0u, 3u})
        key(blended, {{0, 1. + view}, {10, 2.}}, view);
    EXPECT_NE(hashIn(blended, inside, 1), hashIn(blended, inside, 2)) << "weights";
    const Curve<Hooked> hooked{{{0, 1}, {10, 2}}};
    EXPECT_NE(hashIn(hooked, inside), hashIn(hooked, inside, 1)) << "the view that a class is asked for";
    EXPECT_NE(hashIn(hooked, inside), hashIn(Curve<OtherwiseHooked>{{{0, 1}, {10, 2}}}, inside)) << "the class";
    for (const auto kind : {first, second})
        registerInterpolation(kind, {});
    for (const auto kind : {firstOutside, secondOutside})
        registerExtrapolation(kind, {});
}

} // namespace

// What fuzz/answers_fuzz.cpp cannot see: results at ends and corners, how few points a curve needs, what is in a hash.

#include "prm/Answers.h"
#include "prm/RangeHash.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

#include <limits>

using namespace Prm;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

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
    struct Hooked : Number {
        using Number::Number;
        double extrapolateValue(const BoundingKeyframes&, const Context&, Cache*) const override { return 7; }
    };
    const Curve<Hooked> hooked{{{0, 1}, {10, 1}}};
    const TimeSpan span{0, 1, true, true};
    EXPECT_EQ(constantAround(hooked, at(5)), TimeSpan::at(Time::fromInt(5)));
    EXPECT_FALSE(isConstant(hooked, View(), span));
    EXPECT_EQ(bounds(hooked, View(), span).second, infinity);
    EXPECT_EQ(polyline(hooked, View(), span, 1).size(), 1025);
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
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    for (const double handle : {none, 1.7e308, -infinity, 1e201}) {
        const IType wild(Interpolation::Bezier, 1e-9, handle, 0, 0);
        const Curve<Number> number{{{0, 0, wild}, {9, 1}}};
        EXPECT_LE(polyline(number, View(), TimeSpan::all(), 0.1).size(), 3) << handle;
    }
    const Curve<NumericParameter<int>> whole{{{0, 0, {Interpolation::Bezier, 0.3, none, 0.6, 1}}, {9, 1}}};
    EXPECT_LE(polyline(whole, View(), TimeSpan::all(), 0.1).size(), 6);
    // Each step is two points.
    const Curve<NumericParameter<int>> steep{{{0, 0}, {1, 19000}}};
    EXPECT_EQ(polyline(steep, View(), TimeSpan::all(), 0.1).size(), 38002);
    const std::pair<TimeSpan, int> spans[] = {{{50, infinity}, 1}, {{none, 5}, 0}, {{infinity, -infinity}, 0}};
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
        Bsc::Hash range;
        Bsc::Hash moment;
        hashRange(range, root, View(), {-5, 5, true, true});
        hashAt(moment, root, at(-2.5));
        all << range.result().toString() + moment.result().toString();
        return all.removeDuplicates() == 0;
    };
    EXPECT_TRUE(change([] {}));
    EXPECT_FALSE(change([&] { number.setScriptName("other"); }));
    EXPECT_TRUE(change([&] { count.setValue(6); }));
    EXPECT_TRUE(change([&] { part.vSetValue(5, at(-2.5)); }));
    EXPECT_FALSE(change([&] { part.setSplittable(false); })) << "where values are stored";
    EXPECT_TRUE(change([&] { key(number, {{-5, 3.}, {5, 4.}}); }));
    EXPECT_TRUE(change([&] { set.addParameter(number); }));
    const auto hashOf = [](const Number& curve) {
        Bsc::Hash hash;
        hashRange(hash, curve, View(), {0, 10, true, true});
        return hash.result().toString();
    };
    EXPECT_EQ(hashOf(Curve<Number>{{{0, 0.}, {10, 5}}}), hashOf(Curve<Number>{{{0, -0.}, {10, 5}}}));
    const auto bent = [&](double y1) {
        return hashOf(Curve<Number>{{{0, 0, {Interpolation::Bezier, 0.2, y1, 0.7, 0.9}}, {10, 5}}});
    };
    EXPECT_NE(bent(0.3), bent(0.4));
}

} // namespace

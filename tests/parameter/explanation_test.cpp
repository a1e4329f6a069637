#include "prm/CurveKinds.h"
#include "tests/support/Record.h"
#include "tests/world/Replay.h"

using namespace Worlds;

namespace {

constexpr auto custom = static_cast<Interpolation>(9);
constexpr auto cycle = static_cast<Extrapolation>(9);

/// Adds one to what is between keyframes, and says nothing of its slope outside.
struct OneMore : Number {
    using Number::Number;
    double interpolateValue(const BoundingKeyframes& around, const Context& at, Cache* cache) const override {
        return Number::interpolateValue(around, at, cache) + 1;
    }
};
struct Always : Number {
    using Number::Number;
    double value(const Context&, Cache*) const override { return 3; }
};
/// A host's own kind of parameter, and a compound with a value of its own.
struct Untyped : ParameterWithoutTypeBase {
    using ParameterWithoutTypeBase::variantValue;
    QVariant variantValue(const Context&) const override { return 8; }
};
struct Sum : CompoundParameter {
    using CompoundParameter::CompoundParameter;
    using CompoundParameter::variantValue;
    QVariant variantValue(const Context& at) const override {
        return subparameters()[0]->variantValue(at).toDouble() + subparameters()[1]->variantValue(at).toDouble();
    }
};

template <class Kind> struct Keyed : Kind {
    explicit Keyed(const char* name) : Kind(QString::fromLatin1(name)) { key<double>(*this, {{10, 5.}, {20, 10.}}); }
};

struct Exhibition {
    Exhibition() {
        key(split, {{0, 1.}, {10, 2.}}, 4);
        curve.vSetInterpolationData({Interpolation::Bezier, 0, 0, 1, 1}, 0, View());
        for (Number* one : {static_cast<Number*>(&line), static_cast<Number*>(&curve)}) {
            one->vSetExtrapolationBefore(Extrapolation::Linear);
            one->vSetExtrapolationAfter(Extrapolation::Linear);
        }
        line.vSetInterpolation(Interpolation::Constant, at(20));
        held.vSetInterpolation(Interpolation::Constant, at(10));
        held.vSetExtrapolationAfter(Extrapolation::Linear);
        bouncing.vSetInterpolationData({custom, 0.5}, 0, View());
        bouncing.vSetExtrapolationAfter(cycle);
        foreign.vSetInterpolationData({static_cast<Interpolation>(12)}, 0, View());
        foreign.vSetExtrapolationBefore(static_cast<Extrapolation>(11));
        key(single, {{10, 5.}});
        single.vSetExtrapolationBefore(Extrapolation::Linear);
        plain.vSetValue(4, still());
        bare.vSetValue(4, still(1));
        joined.vSetValue(6, at(3));
        near.setViewInterpolation({MVInterpolationParams::Nearest});
        key(near, {{10, 7.}}, 4);
        between.setViewInterpolation({MVInterpolationParams::Linear});
        key(between, {{12, 30.}}, 5);
        between.vSetValue(30, still(5));
        key(steps, {{10, QString("a \"b\"")}, {20, QString("c")}});
        tied.setNamePrefix("logo");
        line.setNamePrefix("master");
        line.bAddConstrainedParameter(&tied);
        tied.bAddConstrainedParameter(&further);
        more.bAddConstrainedParameter(&shown);
        steps.bAddConstrainedParameter(&curve);
        pair.addParameter(line);
        pair.addParameter(plain);
        sum.addParameter(line);
        sum.addParameter(split);
        untyped.setScriptName("untyped");
        widow.reset(new Number("widow"));
        Number former("former");
        former.bAddConstrainedParameter(widow.get());
        ofWidow = explain(*widow, at(1));
    }

    Keyed<Number> split{"split"}, line{"line"}, curve{"curve"}, held{"held"}, bouncing{"bouncing"}, foreign{"foreign"},
        near{"near"}, between{"between"};
    Keyed<OneMore> more{"more"};
    Keyed<Always> always{"always"};
    Number single{"single"}, empty{"empty", 2}, bare{"bare"}, joined{"joined", 0, Keyframed}, tied{"tied"},
        further{"further"}, shown{"shown"};
    NumericParameter<int> plain{"plain", 1, Splittable};
    Parameter<QString> steps{"steps"};
    CompoundParameter pair{"pair"};
    Sum sum{"sum"};
    Untyped untyped;
    OwnedStaticParameter<QString> text{"text", "a"};
    OwnedStaticParameter<unsigned int> count{"count", 7};
    std::unique_ptr<Number> widow;
    Explanation ofWidow;
};

TEST(Explanation, IsOnRecordInWords) {
    ASSERT_TRUE(registerInterpolation(custom, [](const IType& shape, double x) { return x * shape.x1; }));
    ASSERT_TRUE(registerExtrapolation(cycle, [](Time time, Time, Time) { return time + -10; }));
    const Exhibition all;
    const std::pair<const BasicParameter*, Context> questions[] = {
        {&all.split, at(10)},   {&all.split, at(12.5, 2)}, {&all.split, at(0, ~0u)}, {&all.curve, at(12.5)},
        {&all.line, at(6)},     {&all.joined, still()},    {&all.held, at(19)},      {&all.held, at(25)},
        {&all.single, at(5)},   {&all.bouncing, at(15)},   {&all.bouncing, at(25)},  {&all.bouncing, at(30)},
        {&all.foreign, at(15)}, {&all.foreign, at(5)},     {&all.empty, at(3)},      {&all.bare, at(3, 1)},
        {&all.plain, at(3, 1)}, {&all.joined, at(3, 1)},   {&all.near, at(10, 3)},   {&all.between, at(12, 1)},
        {&all.steps, at(15)},   {&all.further, at(20)},    {&all.shown, at(15)},     {&all.more, at(5)},
        {&all.more, at(10)},    {&all.always, at(10)},     {&all.untyped, at(10)},   {&all.pair, at(10)},
        {&all.text, at(10)},    {&all.count, at(10)}};
    QString words;
    for (const auto& [parameter, context] : questions) {
        const Explanation explanation = explain(*parameter, context);
        words += explanation.toString() + '\n';
        const auto* const animated = dynamic_cast<const P*>(parameter);
        EXPECT_TRUE(!animated || animated == &all.untyped || isExplained(*animated, explanation))
            << explanation.toString().toStdString();
    }
    expectOnRecord("explanations.txt", words);
    EXPECT_EQ(explain(all.sum, at(10)).value.toDouble(), 10);
    EXPECT_TRUE(all.ofWidow.toString().contains("tied to \"a deleted parameter\""));
    EXPECT_TRUE(explain(all.tied, at(1))
                    .toString([](const BasicParameter& of) { return of.scriptName() + '!'; })
                    .contains("tied to \"line!\""));
    registerInterpolation(custom, {});
    registerExtrapolation(cycle, {});
}

} // namespace

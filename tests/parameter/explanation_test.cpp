#include "prm/CurveKinds.h"
#include "tests/world/Replay.h"

#include <gtest/gtest.h>

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

/// The first line says what was asked, the others are the steps.
struct Row {
    const BasicParameter& parameter;
    Context at;
    const char* text;
};

TEST(Explanation, SaysInWordsWhatHappened) {
    ASSERT_TRUE(registerInterpolation(custom, [](const IType& shape, double x) { return x * shape.x1; }));
    ASSERT_TRUE(registerExtrapolation(cycle, [](Time time, Time, Time) { return time + -10; }));
    const Exhibition all;
    const Row rows[] = {
        {all.split, at(10), R"(split at frame 10 in view 0 is 5
  view 0 has data of its own
  the keyframe at frame 10 is 5)"},
        {all.split, at(12.5, 2), R"(split at frame 12.5 in view 2 is 6.25
  view 2 has no data: view 0 is read
  between frame 10 (5) and frame 20 (10), Linear, after 25 percent of the time: 6.25)"},
        {all.split, at(0, ~0u), R"(split at frame 0 in an invalid view is 5
  an invalid view has no data: view 0 is read
  before the first keyframe, at frame 10 (5), Constant, held: 5)"},
        {all.curve, at(12.5), R"(curve at frame 12.5 in view 0 is 6.25
  tied to "steps", without effect: its values are of another type
  between frame 10 (5) and frame 20 (10), Bezier, after 25 percent of the time and 25 percent of the change: 6.25)"},
        {all.line, at(6), R"(master.line at frame 6 in view 0 is 3
  before the first keyframe, at frame 10 (5), Linear, continued by 4 frames: 3)"},
        {all.joined, still(), R"(joined at no valid frame in view 0 is 6
  after the last keyframe, at frame 3 (6), Constant, held: 6)"},
        {all.held, at(19), R"(held at frame 19 in view 0 is 5
  between frame 10 (5) and frame 20 (10), Constant, held: 5)"},
        {all.held, at(25), R"(held at frame 25 in view 0 is 10
  after the last keyframe, at frame 20 (10), Linear, but without a slope, held: 10)"},
        {all.single, at(5), R"(single at frame 5 in view 0 is 5
  before the first keyframe, at frame 10 (5), Linear, but without a slope, held: 5)"},
        {all.bouncing, at(15), R"(bouncing at frame 15 in view 0 is 6.25
  between frame 10 (5) and frame 20 (10), Custom5, after 50 percent of the time and 25 percent of the change: 6.25)"},
        {all.bouncing, at(25), R"(bouncing at frame 25 in view 0 is 6.25
  after the last keyframe, at frame 20 (10), Custom6: frame 15 is shown
  between frame 10 (5) and frame 20 (10), Custom5, after 50 percent of the time and 25 percent of the change: 6.25)"},
        {all.bouncing, at(30), R"(bouncing at frame 30 in view 0 is 10
  after the last keyframe, at frame 20 (10), Custom6: frame 20 is shown
  the keyframe at frame 20 is 10)"},
        {all.foreign, at(15), R"(foreign at frame 15 in view 0 is 7.5
  between frame 10 (5) and frame 20 (10), Custom8, which is not registered and so a straight line, after 50 percent of the time: 7.5)"},
        {all.foreign, at(5), R"(foreign at frame 5 in view 0 is 5
  before the first keyframe, at frame 10 (5), Custom8, which is not registered, held: 5)"},
        {all.empty, at(3), R"(empty at frame 3 in view 0 is 2
  no view has data: the default value is 2)"},
        {all.bare, at(3, 1), R"(bare at frame 3 in view 1 is 4
  view 1 has data of its own
  view 1 has no keyframes: its static value is 4)"},
        {all.plain, at(3, 1), R"(plain at frame 3 in view 1 is 4
  view 1 has no data: view 0 is read
  not keyframed: the static value of view 0 is 4)"},
        {all.joined, at(3, 1), R"(joined at frame 3 in view 1 is 6
  not splittable: view 0 is read
  the keyframe at frame 3 is 6)"},
        {all.near, at(10, 3), R"(near at frame 10 in view 3 is 7
  view 3 has no data: view 4, the nearest one, is read
  the keyframe at frame 10 is 7)"},
        {all.between, at(12, 1), R"(between at frame 12 in view 1 is 10.8
  view 1 has no data: 2 views are blended: 10.8
    view 0, 80 percent: 6
      between frame 10 (5) and frame 20 (10), Linear, after 20 percent of the time: 6
    view 5, 20 percent: 30
      the keyframe at frame 12 is 30)"},
        {all.steps, at(15), R"(steps at frame 15 in view 0 is "a \"b\""
  between frame 10 ("a \"b\"") and frame 20 ("c"), Constant, held: "a \"b\"")"},
        {all.further, at(20), R"(further at frame 20 in view 0 is 10
  tied to "logo.tied": its value is shown
  tied to "master.line": its value is shown
  the keyframe at frame 20 is 10)"},
        {all.shown, at(15), R"(shown at frame 15 in view 0 is 8.5
  tied to "more": its value is shown
  between frame 10 (5) and frame 20 (10), computed by its class: 8.5)"},
        {all.more, at(5), R"(more at frame 5 in view 0 is 5
  before the first keyframe, at frame 10 (5), computed by its class: 5)"},
        {all.more, at(10), R"(more at frame 10 in view 0 is 5
  the keyframe at frame 10 is 5)"},
        {all.always, at(10), R"(always at frame 10 in view 0 is 3
  computed by its class: 3)"},
        {all.untyped, at(10), R"(untyped at frame 10 in view 0 is 8
  computed by its class: 8)"},
        {all.pair, at(10), R"(pair at frame 10 in view 0 is (5, 4)
  a compound: the values of its parts
    master.line at frame 10 in view 0 is 5
      the keyframe at frame 10 is 5
    plain at frame 10 in view 0 is 4
      not keyframed: the static value of view 0 is 4)"},
        {all.text, at(10), R"(text is "a"
  not animated: one value for all frames and views)"},
        {all.count, at(10), R"(count is 7
  not animated: one value for all frames and views)"},
    };
    for (const Row& row : rows) {
        const Explanation explanation = explain(row.parameter, row.at);
        EXPECT_EQ(explanation.toString().toStdString(), row.text);
        const auto* const animated = dynamic_cast<const P*>(&row.parameter);
        EXPECT_TRUE(!animated || animated == &all.untyped || isExplained(*animated, explanation)) << row.text;
    }
    EXPECT_EQ(explain(all.sum, at(10)).value.toDouble(), 10);
    EXPECT_TRUE(all.ofWidow.toString().contains("tied to \"a deleted parameter\""));
    EXPECT_TRUE(explain(all.tied, at(1))
                    .toString([](const BasicParameter& of) { return of.scriptName() + '!'; })
                    .contains("tied to \"line!\""));
    registerInterpolation(custom, {});
    registerExtrapolation(cycle, {});
}

} // namespace

#include "prm/CurveKinds.h"
#include "tests/support/Record.h"
#include "tests/world/Replay.h"

using namespace Worlds;
using Mode = MVInterpolationParams::Mode;

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

/// The same keyframes in a kind.
template <class Kind> struct Curve : Kind {
    explicit Curve(const char* name) : Kind(QString::fromLatin1(name)) { key<double>(*this, {{10, 5.}, {20, 10.}}); }
};

class Explanations : public testing::Test {
protected:
    Explanations() {
        registerInterpolation(custom, [](const IType& shape, double x) { return x * shape.x1; });
        registerExtrapolation(cycle, [](Time time, Time, Time) { return time + -10; });
    }
    ~Explanations() override {
        registerInterpolation(custom, {});
        registerExtrapolation(cycle, {});
    }

    void ask(const BasicParameter& parameter, std::initializer_list<Context> contexts) {
        for (const Context& context : contexts) {
            const Explanation explanation = explain(parameter, context);
            words += explanation.toString() + '\n';
            const auto* const animated = dynamic_cast<const P*>(&parameter);
            EXPECT_TRUE(!animated || dynamic_cast<const Untyped*>(animated) || isExplained(*animated, explanation))
                << explanation.toString().toStdString();
        }
    }

    void askInAllViews(Interpolation kind, Extrapolation outside, Mode mode) {
        const Exhibits world;
        key(world.as<QString>(Text), {{0, "a \"b\""}, {10, "c"}});
        world.parameter(Keyed)->uniquifyView(View(5));
        for (const Who who : {Text, Keyed, Master, Joined}) {
            P& one = *world.parameter(who);
            one.vSetInterpolationData({kind, 0.5}, 0, View());
            one.vSetExtrapolationBefore(outside);
            one.vSetExtrapolationAfter(outside);
            asTyped(one, [&](auto& typed) { return typed.setViewInterpolation({mode}), true; });
            ask(one, {at(-1), at(4), at(10), at(9, 1), at(4, 3), at(21), still()});
        }
    }

    QString words;
};

TEST_F(Explanations, AreOnRecordInWords) {
    askInAllViews(Interpolation::Linear, Extrapolation::Linear, Mode::Nearest);
    askInAllViews(Interpolation::Bezier, Extrapolation::Constant, Mode::Linear);
    askInAllViews(Interpolation::Constant, Extrapolation::Linear, Mode::Off);
    askInAllViews(custom, cycle, Mode::Smooth);
    askInAllViews(static_cast<Interpolation>(12), static_cast<Extrapolation>(11), Mode::Off);
    const Exhibits world;
    world.number(Keyed).setNamePrefix("logo");
    world.number(Master).bAddConstrainedParameter(world.parameter(Keyed));
    world.number(Tied).bAddConstrainedParameter(world.parameter(X));
    for (const Who who : {Text, Plain, Keyed, Far, Second, X, Position, Outer})
        ask(*world.parameter(who), {at(3), at(3, 1), at(0, ~0u)});
    world.set(0)->forEachBasicParameter([&](const BasicParameter* one) {
        if (!qobject_cast<const P*>(one))
            ask(*one, {at(10)});
    });
    Curve<OneMore> more("more");
    Number shown("shown");
    more.bAddConstrainedParameter(&shown);
    Untyped untyped;
    untyped.setScriptName("untyped");
    ask(shown, {at(15)});
    ask(more, {at(5), at(10)});
    ask(Curve<Always>("always"), {at(10)});
    ask(untyped, {at(10)});
    expectOnRecord("explanations.txt", words);
}

TEST_F(Explanations, NameParametersAsAsked) {
    Sum sum("sum");
    Curve<Number> one("one"), other("other"), widow("widow");
    sum.addParameter(one);
    sum.addParameter(other);
    EXPECT_EQ(explain(sum, at(10)).value.toDouble(), 10);
    one.bAddConstrainedParameter(&other);
    const auto named = [](const BasicParameter& of) { return of.scriptName() + '!'; };
    EXPECT_TRUE(explain(other, at(1)).toString(named).contains("tied to \"one!\""));
    Explanation ofWidow;
    {
        Number former("former");
        former.bAddConstrainedParameter(&widow);
        ofWidow = explain(widow, at(1));
    }
    EXPECT_TRUE(ofWidow.toString().contains("tied to \"a deleted parameter\""));
}

} // namespace

// What the random edits of the model do not reach.

#include "tests/world/Acts.h"

#include <QCoreApplication>
#include <QTranslator>
#include <gtest/gtest.h>

#include <type_traits>

using namespace Worlds;

namespace {

struct OfAHosts : NumericParameter<double> {};

// A copy keeps its curves, and a context its view.
static_assert(std::is_copy_constructible_v<Parameter<double>> &&
              std::is_copy_constructible_v<NumericParameter<double>>);
static_assert(!std::is_constructible_v<Parameter<double>, const NumericParameter<double>&>);
static_assert(!std::is_constructible_v<Parameter<double>, OfAHosts&>);
static_assert(!std::is_constructible_v<Parameter<QPointF>, PointParameter>);
static_assert(!std::is_convertible_v<AnimationFlags, AnimationState>);
static_assert(std::is_copy_constructible_v<ParameterWithoutTypeBase>);

using Whole = Parameter<int>;

TEST(Editing, CopiesComeFromParametersOfTheSameType) {
    Whole parameter("own");
    ChangeRecorder recorder(&parameter);
    parameter.vCopyKeyframeDataFrom(nullptr);
    parameter.assignFrom(parameter);
    EXPECT_EQ(recorder.take(), "");
    parameter.vCopyKeyframeDataFrom(&parameter);
    EXPECT_EQ(recorder.take(), "PARAMETER_ASSIGNED 0 0\n");
    Whole target("target");
    target.vCopyKeyframeDataFrom(&parameter);
    EXPECT_EQ(target.scriptName(), "target");
}

TEST(Editing, AMappingOfTimesMayFailOrEditTheParameter) {
    Whole parameter;
    key(parameter, {{10, 1}, {20, 2}});
    key(parameter, {{10, 5}}, 3);
    EXPECT_THROW(parameter.adjustKeyframesTime({}), boost::bad_function_call);
    int calls = 0;
    const auto failing = [&](Time time) { return ++calls == 2 ? throw std::runtime_error("mapping") : time + 1; };
    EXPECT_THROW(parameter.adjustKeyframesTime(failing), std::runtime_error);
    EXPECT_EQ(parameter.allKeyframes(), (QVector<Context>{at(11), at(20), at(10, 3)}));
    parameter.adjustKeyframesTime([&](Time time) {
        for (int i = 0; i < 50; ++i)
            parameter.vSetValue(i, Context(time + (100 + i)));
        parameter.vDeleteAllKeyframes(View());
        parameter.deleteView(View(3));
        return time;
    });
    EXPECT_TRUE(parameter.numViews() == 1 && parameter.keyframeCount(View()) == 0);
    auto* const deleted = new Whole(parameter);
    key(*deleted, {{10, 1}, {20, 2}});
    deleted->adjustKeyframesTime([&](Time time) {
        delete deleted;
        return time;
    });
}

/// Does what a test wants, once, while it shapes a segment or evaluates it.
struct Hooked : Number {
    IType initialiseInterpolation(const KeyframeData<double>& from, const KeyframeData<double>& to,
                                  Interpolation kind) const override {
        formerKinds.push_back(from.interpolationData.interpolation);
        once(whenShaping);
        EXPECT_LT(from.time, to.time);
        return {kind, from.value, to.value};
    }
    double interpolateValue(const BoundingKeyframes& around, const Context&, Cache*) const override {
        once(whenEvaluated);
        return keyframeValue(around.after.index, around.after.view);
    }
    static void once(std::function<void()>& act) {
        if (const auto now = std::exchange(act, nullptr))
            now();
    }
    mutable std::function<void()> whenShaping;
    mutable std::function<void()> whenEvaluated;
    mutable std::vector<Interpolation> formerKinds;
};

TEST(Editing, HooksMayEditAndEvaluate) {
    Number source;
    key(source, {{15, 5.}}, 1);
    const std::tuple<const char*, double, std::function<void(Hooked&)>> calls[] = {
        {"appends", 30, [](Hooked& p) { p.vSetValue(5, at(30, 1)); }},
        {"inserts", 15, [](Hooked& p) { p.vSetValue(5, at(15, 1)); }},
        {"keys", 15, [](Hooked& p) { p.iAddKeyframe(at(15, 1)); }},
        {"changes the kind", 10, [](Hooked& p) { p.vSetInterpolation(Interpolation::Bezier, at(10, 1)); }},
        {"imports", 15, [&](Hooked& p) { importFrom(p, source, at(15, 1)); }},
        {"evaluates", NAN, [](Hooked& p) { p.value(at(15, 1)); }},
        {"samples", NAN, [](Hooked& p) { p.sampleValues(Frame::fromUInt(12), Frame::fromUInt(14), View(1)); }},
    };
    using Inside = std::function<void(std::unique_ptr<Hooked>&)>;
    const auto check = [&](const std::string& name, const Inside& inside) {
        for (const auto& [call, time, act] : calls) {
            if (name == "deletes the parameter" && std::isnan(time))
                continue;
            SCOPED_TRACE(call + (", " + name));
            auto parameter = std::make_unique<Hooked>();
            key(*parameter, {{10, 1.}, {20, 2.}}, 1);
            (std::isnan(time) ? parameter->whenEvaluated : parameter->whenShaping) = [&] { inside(parameter); };
            const std::string error = errorOf([&, &theAct = act] { theAct(*parameter); });
            EXPECT_EQ(error, name == "throws" ? "hook" : "");
            if (!parameter)
                continue;
            EXPECT_EQ(detail::verify(*parameter).toStdString(), "");
            const bool sets = error.empty() && parameter->isKeyframed() && parameter->splittable() && time > 10;
            EXPECT_TRUE(!sets || parameter->bKeyframeAt(Context::Explicit(at(time, 1))));
            EXPECT_TRUE(error.empty() || parameter->keyframeCount(View(1)) == 2);
        }
    };
    check("deletes the parameter", [](auto& p) { p.reset(); });
    check("throws", [](auto&) { throw std::runtime_error("hook"); });
    check("becomes static", [](auto& p) { p->assignFrom(Parameter<double>("static", 3, Splittable)); });
    check("adds many", [](auto& p) {
        for (int i = 0; i < 100; ++i)
            p->vSetValue(i, at(i * 0.3, 1));
    });
    check("evaluates again", [](auto& p) { p->value(at(16, 1)); });
    Number other("empty");
    Command none;
    for (const Act& act : edits) {
        for (const double time : {10., 20.})
            check(act.name, [&](auto& p) { act.run(none, *p, other, A(at(time, 1), at(30), 7, 2, false, 2)); });
    }
}

TEST(Editing, TheHookThatShapesASegmentIsGivenTheFormerKind) {
    Hooked parameter;
    key(parameter, {{10, 1.}, {20, 2.}});
    parameter.formerKinds.clear();
    parameter.vSetInterpolation(Interpolation::Bezier, at(10));
    parameter.vSetInterpolation(Interpolation::Constant, at(10));
    parameter.vSetInterpolation(Interpolation::Bezier, at(20));
    // Text has its own shapes.
    parameter.streamInValue("keyframes.append( Key( 30, 1, Linear ) )", version(), {});
    EXPECT_EQ(parameter.formerKinds, (std::vector<Interpolation>{Interpolation::Linear, Interpolation::Bezier}));
    EXPECT_EQ(parameter.keyframe(0, View()).interpolationData, IType(Interpolation::Constant, 1, 2));
    EXPECT_EQ(parameter.keyframe(1, View()).interpolationData, IType(Interpolation::Bezier));
}

TEST(Editing, EqualValuesAreExactlyEqual) {
    Parameter<double> number;
    Parameter<QPointF> point;
    const auto changes = [](auto& parameter, const auto& value) {
        ChangeRecorder recorder(&parameter);
        parameter.vSetValue(value, still());
        return !recorder.take().empty();
    };
    EXPECT_TRUE(changes(number, std::numeric_limits<double>::denorm_min()));
    EXPECT_TRUE(changes(number, std::nan("")));
    EXPECT_FALSE(changes(number, std::nan("")));
    EXPECT_TRUE(changes(point, QPointF(1e-20, 0)));
    EXPECT_FALSE(changes(point, QPointF(1e-20, 0)));
    number.vSetValue(-0.0, still());
    number.vReset(still());
    EXPECT_FALSE(std::signbit(number.staticValue(View())));
}

TEST(Editing, TheHeroViewIsTheOnlyOneThatIsNotMarked) {
    auto selector = std::make_unique<Parameter<bool>>("selector", false, Splittable);
    Whole parameter;
    EXPECT_EQ(parameter.heroView(), View::INVALID());
    parameter.setViewSelector(selector.get(), 5);
    using Marks = std::vector<bool>;
    const std::pair<Marks, View> rows[] = {{{true, false, true}, 1},
                                           {{false, true, false}, View::INVALID()},
                                           {{false}, 0},
                                           {{true, true}, View::INVALID()},
                                           {{}, View::INVALID()}};
    for (const auto& [marks, hero] : rows) {
        selector->clearViewData();
        for (quint32 view = 0; view < marks.size(); ++view)
            selector->vSetValue(marks[view], still(view));
        EXPECT_EQ(parameter.heroView(), hero) << "of " << marks.size();
    }
    selector->vSetValue(false, still());
    Whole assigned;
    assigned.assignFrom(parameter);
    EXPECT_EQ(assigned.heroView(), View(0));
    EXPECT_EQ(assigned.viewSelectorCompanion(), 5u);
    selector.reset();
    EXPECT_EQ(parameter.heroView(), View::INVALID());
}

struct Translator : QTranslator {
    QString translate(const char* context, const char* text, const char*, int) const override {
        return qstrcmp(context, "Parameter") == 0 ? QStringLiteral("\u00fc %1").arg(QLatin1String(text)) : QString();
    }
    bool isEmpty() const override { return false; }
};

TEST(Variants, TheThrowingFormsCheckFirst) {
    int count = 0;
    const QCoreApplication application(count, nullptr);
    Translator translator;
    QCoreApplication::installTranslator(&translator);
    const std::string split = u8"\u00fc Parameter not splittable";
    const std::string keys = u8"\u00fc Parameter not animated";
    const std::tuple<const char*, ParameterOptions, Context, std::string> rows[] = {
        {"keyframed, at a frame", Keyframed | Splittable, at(1, 3), ""},
        {"keyframed, no frame", Keyframed | Splittable, still(3), ""},
        {"static, at a frame", Splittable, at(1), keys},
        {"static, no frame", Splittable, at(-1, 3), ""},
        {"unsplittable, another view", Keyframed, at(1, 3), split},
        {"both, the view first", {}, at(1, 3), split},
    };
    for (const auto& [name, options, context, error] : rows) {
        SCOPED_TRACE(name);
        Parameter<int> parameter(QStringLiteral("checked"), 6, options);
        const auto read = [&, &at = context] { EXPECT_EQ(parameter.variantValue(at), QVariant(6)); };
        EXPECT_EQ(errorOf(read), error);
        EXPECT_EQ(errorOf([&, &at = context] { parameter.setVariantValue(7, at); }), error);
        EXPECT_EQ(parameter.numViews() > 0, error.empty());
        EXPECT_EQ(parameter.variantValue(context, std::nothrow), QVariant(error.empty() ? 7 : 6));
    }
}

struct Failing : Parameter<double> {
    double extrapolateValue(const BoundingKeyframes&, const Context&, Cache*) const override {
        throw std::logic_error("hook");
    }
};

TEST(Variants, WhatHooksAndObserversThrowIsCaughtByTheSilentFormsAlone) {
    Failing parameter;
    key(parameter, {{2, 1.}});
    EXPECT_EQ(parameter.variantValue(at(1), std::nothrow), QVariant());
    EXPECT_EQ(errorOf([&] { parameter.variantValue(at(1)); }), "hook");
    const auto observer = [](ParameterChange&) { throw std::logic_error("observer"); };
    QObject::connect(&parameter, &ParameterWithoutType::changed, observer);
    EXPECT_NO_THROW(parameter.setVariantValue(5, at(2), std::nothrow));
    EXPECT_EQ(errorOf([&] { parameter.setVariantValue(6, at(2)); }), "observer");
    EXPECT_EQ(parameter.keyframeValue(0, View()), 6);
    const auto rethrown = [&] { detail::default_Parameter_setVariantValue_impl<double>(parameter, 7, at(2)); };
    EXPECT_EQ(errorOf(rethrown), "observer");
    parameter.detachAllObservers();
}

/// Overrides the forms that do not throw.
struct Converting : Parameter<double> {
    using Parameter::setVariantValue;
    using Parameter::variantValue;
    void setVariantValue(const QVariant& variant, const Context& context, const std::nothrow_t&) override {
        vSetValue(variant.toDouble() / 100, context);
    }
    QVariant variantValue(const Context& context, const std::nothrow_t&) const override { return value(context) * 100; }
};

TEST(Variants, TheThrowingFormsGoThroughTheOthers) {
    Converting parameter;
    parameter.setVariantValue(50, at(1));
    EXPECT_EQ(parameter.value(at(1)), 0.5);
    EXPECT_EQ(parameter.variantValue(at(1)), QVariant(50.));
}

/// The value of a parameter of this type after it is given the variant.
template <class T> QVariant taken(const QVariant& variant) {
    Parameter<T> parameter;
    parameter.setVariantValue(variant, at(1));
    return parameter.variantValue(at(1));
}

TEST(Variants, AreConverted) {
    const std::tuple<const char*, QVariant, QVariant> rows[] = {
        {"bool from text", taken<bool>("false"), false},
        {"number from text", taken<double>("-1.5"), -1.5},
        {"number from no number", taken<double>("1,5"), 0.0},
        {"whole number, rounded", taken<int>(2.5), 3},
        {"whole number from infinity", taken<int>(infinity), std::numeric_limits<int>::max()},
        {"unsigned from far below", taken<unsigned int>(-1e30), 0u},
        {"unsigned from a negative number", taken<unsigned int>(-1.0), QVariant(-1.0).toUInt()},
        {"whole number from one too large", taken<int>(3e9), QVariant(3e9).toInt()},
        {"from an invalid variant", taken<QString>(QVariant()), QString("")},
        {"point from a whole point", taken<QPointF>(QPoint(1, 2)), QPointF(1, 2)},
        {"whole point from text", taken<QPoint>("1 2"), QPoint()},
    };
    for (const auto& [name, value, expected] : rows) {
        EXPECT_EQ(value, expected) << name;
        EXPECT_EQ(value.userType(), expected.userType()) << name;
    }
}

} // namespace

#include "prm/Views.h"
#include "tests/parameter/EditTable.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>

using namespace Prm;

namespace {

using P = Parameter<int>;

P& source() {
    static const auto parameter = made("ks", "0(77) 10=1 20=2; 3 10=5");
    parameter->vSetExtrapolationAfter(Extrapolation::Linear);
    parameter->vSetDefaultInterpolation(Interpolation::Bezier);
    return *parameter;
}

const ParameterWithoutType* sourceOf(const QString& name, const P& itself) {
    static const Parameter<bool> other;
    const std::map<QString, const ParameterWithoutType*> sources{
        {"source", &source()}, {"itself", &itself}, {"other", &other}, {"null", nullptr}};
    return sources.at(name);
}

int addInViews(P& p, const Words& words) {
    Views views;
    views.setViewNames({{"left", "l"}, {"middle", "m"}, {"right", "r"}});
    views.setCurrentView(View(1));
    AnimationFlags flags;
    flags.setAllViews(words[2] == "all");
    const IViewsProvider* const provider = words[2] == "none" ? nullptr : &views;
    return p.iAddKeyframe(words[1] == "-" ? Frame::INVALID : Frame::fromInt(words.number(1)),
                          AnimationState(flags, provider));
}

const Verbs verbs = {
    {"set", [](P& p, const Words& w) { return p.vSetValue(w.number(1), w.context(2)); }},
    {"add", [](P& p, const Words& w) { return p.iAddKeyframe(w.context(1)); }},
    {"frame", addInViews},
    {"delete", [](P& p, const Words& w) { p.vDeleteKeyframe(Context::Explicit(w.context(1))); }},
    {"clear", [](P& p, const Words& w) { p.vDeleteAllKeyframes(w.view(1)); }},
    {"reset", [](P& p, const Words& w) { p.vReset(w.context(1)); }},
    {"bezier", [](P& p, const Words& w) { return p.vSetInterpolation(Interpolation::Bezier, w.context(1)); }},
    {"shape", [](P& p, const Words& w) { p.vSetInterpolationData({}, w[1].toUInt(), w.view(2)); }},
    {"before", [](P& p, const Words&) { p.vSetExtrapolationBefore(p.extrapolationBefore()); }},
    {"after", [](P& p, const Words&) { p.vSetExtrapolationAfter(Extrapolation::Linear); }},
    {"default", [](P& p, const Words&) { p.vSetDefault(3), p.vSetDefaultInterpolation(Interpolation::Bezier); }},
    {"later", [](P& p, const Words&) { p.adjustKeyframesTime([](Time time) { return time + 2.5; }); }},
    {"together", [](P& p, const Words&) { p.adjustKeyframesTime([](Time) { return Time(); }); }},
    {"copy", [](P& p, const Words& w) { p.vCopyKeyframeDataFrom(sourceOf(w[1], p)); }},
    {"assign", [](P& p, const Words& w) { p.assignFrom(*sourceOf(w[1], p)); }},
};

TEST(Editing, Values) {
    checkEdits(verbs, R"(
static, new                    | s  |                   | set 4 1      | =-1 VALUE-1                      | 0(4)
static, the same               | s  |                   | set 0 1      | =-1                              | 0
static, another view           | s  |                   | set 4 -@2    | =-1 VIEW_ADDED@2 VALUE-1@2       | 0; 2(4)
static, another view, the same | s  |                   | set 0 -@2    | =-1 VIEW_ADDED@2                 | 0; 2
static, unsplittable           |    |                   | set 4 1@2    | =-1 VALUE-1@2                    | 0(4)
first keyframe                 | ks |                   | set 4 1.5    | =0 ADDED0 VALUE0                 | 0 1.5=4
before others, negative        | ks | 0 10=1 20=2       | set 4 -2     | =0 ADDED0 VALUE0                 | 0 -2=4 10=1 20=2
between others                 | ks | 0 10=1 20=2       | set 2 15     | =1 ADDED1 VALUE1                 | 0 10=1 15=2 20=2
no tolerance                   | ks | 0 10=1 20=2       | set 2 10.0000000000001 | =1 ADDED1 VALUE1       | 0 10=1 10=2 20=2
of a keyframe                  | ks | 0 10=1 20=2       | set 4 20     | =1 VALUE1                        | 0 10=1 20=4
of a keyframe, the same        | ks | 0 10=1 20=2       | set 2 20     | =1                               | =
invalid time is static         | ks | 0 10=1            | set 4 -      | =-1 VALUE-1                      | 0(4) 10=1
NaN likewise                   | ks | 0 10=1            | set 4 nan    | =-1 VALUE-1                      | 0(4) 10=1
infinity likewise, the same    | ks | 0 10=1            | set 0 inf    | =-1                              | =
negative infinity              | ks |                   | set 4 -inf   | =0 ADDED0 VALUE0                 | 0 -inf=4
a new view                     | ks | 0 10=1            | set 4 15@3   | =0 VIEW_ADDED@3 ADDED0@3 VALUE0@3 | 0 10=1; 3 15=4
a new view first of all        | ks |                   | set 4 1@2147483646 | =0 VIEW_ADDED@2147483646 ADDED0@2147483646 VALUE0@2147483646 | 0; 2147483646 1=4
view 0 beside others           | ks | 3 10=5            | set 4 1      | =0 VIEW_ADDED ADDED0 VALUE0      | 0 1=4; 3 10=5
unsplittable                   | k  | 0 10=1 20=2       | set 4 10@3   | =0 VALUE0@3                      | 0 10=4 20=2
unsplittable, first of all     | k  |                   | set 4 10@3   | =0 ADDED0@3 VALUE0@3             | 0 10=4
invalid view is source data    | ks | 3 10=5            | set 4 10@-1  | =0 VALUE0@-1                     | 3 10=4
add the present value          | ks | 0 10=1 20=2       | add 25       | =2 ADDED2                        | 0 10=1 20=2 25=2
add at the invalid time        | ks |                   | add -@3      | =-1                              |
add where there is one         | ks | 0 10=1            | add 10       | =-1                              | =
add, not keyframed             | s  |                   | add 1@3      | =-1                              |
add what a new view showed     | ks | 0 10=1            | add 12@3     | =0 VIEW_ADDED@3 ADDED0@3         | 0 10=1; 3 12=1
add, unsplittable              | k  | 0 10=1 20=2       | add 12@3     | =1 ADDED1@3                      | 0 10=1 12=1 20=2
frame in all views             | ks | 0; 1 12=7         | frame 12 all | =0 ADDED0 VIEW_ADDED@2 ADDED0@2  | 0 12=0; 1 12=7; 2 12=0
frame in the current view      | ks | 0; 1 12=7         | frame 15 current | =1 ADDED1@1                  | 0; 1 12=7 15=7
frame where all have one       | ks | 0; 1 12=7         | frame 12 current | =-1                          | =
frame, unsplittable            | k  |                   | frame 12 all | =0 ADDED0                        | 0 12=0
frame, no registry             | ks |                   | frame 12 none | =0 ADDED0                       | 0 12=0
invalid frame                  | ks | 0; 1 12=7         | frame - all  | =-1                              | =
frame, not keyframed           | s  |                   | frame 12 all | =0                               |
)");
}

TEST(Editing, DeletingAndResetting) {
    checkEdits(verbs, R"(
one of two                     | ks | 0 10=1 20=2       | delete 10    | REMOVED0[10]                     | 0 20=2
the last one leaves its value  | ks | 0; 3(8) 10=5      | delete 10@3  | REMOVED0@3[10]                   | 0; 3(5)
none at the time               | ks | 0 10=1            | delete 11    |                                  | =
never through a borrowing view | ks | 0 10=1            | delete 10@3  |                                  | =
unsplittable                   | k  | 0 10=1 20=2       | delete 20@3  | REMOVED1@3[20]                   | 0 10=1
not keyframed                  | s  |                   | delete 10    |                                  |
all leave the static value     | ks | 0; 3(8) 10=5      | clear 3      | VIEW_CLEARED                     | 0; 3(8)
all of a borrowing view        | ks | 0 10=1            | clear 3      |                                  | =
all of none                    | ks | 0                 | clear 0      |                                  | =
all, unsplittable              | k  | 0 10=1 20=2       | clear 3      | VIEW_CLEARED                     | 0
all, not keyframed             | s  |                   | clear 0      |                                  |
reset a keyframe               | ks6| 0 10=1 20=2       | reset 10     | REMOVED0[10]                     | 0 20=2
reset between keyframes        | ks6| 0 10=1 20=2       | reset 15     |                                  | =
reset without keyframes        | ks6| 0(3)              | reset 15     | VIEW_RESET                       | 0(6)
reset a borrowing view         | ks6| 0 10=1            | reset 10@3   | VIEW_ADDED@3 VIEW_RESET@3        | 0 10=1; 3(6)
reset the default value        | ks |                   | reset 1      | VIEW_RESET                       | 0
reset, unsplittable            | k6 | 0 10=1 20=2       | reset 20@3   | REMOVED1@3[20]                   | 0 10=1
reset, static                  | s6 |                   | reset 1@2    | VIEW_ADDED@2 VIEW_RESET@2        | 0(6); 2(6)
)");
    Parameter<double> zero;
    zero.vSetValue(-0.0, still());
    zero.vReset(still());
    EXPECT_FALSE(std::signbit(zero.staticValue(View())));
}

TEST(Editing, CurvesTimesAndAssignment) {
    checkEdits(verbs, R"(
interpolation                  | ks | 0 10=1 20=2       | bezier 20    | =1 INTERPOLATION1                | =
interpolation, no keyframe     | ks | 0 10=1            | bezier 21    | =0                               | =
interpolation, borrowing view  | ks | 0 10=1            | bezier 10@3  | =0                               | =
interpolation, unsplittable    | k  | 0 10=1            | bezier 10@3  | =1 INTERPOLATION0@3              | =
interpolation, not keyframed   | s  |                   | bezier 10    | =0                               |
shape                          | ks | 0 10=1 20=2       | shape 1 0    | INTERPOLATION1                   | =
shape, index of the count      | ks | 0 10=1 20=2       | shape 2 0    |                                  | =
shape, index -1                | ks | 0 10=1            | shape 4294967295 0 |                            | =
shape, borrowing view          | ks | 0 10=1            | shape 0 3    |                                  | =
shape, not keyframed           | s  |                   | shape 0 0    |                                  |
extrapolation, the same        | ks | 0 10=1            | before       | EXTRAPOLATION_BEFORE             | =
extrapolation                  | ks |                   | after        | EXTRAPOLATION_AFTER              |
extrapolation, not keyframed   | s  |                   | after        |                                  |
defaults                       | ks | 0 10=1            | default      |                                  | =
times of every view            | ks | 0 10=1 20=2; 3 10=5 | later      |                                  | 0 12.5=1 22.5=2; 3 12.5=5
times, all the same            | ks | 0 10=1 20=2       | together     |                                  | 0 0=1 0=2
times, not keyframed           | s  | 0                 | later        |                                  | =
copy                           | 6  | 0(1)              | copy source  | ASSIGNED                         | 0(77) 10=1 20=2; 3 10=5
copy itself                    | ks | 0 10=1; 3 10=5    | copy itself  | ASSIGNED                         | =
copy null                      | ks | 0 10=1            | copy null    |                                  | =
copy another type              | ks | 0 10=1            | copy other   |                                  | =
assign                         | 6  |                   | assign source | ASSIGNED                         | 0(77) 10=1 20=2; 3 10=5
assign itself                  | ks | 0 10=1            | assign itself |                                  | =
assign another type            | ks | 0 10=1            | assign other  |                                  | =
)");
}

TEST(Editing, WhatCopiesTake) {
    for (const bool assigned : {false, true}) {
        P target(QStringLiteral("target"), 5, {});
        target.vSetDefaultInterpolation(Interpolation::Constant);
        assigned ? target.assignFrom(source()) : target.vCopyKeyframeDataFrom(&source());
        EXPECT_TRUE(target.isKeyframed() && target.splittable() && target.isSplit());
        EXPECT_EQ(target.extrapolationAfter(), Extrapolation::Linear);
        EXPECT_EQ(target.defaultValue(), 5);
        EXPECT_EQ(target.scriptName(), assigned ? source().scriptName() : QStringLiteral("target"));
        EXPECT_EQ(target.defaultInterpolation(), assigned ? Interpolation::Bezier : Interpolation::Constant);
        target.vSetValue(9, at(10));
        EXPECT_EQ(source().keyframeValue(0, View()), 1);
    }
    const P copied(source());
    EXPECT_EQ(text(copied), text(source()));
    EXPECT_EQ(copied.defaultValue(), 0);
}

TEST(Editing, InterpolationIsShapedOnlyWhereASegmentFollows) {
    const auto parameter = made("ks", "0 10=1 20=2");
    for (const auto& [index, shape] :
         {std::pair(0u, IType(Interpolation::Linear)), {1u, {Interpolation::Linear, 1, 2}}}) {
        parameter->vSetInterpolationData({Interpolation::Bezier, 1, 2}, index, View());
        parameter->vSetInterpolation(Interpolation::Linear, parameter->keyframeTime(index, View()));
        EXPECT_EQ(parameter->interpolationData({parameter.get(), View(), index}), shape);
    }
}

TEST(Editing, AMappingOfTimesMayFailOrEditTheParameter) {
    const auto parameter = made("ks", "0 10=1 20=2; 3 10=5");
    EXPECT_THROW(parameter->adjustKeyframesTime({}), boost::bad_function_call);
    int calls = 0;
    const auto failing = [&](Time time) { return ++calls == 2 ? throw std::runtime_error("mapping") : time + 1; };
    EXPECT_THROW(parameter->adjustKeyframesTime(failing), std::runtime_error);
    EXPECT_EQ(text(*parameter), "0 11=1 20=2; 3 10=5");
    parameter->adjustKeyframesTime([&](Time time) {
        for (int i = 0; i < 50; ++i)
            parameter->vSetValue(i, Context(time + (100 + i)));
        return time;
    });
    EXPECT_GT(parameter->keyframeCount(View()), 50u);
    parameter->adjustKeyframesTime([&](Time time) {
        parameter->vDeleteAllKeyframes(View());
        parameter->deleteView(View(3));
        return time;
    });
    EXPECT_EQ(text(*parameter), "0");
    P* const deleted = made("ks", "0 10=1 20=2; 3 10=5").release();
    deleted->adjustKeyframesTime([&](Time time) {
        delete deleted;
        return time;
    });
}

TEST(Editing, EqualValuesAreExactlyEqual) {
    Parameter<double> number;
    Parameter<QPointF> point;
    const auto changes = [](auto& parameter, const auto& value) {
        return changesDuring(parameter, [&] { parameter.vSetValue(value, still()); }).size() > 0;
    };
    EXPECT_TRUE(changes(number, std::numeric_limits<double>::denorm_min()));
    EXPECT_TRUE(changes(number, std::nan("")));
    EXPECT_FALSE(changes(number, std::nan("")));
    EXPECT_TRUE(changes(point, QPointF(1e-20, 0)));
    EXPECT_FALSE(changes(point, QPointF(1e-20, 0)));
}

} // namespace

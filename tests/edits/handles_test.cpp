// Handles as points.

#include "prm/Answers.h"
#include "prm/CurveParameter.h"
#include "prm/HandlesEdit.h"
#include "prm/track/BezierEasing.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

#include <random>

using namespace Prm;

namespace {

QString textOf(const std::optional<HandlePoint>& handle) {
    return handle ? QString("%1 %2").arg(handle->time, 0, 'g', 4).arg(handle->value, 0, 'g', 4) : QString("none");
}

TEST(Handles, AreSetAsPointsOrRefused) {
    using Keys = std::vector<std::pair<double, double>>;
    const Keys rising{{0, 0}, {10, 10}, {30, 20}};
    const Keys turning{{0, 0}, {10, 10}, {30, 0}};
    const Keys level{{0, 5}, {10, 5}, {20, 9}};
    const auto out = [](double time, double value, HandleChange::Tie tie = HandleChange::Free) {
        return HandleChange::movedOut({time, value}, tie);
    };
    struct Row {
        const char* name;
        const Keys& keys;
        unsigned int index;
        HandleChange change;
        const char* result;
    };
    const Row rows[] = {
        {"linear", rising, 1, {}, "6.667 6.667, 16.67 13.33"},
        {"free", rising, 1, out(14, 25), "6.667 6.667, 14 25"},
        {"both", rising, 1, HandleChange::moved({9, 3}, {11, 12}), "9 3, 11 12"},
        {"held to the segment", rising, 1, out(99, 5), "6.667 6.667, 30 5"},
        {"aligned", rising, 1, out(20, 30, HandleChange::Aligned), "6.667 3.333, 20 30"},
        {"aligned, vertical", rising, 1, out(10, 15, HandleChange::Aligned), "10 6.667, 10 15"},
        {"mirrored", rising, 1, out(14, 25, HandleChange::Mirrored), "6 -5, 14 25"},
        {"mirrored, too long", rising, 1, out(30, 30, HandleChange::Mirrored), "0 0, 30 30"},
        {"mirrored, from before", rising, 1, HandleChange::movedIn({2, 2}, HandleChange::Mirrored), "2 2, 18 18"},
        {"flat", rising, 1, HandleChange::flat(), "6.667 10, 16.67 10"},
        {"flat after", rising, 1, HandleChange::flat().onlyOut(), "6.667 6.667, 16.67 10"},
        {"automatic", rising, 1, HandleChange::automatic(), "6.667 7.692, 16.67 14.62"},
        {"automatic, before only", rising, 1, HandleChange::automatic().onlyIn(), "6.667 7.692, 16.67 13.33"},
        {"automatic, turning", turning, 1, HandleChange::automatic(), "6.667 10, 16.67 10"},
        {"automatic, first", rising, 0, HandleChange::automatic(), "none, 3.333 3.889"},
        {"automatic, last", rising, 2, HandleChange::automatic(), "23.33 18.89, none"},
        {"automatic, level", level, 1, HandleChange::automatic(), "6.667 5, 13.33 5"},
        {"level, flat point", level, 0, out(2, 5), "none, 2 5"},
        {"level", level, 0, out(2, 9), "both keyframes have the same value, so that the handle has no height"},
        {"level, extremum", level, 0, out(2, 9).withExtremum(), "none, 0.6667 6.333"},
        {"level, tied", level, 1, out(12, 6, HandleChange::Aligned),
         "both keyframes have the same value, so that the handle has no height"},
        {"no segment", rising, 2, out(40, 1), "there is no segment on that side of the keyframe"},
        {"not finite", rising, 1, out(12, NAN), "the values are not finite"},
        {"no component", rising, 1, HandleChange::flat().ofComponent(1), "the value has no such component"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Number number("number");
        for (const auto& [time, value] : row.keys)
            number.vSetValue(value, at(time));
        const std::string before = lines(number);
        ParameterHandlesEdit edit(number, Context::Explicit(number.keyframeTime(row.index, {})), row.change);
        const QString refusal = edit.refusal();
        edit.doIt();
        const KeyframeHandles now = handles({&number, View(), row.index});
        EXPECT_EQ(refusal.isEmpty() ? textOf(now.in) + ", " + textOf(now.out) : refusal, row.result);
        EXPECT_TRUE(refusal.isEmpty() || lines(number) == before);
        edit.undoIt();
        EXPECT_EQ(lines(number), before);
    }
    Number held("held");
    key(held, {{0, 1.}, {5, 2.}, {9, 2.}});
    held.vSetInterpolation(Interpolation::Constant, at(0));
    EXPECT_EQ(ParameterHandlesEdit(held, {Time(), {}}, out(1, 1)).refusal(), "the segment holds its value");
    Parameter<bool> flag("flag");
    key(flag, {{0, true}});
    EXPECT_NE(ParameterHandlesEdit(flag, {Time(), {}}, HandleChange::flat()).refusal(), "");
    EXPECT_EQ(textOf(handles({&flag, View(), 0}).out), "none");
}

/// A point has one shape for both coordinates.
TEST(Handles, OfOneComponentMoveTheOthersInProportion) {
    PointParameter point("point");
    key(point, {{0, QPointF(0, 0)}, {10, QPointF(10, 40)}, {20, QPointF(10, 80)}});
    ParameterHandlesEdit(point, {Time(), {}}, HandleChange::movedOut({4, 20}).ofComponent(1)).doIt();
    EXPECT_EQ(textOf(handles({&point, View(), 0}, 0).out), "4 5");
    const HandleChange raised = HandleChange::movedOut({14, 20}).withExtremum();
    EXPECT_EQ(ParameterHandlesEdit(point, {Time::fromInt(10), {}}, raised).refusal(), "the components share one shape");
    ParameterHandlesEdit(point, {Time::fromInt(10), {}}, HandleChange::automatic()).doIt();
    const auto smooth = handles({&point, View(), 1}, 1);
    EXPECT_GT(smooth.in->value, 0.0);
    EXPECT_LT(smooth.out->value, 80.0);
}

TEST(Handles, AutomaticOnesAreSmoothAndDoNotOvershoot) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> any(0.0, 1.0);
    for (int round = 0; round < 300; ++round) {
        Number number("number");
        double time = 0.0;
        for (int i = 0; i < 6; ++i)
            number.vSetValue(std::floor(any(random) * 8.0) * 100.0, at(time += 0.01 + 20.0 * any(random)));
        for (const Context& keyframe : number.allKeyframes())
            ParameterHandlesEdit(number, Context::Explicit(keyframe), HandleChange::automatic()).doIt();
        for (unsigned int i = 0; i < 6; ++i) {
            const KeyframeData<double> key = number.keyframe(i, {});
            const IType& shape = key.interpolationData;
            EXPECT_TRUE(std::min(shape.y1, shape.y2) >= 0.0 && std::max(shape.y1, shape.y2) <= 1.0);
            const KeyframeHandles both = handles({&number, View(), i});
            if (!both.in || !both.out)
                continue;
            const double before = (key.value - both.in->value) / (key.time.toDouble() - both.in->time);
            const double after = (both.out->value - key.value) / (both.out->time - key.time.toDouble());
            EXPECT_NEAR(before, after, 1e-9 * std::max(1.0, std::abs(before)));
        }
    }
}

TEST(Handles, AnExtremumMakesTheCurveThatWasAskedFor) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> any(0.0, 1.0);
    for (int round = 0; round < 2000; ++round) {
        Number number("number");
        key(number, {{0, 5.}, {10, 5.}});
        const double x1 = any(random);
        const double x2 = any(random);
        const double height = 20.0 * any(random) - 10.0;
        const bool isOut = round % 2 == 0;
        const HandlePoint out{10.0 * x1, isOut ? 5.0 + height : 5.0};
        const HandlePoint in{10.0 * x2, isOut ? 5.0 : 5.0 + height};
        const HandleChange changes[] = {HandleChange::movedOut(out), HandleChange::movedIn(in)};
        for (const bool isFlat : {true, false}) {
            const bool isStart = isOut != isFlat;
            ParameterHandlesEdit(number, {Time::fromInt(isStart ? 0 : 10), {}}, changes[isStart ? 0 : 1].withExtremum())
                .doIt();
        }
        ASSERT_GE(number.keyframeCount({}), 3u);
        for (int i = 0; i <= 50; ++i) {
            const double s = detail::easingParameter(x1, x2, i / 50.0);
            const double bulge = 3.0 * s * (1.0 - s) * (isOut ? 1.0 - s : s) * height;
            EXPECT_NEAR(number.value(at(i / 5.0)), 5.0 + bulge, 1e-11) << x1 << ' ' << x2 << ' ' << height;
        }
    }
}

} // namespace

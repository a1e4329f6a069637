// What the edits of whole curves make of exhibits. That they keep what they promise is a matter of fuzz/reshaping_fuzz.

#include "prm/Answers.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace Prm;

namespace {

/// One segment of ten frames.
struct Segment : Number {
    Segment(const IType& shape, double to) {
        key(*this, {{0, 0.}, {10, to}});
        vSetInterpolationData(shape, 0, View(0));
    }
    double greatestError(const std::function<double(double)>& course) const {
        double most = 0.0;
        for (int i = 0; i < 2000; ++i)
            most = std::max(most, std::abs(value(at(i / 200.)) - course(i / 2000.)));
        return most;
    }
};

IType bezier(double x1, double y1, double x2, double y2) {
    return {Interpolation::Bezier, x1, y1, x2, y2};
}

TEST(Reshaping, InsertsAsManyKeyframesAsTheCurveNeeds) {
    const struct {
        const char* name;
        IType shape;
        double to;
        unsigned int count;
        const char* strict;
    } rows[] = {
        {"held", Interpolation::Constant, 8, 3, ""},
        {"straight", Interpolation::Linear, 8, 3, ""},
        {"bent", bezier(0.42, 0, 0.58, 1), 8, 3, ""},
        {"returns to its start", bezier(1 / 3., -1, 2 / 3., 2 / 3.), 8, 4,
         "one keyframe is not enough to keep the curve"},
        {"fast before", bezier(0.98, 0, 0.1, 1), 8, 4, "one keyframe is not enough to keep the curve"},
        {"bent between equal values", bezier(0.2, 3, 0.4, -1), 0, 3, ""},
        {"vertical within", bezier(1, 0, 0, 1), 8, 2, "the curve is vertical within the segment"},
        {"custom", {Interpolation::Custom0, 0.1}, 8, 2, "a function of the application computes the values there"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Segment segment(row.shape, row.to);
        const ParameterInsertKeyframeEdit strict(segment, at(5), ParameterInsertKeyframeEdit::Refuse);
        EXPECT_EQ(strict.refusal(), row.strict);
        ParameterInsertKeyframeEdit(segment, at(5)).doIt();
        EXPECT_EQ(segment.keyframeCount(View(0)), row.count);
    }
}

TEST(Reshaping, APartOfAnEasingIsTheNamedFunction) {
    const auto power = [](double n) { return [n](double x) { return std::pow(x, n); }; };
    const auto bounce = [](double x) {
        double height = 1.0;
        for (const auto& [middle, end] : {std::pair(0., 4.), {6., 8.}, {9., 10.}, {10.5, 11.}}) {
            height = std::pow(x * 11 - middle, 2) / 16 + (middle == 0 ? 0 : 1 - std::pow(end - middle, 2) / 16);
            if (x * 11 <= end)
                break;
        }
        return height;
    };
    const auto elastic = [](double x) { return 1 + std::exp2(-10 * x) * std::sin((10 * x - 0.75) * 2 * M_PI / 3); };
    const struct {
        const char* name;
        std::function<double(double)> course;
        double error;
    } rows[] = {
        {"easeInQuad", power(2), 1e-14},
        {"cubic-in", power(3), 1e-14},
        {"back in", [](double x) { return x * x * (2.70158 * x - 1.70158); }, 1e-14},
        {"SINE_IN", [](double x) { return 1 - std::cos(x * M_PI / 2); }, 0.0076},
        {"quart-in", power(4), 0.0057},
        {"quint-in", power(5), 0.0114},
        {"expo-in", [](double x) { return std::exp2(10 * x - 10) * (x > 0); }, 0.0121},
        {"circ-in", [](double x) { return 1 - std::sqrt(1 - x * x); }, 0.0019},
        {"sine-in-out", [](double x) { return (1 - std::cos(x * M_PI)) / 2; }, 0.002},
        {"bounce-out", bounce, 1e-14},
        {"elastic-out", elastic, 0.0032},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Segment segment(Interpolation::Linear, 1);
        ASSERT_TRUE(Easing::find(row.name));
        ParameterEaseEdit(segment, KeyframeSpan(), *Easing::find(row.name)).doIt();
        EXPECT_LE(segment.greatestError(row.course), row.error);
        EXPECT_GE(segment.greatestError(row.course), row.error / 1e3 * (row.error > 1e-6));
    }
    EXPECT_EQ(Easing::find("easeOutBounce")->name, "bounce-out");
    EXPECT_EQ(Easing::find("bounc"), nullptr);
}

TEST(Reshaping, OfPartsThatAreKeyedTogetherKeepsThemSo) {
    CompoundParameter both("both", true);
    Number x("x"), y("y");
    for (int i = 0; i <= 20; ++i) {
        key(x, {{i, i * 1.}});
        key(y, {{i, std::sin(i)}});
    }
    both.addParameter(x);
    both.addParameter(y);
    ParameterSimplifyEdit simplify(both, KeyframeSpan(), 0.3);
    simplify.doIt();
    EXPECT_LT(x.allKeyframes().size(), 21);
    EXPECT_EQ(x.allKeyframes(), y.allKeyframes());
    simplify.undoIt();
    ParameterInsertKeyframeEdit(x, at(4.5)).doIt();
    EXPECT_EQ(x.allKeyframes().size(), 22);
    EXPECT_EQ(x.allKeyframes(), y.allKeyframes());
}

TEST(Reshaping, BakesWhatAMasterShowsAndLetsItTakeItBack) {
    Number master("master"), own("own");
    key(master, {{0, 1.}, {4, 9.}});
    key(own, {{2, 5.}});
    master.bAddConstrainedParameter(&own);
    ParameterBakeEdit bake(own, KeyframeSpan(), 2);
    bake.doIt();
    EXPECT_EQ(own.masterParameter(), nullptr);
    EXPECT_EQ(own.keyframe(1, View(0)).value, 5);
    EXPECT_EQ(own.keyframeCount(View(0)), 3u);
    bake.undoIt();
    EXPECT_EQ(own.masterParameter(), &master);
    EXPECT_EQ(own.keyframeCount(View(0)), 1u);
}

TEST(Reshaping, BakedStepsDoNotLeadBeyondAJump) {
    for (const double step : {1., 3.}) {
        Number held("held");
        held.vSetDefaultInterpolation(Interpolation::Constant);
        key(held, {{0, 0.}, {10, 5.}, {20, 9.}});
        ParameterBakeEdit(held, KeyframeSpan(), step).doIt();
        EXPECT_EQ(bounds(held, View(0), TimeSpan::all()), std::pair(0., 9.));
    }
}

TEST(Reshaping, BakesOnlyAtTimesThatCanBe) {
    Number own("own"), bare("bare");
    key(own, {{0, 1.}, {4, 9.}});
    const KeyframeSpan late = KeyframeSpan().between(Time::INVALID, Time::INVALID);
    EXPECT_EQ(ParameterBakeEdit(bare, late).refusal(), "the times are not finite, or have more than 2^24 steps");
    EXPECT_EQ(ParameterSmoothEdit(own, KeyframeSpan().between(at(0).time, at(1e6).time), 1e6, 0).refusal(),
              "the radius has too many steps");
    ParameterBakeEdit(own, KeyframeSpan().between(at(2e9).time, at(2e9 + 1e-6).time), 1e-10).doIt();
    EXPECT_LT(own.keyframeCount(View(0)), 10u);
}

} // namespace

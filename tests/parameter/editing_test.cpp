// What the random edits of the model do not reach.

#include "prm/NumericParameter.h"
#include "tests/parameter/Keying.h"
#include "tests/support/ChangeRecorder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>

using namespace Prm;

namespace {

using P = Parameter<int>;

TEST(Editing, CopiesComeFromParametersOfTheSameType) {
    P parameter(QStringLiteral("own"));
    key(parameter, {{10, 1}});
    const P copied(parameter);
    EXPECT_EQ(copied.value(at(10)), 1);
    const Parameter<bool> other(QStringLiteral("other"));
    ChangeRecorder recorder(&parameter);
    parameter.vCopyKeyframeDataFrom(nullptr);
    parameter.vCopyKeyframeDataFrom(&other);
    parameter.copyViewData(View(4), View(0), &other);
    parameter.assignFrom(other);
    parameter.assignFrom(parameter);
    EXPECT_EQ(recorder.take(), "");
    parameter.vCopyKeyframeDataFrom(&parameter);
    EXPECT_EQ(recorder.take(), "PARAMETER_ASSIGNED 0 0\n");
    EXPECT_EQ(parameter.keyframeCount(View()), 1u);
    P target(QStringLiteral("target"));
    target.vCopyKeyframeDataFrom(&parameter);
    EXPECT_EQ(target.scriptName(), QStringLiteral("target"));
    target.assignFrom(parameter);
    EXPECT_EQ(target.scriptName(), parameter.scriptName());
}

TEST(Editing, AMappingOfTimesMayFailOrEditTheParameter) {
    P parameter;
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
        return time;
    });
    parameter.adjustKeyframesTime([&](Time time) {
        parameter.vDeleteAllKeyframes(View());
        parameter.deleteView(View(3));
        return time;
    });
    EXPECT_TRUE(parameter.numViews() == 1 && parameter.keyframeCount(View()) == 0);
    auto* const deleted = new P(parameter);
    key(*deleted, {{10, 1}, {20, 2}});
    deleted->adjustKeyframesTime([&](Time time) {
        delete deleted;
        return time;
    });
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
    P parameter;
    EXPECT_EQ(parameter.heroView(), View::INVALID());
    parameter.setViewSelector(selector.get(), 5);
    using Marks = std::vector<bool>;
    const std::tuple<const char*, Marks, View> rows[] = {{"one of three", {true, false, true}, 1},
                                                         {"two of three", {false, true, false}, View::INVALID()},
                                                         {"the only view", {false}, 0},
                                                         {"all marked", {true, true}, View::INVALID()},
                                                         {"no views", {}, View::INVALID()}};
    for (const auto& [name, marks, hero] : rows) {
        selector->clearViewData();
        for (quint32 view = 0; view < marks.size(); ++view)
            selector->vSetValue(marks[view], still(view));
        EXPECT_EQ(parameter.heroView(), hero) << name;
    }
    selector->vSetValue(false, still());
    P assigned;
    assigned.assignFrom(parameter);
    EXPECT_EQ(assigned.heroView(), View(0));
    EXPECT_EQ(assigned.viewSelectorCompanion(), 5u);
    selector.reset();
    EXPECT_EQ(parameter.heroView(), View::INVALID());
}

} // namespace

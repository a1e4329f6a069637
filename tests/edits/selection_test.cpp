// Edits of a selection, and dragging one.

#include "prm/CurveParameter.h"
#include "prm/KeyframeSelectionEdit.h"
#include "tests/support/ChangeRecorder.h"
#include "tests/world/Acts.h"

#include <gtest/gtest.h>

#include <random>

using namespace Worlds;

namespace {

KeyframeSelection selected(P& parameter, double from, double to) {
    KeyframeSelection selection;
    selection.add(parameter, {from, to, true, true});
    return selection;
}

/// A change with one more member.
template <class T>
KeyframeChange both(KeyframeChange change, std::optional<T> KeyframeChange::*member, const T& value) {
    change.*member = value;
    return change;
}

TEST(Selection, IsChangedAsOneEdit) {
    const IType hold(Interpolation::Constant);
    const Easing twoParts{QString(), {{0.5, 0.25, Interpolation::Linear}, {1, 1, hold}}};
    struct Row {
        const char* name;
        KeyframeChange change;
        const char* keys;
        const char* sent;
        /// How the text for the menu begins.
        const char* words;
    };
    const char* const moved = "KEYFRAME_MOVED 0 0\n";
    const char* const assigned = "PARAMETER_ASSIGNED 0 0\n";
    // Of 0=0 1=1 2=2 10=10, those up to 2.
    const Row rows[] = {
        {"onto each other's places", KeyframeChange::moved(1), "1=0 2=1 3=2 10=10 ", moved, "Move"},
        {"onto one that stays", KeyframeChange::moved(8), "8=0 9=1 10=2 ", assigned, "Move"},
        {"past one that stays", KeyframeChange::moved(9.5), "9.5=0 10=10 10.5=1 11.5=2 ", assigned, "Move"},
        {"by a nudge", KeyframeChange::moved(-0.25), "-0.25=0 0.75=1 1.75=2 10=10 ", moved, "Move"},
        {"scaled", KeyframeChange::retimed(Retiming::scaled(3, Time::fromInt(1))), "-2=0 1=1 4=2 10=10 ", moved,
         "Retime"},
        {"in time and value", KeyframeChange::moved(1, {5}), "1=5 2=6 3=7 10=10 ", assigned, "Move"},
        {"values scaled", KeyframeChange::scaledValues(2, 1), "0=-1 1=1 2=3 10=10 ", assigned, "Change values of"},
        {"eased", KeyframeChange::shaped(hold), "0=0 1=1 2=2 10=10 ", assigned, "Change interpolation of"},
        {"eased in parts", KeyframeChange::eased(twoParts), "0=0 0.5=0.25 1=1 1.5=1.25 2=2 6=4 10=10 ", assigned,
         "Change interpolation of"},
        {"flat", KeyframeChange::withHandles(HandleChange::flat()), "0=0 1=1 2=2 10=10 ", assigned,
         "Change handles of"},
        {"deleted", KeyframeChange::deleted(), "10=10 ", assigned, "Delete"},
        {"in time, values scaled",
         both(KeyframeChange::scaledValues(2), &KeyframeChange::retiming, Retiming::shifted(1)), "1=0 2=2 3=4 10=10 ",
         assigned, "Change"},
        {"in time, eased", both(KeyframeChange::shaped(hold), &KeyframeChange::retiming, Retiming::shifted(1)),
         "1=0 2=1 3=2 10=10 ", assigned, "Change"},
        {"eased, flat", both(KeyframeChange::shaped(hold), &KeyframeChange::handles, HandleChange::flat()),
         "0=0 1=1 2=2 10=10 ", assigned, "Change"},
        {"not at all", KeyframeChange::moved(0), "0=0 1=1 2=2 10=10 ", "", "Move"},
        {"out of range", KeyframeChange::moved(1e10), "0=0 1=1 2=2 10=10 ", "", "Move"},
        {"to infinity", KeyframeChange::moved(1, {INFINITY}), "0=0 1=1 2=2 10=10 ", "", "Move"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Number x("x");
        Number y("y");
        KeyframeSelection selection;
        for (Number* number : {&x, &y}) {
            key(*number, {{0, 0.}, {1, 1.}, {2, 2.}, {10, 10.}});
            key(*number, {{1, 5.}}, 1);
            selection.add(*number, View(0), {0, 2, true, true});
        }
        const std::string before = lines(x);
        ChangeRecorder ofX(&x);
        ChangeRecorder ofY(&y);
        KeyframeSelectionEdit edit(selection, row.change);
        edit.doIt();
        EXPECT_EQ(keyframesOf(x), row.keys);
        EXPECT_EQ(keyframesOf(y), keyframesOf(x));
        EXPECT_EQ(keyframesOf(x, 1), "1=5 ");
        EXPECT_EQ(ofX.take(), row.sent);
        EXPECT_EQ(ofY.take(), row.sent);
        edit.undoIt();
        EXPECT_EQ(lines(x), before);
        EXPECT_EQ(ofX.take(), *row.sent ? assigned : "");
        EXPECT_EQ(edit.usageLogInfo(), "x, y");
        EXPECT_EQ(edit.summary().toString().toStdString(),
                  row.words + std::string(*row.sent ? " 6" : " 0") + " keyframes of 2 parameters");
    }
}

TEST(Selection, OfAPartTakesTheKeyframesThatAreKeyedTogether) {
    Number x("x");
    Number y("y");
    CompoundParameter position("position", true);
    position.addParameter(x);
    position.addParameter(y);
    key(x, {{0, 0.}, {5, 5.}, {9, 9.}});
    KeyframeSelection both = selected(x, 5, 5);
    both.add(y, {9, 9, true, true});
    KeyframeSelectionEdit edit(both, KeyframeChange::moved(4, {1}));
    edit.doIt();
    EXPECT_EQ(keyframesOf(x), "0=0 9=6 13=9 ");
    EXPECT_EQ(keyframesOf(y), "0=0 9=0 13=1 ");
    edit.undoIt();
    const Easing middle{QString(), {{0.5, 0.25, Interpolation::Linear}, {1, 1, Interpolation::Linear}}};
    KeyframeSelectionEdit eased(selected(x, 5, 5), KeyframeChange::eased(middle));
    eased.doIt();
    EXPECT_EQ(keyframesOf(x), "0=0 5=5 7=6 9=9 ");
    EXPECT_EQ(keyframesOf(y), "0=0 5=0 7=0 9=0 ");
    eased.undoIt();
    KeyframeSelectionEdit(selected(x, 5, 9), KeyframeChange::deleted()).doIt();
    EXPECT_EQ(keyframesOf(y), "0=0 ");
}

/// Every preview is what the edit makes of the beginning; cancelling brings it back, committing makes the last one.
TEST(Selection, IsDraggedFromTheBeginning) {
    std::mt19937 random(5);
    const auto below = [&](int count) { return static_cast<int>(random() % static_cast<unsigned>(count)); };
    for (int round = 0; round < 120; ++round) {
        Exhibits world(70 * below(2));
        P& own = *world.parameter(static_cast<Who>(below(world.parameterCount)));
        P& other = *world.parameter(static_cast<Who>(below(world.parameterCount)));
        KeyframeSelection selection;
        selection.add(own, {below(12) - 1., 11, true, below(2) != 0});
        if (below(2) == 0)
            selection.add(other);
        const std::string before = world.state();
        InteractiveKeyframeEdit drag(selection);
        KeyframeChange last;
        for (int i = below(4); i >= 0; --i) {
            KeyframeChange change = KeyframeChange::moved((below(41) - 20) / 2.);
            if (below(4) == 0)
                change = KeyframeChange::retimed(Retiming::scaled(below(5) / 2., Time::fromInt(below(9))));
            if (below(4) == 0)
                change.parts = Easing::find("bounce-out")->parts;
            if (below(4) == 0)
                change.handles = below(2) == 0 ? HandleChange::automatic() : HandleChange::flat();
            change.deletes = below(8) == 0;
            if (below(3) == 0)
                change.valueShift = {below(9) - 4., 1.};
            if (drag.preview(change))
                last = change;
        }
        const std::string shown = world.state();
        const auto command = below(3) ? drag.commit() : nullptr;
        drag.cancel();
        EXPECT_EQ(world.state(), before);
        KeyframeSelectionEdit edit(selection, last);
        (command ? *command : edit).doIt();
        EXPECT_EQ(world.state(), shown);
        (command ? *command : edit).undoIt();
        EXPECT_EQ(world.state(), before);
    }
}

TEST(Selection, IsDraggedWhileObserversInterfere) {
    const auto drags = [](const std::function<void(Number&, std::unique_ptr<InteractiveKeyframeEdit>&)>& interfere) {
        auto number = std::make_unique<Number>("number");
        Number second("second");
        KeyframeSelection selection;
        for (Number* const one : {number.get(), &second}) {
            key(*one, {{0, 1.}, {5, 2.}});
            selection.add(*one, {0, 0, true, true});
        }
        ChangeRecorder recorder(number.get());
        auto drag = std::make_unique<InteractiveKeyframeEdit>(selection);
        bool isFirst = true;
        recorder.then = [&](ParameterChange&) {
            if (!std::exchange(isFirst, false))
                return;
            interfere(*number, drag);
            if (number->scriptName() == "gone")
                number.reset();
        };
        std::string result;
        try {
            result = drag->preview(KeyframeChange::moved(2)) ? "shown " : "refused ";
        } catch (int) {
            result = "thrown ";
        }
        const auto both = [&] { return (number ? keyframesOf(*number) : "none ") + keyframesOf(second); };
        result += both();
        if (drag)
            drag->cancel();
        return result + "| " + both();
    };
    using Drag = std::unique_ptr<InteractiveKeyframeEdit>;
    EXPECT_EQ(drags([](Number&, Drag&) { throw 1; }), "thrown 0=1 5=2 0=1 5=2 | 0=1 5=2 0=1 5=2 ");
    EXPECT_EQ(drags([](Number& number, Drag&) { number.setScriptName("gone"); }), "shown none 2=1 5=2 | none 0=1 5=2 ");
    EXPECT_EQ(drags([](Number& number, Drag&) {
                  key(number, {{3, 7.}});
              }),
              "shown 2=1 3=7 5=2 2=1 5=2 | 0=1 5=2 0=1 5=2 ");
    EXPECT_EQ(drags([](Number& number, Drag&) { number.vDeleteAllKeyframes({}); }), "shown 2=1 5=2 | 0=1 5=2 0=1 5=2 ");
    EXPECT_EQ(drags([](Number&, Drag& drag) { EXPECT_FALSE(drag->preview({}) || drag->commit()); }),
              "shown 2=1 5=2 2=1 5=2 | 0=1 5=2 0=1 5=2 ");
    EXPECT_EQ(drags([](Number&, Drag& drag) { drag->cancel(); }), "shown 0=1 5=2 0=1 5=2 | 0=1 5=2 0=1 5=2 ");
    EXPECT_EQ(drags([](Number&, Drag& drag) { drag.reset(); }), "shown 0=1 5=2 0=1 5=2 | 0=1 5=2 0=1 5=2 ");
}

} // namespace

// What fuzz/extent_fuzz.cpp cannot see: which extents are exact, and where they end.

#include "prm/ChangedSince.h"
#include "prm/CurveKinds.h"
#include "tests/support/Library.h"

#include <QDebug>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <optional>

using namespace Prm;

namespace {

std::string textOf(const TimeSpans& spans) {
    QString text;
    QDebug(&text) << spans;
    return text.trimmed().toStdString();
}

/// The extents that a parameter emits meanwhile.
template <class Edit> Extent extentOfEdit(ParameterWithoutType& parameter, const Edit& edit) {
    Extent extent;
    QObject receiver;
    QObject::connect(
        &parameter, &ParameterWithoutType::changed, &receiver,
        [&](ParameterChange& change) { extent |= extentOf(change); }, Qt::DirectConnection);
    edit();
    return extent;
}

struct Row {
    const char* edit;
    void (*run)(Number& n);
    const char* expected;
    Extrapolation outside = Extrapolation::Constant;
    /// What the difference of the states shows, if that is less.
    const char* difference = nullptr;
};
#define EDIT(...) #__VA_ARGS__, [](Number & n) { static_cast<void>(__VA_ARGS__); }

constexpr auto linear = Extrapolation::Linear;
constexpr auto custom = Extrapolation::Custom0;

void shift(Number& number, int from, int to) {
    Command command;
    ParameterRetimeEdit::appendToCommand(number, Retiming::shifted(2).between(Time::fromInt(from), Time::fromInt(to)),
                                         command);
    command.doIt();
}

/// Of four keyframes, of which the third, at 20, holds its value.
TEST(ExtentOfChange, IsBetweenTheNeighbours) {
    const Row rows[] = {
        {EDIT(n.vSetValue(9, at(10))), "(0, 20)"},
        {EDIT(n.vSetValue(9, at(30))), "[30, inf)"},
        {EDIT(n.vSetValue(9, at(0))), "[-inf, 10)"},
        {EDIT(n.vSetValue(9, at(5))), "(0, 10)"},
        {EDIT(n.vSetValue(9, at(25))), "[25, 30)"},
        {EDIT(n.vSetValue(9, at(40))), "(30, inf)"},
        {EDIT(n.vDeleteKeyframe(Context::Explicit(at(10)))), "(0, 20)"},
        {EDIT(n.vDeleteKeyframe(Context::Explicit(at(30)))), "[30, inf)"},
        {EDIT(n.vSetInterpolation(Interpolation::Bezier, at(10))), "(10, 20)"},
        {EDIT(n.vSetInterpolation(Interpolation::Bezier, at(30))), "{}"},
        {EDIT(n.vSetInterpolation(Interpolation::Linear, at(10))), "(10, 20)", {}, "{}"},
        {EDIT(n.vSetValue(9, still())), "{}"},
        {EDIT(n.vSetExtrapolationBefore(linear)), "[-inf, 0)"},
        {EDIT(n.vDeleteAllKeyframes(View(0))), "[-inf, inf)"},
        {EDIT(Bsc::importState(n, n.exportState())), "{}"},
        {EDIT(n.hide(true)), "{}"},
        {EDIT(shift(n, 10, 20)), "(0, 30)"},
        {EDIT(n.vSetValue(9, at(10))), "[-inf, 0) + (0, 20)", linear},
        {EDIT(n.vSetValue(9, at(30))), "[30, inf)", linear},
        {EDIT(n.vSetValue(9, at(40))), "(30, inf)", linear},
        {EDIT(n.vSetInterpolationData({Interpolation::Bezier, 0, 1, 1, 1}, 0, View(0))), "[-inf, 0) + (0, 10)", linear},
        {EDIT(n.vSetValue(9, at(10))), "[-inf, 0) + (0, 20) + (30, inf)", custom},
    };
    for (const Row& row : rows) {
        Number number(QStringLiteral("number"));
        key(number, {{0, 1.}, {10, 2.}, {20, 4.}, {30, 3.}});
        number.vSetInterpolation(Interpolation::Constant, at(20));
        number.vSetExtrapolationBefore(row.outside);
        number.vSetExtrapolationAfter(row.outside);
        const auto former = number.exportState();
        const Extent extent = extentOfEdit(number, [&] { row.run(number); });
        EXPECT_EQ(textOf(extent.in(&number, View(3))), row.expected) << row.edit;
        EXPECT_EQ(textOf(differenceOf(*former, number).in(View(3))), row.difference ? row.difference : row.expected)
            << row.edit;
    }
}

void undoAndRedo(Number& number, void (*edit)(Number&, Command&)) {
    Command command;
    edit(number, command);
    {
        const QSignalBlocker blocker(number);
        command.doIt();
    }
    command.undoIt();
}

/// Of keyframes at 0, 10, 20 and so on: of few, whose snapshot is whole, and of many.
TEST(ExtentOfChange, OfUndoIsThatOfTheEdit) {
#define UNDONE(...) EDIT(undoAndRedo(n, [](Number& p, Command& c) { __VA_ARGS__; }))
    const Row rows[] = {
        {UNDONE(c.push_back(new ParameterSetValueEdit(p, 9, at(10)))), "(0, 20)"},
        {UNDONE(c.push_back(new ParameterSetValueEdit(p, 9, at(15)))), "(10, 20)"},
        {UNDONE(c.push_back(new ParameterSetValueEdit(p, 9, still()))), "{}"},
        {UNDONE(p.createKeyframeDeletion(Context::Explicit(at(10)), c)), "(0, 20)"},
        {UNDONE(p.createKeyframeDeletion(Context::Explicit(at(0)), c)), "[-inf, 10)"},
        {UNDONE(p.vSetInterpolationCommand(Interpolation::Constant, at(10), c)), "(10, 20)"},
        {UNDONE(c.push_back(new ParameterWithoutTypeLockEdit(p, true))), "{}"},
        {UNDONE(c.push_back(new ParameterSetValueEdit(p, 9, at(10)))), "[-inf, 0) + (0, 20)", linear},
        {UNDONE(c.push_back(new ParameterSetValueEdit(p, 9, at(30)))), "(20, 40)", linear},
    };
    for (const Row& row : rows) {
        for (const int count : {6, 100}) {
            Number number(QStringLiteral("number"));
            for (int i = 0; i < count; ++i)
                key(number, {{10. * i, 1. + i % 3}});
            number.vSetExtrapolationBefore(row.outside);
            number.vSetExtrapolationAfter(row.outside);
            const Extent extent = extentOfEdit(number, [&] { row.run(number); });
            EXPECT_EQ(textOf(extent.in(&number, View(3))), row.expected) << row.edit << " of " << count;
        }
    }
}

/// The views, of a few, whose values an extent touches at time 1.
std::string viewsOf(const Extent& extent, const BasicParameter& parameter) {
    std::string views;
    for (const quint32 id : {0u, 1u, 2u, 3u, 5u, 6u, 7u, 9u, ~0u})
        if (extent.touches(&parameter, at(1, id)))
            views += id == ~0u ? "?" : std::to_string(id);
    return views;
}

/// Of views 0, 2 and 6.
TEST(ExtentOfChange, IsOfTheViewsThatReadTheData) {
    using Params = MVInterpolationParams;
    const std::tuple<Row, Params::Mode, bool> rows[] = {
        {{EDIT(n.vSetValue(9, at(1, 0))), "013579?"}, Params::Off, true},
        {{EDIT(n.vSetValue(9, at(1, 2))), "2"}, Params::Off, true},
        {{EDIT(n.vSetValue(9, at(1, 0))), "01235679?"}, Params::Off, false},
        {{EDIT(n.vSetValue(9, at(1, 2))), "23"}, Params::Nearest, true},
        {{EDIT(n.vSetValue(9, at(1, 2))), "1235"}, Params::Linear, true},
        {{EDIT(n.vSetValue(9, at(1, 6))), "35679"}, Params::Linear, true},
        {{EDIT(n.vSetValue(9, at(1, 2))), "1235"}, Params::Smooth, true},
        {{EDIT(n.vSetValue(9, at(1, 7))), "579"}, Params::Smooth, true},
        {{EDIT(n.uniquifyView(View(3))), "3", {}, ""}, Params::Off, true},
        {{EDIT(n.uniquifyView(View(3))), "35"}, Params::Linear, true},
        {{EDIT(n.deleteView(View(2))), "2"}, Params::Off, true},
        {{EDIT(n.deleteView(View(0))), "013579?"}, Params::Off, true},
    };
    for (const auto& [row, mode, isSplittable] : rows) {
        Number number(QStringLiteral("number"));
        for (const quint32 view : {0, 2, 6})
            key(number, {{0, 1. + view}, {1, 2. * view}, {2, 1.}}, view);
        number.setSplittable(isSplittable);
        number.setViewInterpolation({mode});
        const auto former = number.exportState();
        const auto* const run = &row.run;
        EXPECT_EQ(viewsOf(extentOfEdit(number, [&] { (*run)(number); }), number), row.expected) << row.edit;
        EXPECT_EQ(viewsOf(differenceOf(*former, number), number), row.difference ? row.difference : row.expected)
            << row.edit;
    }
}

/// A class of a host that computes each value from all keyframes.
struct Average : Number {
    using NumericParameter::NumericParameter;

    double interpolateValue(const BoundingKeyframes& around, const Context& context, Cache*) const override {
        return keyframeValue(around.before.index, context.view) + keyframeValue(0, context.view);
    }
};

TEST(ExtentOfChange, FollowsWhatShowsTheParameter) {
    Number master(QStringLiteral("master"));
    Number tied(QStringLiteral("tied"));
    Average hooked(QStringLiteral("hooked"));
    NumericParameter<int> other(QStringLiteral("other"));
    CompoundParameter inner(QStringLiteral("inner"), true);
    CompoundParameter outer(QStringLiteral("outer"));
    Number sibling(QStringLiteral("sibling"));
    key(master, {{0, 1.}, {10, 2.}, {20, 3.}});
    key(sibling, {{10, 5.}, {30, 5.}});
    for (ParameterWithoutType* const one : std::initializer_list<ParameterWithoutType*>{&tied, &other})
        master.bAddConstrainedParameter(one);
    tied.bAddConstrainedParameter(&hooked);
    inner.addParameter(tied);
    inner.addParameter(sibling);
    outer.addParameter(inner);
    Extent extent = extentOfEdit(master, [&] { master.vSetValue(9, at(10)); });
    const std::pair<const BasicParameter*, const char*> rows[] = {
        {&master, "(0, 20)"}, {&tied, "(0, 20)"},       {&inner, "(0, 20)"}, {&outer, "(0, 20)"},
        {&other, "{}"},       {&hooked, "[-inf, inf)"}, {&sibling, "{}"}};
    for (const auto& [shown, expected] : rows)
        EXPECT_EQ(textOf(extent.in(shown, View(1))), expected) << shown->scriptName().toStdString();
    EXPECT_TRUE(extentOfEdit(tied, [&] { tied.vSetValue(4, at(5)); }).isEmpty()) << "own animation is not shown";
    // Removes the keyframes of the other parts, which emit nothing.
    extent = extentOfEdit(inner, [&] { inner.vDeleteKeyframe(Context::Explicit(at(10))); });
    EXPECT_EQ(textOf(extent.in(&sibling, View(1))), "(5, 30)");
}

TEST(ExtentOfChange, OfACompoundIsThatOfItsParts) {
    const std::tuple<Row, const char*> rows[] = {
        {{EDIT(n.vSetValue(7, at(10))), "(0, 20)"}, "{}"},
        {{EDIT(n.vSetValue(7, at(30))), "(20, inf)"}, "(0, inf)"},
        {{EDIT(n.vSetValue(7, still())), "{}"}, "{}"},
        {{EDIT(n.hide(true)), "{}"}, "{}"},
    };
    for (const auto& [row, expected] : rows) {
        Number edited(QStringLiteral("edited"));
        Number other(QStringLiteral("other"));
        CompoundParameter pair(QStringLiteral("pair"));
        key(edited, {{0, 1.}, {10, 2.}, {20, 3.}, {30, 4.}});
        key(other, {{0, 1.}, {30, 2.}});
        pair.addParameter(edited);
        pair.addParameter(other);
        const auto* const run = &row.run;
        const Extent extent = extentOfEdit(pair, [&] { (*run)(edited); });
        EXPECT_EQ(textOf(extent.in(&edited, View())), row.expected) << row.edit;
        EXPECT_EQ(textOf(extent.in(&other, View())), expected) << row.edit;
    }
}

/// The record names a keyframe of lists that may be others by then.
TEST(ExtentOfChange, IsAllTimesAfterAnEditInAnEarlierSlot) {
    const std::pair<const char*, void (*)(Number&)> rows[] = {
        {EDIT(n.vSetValue(5, at(40)))},
        {EDIT(n.adjustKeyframesTime([](Time time) { return time + 1000; }))},
        {EDIT(n.retimeKeyframes([](Time time) { return time + 1000; }))},
        {EDIT(n.setSplittable(false))},
        {EDIT(n.setViewInterpolation({MVInterpolationParams::Linear}))},
    };
    for (const auto& [name, act] : rows) {
        bool isFirst = true;
        Number number(QStringLiteral("number"));
        key(number, {{0, 1.}, {10, 2.}, {20, 4.}, {30, 3.}});
        const auto* const run = &act;
        QObject::connect(&number, &ParameterWithoutType::changed, &number, [&](ParameterChange&) {
            if (std::exchange(isFirst, false))
                (*run)(number);
        });
        const Extent extent = extentOfEdit(number, [&] { number.vSetValue(9, at(20)); });
        EXPECT_EQ(textOf(extent.in(&number, View())), "[-inf, inf)") << name;
    }
}

TEST(ExtentOfChange, IsKeptOfManyParameters) {
    std::vector<std::unique_ptr<Number>> numbers;
    Extent all;
    for (int i = 0; i < 100; ++i) {
        numbers.push_back(std::make_unique<Number>(QString::number(i)));
        Number& number = *numbers.back();
        key(number, {{0, 1.}, {10. + i, 2.}, {200, 3.}});
        all |= extentOfEdit(number, [&] { number.vSetInterpolation(Interpolation::Bezier, at(10. + i)); });
        const Extent& itself = all;
        all |= itself;
    }
    for (std::size_t i = 0; i < numbers.size(); ++i)
        EXPECT_EQ(textOf(all.in(numbers[i].get(), View())), "(" + std::to_string(10 + i) + ", 200)");
    EXPECT_EQ(textOf(all.in(View(7))), "(10, 200)");
}

/// A set below a set, with one parameter of each kind, and a master outside.
struct Project {
    Project() {
        key(keyed, {{0, 1.}, {10, 2.}, {20, 3.}});
        key(part, {{0, 1.}, {10, 2.}});
        key(second, {{5, 1.}, {10, 2.}});
        master.bAddConstrainedParameter(&tied);
        compound.addParameter(part);
        compound.addParameter(second);
        for (ParameterWithoutType* const one :
             std::initializer_list<ParameterWithoutType*>{&keyed, &fresh, &tied, &compound})
            set.addParameter(*one);
        set.addBasicParameter(count);
        root.addParameterSet(set);
        changes.emplace(root);
    }

    /// What has changed in view 0, in the order of names.
    std::string changed() {
        const Extent extent = changes->take();
        std::vector<std::string> all;
        for (const BasicParameter* const one : extent.parameters())
            all.push_back(one->scriptName().toStdString() + textOf(extent.in(one, View())) + " ");
        for (const auto& [mark, members] :
             {std::pair("+", extent.came()), {"-", extent.went()}, {"~", extent.renamed()}})
            for (const Extent::Member& member : members)
                all.push_back(mark +
                              (member.set ? member.set->scriptName() : member.parameter->scriptName()).toStdString() +
                              " ");
        std::sort(all.begin(), all.end());
        return std::accumulate(all.begin(), all.end(), std::string());
    }

    Number keyed{"keyed"}, fresh{"fresh"}, master{"master", 1.}, tied{"tied"}, part{"part"}, second{"second"},
        late{"late"};
    CompoundParameter compound{"compound", true};
    OwnedStaticParameter<unsigned int> count{"count", 3};
    ParameterSet set{"set"}, root{"root"};
    std::optional<ChangedSince> changes;
};

void editAndUndo(Project& project) {
    ParameterSetValueEdit edit(project.keyed, 8., at(10));
    edit.doIt();
    edit.undoIt();
}
void blockAndHold(Project& project) {
    project.keyed.blockSignals(true);
    project.keyed.vSetInterpolation(Interpolation::Constant, at(10));
}
void useCustomKind(Project& project) {
    project.keyed.vSetInterpolation(Interpolation::Custom0, at(0));
    project.changed();
    registerInterpolation(Interpolation::Custom0, [](const IType&, double x) { return x; });
    registerInterpolation(Interpolation::Custom0, {});
}

TEST(ChangedSince, SeesAllThatChanges) {
#define ACT(...) #__VA_ARGS__, [](Project & p) { static_cast<void>(__VA_ARGS__); }
    const std::tuple<const char*, void (*)(Project&), const char*> rows[] = {
        {ACT(p.keyed.hide(true)), ""},
        {ACT(p.keyed.vSetValue(7, at(10))), "keyed(0, 20) "},
        {ACT(p.keyed.vSetValue(7, at(-5)), p.keyed.vSetValue(7, at(25))), "keyed[-inf, 0) + (20, inf) "},
        {ACT(editAndUndo(p)), ""},
        {ACT(p.keyed.adjustKeyframesTime([](Time t) { return t + t.toDouble(); })), "keyed(0, inf) "},
        {ACT(blockAndHold(p)), "keyed(10, 20) "},
        {ACT(p.fresh.vSetDefault(4)), "fresh[-inf, inf) "},
        {ACT(p.keyed.vSetDefault(4)), ""},
        {ACT(p.master.vSetValue(2, still())), "tied[-inf, inf) "},
        {ACT(p.tied.vSetValue(2, still())), ""},
        {ACT(p.master.bRemoveConstrainedParameter(&p.tied)), "tied[-inf, inf) "},
        {ACT(p.part.vDeleteKeyframe(Context::Explicit(at(10)))), "compound(0, inf) part(0, inf) second(5, inf) "},
        {ACT(p.count.doSetValue(4)), "count[-inf, inf) "},
        {ACT(p.set.setScriptName("other")), "~other "},
        {ACT(p.keyed.setDisplayName("Keyed")), "~keyed "},
        {ACT(p.set.addParameter(p.late)), "+late late[-inf, inf) "},
        {ACT(p.compound.addParameter(p.late)), "+late compound[-inf, inf) late[-inf, inf) "},
        {ACT(useCustomKind(p)), "keyed[-inf, inf) "},
    };
    for (const auto& [name, act, expected] : rows) {
        Project project;
        act(project);
        EXPECT_EQ(project.changed(), expected) << name;
        EXPECT_EQ(project.changed(), "") << name << ", asked again";
    }
}

TEST(ChangedSince, SeesMembersGo) {
    Project project;
    auto passing = boost::make_shared<Average>(QStringLiteral("passing"));
    project.set.addParameter(passing);
    EXPECT_EQ(project.changed(), "+passing passing[-inf, inf) ");
    ParameterChange::valueChanged(*passing, View());
    EXPECT_EQ(project.changed(), "passing[-inf, inf) ") << "what a host's class computes";
    const BasicParameter* const address = passing.get();
    passing.reset();
    project.root.clearAllLists();
    const Extent extent = project.changes->take();
    ASSERT_EQ(extent.went().size(), 1);
    EXPECT_EQ(extent.went().first().set, &project.set);
    EXPECT_TRUE(extent.touches(&project.keyed, at(3)) && extent.touches(&project.part, at(3)));
    EXPECT_TRUE(extent.parameters().contains(address));
}

TEST(ChangedSince, ComparesASetThatTwoSetsList) {
    Number former("former");
    Number late("late");
    ParameterSet shared("shared");
    ParameterSet one("one");
    ParameterSet two("two");
    ParameterSet root;
    shared.addParameter(former);
    for (ParameterSet* const set : {&one, &two}) {
        root.addParameterSet(*set);
        set->addParameterSet(shared);
    }
    ChangedSince changes(root);
    one.clearAllLists();
    shared.clearAllLists();
    shared.addParameter(late);
    const Extent extent = changes.take();
    EXPECT_TRUE(extent.came().size() == 1 && extent.came().first().parameter == &late);
    EXPECT_EQ(extent.went().size(), 2) << "shared from one, former from shared";
    EXPECT_TRUE(extent.touches(&former, at(0)) && extent.touches(&late, at(0)));
    EXPECT_TRUE(changes.take().isEmpty());
}

TEST(ChangedSince, OutlivesTheSet) {
    auto set = std::make_unique<ParameterSet>(QStringLiteral("set"));
    Number one(QStringLiteral("one"));
    Number two(QStringLiteral("two"));
    set->addParameter(one);
    set->addParameter(two);
    ChangedSince changes(*set);
    set->clearAllLists();
    set->addParameter(two);
    set->addParameter(one);
    const Extent moved = changes.take();
    EXPECT_TRUE(moved.came().size() == 1 && moved.went().size() == 1 && moved.parameters().isEmpty());
    set.reset();
    const Extent gone = changes.take();
    EXPECT_TRUE(gone.went().size() == 2 && gone.touches(&one, at(1)));
    EXPECT_TRUE(changes.take().isEmpty());
}

} // namespace

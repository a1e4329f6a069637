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

template <class Spans> std::string textOf(const Spans& spans) {
    QString text;
    QDebug(&text) << spans;
    return text.trimmed().toStdString();
}

/// Unites what it receives.
struct Listener : QObject {
    explicit Listener(ParameterWithoutType& parameter) {
        connect(
            &parameter, &ParameterWithoutType::changed, this,
            [this](ParameterChange& change) { extent |= extentOf(change); }, Qt::DirectConnection);
    }
    Extent take() { return std::exchange(extent, {}); }

    Extent extent;
};

/// Four keyframes, of which the third holds its value.
struct Exhibit {
    Exhibit() {
        key(number, {{0, 1.}, {10, 2.}, {20, 4.}, {30, 3.}});
        number.vSetInterpolation(Interpolation::Constant, at(20));
    }

    Number number{QStringLiteral("number")};
    std::unique_ptr<Listener> listener = std::make_unique<Listener>(number);
};

struct Row {
    const char* name;
    std::function<void(Number&)> edit;
    const char* expected;
    /// What the difference of the states shows, if that is less.
    const char* difference = nullptr;
    std::function<void(Number&)> before = [](Number&) {};
};

const auto linearOutside = [](Number& number) {
    number.vSetExtrapolationBefore(Extrapolation::Linear);
    number.vSetExtrapolationAfter(Extrapolation::Linear);
};
const auto customOutside = [](Number& number) { number.vSetExtrapolationAfter(Extrapolation::Custom0); };

TEST(ExtentOfChange, IsBetweenTheNeighbours) {
    const Row rows[] = {
        {"value", [](Number& n) { n.vSetValue(9, at(10)); }, "(0, 20)"},
        {"value after a segment that holds", [](Number& n) { n.vSetValue(9, at(30)); }, "[30, inf)"},
        {"value of the first", [](Number& n) { n.vSetValue(9, at(0)); }, "[-inf, 10)"},
        {"added", [](Number& n) { n.vSetValue(9, at(5)); }, "(0, 10)"},
        {"added where the segment holds", [](Number& n) { n.vSetValue(9, at(25)); }, "[25, 30)"},
        {"appended", [](Number& n) { n.vSetValue(9, at(40)); }, "(30, inf)"},
        {"removed", [](Number& n) { n.vDeleteKeyframe(Context::Explicit(at(10))); }, "(0, 20)"},
        {"removed after a segment that holds", [](Number& n) { n.vDeleteKeyframe(Context::Explicit(at(30))); },
         "[30, inf)"},
        {"kind", [](Number& n) { n.vSetInterpolation(Interpolation::Bezier, at(10)); }, "(10, 20)"},
        {"kind of the last", [](Number& n) { n.vSetInterpolation(Interpolation::Bezier, at(30)); }, "{}"},
        {"kind that it was", [](Number& n) { n.vSetInterpolation(Interpolation::Linear, at(10)); }, "(10, 20)", "{}"},
        {"static value beside keyframes", [](Number& n) { n.vSetValue(9, still()); }, "{}"},
        {"extrapolation", [](Number& n) { n.vSetExtrapolationBefore(Extrapolation::Linear); }, "[-inf, 0)"},
        {"cleared", [](Number& n) { n.vDeleteAllKeyframes(View(0)); }, "[-inf, inf)"},
        {"assigned", [](Number& n) { Bsc::importState(n, n.exportState()); }, "[-inf, inf)", "{}"},
        {"flag", [](Number& n) { n.hide(true); }, "{}"},
        {"beside a linear outside", [](Number& n) { n.vSetValue(9, at(10)); }, "[-inf, 0) + (0, 20)", nullptr,
         linearOutside},
        {"beside a linear outside that is flat", [](Number& n) { n.vSetValue(9, at(30)); }, "[30, inf)", nullptr,
         linearOutside},
        {"appended to one that is flat", [](Number& n) { n.vSetValue(9, at(40)); }, "(30, inf)", nullptr,
         linearOutside},
        {"shape beside a linear outside",
         [](Number& n) {
             n.vSetInterpolationData({Interpolation::Bezier, 0, 1, 1, 1}, 0, View(0));
         },
         "[-inf, 0) + (0, 10)", nullptr, linearOutside},
        {"custom outside", [](Number& n) { n.vSetValue(9, at(10)); }, "(0, 20) + (30, inf)", nullptr, customOutside},
        {"moved in order",
         [](Number& n) {
             Command command;
             ParameterRetimeEdit::appendToCommand(n, Retiming::shifted(2).between(Time::fromInt(10), Time::fromInt(20)),
                                                  command);
             command.doIt();
         },
         "(0, 30)"},
    };
    for (const Row& row : rows) {
        Exhibit exhibit;
        row.before(exhibit.number);
        exhibit.listener->take();
        const auto former = exhibit.number.exportState();
        row.edit(exhibit.number);
        EXPECT_EQ(textOf(exhibit.listener->take().in(&exhibit.number, View(3))), row.expected) << row.name;
        EXPECT_EQ(textOf(differenceOf(*former, exhibit.number).in(View(3))),
                  row.difference ? row.difference : row.expected)
            << row.name;
    }
}

/// The views, of a few, whose values an extent touches at time 1.
std::string viewsOf(const Extent& extent, const BasicParameter& parameter) {
    std::string views;
    for (const quint32 id : {0u, 1u, 2u, 3u, 5u, 6u, 7u, 9u, 4294967295u})
        if (extent.touches(&parameter, at(1, id)))
            views += id == 4294967295u ? "?" : std::to_string(id);
    return views;
}

TEST(ExtentOfChange, IsOfTheViewsThatReadTheData) {
    const auto edit = [](quint32 view) { return [=](Number& n) { n.vSetValue(9, at(1, view)); }; };
    const auto splittable = [](bool is) { return [=](Number& n) { n.setSplittable(is); }; };
    const auto mode = [](MVInterpolationParams::Mode is) { return [=](Number& n) { n.setViewInterpolation({is}); }; };
    const Row rows[] = {
        {"source data", edit(0), "01357?9", nullptr, splittable(true)},
        {"own data", edit(2), "2", nullptr, splittable(true)},
        {"unsplittable", edit(0), "0123567?9", nullptr, splittable(false)},
        {"nearest", edit(2), "23", nullptr, mode(MVInterpolationParams::Nearest)},
        {"linear", edit(2), "1235", nullptr, mode(MVInterpolationParams::Linear)},
        {"linear, last one", edit(6), "35679", nullptr, mode(MVInterpolationParams::Linear)},
        {"smooth", edit(2), "1235", nullptr, mode(MVInterpolationParams::Smooth)},
        {"view gained", [](Number& n) { n.uniquifyView(View(3)); }, "3", "", splittable(true)},
        {"view gained, linear", [](Number& n) { n.uniquifyView(View(3)); }, "35", nullptr,
         mode(MVInterpolationParams::Linear)},
        {"view lost", [](Number& n) { n.deleteView(View(2)); }, "2", nullptr, splittable(true)},
        {"source lost", [](Number& n) { n.deleteView(View(0)); }, "013579?", "", splittable(true)},
    };
    for (const Row& row : rows) {
        Number number(QStringLiteral("number"));
        for (const quint32 view : {0, 2, 6})
            key(number, {{0, 1. + view}, {1, 2. * view}, {2, 1.}}, view);
        row.before(number);
        Listener listener(number);
        const auto former = number.exportState();
        row.edit(number);
        std::string expected = row.expected;
        std::sort(expected.begin(), expected.end());
        const auto sorted = [](std::string views) {
            std::sort(views.begin(), views.end());
            return views;
        };
        EXPECT_EQ(sorted(viewsOf(listener.extent, number)), expected) << row.name;
        if (!row.difference) {
            EXPECT_EQ(sorted(viewsOf(differenceOf(*former, number), number)), expected) << row.name;
        }
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
    master.bAddConstrainedParameter(&tied);
    master.bAddConstrainedParameter(&other);
    tied.bAddConstrainedParameter(&hooked);
    inner.addParameter(tied);
    inner.addParameter(sibling);
    outer.addParameter(inner);
    const auto in = [](const Extent& extent, const BasicParameter& parameter) {
        return textOf(extent.in(&parameter, View(1)));
    };
    {
        Listener listener(master);
        master.vSetValue(9, at(10));
        const Extent extent = listener.take();
        for (const BasicParameter* const shown : std::initializer_list<BasicParameter*>{&master, &tied, &inner, &outer})
            EXPECT_EQ(in(extent, *shown), "(0, 20)") << shown->scriptName().toStdString();
        EXPECT_EQ(in(extent, hooked), "[-inf, inf)");
        EXPECT_EQ(in(extent, other), "{}");
        EXPECT_EQ(extent.parameters().size(), 5);
        EXPECT_TRUE(extent.touches(at(5)) && !extent.touches(&sibling, at(5)));
    }
    {
        Listener listener(tied);
        tied.vSetValue(4, at(5));
        EXPECT_TRUE(listener.take().isEmpty()) << "own animation is not shown";
    }
    {
        // Removes the keyframes of the other parts, which emit nothing.
        Listener listener(inner);
        inner.vDeleteKeyframe(Context::Explicit(at(10)));
        EXPECT_EQ(in(listener.take(), sibling), "(5, 30)");
    }
    {
        auto passing = std::make_unique<Number>(QStringLiteral("passing"));
        Number shown(QStringLiteral("shown"));
        passing->bAddConstrainedParameter(&shown);
        Listener listener(*passing);
        passing.reset();
        EXPECT_EQ(in(listener.take(), shown), "[-inf, inf)");
    }
}

TEST(ExtentOfChange, IsNotTooSmallAfterAnotherEditInASlot) {
    Number number(QStringLiteral("number"));
    key(number, {{0, 1.}, {10, 2.}, {20, 3.}, {30, 4.}});
    bool isFirst = true;
    QObject::connect(
        &number, &ParameterWithoutType::changed, &number,
        [&] {
            if (std::exchange(isFirst, false))
                key(number, {{-10, 1.}, {-20, 1.}, {-30, 1.}});
        },
        Qt::DirectConnection);
    Listener listener(number);
    number.vSetValue(9, at(20));
    EXPECT_TRUE(listener.take().touches(&number, at(29)));
}

TEST(ExtentOfChange, IsKeptOfManyParameters) {
    std::vector<std::unique_ptr<Number>> numbers;
    Extent all;
    for (int i = 0; i < 100; ++i) {
        numbers.push_back(std::make_unique<Number>(QString::number(i)));
        Listener listener(*numbers.back());
        key(*numbers.back(), {{0, 1.}, {10. + i, 2.}, {200, 3.}});
        listener.take();
        numbers.back()->vSetInterpolation(Interpolation::Bezier, at(10. + i));
        all |= listener.take();
        all |= all;
    }
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(textOf(all.in(numbers[static_cast<std::size_t>(i)].get(), View())),
                  "(" + std::to_string(10 + i) + ", 200)");
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
        const auto addMembers = [&](const char* what, const Extent::Members& members) {
            for (const Extent::Member& member : members)
                all.push_back(what +
                              (member.set ? member.set->scriptName() : member.parameter->scriptName()).toStdString() +
                              " ");
        };
        addMembers("+", extent.came());
        addMembers("-", extent.went());
        addMembers("~", extent.renamed());
        std::sort(all.begin(), all.end());
        return std::accumulate(all.begin(), all.end(), std::string());
    }

    Number keyed{QStringLiteral("keyed")};
    Number fresh{QStringLiteral("fresh")};
    Number master{QStringLiteral("master"), 1.};
    Number tied{QStringLiteral("tied")};
    Number part{QStringLiteral("part")};
    Number second{QStringLiteral("second")};
    Number late{QStringLiteral("late")};
    CompoundParameter compound{QStringLiteral("compound"), true};
    OwnedStaticParameter<unsigned int> count{QStringLiteral("count"), 3};
    ParameterSet set{QStringLiteral("set")};
    ParameterSet root{QStringLiteral("root")};
    std::optional<ChangedSince> changes;
};

TEST(ChangedSince, SeesAllThatChanges) {
    const std::tuple<const char*, void (*)(Project&), const char*> rows[] = {
        {"nothing", [](Project&) {}, ""},
        {"flags", [](Project& p) { p.keyed.hide(true); }, ""},
        {"value", [](Project& p) { p.keyed.vSetValue(7, at(10)); }, "keyed(0, 20) "},
        {"edit and undo",
         [](Project& p) {
             ParameterSetValueEdit edit(p.keyed, 8., at(10));
             edit.doIt();
             edit.undoIt();
         },
         ""},
        {"two far edits",
         [](Project& p) {
             p.keyed.vSetValue(7, at(-5));
             p.keyed.vSetValue(7, at(25));
         },
         "keyed[-inf, 0) + (20, inf) "},
        {"times, silently", [](Project& p) { p.keyed.adjustKeyframesTime([](Time t) { return t + t.toDouble(); }); },
         "keyed(0, inf) "},
        {"with signals blocked",
         [](Project& p) {
             p.keyed.blockSignals(true);
             p.keyed.vSetInterpolation(Interpolation::Constant, at(10));
         },
         "keyed(10, 20) "},
        {"default value", [](Project& p) { p.fresh.vSetDefault(4); }, "fresh[-inf, inf) "},
        {"default value that is not shown", [](Project& p) { p.keyed.vSetDefault(4); }, ""},
        {"text", [](Project& p) { p.keyed.streamInValue("keyframes.append( Key( 15, 9, Linear ) )", version(), {}); },
         "keyed(10, 20) "},
        {"master outside", [](Project& p) { p.master.vSetValue(2, still()); }, "tied[-inf, inf) "},
        {"own animation that is not shown", [](Project& p) { p.tied.vSetValue(2, still()); }, ""},
        {"freed", [](Project& p) { p.master.bRemoveConstrainedParameter(&p.tied); }, "tied[-inf, inf) "},
        {"part, with its sibling", [](Project& p) { p.part.vDeleteKeyframe(Context::Explicit(at(10))); },
         "compound(0, inf) part(0, inf) second(5, inf) "},
        {"static one", [](Project& p) { p.count.doSetValue(4); }, "count[-inf, inf) "},
        {"renamed", [](Project& p) { p.set.setScriptName("other"); }, "~other "},
        {"shown name", [](Project& p) { p.keyed.setDisplayName("Keyed"); }, "~keyed "},
        {"added", [](Project& p) { p.set.addParameter(p.late); }, "+late late[-inf, inf) "},
        {"added to a compound", [](Project& p) { p.compound.addParameter(p.late); },
         "+late compound[-inf, inf) late[-inf, inf) "},
        {"custom kind, registered",
         [](Project& p) {
             p.keyed.vSetInterpolation(Interpolation::Custom0, at(0));
             p.changed();
             registerInterpolation(Interpolation::Custom0, [](const IType&, double x) { return x; });
             registerInterpolation(Interpolation::Custom0, {});
         },
         "keyed[-inf, inf) "},
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
    Extent extent = project.changes->take();
    ASSERT_EQ(extent.went().size(), 1);
    EXPECT_EQ(extent.went().first().set, &project.set);
    EXPECT_TRUE(extent.touches(&project.keyed, at(3)) && extent.touches(&project.part, at(3)));
    EXPECT_TRUE(extent.parameters().contains(address));
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

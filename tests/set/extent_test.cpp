// Which extents are exact, and where they end. That no value differs outside is compared in fuzz/extent_fuzz.cpp.

#include "prm/ChangedSince.h"
#include "prm/CurveKinds.h"
#include "tests/support/Record.h"
#include "tests/world/Acts.h"

#include <optional>

using namespace Worlds;

namespace {

std::string nameOf(const Extent::Member& member) {
    return (member.set ? member.set->scriptName() : member.parameter->scriptName()).toStdString();
}

/// The times of each parameter in view 0, and in each view where they are others than in the one before it.
std::string textOf(const Extent& extent) {
    std::set<std::string> all;
    for (const BasicParameter* const one : extent.parameters()) {
        std::string text = one->scriptName().toStdString();
        TimeSpans former;
        for (const View view : asked) {
            const TimeSpans times = extent.in(one, view);
            if (!(times == std::exchange(former, times)))
                text += (view == View() ? "" : "@" + std::to_string(view.id())) + debugText(times);
        }
        all.insert(text);
    }
    for (const auto& [mark, members] : {std::pair('+', extent.came()), {'-', extent.went()}, {'~', extent.renamed()}})
        for (const Extent::Member& member : members)
            all.insert(mark + nameOf(member));
    std::string text;
    for (const std::string& one : all)
        text += " " + one;
    return text;
}

/// The extents that a parameter emits meanwhile.
template <class Edit> Extent extentOfEdit(P& parameter, const Edit& edit) {
    Extent extent;
    QObject receiver;
    QObject::connect(&parameter, &P::changed, &receiver,
                     [&](const ParameterChange& change) { extent |= extentOf(change); });
    edit();
    return extent;
}

/// What an act of a parameter emits and, after "found", what `ChangedSince` finds if that is something else, after
/// "compared" what its snapshot shows, and after "undone" the same for undo.
std::string lineOf(const Act& act, Who who, std::size_t place) {
    static const Extrapolation kinds[] = {Extrapolation::Constant, Extrapolation::Linear, Extrapolation::Custom0};
    const std::size_t variant = place + who;
    Exhibits world(place % 3 == 1 ? 70 : 0);
    for (P* const one : world.parameters(world.options.plainCount)) {
        one->vSetExtrapolationBefore(kinds[variant % 3]);
        one->vSetExtrapolationAfter(kinds[variant % 3]);
        one->vSetInterpolation(Interpolation::Constant, at(place % 2 == 1 ? 0 : 9));
        asTyped(*one, [&](auto& typed) { return typed.setViewInterpolation({static_cast<Mode>(variant % 4)}), true; });
    }
    P& own = *world.parameter(who);
    const auto former = own.exportState();
    ChangedSince changes(world.root);
    Command command;
    const auto reached = [&](const std::function<void()>& happens) {
        Extent emitted;
        QObject receiver;
        for (const P* const one : world.parameters())
            QObject::connect(one, &P::changed, &receiver,
                             [&](const ParameterChange& change) { emitted |= extentOf(change); });
        errorOf(happens);
        const std::string text = textOf(emitted);
        const std::string found = textOf(changes.take());
        return found == text ? text : text + " found" + found;
    };
    std::string line = reached([&] {
        act.run(command, own, *world.parameter(Master), places[place]);
        command.doIt();
    });
    if (const std::string compared = " compared" + textOf(differenceOf(*former, own)); who == Keyed)
        line += compared.substr(9) == line ? "" : compared;
    const std::string undone = command.empty() ? line : reached([&] { command.undoIt(); });
    return undone == line ? line : line + " undone" + undone;
}

TEST(ExtentOfChange, IsOnRecord) {
    const Warnings quiet;
    std::string record;
    for (const auto* acts : {&edits, &commands}) {
        for (const Act& act : *acts) {
            record += std::string(act.name) + '\n';
            for (const Who who : {Text, Plain, Master, Keyed, X, Far, Joined, Tied})
                for (std::size_t place = 0; place < std::size(places); ++place)
                    if (const std::string line = lineOf(act, who, place); !line.empty())
                        record += "    p" + std::to_string(who) + ' ' + std::to_string(place) + ':' + line + '\n';
        }
    }
    expectOnRecord("what_acts_reach.txt", QString::fromStdString(record));
}

/// A class of a host that computes each value from all keyframes.
struct Average : Number {
    using NumericParameter::NumericParameter;

    double interpolateValue(const BoundingKeyframes& around, const Context& context, Cache*) const override {
        return keyframeValue(around.before.index, context.view) + keyframeValue(0, context.view);
    }
};

TEST(ExtentOfChange, FollowsWhatShowsTheParameter) {
    Exhibits world;
    Average hooked("hooked");
    CompoundParameter outer("outer");
    world.list(Position, Tied);
    world.parameter(Tied)->bAddConstrainedParameter(&hooked);
    outer.addParameter(hooked);
    P& master = *world.parameter(Master);
    EXPECT_EQ(textOf(extentOfEdit(master, [&] { world.number(Master).vSetValue(9, at(4)); })),
              " hooked[-inf, inf) outer[-inf, inf) p10(0, 8) p2(0, 8) p9(0, 8)");
}

/// The record names a keyframe of lists that may be others by then.
TEST(ExtentOfChange, IsAllTimesAfterAnEditInAnEarlierSlot) {
    const std::pair<const char*, std::function<void(Number&)>> rows[] = {
        {"value", [](Number& n) { n.vSetValue(5, at(40)); }},
        {"times", [](Number& n) { n.adjustKeyframesTime([](Time time) { return time + 1000; }); }},
        {"order", [](Number& n) { n.retimeKeyframes([](Time time) { return time + 1000; }); }},
        {"splittable", [](Number& n) { n.setSplittable(false); }},
        {"view interpolation", [](Number& n) { n.setViewInterpolation({Mode::Linear}); }},
    };
    for (const auto& [name, act] : rows) {
        auto once = act;
        Number number("number");
        key(number, {{0, 1.}, {10, 2.}, {20, 4.}, {30, 3.}});
        QObject::connect(&number, &P::changed, &number, [&](const ParameterChange&) {
            if (const auto now = std::exchange(once, nullptr))
                now(number);
        });
        EXPECT_EQ(textOf(extentOfEdit(number, [&] { number.vSetValue(9, at(20)); })), " number[-inf, inf)") << name;
    }
}

TEST(ExtentOfChange, OfStaticValuesAndSmoothViews) {
    Number number("number");
    EXPECT_EQ(textOf(extentOfEdit(number, [&] { number.vSetValue(9, still()); })), " number[-inf, inf)");
    number.setViewInterpolation({Mode::Smooth});
    for (const quint32 view : {0u, 2u, 12u, 13u})
        key(number, {{0, 1. + view}}, view);
    const Extent extent = extentOfEdit(number, [&] { number.vSetValue(9, at(0, ~0u)); });
    for (const quint32 view : {0u, 1u, 3u, 6u, 7u, 11u, 13u})
        EXPECT_EQ(extent.touches(&number, at(1, view)), view < 7) << view;
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
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(all.in(numbers[i].get(), View()), TimeSpans(TimeSpan{10. + i, 200, false, false}));
    EXPECT_EQ(all.in(View(7)), TimeSpans(TimeSpan{10, 200, false, false}));
}

void editAndUndo(Exhibits& world) {
    ParameterSetValueEdit edit(world.number(Keyed), 8., at(10));
    edit.doIt();
    edit.undoIt();
}

TEST(ChangedSince, SeesWhatIsNotEmitted) {
#define DO(...) #__VA_ARGS__, [](Exhibits & w) { static_cast<void>(__VA_ARGS__); }
    const std::tuple<const char*, void (*)(Exhibits&), const char*> rows[] = {
        {DO(editAndUndo(w)), ""},
        {DO(w.number(X).vSetValue(7, at(-5)), w.number(X).vSetValue(7, at(8))),
         " p10[-inf, 0) + (6, 9) p4[-inf, 0) + (6, 9) p5[-inf, 0) + [8, 9)"},
        {DO(w.number(X).blockSignals(true), w.number(X).vSetInterpolation(Interpolation::Constant, at(0))),
         " p10(0, 6) p4(0, 6)"},
        {DO(w.number(X).vSetInterpolationData({Interpolation::Linear, 1}, 0, View())), ""},
        {DO(w.number(Y).vSetInterpolationData({Interpolation::Constant, 1}, 1, View())), ""},
        {DO(w.as<QString>(Text).vSetDefault("x")), " p0[-inf, inf)"},
        {DO(w.as<int>(Plain).vSetDefault(4)), ""},
        {DO(w.set(0)->bStreamIn("former.value=1", version())), " count[-inf, inf)"},
        {DO(w.set(0)->setScriptName("other")), " ~other"},
        {DO(w.set(0)->setDisplayName("Set")), " ~set"},
        {DO(w.number(Keyed).setDisplayName("Keyed")), " ~p3"},
        {DO(w.set(0)->addParameterSet(*w.set(1))), " +set count[-inf, inf) former[-inf, inf)"},
        {DO(w.list(Position, Plain)), " +p1 p10[-inf, inf) p1[-inf, inf)"},
        {DO(w.set(setCount)->clearAllLists()), " -p4 -p5 p10[-inf, inf) p4[-inf, inf) p5[-inf, inf)"},
    };
    for (const auto& [name, act, expected] : rows) {
        Exhibits world;
        world.number(Y).vSetInterpolation(Interpolation::Constant, at(6));
        ChangedSince changes(world.root);
        act(world);
        EXPECT_EQ(textOf(changes.take()), expected) << name;
        EXPECT_EQ(textOf(changes.take()), "") << name << ", asked again";
    }
}

TEST(ChangedSince, SeesCustomKindsRegistered) {
    Exhibits world;
    world.number(Keyed).vSetInterpolation(Interpolation::Custom0, at(0));
    world.number(Tied).vSetExtrapolationBefore(Extrapolation::Custom0);
    world.number(X).vSetExtrapolationBefore(Extrapolation::Custom0);
    world.as<QPointF>(Joined).vSetExtrapolationAfter(Extrapolation::Custom0);
    ChangedSince changes(world.root);
    registerInterpolation(Interpolation::Custom0, [](const IType&, double x) { return x; });
    registerInterpolation(Interpolation::Custom0, {});
    EXPECT_EQ(textOf(changes.take()),
              " p10[-inf, inf) p11[-inf, inf) p12[-inf, inf) p3[-inf, inf) p4[-inf, inf) p7[-inf, inf)");
}

TEST(ChangedSince, ReachesAllTimesOfKeyframesThatAreInNoOrder) {
    Number number("number");
    ParameterSet set;
    key(number, {{0, 1.}, {10, 2.}, {20, 4.}, {30, 3.}});
    set.addParameter(number);
    ChangedSince changes(set);
    for (const bool isOrdered : {false, true}) {
        number.adjustKeyframesTime([](Time time) {
            const bool isInner = time > Time() && time < Time::fromInt(30);
            return isInner ? Time::fromDouble(30 - time.toDouble()) : time;
        });
        EXPECT_EQ(textOf(changes.take()), " number[-inf, inf)") << isOrdered;
    }
    number.adjustKeyframesTime([](Time time) { return time == Time::fromInt(20) ? time + -10 : time; });
    EXPECT_EQ(textOf(extentOfEdit(number, [&] { number.vDeleteKeyframe(Context::Explicit(at(10))); })),
              " number(0, 30)");
}

TEST(ChangedSince, SeesMembersComeAndGo) {
    Exhibits world;
    ChangedSince changes(world.root);
    const auto passing = boost::make_shared<Average>("passing");
    world.set(0)->addParameter(passing);
    EXPECT_EQ(textOf(changes.take()), " +passing passing[-inf, inf)");
    ParameterChange::valueChanged(*passing, View());
    EXPECT_EQ(textOf(changes.take()), " passing[-inf, inf)") << "what a host's class computes";
    world.root.clearAllLists();
    const std::string gone = textOf(changes.take());
    EXPECT_EQ(gone.substr(0, 10), " -set coun") << gone;
    EXPECT_NE(gone.find(" passing[-inf, inf)"), std::string::npos) << gone;
}

TEST(ChangedSince, ComparesASetThatTwoSetsList) {
    auto former = std::make_unique<Number>("former");
    Number late("late");
    ParameterSet shared("shared"), one("one"), two("two"), root;
    shared.addParameter(*former);
    for (ParameterSet* const set : {&one, &two}) {
        root.addParameterSet(*set);
        set->addParameterSet(shared);
    }
    ChangedSince changes(root);
    one.clearAllLists();
    shared.clearAllLists();
    shared.addParameter(late);
    const BasicParameter* const dead = former.get();
    former.reset();
    const Extent extent = changes.take();
    EXPECT_TRUE(extent.came().size() == 1 && extent.came().first().parameter == &late);
    EXPECT_EQ(extent.went().size(), 2) << "shared from one, former from shared";
    EXPECT_TRUE(extent.touches(dead, at(0)) && extent.touches(&late, at(0)));
    EXPECT_TRUE(changes.take().isEmpty());
}

TEST(ChangedSince, OutlivesTheSet) {
    auto set = std::make_unique<ParameterSet>("set");
    Number one("one"), two("two");
    set->addParameter(one);
    set->addParameter(two);
    ChangedSince changes(*set);
    set->clearAllLists();
    set->addParameter(two);
    set->addParameter(one);
    EXPECT_EQ(textOf(changes.take()), " +one -one") << "moved";
    set.reset();
    EXPECT_EQ(textOf(changes.take()), " -one -two one[-inf, inf) two[-inf, inf)");
    EXPECT_TRUE(changes.take().isEmpty());
}

} // namespace

#include "prm/SerialisedKeyframe.h"
#include "prm/parameter/TypedSerialisedKeyframe.hpp"
#include "tests/edits/World.h"
#include "tests/support/Allocations.h"
#include "tests/support/ChangeRecorder.h"

#include <boost/make_shared.hpp>

#include <functional>
#include <new>

using namespace Prm;
using Command = std::unique_ptr<Bsc::Command>;

namespace {

struct Row {
    const char* name;
    std::function<Bsc::Command*(World&)> make;
    /// Whose changes are heard, and those of doing and of undoing it, by their initials.
    ParameterWithoutType* (*heard)(World&);
    const char* whenDone;
    const char* whenUndone;
};

ParameterWithoutType* number(World& w) {
    return w.number.get();
}
ParameterWithoutType* plain(World& w) {
    return w.plain.get();
}
ParameterWithoutType* joined(World& w) {
    return w.joined.get();
}
ParameterWithoutType* tied(World& w) {
    return w.tied.get();
}
ParameterWithoutType* x(World& w) {
    return w.x.get();
}
ParameterWithoutType* y(World& w) {
    return w.y.get();
}
ParameterWithoutType* far(World& w) {
    return w.far.get();
}

template <class Edit, class... More> auto edit(World::Shared<World::Number> World::*which, More... more) {
    return [=](World& w) -> Bsc::Command* { return new Edit(*(w.*which), more...); };
}

template <class Build> auto built(const Build& build) {
    return [=](World& w) -> Bsc::Command* {
        auto command = std::make_unique<Bsc::CompositeCommand>();
        build(w, *command);
        return command.release();
    };
}

const auto allViews = [] { return AnimationState(AnimationFlags(4)); };
const QString pasted = "view[2].keyframes.append( Key( 1, 5, Linear ) )\nkeyframes.append( Key( 10, 8, Constant ) )\n";

/// What each edit sends: A(dded), V(alue), R(emoved), I(nterpolation), B(efore), F(after), P(arameter assigned),
/// S(tatic value), N(ew view), D(eleted view), C(leared), E(reset), M(oved), H(idden), L(ocked).
const Row rows[] = {
    {"adds a keyframe", edit<ParameterAddKeyEdit>(&World::number, at(4)), number, "A", "P"},
    {"adds one to a new view", edit<ParameterAddKeyEdit>(&World::number, at(4, 3)), number, "NA", "P"},
    {"deletes a keyframe", edit<ParameterDeleteKeyEdit>(&World::number, Context::Explicit(at(10))), number, "R", "P"},
    {"deletes the last one", edit<ParameterDeleteKeyEdit>(&World::number, Context::Explicit(at(5, 1))), number, "R",
     "P"},
    {"deletes all", edit<ParameterDeleteAllKeysEdit>(&World::number, View(0)), number, "C", "P"},
    {"sets a kind", edit<ParameterInterpolationEdit>(&World::number, Interpolation::Constant, at(0)), number, "I", "P"},
    {"sets a shape", edit<ParameterInterpolationDataEdit>(&World::number, IType(Interpolation::Linear), 0u, View(0)),
     number, "I", "P"},
    {"sets a shape by way of another view",
     edit<ParameterInterpolationDataEdit>(&World::joined, IType(Interpolation::Bezier, 0.2, 0.3, 0.7, 1.5), 0u,
                                          View(1)),
     joined, "I", "P"},
    {"moves one of another view", edit<MoveKeyframeEdit>(&World::joined, at(50, 1), at(6, 1)), joined, nullptr, "P"},
    {"sets before", edit<ParameterExtrapolationBeforeEdit>(&World::number, Extrapolation::Linear), number, "B", "B"},
    {"sets after", edit<ParameterExtrapolationAfterEdit>(&World::number, Extrapolation::Linear), number, "F", "F"},
    {"sets after of a tied one", edit<ParameterExtrapolationAfterEdit>(&World::tied, Extrapolation::Linear), tied, "F",
     "P"},
    {"hides", edit<ParameterWithoutTypeHideEdit>(&World::number, true), number, "H", "H"},
    {"locks", edit<ParameterWithoutTypeLockEdit>(&World::number, true), number, "L", "L"},
    {"sets a value", edit<ParameterSetValueEdit>(&World::number, QVariant(8), at(10)), number, "V", "P"},
    {"keys a value", edit<ParameterSetValueEdit>(&World::number, QVariant(8), at(11)), number, "AV", "P"},
    {"sets one without keyframes", edit<ParameterSetValueEdit>(&World::plain, QVariant(8), at(11, 1)), plain, "NS",
     "P"},
    {"sets a static value", edit<ParameterSetStaticValueEdit>(&World::number, QVariant(8), View(0)), number, "S", "P"},
    {"sets that of the source data", edit<ParameterSetStaticValueEdit>(&World::number, QVariant(8), View::INVALID()),
     number, "S", "P"},
    {"sets a text", [](World& w) { return new ParameterSetStaticValueEdit(*w.text, QString("new")); }, number, "", ""},
    {"resets at a keyframe", edit<ParameterResetEdit>(&World::number, at(10)), number, "R", "P"},
    {"resets a static value", edit<ParameterResetEdit>(&World::plain, still()), plain, "E", "P"},
    {"resets the source data at a frame", edit<ParameterResetEdit>(&World::plain, Context(Time(), View::INVALID())),
     plain, "E", "P"},
    {"splits a view", edit<ParameterSplitViewEdit>(&World::number, View(4)), number, "NS", "P"},
    {"deletes a view", edit<ParameterDeleteViewEdit>(&World::number, View(0)), number, "D", "P"},
    {"moves a keyframe", edit<MoveKeyframeEdit>(&World::number, at(10), at(12)), number, "RAVII", "P"},
    {"moves one onto another", edit<MoveKeyframeEdit>(&World::number, at(0), at(10)), number, "RVII", "P"},
    {"moves the only one", edit<MoveKeyframeEdit>(&World::number, at(5, 1), at(6, 1)), number, "RAVII", "P"},
    {"shifts all", edit<ParameterRetimeEdit>(&World::number, Retiming::shifted(0.1)), number, "MM", "P"},
    {"scales some",
     edit<ParameterRetimeEdit>(&World::number,
                               Retiming::scaled(0.5, Time::fromInt(20)).between(Time::fromInt(6), Time::fromInt(20))),
     number, "M", "P"},
    {"shifts past another",
     edit<ParameterRetimeEdit>(&World::number, Retiming::shifted(15).between(Time(), Time::fromInt(5))), number,
     nullptr, "P"},
    {"scales onto one time", edit<ParameterRetimeEdit>(&World::number, Retiming::scaled(1e-300, Time::fromInt(10))),
     number, nullptr, "P"},
    {"pastes", edit<ParameterPasteKeyframesEdit>(&World::number, pasted), number, nullptr, "P"},
    {"pastes elsewhere", edit<ParameterPasteKeyframesEdit>(&World::number, pasted, Time::fromDouble(0.25), View(1)),
     number, nullptr, "P"},
    {"constrains", [](World& w) { return new ParameterAddConstrainedParameterEdit(*w.plain, *w.tied); }, tied, "", "P"},
    {"frees", edit<ParameterWithoutTypeUnconstrainEdit>(&World::tied), tied, "P", "P"},
    {"moves those of a compound", [](World& w) { return new MoveKeyframeEdit(*w.position, at(6), at(7)); }, x, nullptr,
     "P"},
    {"shifts a compound",
     [](World&
            w) { return new ParameterRetimeEdit(*w.position, Retiming::shifted(3).between(Time(), Time::fromInt(6))); },
     x, nullptr, "P"},
    {"shifts a compound past others",
     [](World& w) { return new ParameterRetimeEdit(*w.position, Retiming::shifted(4).between(Time(), Time::fromInt(6))); },
     y, "P", "P"},
    {"keys a part", edit<ParameterSetValueEdit>(&World::x, QVariant(8), at(3, 1)), y, "NA", "P"},
    {"deletes a keyframe of a part", edit<ParameterDeleteKeyEdit>(&World::x, Context::Explicit(at(6))), y, "", "P"},
    {"resets a part", edit<ParameterResetEdit>(&World::y, at(6)), x, "", "P"},
    {"moves one of a part", edit<MoveKeyframeEdit>(&World::x, at(6), at(7)), y, "A", "P"},
    {"shifts a part past another",
     edit<ParameterRetimeEdit>(&World::x, Retiming::shifted(8).between(Time(), Time::fromInt(5))), y, "A", "P"},
    {"pastes into a part", edit<ParameterPasteKeyframesEdit>(&World::y, pasted), x, nullptr, "P"},
    {"keys a part of a part", edit<ParameterAddKeyEdit>(&World::joined, at(4)), far, "A", "P"},
    {"keys a part beside a part", edit<ParameterAddKeyEdit>(&World::far, at(4, 7)), joined, "A", "P"},
    {"sets before of a compound",
     [](World& w) { return new ParameterExtrapolationBeforeEdit(*w.position, Extrapolation::Linear); }, x, "B", "P"},
    {"keys a compound", [](World& w) { return new ParameterAddKeyEdit(*w.position, at(3)); }, x, "A", "P"},
    {"sets a shape of a compound by way of another view",
     [](World& w) {
         return new ParameterInterpolationDataEdit(*w.pair, {Interpolation::Bezier, 0.2, 0.3, 0.7, 1.5}, 0u, View(1));
     },
     joined, "I", "P"},
    {"sets a kind of a compound by way of another view",
     [](World& w) { return new ParameterInterpolationEdit(*w.pair, Interpolation::Constant, at(10, 1)); }, joined, "I",
     "P"},
    {"moves those of a set", built([](World& w, Bsc::CompositeCommand& c) {
         MoveKeyframeEdit::appendToCommand(*w.set, Frame::fromInt(0), Frame::fromInt(3), c);
     }),
     number, "RAVII", "P"},
    {"moves those of a set that is a compound", built([](World& w, Bsc::CompositeCommand& c) {
         ParameterSet& position = *w.position;
         MoveKeyframeEdit::appendToCommand(position, Frame::fromInt(6), Frame::fromInt(7), c);
         ParameterRetimeEdit::appendToCommand(position, Retiming::shifted(1), c);
         EXPECT_EQ(c.size(), w.position->viewList().size() + 1);
     }),
     x, nullptr, "PP"},
    {"shifts a set", built([](World& w, Bsc::CompositeCommand& c) {
         ParameterRetimeEdit::appendToCommand(*w.set, Retiming::shifted(7), c);
     }),
     number, "MM", "P"},
    {"one of each builder", built([](World& w, Bsc::CompositeCommand& c) {
         ParameterWithoutType& p = *w.number;
         p.vAddKeyframeCommand(Context::Explicit(at(3)), c);
         p.vAddKeyframeCommand(Frame::fromInt(5), allViews(), c);
         p.vSetInterpolationCommand(Interpolation::Constant, at(3), c);
         p.vSetInterpolationDataCommand(c, IType(Interpolation::Linear), {&p, View(0), 0});
         p.vSetExtrapolationBeforeCommand(Extrapolation::Linear, c);
         p.vSetExtrapolationAfterCommand(Extrapolation::Linear, c);
         p.createKeyframeDeletion(Context::Explicit(at(10)), c);
         p.createKeyframeDeletion(Frame::fromInt(20), allViews(), c);
         p.hideCommand(true, c);
         p.setLockedCommand(true, c);
         p.bAddConstrainedParameterCommand(w.plain.get(), c);
         w.master->bRemoveConstrainedParameterCommand(w.tied.get(), c);
         w.second->bUnconstrainCommand(c);
         p.vDeleteAllKeyframesCommand(View(0), c);
         EXPECT_GE(c.size(), 13u) << "one fewer where it is free already";
     }),
     number, "AAIIBFRRHLC", "PLHPPFBPPPP"},
};

/// Of short lists the whole is kept, of long ones what an edit concerns.
const int lengths[] = {0, 70};

void expectBothWays(const Row& row, bool changes, int more = 0) {
    SCOPED_TRACE(row.name);
    World world(more);
    const std::string before = world.state();
    ChangeRecorder heard(row.heard(world));
    const Command command(row.make(world));
    command->doIt();
    const std::string after = world.state();
    EXPECT_EQ(after != before, changes);
    const std::string told = heard.initials;
    EXPECT_EQ(told, row.whenDone ? row.whenDone : told);
    heard.takeInitials();
    command->undoIt();
    EXPECT_EQ(world.state(), before);
    EXPECT_EQ(heard.takeInitials(), row.whenUndone);
    command->doIt();
    EXPECT_EQ(world.state(), after);
    command->undoIt();
    EXPECT_EQ(world.state(), before);
}

TEST(Edits, ComeBackExactlyAndAreTold) {
    for (const int more : lengths) {
        for (const Row& row : rows)
            expectBothWays(row, true, more);
    }
}

/// Does it again and again, each time with another failure, until it comes through; each failure changes nothing.
void expectAllOrNothing(World& world, const std::function<void()>& act, const std::function<void(int)>& arm) {
    const std::string before = world.state();
    for (int n = 1; n < 2000; ++n) {
        arm(n);
        try {
            act();
            arm(0);
            return;
        } catch (const std::bad_alloc&) {
            arm(0);
            EXPECT_EQ(world.state(), before) << "failure " << n;
        }
    }
    ADD_FAILURE() << "never came through";
}

void expectAllOrNothing(const Row& row, World& world, const std::function<void(int)>& arm) {
    SCOPED_TRACE(row.name);
    const Command command(row.make(world));
    expectAllOrNothing(
        world, [&] { command->doIt(); }, arm);
    expectAllOrNothing(
        world, [&] { command->undoIt(); }, arm);
}

TEST(Edits, AnObserverThatThrowsLeavesThingsAsTheyWere) {
    for (std::size_t i = 0; i < 2 * std::size(rows); ++i) {
        const Row& row = rows[i / 2];
        World world(lengths[i % 2]);
        int left = 0;
        ChangeRecorder heard(row.heard(world));
        heard.then = [&](const ParameterChange&) {
            if (left > 0 && --left == 0)
                throw std::bad_alloc();
        };
        expectAllOrNothing(row, world, [&](int n) { left = n; });
    }
}

TEST(Edits, AFailedAllocationLeavesThingsAsTheyWere) {
    if (!Allocations::areCounted())
        GTEST_SKIP() << "allocations are not counted in this build";
    for (std::size_t i = 0; i < 2 * std::size(rows); ++i) {
        const Row& row = rows[i / 2];
        World world(lengths[i % 2]);
        expectAllOrNothing(row, world, Allocations::failAt);
    }
}

/// The world is sound, whatever the command has done.
TEST(Edits, ThatMemoryGivesOutForLeaveTheWorldSound) {
    if (!Allocations::areCounted())
        GTEST_SKIP() << "allocations are not counted in this build";
    for (std::size_t i = 0; i < 2 * std::size(rows); ++i) {
        const Row& row = rows[i / 2];
        SCOPED_TRACE(row.name);
        const bool isUndoing = i % 2 > 0;
        Allocations::failForGood([&] {
            const auto world = std::make_shared<World>();
            const std::shared_ptr<Bsc::Command> command(row.make(*world));
            if (isUndoing)
                command->doIt();
            return Allocations::Attempt{[=] { isUndoing ? command->undoIt() : command->doIt(); },
                                        [=] { return world->state(); }};
        });
    }
}

TEST(Edits, OfADeadParameterDoNothingAndSaySo) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        auto world = std::make_unique<World>();
        const Command fresh(row.make(*world));
        const Command done(row.make(*world));
        EXPECT_FALSE(fresh->usageLogInfo().contains("deleted"));
        done->doIt();
        world.reset();
        fresh->doIt();
        done->undoIt();
        EXPECT_TRUE(fresh->usageLogInfo().contains(" (deleted)")) << fresh->usageLogInfo().toStdString();
    }
}

TEST(Edits, ThatChangeNothingAreSilentBothWays) {
    using N = World::Shared<World::Number> World::*;
    const N n = &World::number;
    const N p = &World::plain;
    const IType shape(Interpolation::Bezier, 0.2, 0.3, 0.7, 1.5);
    const Row silent[] = {
        {"a keyframe that is there", edit<ParameterAddKeyEdit>(n, at(10)), number, "", ""},
        {"no keyframes at all", edit<ParameterAddKeyEdit>(p, at(10)), plain, "", ""},
        {"deletes none", edit<ParameterDeleteKeyEdit>(n, Context::Explicit(at(11))), number, "", ""},
        {"deletes those of another view", edit<ParameterDeleteAllKeysEdit>(n, View(3)), number, "", ""},
        {"the same shape", edit<ParameterInterpolationDataEdit>(n, shape, 0u, View(0)), number, "I", ""},
        {"a shape of none", edit<ParameterInterpolationDataEdit>(n, shape, 3u, View(0)), number, "", ""},
        {"extrapolates nothing", edit<ParameterExtrapolationAfterEdit>(p, Extrapolation::Linear), plain, "", ""},
        {"is visible already", edit<ParameterWithoutTypeHideEdit>(n, false), number, "", ""},
        {"the same value", edit<ParameterSetValueEdit>(n, QVariant(2.), at(10)), number, "", ""},
        {"the same static value", edit<ParameterSetValueEdit>(p, QVariant(3.), at(10)), plain, "", ""},
        {"resets between keyframes", edit<ParameterResetEdit>(n, at(11)), number, "", ""},
        {"splits a view again", edit<ParameterSplitViewEdit>(n, View(1)), number, "", ""},
        {"deletes a view without data", edit<ParameterDeleteViewEdit>(n, View(3)), number, "", ""},
        {"moves none", edit<MoveKeyframeEdit>(n, at(11), at(12)), number, "", ""},
        {"moves to no time", edit<MoveKeyframeEdit>(n, at(10), still()), number, "", ""},
        {"moves behind the end", edit<MoveKeyframeEdit>(n, at(10), Context(Time::LAST)), number, "", ""},
        {"moves too far for a shift", edit<MoveKeyframeEdit>(n, at(10), at(-1e300)), number, "", ""},
        {"shifts behind the end", edit<ParameterRetimeEdit>(n, Retiming::shifted(3e9)), number, "", ""},
        {"scales backwards", edit<ParameterRetimeEdit>(n, Retiming::scaled(-1)), number, "", ""},
        {"pastes what is there", edit<ParameterPasteKeyframesEdit>(p, pasted), plain, "", ""},
        {"constrains again", [](World& w) { return new ParameterAddConstrainedParameterEdit(*w.master, *w.tied); },
         tied, "", ""},
        {"closes a circle", [](World& w) { return new ParameterAddConstrainedParameterEdit(*w.tied, *w.master); }, tied,
         "", ""},
        {"frees the free", edit<ParameterWithoutTypeUnconstrainEdit>(n), number, "", ""},
    };
    for (const Row& row : silent)
        expectBothWays(row, false);
}

TEST(Edits, RetimingAndPastingDoWhatTheySay) {
    const auto after = [](const std::function<Bsc::Command*(World&)>& make, quint32 view) {
        World world;
        const Command command(make(world));
        command->doIt();
        std::string text;
        for (unsigned i = 0; i < world.number->keyframeCount(View(view)); ++i) {
            const auto keyframe = world.number->keyframe(i, View(view));
            text += QString("%1=%2%3 ")
                        .arg(keyframe.time.toDouble())
                        .arg(keyframe.value)
                        .arg(keyframe.interpolationData.y2 > 0 ? "b" : "")
                        .toStdString();
        }
        return text + QString::number(world.number->staticValue(View(view))).toStdString();
    };
    const auto retimed = [&](const Retiming& retiming) {
        return after(edit<ParameterRetimeEdit>(&World::number, retiming), 0);
    };
    const Time six = Time::fromInt(6);
    EXPECT_EQ(retimed(Retiming::shifted(0.1)), "0.1=1b 10.1=2 20.1=4 9");
    EXPECT_EQ(retimed(Retiming::shifted(-1e9 - 0.1)), "-1e+09=1b -1e+09=2 -1e+09=4 9");
    EXPECT_EQ(retimed(Retiming::scaled(2, six)), "-6=1b 14=2 34=4 9");
    EXPECT_EQ(retimed(Retiming::shifted(20).between(Time(), six)), "10=2 20=1b 9")
        << "takes the place of one that stays";
    EXPECT_EQ(retimed(Retiming::shifted(12).between(Time(), six)), "10=2 12=1b 20=4 9") << "passes one";
    EXPECT_EQ(retimed(Retiming::scaled(1e-300, six)), "6=4 9") << "the last of several is left, the static value stays";
    EXPECT_EQ(after(edit<ParameterPasteKeyframesEdit>(&World::number, pasted), 2), "1=5 0");
    EXPECT_EQ(after(edit<ParameterPasteKeyframesEdit>(&World::number, pasted, six, View(1)), 1), "5=7 6=5 15=8 0");

    const auto partsRetimed = [](bool together) {
        CompoundParameter both("both", together);
        World::Number a("a");
        World::Number b("b");
        key(a, {{10, 1.}, {20, 2.}, {22, 3.}});
        key(a, {{10, 1.}, {20, 2.}}, 1);
        key(b, {{15, 5.}});
        b.setSplittable(false);
        both.addParameter(a);
        both.addParameter(b);
        ParameterRetimeEdit(both, Retiming::shifted(5).between(Time::fromInt(10), Time::fromInt(20))).doIt();
        QString text;
        for (const World::Number* part : {&a, &b}) {
            for (const Context& at : part->allKeyframes())
                text += QString("%1=%2 ").arg(at.time.toDouble()).arg(part->value(at));
        }
        return text.toStdString();
    };
    for (const bool together : {false, true})
        EXPECT_EQ(partsRetimed(together), "15=1 22=3 25=2 15=1 25=2 20=5 ") << "each part, in each of its views";
    const auto reachedTwiceRetimed = [](const Retiming& retiming) {
        CompoundParameter inner("inner");
        CompoundParameter outer("outer");
        World::Number part("part");
        key(part, {{0, 1.}, {3, 2.}});
        inner.addParameter(part);
        outer.addParameter(part);
        outer.addParameter(inner);
        ParameterRetimeEdit(outer, retiming).doIt();
        QString text;
        for (const Context& at : part.allKeyframes())
            text += QString("%1=%2 ").arg(at.time.toDouble()).arg(part.value(at));
        return text.toStdString();
    };
    EXPECT_EQ(reachedTwiceRetimed(Retiming::shifted(2)), "2=1 5=2 ");
    EXPECT_EQ(reachedTwiceRetimed(Retiming::shifted(5).between(Time(), Time::fromInt(2))), "3=2 5=1 ");

    World world;
    const QString text = ParameterPasteKeyframesEdit::textOf(*world.number, View(0), Time(), Time::fromInt(10));
    EXPECT_EQ(text, "keyframes.append( BezierKey( 0, 1, 0.2, 0.3, 0.7, 1.5 ) )\n"
                    "keyframes.append( BezierKey( 10, 2, 0, 0, 0, 0 ) )\n");
    const IType shape(Interpolation::Bezier, 1 / 3., 0.1, 2 / 3., 1);
    key(*world.number, {{12345.6789, 5.}, {12345.679, 6.}});
    world.number->vSetInterpolationData(shape, 3, View(0));
    const auto close = {at(12345.6789), at(12345.679)};
    World::Number copy("copy");
    ParameterPasteKeyframesEdit exact(
        copy, ParameterPasteKeyframesEdit::textOf(*world.number, View(0), Time::fromInt(100), Time::LAST));
    EXPECT_TRUE(exact.losses().isEmpty());
    exact.doIt();
    EXPECT_EQ(copy.allKeyframes(), QVector<Context>(close));
    EXPECT_TRUE(copy.keyframe(0, View(0)).interpolationData == shape);
    QString rounded;
    for (const Context& keyframe : close)
        rounded += copy.getSerialisedKeyframe(keyframe)->toString() + '\n';
    EXPECT_EQ(ParameterPasteKeyframesEdit(copy, rounded).losses().size(), 1) << rounded.toStdString();

    const std::string before = world.state();
    for (const char* bad :
         {"keyframes.append( Key( 1, 5 ) )", "value=3", "keyframes.append( Key( 1e99, 5, Linear ) )"}) {
        ParameterPasteKeyframesEdit edit(*world.number, text + bad);
        EXPECT_THROW(edit.doIt(), std::runtime_error) << bad;
        EXPECT_EQ(world.state(), before);
    }
}

/// Writes down the steps of a move.
struct Moving : World::Number {
    struct Keyframe : TypedSerialisedKeyframe {
        Keyframe(const TypedSerialisedKeyframe& other, QStringList& to) : TypedSerialisedKeyframe(other), steps(to) {}
        void adjustTime(float delta) override {
            steps += "adjust";
            TypedSerialisedKeyframe::adjustTime(delta);
        }
        QStringList& steps;
    };

    Moving() : ParameterWithoutType(false, false, nullptr), World::Number("moving") {}
    boost::shared_ptr<Bsc::MementoBase> exportState() const override {
        steps += "export";
        return World::Number::exportState();
    }
    boost::shared_ptr<SerialisedKeyframe> getSerialisedKeyframe(Context context) const override {
        steps += "get";
        const auto keyframe = World::Number::getSerialisedKeyframe(context);
        return boost::make_shared<Keyframe>(dynamic_cast<TypedSerialisedKeyframe&>(*keyframe), steps);
    }
    void vDeleteKeyframe(const Context::Explicit& context) override {
        steps += "delete";
        World::Number::vDeleteKeyframe(context);
    }
    void importKeyframe(const SerialisedKeyframe& keyframe) override {
        steps += "import";
        World::Number::importKeyframe(keyframe);
    }
    mutable QStringList steps;
};

TEST(Edits, AMoveTakesItsStepsInTheirOrder) {
    Moving moving;
    key(moving, {{1, 5.}, {4, 6.}});
    MoveKeyframeEdit(moving, at(1), at(2)).doIt();
    EXPECT_EQ(moving.steps.join(' ').toStdString(), "export get delete adjust import");
    EXPECT_TRUE(moving.bKeyframeAt(Context::Explicit(at(2))));
}

TEST(Edits, OfMastersCloseNoCircleOutOfTurn) {
    World::Number a("a");
    World::Number b("b");
    World::Number c("c");
    ParameterAddConstrainedParameterEdit show(a, b);
    ParameterWithoutTypeUnconstrainEdit leave(b);
    ParameterAddConstrainedParameterEdit change(c, b);
    show.doIt();
    change.doIt();
    b.bAddConstrainedParameter(&a);
    change.undoIt();
    EXPECT_EQ(b.masterParameter(), nullptr) << "a shows b by now";
    b.bRemoveConstrainedParameter(&a);
    a.bAddConstrainedParameter(&b);
    leave.doIt();
    b.bAddConstrainedParameter(&a);
    leave.undoIt();
    EXPECT_EQ(b.masterParameter(), nullptr);
    show.doIt();
    EXPECT_EQ(b.masterParameter(), nullptr);
}

} // namespace

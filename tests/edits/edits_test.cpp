// What each edit sends, both ways, and that it comes back exactly. Failures are the matter of tests/world.

#include "prm/parameter/TypedSerialisedKeyframe.hpp"
#include "tests/world/Acts.h"

#include <gtest/gtest.h>

using namespace Worlds;
using Made = std::unique_ptr<Bsc::Command>;

namespace {

struct Row {
    const char* name;
    Who edited;
    std::function<Bsc::Command*(P&)> make;
    /// Whose changes are recorded, and those of doing and of undoing it, by their initials.
    Who heard;
    const char* whenDone;
    const char* whenUndone;
};

template <class Edit, class... More> auto edit(More... more) {
    return [=](P& own) -> Bsc::Command* { return new Edit(own, more...); };
}

template <class Build> auto built(const Build& build) {
    return [=](P& own) -> Bsc::Command* {
        auto command = std::make_unique<Command>();
        build(own, *command);
        return command.release();
    };
}

void buildOneOfEach(P& p, Command& c) {
    P& master = *p.parentSet()->parameterWTWithName("p2");
    P& tied = *p.parentSet()->parameterWTWithName("p9");
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
    master.bRemoveConstrainedParameterCommand(&tied, c);
    p.bAddConstrainedParameterCommand(&tied, c);
    p.vDeleteAllKeyframesCommand(View(0), c);
    EXPECT_GE(c.size(), 12u) << "one fewer where it is free already";
}

void editAsSet(P& position, Command& c) {
    auto& set = dynamic_cast<ParameterSet&>(position);
    MoveKeyframeEdit::appendToCommand(set, Frame::fromInt(6), Frame::fromInt(7), c);
    ParameterRetimeEdit::appendToCommand(set, Retiming::shifted(1), c);
    EXPECT_EQ(c.size(), position.viewList().size() + 1);
}

const QString pasted = "view[2].keyframes.append( Key( 1, 5, Linear ) )\nkeyframes.append( Key( 10, 8, Constant ) )\n";
const IType shape(Interpolation::Bezier, 0.2, 0.3, 0.7, 1.5);
const Time six = Time::fromInt(6);
const auto constant = Interpolation::Constant;
const auto linear = Extrapolation::Linear;

Retiming late(double by) {
    return Retiming::shifted(by).between(Time(), six);
}

/// What each edit sends: A(dded), V(alue), R(emoved), I(nterpolation), B(efore), F(after), P(arameter assigned),
/// S(tatic value), N(ew view), D(eleted view), C(leared), E(reset), M(oved), H(idden), L(ocked).
const Row rows[] = {
    {"adds a keyframe", Keyed, edit<ParameterAddKeyEdit>(at(4)), Keyed, "A", "P"},
    {"adds one to a new view", Keyed, edit<ParameterAddKeyEdit>(at(4, 3)), Keyed, "NA", "P"},
    {"deletes a keyframe", Keyed, edit<ParameterDeleteKeyEdit>(Context::Explicit(at(10))), Keyed, "R", "P"},
    {"deletes the last one", Keyed, edit<ParameterDeleteKeyEdit>(Context::Explicit(at(5, 1))), Keyed, "R", "P"},
    {"deletes all", Keyed, edit<ParameterDeleteAllKeysEdit>(View(0)), Keyed, "C", "P"},
    {"sets a kind", Keyed, edit<ParameterInterpolationEdit>(constant, at(0)), Keyed, "I", "P"},
    {"sets a shape", Keyed, edit<ParameterInterpolationDataEdit>(IType(constant), 0u, View(0)), Keyed, "I", "P"},
    {"shapes another view", Joined, edit<ParameterInterpolationDataEdit>(shape, 0u, View(1)), Joined, "I", "P"},
    {"moves one of another view", Joined, edit<MoveKeyframeEdit>(at(50, 1), at(6, 1)), Joined, nullptr, "P"},
    {"sets before", Keyed, edit<ParameterExtrapolationBeforeEdit>(linear), Keyed, "B", "B"},
    {"sets after", Keyed, edit<ParameterExtrapolationAfterEdit>(linear), Keyed, "F", "F"},
    {"sets after of a tied one", Tied, edit<ParameterExtrapolationAfterEdit>(linear), Tied, "F", "P"},
    {"hides", Keyed, edit<ParameterWithoutTypeHideEdit>(true), Keyed, "H", "H"},
    {"locks", Keyed, edit<ParameterWithoutTypeLockEdit>(true), Keyed, "L", "L"},
    {"sets a value", Keyed, edit<ParameterSetValueEdit>(QVariant(8), at(10)), Keyed, "V", "P"},
    {"keys a value", Keyed, edit<ParameterSetValueEdit>(QVariant(8), at(11)), Keyed, "AV", "P"},
    {"sets one without keyframes", Plain, edit<ParameterSetValueEdit>(QVariant(8), at(11, 1)), Plain, "NS", "P"},
    {"sets a static value", Keyed, edit<ParameterSetStaticValueEdit>(QVariant(8), View(0)), Keyed, "S", "P"},
    {"of the source data", Keyed, edit<ParameterSetStaticValueEdit>(QVariant(8), View::INVALID()), Keyed, "S", "P"},
    {"resets at a keyframe", Keyed, edit<ParameterResetEdit>(at(10)), Keyed, "R", "P"},
    {"resets a static value", Plain, edit<ParameterResetEdit>(still()), Plain, "E", "P"},
    {"resets the source data", Plain, edit<ParameterResetEdit>(Context(Time(), View::INVALID())), Plain, "E", "P"},
    {"splits a view", Keyed, edit<ParameterSplitViewEdit>(View(4)), Keyed, "NS", "P"},
    {"deletes a view", Keyed, edit<ParameterDeleteViewEdit>(View(0)), Keyed, "D", "P"},
    {"moves a keyframe", Keyed, edit<MoveKeyframeEdit>(at(10), at(12)), Keyed, "RAVII", "P"},
    {"moves one onto another", Keyed, edit<MoveKeyframeEdit>(at(0), at(10)), Keyed, "RVII", "P"},
    {"moves the only one", Keyed, edit<MoveKeyframeEdit>(at(5, 1), at(6, 1)), Keyed, "RAVII", "P"},
    {"shifts all", Keyed, edit<ParameterRetimeEdit>(Retiming::shifted(0.1)), Keyed, "MM", "P"},
    {"scales some", Keyed, edit<ParameterRetimeEdit>(Retiming::scaled(0.5, six).between(six, Time::fromInt(20))), Keyed,
     "M", "P"},
    {"shifts past another", Keyed, edit<ParameterRetimeEdit>(late(15)), Keyed, nullptr, "P"},
    {"scales onto one time", Keyed, edit<ParameterRetimeEdit>(Retiming::scaled(1e-300, six)), Keyed, nullptr, "P"},
    {"pastes", Keyed, edit<ParameterPasteKeyframesEdit>(pasted), Keyed, nullptr, "P"},
    {"pastes elsewhere", Keyed, edit<ParameterPasteKeyframesEdit>(pasted, six, View(1)), Keyed, nullptr, "P"},
    {"frees", Tied, edit<ParameterWithoutTypeUnconstrainEdit>(), Tied, "P", "P"},
    {"moves those of a compound", Position, edit<MoveKeyframeEdit>(at(6), at(7)), X, nullptr, "P"},
    {"shifts a compound", Position, edit<ParameterRetimeEdit>(late(3)), X, nullptr, "P"},
    {"shifts a compound past others", Position, edit<ParameterRetimeEdit>(late(4)), Y, "P", "P"},
    {"keys a part", X, edit<ParameterSetValueEdit>(QVariant(8), at(3, 1)), Y, "NA", "P"},
    {"deletes a keyframe of a part", X, edit<ParameterDeleteKeyEdit>(Context::Explicit(at(6))), Y, "", "P"},
    {"resets a part", Y, edit<ParameterResetEdit>(at(6)), X, "", "P"},
    {"moves one of a part", X, edit<MoveKeyframeEdit>(at(6), at(7)), Y, "A", "P"},
    {"shifts a part past another", X, edit<ParameterRetimeEdit>(late(8)), Y, "AA", "P"},
    {"pastes into a part", Y, edit<ParameterPasteKeyframesEdit>(pasted), X, nullptr, "P"},
    {"keys a part of a part", Joined, edit<ParameterAddKeyEdit>(at(4)), Far, "A", "P"},
    {"keys a part beside a part", Far, edit<ParameterAddKeyEdit>(at(4, 7)), Joined, "A", "P"},
    {"sets before of a compound", Position, edit<ParameterExtrapolationBeforeEdit>(linear), X, "B", "P"},
    {"keys a compound", Position, edit<ParameterAddKeyEdit>(at(3)), X, "A", "P"},
    {"shapes a compound", Pair, edit<ParameterInterpolationDataEdit>(shape, 0u, View(1)), Joined, "I", "P"},
    {"sets a kind of a compound", Pair, edit<ParameterInterpolationEdit>(constant, at(10, 1)), Joined, "I", "P"},
    {"moves those of a set", Keyed, built([](P& own, Command& c) {
         MoveKeyframeEdit::appendToCommand(*own.parentSet(), Frame::fromInt(0), Frame::fromInt(3), c);
     }),
     Keyed, "RAVII", "P"},
    {"edits a set that is a compound", Position, built(editAsSet), X, nullptr, "PP"},
    {"shifts a set", Keyed,
     built([](P& own, Command& c) { ParameterRetimeEdit::appendToCommand(*own.parentSet(), Retiming::shifted(7), c); }),
     Keyed, "MM", "P"},
    {"one of each builder", Keyed, built(buildOneOfEach), Keyed, "AAIIBFRRHLC", "PLHPPFBPPPP"},
};

const Row silentRows[] = {
    {"a keyframe that is there", Keyed, edit<ParameterAddKeyEdit>(at(10)), Keyed, "", ""},
    {"no keyframes at all", Plain, edit<ParameterAddKeyEdit>(at(10)), Plain, "", ""},
    {"deletes none", Keyed, edit<ParameterDeleteKeyEdit>(Context::Explicit(at(11))), Keyed, "", ""},
    {"deletes those of another view", Keyed, edit<ParameterDeleteAllKeysEdit>(View(3)), Keyed, "", ""},
    {"the same shape", Keyed, edit<ParameterInterpolationDataEdit>(shape, 0u, View(0)), Keyed, "I", ""},
    {"a shape of none", Keyed, edit<ParameterInterpolationDataEdit>(shape, 300u, View(0)), Keyed, "", ""},
    {"extrapolates nothing", Plain, edit<ParameterExtrapolationAfterEdit>(linear), Plain, "", ""},
    {"is visible already", Keyed, edit<ParameterWithoutTypeHideEdit>(false), Keyed, "", ""},
    {"the same value", Keyed, edit<ParameterSetValueEdit>(QVariant(2.), at(10)), Keyed, "", ""},
    {"the same static value", Plain, edit<ParameterSetValueEdit>(QVariant(3.), at(10)), Plain, "", ""},
    {"resets between keyframes", Keyed, edit<ParameterResetEdit>(at(11)), Keyed, "", ""},
    {"splits a view again", Keyed, edit<ParameterSplitViewEdit>(View(1)), Keyed, "", ""},
    {"deletes a view without data", Keyed, edit<ParameterDeleteViewEdit>(View(3)), Keyed, "", ""},
    {"moves none", Keyed, edit<MoveKeyframeEdit>(at(11), at(12)), Keyed, "", ""},
    {"moves to no time", Keyed, edit<MoveKeyframeEdit>(at(10), still()), Keyed, "", ""},
    {"moves past the end", Keyed, edit<MoveKeyframeEdit>(at(10), Context(Time::LAST)), Keyed, "", ""},
    {"moves too far for a shift", Keyed, edit<MoveKeyframeEdit>(at(10), at(-1e300)), Keyed, "", ""},
    {"shifts past the end", Keyed, edit<ParameterRetimeEdit>(Retiming::shifted(3e9)), Keyed, "", ""},
    {"scales backwards", Keyed, edit<ParameterRetimeEdit>(Retiming::scaled(-1)), Keyed, "", ""},
    {"pastes what is there", Plain, edit<ParameterPasteKeyframesEdit>(pasted), Plain, "", ""},
    {"closes a circle", Tied,
     [](P& own) { return new ParameterAddConstrainedParameterEdit(own, *own.masterParameter()); }, Tied, "", ""},
    {"frees the free", Keyed, edit<ParameterWithoutTypeUnconstrainEdit>(), Keyed, "", ""},
};

/// Of short lists the whole is kept, of long ones what an edit concerns.
void expectBothWays(const Row& row, bool changes, int more) {
    SCOPED_TRACE(row.name);
    Exhibits world(more);
    const std::string before = world.state();
    ChangeRecorder heard(world.parameter(row.heard));
    const Made command(row.make(*world.parameter(row.edited)));
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
    for (const int more : {0, 70}) {
        for (const Row& row : rows)
            expectBothWays(row, true, more);
        for (const Row& row : silentRows)
            expectBothWays(row, false, more);
    }
}

TEST(Edits, OfADeadParameterDoNothingAndSaySo) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        auto world = std::make_unique<Exhibits>();
        const Made fresh(row.make(*world->parameter(row.edited)));
        const Made done(row.make(*world->parameter(row.edited)));
        EXPECT_FALSE(fresh->usageLogInfo().contains("deleted"));
        done->doIt();
        world.reset();
        fresh->doIt();
        done->undoIt();
        EXPECT_TRUE(fresh->usageLogInfo().contains(" (deleted)")) << fresh->usageLogInfo().toStdString();
    }
}

TEST(Edits, OfStaticParametersComeBack) {
    OwnedStaticParameter<QString> text("text", "old");
    ParameterSetStaticValueEdit edit(text, QString("new"));
    edit.doIt();
    EXPECT_EQ(text.value(), "new");
    edit.undoIt();
    EXPECT_EQ(text.value(), "old");
}

/// "time=value" of each keyframe, with a b for a Bezier segment that overshoots.
std::string keyframesOf(const Number& number, quint32 view) {
    QString text;
    for (unsigned i = 0; i < number.keyframeCount(View(view)); ++i) {
        const auto keyframe = number.keyframe(i, View(view));
        const char* const mark = keyframe.interpolationData.y2 > 0 ? "b " : " ";
        text += QString("%1=%2").arg(keyframe.time.toDouble()).arg(keyframe.value) + mark;
    }
    return text.toStdString();
}

TEST(Edits, RetimingAndPastingDoWhatTheySay) {
    const std::tuple<const char*, std::function<Bsc::Command*(P&)>, quint32, const char*> table[] = {
        {"shifts", edit<ParameterRetimeEdit>(Retiming::shifted(0.1)), 0, "0.1=1b 10.1=2 20.1=4 "},
        {"far", edit<ParameterRetimeEdit>(Retiming::shifted(-1e9 - 0.1)), 0, "-1e+09=1b -1e+09=2 -1e+09=4 "},
        {"scales", edit<ParameterRetimeEdit>(Retiming::scaled(2, six)), 0, "-6=1b 14=2 34=4 "},
        {"onto one that stays", edit<ParameterRetimeEdit>(late(20)), 0, "10=2 20=1b "},
        {"past one", edit<ParameterRetimeEdit>(late(12)), 0, "10=2 12=1b 20=4 "},
        {"the last of several is left", edit<ParameterRetimeEdit>(Retiming::scaled(1e-300, six)), 0, "6=4 "},
        {"pastes", edit<ParameterPasteKeyframesEdit>(pasted), 2, "1=5 "},
        {"pastes elsewhere", edit<ParameterPasteKeyframesEdit>(pasted, six, View(1)), 1, "5=7 6=5 15=8 "},
    };
    for (const auto& [name, make, view, expected] : table) {
        Exhibits world;
        Made(make(*world.parameter(Keyed)))->doIt();
        EXPECT_EQ(keyframesOf(world.number(Keyed), view), expected) << name;
        EXPECT_EQ(world.number(Keyed).staticValue(View(0)), 9) << "stays";
    }
}

TEST(Edits, RetimingMapsEachPartOnceInEachOfItsViews) {
    for (const bool together : {false, true}) {
        CompoundParameter both("both", together);
        CompoundParameter inner("inner");
        Number a("a");
        Number b("b");
        key(a, {{10, 1.}, {20, 2.}, {22, 3.}});
        key(a, {{10, 1.}, {20, 2.}}, 1);
        key(b, {{15, 5.}});
        b.setSplittable(false);
        both.addParameter(a);
        both.addParameter(b);
        inner.addParameter(a);
        both.addParameter(inner);
        ParameterRetimeEdit(both, Retiming::shifted(5).between(Time::fromInt(10), Time::fromInt(20))).doIt();
        EXPECT_EQ(keyframesOf(a, 0) + keyframesOf(a, 1) + keyframesOf(b, 0), "15=1 22=3 25=2 15=1 25=2 20=5 ");
    }
}

TEST(Edits, PastingIsExactAndRefusesWhatItCannotRead) {
    Exhibits world;
    Number& number = world.number(Keyed);
    const QString text = ParameterPasteKeyframesEdit::textOf(number, View(0), Time(), Time::fromInt(10));
    EXPECT_EQ(text, "keyframes.append( BezierKey( 0, 1, 0.2, 0.3, 0.7, 1.5 ) )\n"
                    "keyframes.append( BezierKey( 10, 2, 0, 0, 0, 0 ) )\n");
    const IType thirds(Interpolation::Bezier, 1 / 3., 0.1, 2 / 3., 1);
    key(number, {{12345.6789, 5.}, {12345.679, 6.}});
    number.vSetInterpolationData(thirds, 3, View(0));
    const QVector<Context> close{at(12345.6789), at(12345.679)};
    Number copy("copy");
    ParameterPasteKeyframesEdit exact(
        copy, ParameterPasteKeyframesEdit::textOf(number, View(0), Time::fromInt(100), Time::LAST));
    EXPECT_TRUE(exact.losses().isEmpty());
    exact.doIt();
    EXPECT_EQ(copy.allKeyframes(), close);
    EXPECT_TRUE(copy.keyframe(0, View(0)).interpolationData == thirds);
    QString rounded;
    for (const Context& keyframe : close)
        rounded += copy.getSerialisedKeyframe(keyframe)->toString() + '\n';
    EXPECT_EQ(ParameterPasteKeyframesEdit(copy, rounded).losses().size(), 1) << rounded.toStdString();

    const std::string before = world.state();
    for (const char* bad :
         {"keyframes.append( Key( 1, 5 ) )", "value=3", "keyframes.append( Key( 1e99, 5, Linear ) )"}) {
        ParameterPasteKeyframesEdit edit(number, text + bad);
        EXPECT_THROW(edit.doIt(), std::runtime_error) << bad;
        EXPECT_EQ(world.state(), before);
    }
}

/// Writes down the steps of a move.
struct Moving : Number {
    struct Keyframe : TypedSerialisedKeyframe {
        Keyframe(const TypedSerialisedKeyframe& other, QStringList& to) : TypedSerialisedKeyframe(other), steps(to) {}
        void adjustTime(float delta) override {
            steps += "adjust";
            TypedSerialisedKeyframe::adjustTime(delta);
        }
        QStringList& steps;
    };

    Moving() : ParameterWithoutType(false, false, nullptr), Number("moving") {}
    boost::shared_ptr<Bsc::MementoBase> exportState() const override {
        steps += "export";
        return Number::exportState();
    }
    boost::shared_ptr<SerialisedKeyframe> getSerialisedKeyframe(Context context) const override {
        steps += "get";
        const auto keyframe = Number::getSerialisedKeyframe(context);
        return boost::make_shared<Keyframe>(dynamic_cast<TypedSerialisedKeyframe&>(*keyframe), steps);
    }
    void vDeleteKeyframe(const Context::Explicit& context) override {
        steps += "delete";
        Number::vDeleteKeyframe(context);
    }
    void importKeyframe(const SerialisedKeyframe& keyframe) override {
        steps += "import";
        Number::importKeyframe(keyframe);
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
    Number a("a");
    Number b("b");
    auto gone = std::make_unique<Number>("gone");
    ParameterAddConstrainedParameterEdit none(*gone, b);
    gone.reset();
    none.doIt();
    EXPECT_EQ(b.masterParameter(), nullptr);
    Number c("c");
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

// What each act sends, both ways, and that it comes back exactly. Failures are the matter of tests/world.

#include "prm/parameter/TypedSerialisedKeyframe.hpp"
#include "tests/support/Record.h"
#include "tests/world/Acts.h"

#include <gtest/gtest.h>

using namespace Worlds;

namespace {

/// What all parameters of a world send, in the order of sending: A(dded), R(emoved), V(alue), I(nterpolation),
/// B(efore), F(after), P(arameter assigned), E (reset), C(leared), S(hown data), M(oved), N(ew view), D(eleted view),
/// H(idden), L(ocked); the index of the keyframe, and the view.
struct Received : QObject {
    explicit Received(const World& world) {
        for (int i = 0; i < world.parameterCount; ++i) {
            const P* const one = world.parameter(i);
            connect(one, &P::changed, this, [this, one](const ParameterChange& change) {
                const auto view = static_cast<int>(change.context.view.id());
                all += ' ' + one->scriptName() + ':' + "ARV?IBFPEC?SM??NDHL"[change.type];
                all += QString::number(static_cast<int>(change.affectedIndex));
                all += view == 0 ? QString() : QString("@%1").arg(view);
            });
        }
    }
    QString take() { return std::exchange(all, {}); }

    QString all;
};

/// A line for what it sends done and undone, and for what it returns; none where it does nothing.
QString lineOf(const Act& act, bool isCommand, Who who, const A& a, int more = 0) {
    Exhibits world(more);
    P& own = *world.parameter(who);
    const std::string before = world.state();
    Received received(world);
    Command command;
    int outcome = 0;
    const std::string error = errorOf([&] {
        outcome = act.run(command, own, *world.parameter(Master), a);
        command.doIt();
    });
    QString line = received.take() + QString::fromStdString(error);
    line += outcome == 0 ? QString() : QString(" returns %1").arg(outcome);
    if (isCommand && error.empty()) {
        const std::string after = world.state();
        command.undoIt();
        line += " |" + received.take();
        if (more > 0) {
            command.doIt();
            EXPECT_EQ(world.state(), after);
            command.undoIt();
        }
    }
    EXPECT_TRUE(!isCommand || world.state() == before);
    const bool isNothing = line == " |" || (line.isEmpty() && world.state() == before);
    const auto place = [](const Context& at) { return QString(" %1@%2").arg(at.time.toDouble()).arg(at.view.id()); };
    return isNothing ? QString() : "    " + own.scriptName() + place(a.at) + place(a.to) + ':' + line + '\n';
}

/// The record is brought up to date where PRM_WRITE_RECORDS is in the environment.
void expectOnRecord(const char* record, const std::vector<Act>& acts) {
    const Warnings quiet;
    QString now;
    for (const Act& act : acts) {
        SCOPED_TRACE(act.name);
        now += QString(act.name) + '\n';
        for (const Who who : {Plain, Keyed, Tied, X, Joined, Position})
            for (const A& a : places)
                now += lineOf(act, &acts == &commands, who, a);
    }
    ::expectOnRecord(record, now);
}

TEST(Edits, SendWhatIsOnRecord) {
    expectOnRecord("what_mutators_send.txt", edits);
}

TEST(Edits, OfCommandsComeBackExactlyAndSendWhatIsOnRecord) {
    expectOnRecord("what_commands_send.txt", commands);
}

/// Of short lists the whole is kept, of long ones what an edit concerns.
TEST(Edits, OfLongListsComeBackExactly) {
    const Warnings quiet;
    for (const Act& act : commands) {
        SCOPED_TRACE(act.name);
        for (const Who who : {Keyed, X, Position})
            for (const std::size_t place : {0, 1, 3, 4})
                lineOf(act, true, who, places[place], 70);
    }
}

TEST(Edits, OfADeadParameterDoNothingAndSaySo) {
    for (const Act& act : commands) {
        SCOPED_TRACE(act.name);
        auto world = std::make_unique<Exhibits>();
        Command fresh;
        Command done;
        for (Command* command : {&fresh, &done})
            act.run(*command, *world->parameter(X), *world->parameter(Master), places[0]);
        EXPECT_FALSE(fresh.usageLogInfo().contains("deleted"));
        done.doIt();
        world.reset();
        fresh.doIt();
        done.undoIt();
        EXPECT_TRUE(fresh.empty() || fresh.usageLogInfo().contains(" (deleted)")) << fresh.usageLogInfo().toStdString();
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

// Retiming is in tests/data/tool/editing.session, pasting into views in tests/set/clipboard_test.cpp.
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

TEST(Edits, AMoveAndALineTakeTheStepsOfAHost) {
    Moving moving;
    key(moving, {{1, 5.}, {4, 6.}});
    MoveKeyframeEdit(moving, at(1), at(2)).doIt();
    EXPECT_EQ(moving.steps.join(' ').toStdString(), "export get delete adjust import");
    EXPECT_TRUE(moving.bKeyframeAt(Context::Explicit(at(2))));
    EXPECT_TRUE(moving.streamInValue("keyframes.append( Key( 7, 1, Linear ) )", {}, {}));
    EXPECT_EQ(moving.steps.last().toStdString(), "import");
}

TEST(Edits, OfMastersCloseNoCircleOutOfTurn) {
    Number a("a"), b("b"), c("c");
    auto gone = std::make_unique<Number>("gone");
    ParameterAddConstrainedParameterEdit none(*gone, b);
    gone.reset();
    none.doIt();
    EXPECT_EQ(b.masterParameter(), nullptr);
    ParameterAddConstrainedParameterEdit show(a, b), change(c, b);
    ParameterWithoutTypeUnconstrainEdit leave(b);
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

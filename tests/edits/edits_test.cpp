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

/// A line for what it sends done and undone, what it returns, and its text; none where it does nothing.
QString lineOf(const Act& act, bool isCommand, Who who, const A& a, int more = 0) {
    Exhibits world(more);
    if (more > 0) {
        world.parameter(X)->uniquifyView(View(1));
        world.parameter(Y)->setSplittable(false);
    }
    P& own = *world.parameter(who);
    const std::string before = world.state();
    Received received(world);
    Command command;
    int outcome = 0;
    QString text;
    const std::string error = errorOf([&] {
        outcome = act.run(command, own, *world.parameter(Master), a);
        command.doIt();
    });
    QString line = received.take() + QString::fromStdString(error);
    line += outcome == 0 ? QString() : QString(" returns %1").arg(outcome);
    if (isCommand && error.empty()) {
        const std::string after = world.state();
        text = undoText(command);
        command.undoIt();
        EXPECT_EQ(undoText(command).toStdString(), text.toStdString());
        line += " |" + received.take();
        if (more > 0) {
            command.doIt();
            EXPECT_EQ(world.state(), after);
            command.undoIt();
        }
    }
    EXPECT_TRUE(!isCommand || world.state() == before);
    const bool isNothing = line == " |" || (line.isEmpty() && world.state() == before);
    line += isCommand ? " \"" + text + '"' : QString();
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
        for (const Who who : {Keyed, X, Position}) {
            for (const std::size_t place : {0, 1, 3, 4})
                lineOf(act, true, who, places[place], 70);
            lineOf(act, true, who, {at(9, 1), at(7), 2, 1, false, 3}, 70);
        }
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

TEST(Edits, OfOneThingInARowMerge) {
    using Make = std::function<void(Exhibits&, Command&, int)>;
    struct Row {
        const char* name;
        bool merge;
        /// The first and the second command.
        Make make;
    };
    const auto value = [](Who who, double one, double two, const Context& where) {
        return [=](Exhibits& w, Command& c, int i) {
            add<ParameterSetValueEdit>(c, *w.parameter(who), fitting(*w.parameter(who), i == 0 ? one : two), where);
        };
    };
    const Row rows[] = {
        {"value", true, value(Keyed, 5, 6, at(10))},
        {"value and back", true, value(Keyed, 5, 2, at(10))},
        {"the same value, then another", true, value(Keyed, 2, 6, at(10))},
        {"new keyframe of a part", true, value(X, 5, 6, at(3))},
        {"value of a compound", true, value(Position, 5, 6, at(3))},
        {"new view", true, value(Keyed, 5, 6, at(3, 3))},
        {"unsplittable", true, value(Joined, 5, 6, at(3, 1))},
        {"at two times", false,
         [](Exhibits& w, Command& c, int i) { add<ParameterSetValueEdit>(c, *w.parameter(Keyed), 5, at(i)); }},
        {"in two views", false,
         [](Exhibits& w, Command& c, int i) {
             add<ParameterSetValueEdit>(c, *w.parameter(Keyed), 5, at(3, static_cast<quint32>(i)));
         }},
        {"of two parameters", false,
         [](Exhibits& w, Command& c, int i) {
             add<ParameterSetValueEdit>(c, *w.parameter(i == 0 ? Keyed : Far), 5, at(3));
         }},
        {"of two classes", false,
         [](Exhibits& w, Command& c, int i) {
             i == 0 ? add<ParameterSetValueEdit>(c, *w.parameter(Keyed), 5, Context(Time::INVALID))
                    : add<ParameterSetStaticValueEdit>(c, *w.parameter(Keyed), 5);
         }},
        {"static value", true,
         [](Exhibits& w, Command& c, int i) {
             c.push_back(new ParameterSetStaticValueEdit(*w.set(0)->basicParameters().back(), i + 5));
         }},
        {"shape", true,
         [](Exhibits& w, Command& c, int i) {
             add<ParameterInterpolationDataEdit>(c, *w.parameter(Keyed), IType(Interpolation::Bezier, 0, 0, 1, i), 1u,
                                                 View(0));
         }},
        {"shapes of two keyframes", false,
         [](Exhibits& w, Command& c, int i) {
             add<ParameterInterpolationDataEdit>(c, *w.parameter(Keyed), IType(Interpolation::Bezier, 0, 0, 1, 1),
                                                 static_cast<unsigned>(i), View(0));
         }},
        {"kind, which keeps numbers of its own", false,
         [](Exhibits& w, Command& c, int i) {
             add<ParameterInterpolationEdit>(c, *w.parameter(Keyed),
                                             i == 0 ? Interpolation::Linear : Interpolation::Bezier, at(0));
         }},
        {"extrapolation", true,
         [](Exhibits& w, Command& c, int i) {
             add<ParameterExtrapolationAfterEdit>(c, *w.parameter(Keyed), static_cast<Extrapolation>(3 - i));
         }},
        {"extrapolation of a master's child", true,
         [](Exhibits& w, Command& c, int i) {
             add<ParameterExtrapolationAfterEdit>(c, *w.parameter(Tied), static_cast<Extrapolation>(3 - i));
         }},
        {"hidden", true,
         [](Exhibits& w, Command& c, int i) { add<ParameterWithoutTypeHideEdit>(c, *w.parameter(X), i == 0); }},
        {"two values, of which one changes later", true,
         [&](Exhibits& w, Command& c, int i) {
             value(Keyed, 5, 6, at(10))(w, c, i);
             value(Master, 5, 7, at(0))(w, c, i);
         }},
        {"parts that are keyed together", true,
         [&](Exhibits& w, Command& c, int i) {
             value(X, 5, 6, at(3))(w, c, i);
             value(Y, 7, 8, at(3))(w, c, i);
         }},
        {"of one parameter, changed later: the first state is not known", false,
         [&](Exhibits& w, Command& c, int i) {
             value(Keyed, 2, 7, at(10))(w, c, i);
             value(Keyed, 5, 6, at(20))(w, c, i);
         }},
        {"new view and value", true,
         [&](Exhibits& w, Command& c, int i) {
             add<ParameterSplitViewEdit>(c, *w.parameter(Keyed), View(3));
             value(Keyed, 5, 6, at(3, 3))(w, c, i);
         }},
        {"value changed later, of a parameter that was hidden", false,
         [&](Exhibits& w, Command& c, int i) {
             value(Keyed, 2, 7, at(10))(w, c, i);
             add<ParameterWithoutTypeHideEdit>(c, *w.parameter(Keyed), true);
         }},
        {"value changed later, of a part of the next one's compound", false,
         [&](Exhibits& w, Command& c, int i) {
             add<ParameterSetStaticValueEdit>(c, *w.parameter(X), i * 5., View(0));
             value(Position, 5, 6, at(3))(w, c, i);
         }},
        {"value that the next edit copies", false,
         [&](Exhibits& w, Command& c, int i) {
             value(Keyed, 5, 6, at(3))(w, c, i);
             add<ParameterSplitViewEdit>(c, *w.parameter(Keyed), View(3));
         }},
        {"value that a new keyframe of a part depends on", false,
         [&](Exhibits& w, Command& c, int i) {
             value(Y, 7, 8, at(6))(w, c, i);
             value(X, 5, 6, at(8))(w, c, i);
         }},
        {"one and two", false,
         [&](Exhibits& w, Command& c, int i) {
             for (int k = 0; k <= i; ++k)
                 value(Keyed, 5, 6, at(10))(w, c, i);
         }},
        {"moves", false,
         [](Exhibits& w, Command& c, int) { add<MoveKeyframeEdit>(c, *w.parameter(Keyed), at(0), at(1)); }},
    };
    const Warnings quiet;
    for (const int more : {0, 70}) {
        for (const Row& row : rows) {
            SCOPED_TRACE(row.name);
            Exhibits world(more);
            const std::string before = world.state();
            Command first;
            auto next = std::make_unique<Command>();
            row.make(world, first, 0);
            row.make(world, *next, 1);
            first.doIt();
            next->doIt();
            const std::string after = world.state();
            EXPECT_EQ(mergeEdits(first, *next), row.merge);
            if (!row.merge)
                next->undoIt();
            next.reset();
            first.undoIt();
            EXPECT_EQ(world.state(), before);
            first.doIt();
            EXPECT_TRUE(!row.merge || world.state() == after);
        }
    }
}

TEST(Edits, MergeOnlyOneAfterTheOtherAndSendNothingForNothing) {
    Number number("number");
    Number other("other");
    const auto edit = [](Number& of, double value) { return ParameterSetValueEdit(of, value, at(1)); };
    ParameterSetValueEdit first = edit(number, 1), second = edit(number, 2), between = edit(other, 3);
    const auto merge = [&] { return mergeEdits(first, second); };
    EXPECT_FALSE(merge()) << "not done";
    first.doIt();
    EXPECT_FALSE(merge()) << "the second is not done";
    EXPECT_FALSE(mergeEdits(first, first));
    between.doIt();
    second.doIt();
    EXPECT_FALSE(merge()) << "another edit lies between";
    second.undoIt();
    EXPECT_FALSE(merge()) << "undone";
    between.undoIt();
    first.undoIt();
    second.doIt();
    EXPECT_FALSE(merge()) << "the first is undone";
    second.undoIt();
    first.doIt();
    second.doIt();
    between.doIt();
    EXPECT_FALSE(merge()) << "another edit was done since";
    between.undoIt();
    second.undoIt();
    // A drag, which ends where it began.
    number.vSetValue(1, at(1));
    for (int i = 10000; i > 0; --i) {
        ParameterSetValueEdit next = edit(number, i);
        next.doIt();
        EXPECT_EQ(mergeEdits(first, next), i < 10000) << "after an undo, from the first on";
        if (i == 10000) {
            next.undoIt();
            first.doIt();
        }
    }
    ChangeRecorder recorder(&number);
    first.undoIt();
    EXPECT_EQ(recorder.take(), "");
}

/// A command of a host's, with words of its own.
struct Rename : UndoableEdit {
    void doIt() override { noteDone(); }
    void undoIt() override { noteUndone(); }
    EditSummary summary() const override { return {"Rename %p%", "Rename %n: %p", 1, {{this, "layer%n"}}}; }
};

TEST(Edits, OfSeveralKindsSayHowManyTheyChange) {
    Exhibits world;
    P& keyed = *world.parameter(Keyed);
    Bsc::CompositeCommand all;
    const auto text = [&] { return undoText(all).toStdString(); };
    EXPECT_EQ(text(), "");
    all.push_back(new Rename);
    EXPECT_EQ(text(), "Rename layer%n%");
    all.push_back(new Rename);
    EXPECT_EQ(text(), "Rename 2: 2 parameters");
    Command one;
    add<ParameterSplitViewEdit>(one, keyed, View(1));
    EXPECT_EQ(undoText(one), "Split 0 views of set.p3");
    add<ParameterSetValueEdit>(one, keyed, 1, at(1, 1));
    EXPECT_EQ(undoText(one), "Set value of set.p3") << "splitting changes nothing";
    add<ParameterWithoutTypeHideEdit>(one, keyed, true);
    EXPECT_EQ(undoText(one), "Change set.p3");
    P& pair = *world.parameter(Position);
    world.parameter(X)->uniquifyView(View(2));
    Command views;
    add<ParameterSplitViewEdit>(views, pair, View(2));
    EXPECT_EQ(undoText(views), "Split 1 view of set.p10") << "one part has it";
    views.doIt();
    ParameterSplitViewEdit again(pair, View(2));
    again.doIt();
    EXPECT_EQ(again.summary().count, 0);
    ParameterRetimeEdit far(keyed, Retiming::shifted(1e10));
    EXPECT_EQ(far.refusal(), "a keyframe would come to a time that is out of range");
    far.doIt();
    EXPECT_EQ(far.summary().count, 0);
    Number unanimated("unanimated");
    unanimated.vSetValue(2, still());
    ParameterScaleValuesEdit scaling(unanimated, {}, ValueScaling::scaled(2));
    scaling.doIt();
    EXPECT_EQ(undoText(scaling), "Change value of unanimated");
    Command members;
    members.push_back(new ParameterSetRemoveEdit(world.root, *world.set(0)));
    EXPECT_EQ(undoText(members), "Remove set");
    members.push_back(new ParameterSetRemoveEdit(world.root, *world.set(1)));
    EXPECT_EQ(undoText(members), "Remove 2 subsets");
    members.push_back(new ParameterSetRemoveEdit(*world.set(0), keyed));
    EXPECT_EQ(undoText(members), "Remove 3 members");
    EXPECT_EQ(dynamic_cast<CompoundParameter&>(*world.parameter(Position)).path(), "set.p10");
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

// A compound's keyframes: the union of those of its parts.

#include "tests/compound/Position.h"
#include "tests/support/Test.h"

using namespace Prm;

namespace {

// That its keyframes are the union is compared in fuzz/undo_fuzz.cpp.
TEST(Compound, FindsTheNearestOfItsKeyframes) {
    Position p;
    key(*p.y, {{7, 0.}}, 2);
    EXPECT_EQ(p.whole.viewList(), (std::vector<View>{0, 2}));
    EXPECT_EQ(p.whole.allKeyframes().size(), 4);
    EXPECT_TRUE(p.whole.isKeyframed() && p.whole.isSplit() && p.whole.splittable());
    EXPECT_EQ(p.whole.keyframeTime(3, View(2)), at(0, 2));
    for (const auto& [time, near] : {std::pair(0, 1), {1, 1}, {2, 1}, {3, 5}, {5, 5}, {20, 9}}) {
        Time nearest;
        EXPECT_TRUE(p.whole.bNearestKeyframeTime(at(time), nearest));
        EXPECT_EQ(nearest, Time::fromInt(near)) << time;
    }
    EXPECT_EQ(CompoundParameter().viewList(), std::vector<View>{0});
    EXPECT_FALSE(CompoundParameter().isKeyframed());
}

TEST(Compound, SendsTheIndicesOfMovedKeyframes) {
    Position p;
    QList<unsigned int> forwarded;
    QObject::connect(&p.whole, &CompoundParameter::changed, [&](ParameterChange& change) {
        if (change.type == ParameterChange::KEYFRAME_MOVED)
            forwarded = *change.getAffectedIndices();
    });
    QList<unsigned int> moved{1, 0};
    ParameterChange::keyframeMoved(*p.y, moved, View(0));
    EXPECT_EQ(forwarded, (QList<unsigned int>{2, 2}));
}

// Every addition makes the connections anew, so an observer of a part that came between two of them is notified first.
TEST(Compound, HearsItsPartsBehindThoseWhoCameBeforeTheLastOne) {
    for (const bool between : {true, false}) {
        Number parts[3];
        CompoundParameter whole(QStringLiteral("whole"));
        std::string heard;
        whole.addParameter(parts[0]);
        whole.addParameter(parts[1]);
        if (!between)
            whole.addParameter(parts[2]);
        QObject::connect(&parts[0], &Number::changed, [&](ParameterChange&) { heard += 'p'; });
        if (between)
            whole.addParameter(parts[2]);
        QObject::connect(&whole, &CompoundParameter::changed, [&](ParameterChange&) { heard += 'w'; });
        ParameterChange::valueChanged(parts[0], View(0));
        EXPECT_EQ(heard, between ? "pw" : "wp");
    }
}

TEST(Compound, ForwardsAKeyframeThatIsGoneAlready) {
    for (const bool together : {false, true}) {
        Number x("x"), y("y");
        QObject::connect(&x, &Number::changed, [&](ParameterChange& change) {
            if (change.type == ParameterChange::KEYFRAME_ADDED)
                x.vDeleteAllKeyframes(View(0));
        });
        CompoundParameter whole("whole", together);
        whole.addParameter(x);
        whole.addParameter(y);
        ChangeRecorder recorder;
        QObject::connect(&whole, &CompoundParameter::changed, &recorder, &ChangeRecorder::onChanged);
        x.iAddKeyframe(at(4));
        EXPECT_EQ(recorder.take(), "KEYFRAME_ADDED -1 0\n");
        EXPECT_EQ(whole.keyframeCount(View(0)), 0u) << "nor one at another time, on the others";
    }
}

/// Throws when it loses a keyframe.
struct Throwing : Number {
    void vDeleteKeyframe(const Context::Explicit&) override { throw std::runtime_error("kept"); }
};

TEST(Compound, KeysItsPartsTogetherAndLeavesNothingSwitchedOff) {
    Position p(true);
    p.x->iAddKeyframe(at(4));
    EXPECT_EQ(p.y->keyframeCount(View(0)), 3u);
    EXPECT_EQ(p.y->keyframeValue(0, View(0)), 3);
    p.y->enableNotifications(ParameterChange::VIEW_ADDED, false);
    p.whole.vDeleteKeyframe(Context::Explicit(at(4)));
    EXPECT_TRUE(p.y->notificationsEnabled(ParameterChange::VIEW_ADDED)) << "all are on afterwards";
    Throwing throwing;
    p.whole.addParameter(throwing);
    EXPECT_THROW(p.x->vDeleteKeyframe(Context::Explicit(at(5))), std::runtime_error);
    EXPECT_TRUE(p.x->notificationsEnabled(ParameterChange::KEYFRAME_ADDED));
}

TEST(Compound, ItsKeyframesTravelAsOne) {
    Position p;
    key(*p.x, {{9, 5.}});
    EXPECT_EQ(p.whole.getSerialisedKeyframe(at(2)), nullptr);
    const auto taken = p.whole.getSerialisedKeyframe(at(5));
    EXPECT_EQ(taken->toString(),
              "x.keyframes.append( Key( 5, 2, Linear ) )\ny.keyframes.append( Key( 5, 3, Linear ) )");
    const auto read = p.whole.getSerialisedKeyframe(Context(Context::INVALID_TIME));
    read->setFromString("view[1].y.keyframes.append( Key( 5, 8, Linear ) )");
    EXPECT_EQ(read->context(), at(5, 1));
    EXPECT_THROW(read->setFromString("z.keyframes.append( Key( 5, 8, Linear ) )"), std::runtime_error);
    read->adjustTime(2);
    p.x->vSetValue(9, at(5));
    EXPECT_FALSE(p.whole.getSerialisedKeyframe(at(5))->equals(*taken)) << "another value of a part";
    p.whole.importKeyframe(*read);
    EXPECT_EQ(p.times(1), "7 ");
    EXPECT_THROW(p.whole.importKeyframe(*p.x->getSerialisedKeyframe(at(5))), std::bad_cast);
    EXPECT_THROW(p.x->importKeyframe(*taken), std::bad_cast);
}

// As an observer may have done in the middle of a move.
TEST(Compound, ItsKeyframeGoesBackByPartWhenPartsWereReordered) {
    Number x("x");
    Parameter<bool> on("on");
    CompoundParameter whole("whole");
    whole.addParameter(x);
    whole.addParameter(on);
    x.vSetValue(3, at(1));
    on.vSetValue(true, at(1));
    const auto keyframe = whole.getSerialisedKeyframe(at(1));
    whole.vDeleteKeyframe(Context::Explicit(at(1)));
    whole.clearAllLists();
    whole.addParameter(on);
    whole.addParameter(x);
    whole.importKeyframe(*keyframe);
    EXPECT_TRUE(x.bKeyframeAt(Context::Explicit(at(1))) && x.value(at(1)) == 3 && on.value(at(1)));
}

/// Of a part that shows other data in a view there is nothing to move, and one for which all views are one moves there.
TEST(Compound, MovesTheKeyframesThatItsPartsHaveInAView) {
    const std::tuple<const char*, bool, bool, int, const char*> rows[] = {
        {"has the view", true, true, 1, "10 20 30 | 15 | "},
        {"borrows it", false, true, 0, "10 20 30 | | "},
        {"has one for all", false, false, 3, "15 20 30 | 15 20 30 | "},
    };
    for (const auto& [name, hasView, splittable, copied, after] : rows) {
        SCOPED_TRACE(name);
        Number a("a"), b("b");
        CompoundParameter whole("whole");
        for (Number* part : {&a, &b}) {
            key(*part, {{10, 1.}, {20, 2.}, {30, 3.}});
            whole.addParameter(*part);
        }
        key(a, {{10, 1.}}, 1);
        if (hasView)
            key(b, {{10, 1.}}, 1);
        b.setSplittable(splittable);
        const auto times = [&b] { return timesOf(b) + "| " + timesOf(b, 1) + "| "; };
        const std::string before = times();
        const QString text = ParameterPasteKeyframesEdit::textOf(whole, View(1), Time::fromInt(0), Time::fromInt(99));
        EXPECT_EQ(text.count("b."), copied);
        EXPECT_EQ(text.count("view[1]."), hasView ? 2 : 1) << text.toStdString();
        MoveKeyframeEdit move(whole, at(10, 1), at(15, 1));
        move.doIt();
        EXPECT_EQ(times(), after);
        EXPECT_EQ(b.numViews(), hasView ? 2 : 1);
        move.undoIt();
        EXPECT_EQ(times(), before);
    }
}

TEST(Compound, ItsKeyframesArePastedIntoTheNamedView) {
    for (const quint32 from : {0u, 1u}) {
        for (const quint32 into : {0u, 1u, 2u}) {
            SCOPED_TRACE(std::to_string(from) + " to " + std::to_string(into));
            Position source, target;
            CompoundParameter whole("whole"), other("other");
            whole.addParameter(source.whole);
            other.addParameter(target.whole);
            key(*source.x, {{3, 7.}}, from);
            key(*source.y, {{3, 8.}}, from);
            const QString text =
                ParameterPasteKeyframesEdit::textOf(whole, View(from), Time::fromInt(3), Time::fromInt(3));
            ParameterPasteKeyframesEdit(other, text, Time::fromInt(40), View(into)).doIt();
            for (const quint32 view : {0u, 1u, 2u})
                EXPECT_EQ(target.times(view).find("40") != std::string::npos, view == into);
            EXPECT_TRUE(target.x->value(at(40, into)) == 7 && target.y->value(at(40, into)) == 8);
        }
    }
}

} // namespace

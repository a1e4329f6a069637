// A compound's keyframes: the union of those of its parts.

#include "host/bsc/Hash.h"
#include "prm/CompoundParameter.h"
#include "prm/MoveKeyframeEdit.h"
#include "prm/NumericParameter.h"
#include "prm/ParameterEdits.h"
#include "prm/ProjectFile.h"
#include "prm/ProjectFileVersion.h"
#include "prm/SerialisedKeyframe.h"
#include "tests/compound/Position.h"
#include "tests/support/ChangeRecorder.h"
#include "tests/support/Warnings.h"

#include <QTextStream>
#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <array>
#include <random>
#include <stdexcept>
#include <vector>

using namespace Prm;

namespace {

TEST(Compound, ItsKeyframesAreTheUnion) {
    Position p;
    key(*p.y, {{7, 0.}}, 2);
    EXPECT_EQ(p.times(), "1 5 9 ");
    EXPECT_EQ(p.times(2), "7 ");
    EXPECT_EQ(p.whole.viewList(), (std::vector<View>{0, 2}));
    EXPECT_EQ(p.whole.allKeyframes().size(), 4);
    EXPECT_EQ(p.whole.keyframeTime(1, View(0)), at(5));
    EXPECT_EQ(p.whole.keyframeTime(3, View(2)), at(0, 2));
    EXPECT_TRUE(p.whole.isKeyframed() && p.whole.isSplit() && p.whole.splittable());
    const std::tuple<double, bool, double, double, double> rows[] = {{0, false, -1, 1, 1}, {1, true, -1, 5, 1},
                                                                     {3, false, 1, 5, 5},  {5, true, 1, 9, 5},
                                                                     {9, true, 5, -1, 9},  {20, false, 9, -1, 9}};
    for (const auto& [time, there, before, after, near] : rows) {
        Context previous = at(-1);
        Context next = at(-1);
        Time nearest;
        EXPECT_EQ(p.whole.bKeyframeAt(Context::Explicit(at(time))), there) << time;
        EXPECT_EQ(p.whole.bPreviousKeyframe(at(time), previous), before >= 0) << time;
        EXPECT_EQ(p.whole.bNextKeyframe(at(time), next), after >= 0) << time;
        EXPECT_TRUE(p.whole.bNearestKeyframeTime(at(time), nearest)) << time;
        EXPECT_EQ(previous, at(before)) << time;
        EXPECT_EQ(next, at(after)) << time;
        EXPECT_EQ(nearest, Time::fromDouble(near)) << time;
    }
    EXPECT_EQ(CompoundParameter().viewList(), std::vector<View>{0});
    EXPECT_EQ(CompoundParameter().keyframeCount(View(0)), 0u);
}

/// Says nothing of its revisions.
struct Uncounted : Number {
    Uncounted() : ParameterWithoutType(false, false, nullptr), Number("uncounted") {}
    quint64 keyframeRevision() const override { return 0; }
};

TEST(Compound, SendsWhatItsSubparametersSend) {
    const auto heard = [](bool together, const std::function<void(Position&)>& act) {
        Position p(together);
        ChangeRecorder recorder;
        QObject::connect(&p.whole, &CompoundParameter::changed, &recorder, &ChangeRecorder::onChanged);
        act(p);
        return recorder.take();
    };
    const auto addsAt4 = [](Position& p) { p.x->iAddKeyframe(at(4)); };
    EXPECT_EQ(heard(false, addsAt4), "KEYFRAME_ADDED 1 0\n");
    EXPECT_EQ(heard(true, addsAt4), "KEYFRAME_ADDED 1 0\nKEYFRAME_ADDED 1 0\n") << "the inner one first";
    EXPECT_EQ(heard(false, [](Position& p) { p.x->vSetValue(8, at(5)); }), "KEYFRAME_CHANGED_VALUE 1 0\n");
    EXPECT_EQ(heard(true, [](Position& p) { p.x->vDeleteKeyframe(Context::Explicit(at(5))); }),
              "KEYFRAME_REMOVED 1 0\n");
    EXPECT_EQ(heard(false, [](Position& p) { p.y->vDeleteKeyframe(Context::Explicit(at(9))); }),
              "KEYFRAME_REMOVED -1 0\n");
    EXPECT_EQ(heard(false, [](Position& p) { p.y->uniquifyView(View(3)); }), "VALUE_CHANGED 0 3\n");
    EXPECT_EQ(heard(true,
                    [](Position& p) {
                        p.y->hide(true);
                        p.y->vSetExtrapolationAfter(Extrapolation::Linear);
                    }),
              "");
    EXPECT_EQ(heard(true,
                    [](Position& p) {
                        Number fixed("fixed", 0, Splittable);
                        p.whole.addParameter(fixed);
                        fixed.vSetValue(3, at(7));
                    }),
              "KEYFRAME_CHANGED_VALUE -1 0\n");

    QList<unsigned int> forwarded;
    Position p;
    QObject::connect(&p.whole, &CompoundParameter::changed, [&](ParameterChange& change) {
        if (change.type == ParameterChange::KEYFRAME_MOVED)
            forwarded = *change.getAffectedIndices();
    });
    QList<unsigned int> moved{1, 0};
    ParameterChange::keyframeMoved(*p.y, moved, View(0));
    EXPECT_EQ(forwarded, (QList<unsigned int>{2, 2}));
}

// Every addition makes the connections anew, so an observer of a part that came between two of them is told first.
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

/// What changes the parts while `changed` is not received, or is not the last word, and then one keyframe that is.
TEST(Compound, TheUnionMissesNoChange) {
    struct Row {
        const char* name;
        void (*act)(Position&);
    };
    const Row rows[] = {
        {"undo",
         [](Position& p) {
             MoveKeyframeEdit move(*p.x, at(5), at(15));
             move.doIt();
             EXPECT_EQ(p.times(), "9 15 ");
             move.undoIt();
         }},
        {"moved in silence",
         [](Position& p) { p.x->adjustKeyframesTime([](Time time) { return time + -4.; }), p.x->vSetValue(1, at(5)); }},
        {"text",
         [](Position& p) {
             p.x->streamInValue("keyframes.append( Key( 3, 1, Linear ) )", ProjectFileVersion(""), {});
         }},
        {"blocked signals",
         [](Position& p) { p.x->blockSignals(true), p.x->vSetValue(1, at(3)), p.x->blockSignals(false); }},
        {"switched off",
         [](Position& p) {
             p.whole.subparametersNotification(false), p.x->vSetValue(1, at(3));
             p.whole.subparametersNotification(true);
         }},
        {"announced at another time",
         [](Position& p) {
             p.x->blockSignals(true), p.x->vSetValue(1, at(3)), p.x->blockSignals(false);
             ParameterChange::keyframeAdded(*p.y, 0, View(0));
         }},
        {"views not told apart", [](Position& p) { p.x->uniquifyView(View(2)), p.x->setSplittable(false); }},
        {"another part", [](Position& p) { p.whole.addParameter(boost::make_shared<Number>(*p.y)); }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Position p;
        p.x->vDeleteKeyframe(Context::Explicit(at(1)));
        p.y->vDeleteKeyframe(Context::Explicit(at(5)));
        EXPECT_EQ(p.times(2), "");
        EXPECT_EQ(p.times(), "5 9 ");
        row.act(p);
        p.x->vDeleteKeyframe(Context::Explicit(at(5)));
        for (const quint32 view : {0u, 2u})
            EXPECT_EQ(p.whole.allKeyframesTime(View(view)), CompoundParameter(p.whole).allKeyframesTime(View(view)));
    }
}

TEST(Compound, ForwardsAKeyframeThatIsGoneAlready) {
    for (const bool together : {false, true}) {
        auto x = boost::make_shared<Number>("x");
        auto y = boost::make_shared<Number>("y");
        QObject::connect(x.get(), &Number::changed, [&](ParameterChange& change) {
            if (change.type == ParameterChange::KEYFRAME_ADDED)
                x->vDeleteAllKeyframes(View(0));
        });
        CompoundParameter whole("whole", together);
        whole.addParameter(x);
        whole.addParameter(y);
        EXPECT_EQ(whole.keyframeCount(View(0)), 0u);
        ChangeRecorder recorder;
        QObject::connect(&whole, &CompoundParameter::changed, &recorder, &ChangeRecorder::onChanged);
        x->iAddKeyframe(at(4));
        EXPECT_EQ(recorder.take(), "KEYFRAME_ADDED -1 0\n");
        EXPECT_EQ(whole.keyframeCount(View(0)), 0u) << "nor one at another time, on the others";
    }
}

TEST(Compound, TheUnionIsThatOfANewCompound) {
    Uncounted uncounted;
    Position inner;
    Position p;
    ChangeRecorder recorder(&p.whole);
    Number* const parts[] = {p.x.get(), p.y.get(), inner.x.get(), &uncounted};
    const std::function<void(Number&)> rareActs[] = {
        [](Number& part) { part.adjustKeyframesTime([](Time time) { return time + 2.; }); },
        [](Number& part) { part.blockSignals(!part.signalsBlocked()); },
        [](Number& part) { part.vDeleteAllKeyframes(View(0)); },
        [](Number& part) { part.clearViewData(); },
        [](Number& part) { part.assignFrom(Number()); },
        [&](Number&) { p.whole.subparametersNotification(false); },
        [&](Number&) { p.whole.subparametersNotification(true); },
        [&](Number& part) { p.whole.clearAllLists(), p.whole.addParameter(part); },
        [&](Number& part) { p.whole.addParameter(part); },
        [&](Number&) { p.whole.addParameter(inner.whole); },
    };
    std::minstd_rand random(5);
    for (int i = 0; i < 4000; ++i) {
        const Context place(Time::fromInt(static_cast<int>(random() % 23)), View(i % 64 < 48 ? 0 : 2));
        Number& part = *parts[random() % std::size(parts)];
        const auto choice = random() % 30;
        if (choice > 18)
            part.vSetValue(i, place);
        else if (choice >= std::size(rareActs))
            part.vDeleteKeyframe(Context::Explicit(place));
        else if (random() % 4 == 0)
            rareActs[choice](part);
        // Now and then only, so that some changes are missed.
        EXPECT_TRUE(random() % 2 == 0 ||
                    p.whole.allKeyframesTime(place.view) == CompoundParameter(p.whole).allKeyframesTime(place.view));
    }
}

TEST(Compound, KeysItsPartsTogether) {
    Position p(true);
    p.x->iAddKeyframe(at(4));
    EXPECT_EQ(p.y->keyframeCount(View(0)), 3u);
    EXPECT_EQ(p.y->keyframeValue(0, View(0)), 3);
    p.y->enableNotifications(ParameterChange::VIEW_ADDED, false);
    p.x->vDeleteKeyframe(Context::Explicit(at(4)));
    EXPECT_FALSE(p.y->bKeyframeAt(Context::Explicit(at(4))));
    EXPECT_TRUE(p.y->notificationsEnabled(ParameterChange::VIEW_ADDED)) << "all are on afterwards";
    EXPECT_EQ(p.whole.iAddKeyframe(at(6)), 2);
    EXPECT_EQ(p.whole.iAddKeyframe(at(6)), -1);
    p.whole.vDeleteAllKeyframes(View(0));
    EXPECT_EQ(p.times(), "");
}

/// Throws when it loses a keyframe.
struct Throwing : Number {
    Throwing() : ParameterWithoutType(false, false, nullptr), Number("throwing") {}
    void vDeleteKeyframe(const Context::Explicit&) override { throw std::runtime_error("kept"); }
};

TEST(Compound, WhatThrowsWhileKeysGoTogetherLeavesNothingSwitchedOff) {
    Position p(true);
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
    EXPECT_FALSE(read->equals(*taken));
    p.whole.importKeyframe(*read);
    EXPECT_EQ(p.times(1), "7 ");
    EXPECT_THROW(p.whole.importKeyframe(*p.x->getSerialisedKeyframe(at(5))), std::bad_cast);
    EXPECT_THROW(p.x->importKeyframe(*taken), std::bad_cast);
}

/// Of a part that shows other data in a view there is nothing to move, and one for which all views are one moves there.
TEST(Compound, MovesTheKeyframesThatItsPartsHaveInAView) {
    struct Row {
        const char* name;
        std::vector<View> views;
        bool splittable;
        int copied;
        const char* after;
    };
    const Row rows[] = {{"has the view", {0, 1}, true, 1, "10 20 30 | 15 "},
                        {"borrows it", {0}, true, 0, "10 20 30 | "},
                        {"has one for all", {0}, false, 3, "15 20 30 | 15 20 30 "}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Number a("a");
        Number b("b");
        for (Number* part : {&a, &b})
            key(*part, {{10, 1.}, {20, 2.}, {30, 3.}});
        key(a, {{10, 1.}}, 1);
        if (row.views.size() > 1)
            key(b, {{10, 1.}}, 1);
        b.setSplittable(row.splittable);
        CompoundParameter whole("whole");
        whole.addParameter(a);
        whole.addParameter(b);
        const auto times = [](const Number& part) {
            std::string text;
            for (const quint32 view : {0u, 1u}) {
                part.forEachKeyframeTime(
                    [&](const Context& at) { text += std::to_string(static_cast<int>(at.time.toDouble())) + " "; },
                    View(view));
                text += view == 0 ? "| " : "";
            }
            return text;
        };
        const std::string before = times(b);
        const QString copied = ParameterPasteKeyframesEdit::textOf(whole, View(1), Time::fromInt(0), Time::fromInt(99));
        EXPECT_EQ(copied.count("b."), row.copied);
        MoveKeyframeEdit move(whole, at(10, 1), at(15, 1));
        move.doIt();
        EXPECT_EQ(times(a), "10 20 30 | 15 ");
        EXPECT_EQ(times(b), row.after);
        EXPECT_EQ(b.viewList(), row.views);
        move.undoIt();
        EXPECT_EQ(times(b), before);
    }
}

TEST(Compound, ItsKeyframesArePastedIntoTheNamedView) {
    for (const quint32 from : {0u, 1u}) {
        for (const quint32 into : {0u, 1u, 2u}) {
            SCOPED_TRACE(std::to_string(from) + " to " + std::to_string(into));
            const auto make = [](CompoundParameter& outer, Position& inner, Number& part) {
                outer.addParameter(inner.whole);
                outer.addParameter(part);
            };
            Position source;
            Number z("z");
            key(*source.x, {{3, 7.}}, from);
            key(*source.y, {{3, 8.}}, from);
            key(z, {{3, 9.}}, from);
            CompoundParameter whole("whole");
            make(whole, source, z);
            const QString text =
                ParameterPasteKeyframesEdit::textOf(whole, View(from), Time::fromInt(3), Time::fromInt(3));
            Position target;
            Number w("z");
            CompoundParameter other("other");
            make(other, target, w);
            ParameterPasteKeyframesEdit(other, text, Time::fromInt(40), View(into)).doIt();
            for (Number* part : {target.x.get(), target.y.get(), &w}) {
                for (const quint32 view : {0u, 1u, 2u})
                    EXPECT_EQ(part->bKeyframeAt(Context::Explicit(at(40, view))), view == into);
            }
            EXPECT_EQ(target.y->value(at(40, into)), 8);
        }
    }
}

} // namespace

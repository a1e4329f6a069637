#include "host/bsc/Hash.h"
#include "prm/CompoundParameter.h"
#include "prm/MoveKeyframeEdit.h"
#include "prm/NumericParameter.h"
#include "prm/ParameterEdits.h"
#include "prm/ProjectFile.h"
#include "prm/ProjectFileVersion.h"
#include "prm/SerialisedKeyframe.h"
#include "tests/parameter/Keying.h"
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
using Number = NumericParameter<double>;
using Values = QVector<QVariant>;

namespace {

/// Keyframes at 1 and 5, and at 5 and 9.
struct Position {
    explicit Position(bool together = false) : whole("position", together) {
        key(*x, {{1, 1.}, {5, 2.}});
        key(*y, {{5, 3.}, {9, 4.}});
        whole.addParameter(x);
        whole.addParameter(y);
    }

    std::string times(quint32 view = 0) const {
        std::string text;
        for (const Context& context : whole.allKeyframesTime(View(view)))
            text += std::to_string(static_cast<int>(context.time.toDouble())) + " ";
        return text;
    }
    std::string text(const QString& prefix = {}) const {
        QString written;
        QTextStream stream(&written);
        EXPECT_TRUE(whole.streamOut(stream, prefix, true));
        return written.toStdString();
    }

    boost::shared_ptr<Number> x{new Number("x")};
    boost::shared_ptr<Number> y{new Number("y")};
    CompoundParameter whole;
};

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

/// The outer compound keys two inner ones together; an observer of a part of one of them is notified in between.
TEST(Compound, MayDieWhileItForwards) {
    using Change = ParameterChange;
    struct Row {
        Change::ChangeType type;
        void (*act)(Number&);
    };
    const Row rows[] = {
        {Change::KEYFRAME_REMOVED, [](Number& part) { part.vDeleteKeyframe(Context::Explicit(at(5))); }},
        {Change::KEYFRAME_ADDED, [](Number& part) { part.iAddKeyframe(at(7)); }},
        {Change::KEYFRAME_CHANGED_VALUE, [](Number& part) { part.vSetValue(9, at(7)); }},
    };
    for (const Row& row : rows) {
        Number parts[3];
        auto inner = boost::make_shared<CompoundParameter>("inner", true);
        auto outer = boost::make_shared<CompoundParameter>("outer", true);
        for (Number& part : parts)
            key(part, {{1, 1.}, {5, 2.}});
        inner->addParameter(parts[1]);
        inner->addParameter(parts[2]);
        outer->addParameter(parts[0]);
        outer->addParameter(inner);
        QObject::connect(&parts[1], &Number::changed, [&](Change& change) {
            if (change.type == row.type || change.type == Change::KEYFRAME_ADDED)
                outer.reset();
        });
        row.act(parts[0]);
        EXPECT_FALSE(outer);
        EXPECT_TRUE(parts[0].notificationsEnabled(row.type) && inner->notificationsEnabled(row.type));
    }
}

TEST(Compound, LeavesItsSetsBeforeItsPartsDie) {
    ParameterSet byReference("byReference");
    ParameterSet byPointer("byPointer");
    auto whole = boost::make_shared<CompoundParameter>("whole");
    auto part = boost::make_shared<Number>("part");
    std::string met;
    QObject::connect(part.get(), &Number::changed, [&](ParameterChange&) {
        for (const ParameterSet* set : {&byReference, &byPointer}) {
            for (const auto& member : set->parameters())
                met += member->scriptName().toStdString() + std::to_string(member->keyframeCount(View(0)));
        }
    });
    whole->addParameter(std::move(part));
    byReference.addParameter(*whole);
    byPointer.addParameter(std::move(whole));
    byPointer.clearAllLists();
    EXPECT_EQ(met, "");
    EXPECT_TRUE(byReference.parameters().empty());
}

TEST(Compound, ItsValueIsTheListOfValues) {
    Position p;
    const auto numbers = [&] { return p.whole.variantValue(at(5)).value<Values>(); };
    EXPECT_EQ(numbers(), (Values{2., 3.}));
    p.whole.setVariantValue(QVariant::fromValue(Values{7., 8.}), at(5));
    EXPECT_EQ(numbers(), (Values{7., 8.}));
    p.whole.setVariantValue(QVariantList{1, 2}, at(5));
    EXPECT_EQ(numbers(), (Values{1., 2.}));
    const std::string wrongType = "virtual void Prm::CompoundParameter::setVariantValue(const QVariant&, const "
                                  "Prm::Context&) : wrong value type.";
    const std::pair<QVariant, std::string> rows[] = {
        {4.5, wrongType},
        {QVariant(), wrongType},
        {QVariantList{1, 2, 3}, "CompoundParameter::setVariantValue() number of parameters is not the same as values."},
    };
    for (const auto& [value, warning] : rows) {
        const Warnings warnings;
        p.whole.setVariantValue(value, at(5));
        EXPECT_EQ(Warnings::text().toStdString(), warning + "\n");
        EXPECT_EQ(numbers(), (Values{1., 2.}));
    }
    EXPECT_EQ(p.whole.qMetaType(), QMetaType::type("Prm::CompoundParameter"));
    EXPECT_EQ(QMetaType::type("QVector< QVariant >"), qMetaTypeId<Values>());
    EXPECT_TRUE(p.whole.variantValue(at(5)).canConvert<QVariantList>());
    Bsc::Hash hash;
    p.whole.calculateHash(hash, at(5));
    EXPECT_EQ(hash.result(), Bsc::Hash().result());
}

TEST(Compound, IsAGroupInText) {
    Position p;
    p.x->vDeleteAllKeyframes(View(0));
    p.y->vDeleteAllKeyframes(View(0));
    const ProjectFileVersion version("");
    EXPECT_TRUE(p.whole.setFromScriptString("position.x.value=6", version));
    EXPECT_TRUE(p.whole.setFromScriptString("position.hidden=1", version));
    EXPECT_FALSE(p.whole.setFromScriptString("position.name=\"x\"", version));
    EXPECT_FALSE(p.whole.setFromScriptString("position.z.value=1", version));
    EXPECT_FALSE(p.whole.setFromScriptString("x.value=1", version));
    EXPECT_EQ(p.text("set."),
              "set.position.x.value=6\nset.position.x.before=Constant\nset.position.x.after=Constant\n"
              "set.position.y.value=0\nset.position.y.before=Constant\nset.position.y.after=Constant\n");
    p.whole.addAdditionalScriptName("old", [](const QString& text) { return text + "5"; });
    EXPECT_TRUE(p.whole.setFromScriptString("old.y.value=2", version));
    EXPECT_EQ(p.y->staticValue(View(0)), 25);
    p.whole.setScriptName("");
    EXPECT_TRUE(p.whole.setFromScriptString("x.value=1", version));
    EXPECT_EQ(p.text("set.").substr(0, 14), "set.x.value=1\n");
}

TEST(Compound, ProjectsFindItsPartsAndNameItsLosses) {
    Position p;
    Number master("master");
    ParameterSet root;
    root.addParameter(master);
    root.addParameter(p.whole);
    EXPECT_EQ(root.parameterWTWithName("position.x"), p.x.get());
    ProjectFile file(root);
    const QByteArray lines =
        "position.x.MasterParameterId=.master\nposition.y.MasterParameterId=gone\nposition.y.value=x\n";
    EXPECT_TRUE(file.loadText("FileVersion.value=2019\n" + lines));
    EXPECT_EQ(p.x->masterParameter(), &master);
    EXPECT_EQ(file.report().size(), 2);
    EXPECT_EQ(file.report().first().reason, ProjectFileFinding::UnresolvedMaster);
    p.whole.hide(true);
    p.x->setScriptName("y");
    key(*p.y, {{0.1, 1.}});
    const std::string losses = file.saveLosses().join('\n').toStdString();
    EXPECT_EQ(losses, "line 4: value 'x' is not a number\n"
                      ".position: the hidden flag and the master of a compound are not written\n"
                      "the script name \"y\" in the set \"position\" is used 2 times\n"
                      "position.y: view 0: keyframe times will move (1)");
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

TEST(Compound, SnapshotsGoByPosition) {
    Position p;
    const auto snapshot = p.whole.exportState();
    const std::string before = p.text();
    p.whole.vDeleteAllKeyframes(View(0));
    Number third("third", 3);
    p.whole.addParameter(third);
    p.whole.doImportState(nullptr);
    p.whole.doImportState(p.x->exportState());
    EXPECT_EQ(p.times(), "");
    Bsc::importState(p.whole, snapshot);
    EXPECT_EQ(p.text().substr(0, before.size()), before);
}

TEST(Compound, NamesAreThoseOfBothSides) {
    CompoundParameter compound("a b");
    EXPECT_EQ(compound.scriptName(), "a_b");
    compound.setScriptName("c");
    compound.setDisplayName("Name", "Anzeige");
    ChangeRecorder observer;
    compound.attachObserver(&observer, SLOT(onChanged(Prm::ParameterChange&)), true);
    compound.AttachCommandRegistrationObserver(&observer, SLOT(onChanged(Prm::ParameterChange&)));
    compound.DetachCommandRegistrationObserver(&observer);
    compound.detachObserver(&observer);
    compound.detachAllObservers();
    EXPECT_EQ(compound.displayName(), "Anzeige");
    const ParameterSet& set = compound;
    const ParameterWithoutType& parameter = compound;
    EXPECT_EQ(set.scriptName(), parameter.scriptName());
    EXPECT_EQ(set.displayName(), parameter.displayName());
    CompoundParameter other("other", true);
    compound.assignFrom(other);
    EXPECT_TRUE(compound.keyframeTogether());
    EXPECT_EQ(set.scriptName(), "other");
}

TEST(Compound, ContainsNoCircleAndDiesInPeace) {
    auto outer = boost::make_shared<CompoundParameter>("outer", true);
    auto inner = boost::make_shared<CompoundParameter>("inner", true);
    outer->addParameter(inner);
    {
        const Warnings warnings;
        inner->addParameter(*outer);
        EXPECT_EQ(Warnings::text().count("cannot be a part of it"), 1);
        ParameterSet below("below");
        EXPECT_TRUE(inner->addParameterSet(below));
        const CompoundParameter above(*outer);
        below = above;
        EXPECT_TRUE(below.parameters().empty());
    }
    auto x = boost::make_shared<Number>("x");
    inner->addParameter(x);
    x->vSetValue(1, at(3));
    EXPECT_EQ(outer->keyframeCount(View(0)), 1u);
    ChangeRecorder recorder;
    outer->attachObserver(&recorder, SLOT(onChanged(Prm::ParameterChange&)));
    recorder.then = [&](ParameterChange& change) {
        if (change.type == ParameterChange::KEYFRAME_ADDED)
            outer.reset();
    };
    x->vSetValue(1, at(4));
    EXPECT_EQ(outer, nullptr);
    recorder.then = nullptr;
    inner.reset();
    x->vSetValue(1, at(5));
}

/// Two sets on each level, both listed by both above: there are 2^60 ways from the top to the bottom.
TEST(Compound, AndSetsAreAskedOnceByHoweverManyWaysTheyAreReached) {
    using Pair = std::array<boost::shared_ptr<ParameterSet>, 2>;
    using Parts = std::array<boost::shared_ptr<CompoundParameter>, 2>;
    std::vector<Pair> sets;
    std::vector<Parts> parts;
    for (int level = 0; level < 60; ++level) {
        sets.push_back({boost::make_shared<ParameterSet>("a"), boost::make_shared<ParameterSet>("b")});
        parts.push_back({boost::make_shared<CompoundParameter>("a"), boost::make_shared<CompoundParameter>("a")});
        for (int i = 0; level > 0 && i < 4; ++i) {
            EXPECT_TRUE(sets[level][i / 2]->addParameterSet(sets[level - 1][i % 2]));
            parts[level][i / 2]->addParameter(parts[level - 1][i % 2]);
        }
    }
    const Warnings quiet;
    EXPECT_FALSE(sets.front()[0]->addParameterSet(sets.back()[0]));
    EXPECT_TRUE(sets.front()[0]->addParameterSet(boost::make_shared<ParameterSet>("c")));
    parts.front()[0]->addParameter(*parts.back()[0]);
    EXPECT_TRUE(parts.front()[0]->subparameters().isEmpty());
    EXPECT_EQ(parts.back()[0]->parameterWithName(QString("a.").repeated(59) + "x"), nullptr);
}

} // namespace

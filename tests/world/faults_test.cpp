// Memory runs out at every allocation in turn: parameters and sets stay sound, nothing leaks, nothing ends the process.
// A command has happened or has not when one allocation fails.

#include "tests/support/Allocations.h"
#include "tests/world/Acts.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace Worlds;
using Allocations::Attempt;

namespace {

class Faults : public testing::Test {
protected:
    void SetUp() override {
        if (!Allocations::areCounted())
            GTEST_SKIP() << "allocations are not counted in this build";
    }
};

TEST_F(Faults, ACommandHappensOrDoesNot) {
    const Warnings quiet;
    for (std::size_t i = 0; i < 2 * commands.size(); ++i) {
        const Act& act = commands[i / 2];
        SCOPED_TRACE(act.name);
        Exhibits world(i % 3 == 0 ? 70 : 0);
        Command command;
        act.run(command, *world.parameter(i % 2 ? X : Keyed), *world.parameter(Master), places[i % 2]);
        const std::string before = world.state();
        for (const bool isUndone : {false, true}) {
            const std::string former = world.state();
            int n = 0;
            for (bool failed = true; failed; Allocations::failAt(0)) {
                Allocations::failAt(++n);
                try {
                    isUndone ? command.undoIt() : command.doIt();
                    failed = false;
                } catch (const std::bad_alloc&) {
                    Allocations::failAt(0);
                    EXPECT_EQ(world.state(), former) << "failure " << n;
                } catch (const std::runtime_error&) {
                    failed = false; // a text that is refused
                }
            }
        }
        EXPECT_EQ(world.state(), before);
    }
}

/// Sets that are listed, copied and assigned.
struct Stage : Exhibits {
    Stage() : other("other") { other.addParameterSet(boost::make_shared<ParameterSet>("set")); }
    ParameterSet other;
    boost::shared_ptr<Bsc::MementoBase> snapshot = other.exportState();
    Command command;
};

using Do = std::function<void(Stage&)>;
struct Row {
    const char* name;
    Do act;
    Do before = [](Stage&) {};
};

void expectSound(const Row& row) {
    SCOPED_TRACE(row.name);
    const auto make = [&] {
        const auto stage = std::make_shared<Stage>();
        row.before(*stage);
        return Attempt{[=] { row.act(*stage); },
                       [=] {
                           const QString broken = stage->broken() + detail::verify(stage->root);
                           return (broken + detail::verify(stage->other)).toStdString();
                       }};
    };
    const auto isSound = [](const std::string& broken) { return broken.empty(); };
    Allocations::failOnce(make, isSound);
    Allocations::failForGood(make, isSound);
}

TEST_F(Faults, ActsLeaveTheWorldSound) {
    const Warnings quiet;
    for (const Act& act : edits)
        expectSound(
            {act.name, [=](Stage& s) { act.run(s.command, *s.parameter(X), *s.parameter(Master), places[2]); }});
    for (const Act& act : commands) {
        const Do make = [=](Stage& s) { act.run(s.command, *s.parameter(X), *s.parameter(Master), places[0]); };
        const Do makeAndDo = [=](Stage& s) { make(s), s.command.doIt(); };
        expectSound({act.name, makeAndDo});
        expectSound({act.name, [](Stage& s) { s.command.undoIt(); }, makeAndDo});
    }
}

TEST_F(Faults, MembersTextAndSnapshotsLeaveTheWorldSound) {
    const QByteArray text = Exhibits().file.text() + "set.p3.keyframes.append( Key( 1, x, Linear ) )\nno.such=1\n";
    const auto line = [](const char* read) {
        return Row{read, [=](Stage& s) { s.set(0)->bStreamIn(QString(read), version()); }};
    };
    const Row rows[] = {
        {"parameter", [](Stage& s) { s.other.addParameter(s.owner(Keyed)); }},
        {"adopted",
         [](Stage& s) { s.other.adoptBasicParameter(std::make_unique<OwnedStaticParameter<QString>>("own")); }},
        {"subset", [](Stage& s) { s.other.addParameterSet(s.owners[0]); }},
        {"copy", [](Stage& s) { const ParameterSet copy(*s.set(0)); }},
        {"assigned", [](Stage& s) { s.other = *s.set(0); }},
        {"part", [](Stage& s) { s.list(Position, Plain); }},
        {"child", [](Stage& s) { s.parameter(Keyed)->bAddConstrainedParameter(s.parameter(Plain)); }},
        {"snapshot", [](Stage& s) { s.set(0)->exportState(); }},
        {"put back", [](Stage& s) { s.set(0)->doImportState(s.snapshot); },
         [](Stage& s) {
             s.snapshot = s.set(0)->exportState();
             key(s.number(X), {{33, 77.}});
         }},
        {"load", [&](Stage& s) { s.file.loadText(text); }},
        line("p3.view[6].value=3"),
        line("p3.views=[3, 9]"),
        line("p3.view[6].keyframes.append( BezierKey( 15, 5, 0.1, 0.2, 0.3, 0.4 ) )"),
        line("p10.p4.value=1"),
        line("name=\"new\""),
    };
    for (const Row& row : rows)
        expectSound(row);
}

TEST_F(Faults, SavingLeavesTheFormerFileOrTheNewOne) {
    const QTemporaryDir folder;
    const QString name = folder.filePath("a.prm");
    const std::string newer = Exhibits().file.text().toStdString();
    const auto make = [&] {
        const auto world = std::make_shared<Exhibits>();
        QFile file(name);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write("former") == 6);
        return Attempt{[=] { world->file.save(name); },
                       [=] {
                           QFile now(name);
                           EXPECT_TRUE(now.open(QIODevice::ReadOnly));
                           return now.readAll().toStdString();
                       }};
    };
    Allocations::failOnce(make, [&](const std::string& now) { return now == "former" || now == newer; });
}

} // namespace

// Memory runs out at every allocation in turn: the operation has happened or has not, nothing leaks, all invariants
// hold.

#include "prm/ProjectFile.h"
#include "prm/project/Invariants.h"
#include "tests/edits/World.h"
#include "tests/support/Allocations.h"

#include <QFile>
#include <QTemporaryDir>
#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <new>

using namespace Prm;
using Allocations::Attempt;

namespace {

class Faults : public testing::Test {
protected:
    void SetUp() override {
        if (!Allocations::areCounted())
            GTEST_SKIP() << "allocations are not counted in this build";
    }
};

/// A world, without keyframes as a host makes it before it loads a project.
struct Project {
    explicit Project(bool isBlank = true) {
        if (isBlank)
            empty();
        root.addParameterSet(*world.set);
    }
    void empty() {
        for (const auto& parameter : {world.number, world.plain, world.master, world.tied, world.second})
            parameter->clearViewData();
        world.position->vDeleteAllKeyframes(View(0));
        world.master->bRemoveConstrainedParameter(world.tied.get());
        world.master->bRemoveConstrainedParameter(world.second.get());
    }
    std::string state() const {
        EXPECT_EQ(detail::verify(root), QString());
        return world.state();
    }

    World world;
    ParameterSet root;
    ProjectFile file{root};
};

/// What is to be loaded: every kind of line, also such as are unknown, malformed or name a master.
QByteArray projectText() {
    World world;
    ParameterSet root;
    root.addParameterSet(*world.set);
    return ProjectFile(root).text() +
           "set.number.keyframes.append( Key( 1, x, Linear ) )\nset.number.none=1\nno.such=1\n";
}

TEST_F(Faults, LoadingAgainCompletesWhatWasCutShort) {
    const QByteArray text = projectText();
    Project whole;
    whole.file.loadText(text);
    const std::string expected = whole.state();
    const int findings = whole.file.report().size();
    const auto make = [&] {
        const auto project = std::make_shared<Project>();
        return Attempt{[=] { project->file.loadText(text); },
                       [project, text, findings] {
                           project->state();
                           project->file.loadText(text);
                           EXPECT_EQ(project->file.report().size(), findings);
                           return project->state();
                       }};
    };
    Allocations::failEach(make, [&](const std::string& state) { return state == expected; });
}

/// Of parameters that have data, and of such as have none yet.
TEST_F(Faults, EachLineIsTakenWholeOrNot) {
    ProjectFileVersion version;
    version.streamVersion = StreamVersion::latest;
    const auto expectWholeOrNot = [&](const QString& line, bool isBlank) {
        SCOPED_TRACE((line + (isBlank ? ", blank" : "")).toStdString());
        const auto make = [&] {
            const auto project = std::make_shared<Project>(isBlank);
            project->world.set->addParameter(project->world.joined);
            return Attempt{[=] { project->world.set->bStreamIn(line, version); }, [=] { return project->state(); }};
        };
        const Attempt undisturbed = make();
        const std::string before = undisturbed.state();
        undisturbed.act();
        const std::string after = undisturbed.state();
        EXPECT_TRUE(after != before);
        Allocations::failEach(make, [&](const std::string& state) { return state == before || state == after; });
    };
    for (const char* line : {"number.value=3", "number.view[1].value=3", "number.view[6].value=3", "number.views=[2]",
                             "number.views=[3, 9]", "number.keyframes.append( Key( 10, 5, Constant ) )",
                             "number.keyframes.append( BezierKey( 15, 5, 0.1, 0.2, 0.3, 0.4 ) )",
                             "number.view[6].keyframes.append( Key( 1, 5, Constant ) )", "number.hidden=1",
                             "number.before=Linear", "plain.value=8", "plain.view[2].value=8", "joined.value=8",
                             "joined.view[1].keyframes.append( Key( 3, 5, Linear ) )", "position.x.value=1",
                             "text.value=\"new\"", "name=\"new\""}) {
        for (const bool isBlank : {false, true})
            expectWholeOrNot(line, isBlank);
    }
}

TEST_F(Faults, SavingLeavesTheFormerFileOrTheNewOne) {
    const QTemporaryDir folder;
    const QString name = folder.filePath("a.prm");
    const auto contents = [=] {
        QFile file(name);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll().toStdString();
    };
    Project project;
    project.file.loadText(projectText());
    project.file.setTimeOfWriting(QDateTime(QDate(2021, 3, 1), QTime(), Qt::UTC));
    const std::string newer = project.file.text().toStdString();
    const std::string before = project.state();
    const auto make = [&] {
        QFile file(name);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write("former") == 6);
        return Attempt{[&] { project.file.save(name); }, contents};
    };
    Allocations::failEach(make, [&](const std::string& now) { return now == "former" || now == newer; });
    EXPECT_EQ(project.state(), before);
}

TEST_F(Faults, SnapshotsOfSetsAreTakenOrNot) {
    World world;
    const std::string before = world.state();
    const auto make = [&] { return Attempt{[&] { world.set->exportState(); }, [&] { return world.state(); }}; };
    Allocations::failEach(make, [&](const std::string& state) { return state == before; });
}

TEST_F(Faults, SnapshotsOfSetsArePutBackMemberByMember) {
    const auto change = [](World& world) {
        for (const auto& parameter : {world.number, world.master, world.x})
            parameter->vSetValue(77, at(33));
    };
    const auto make = [&] {
        const auto world = std::make_shared<World>();
        const auto snapshot = world->set->exportState();
        change(*world);
        return Attempt{[=] { world->set->doImportState(snapshot); },
                       [=] {
                           std::string has;
                           for (const auto& parameter : {world->number, world->master, world->x})
                               has += parameter->bKeyframeAt(Context::Explicit(at(33))) ? '1' : '0';
                           EXPECT_EQ(detail::verify(*world->set), QString());
                           world->set->doImportState(snapshot);
                           EXPECT_EQ(world->state(), World().state()) << "once more";
                           return has;
                       }};
    };
    Allocations::failEach(
        make, [&](const std::string& has) { return has == "111" || has == "011" || has == "001" || has == "000"; });
}

TEST_F(Faults, MembersAreAddedOrNot) {
    struct Row {
        const char* name;
        void (*act)(World& world, ParameterSet& other);
    };
    const Row rows[] = {
        {"parameter", [](World& w, ParameterSet& other) { other.addParameter(w.number); }},
        {"basic", [](World& w, ParameterSet& other) { other.addBasicParameter(*w.text); }},
        {"adopted",
         [](World&, ParameterSet& other) {
             other.adoptBasicParameter(std::make_unique<OwnedStaticParameter<QString>>("own"));
         }},
        {"subset", [](World& w, ParameterSet& other) { other.addParameterSet(*w.set); }},
        {"copy", [](World& w, ParameterSet&) { const ParameterSet copy(*w.set); }},
        {"assigned", [](World& w, ParameterSet& other) { other = *w.set; }},
        {"part", [](World& w, ParameterSet&) { w.position->addParameter(w.plain); }},
        {"child", [](World& w, ParameterSet&) { w.number->bAddConstrainedParameter(w.plain.get()); }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto make = [act = row.act] {
            const auto world = std::make_shared<World>();
            const auto other = std::make_shared<ParameterSet>("other");
            other->addParameterSet(boost::make_shared<ParameterSet>("set"));
            return Attempt{[=] { act(*world, *other); },
                           [=] {
                               const QString broken = detail::verify(*world->set) + detail::verify(*other);
                               return broken.toStdString();
                           }};
        };
        Allocations::failEach(make, [](const std::string& broken) { return broken.empty(); });
    }
}

} // namespace

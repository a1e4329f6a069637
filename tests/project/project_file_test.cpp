// Projects of given lines, loaded and saved, and what must hold in them.

#include "tests/project/Project.h"
#include "tests/support/Record.h"

#include <QTemporaryDir>

#include <cerrno>
#include <csignal>
#include <map>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Prm;

static bool diskRefuses = false;

/// In place of the C library's.
extern "C" __attribute__((visibility("default"))) int fsync(int file) {
    errno = EIO;
    return diskRefuses ? -1 : static_cast<int>(syscall(SYS_fsync, file));
}

namespace {

QByteArray contents(const QString& name) {
    QFile file(name);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
    return file.readAll();
}

QByteArray data(const char* name) {
    return contents(QStringLiteral(PRM_TEST_DATA "/") + QLatin1String(name));
}

/// "line reason" for every finding.
std::string findings(const ProjectFile& file) {
    std::string all;
    for (const ProjectFileFinding& finding : file.report())
        all += std::to_string(finding.lineNumber) + " " + finding.reasonToString().toStdString() + "\n";
    return all;
}

const QByteArray header = "FileVersion.value=3002\nProductName.value=\"Studio\"\nProductBuildNumber.value=\"0\"\n"
                          "ProductVersion.value=\"0.0.0\"\nFileTimestamp.value=\"2021-03-01T14:05:09Z\"\n";

TEST(ProjectFile, EveryLineIsWrittenAsItWasRead) {
    Project project;
    ASSERT_TRUE(project.file.loadText(data("every_line.prm")));
    EXPECT_EQ(findings(project.file), "58 unknown, kept\n59 unknown, kept\n");
    EXPECT_EQ(project.text.constrainedParameters(), QList<ParameterWithoutType*>{&project.title});
    EXPECT_EQ(project.title.keyframe(0, View()).value, QString("a, \"b\" ) )\n"));
    EXPECT_EQ(project.file.text().toStdString(), data("every_line.prm").toStdString());
    EXPECT_EQ(project.file.version().timestamp(), QDateTime(QDate(2021, 3, 1), QTime(14, 5, 9), Qt::UTC));
    project.root.setScriptName("project");
    ASSERT_TRUE(project.file.loadText(header + "blur.centre.MasterParameterId=project.blur.size\n"));
    EXPECT_EQ(project.centre.masterParameter(), &project.size);
}

/// A project to which something happens after it was loaded.
struct Edited : Project {
    Edited() {
        gain.addAdditionalScriptName("loudness");
        gain.vSetValue(7, Context());
        plugin.addParameter(gain);
    }
    void tieAndUndo() {
        ParameterAddConstrainedParameterEdit edit(gain, size);
        edit.doIt();
        EXPECT_FALSE(file.text().contains("gone."));
        edit.undoIt();
    }
    void run(const QByteArray& act, const QByteArray& loaded) {
        const std::map<QByteArray, std::function<void()>> acts = {
            {"the set plugin is added", [&] { root.addParameterSet(plugin); }},
            {"size is tied to gain", [&] { gain.bAddConstrainedParameter(&size); }},
            {"size is tied to gain, and that is undone", [&] { tieAndUndo(); }},
            {"size is released", [&] { size.bUnconstrain(); }},
            {"all is loaded again", [&] { file.loadText(loaded); }},
        };
        acts.at(act)();
    }

    NumericParameter<double> gain{"gain", 0, Splittable};
    ParameterSet plugin{"plugin"};
};

/// What is reported of a text, and which lines are saved after some acts that a project without it does not have.
QByteArray outcomeOf(const QByteArray& text, const QList<QByteArray>& acts) {
    Edited project;
    EXPECT_TRUE(project.file.loadText(header + "gone.value=1\n"));
    const QByteArray before = project.file.text();
    const bool isLoaded = project.file.loadText(text);
    for (const QByteArray& act : acts)
        project.run(act, text);
    const QByteArray saved = project.file.text();
    QByteArray outcome = isLoaded ? "" : "! " + project.file.errorString().toUtf8() + '\n';
    for (const QByteArray& finding : QByteArray::fromStdString(findings(project.file)).split('\n'))
        outcome += finding.isEmpty() ? "" : "! " + finding + '\n';
    for (const QString& loss : project.file.saveLosses())
        outcome += loss.startsWith("line ") ? "" : "? " + loss.toUtf8() + '\n';
    EXPECT_TRUE(isLoaded || saved == before);
    QByteArray printable;
    for (char character = ' '; character <= '~'; ++character)
        printable += character == '%' ? "" : QByteArray(1, character);
    for (const QByteArray& line : saved.split('\n'))
        outcome += before.split('\n').contains(line) ? "" : "> " + line.toPercentEncoding(printable) + '\n';
    const bool isLossless = project.file.saveLosses().isEmpty();
    EXPECT_TRUE(!isLossless || (project.file.loadText(saved) && project.file.text() == saved)) << outcome.constData();
    return outcome;
}

/// Below each "#" stand lines to load, after "<" with the header of today before them, after "<<" without, and after
/// "@" what then happens; below these stand errors and findings after "!", what saving would lose after "?", and the
/// lines that are then saved after ">". Odd bytes are written as "%0D".
/// With PRM_WRITE_RECORDS in the environment the session is written anew, to be looked at.
TEST(ProjectFile, LoadsWhatTheSessionShows) {
    const Warnings quiet;
    const QByteArray session = data("project.session");
    QByteArray replayed;
    QByteArray text;
    QList<QByteArray> acts;
    for (const QByteArray& line : session.split('\n')) {
        if (line.startsWith("< ") && text.isEmpty())
            text = header;
        if (line.startsWith('<'))
            text += QByteArray::fromPercentEncoding(line.mid(line.indexOf(' ') + 1)) + '\n';
        if (line.startsWith("@ "))
            acts += line.mid(2);
        if (line.startsWith('<') || line.startsWith('#') || line.startsWith('@'))
            replayed += line + '\n';
        if (line.isEmpty() && !text.isEmpty())
            replayed += outcomeOf(std::exchange(text, {}), std::exchange(acts, {})) + '\n';
    }
    expectOnRecord("project.session", QString::fromUtf8(replayed));
}

TEST(ProjectFile, WhatCouldNotBeReadIsALossUntilItIsSaved) {
    const QTemporaryDir folder;
    Project project;
    ASSERT_TRUE(project.file.loadText(header + "blur.size.value=hello\n"));
    EXPECT_EQ(project.file.report().value(0).text, "blur.size.value=hello");
    EXPECT_EQ(project.file.saveLosses(), QStringList("line 6: value 'hello' is not a number"));
    EXPECT_TRUE(project.file.save(folder.filePath("a.prm")) && project.file.saveLosses().isEmpty());
}

TEST(ProjectFile, AnExceptionIsTheHosts) {
    Project project;
    project.size.addAdditionalScriptName("wide", [](const QString& text) -> QString {
        if (text == "5")
            throw std::runtime_error("no five");
        return text;
    });
    const auto mode = QObject::connect(&project.mode, &BasicParameter::valueChanged, [] { throw 5; });
    const QByteArray lines = "gone.value=1\nblur.size.keyframes.append( Key( 1, 2, Linear ) )\n";
    for (const QByteArray end : {"blur.wide.keyframes.append( Key( 1, 5, Linear ) )\n", "blur.mask.mode.value=3\n"}) {
        EXPECT_ANY_THROW(project.file.loadText(header + lines + end + "blur.enable.value=1\n")) << end.constData();
        EXPECT_EQ(findings(project.file), "6 unknown, kept\n");
        EXPECT_EQ(project.size.keyframe(0, View()).value, 2);
        EXPECT_FALSE(project.enable.staticValue(View()));
        EXPECT_TRUE(project.file.text().endsWith("gone.value=1\n"));
        EXPECT_EQ(project.file.keptLines(), QList<QByteArray>{"gone.value=1"});
    }
    QObject::disconnect(mode);
    EXPECT_TRUE(project.file.loadText(header + lines + "blur.wide.value=4\r"));
    EXPECT_EQ(project.size.staticValue(View()), 4);
}

TEST(ProjectFile, LongListsAreReadInAnyOrder) {
    // Downwards, with places that repeat: the last one counts, as when they are read one by one.
    const int count = 3000;
    QByteArray views;
    QByteArray keyframes;
    for (int i = count; i > 0; --i) {
        const QByteArray place = QByteArray::number(i - i % 7 / 6);
        const QByteArray value = QByteArray::number(i);
        views += "blur.size.view[" + place + "].value=" + value + "\n";
        keyframes += "blur.size.view[2].keyframes.append( Key( " + place + ", " + value + ", Linear ) )\n";
    }
    const QByteArray shape = "blur.size.view[2].keyframes.append( BezierKey( 5.5, 3, 0.25, 0, 0.75, 1 ) )\n";
    Project project;
    ASSERT_TRUE(project.file.loadText(header + views + keyframes + shape + "blur.size.x=1\n"));
    Project plain;
    for (const QByteArray& line : (views + keyframes + shape).split('\n'))
        plain.root.bStreamIn(QString(line), project.file.version());
    EXPECT_EQ(project.file.report().back().lineNumber, 5 + 2 * count + 2);
    EXPECT_TRUE(project.file.text() == plain.file.text() + "blur.size.x=1\n");
}

TEST(ProjectFile, HostileLinesEndAndTheRestIsRead) {
    const QByteArray rows[] = {
        "blur.size.value=" + QByteArray(5000000, '7'),
        "blur." + QByteArray(1000000, '.') + "=1",
        "blur.title.keyframes.append( Key( 1, " + QByteArray(1000000, '"'),
        "blur.size.keyframes.append( BezierKey( " + QByteArray(1000000, ',') + ") )",
    };
    for (const QByteArray& text : rows) {
        Project project;
        EXPECT_TRUE(project.file.loadText(header + text + "\nblur.enable.value=1\n"));
        EXPECT_TRUE(project.enable.staticValue(View())) << text.left(60).constData();
    }
}

TEST(ProjectFile, SavingFailsWholeOrNotAtAll) {
    const QTemporaryDir folder;
    const QString name = folder.filePath("a.prm");
    Project project;
    project.title.vSetValue(QString(200000, 'x'), still());
    ASSERT_TRUE(project.file.save(name)) << project.file.errorString().toStdString();
    const QByteArray before = contents(name);
    EXPECT_FALSE(project.file.save(folder.path()));
    EXPECT_FALSE(project.file.save(folder.filePath("missing/a.prm")));

    // As far as the program can tell, the disk is full after so many bytes; or it is killed there. In one large write,
    // and when a small one is flushed.
    for (const int size : {100000, 3000}) {
        project.title.vSetValue(QString(size, 'y'), still());
        const int all = project.file.text().size();
        for (const int end : {0, 1, all / 4, all / 2, all - 1}) {
            for (const bool isKilled : {false, true}) {
                const pid_t child = fork();
                if (child == 0) {
                    std::signal(SIGXFSZ, isKilled ? SIG_DFL : SIG_IGN);
                    const rlimit small{static_cast<rlim_t>(end), static_cast<rlim_t>(end)};
                    const rlimit none{0, 0};
                    setrlimit(RLIMIT_CORE, &none);
                    setrlimit(RLIMIT_FSIZE, &small);
                    _exit(project.file.save(name) || project.file.errorString().isEmpty());
                }
                int status = 0;
                waitpid(child, &status, 0);
                EXPECT_TRUE(isKilled ? WIFSIGNALED(status) : status == 0) << size << ' ' << end;
                EXPECT_EQ(contents(name), before);
            }
        }
    }
    diskRefuses = true;
    EXPECT_FALSE(project.file.save(name));
    diskRefuses = false;
    EXPECT_EQ(contents(name), before);
    EXPECT_TRUE(project.file.save(name));
    EXPECT_NE(contents(name), before);
}

TEST(ProjectFile, MastersAreFoundByTheHostOrByName) {
    const Warnings quiet;
    for (const bool isByHost : {false, true}) {
        ParameterSet root;
        Number one("one"), two("two"), follower("follower");
        for (Number* const number : {&one, &two, &follower})
            root.addParameter(*number);
        ProjectFile file(root);
        QStringList asked;
        if (isByHost)
            file.setFindMaster([&](const QString& id) {
                asked += id;
                return id == ".one" ? &two : nullptr;
            });
        file.loadText("follower.MasterParameterId=.one\n");
        EXPECT_EQ(follower.masterParameter(), isByHost ? &two : &one);
        EXPECT_EQ(asked, isByHost ? QStringList(".one") : QStringList());
        file.loadText("two.MasterParameterId=one\none.MasterParameterId=.none\n");
        EXPECT_EQ(two.masterParameter(), isByHost ? nullptr : &one) << "the dot may be missing";
        EXPECT_EQ(file.keptLines().size(), isByHost ? 2 : 1);
    }
}

TEST(ProjectFile, LossesAreNamedBeforeSaving) {
    Project project;
    project.title.vSetValue(QString(QChar(0)) + 'a', still());
    EXPECT_TRUE(project.file.saveLosses().isEmpty());
    project.size.vSetValue(1, at(0.1));
    project.size.vSetInterpolationData(IType(Interpolation::Linear, 1), 0, View());
    project.text.setScriptName("a=b");
    project.mode.doImportState(OwnedStaticParameter<unsigned int>("file").exportState());
    project.maskFile.setValue("two\nlines");
    project.title.vSetValue(QString(QChar(0xD800)), still());
    project.title.setScriptName("a..b");
    project.flag.setScriptName("a.");
    OwnedStaticParameter<unsigned int> empty("");
    project.blur.addBasicParameter(empty);
    // A compound without a name is no loss, but names of its parts are among those of the set.
    project.z.setScriptName("whole");
    project.nameless.addBasicParameter(empty);
    project.y.setScriptName("x");
    project.w.setLocked(true);
    // Of a constrained parameter its own keyframes are written, not those that it shows.
    NumericParameter<double> master("master");
    project.w.vSetValue(1, at(3));
    project.w.vSetInterpolationData(IType(static_cast<Interpolation>(7)), 0, View());
    master.bAddConstrainedParameter(&project.w);
    const QString losses = project.file.saveLosses().join('\n');
    for (const char* expected :
         {"keyframe times will move (1)", "are not written (1)", "holds \"=\"",
          "\"file\" in the set \"mask\" is used 2 times", "\"whole\" in the set \"mask\" is used 2 times",
          "\"x\" in the set \"together\" is used 2 times", "w: the locked flag", "w: view 0: custom interpolations",
          "w: the master \".master\" will not be found by its name",
          "the static parameters and the subsets of a compound are not written", "holds a line break",
          "half a surrogate pair (1)", "\"a..b\" in the set \"blur\" begins with the name of another member and a dot",
          "\"blur\" is empty"})
        EXPECT_TRUE(losses.contains(QLatin1String(expected))) << expected << "\n" << losses.toStdString();
    EXPECT_EQ(losses.count("is empty"), 1);
}

// By the few ways in which they can be broken from outside.
TEST(Invariants, AreSeenToBeBroken) {
    Number x("x");
    CompoundParameter position("position");
    ParameterSet set("set");
    ParameterSet above("above");
    position.addParameter(x);
    set.addParameter(position);
    above.addParameterSet(set);
    key(x, {{0, 1.}, {4, 2.}, {6, 3.}});
    const auto broken = [](const auto& what) { return detail::verify(what).toStdString(); };
    EXPECT_EQ(broken(above), "");
    EXPECT_EQ(broken(x), "");

    x.adjustKeyframesTime([](Time time) { return time > Time::fromInt(4) ? time : Time::fromInt(4); });
    EXPECT_EQ(broken(above), "x: keyframes are not in ascending order of valid times");
    x.adjustKeyframesTime([](Time) { return Time::INVALID; });
    EXPECT_EQ(broken(x), "x: keyframes are not in ascending order of valid times");
    x.clearViewData();
    position.setUpstreamParameters({});
    EXPECT_EQ(broken(above), "position: the compound does not listen to one of its parts");
    EXPECT_EQ(broken(position), broken(set));
}

} // namespace

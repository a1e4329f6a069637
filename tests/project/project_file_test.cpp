// Projects of given lines, loaded and saved, and what must hold in them.

#include "tests/support/Library.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
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

/// A small project: the set "blur" with a subset "mask".
struct Project {
    Project() {
        root.addParameterSet(blur);
        blur.addParameter(enable);
        blur.addParameter(size);
        blur.addParameter(title);
        blur.addParameter(centre);
        blur.addParameterSet(mask);
        mask.addParameter(text);
        mask.addBasicParameter(mode);
        mask.addBasicParameter(maskFile);
        blur.addBasicParameter(old);
        blur.addBasicParameter(older);
        old.setTargetParam(size);
        title.addAdditionalScriptName("label");
        const std::pair<const char*, const char*> names[] = {
            {"width", "0"}, {"size.area", "9"}, {"area", "1"}, {"area", "2"}, {"area.view[1]", "3"}};
        for (const auto& [name, mark] : names)
            size.addAdditionalScriptName(name, [end = mark](const QString& read) { return read + end; });
        file.setTimeOfWriting(QDateTime(QDate(2021, 3, 1), QTime(14, 5, 9), Qt::UTC));
    }
    Project(const Project&) = delete;

    Parameter<bool> enable{"enable", false, Splittable};
    NumericParameter<double> size{"size"};
    Parameter<QString> title{"title"};
    PointParameter centre{"centre"};
    Parameter<QString> text{"text"};
    OwnedStaticParameter<unsigned int> mode{"mode"};
    OwnedStaticParameter<QString> maskFile{"file"};
    MovedParameter old{"old"};
    /// It has no target.
    MovedParameter older{"older"};
    ParameterSet root;
    ParameterSet blur{"blur"};
    ParameterSet mask{"mask"};
    ProjectFile file{root, "Studio"};
};

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
    EXPECT_EQ(findings(project.file), "33 unknown, kept\n34 unknown, kept\n");
    EXPECT_EQ(project.text.constrainedParameters(), QList<ParameterWithoutType*>{&project.title});
    EXPECT_EQ(project.title.keyframe(0, View()).value, QString("a, \"b\" ) )\n"));
    EXPECT_EQ(project.file.text().toStdString(), data("every_line.prm").toStdString());
    EXPECT_EQ(project.file.version().timestamp(), QDateTime(QDate(2021, 3, 1), QTime(14, 5, 9), Qt::UTC));
    project.root.setScriptName("project");
    ASSERT_TRUE(project.file.loadText(header + "blur.centre.MasterParameterId=project.blur.size\n"));
    EXPECT_EQ(project.centre.masterParameter(), &project.size);
}

/// What is reported of a text, and which lines are then saved that a project without it does not have.
QByteArray outcomeOf(const QByteArray& text) {
    Project project;
    EXPECT_TRUE(project.file.loadText(header + "gone.value=1\n"));
    const QByteArray before = project.file.text();
    const bool isLoaded = project.file.loadText(text);
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
    return outcome;
}

/// Below each "#" stand lines to load, after "<" with the header of today before them, after "<<" without; below these
/// stand errors and findings after "!", what saving would lose after "?", and the lines that are then saved after ">".
/// Odd bytes are written as "%0D".
/// With PRM_WRITE_RECORDS in the environment the session is written anew, to be looked at.
TEST(ProjectFile, LoadsWhatTheSessionShows) {
    const Warnings quiet;
    const QByteArray session = data("project.session");
    QByteArray replayed;
    QByteArray text;
    for (const QByteArray& line : session.split('\n')) {
        if (line.startsWith("< ") && text.isEmpty())
            text = header;
        if (line.startsWith('<'))
            text += QByteArray::fromPercentEncoding(line.mid(line.indexOf(' ') + 1)) + '\n';
        if (line.startsWith('<') || line.startsWith('#'))
            replayed += line + '\n';
        if (line.isEmpty() && !text.isEmpty())
            replayed += outcomeOf(std::exchange(text, {})) + '\n';
    }
    QFile file(PRM_TEST_DATA "/project.session");
    if (qEnvironmentVariableIsSet("PRM_WRITE_RECORDS") && file.open(QIODevice::WriteOnly))
        file.write(replayed);
    EXPECT_EQ(replayed.toStdString(), session.toStdString());
}

TEST(ProjectFile, WhatCannotBeReadIsSaid) {
    const QTemporaryDir folder;
    Project project;
    ASSERT_TRUE(project.file.loadText(header + "blur.size.value=hello\n"));
    ASSERT_EQ(project.file.report().size(), 1);
    EXPECT_EQ(project.file.report().front().text, "blur.size.value=hello");
    EXPECT_EQ(project.file.saveLosses(), QStringList("line 6: value 'hello' is not a number"));
    EXPECT_TRUE(project.file.save(folder.filePath("a.prm")));
    EXPECT_TRUE(project.file.saveLosses().isEmpty()) << "it was said";
}

TEST(ProjectFile, AKeptLineNeverReplacesWhatASetHoldsThatWasAdded) {
    const QByteArray taken[] = {"plugin.name=\"P\"\n", "plugin.gain.value=5\n", "plugin.gain.views=[0]\n",
                                "plugin.gain.view[1].keyframes.append( Key( 1.5, 2.5, Linear ) )\n",
                                "plugin.loudness.before=Linear\n"};
    const QByteArray kept = "plugin.gain.shade=3\nplugin.gone.value=1.5\nplugin.glow.value=5\nblur.size.shade=3\n"
                            "plugins.gain.value=5\nplugin.gain.value=\xE9\n";
    QByteArray lines;
    for (const QByteArray& line : taken)
        lines += line;
    Project project;
    ASSERT_TRUE(project.file.loadText(header + lines + kept));
    EXPECT_TRUE(project.file.text().endsWith('\n' + lines + kept));
    ParameterSet plugin("plugin");
    NumericParameter<double> gain("gain", 0, Splittable);
    gain.addAdditionalScriptName("loudness");
    gain.vSetValue(7, Context());
    plugin.addParameter(gain);
    project.root.addParameterSet(plugin);
    const QByteArray saved = project.file.text();
    EXPECT_TRUE(saved.endsWith("plugin.gain.value=7\n" + kept)) << saved.constData();
    ASSERT_TRUE(project.file.loadText(saved));
    EXPECT_EQ(gain.value(Context()), 7);
    EXPECT_EQ(project.file.text().toStdString(), saved.toStdString());
}

TEST(ProjectFile, AKeptMasterNeverReplacesTheOneThatWasChosen) {
    using Act = std::function<void(Project&, NumericParameter<double>&)>;
    const QByteArray line = "blur.size.MasterParameterId=gone.y\n";
    const Act tie = [](Project& project, auto& gain) { gain.bAddConstrainedParameter(&project.size); };
    const std::tuple<const char*, bool, Act> rows[] = {
        {"nothing happens", true, [](auto&&...) {}},
        {"one is chosen", false, tie},
        {"or none", false, [&](Project& project, auto& gain) { tie(project, gain), project.size.bUnconstrain(); }},
        {"and undone", true,
         [&](Project& project, auto& gain) {
             ParameterAddConstrainedParameterEdit edit(gain, project.size);
             edit.doIt();
             EXPECT_FALSE(project.file.text().contains("gone.y"));
             edit.undoIt();
         }},
        {"one is read again", false,
         [&](Project& project, auto& gain) {
             tie(project, gain);
             EXPECT_TRUE(project.file.loadText(header + line));
             EXPECT_EQ(findings(project.file), "6 master not found, kept\n");
         }},
    };
    for (const auto& [name, isKept, act] : rows) {
        const Warnings quiet;
        Project project;
        NumericParameter<double> gain("gain");
        ASSERT_TRUE(project.file.loadText(header + line));
        act(project, gain);
        EXPECT_EQ(project.file.text().endsWith('\n' + line), isKept) << name;
        EXPECT_EQ(project.file.text().contains("gone.y"), isKept) << name;
    }
}

TEST(ProjectFile, ALineOfAMovedParameterWaitsForItsTarget) {
    Project project;
    ASSERT_TRUE(project.file.loadText(header + "blur.older.value=4\n"));
    EXPECT_TRUE(project.file.saveLosses().join('\n').contains("older: a line was read"));
    {
        OwnedStaticParameter<QString> refusing("text");
        EXPECT_FALSE(project.older.setMigrationFunction([](auto...) { return false; }));
        EXPECT_FALSE(project.older.setTargetParam(refusing));
    }
    EXPECT_TRUE(project.older.isWaiting());
    EXPECT_FALSE(project.older.setMigrationFunction([](auto...) { return true; }));
    EXPECT_TRUE(project.older.setTargetParam(project.size));
    EXPECT_FALSE(project.older.isWaiting());
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

    // As far as the program can tell, the disk is full behind so many bytes; or it is killed there. In one large write,
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
                    _exit(project.file.save(name) ? 1 : project.file.errorString().isEmpty() ? 2 : 0);
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

TEST(ProjectFile, LossesAreNamedBeforeSaving) {
    Project project;
    project.size.vSetValue(1, at(0.1));
    project.size.vSetInterpolationData(IType(Interpolation::Linear, 1), 0, View());
    project.text.setScriptName("a=b");
    project.mode.doImportState(OwnedStaticParameter<unsigned int>("file").exportState());
    project.maskFile.setValue("two\nlines");
    project.title.vSetValue(QString(QChar(0xD800)), still());
    project.title.setScriptName("mask.text");
    OwnedStaticParameter<unsigned int> nameless("");
    project.blur.addBasicParameter(nameless);
    CompoundParameter spread;
    NumericParameter<double> part("enable"), free("part");
    spread.addParameter(part);
    spread.addParameter(free);
    project.blur.addParameter(spread);
    OwnedStaticParameter<unsigned int> count("count");
    spread.addBasicParameter(count);
    free.setLocked(true);
    // Of a constrained parameter its own keyframes are written, not those that it shows.
    NumericParameter<double> master("master");
    free.vSetValue(1, at(3));
    free.vSetInterpolationData(IType(static_cast<Interpolation>(7)), 0, View());
    master.bAddConstrainedParameter(&free);
    const QString losses = project.file.saveLosses().join('\n');
    EXPECT_EQ(losses.count("is empty"), 1);
    for (const char* expected :
         {"keyframe times will move (1)", "are not written (1)", "holds \"=\"", "is used 2 times",
          "\"enable\" in the set \"blur\" is used 2 times", "part: the locked flag",
          "part: view 0: custom interpolations", "part: the master \".master\" will not be found by its name",
          "the static parameters and the subsets of a compound are not written", "holds a line break",
          "half a surrogate pair (1)", "name of another member and a dot", "\"blur\" is empty"})
        EXPECT_TRUE(losses.contains(QLatin1String(expected))) << expected << "\n" << losses.toStdString();
    Project clean;
    EXPECT_TRUE(clean.file.saveLosses().isEmpty());
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

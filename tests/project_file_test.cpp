#include "host/product/ProductInfo.h"
#include "prm/NumericParameter.h"
#include "prm/ParameterSet.h"
#include "prm/ProjectFile.h"
#include "prm/StaticParameter.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Prm;

namespace {

const ParameterOptions still = Splittable;

/// A small project: the set "blur" with a subset "mask".
struct Project {
    Project() {
        Product::replaceProductName([](const QString&) { return QStringLiteral("Studio"); });
        Product::replaceProductVersion([](const QString&) { return QStringLiteral("4.1.2"); });
        Product::replaceProductBuildNumber([](const QString&) { return QStringLiteral("7"); });
        root.addParameterSet(blur);
        blur.addParameter(enable);
        blur.addParameter(size);
        blur.addParameter(title);
        blur.addParameter(centre);
        blur.addParameterSet(mask);
        mask.addParameter(text);
        mask.addBasicParameter(mode);
        mask.addBasicParameter(maskFile);
        file.setTimeOfWriting(QDateTime(QDate(2021, 3, 1), QTime(14, 5, 9), Qt::UTC));
    }
    ~Project() {
        Product::replaceProductName(nullptr);
        Product::replaceProductVersion(nullptr);
        Product::replaceProductBuildNumber(nullptr);
    }
    Project(const Project&) = delete;

    Parameter<bool> enable{"enable", false, still};
    NumericParameter<double> size{"size"};
    Parameter<QString> title{"title"};
    PointParameter centre{"centre"};
    Parameter<QString> text{"text"};
    OwnedStaticParameter<unsigned int> mode{"mode"};
    OwnedStaticParameter<QString> maskFile{"file"};
    ParameterSet root;
    ParameterSet blur{"blur"};
    ParameterSet mask{"mask"};
    ProjectFile file{root};
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
    static const char* const reasons[] = {"malformed", "unknown", "refused", "master", "header", "newer"};
    std::string all;
    for (const ProjectFileFinding& finding : file.report())
        all += std::to_string(finding.lineNumber) + " " + reasons[finding.reason] + "\n";
    return all;
}

const QByteArray header = "FileVersion.value=3002\nProductName.value=\"Studio\"\nProductBuildNumber.value=\"7\"\n"
                          "ProductVersion.value=\"4.1.2\"\nFileTimestamp.value=\"2021-03-01T14:05:09Z\"\n";

} // namespace

TEST(ProjectFile, EveryLineIsWrittenAsItWasRead) {
    Project project;
    ASSERT_TRUE(project.file.loadText(data("every_line.prm")));
    EXPECT_EQ(findings(project.file), "33 unknown\n34 unknown\n");
    EXPECT_EQ(project.text.constrainedParameters(), QList<ParameterWithoutType*>{&project.title});
    EXPECT_EQ(project.title.keyframe(0, View()).value, QString("a, \"b\" ) )\n"));
    EXPECT_EQ(project.file.text().toStdString(), data("every_line.prm").toStdString());
    EXPECT_EQ(project.file.version().timestamp(), QDateTime(QDate(2021, 3, 1), QTime(14, 5, 9), Qt::UTC));
}

TEST(ProjectFile, ADamagedLineCostsThatLine) {
    Project project;
    ASSERT_TRUE(project.file.loadText(data("damaged.prm")));
    EXPECT_EQ(findings(project.file), "8 malformed\n9 malformed\n11 malformed\n12 refused\n13 master\n14 refused\n"
                                      "15 unknown\n");
    EXPECT_EQ(project.size.keyframeCount(View()), 2u);
    const QByteArray saved = project.file.text();
    EXPECT_TRUE(saved.endsWith("blur.size.shade=3\nblur.enable.MasterParameterId=nobody.here\nblur.mask.file.size=3\n"
                               "later.set.value=7\n"))
        << saved.toStdString();
    Project again;
    again.file.loadText(saved);
    EXPECT_EQ(again.file.text().toStdString(), saved.toStdString());
}

TEST(ProjectFile, OldFilesLoad) {
    for (const unsigned int version : {2019u, 3000u, 3001u}) {
        Project project;
        ASSERT_TRUE(project.file.loadText(data(("version_" + std::to_string(version) + ".prm").c_str())));
        EXPECT_EQ(project.file.version().streamVersion, version);
        EXPECT_EQ(findings(project.file), "6 unknown\n");
        EXPECT_TRUE(project.file.text().contains(
            "blur.size.views=[0, 1]\nblur.size.view[0].value=3\nblur.size.view[1].value=4\nblur.size.before"));
    }
}

TEST(ProjectFile, AHeaderIsReportedAndTheRestIsRead) {
    const QByteArray line = "blur.size.value=2\n";
    const std::tuple<const char*, QByteArray, const char*> rows[] = {
        {"none", line, "1 header\n"},
        {"no number", "FileVersion.value=abc\n" + line, "1 header\n"},
        {"cut short", "FileVersion.value=3002\nProductName.value=\"x\"\nblur.size.value=2", "1 header\n"},
        {"newer", QByteArray(header).replace("3002", "4000") + line, "1 newer\n"},
        {"other line ends, and a mark", "\xEF\xBB\xBF" + QByteArray(header + line).replace("\n", "\r\n"), ""},
        {"no text", header + QByteArray("\0\xFF\xED\xA0\x80\n", 6) + line, "6 unknown\n"},
    };
    for (const auto& [name, text, expected] : rows) {
        Project project;
        EXPECT_TRUE(project.file.loadText(text));
        EXPECT_EQ(findings(project.file), expected) << name;
        EXPECT_EQ(project.size.value(Context()), 2) << name;
    }
    Project project;
    project.file.loadText("");
    EXPECT_EQ(findings(project.file), "1 header\n");
}

TEST(ProjectFile, UnknownLinesKeepTheirBytes) {
    Project project;
    const QByteArray broken("x\0\xFF\xED\xA0\x80=1\n", 9);
    project.file.loadText(header + broken);
    EXPECT_TRUE(project.file.text().endsWith(broken));
}

TEST(ProjectFile, HostileLinesEndAndTheRestIsRead) {
    const QByteArray rows[] = {
        "blur.size.value=" + QByteArray(5000000, '7'),
        "blur." + QByteArray(1000000, '.') + "=1",
        "blur.title.keyframes.append( Key( 1, " + QByteArray(1000000, '"'),
        "blur.size.keyframes.append( BezierKey( " + QByteArray(1000000, ',') + ") )",
        "blur.size.view[2147483646].value=1\nblur.size.views=[4294967295]",
        "blur.size.keyframes.append( Key( nan, 1, Linear ) )\nblur.size.keyframes.append( Key( -1e300, inf, Linear ) )",
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
    project.title.vSetValue(QString(200000, 'x'), Context(Context::INVALID_TIME));
    ASSERT_TRUE(project.file.save(name)) << project.file.errorString().toStdString();
    const QByteArray before = contents(name);
    EXPECT_FALSE(project.file.save(folder.path()));
    EXPECT_FALSE(project.file.save(folder.filePath("missing/a.prm")));

    // As far as the program can tell, the disk is full behind so many bytes; or it is killed there. In one large write,
    // and when a small one is flushed.
    for (const int size : {100000, 3000}) {
        project.title.vSetValue(QString(size, 'y'), Context(Context::INVALID_TIME));
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
    EXPECT_TRUE(project.file.save(name));
    EXPECT_NE(contents(name), before);
}

TEST(ProjectFile, LossesAreNamedBeforeSaving) {
    Project project;
    for (const double time : {0.1, 1234567.0, 1234568.0})
        project.size.vSetValue(1, Context(Time::fromDouble(time)));
    project.size.vSetInterpolationData(IType(static_cast<Interpolation>(6), 1), 0, View());
    project.text.setScriptName("a=b");
    project.mode.doImportState(OwnedStaticParameter<unsigned int>("file").exportState());
    project.maskFile.setValue("two\nlines");
    project.title.vSetValue(QString(QChar(0xD800)), Context(Context::INVALID_TIME));
    project.title.setScriptName("mask.text");
    OwnedStaticParameter<unsigned int> nameless("");
    project.blur.addBasicParameter(nameless);
    const QString losses = project.file.saveLosses().join('\n');
    for (const char* expected :
         {"keyframe times will move (3)", "will merge with the one before them (1)",
          "other than the first become Constant (1)", "are not written (1)", "holds \"=\"", "is used 2 times",
          "holds a line break", "half a surrogate pair (1)", "name of another member and a dot", "\"blur\" is empty"})
        EXPECT_TRUE(losses.contains(QLatin1String(expected))) << expected << "\n" << losses.toStdString();
    Project clean;
    EXPECT_TRUE(clean.file.saveLosses().isEmpty());
}

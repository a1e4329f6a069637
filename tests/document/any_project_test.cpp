#include "prm/Exchange.h"
#include "prm/GuessedSets.h"
#include "prm/NumericParameter.h"
#include "prm/ParameterSet.h"
#include "prm/ProjectDiff.h"
#include "prm/ProjectFile.h"
#include "prm/ProjectMerge.h"

#include <gtest/gtest.h>

using namespace Prm;

namespace {

const QByteArray header = "FileVersion.value=3002\nProductName.value=\"a\"\nProductBuildNumber.value=\"0\"\n"
                          "ProductVersion.value=\"1.0.0\"\n";

const char* kindOf(const BasicParameter& parameter) {
    if (dynamic_cast<const NumericParameter<double>*>(&parameter))
        return "number";
    if (dynamic_cast<const PointParameter*>(&parameter))
        return "point";
    if (dynamic_cast<const Parameter<bool>*>(&parameter))
        return "switch";
    return dynamic_cast<const Parameter<QString>*>(&parameter) ? "text" : "other";
}

/// "x:number y{z:point}"
QString outline(const ParameterSet& set) {
    QStringList members;
    for (const auto& parameter : set.parameters())
        members += QStringLiteral("%1:%2").arg(parameter->scriptName(), QLatin1String(kindOf(*parameter)));
    for (const auto& subset : set.subsets())
        members += QStringLiteral("%1{%2}").arg(subset->scriptName(), outline(*subset));
    return members.join(QLatin1Char(' '));
}

struct GuessRow {
    const char* name;
    const char* lines;
    const char* rule;
    const char* outline;
    /// Of the findings, those that are lines without a member.
    int kept;
};

const GuessRow guesses[] = {
    {"kinds", "a.n.value=1.5\na.p.value=1 2\na.t.value=\"x\"\na.s.value=1\n", "", "a{n:number p:point t:text s:number}",
     0},
    {"settled", "a.s.value=1\na.b.s.value=0\n", "a.b=switch", "a{s:number b{s:switch}}", 0},
    {"unknown type", "a.q.value=1 2 3\na.n.value=2\n", "", "a{n:number}", 1},
    {"kind of the master", "a.m.MasterParameterId=a.p\na.p.value=1 2\n", "", "a{m:point p:point}", 0},
    {"master at the top", "a.m.MasterParameterId=.n\na.o.MasterParameterId=n\nn.value=2\n", "",
     "n:number a{m:number o:number}", 0},
    {"masters in a circle", "a.m.MasterParameterId=a.n\na.n.MasterParameterId=a.m\na.n.value=2\n", "",
     "a{m:number n:number}", 1},
    {"neighbour with a dot in its name", "a.n.value=2\na.n.x.value=3\n", "", "a{n:number n.x:number}", 0},
    {"group with a name", "a.name=\"A\"\na.b.name=\"B\"\na.b.n.value=2\n", "", "a{b{n:number}}", 0},
    {"keyframes of two views",
     "n.views=[1, 2]\nn.view[1].keyframes.append( Key( 1, 2, Linear ) )\n"
     "n.view[2].value=3\n",
     "", "n:number", 0},
};

TEST(GuessedSets, HoldWhatTheTextSays) {
    for (const GuessRow& row : guesses) {
        SCOPED_TRACE(row.name);
        const QByteArray text = header + row.lines;
        const QString rule = QString::fromLatin1(row.rule);
        const auto root = guessedSets(text, rule.isEmpty() ? QStringList() : QStringList(rule));
        EXPECT_EQ(outline(*root), QLatin1String(row.outline));
        ProjectFile project(*root);
        ASSERT_TRUE(project.loadText(text)) << project.errorString().toStdString();
        EXPECT_EQ(project.keptLines().size(), row.kept);
        for (const ProjectDifference& difference : projectDifferences(text, project.text()))
            EXPECT_TRUE(difference.what == "header" || difference.change == "added")
                << difference.message.toStdString();
    }
}

struct RefusalRow {
    const char* name;
    void (*call)();
    const char* message;
};

const QByteArray conflict = header + "<<<<<<< ours\na.x.value=1\n";

const RefusalRow refusals[] = {
    {"no_rule", [] { guessedSets(header, {QStringLiteral("a.x")}); }, "'a.x' is not PATTERN=TYPE"},
    {"sets_of_a_conflict", [] { guessedSets(conflict); },
     "text:5: unresolved merge conflict, the line begins with '<<<<<<<'"},
    {"merge_of_a_conflict", [] { mergeProjects(header, conflict, header + "a.x.value=2\n"); },
     "ours:5: unresolved merge conflict, the line begins with '<<<<<<<'"},
    {"difference_of_a_conflict", [] { projectDifferences(header, conflict); },
     "to:5: unresolved merge conflict, the line begins with '<<<<<<<'"},
    {"pattern_without_parameters",
     [] {
         ExportOptions options;
         options.patterns = QStringList{QStringLiteral("b.*")};
         exportTable(header + "a.x.value=1.5\n", options);
     },
     "no parameter or group 'b.*'"},
    {"no_frames_per_second", [] { exportStyleSheet(header + "a.x.value=1.5\n", {}); },
     "0 frames per second: not a number above 0"},
    {"table_of_other_bytes", [] { importTable("frame,a.x\n0,1\n1,\xff\n"); },
     "3: the table is not UTF-8; save it as UTF-8"},
    {"table_without_times", [] { importTable("frame,a.x\n,1\n"); }, "2: '' is not a time"},
    {"table_of_one_path_twice", [] { importTable("frame,a.x,a.x\n0,1,2\n"); },
     "1: column 3: 'a.x' has a column already"},
    {"table_of_seconds", [] { importTable("seconds,a.x\n3,1\n"); },
     "1: the times are seconds; --fps gives the frames per second"},
    {"table_with_an_open_quote", [] { importTable("frame,a.x\n3,\"1\n"); }, "2: a quote is not closed"},
    {"no_animation", [] { importAnimation("{\"v\":\n [}"); }, "2:4: object is missing after a comma"},
    {"animation_without_layers", [] { importAnimation("{\"v\":\"5\",\"fr\":24,\"layers\":3}"); },
     "1:1: no Lottie animation: the outermost object has no list \"layers\""},
    {"no_frame_rate", [] { exportAnimation(header + "a.x.value=1.5\n"); },
     "no layer has a frame_rate, so the frames per second are needed (--fps)"},
};

TEST(AnyProject, RefusesWithAMessage) {
    for (const RefusalRow& row : refusals) {
        SCOPED_TRACE(row.name);
        try {
            row.call();
            ADD_FAILURE() << "nothing was thrown";
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), row.message);
        }
    }
}

} // namespace

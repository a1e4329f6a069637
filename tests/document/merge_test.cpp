// What merging and comparing tell programs: each kind of conflict and difference, with its values. How they read for
// people is in the sessions of prm.

#include "prm/ProjectDiff.h"
#include "prm/ProjectMerge.h"

#include <QRegularExpression>
#include <gtest/gtest.h>

#include <algorithm>

using namespace Prm;

namespace {

QString textOf(const QVariant& value) {
    return value.isNull() ? QStringLiteral("-") : value.toString();
}

struct ConflictRow {
    const char* what;
    const char* base;
    const char* ours;
    const char* theirs;
    /// "path view frame: base, ours, theirs"
    const char* expected;
};

#define KEY(path, time, value) path ".keyframes.append( Key( " #time ", " #value ", Linear ) )\n"

const ConflictRow conflicts[] = {
    {"time", KEY("a.x", 1, 5), KEY("a.x", 2, 5), KEY("a.x", 3, 5), "a.x - 1: 1, 2, 3"},
    {"value", KEY("a.x", 1, 5), KEY("a.x", 1, 6), KEY("a.x", 1, 7), "a.x - 1: 5, 6, 7"},
    {"value", "a.x.value=1\n", "a.x.value=2\n", "a.x.value=3\n", "a.x - -: 1, 2, 3"},
    {"value", "a.x.views=[0, 1]\na.x.view[1].value=1\n", "a.x.views=[0, 1]\na.x.view[1].value=2\n",
     "a.x.views=[0, 1]\na.x.view[1].value=3\n", "a.x 1 -: 1, 2, 3"},
    {"interpolation", KEY("a.x", 1, 5), "a.x.keyframes.append( Key( 1, 5, Constant ) )\n",
     "a.x.keyframes.append( Key( 1, 5, Custom0 ) )\n", "a.x - 1: Linear, Constant, Custom0"},
    {"keyframe", KEY("a.x", 1, 5) KEY("a.x", 9, 9), KEY("a.x", 9, 9), KEY("a.x", 1, 6) KEY("a.x", 9, 9),
     "a.x - 1: 5 (Linear), -, 6 (Linear)"},
    {"view", "a.x.views=[0, 1]\na.x.view[0].value=1\na.x.view[1].value=1\n", "a.x.views=[0]\na.x.view[0].value=1\n",
     "a.x.views=[0, 1]\na.x.view[0].value=1\na.x.view[1].value=2\n", "a.x 1 -: 1, -, 2"},
    {"parameter", "a.x.value=1\na.y.value=1\n", "a.y.value=1\n", "a.x.value=2\na.y.value=1\n", "a.x - -: 1, -, 2"},
    {"name", "g.name=\"A\"\ng.x.value=1\n", "g.name=\"B\"\ng.x.value=1\n", "g.name=\"C\"\ng.x.value=1\n",
     "g - -: \"A\", \"B\", \"C\""},
    {"master", "a.x.value=1\nb.value=1\nc.value=1\n", "a.x.value=1\na.x.MasterParameterId=b\nb.value=1\nc.value=1\n",
     "a.x.value=1\na.x.MasterParameterId=c\nb.value=1\nc.value=1\n", "a.x - -: -, b, c"},
    {"before", "a.x.value=1\n", "a.x.value=1\na.x.before=Linear\n", "a.x.value=1\na.x.before=Custom1\n",
     "a.x - -: Constant, Linear, Custom1"},
    {"after", "a.x.value=1\n", "a.x.value=1\na.x.after=Linear\n", "a.x.value=1\na.x.after=Custom1\n",
     "a.x - -: Constant, Linear, Custom1"},
    {"line", "note=1\n", "note=2\n", "note=3\n", "note - -: note=1, note=2, note=3"},
    {"group", "g.a.value=1\ng.b.value=2\n", "x.a.value=1\nx.b.value=2\n", "y.a.value=1\ny.b.value=2\n",
     "g - -: g, x, y"},
    {"group", "g.a.value=1\ng.b.value=2\nk.value=1\n", "x.a.value=1\nx.b.value=2\nk.value=1\n", "k.value=1\n",
     "g - -: g, x, -"},
    {"group", "g.a.value=1\ng.b.value=2\nk.value=1\n", "k.value=1\n", "x.a.value=1\nx.b.value=2\nk.value=1\n",
     "g - -: g, -, x"},
    {"keyframe", KEY("a.x", 18, 1) KEY("a.x", 49, 8), KEY("a.x", 24, 1) KEY("a.x", 49, 8),
     KEY("a.x", 18, 1) KEY("a.x", 24, 3) KEY("a.x", 49, 8), "a.x - 24: -, 1 (Linear), 3 (Linear)"},
    {"value", "a.x.views=[0]\n" KEY("a.x", 9, 1),
     "a.x.views=[0]\n" KEY("a.x", 1, 1) KEY("a.x", 2, 2) "a.x.view[0].value=7\n", "a.x.views=[0]\n",
     "a.x - -: 1 keyframe, 2 keyframes, "},
};

TEST(Merge, ConflictsHaveTheValuesOfAllSides) {
    for (const ConflictRow& row : conflicts) {
        SCOPED_TRACE(std::string(row.what) + ": " + row.expected);
        const MergedProject merged = mergeProjects(row.base, row.ours, row.theirs);
        ASSERT_EQ(merged.conflicts.size(), 1u);
        const ProjectConflict& one = merged.conflicts.front();
        EXPECT_EQ(one.what, row.what);
        EXPECT_EQ(QStringLiteral("%1 %2 %3: %4, %5, %6")
                      .arg(one.path, textOf(one.view), textOf(one.frame), textOf(one.base), textOf(one.ours),
                           textOf(one.theirs))
                      .toStdString(),
                  row.expected);
        EXPECT_FALSE(one.message.isEmpty() || one.message.contains('\n'));
        EXPECT_EQ(merged.text, row.ours);
    }
}

TEST(Merge, IsSettledByPath) {
    for (const ConflictRow& row : conflicts) {
        SCOPED_TRACE(std::string(row.what) + ": " + row.expected);
        QStringList asked;
        const auto settled = [&](MergeSide side) {
            return mergeProjects(row.base, row.ours, row.theirs, [&](const QString& path) {
                asked += path;
                return std::optional(side);
            });
        };
        EXPECT_EQ(settled(MergeSide::Ours).text, row.ours);
        const MergedProject theirs = settled(MergeSide::Theirs);
        EXPECT_TRUE(theirs.conflicts.empty());
        EXPECT_TRUE(projectDifferences(row.theirs, theirs.text).empty()) << theirs.text.toStdString();
        EXPECT_TRUE(asked.contains(QString(row.expected).section(' ', 0, 0)));
    }
}

struct AgreementRow {
    const char* name;
    const char* base;
    const char* ours;
    const char* theirs;
    const char* merged;
};

const AgreementRow agreements[] = {
    {"all views deleted, a setting changed", "a.views=[0, 1]\na.view[0].value=1\na.view[1].value=2\n",
     "a.views=[0, 1]\na.view[0].value=1\na.view[1].value=2\na.hidden=1\n", "a.views=[]\n", "a.views=[]\na.hidden=1\n"},
    {"renamed alike, and changed", KEY("g.p", 26, 1), KEY("h.p", 27, 1), KEY("h.p", 26, 1), KEY("h.p", 27, 1)},
    {"moved to where the other side added the same", KEY("a.x", 44, 1), KEY("a.x", 21, 1) KEY("a.x", 44, 1),
     KEY("a.x", 21, 1), KEY("a.x", 21, 1)},
};

TEST(Merge, SidesAgreeInEitherOrder) {
    for (const AgreementRow& row : agreements) {
        SCOPED_TRACE(row.name);
        for (const MergedProject& merged :
             {mergeProjects(row.base, row.ours, row.theirs), mergeProjects(row.base, row.theirs, row.ours)}) {
            EXPECT_TRUE(merged.conflicts.empty());
            EXPECT_TRUE(projectDifferences(row.merged, merged.text).empty()) << merged.text.toStdString();
        }
    }
}

struct DifferenceRow {
    const char* from;
    const char* to;
    /// "what change path view frame: from, to", a line each.
    const char* expected;
};

const DifferenceRow differences[] = {
    {KEY("a.x", 1, 5), KEY("a.x", 4, 5), "key moved a.x 0 1: 1, 4\n"},
    {KEY("a.x", 1, 5) KEY("a.x", 9, 5), KEY("a.x", 1, 6),
     "key value changed a.x 0 1: 5, 6\nkey removed a.x 0 9: 5 (Linear), -\n"},
    {"a.x.keyframes.append( Key( 1, 5, Linear ) )\n", "a.x.keyframes.append( Key( 1, 5.0, Constant ) )\n",
     "key interpolation changed a.x 0 1: Linear, Constant\n"},
    {"a.x.views=[0, 1]\na.x.view[0].value=1\na.x.view[1].value=1\n", "a.x.views=[0]\na.x.view[0].value=2\n",
     "value changed a.x 0 -: 1, 2\nview removed a.x 1 -: -, -\n"},
    {"a.x.value=1\n", "b.x.value=1\n",
     "group removed a - -: -, -\nparameter removed a.x - -: -, -\ngroup added b - -: -, -\nparameter added b.x - -: -, "
     "-\n"},
    {"a.x.value=1\na.x.before=Linear\n", "a.x.value=1\na.x.after=Linear\na.x.hidden=1\n",
     "before changed a.x - -: Linear, Constant\nafter changed a.x - -: Constant, Linear\nhidden changed a.x - -: "
     "false, true\n"},
    {"FileVersion.value=3001\nnote\n", "FileVersion.value=3002\n",
     "header changed FileVersion - -: 3001, 3002\nline removed  - -: note, -\n"},
};

TEST(Diff, TellsEachDifferenceWithItsValues) {
    for (const DifferenceRow& row : differences) {
        SCOPED_TRACE(row.expected);
        QString all;
        for (const ProjectDifference& one : projectDifferences(row.from, row.to))
            all += QStringLiteral("%1 %2 %3 %4 %5: %6, %7\n")
                       .arg(one.what, one.change, one.path, textOf(one.view), textOf(one.frame), textOf(one.from),
                            textOf(one.to));
        EXPECT_EQ(all.toStdString(), row.expected);
        EXPECT_TRUE(projectDifferences(row.to, row.to).empty());
    }
}

} // namespace

// What grows with a project must not grow faster than it: counted in allocations and calls; where neither tells, in the
// time that the processor needed for this thread.

#include "prm/CompoundParameter.h"
#include "prm/NumericParameter.h"
#include "prm/ParameterEdits.h"
#include "prm/ProjectFile.h"
#include "tests/parameter/Keying.h"
#include "tests/support/Allocations.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <memory>
#include <vector>

using namespace Prm;

namespace {

/// Counts how often it is asked for its revision and to be keyed: what each part of a compound costs it.
int asked = 0;
struct Number : NumericParameter<double> {
    explicit Number(int number)
        : ParameterWithoutType(false, false, nullptr), NumericParameter<double>(QString("n%1").arg(number)) {}
    quint64 keyframeRevision() const override {
        ++asked;
        return NumericParameter<double>::keyframeRevision();
    }
    using NumericParameter<double>::iAddKeyframe;
    int iAddKeyframe(const Context& context) override {
        ++asked;
        return NumericParameter<double>::iAddKeyframe(context);
    }
};

struct Project {
    boost::shared_ptr<ParameterSet> root = boost::make_shared<ParameterSet>("root");
    std::vector<boost::shared_ptr<NumericParameter<double>>> numbers;
    std::vector<std::unique_ptr<Bsc::Command>> done;

    NumericParameter<double>& add(ParameterSet& set) {
        numbers.push_back(boost::make_shared<NumericParameter<double>>(QString("n%1").arg(numbers.size())));
        set.addParameter(numbers.back());
        return *numbers.back();
    }
};

void keyMany(NumericParameter<double>& number, int count) {
    for (int i = 0; i < count; ++i)
        number.vSetValue(i * 0.5, at(i));
}

void chain(Project& project, int size) {
    boost::shared_ptr<ParameterSet> set = project.root;
    for (int i = 0; i < size; ++i) {
        const auto below = boost::make_shared<ParameterSet>();
        below->setScriptName("s"); // without a name, which would be a line as long as the path
        set->addParameterSet(below);
        set = below;
    }
    keyMany(project.add(*set), 2);
}

void keyTogether(Project& project, int size) {
    const auto group = boost::make_shared<CompoundParameter>("group", true);
    for (int i = 0; i < size; ++i)
        group->addParameter(boost::make_shared<Number>(i));
    project.root->addParameter(group);
    for (const quint32 view : {0u, 3u})
        group->iAddKeyframe(at(1, view));
    group->setVariantValue(QVariant::fromValue(QVector<QVariant>(size, 2.)), at(7));
}

void edit(Project& project, int size) {
    NumericParameter<double>& number = project.add(*project.root);
    for (int i = 0; i < size; ++i) {
        project.done.push_back(std::make_unique<ParameterSetValueEdit>(number, i, at(i)));
        project.done.back()->doIt();
    }
    for (auto command = project.done.rbegin(); command != project.done.rend(); ++command)
        (*command)->undoIt();
}

struct Row {
    const char* name;
    void (*build)(Project& project, int size);
    int size;
};
const Row rows[] = {
    {"parameters",
     [](Project& project, int size) {
         for (int i = 0; i < size; ++i)
             keyMany(project.add(*project.root), 3);
     },
     250},
    {"keyframes", [](Project& project, int size) { keyMany(project.add(*project.root), size); }, 2000},
    {"views",
     [](Project& project, int size) {
         NumericParameter<double>& number = project.add(*project.root);
         for (int view = 0; view < size; ++view)
             number.vSetValue(view, at(1, static_cast<quint32>(view)));
     },
     250},
    {"sets", chain, 250},
    {"parts of a compound", keyTogether, 100},
    {"undo steps", edit, 1000},
};

void addNumbers(Project& project, int size) {
    for (int i = 0; i < size; ++i)
        project.add(*project.root);
}

std::vector<boost::shared_ptr<ParameterSet>> addSubsets(Project& project, int size) {
    std::vector<boost::shared_ptr<ParameterSet>> subsets;
    for (int i = 0; i < size; ++i) {
        subsets.push_back(boost::make_shared<ParameterSet>("s"));
        project.root->addParameterSet(subsets.back());
    }
    return subsets;
}

void readBackwards(Project& project, int size, const char* form) {
    for (int i = size; i > 0; --i)
        project.root->bStreamIn(QString(form).arg(i), ProjectFileVersion());
}

const Row timedRows[] = {
    {"lines backwards",
     [](Project& project, int size) {
         addNumbers(project, size);
         readBackwards(project, size, "n%1.value=1");
     },
     4000},
    {"subsets backwards",
     [](Project& project, int size) {
         for (const auto& subset : addSubsets(project, size))
             project.add(*subset).setScriptName("n");
         readBackwards(project, size, "s_%1.n.value=1");
     },
     4000},
    {"unknown lines",
     [](Project& project, int size) {
         addNumbers(project, size);
         readBackwards(project, size, "u%1.value=1");
     },
     4000},
    {"looking up",
     [](Project& project, int size) {
         addNumbers(project, size);
         for (int i = 0; i < size; ++i)
             project.root->parameterWithName(QString("n%1").arg(i));
     },
     4000},
    {"adding and renaming subsets",
     [](Project& project, int size) {
         for (int i = 0; i < size; ++i)
             addSubsets(project, 1).front()->setScriptName(QString("t%1").arg(i));
     },
     2000},
    {"removing and adding subsets",
     [](Project& project, int size) {
         for (const auto& subset : addSubsets(project, size)) {
             project.root->removeParameterSet(subset);
             addSubsets(project, 1);
         }
     },
     2000},
    {"members that die first to last",
     [](Project& project, int size) {
         std::vector<std::unique_ptr<ParameterSet>> subsets;
         std::vector<std::unique_ptr<CompoundParameter>> parameters;
         for (int i = 0; i < size; ++i) {
             subsets.push_back(std::make_unique<ParameterSet>("s"));
             parameters.push_back(std::make_unique<CompoundParameter>("c"));
             project.root->addParameterSet(*subsets.back());
             project.root->addParameter(*parameters.back());
         }
         for (int i = 0; i < size; ++i) {
             subsets[static_cast<std::size_t>(i)].reset();
             parameters[static_cast<std::size_t>(i)].reset();
         }
     },
     2000},
};

double secondsFor(const Row& row, int size) {
    double least = 1e9;
    for (int attempt = 0; attempt < 3; ++attempt) {
        Project project;
        const std::clock_t start = std::clock();
        row.build(project, size);
        least = std::min(least, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
    }
    return least;
}

/// Of building, saving and loading: allocations, the bytes that they ask for, which tell of copies as well, and the
/// questions of compounds.
struct Cost {
    int allocations;
    std::size_t bytes;
    int questions;
};

Cost costOf(const Row& row, int size) {
    Project project;
    const int allocated = Allocations::made();
    const std::size_t requested = Allocations::bytes();
    asked = 0;
    row.build(project, size);
    const QByteArray text = ProjectFile(*project.root).text();
    ProjectFile(*project.root).loadText(text);
    return {Allocations::made() - allocated, Allocations::bytes() - requested, asked};
}

TEST(Growth, FourTimesTheSizeCostsNoMoreThanSixTimes) {
    if (!Allocations::areCounted())
        GTEST_SKIP() << "allocations are not counted in this build";
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        costOf(row, row.size);
        const Cost once = costOf(row, row.size);
        const Cost fourfold = costOf(row, 4 * row.size);
        EXPECT_LT(fourfold.allocations, 6 * once.allocations);
        EXPECT_LT(fourfold.bytes, 6 * once.bytes);
        EXPECT_LE(fourfold.questions, 6 * once.questions);
    }
}

/// What is quadratic needs sixteen times as long.
TEST(Growth, FourTimesTheMembersTakeNoMoreThanTenTimesTheTime) {
    if (!Allocations::areCounted())
        GTEST_SKIP() << "the time says nothing in this build";
    for (const Row& row : timedRows) {
        SCOPED_TRACE(row.name);
        EXPECT_LT(secondsFor(row, 4 * row.size), 10 * secondsFor(row, row.size) + 0.01);
    }
}

} // namespace

// What grows with a project must not grow faster than it: counted in allocations and calls, never timed.

#include "prm/CompoundParameter.h"
#include "prm/MoveKeyframeEdit.h"
#include "prm/NumericParameter.h"
#include "prm/ParameterEdits.h"
#include "prm/ProjectFile.h"
#include "tests/parameter/Keying.h"
#include "tests/support/Allocations.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

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

void finish(Project& project, Bsc::Command* edit) {
    project.done.emplace_back(edit);
    edit->doIt();
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
    {"moves on a long list",
     [](Project& project, int size) {
         NumericParameter<double>& number = project.add(*project.root);
         keyMany(number, size);
         for (int i = 0; i < size; ++i)
             finish(project, new MoveKeyframeEdit(number, at(i), at(i + 0.5)));
     },
     500},
    {"views edited and deleted",
     [](Project& project, int size) {
         NumericParameter<double>& number = project.add(*project.root);
         for (quint32 view = 0; view < static_cast<quint32>(size); ++view)
             finish(project, new ParameterSetValueEdit(number, 1., at(1, view)));
         for (quint32 view = 0; view < static_cast<quint32>(size); ++view)
             finish(project, new ParameterDeleteViewEdit(number, View(view)));
     },
     250},
    {"edits of a part",
     [](Project& project, int size) {
         const auto group = boost::make_shared<CompoundParameter>("group", true);
         for (int i = 0; i < 3; ++i)
             group->addParameter(boost::make_shared<Number>(i));
         for (int i = 0; i < size; ++i)
             finish(project, new ParameterSetValueEdit(*group->parameters().front(), i, at(i)));
     },
     250},
    {"keyframes that pass others",
     [](Project& project, int size) {
         NumericParameter<double>& number = project.add(*project.root);
         keyMany(number, size);
         finish(project, new ParameterRetimeEdit(
                             number, Retiming::shifted(size * 0.75).between(Time(), Time::fromInt(size / 2))));
     },
     1000},
};

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

} // namespace

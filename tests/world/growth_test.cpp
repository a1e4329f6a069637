// What grows with a project must not grow faster than it: counted in allocations and bytes, never timed.

#include "tests/support/Allocations.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

using namespace Prm;

namespace {

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

/// Ten levels deep: what is deeper has longer paths.
void chains(Project& project, int size) {
    boost::shared_ptr<ParameterSet> set = project.root;
    for (int i = 0; i < size; ++i) {
        const auto below = boost::make_shared<ParameterSet>();
        below->setScriptName("s"); // without a name, which would be a line as long as the path
        set->addParameterSet(below);
        set = i % 10 == 9 ? project.root : below;
    }
    keyMany(project.add(*set), 2);
}

/// Observers come between the parts.
void keyTogether(Project& project, int size) {
    const auto group = boost::make_shared<CompoundParameter>("group", true);
    project.root->addParameter(group);
    for (int i = 0; i < size; ++i)
        QObject::connect(&project.add(*group), &ParameterWithoutType::changed, [](ParameterChange&) {});
    for (const quint32 view : {0u, 3u})
        group->iAddKeyframe(at(1, view));
    group->setVariantValue(QVariant::fromValue(QVector<QVariant>(size, 2.)), at(7));
}

/// Asked about two views in turn after each edit.
void keyCompound(Project& project, int size) {
    for (const bool together : {false, true}) {
        const auto group = boost::make_shared<CompoundParameter>(together ? "together" : "apart", together);
        project.root->addParameter(group);
        for (int i = 0; i < 3; ++i)
            project.add(*group);
        const auto ask = [&] { return group->keyframeCount(View(0)) + group->keyframeCount(View(7)); };
        for (int i = 0; i < 2 * size; ++i) {
            group->iAddKeyframe(at(i));
            ask();
        }
        for (int i = 0; i < size; ++i) {
            group->vDeleteKeyframe(Context::Explicit(at(i)));
            ask();
        }
    }
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
    {"sets", chains, 250},
    {"parts of a compound", keyTogether, 25},
    {"keyframes of a compound", keyCompound, 250},
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
             group->addParameter(boost::make_shared<NumericParameter<double>>(QString("p%1").arg(i)));
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

/// Of building, saving and loading: allocations, and the bytes that they ask for, which show copies as well.
struct Cost {
    int allocations;
    std::size_t bytes;
};

Cost costOf(const Row& row, int size) {
    Project project;
    const int allocated = Allocations::made();
    const std::size_t requested = Allocations::bytes();
    row.build(project, size);
    const QByteArray text = ProjectFile(*project.root).text();
    ProjectFile(*project.root).loadText(text);
    return {Allocations::made() - allocated, Allocations::bytes() - requested};
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
    }
}

} // namespace

// What grows with a project must not grow faster than it: counted in allocations and bytes, never timed.

#include "tests/support/Allocations.h"
#include "tests/support/Test.h"

using namespace Prm;

namespace {

struct Project {
    boost::shared_ptr<ParameterSet> root = boost::make_shared<ParameterSet>("root");
    std::vector<boost::shared_ptr<Number>> numbers;
    std::vector<std::unique_ptr<Bsc::Command>> done;

    Number& add(ParameterSet& set) {
        numbers.push_back(boost::make_shared<Number>(QString("n%1").arg(numbers.size())));
        set.addParameter(numbers.back());
        return *numbers.back();
    }
    Number& addKeyed(int count) {
        Number& number = add(*root);
        for (int i = 0; i < count; ++i)
            number.vSetValue(i * 0.5, at(i));
        return number;
    }
    CompoundParameter& addGroup(bool together, int parts) {
        const auto group = boost::make_shared<CompoundParameter>(together ? "together" : "apart", together);
        root->addParameter(group);
        for (int i = 0; i < parts; ++i)
            add(*group);
        return *group;
    }
    void finish(Bsc::Command* edit) {
        done.emplace_back(edit);
        edit->doIt();
    }
};

/// Ten levels deep: what is deeper has longer paths.
void chains(Project& project, int size) {
    boost::shared_ptr<ParameterSet> set = project.root;
    for (int i = 0; i < size; ++i) {
        const auto below = boost::make_shared<ParameterSet>();
        below->setScriptName("s"); // without a name, which would be a line as long as the path
        set->addParameterSet(below);
        set = i % 10 == 9 ? project.root : below;
    }
    key(project.add(*set), {{0, 1.}, {1, 2.}});
}

/// Observers come between the parts.
void keyTogether(Project& project, int size) {
    CompoundParameter& group = project.addGroup(true, 0);
    for (int i = 0; i < size; ++i)
        QObject::connect(&project.add(group), &ParameterWithoutType::changed, [](ParameterChange&) {});
    for (const quint32 view : {0u, 3u})
        group.iAddKeyframe(at(1, view));
    group.setVariantValue(QVariant::fromValue(QVector<QVariant>(size, 2.)), at(7));
}

/// Asked about two views in turn after each edit.
void keyCompound(Project& project, int size) {
    for (const bool together : {false, true}) {
        CompoundParameter& group = project.addGroup(together, 3);
        for (int i = 0; i < 3 * size; ++i) {
            if (i < 2 * size)
                group.iAddKeyframe(at(i));
            else
                group.vDeleteKeyframe(Context::Explicit(at(i - 2 * size)));
            EXPECT_LT(group.keyframeCount(View(7)), group.keyframeCount(View(0)));
        }
    }
}

void edit(Project& project, int size) {
    Number& number = project.addKeyed(0);
    for (int i = 0; i < size; ++i)
        project.finish(new ParameterSetValueEdit(number, i, at(i)));
    for (auto command = project.done.rbegin(); command != project.done.rend(); ++command)
        (*command)->undoIt();
}

void move(Project& project, int size) {
    Number& number = project.addKeyed(size);
    for (int i = 0; i < size; ++i)
        project.finish(new MoveKeyframeEdit(number, at(i), at(i + 0.5)));
    project.finish(new ParameterRetimeEdit(number, Retiming::shifted(size * 0.75).between(Time(), at(size / 2.).time)));
}

/// Of three keyframes: what is shown costs what it changes.
void drag(Project& project, int size) {
    Number& number = project.addKeyed(size);
    KeyframeSelection selection;
    selection.add(number, View(), {size / 2. - 1, size / 2. + 1, true, true});
    InteractiveKeyframeEdit drag(selection);
    for (int i = 0; i < size; ++i)
        drag.preview(KeyframeChange::moved(i % 7 + 0.5, {i + 1.}));
}

void editViews(Project& project, int size) {
    Number& number = project.addKeyed(0);
    for (int view = 0; view < size; ++view)
        project.finish(new ParameterSetValueEdit(number, 1., at(1, view)));
    for (int view = 0; view < size; ++view)
        project.finish(new ParameterDeleteViewEdit(number, View(view)));
}

void editPart(Project& project, int size) {
    CompoundParameter& group = project.addGroup(true, 3);
    for (int i = 0; i < size; ++i)
        project.finish(new ParameterSetValueEdit(*group.parameters().front(), i, at(i)));
}

void addParameters(Project& project, int size) {
    for (int i = 0; i < size; ++i)
        project.addKeyed(3);
}

struct Row {
    const char* name;
    void (*build)(Project& project, int size);
    int size;
};
const Row rows[] = {
    {"parameters", addParameters, 250},
    {"keyframes", [](Project& project, int size) { project.addKeyed(size); }, 2000},
    {"sets", chains, 250},
    {"parts of a compound", keyTogether, 25},
    {"keyframes of a compound", keyCompound, 250},
    {"undo steps", edit, 1000},
    {"moves on a long list", move, 500},
    {"previews on a long list", drag, 500},
    {"views edited and deleted", editViews, 250},
    {"edits of a part", editPart, 250},
};

/// Of building, saving and loading: allocations, and the bytes that they ask for, which show copies as well.
std::pair<int, std::size_t> costOf(const Row& row, int size) {
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
        const auto [allocations, bytes] = costOf(row, row.size);
        const auto [moreAllocations, moreBytes] = costOf(row, 4 * row.size);
        EXPECT_LT(moreAllocations, 6 * allocations);
        EXPECT_LT(moreBytes, 6 * bytes);
    }
}

} // namespace

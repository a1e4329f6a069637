// What projects of the promised sizes cost: for each shape three sizes, with the time of loading, evaluating, saving,
// editing and going away, and the memory. Twice the size should take about twice of each.

#include "prm/CompoundParameter.h"
#include "prm/NumericParameter.h"
#include "prm/ParameterEdits.h"
#include "prm/ParameterSet.h"
#include "prm/ProjectFile.h"

#include <boost/make_shared.hpp>

#include <chrono>
#include <cstdio>
#include <malloc.h>
#include <memory>
#include <vector>

namespace {

using namespace Prm;
using Number = NumericParameter<double>;
using Clock = std::chrono::steady_clock;

struct World {
    boost::shared_ptr<ParameterSet> root = boost::make_shared<ParameterSet>();
    std::vector<boost::shared_ptr<Number>> numbers;
    std::vector<std::unique_ptr<Bsc::Command>> done;
};

boost::shared_ptr<Number> add(World& world, ParameterSet& set) {
    const auto number = boost::make_shared<Number>(QStringLiteral("n%1").arg(world.numbers.size()));
    set.addParameter(number);
    world.numbers.push_back(number);
    return number;
}

void key(Number& number, int count, quint32 view = 0) {
    for (int i = 0; i < count; ++i)
        number.vSetValue(i * 0.5, Context(Time::fromInt(i), View(view)));
}

void manyParameters(World& world, int size, bool keyed) {
    for (int i = 0; i < size; ++i) {
        const auto number = add(world, *world.root);
        key(*number, keyed ? 10 : 0);
    }
}

void manyKeyframes(World& world, int size, bool keyed) {
    key(*add(world, *world.root), keyed ? size : 0);
}

void manyViews(World& world, int size, bool keyed) {
    const auto number = add(world, *world.root);
    for (int view = 0; keyed && view < size; ++view)
        key(*number, 1, static_cast<quint32>(view));
}

void chain(World& world, int size, bool keyed, int every) {
    boost::shared_ptr<ParameterSet> set = world.root;
    for (int i = 1; i <= size; ++i) {
        const auto below = boost::make_shared<ParameterSet>(QStringLiteral("s"));
        set->addParameterSet(below);
        set = below;
        if (i % every == 0)
            key(*add(world, *set), keyed ? 2 : 0);
    }
}

void chainWithOne(World& world, int size, bool keyed) {
    chain(world, size, keyed, size);
}

void chainWithOneEach(World& world, int size, bool keyed) {
    chain(world, size, keyed, 1);
}

void compound(World& world, int size, bool keyed) {
    const auto group = boost::make_shared<CompoundParameter>(QStringLiteral("group"), true);
    for (int i = 0; i < size; ++i)
        add(world, *group);
    world.root->addParameter(group);
    for (int frame = 0; keyed && frame < 10; ++frame)
        group->iAddKeyframe(Context(Time::fromInt(frame)));
}

void undoSteps(World& world, int size, bool keyed, int keyframes) {
    const auto number = add(world, *world.root);
    key(*number, 2);
    for (int i = 0; keyed && i < size; ++i) {
        world.done.push_back(
            std::make_unique<ParameterSetValueEdit>(*number, QVariant(i + 1.), Context(Time::fromInt(i % keyframes))));
        world.done.back()->doIt();
    }
    for (auto command = world.done.rbegin(); command != world.done.rend(); ++command)
        (*command)->undoIt();
}

std::size_t allocated() {
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

void undoOnFewKeyframes(World& world, int size, bool keyed) {
    undoSteps(world, size, keyed, 10);
}

/// Every step has a snapshot, each with one keyframe more.
void undoOnMoreAndMore(World& world, int size, bool keyed) {
    undoSteps(world, size, keyed, size);
}

template <class Act> double seconds(const Act& act) {
    const auto start = Clock::now();
    act();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void measure(const char* name, void (*build)(World&, int, bool), int size) {
    auto full = std::make_unique<World>();
    const double editing = seconds([&] { build(*full, size, true); });
    const QByteArray text = ProjectFile(*full->root).text();
    full.reset();
    const auto before = allocated();
    const auto world = std::make_unique<World>();
    build(*world, size, false);
    ProjectFile file(*world->root);
    const double loading = seconds([&] { file.loadText(text); });
    const auto memory = allocated() - before;
    double sum = 0;
    const double evaluating = seconds([&] {
        for (const auto& number : world->numbers)
            sum += number->value(Context(Time::fromDouble(1.5)));
    });
    const double saving = seconds([&] { sum += file.text().size(); });
    const double ending = seconds([&] {
        world->numbers.clear();
        world->root->clearAllLists();
    });
    std::printf("%-26s %8d %8.1f %9.3f %9.3f %9.4f %9.3f %9.3f %8.1f\n", name, size, text.size() / 1e6, editing,
                loading, evaluating, saving, ending, static_cast<double>(memory) / 1e6);
}

} // namespace

int main() {
    struct Row {
        const char* name;
        void (*build)(World&, int, bool);
        int largest;
    };
    const Row rows[] = {
        {"parameters, 10 keyframes", manyParameters, 100000}, {"keyframes of a parameter", manyKeyframes, 1000000},
        {"views of a parameter", manyViews, 10000},           {"sets, one parameter", chainWithOne, 10000},
        {"sets, one parameter each", chainWithOneEach, 1000}, {"parts of a compound", compound, 1000},
        {"steps on 10 keyframes", undoOnFewKeyframes, 10000}, {"steps, each a keyframe", undoOnMoreAndMore, 10000}};
    std::printf("%-26s %8s %8s %9s %9s %9s %9s %9s %8s\n", "", "size", "text MB", "edit s", "load s", "evaluate s",
                "save s", "end s", "held MB");
    for (const Row& row : rows) {
        for (const int part : {4, 2, 1})
            measure(row.name, row.build, row.largest / part);
    }
}

// What a user does to many members, at one size and at four times that: work that grows with the square of the size
// takes sixteen times as long.

#include "prm/CompoundParameter.h"
#include "prm/NumericParameter.h"
#include "prm/ParameterSet.h"
#include "prm/ProjectFileVersion.h"

#include <benchmark/benchmark.h>
#include <boost/make_shared.hpp>

#include <memory>
#include <vector>

namespace {

using Prm::NumericParameter;
using Prm::ParameterSet;
using Parameters = std::vector<boost::shared_ptr<NumericParameter<double>>>;
using Subsets = std::vector<boost::shared_ptr<ParameterSet>>;

Parameters addNumbers(ParameterSet& set, int count) {
    Parameters added;
    for (int i = 0; i < count; ++i) {
        added.push_back(boost::make_shared<NumericParameter<double>>(QStringLiteral("n%1").arg(i)));
        set.addParameter(added.back());
    }
    return added;
}

Subsets addSubsets(ParameterSet& set, int count) {
    Subsets added;
    for (int i = 0; i < count; ++i) {
        added.push_back(boost::make_shared<ParameterSet>(QStringLiteral("s")));
        set.addParameterSet(added.back());
    }
    return added;
}

void readBackwards(ParameterSet& set, int count, const QString& form) {
    for (int i = count; i-- > 0;)
        set.bStreamIn(form.arg(i), Prm::ProjectFileVersion());
}

void linesBackwards(ParameterSet& set, int size) {
    addNumbers(set, size);
    readBackwards(set, size, QStringLiteral("n%1.value=1"));
}

void unknownLines(ParameterSet& set, int size) {
    addNumbers(set, size);
    readBackwards(set, size, QStringLiteral("u%1.value=1"));
}

void lookingUp(ParameterSet& set, int size) {
    addNumbers(set, size);
    for (int i = 0; i < size; ++i)
        benchmark::DoNotOptimize(set.parameterWithName(QStringLiteral("n%1").arg(i)));
}

void renamingSubsets(ParameterSet& set, int size) {
    for (int i = 0; i < size; ++i)
        addSubsets(set, 1).front()->setScriptName(QStringLiteral("t%1").arg(i));
}

void removingSubsets(ParameterSet& set, int size) {
    for (const auto& subset : addSubsets(set, size)) {
        set.removeParameterSet(subset);
        addSubsets(set, 1);
    }
}

void membersDying(ParameterSet& set, int size) {
    std::vector<std::unique_ptr<Prm::CompoundParameter>> members;
    for (int i = 0; i < size; ++i) {
        members.push_back(std::make_unique<Prm::CompoundParameter>(QStringLiteral("c")));
        set.addParameter(*members.back());
    }
    for (auto& member : members)
        member.reset();
}

void tyingMasters(ParameterSet& set, int size) {
    const Parameters parameters = addNumbers(set, size);
    for (const auto& parameter : parameters)
        parameters.front()->bAddConstrainedParameter(parameter.get());
    for (const auto& parameter : parameters)
        parameter->bUnconstrain();
}

void viewsDescending(ParameterSet& set, int size) {
    const auto parameter = addNumbers(set, 1).front();
    for (int view = size; view-- > 0;)
        parameter->vSetValue(1.0, Prm::Context(Prm::Time(), Prm::View(static_cast<quint32>(view))));
}

template <void (*act)(ParameterSet&, int)> void growth(benchmark::State& state) {
    for (auto _ : state) {
        ParameterSet set;
        act(set, static_cast<int>(state.range(0)));
    }
}
void atTwoSizes(benchmark::internal::Benchmark* cases) {
    cases->Arg(2000)->Arg(8000);
}
BENCHMARK_TEMPLATE(growth, linesBackwards)->Apply(atTwoSizes);
BENCHMARK_TEMPLATE(growth, unknownLines)->Apply(atTwoSizes);
BENCHMARK_TEMPLATE(growth, lookingUp)->Apply(atTwoSizes);
BENCHMARK_TEMPLATE(growth, renamingSubsets)->Apply(atTwoSizes);
BENCHMARK_TEMPLATE(growth, removingSubsets)->Apply(atTwoSizes);
BENCHMARK_TEMPLATE(growth, membersDying)->Apply(atTwoSizes);
BENCHMARK_TEMPLATE(growth, tyingMasters)->Apply(atTwoSizes);
BENCHMARK_TEMPLATE(growth, viewsDescending)->Apply(atTwoSizes);

} // namespace

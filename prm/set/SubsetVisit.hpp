#pragma once

// The walk over the subsets of a set, shared by the set's source files.

#include "prm/ParameterSet.h"

#include <deque>
#include <utility>

namespace Prm {

/// The subsets that a set lists when the walk begins. Those that leave or die meanwhile are passed over, those that
/// come are not visited; owned ones stay alive.
class ParameterSet::SubsetVisit {
public:
    explicit SubsetVisit(const ParameterSet& set) : m_set(set), m_guard(set) {
        if (set.m_subsets.empty())
            return;
        m_visits = std::make_unique<std::deque<Visit>>();
        for (const Subset& subset : set.listedSubsets())
            m_visits->emplace_back(subset);
    }

    template <class Act> void forEach(const Act& act) const {
        if (!m_visits)
            return;
        for (const Visit& visit : *m_visits) {
            if (!m_guard.alive())
                return;
            if (visit.guard.alive() && m_set.listsSubset(*visit.subset.set))
                act(*visit.subset.set);
        }
    }

private:
    struct Visit {
        explicit Visit(const Subset& visited) : subset(visited), guard(*visited.set) {}

        Subset subset;
        detail::LifeGuard guard;
    };

    const ParameterSet& m_set;
    detail::LifeGuard m_guard;
    /// Of guards, which cannot be moved.
    std::unique_ptr<std::deque<Visit>> m_visits;
};

} // namespace Prm

#pragma once

#include "prm/ParameterSet.h"
#include "prm/ParameterWithoutType.h"

#include <type_traits>
#include <vector>

namespace Prm {

/// Calls a visitor with the members of one list of a set, as the list was when the walk was made:
/// `ParameterWithoutType`, `BasicParameter` or `ParameterSet`. The visitor may do anything: members that are removed or
/// deleted meanwhile are skipped, those that are added are not visited, and if the set is deleted the walk ends. Owned
/// subsets are kept until the walk ends.
///
/// A visitor that descends makes another walk. Operations that call no code of a host iterate over the lists directly.
template <class Visited> class ParameterSet::SetWalk {
public:
    explicit SetWalk(const ParameterSet& set)
        : m_set(set), m_guard(set), m_visits(listOf(set).begin(), listOf(set).end()) {}

    /// The visitor takes the member and, if it can, its place in the list.
    template <class Visitor> void forEach(const Visitor& visitor) const {
        for (std::size_t place = 0; place < m_visits.size() && m_guard.alive(); ++place) {
            const Visit& visit = m_visits[place];
            if (!visit.guard.alive() || !isListed(*visit.member))
                continue;
            if constexpr (std::is_invocable_v<const Visitor&, Visited&, std::size_t>)
                visitor(*visit.member, place);
            else
                visitor(*visit.member);
        }
    }

private:
    struct Visit {
        explicit Visit(const boost::shared_ptr<ParameterWithoutType>& listed) : member(listed.get()), guard(*listed) {}
        explicit Visit(BasicParameter* listed) : member(listed), guard(*listed) {}
        explicit Visit(const Subset& listed) : member(listed.set), guard(*listed.set), owner(listed.owner) {}

        Visited* member;
        detail::LifeGuard guard;
        boost::shared_ptr<ParameterSet> owner;
    };

    static const auto& listOf(const ParameterSet& set) {
        if constexpr (std::is_same_v<Visited, ParameterWithoutType>)
            return set.parameters();
        else if constexpr (std::is_same_v<Visited, BasicParameter>)
            return set.basicParameters();
        else
            return set.listedSubsets();
    }
    bool isListed(const BasicParameter& parameter) const { return m_set.lists(parameter); }
    bool isListed(const ParameterSet& subset) const { return m_set.listsSubset(subset); }

    const ParameterSet& m_set;
    detail::LifeGuard m_guard;
    std::vector<Visit> m_visits;
};

} // namespace Prm

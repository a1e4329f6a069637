#include "prm/untyped/State.h"

#include "host/bsc/MementoUndoable.h"
#include "prm/ParameterSet.h"
#include "prm/untyped/PartialState.h"
#include "prm/untyped/Restoring.h"

#include <QDebug>
#include <QHash>
#include <QSet>

#include <algorithm>
#include <utility>

namespace Prm::detail {

bool sameVariants(const QVariant& a, const QVariant& b) {
    if (a.userType() != b.userType())
        return false;
    return a.userType() == QMetaType::Double ? a.toDouble() == b.toDouble() : a == b;
}

bool equalsState(const Bsc::MementoBase& memento, const BasicParameter& parameter) {
    const auto* const partial = dynamic_cast<const PartialState*>(&memento);
    return partial && partial->equals(parameter);
}

boost::shared_ptr<Bsc::MementoBase> presentState(const Bsc::MementoBase& memento, const BasicParameter& parameter) {
    const auto* const partial = dynamic_cast<const PartialState*>(&memento);
    return partial ? partial->present(parameter) : parameter.exportState();
}

MasterLink::MasterLink(const ParameterWithoutType& constrained)
    : m_master(constrained.masterParameter()), m_next(constrained.nextConstrained()),
      m_pending(constrained.pendingMasterParameterId()) {}

bool MasterLink::equals(const ParameterWithoutType& constrained) const {
    return constrained.masterParameter() == m_master && constrained.pendingMasterParameterId() == m_pending;
}

bool MasterLink::mayRestore(const ParameterWithoutType& constrained) const {
    if (!m_master || !m_master->wouldCloseCircle(constrained))
        return true;
    qWarning() << "Undo:" << constrained.scriptName() << "has become a master of" << m_master->scriptName()
               << "and cannot be constrained to it.";
    return false;
}

void MasterLink::restore(ParameterWithoutType& constrained) const {
    constrained.tieTo(mayRestore(constrained) ? m_master.data() : nullptr, m_next.data());
    constrained.setPendingMasterParameterId(m_pending);
}

/// Finds the parameters that a change of one leads to. It leads up to every compound that lists a changed parameter,
/// and from one that is keyed together down to all parts.
class State::Reach {
public:
    explicit Reach(BasicParameter& edited) {
        descend(edited);
        m_found.clear();
        while (!m_climbers.empty()) {
            for (BasicParameter* const changed : std::exchange(m_climbers, {}))
                climb(*changed);
        }
    }

    /// Without the edited one and its own parts.
    const std::vector<ParameterWithoutType*>& others() const { return m_found; }
    const std::vector<ParameterWithoutType*>& keyedTogether() const { return m_together; }
    /// Where all of them may change when an edit has these places.
    Places reached(Places places) const {
        if (m_compounds.isEmpty())
            return places;
        if (m_losesTimes)
            return {};
        // What a part that is not splittable changes for all views, its compound makes known for the default view.
        for (std::size_t i = m_ignoresViews ? places.size() : 0; i-- > 0;)
            places.push_back({View(View::defaultViewId()), places[i].first, places[i].last});
        return places;
    }

private:
    void climb(BasicParameter& parameter) {
        for (const Listing& listing : parameter.m_listedIn) {
            auto* const compound = dynamic_cast<ParameterWithoutType*>(listing.set);
            if (!compound || m_compounds.contains(compound))
                continue;
            m_compounds.insert(compound);
            m_climbers.push_back(compound);
            if (!compound->keyframeTogether())
                continue;
            m_together.push_back(compound);
            for (const auto& part : listing.set->parameters())
                descend(*part);
        }
    }
    void descend(BasicParameter& parameter) {
        if (m_descended.contains(&parameter))
            return;
        m_descended.insert(&parameter);
        m_climbers.push_back(&parameter);
        auto* const set = dynamic_cast<ParameterSet*>(&parameter);
        auto* const animated = set ? nullptr : qobject_cast<ParameterWithoutType*>(&parameter);
        const bool ignoresViews = animated && !animated->splittable();
        m_ignoresViews = m_ignoresViews || ignoresViews;
        // Written in one view and asked about in another one, it names the times of other keyframes to its compounds.
        m_losesTimes = m_losesTimes || (ignoresViews && animated->numViews() > 1);
        if (animated)
            m_found.push_back(animated);
        else if (set)
            for (const auto& part : set->parameters())
                descend(*part);
    }

    std::vector<ParameterWithoutType*> m_found;
    std::vector<ParameterWithoutType*> m_together;
    std::vector<BasicParameter*> m_climbers;
    QSet<const BasicParameter*> m_descended;
    QSet<const BasicParameter*> m_compounds;
    bool m_ignoresViews = false;
    bool m_losesTimes = false;
};

State::Kept State::Kept::of(BasicParameter& parameter, const Places& places) {
    if (const auto* const animated = qobject_cast<const ParameterWithoutType*>(&parameter))
        return {&parameter, animated->exportStateAround(places), {}};
    return {&parameter, parameter.exportState(), parameter.variantValue(Context(Time::INVALID), std::nothrow)};
}

bool State::Kept::equals() const {
    if (!parameter)
        return true;
    if (qobject_cast<const ParameterWithoutType*>(parameter.data()))
        return equalsState(*memento, *parameter);
    return sameVariants(value, parameter->variantValue(Context(Time::INVALID), std::nothrow));
}

State::State(BasicParameter& edited, const Places& places) : State(EditedPlaces{{&edited, places}}) {}

State::State(const EditedPlaces& edited) {
    EditedPlaces concerned;
    QHash<const BasicParameter*, std::size_t> positions;
    const auto add = [&](BasicParameter& parameter, const Places& places) {
        const std::size_t position = positions.value(&parameter, concerned.size());
        if (position == concerned.size()) {
            positions.insert(&parameter, position);
            concerned.emplace_back(&parameter, places);
            return;
        }
        Places& all = concerned[position].second;
        if (places.empty() || all.empty())
            all.clear();
        else
            all.insert(all.end(), places.begin(), places.end());
    };
    for (const auto& [parameter, places] : edited) {
        const Reach reach(*parameter);
        const Places reached = reach.reached(places);
        add(*parameter, reached);
        for (ParameterWithoutType* const other : reach.others())
            add(*other, reached);
    }
    for (const auto& [parameter, places] : concerned)
        m_kept.push_back(Kept::of(*parameter, places));
}

std::vector<ParameterWithoutType*> State::keyedTogether(BasicParameter& edited) {
    return Reach(edited).keyedTogether();
}

State State::withMaster(ParameterWithoutType& edited) {
    State state(edited, {});
    state.m_link.emplace(edited);
    return state;
}

State State::present() const {
    State now;
    for (const Kept& kept : m_kept) {
        if (kept.parameter)
            now.m_kept.push_back({kept.parameter, presentState(*kept.memento, *kept.parameter), {}});
    }
    if (m_link && m_kept.front().parameter)
        now.m_link.emplace(*qobject_cast<ParameterWithoutType*>(m_kept.front().parameter.data()));
    return now;
}

bool State::equals() const {
    const auto* const edited = qobject_cast<const ParameterWithoutType*>(m_kept.front().parameter.data());
    return (!m_link || !edited || m_link->equals(*edited)) &&
           std::all_of(m_kept.begin(), m_kept.end(), [](const Kept& kept) { return kept.equals(); });
}

void State::forgetUnchanged() {
    m_kept.erase(std::remove_if(m_kept.begin() + 1, m_kept.end(), [](const Kept& kept) { return kept.equals(); }),
                 m_kept.end());
}

std::vector<const BasicParameter*> State::parameters() const {
    std::vector<const BasicParameter*> all;
    for (const Kept& kept : m_kept) {
        if (kept.parameter)
            all.push_back(kept.parameter.data());
        if (const auto* const compound = dynamic_cast<const ParameterSet*>(kept.parameter.data()))
            compound->forEachParameterAndPart([&](const ParameterWithoutType* part) { all.push_back(part); });
    }
    return all;
}

void State::putBack() const {
    FirstException first;
    for (const Kept& kept : m_kept) {
        if (!kept.parameter)
            continue;
        first.during([&] {
            if (m_link && &kept == &m_kept.front())
                m_link->restore(*qobject_cast<ParameterWithoutType*>(kept.parameter.data()));
            Bsc::importState(*kept.parameter, kept.memento, true);
        });
    }
    first.goOn();
}

} // namespace Prm::detail

// The state of a set and of all below it, taken and put back.

#include "prm/BasicParameter.h"
#include "prm/ParameterSet.h"
#include "prm/ParameterWithoutType.h"
#include "prm/set/SetWalk.h"

#include <QPointer>
#include <boost/make_shared.hpp>

#include <map>
#include <stdexcept>
#include <typeinfo>
#include <utility>

namespace Prm {

namespace {

/// Distinguishes a member from a later one at the same address: parameters are guarded, sets numbered.
struct Identity {
    QPointer<const QObject> parameter;
    quint64 setNumber = 0;

    friend bool operator==(const Identity& a, const Identity& b) {
        return a.parameter == b.parameter && a.setNumber == b.setNumber && (a.parameter || a.setNumber != 0);
    }
};

struct MemberState {
    Identity identity;
    boost::shared_ptr<Bsc::MementoBase> snapshot;
};

} // namespace

class ParameterSet::MementoImpl : public Bsc::MementoBase {
public:
    explicit MementoImpl(const ParameterSet& set)
        : scriptName(set.m_scriptName), name(set.m_name), displayName(set.m_displayName) {
        for (const auto& parameter : set.parameters())
            add(*parameter, {parameter.get(), 0});
        for (const BasicParameter* parameter : set.basicParameters())
            add(*parameter, {parameter, 0});
        for (const Subset& subset : set.listedSubsets())
            add(*subset.set, {nullptr, subset.set->m_number});
    }

    /// Throws where the member was not there when the snapshot was taken.
    const boost::shared_ptr<Bsc::MementoBase>& stateOf(const Bsc::MementoUndoable& member,
                                                       const Identity& identity) const {
        const auto found = m_memberStates.find(&member);
        if (found == m_memberStates.end() || !(found->second.identity == identity))
            throw std::logic_error("Failed to restore object state");
        return found->second.snapshot;
    }

    const QString scriptName;
    const QString name;
    const QString displayName;

private:
    void add(const Bsc::MementoUndoable& member, const Identity& identity) {
        m_memberStates[&member] = {identity, member.exportState()};
    }

    /// By the members' addresses, which are only compared.
    std::map<const Bsc::MementoUndoable*, MemberState> m_memberStates;
};

boost::shared_ptr<Bsc::MementoBase> ParameterSet::exportState() const {
    return boost::make_shared<MementoImpl>(*this);
}

void ParameterSet::doImportState(boost::shared_ptr<Bsc::MementoBase> snapshot) {
    const auto* const memento = dynamic_cast<const MementoImpl*>(snapshot.get());
    if (!memento)
        throw std::bad_cast();
    takeNames(memento->scriptName, memento->name, memento->displayName);
    // Observers of one member's state may add members, which are not visited, and remove or destroy others and this
    // set.
    const SetWalk<ParameterWithoutType> animated(*this);
    const SetWalk<BasicParameter> basic(*this);
    const SetWalk<ParameterSet> below(*this);
    const auto restoreParameter = [&](BasicParameter& parameter) {
        Bsc::importState(parameter, memento->stateOf(parameter, {&parameter, 0}));
    };
    animated.forEach(restoreParameter);
    basic.forEach(restoreParameter);
    below.forEach([&](ParameterSet& subset) {
        Bsc::importState(subset, memento->stateOf(subset, {nullptr, subset.m_number}));
    });
}

/// Without the rules for new names.
void ParameterSet::takeNames(const QString& scriptName, const QString& name, const QString& displayName) {
    takeScriptName(scriptName);
    m_name = name;
    m_displayName = displayName;
}

} // namespace Prm

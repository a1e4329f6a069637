// Finding and visiting the members of a set.

#include "prm/MovedParameter.h"
#include "prm/ParameterSet.h"
#include "prm/ParameterWithoutType.h"

#include <QDebug>
#include <QHash>
#include <QPointer>

#include <algorithm>
#include <vector>

namespace Prm {

ParameterWithoutType* ParameterSet::ownAnimatedParameter(const QString& name) const {
    const auto found = std::find_if(m_parameters.begin(), m_parameters.end(),
                                    [&](const auto& parameter) { return parameter->scriptName() == name; });
    return found == m_parameters.end() ? nullptr : found->get();
}

/// A moved parameter is found only when no other member has the name.
BasicParameter* ParameterSet::ownParameter(const QString& name) const {
    if (ParameterWithoutType* animated = ownAnimatedParameter(name))
        return animated;
    BasicParameter* moved = nullptr;
    for (BasicParameter* parameter : m_basicParameters) {
        if (parameter->scriptName() != name)
            continue;
        if (!dynamic_cast<MovedParameter*>(parameter))
            return parameter;
        moved = moved ? moved : parameter;
    }
    return moved;
}

ParameterSet* ParameterSet::ownSubset(const QString& name) const {
    const auto found = std::find_if(m_subsets.begin(), m_subsets.end(),
                                    [&](const Subset& subset) { return subset.set->scriptName() == name; });
    return found == m_subsets.end() ? nullptr : found->set;
}

/// Own members first, then the rest of a dotted path below the subsets and compounds whose names begin it. What several
/// sets list is not looked through twice for the same rest.
template <class Result, class Own>
Result* ParameterSet::find(const QString& name, const Own& own, Searched& searched) const {
    if (Result* result = own(*this, name))
        return result;
    const auto findBelow = [&](const ParameterSet* set, const QString& setName, bool isShared) -> Result* {
        const bool leads = set && !setName.isEmpty() && name.size() > setName.size() &&
                           name.at(setName.size()) == QLatin1Char('.') && name.startsWith(setName);
        if (!leads)
            return nullptr;
        const Searched::value_type place(set, name.size() - setName.size());
        if (isShared && searched.contains(place))
            return nullptr;
        if (isShared)
            searched.insert(place);
        return set->find<Result>(name.mid(setName.size() + 1), own, searched);
    };
    for (const Subset& subset : m_subsets) {
        if (Result* result = findBelow(subset.set, subset.set->scriptName(), subset.set->m_parents.size() > 1))
            return result;
    }
    for (const auto& parameter : m_parameters) {
        if (Result* result = findBelow(dynamic_cast<const ParameterSet*>(parameter.get()), parameter->scriptName(),
                                       parameter->m_listedIn.size() > 1))
            return result;
    }
    return nullptr;
}

BasicParameter* ParameterSet::findParameter(const QString& name) const {
    Searched searched;
    return find<BasicParameter>(
        name, [](const ParameterSet& set, const QString& own) { return set.ownParameter(own); }, searched);
}

ParameterWithoutType* ParameterSet::findAnimatedParameter(const QString& name) const {
    Searched searched;
    return find<ParameterWithoutType>(
        name, [](const ParameterSet& set, const QString& own) { return set.ownAnimatedParameter(own); }, searched);
}

ParameterSet* ParameterSet::findSubset(const QString& name) const {
    Searched searched;
    return find<ParameterSet>(
        name, [](const ParameterSet& set, const QString& own) { return set.ownSubset(own); }, searched);
}

/// Whether a subset that was listed before a call out still is; its address alone may be asked about.
bool ParameterSet::stillLists(const ParameterSet* subset, quint32 membership) const {
    return m_membership == membership ||
           std::any_of(m_subsets.begin(), m_subsets.end(), [=](const Subset& entry) { return entry.set == subset; });
}

void ParameterSet::forEachParameter(boost::function<void(ParameterWithoutType*)> function, bool recursive) const {
    const detail::LifeGuard guard(*this);
    std::vector<QPointer<ParameterWithoutType>> parameters;
    parameters.reserve(m_parameters.size());
    for (const auto& parameter : m_parameters)
        parameters.emplace_back(parameter.get());
    for (const auto& parameter : parameters) {
        if (!guard.alive())
            return;
        if (parameter && parameter->isListedIn(this))
            function(parameter.data());
    }
    if (!recursive || !guard.alive())
        return;
    const std::vector<Subset> below = m_subsets;
    const quint32 membership = m_membership;
    for (const Subset& subset : below) {
        if (!guard.alive())
            return;
        if (stillLists(subset.set, membership))
            subset.set->forEachParameter(function, true);
    }
}

void ParameterSet::forEachParameterAndPart(const boost::function<void(ParameterWithoutType*)>& function) const {
    forEachParameter(
        [&](ParameterWithoutType* parameter) {
            const QPointer<ParameterWithoutType> visited(parameter);
            function(parameter);
            if (const auto* const compound = dynamic_cast<const ParameterSet*>(visited.data()))
                compound->forEachParameterAndPart(function);
        },
        true);
}

void ParameterSet::forEachSubset(boost::function<void(ParameterSet*)> function, bool recursive) {
    const detail::LifeGuard guard(*this);
    const std::vector<Subset> below = m_subsets;
    const quint32 membership = m_membership;
    for (const Subset& subset : below) {
        if (!guard.alive())
            return;
        if (!stillLists(subset.set, membership))
            continue;
        function(subset.set);
        if (recursive && guard.alive() && stillLists(subset.set, membership))
            subset.set->forEachSubset(function, true);
    }
}

void ParameterSet::attachObserver(const QObject* observer, const char* slot, bool recursive) const {
    forEachParameter([=](ParameterWithoutType* parameter) { parameter->attachObserver(observer, slot); }, recursive);
}

void ParameterSet::detachObserver(const QObject* observer, bool recursive) const {
    forEachParameter([=](ParameterWithoutType* parameter) { parameter->detachObserver(observer); }, recursive);
}

void ParameterSet::detachAllObservers(bool recursive) const {
    forEachParameter([](ParameterWithoutType* parameter) { parameter->detachAllObservers(); }, recursive);
}

void ParameterSet::AttachCommandRegistrationObserver(QObject* observer, const char* slot, bool recursive) {
    forEachParameter(
        [=](ParameterWithoutType* parameter) { parameter->AttachCommandRegistrationObserver(observer, slot); },
        recursive);
}

void ParameterSet::DetachCommandRegistrationObserver(QObject* observer, bool recursive) {
    forEachParameter([=](ParameterWithoutType* parameter) { parameter->DetachCommandRegistrationObserver(observer); },
                     recursive);
}

void ParameterSet::assignNamePrefixes(const QString& prefix) {
    QString path = prefix;
    assignGrowingPrefix(path);
}

/// Leaves the path as it was: a deep tree does not copy it at every level.
void ParameterSet::assignGrowingPrefix(QString& path) {
    const int length = path.size();
    if (length > 0 && !m_scriptName.isEmpty())
        path += QLatin1Char('.');
    path += m_scriptName;
    for (const auto& parameter : m_parameters) {
        parameter->setNamePrefix(path);
        if (auto* const compound = dynamic_cast<ParameterSet*>(parameter.get()))
            compound->assignGrowingPrefix(path);
    }
    for (const Subset& subset : m_subsets)
        subset.set->assignGrowingPrefix(path);
    path.resize(length);
}

int ParameterSet::resolveMasterParameters(const boost::function<ParameterWithoutType*(const QString&)>& find) {
    QHash<QString, ParameterWithoutType*> byName;
    std::vector<ParameterWithoutType*> waiting;
    forEachParameterAndPart([&](ParameterWithoutType* parameter) {
        byName.insert(parameter->extendedName(), parameter);
        if (!parameter->pendingMasterParameterId().isEmpty())
            waiting.push_back(parameter);
    });
    int unresolved = 0;
    for (ParameterWithoutType* parameter : waiting) {
        const QString id = parameter->pendingMasterParameterId();
        ParameterWithoutType* const master = find ? find(id) : byName.value(id);
        const bool tied =
            master && (parameter->masterParameter() == master || master->bAddConstrainedParameter(parameter));
        if (tied) {
            parameter->setPendingMasterParameterId({});
        } else {
            ++unresolved;
            qWarning() << "ParameterSet: the master" << id << "of" << parameter->extendedName() << "was not found.";
        }
    }
    return unresolved;
}

} // namespace Prm

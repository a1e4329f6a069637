// Visiting the members of a set.

#include "prm/ParameterSet.h"
#include "prm/ParameterWithoutType.h"
#include "prm/set/SetWalk.h"

#include <QDebug>
#include <QHash>
#include <QPointer>

#include <vector>

namespace Prm {

void ParameterSet::forEachParameter(boost::function<void(ParameterWithoutType*)> function, bool recursive) const {
    const detail::LifeGuard guard(*this);
    SetWalk<ParameterWithoutType>(*this).forEach([&](ParameterWithoutType& parameter) { function(&parameter); });
    if (recursive && guard.alive())
        SetWalk<ParameterSet>(*this).forEach([&](ParameterSet& subset) { subset.forEachParameter(function, true); });
}

void ParameterSet::forEachParameterAndPart(const boost::function<void(ParameterWithoutType*)>& function,
                                           bool recursive) const {
    forEachParameter(
        [&](ParameterWithoutType* parameter) {
            const QPointer<ParameterWithoutType> visited(parameter);
            function(parameter);
            if (const auto* const compound = dynamic_cast<const ParameterSet*>(visited.data()))
                compound->forEachParameterAndPart(function);
        },
        recursive);
}

void ParameterSet::forEachBasicParameter(const boost::function<void(BasicParameter*)>& function, bool recursive) const {
    const detail::LifeGuard guard(*this);
    SetWalk<ParameterWithoutType>(*this).forEach([&](ParameterWithoutType& parameter) {
        const QPointer<ParameterWithoutType> visited(&parameter);
        function(&parameter);
        if (const auto* const compound = dynamic_cast<const ParameterSet*>(visited.data()))
            compound->forEachBasicParameter(function);
    });
    if (guard.alive())
        SetWalk<BasicParameter>(*this).forEach([&](BasicParameter& parameter) { function(&parameter); });
    if (recursive && guard.alive())
        SetWalk<ParameterSet>(*this).forEach([&](ParameterSet& subset) { subset.forEachBasicParameter(function); });
}

std::vector<ParameterSet::Member> ParameterSet::members() const {
    std::vector<Member> all;
    for (const auto& parameter : parameters())
        all.push_back({parameter.get(), nullptr});
    for (BasicParameter* parameter : basicParameters())
        all.push_back({parameter, nullptr});
    for (const Subset& subset : listedSubsets())
        all.push_back({nullptr, subset.set});
    return all;
}

void ParameterSet::forEachSubset(boost::function<void(ParameterSet*)> function, bool recursive) {
    const detail::LifeGuard guard(*this);
    SetWalk<ParameterSet>(*this).forEach([&](ParameterSet& subset) {
        const detail::LifeGuard subsetGuard(subset);
        function(&subset);
        if (recursive && guard.alive() && subsetGuard.alive() && listsSubset(subset))
            subset.forEachSubset(function, true);
    });
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

/// Twice attached, an observer would be given each command twice, and own it twice.
void ParameterSet::AttachCommandRegistrationObserver(QObject* observer, const char* slot, bool recursive) {
    QSet<const ParameterWithoutType*> reached;
    forEachParameterAndPart(
        [&](ParameterWithoutType* parameter) {
            if (reached.contains(parameter))
                return;
            reached.insert(parameter);
            parameter->AttachCommandRegistrationObserver(observer, slot);
        },
        recursive);
}

void ParameterSet::DetachCommandRegistrationObserver(QObject* observer, bool recursive) {
    forEachParameterAndPart(
        [=](ParameterWithoutType* parameter) { parameter->DetachCommandRegistrationObserver(observer); }, recursive);
}

void ParameterSet::assignNamePrefixes(const QString& prefix) {
    const bool isJoined = !prefix.isEmpty() && !m_scriptName.isEmpty();
    const QString path = isJoined ? prefix + QLatin1Char('.') + m_scriptName : prefix + m_scriptName;
    for (const auto& parameter : parameters()) {
        // One that is right keeps its memory, so that a save that fails changes nothing.
        if (parameter->namePrefix() != path)
            parameter->setNamePrefix(path);
        if (auto* const compound = dynamic_cast<ParameterSet*>(parameter.get()))
            compound->assignNamePrefixes(path);
    }
    for (const Subset& subset : listedSubsets())
        subset.set->assignNamePrefixes(path);
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
        ParameterWithoutType* const master = find ? find(id) : byName.value(id, byName.value(QLatin1Char('.') + id));
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

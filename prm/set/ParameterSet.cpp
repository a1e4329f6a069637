#include "prm/ParameterSet.h"

#include "prm/ParameterWithoutType.h"
#include "prm/set/NameIndex.h"
#include "prm/set/SetWalk.h"

#include <QCoreApplication>
#include <QDebug>

#include <algorithm>
#include <atomic>
#include <utility>

namespace Prm {

namespace {

/// Then one more element cannot fail.
template <class Vector> void makeRoom(Vector& vector) {
    if (vector.size() == vector.capacity())
        vector.reserve(2 * vector.size() + 1);
}

template <class Vector> void freeLastToFirst(Vector& vector) {
    while (!vector.empty())
        vector.pop_back();
}

void keep(ParameterWithoutType*) {}

} // namespace

ParameterSet::ParameterSet(const QString& name, ParameterTree* tree) : m_tree(tree) {
    ParameterSet::assignName(name);
    ParameterSet::setScriptName(name);
}

ParameterSet::ParameterSet(const ParameterSet& other)
    : Bsc::MementoUndoable(other), detail::Mortal(other), m_scriptName(other.m_scriptName), m_name(other.m_name),
      m_displayName(other.m_displayName), m_tree(nullptr) {
    copyMembersFrom(other);
}

ParameterSet& ParameterSet::operator=(const ParameterSet& other) {
    if (this == &other)
        return *this;
    // A copy: the other may be among the members, and what leaves may delete it.
    const ParameterSet source(other);
    const detail::LifeGuard guard(*this);
    clearAllLists();
    if (!guard.alive())
        return *this;
    setScriptName(source.m_scriptName);
    m_name = source.m_name;
    m_displayName = source.m_displayName;
    copyMembersFrom(source);
    if (m_tree)
        SetWalk<ParameterSet>(*this).forEach([this](ParameterSet& subset) { joinTree(subset); });
    return *this;
}

ParameterSet::~ParameterSet() {
    notifySubtreeRemoved(this);
    exchangeTree(m_tree, nullptr);
    while (!m_parents.isEmpty())
        m_parents.last().set->removeSubset(*this);
    // Members that are deleted may add others.
    while (hasMembers())
        releaseMembers();
}

quint64 ParameterSet::nextNumber() {
    static std::atomic<quint64> last{0};
    return ++last;
}

void ParameterSet::copyMembersFrom(const ParameterSet& other) {
    try {
        for (const auto& parameter : other.parameters())
            listParameter(parameter);
        for (BasicParameter* parameter : other.basicParameters())
            addBasicParameter(*parameter);
        for (const Subset& subset : other.listedSubsets()) {
            if (subset.set->isOrContains(*this))
                continue;
            makeRoom(m_subsets);
            subset.set->m_parents.add({this, Subsets, static_cast<int>(m_subsets.size())});
            m_subsets.push_back(subset);
            ++m_membership;
            learn(Subsets, subset.set);
        }
    } catch (...) {
        // A constructor that throws has no destructor: the members must not remember a set that is gone.
        releaseMembers();
        throw;
    }
}

/// Removes all members before any of them is deleted, because a deletion may call back, and delete this set. Allocates
/// nothing, because the destructor calls it.
void ParameterSet::releaseMembers() {
    auto parameters = std::exchange(m_parameters, {});
    const auto basicParameters = std::exchange(m_basicParameters, {});
    auto owned = std::exchange(m_ownedBasicParameters, {});
    auto subsets = std::exchange(m_subsets, {});
    for (const auto& parameter : parameters) {
        if (parameter)
            delist(*parameter);
    }
    for (BasicParameter* parameter : basicParameters) {
        if (parameter)
            delist(*parameter);
    }
    for (const Subset& subset : subsets) {
        if (subset.set)
            subset.set->m_parents.remove(this);
    }
    for (std::atomic<int>& holes : m_holes)
        holes.store(0);
    m_names.reset();
    ++m_membership;
    // From here on this set may be gone.
    freeLastToFirst(parameters);
    freeLastToFirst(owned);
    freeLastToFirst(subsets);
}

void ParameterSet::delist(BasicParameter& parameter) {
    parameter.m_listedIn.remove(this);
    if (parameter.m_parentSet == this)
        parameter.m_parentSet = nullptr;
}

void ParameterSet::setDisplayName(const QString& name) {
    setDisplayName(name, name);
}

void ParameterSet::setDisplayName(const QString& name, const QString& displayName) {
    m_name = name;
    m_displayName = displayName;
}

void ParameterSet::assignName(const QString& name) {
    if (name == m_name)
        return;
    m_displayName = QCoreApplication::translate("Parameter", name.toUtf8().constData());
    m_name = name;
}

void ParameterSet::addParameter(const boost::shared_ptr<ParameterWithoutType>& parameter) {
    if (parameter)
        listParameter(parameter);
}

void ParameterSet::addParameter(ParameterWithoutType& parameter) {
    listParameter(boost::shared_ptr<ParameterWithoutType>(&parameter, keep));
}

void ParameterSet::listParameter(const boost::shared_ptr<ParameterWithoutType>& parameter) {
    if (parameter->isListedIn(this))
        return;
    const auto* const compound = dynamic_cast<const ParameterSet*>(parameter.get());
    if (compound && compound->isOrContains(*this)) {
        qWarning() << "ParameterSet:" << parameter->scriptName() << "contains" << m_scriptName
                   << "and cannot be added to it.";
        return;
    }
    makeRoom(m_parameters);
    enlist(*parameter, Parameters);
    m_parameters.push_back(parameter);
    learn(Parameters, addressOf(parameter));
}

bool ParameterSet::lists(const BasicParameter& parameter) const {
    return parameter.isListedIn(this);
}

void ParameterSet::enlist(BasicParameter& parameter, int list) {
    parameter.m_listedIn.add({this, list, lengthOf(list)});
    ++m_membership;
    if (!parameter.m_parentSet)
        parameter.m_parentSet = this;
}

void ParameterSet::addSplittableParameter(ParameterWithoutType& parameter, const View& view) {
    addParameter(parameter);
    parameter.setSplittable(true);
    parameter.initialiseHeroView(view, View(View::defaultViewId()));
}

void ParameterSet::addBasicParameter(BasicParameter& parameter) {
    if (parameter.isListedIn(this))
        return;
    makeRoom(m_basicParameters);
    enlist(parameter, BasicParameters);
    m_basicParameters.push_back(&parameter);
    learn(BasicParameters, &parameter);
}

void ParameterSet::adoptBasicParameter(std::unique_ptr<BasicParameter> parameter) {
    if (!parameter)
        return;
    boost::shared_ptr<BasicParameter> owner(std::move(parameter));
    makeRoom(m_ownedBasicParameters);
    addBasicParameter(*owner);
    m_ownedBasicParameters.push_back(std::move(owner));
}

void ParameterSet::clearAllLists() {
    const detail::LifeGuard guard(*this);
    const auto isInTree = [this](const Subset& subset) { return subset.set->m_tree == m_tree; };
    // Those as well that come while the tree is notified of others.
    while (guard.alive() && m_tree && std::any_of(listedSubsets().begin(), listedSubsets().end(), isInTree)) {
        SetWalk<ParameterSet>(*this).forEach([&](ParameterSet& subset) {
            if (subset.m_tree != m_tree)
                return;
            const detail::LifeGuard subsetGuard(subset);
            notifySubtreeRemoved(&subset);
            if (guard.alive() && subsetGuard.alive() && listsSubset(subset))
                subset.exchangeTree(m_tree, nullptr);
        });
    }
    while (guard.alive() && hasMembers())
        releaseMembers();
}

} // namespace Prm

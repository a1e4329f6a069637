#include "prm/ParameterSet.h"

#include "prm/ParameterWithoutType.h"

#include <QCoreApplication>
#include <QDebug>

#include <algorithm>
#include <atomic>
#include <utility>

namespace Prm {

namespace {

/// Erases the one that passes the test, looked for from the end: members mostly die in the opposite order of their
/// addition.
template <class Vector, class Test> void eraseLast(Vector& vector, const Test& test) {
    const auto found = std::find_if(vector.rbegin(), vector.rend(), test);
    if (found != vector.rend())
        vector.erase(found.base() - 1);
}

/// Then one more element cannot fail.
template <class Vector> void makeRoom(Vector& vector) {
    if (vector.size() == vector.capacity())
        vector.reserve(2 * vector.size() + 1);
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
    // The other may be among the members.
    const ParameterSet source(other);
    letGoOfMembers();
    setScriptName(source.m_scriptName);
    m_name = source.m_name;
    m_displayName = source.m_displayName;
    copyMembersFrom(source);
    return *this;
}

ParameterSet::~ParameterSet() {
    notifySubtreeRemoved(this);
    exchangeTree(m_tree, nullptr);
    const std::vector<ParameterSet*> parents = std::move(m_parents);
    for (ParameterSet* parent : parents)
        parent->forgetSubset(this);
    letGoOfMembers();
}

quint64 ParameterSet::nextNumber() {
    static std::atomic<quint64> last{0};
    return ++last;
}

void ParameterSet::copyMembersFrom(const ParameterSet& other) {
    try {
        for (const auto& parameter : other.m_parameters)
            listParameter(parameter);
        for (BasicParameter* parameter : other.m_basicParameters)
            addBasicParameter(*parameter);
        m_subsetNamesKnown = false;
        for (const Subset& subset : other.m_subsets) {
            if (subset.set->isOrContains(*this))
                continue;
            makeRoom(m_subsets);
            subset.set->m_parents.push_back(this);
            m_subsets.push_back(subset);
        }
    } catch (...) {
        // A constructor that throws has no destructor: the members must not remember a set that is gone.
        letGoOfMembers();
        throw;
    }
}

/// Owned subsets below are let go one after the other, so that a deep tree does not need a deep stack; and without
/// asking for memory, for this is what a destructor does.
void ParameterSet::letGoOfMembers() {
    while (!m_parameters.empty()) {
        const auto parameter = std::move(m_parameters.back());
        m_parameters.pop_back();
        delist(*parameter);
    }
    while (!m_basicParameters.empty()) {
        BasicParameter* const parameter = m_basicParameters.back();
        m_basicParameters.pop_back();
        delist(*parameter);
    }
    while (!m_ownedBasicParameters.empty())
        m_ownedBasicParameters.pop_back();
    boost::shared_ptr<ParameterSet> dying;
    letGoOfSubsets(dying);
    while (dying) {
        const boost::shared_ptr<ParameterSet> subset = std::move(dying);
        dying = std::move(subset->m_nextDying);
        if (subset.use_count() == 1)
            subset->letGoOfSubsets(dying);
    }
    m_subsetNames.clear();
    m_takenNumbers.clear();
    m_subsetNamesKnown = true;
}

/// Puts those that nobody else owns in front of the list.
void ParameterSet::letGoOfSubsets(boost::shared_ptr<ParameterSet>& dying) {
    std::vector<Subset> leaving;
    leaving.swap(m_subsets);
    ++m_membership;
    m_subsetNamesKnown = false;
    for (Subset& subset : leaving) {
        subset.set->forgetParent(this);
        if (subset.owner.use_count() != 1)
            continue;
        subset.owner->m_nextDying = std::move(dying);
        dying = std::move(subset.owner);
    }
}

void ParameterSet::delist(BasicParameter& parameter) {
    parameter.m_listedIn.removeOne(this);
    if (parameter.m_parentSet == this)
        parameter.m_parentSet = nullptr;
}

void ParameterSet::forgetParent(const ParameterSet* parent) {
    const auto found = std::find(m_parents.begin(), m_parents.end(), parent);
    if (found != m_parents.end())
        m_parents.erase(found);
}

/// Nothing of the member is left but its address.
void ParameterSet::forgetDeadMember(const BasicParameter* parameter) {
    eraseLast(m_parameters, [=](const auto& member) { return member.get() == parameter; });
    eraseLast(m_basicParameters, [=](const BasicParameter* member) { return member == parameter; });
}

void ParameterSet::forgetSubset(const ParameterSet* subset) {
    eraseLast(m_subsets, [=](const Subset& entry) { return entry.set == subset; });
    ++m_membership;
    m_subsetNamesKnown = false;
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
    enlist(*parameter);
    m_parameters.push_back(parameter);
}

bool ParameterSet::lists(const BasicParameter& parameter) const {
    return parameter.isListedIn(this);
}

void ParameterSet::enlist(BasicParameter& parameter) {
    parameter.m_listedIn.append(this);
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
    enlist(parameter);
    m_basicParameters.push_back(&parameter);
}

void ParameterSet::adoptBasicParameter(std::unique_ptr<BasicParameter> parameter) {
    if (!parameter)
        return;
    makeRoom(m_ownedBasicParameters);
    addBasicParameter(*parameter);
    m_ownedBasicParameters.push_back(std::move(parameter));
}

void ParameterSet::clearAllLists() {
    const detail::LifeGuard guard(*this);
    // Those as well that come while the tree is told of others.
    for (auto leaving = subsetsInTree(); !leaving.empty(); leaving = subsetsInTree()) {
        const quint32 membership = m_membership;
        for (ParameterSet* subset : leaving) {
            if (!stillLists(subset, membership))
                continue;
            notifySubtreeRemoved(subset);
            if (!guard.alive())
                return;
            if (stillLists(subset, membership))
                subset->exchangeTree(m_tree, nullptr);
        }
    }
    letGoOfMembers();
}

std::vector<ParameterSet*> ParameterSet::subsetsInTree() const {
    std::vector<ParameterSet*> sets = m_tree ? subsets() : std::vector<ParameterSet*>();
    const auto isElsewhere = [this](const ParameterSet* subset) { return subset->m_tree != m_tree; };
    sets.erase(std::remove_if(sets.begin(), sets.end(), isElsewhere), sets.end());
    return sets;
}

} // namespace Prm

// The tree of sets: subsets, and how the host is notified of them.

#include "prm/ParameterSet.h"
#include "prm/ParameterWithoutType.h"

#include <QDebug>

#include <algorithm>
#include <typeinfo>
#include <utility>

namespace Prm {

std::vector<ParameterSet*> ParameterSet::subsets() const {
    std::vector<ParameterSet*> sets;
    sets.reserve(m_subsets.size());
    for (const Subset& subset : listedSubsets())
        sets.push_back(subset.set);
    return sets;
}

bool ParameterSet::isOrContains(const ParameterSet& set) const {
    QSet<const ParameterSet*> shared;
    return &set == this || (!(m_subsets.empty() && m_parameters.empty()) && isOrIsAbove(set, shared));
}

/// Asked upwards: there are few sets above one, but there may be many below. A set that is a parameter as well is below
/// those that list it as that. What several sets list is asked about once.
bool ParameterSet::isOrIsAbove(const ParameterSet& set, QSet<const ParameterSet*>& shared) const {
    if (&set == this)
        return true;
    const auto* const parameter = dynamic_cast<const BasicParameter*>(&set);
    const detail::Listings& listed = parameter ? parameter->m_listedIn : detail::Listings();
    if (set.m_parents.size() + listed.size() > 1) {
        if (shared.contains(&set))
            return false;
        shared.insert(&set);
    }
    const auto leadsHere = [&](const detail::Listing& above) { return isOrIsAbove(*above.set, shared); };
    return std::any_of(set.m_parents.begin(), set.m_parents.end(), leadsHere) ||
           std::any_of(listed.begin(), listed.end(), leadsHere);
}

void ParameterSet::setScriptName(const QString& name) {
    const QLatin1Char underscore('_');
    QString allowed = name;
    allowed.replace(QLatin1Char(' '), underscore)
        .replace(QLatin1Char('\''), underscore)
        .replace(QLatin1Char('.'), underscore);
    takeScriptName(allowed);
}

QString ParameterSet::path() const {
    const auto* const parameter = dynamic_cast<const BasicParameter*>(this);
    if (parameter && m_parents.isEmpty())
        return parameter->path();
    const QString above = m_parents.isEmpty() ? QString() : m_parents.begin()->set->path();
    const bool isJoined = !above.isEmpty() && !m_scriptName.isEmpty();
    return isJoined ? above + QLatin1Char('.') + m_scriptName : above + m_scriptName;
}

void ParameterSet::takeScriptName(const QString& name) {
    const QString former = std::exchange(m_scriptName, name);
    for (const detail::Listing& parent : m_parents) {
        parent.set->relearn(Subsets, this);
        parent.set->freeName(former);
    }
}

bool ParameterSet::listSubset(ParameterSet& subset, const boost::shared_ptr<ParameterSet>& owner,
                              std::size_t position) {
    if (listsSubset(subset))
        return false;
    if (subset.isOrContains(*this)) {
        qWarning() << "ParameterSet: the set" << subset.scriptName() << "contains" << m_scriptName
                   << "and cannot be added to it.";
        return false;
    }
    if (subset.scriptName().isEmpty())
        qWarning() << "ParameterSet: a subset without a script name was added to" << m_scriptName;
    giveUniqueName(subset);
    if (position < m_subsets.size())
        closeHoles(Subsets);
    // All that may fail comes before the first change.
    if (m_subsets.size() == m_subsets.capacity())
        m_subsets.reserve(2 * m_subsets.size() + 1);
    const auto place = static_cast<std::ptrdiff_t>(std::min(position, m_subsets.size()));
    subset.m_parents.add({this, Subsets, static_cast<int>(place)});
    m_subsets.insert(m_subsets.begin() + place, Subset{&subset, owner});
    ++m_membership;
    learn(Subsets, &subset);
    joinTree(subset);
    return true;
}

void ParameterSet::joinTree(ParameterSet& subset) {
    if (m_tree && subset.m_tree != m_tree)
        subset.changeParameterTree(subset.m_tree, m_tree);
    else
        notifySubtreeAdded(&subset);
}

bool ParameterSet::addParameterSet(const boost::shared_ptr<ParameterSet>& subset) {
    return subset && listSubset(*subset, subset, m_subsets.size());
}

bool ParameterSet::addParameterSet(ParameterSet& subset) {
    return listSubset(subset, nullptr, m_subsets.size());
}

bool ParameterSet::insertParameterSet(const boost::shared_ptr<ParameterSet>& subset, int position) {
    return subset && listSubset(*subset, subset, static_cast<std::size_t>(std::max(position, 0)));
}

bool ParameterSet::removeParameterSet(const boost::shared_ptr<ParameterSet>& subset) {
    // The argument may be of a list that changes now. NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const boost::shared_ptr<ParameterSet> leaving = subset;
    return leaving && unlistSubset(*leaving);
}

bool ParameterSet::unlistSubset(ParameterSet& subset) {
    if (!listsSubset(subset))
        return false;
    const detail::LifeGuard guard(*this);
    const detail::LifeGuard subsetGuard(subset);
    notifySubtreeRemoved(&subset);
    if (!guard.alive() || !subsetGuard.alive() || !listsSubset(subset))
        return true;
    removeSubset(subset);
    subset.exchangeTree(m_tree, nullptr);
    return true;
}

void ParameterSet::exchangeTree(ParameterTree* from, ParameterTree* to) {
    if (from == to || m_tree != from)
        return;
    m_tree = to;
    for (const Subset& subset : listedSubsets())
        subset.set->exchangeTree(from, to);
}

void ParameterSet::changeParameterTree(ParameterTree* from, ParameterTree* to) {
    if (m_tree != from || from == to)
        return;
    const detail::LifeGuard guard(*this);
    if (from)
        from->subtreeRemoved(this);
    if (!guard.alive() || m_tree != from)
        return;
    exchangeTree(from, to);
    if (to)
        to->subtreeAdded(this);
}

void ParameterSet::notifySubtreeAdded(ParameterSet* subset) {
    if (m_tree)
        m_tree->subtreeAdded(subset);
}

void ParameterSet::notifySubtreeRemoved(ParameterSet* subset) {
    if (m_tree)
        m_tree->subtreeRemoved(subset);
}

} // namespace Prm

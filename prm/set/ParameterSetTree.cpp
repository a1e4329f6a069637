// The tree of sets: subsets, their names, and who is told of them.

#include "prm/ParameterSet.h"
#include "prm/ParameterWithoutType.h"

#include <QDebug>

#include <algorithm>
#include <typeinfo>
#include <utility>

namespace Prm {

namespace {

/// A script name taken apart for counting: "Blur_2" is "Blur", "_" and 2.
struct CountedName {
    explicit CountedName(const QString& name) {
        int digits = name.size();
        while (digits > 0 && name.at(digits - 1) >= QLatin1Char('0') && name.at(digits - 1) <= QLatin1Char('9'))
            --digits;
        const bool separated = digits > 0 && name.at(digits - 1) == QLatin1Char('_');
        stem = name.left(separated ? digits - 1 : digits);
        // A name that is nothing but a number counts on without a separator.
        if (!stem.isEmpty())
            stem += QLatin1Char('_');
        bool isNumber = false;
        const quint64 number = name.midRef(digits).toULongLong(&isNumber);
        if (isNumber)
            count = number;
    }

    QString stem;
    quint64 count = 1;
};

} // namespace

std::vector<ParameterSet*> ParameterSet::subsets() const {
    std::vector<ParameterSet*> sets;
    sets.reserve(m_subsets.size());
    for (const Subset& subset : m_subsets)
        sets.push_back(subset.set);
    return sets;
}

bool ParameterSet::listsSubset(const ParameterSet& subset) const {
    return std::find(subset.m_parents.begin(), subset.m_parents.end(), this) != subset.m_parents.end();
}

/// Asked upwards, from the set that would contain: there are few sets above one, but there may be many below. A set
/// that is a parameter as well is below those that list it as that. Each is asked about once, by however many ways it
/// is reached.
bool ParameterSet::isOrContains(const ParameterSet& set) const {
    if (m_subsets.empty() && m_parameters.empty())
        return &set == this;
    const quint64 walk = nextNumber();
    std::vector<const ParameterSet*> above{&set};
    while (!above.empty()) {
        const ParameterSet* const next = above.back();
        above.pop_back();
        if (next == this)
            return true;
        if (std::exchange(next->m_lastWalk, walk) == walk)
            continue;
        above.insert(above.end(), next->m_parents.begin(), next->m_parents.end());
        if (typeid(*next) == typeid(ParameterSet))
            continue;
        if (const auto* const parameter = dynamic_cast<const BasicParameter*>(next))
            above.insert(above.end(), parameter->m_listedIn.begin(), parameter->m_listedIn.end());
    }
    return false;
}

void ParameterSet::setScriptName(const QString& name) {
    const QLatin1Char underscore('_');
    m_scriptName = name;
    m_scriptName.replace(QLatin1Char(' '), underscore)
        .replace(QLatin1Char('\''), underscore)
        .replace(QLatin1Char('.'), underscore);
    for (ParameterSet* parent : m_parents)
        parent->m_subsetNamesKnown = false;
}

const QHash<QString, int>& ParameterSet::subsetNames() const {
    if (!m_subsetNamesKnown) {
        m_subsetNames.clear();
        m_takenNumbers.clear();
        for (const Subset& subset : m_subsets)
            ++m_subsetNames[subset.set->scriptName()];
        m_subsetNamesKnown = true;
    }
    return m_subsetNames;
}

void ParameterSet::setUniqueName(const boost::shared_ptr<ParameterSet>& subset) {
    if (subset)
        giveUniqueName(*subset);
}

void ParameterSet::giveUniqueName(ParameterSet& subset) {
    const QHash<QString, int>& names = subsetNames();
    if (!names.contains(subset.scriptName()))
        return;
    const CountedName name(subset.scriptName());
    TakenNumbers& taken = m_takenNumbers[name.stem];
    quint64 number = name.count + 1;
    if (number < taken.first || number > taken.end)
        taken = {number, number};
    else
        number = taken.end;
    while (names.contains(name.stem + QString::number(number)))
        ++number;
    taken.end = number;
    const QString unique = name.stem + QString::number(number);
    subset.setScriptName(unique);
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
    // All that may fail comes before the first change.
    const bool namesKnown = std::exchange(m_subsetNamesKnown, false);
    if (namesKnown)
        ++m_subsetNames[subset.scriptName()];
    if (m_subsets.size() == m_subsets.capacity())
        m_subsets.reserve(2 * m_subsets.size() + 1);
    subset.m_parents.push_back(this);
    const auto place = m_subsets.begin() + static_cast<std::ptrdiff_t>(std::min(position, m_subsets.size()));
    m_subsets.insert(place, Subset{&subset, owner});
    ++m_membership;
    m_subsetNamesKnown = namesKnown;
    if (m_tree && subset.m_tree != m_tree)
        subset.changeParameterTree(subset.m_tree, m_tree);
    else
        notifySubtreeAdded(&subset);
    return true;
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
    if (!subset || !listsSubset(*subset))
        return false;
    const detail::LifeGuard guard(*this);
    notifySubtreeRemoved(subset.get());
    if (!guard.alive() || !listsSubset(*subset))
        return true;
    forgetSubset(subset.get());
    subset->forgetParent(this);
    subset->exchangeTree(m_tree, nullptr);
    return true;
}

void ParameterSet::exchangeTree(ParameterTree* from, ParameterTree* to) {
    if (from == to)
        return;
    ParameterSet* waiting = nullptr;
    const auto exchange = [&](ParameterSet& set) {
        if (set.m_tree != from)
            return;
        set.m_tree = to;
        set.m_nextToMove = std::exchange(waiting, &set);
    };
    exchange(*this);
    while (waiting) {
        const ParameterSet& set = *waiting;
        waiting = std::exchange(waiting->m_nextToMove, nullptr);
        for (const Subset& subset : set.m_subsets)
            exchange(*subset.set);
    }
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

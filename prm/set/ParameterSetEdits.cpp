#include "prm/ParameterSetEdits.h"

#include "prm/CompoundParameter.h"

#include <stdexcept>

namespace Prm {

namespace {

detail::LifeGuard lifeOf(const ParameterSet::Member& member) {
    if (!member.set && !member.parameter)
        throw std::invalid_argument("ParameterSetEdit: no member");
    return member.set ? detail::LifeGuard(*member.set) : detail::LifeGuard(*member.parameter);
}

} // namespace

ParameterSetEdit::ParameterSetEdit(ParameterSet& set, const ParameterSet::Member& member,
                                   const boost::shared_ptr<void>& owner, const char* act)
    : m_set(&set), m_member(member), m_setLife(set), m_memberLife(lifeOf(member)), m_owner(owner), m_act(act) {
    m_name = presentName();
}

ParameterSetEdit::~ParameterSetEdit() = default;

void ParameterSetEdit::observeWith(const Observing& afterAdding, const Observing& beforeRemoving) {
    m_afterAdding = afterAdding;
    m_beforeRemoving = beforeRemoving;
}

const QString& ParameterSetEdit::presentName() const {
    if (!m_memberLife.alive())
        return m_name;
    return m_member.set ? m_member.set->scriptName() : m_member.parameter->scriptName();
}

QString ParameterSetEdit::usageLogInfo() const {
    return m_memberLife.alive() ? presentName() : m_name + QLatin1String(" (deleted)");
}

EditSummary ParameterSetEdit::summary() const {
    const QString above = m_setLife.alive() ? m_set->path() : QString();
    const bool isJoined = !above.isEmpty() && !presentName().isEmpty();
    const QString path = isJoined ? above + QLatin1Char('.') + presentName() : above + presentName();
    const QString words = QLatin1String(m_act) + QLatin1String(" %p");
    const void* const object = m_member.set ? static_cast<const void*>(m_member.set) : m_member.parameter;
    return {words, words, 1, {{m_memberLife.alive() ? object : nullptr, path, m_member.set != nullptr}}};
}

bool ParameterSetEdit::isListed() const {
    return m_member.set ? m_set->listsSubset(*m_member.set) : m_set->lists(*m_member.parameter);
}

ParameterSetEdit::Prefixes ParameterSetEdit::namePrefixes() const {
    Prefixes prefixes;
    const auto add = [&](ParameterWithoutType* parameter) {
        prefixes.emplace_back(parameter, parameter->namePrefix());
    };
    if (auto* const parameter = qobject_cast<ParameterWithoutType*>(m_member.parameter))
        add(parameter);
    const auto* const compound = dynamic_cast<const ParameterSet*>(m_member.parameter);
    if (const ParameterSet* const below = m_member.set ? m_member.set : compound)
        below->forEachParameterAndPart(add);
    return prefixes;
}

void ParameterSetEdit::putIn(int position) {
    const boost::shared_ptr<void> kept = m_owner;
    m_prefixesOutside = namePrefixes();
    if (!m_member.set) {
        m_set->putIn(*m_member.parameter, kept, position);
        if (m_setLife.alive() && m_memberLife.alive() && m_wasParent)
            m_member.parameter->setParentSet(m_set);
        return;
    }
    m_nameOutside = m_member.set->scriptName();
    const boost::shared_ptr<ParameterSet> owner =
        kept ? boost::shared_ptr<ParameterSet>(kept, m_member.set) : boost::shared_ptr<ParameterSet>();
    m_set->listSubset(*m_member.set, owner, static_cast<std::size_t>(position));
    if (m_memberLife.alive())
        m_nameInside = m_member.set->scriptName();
}

void ParameterSetEdit::takeOut(int& position) {
    if (m_member.set) {
        m_owner = m_set->takeOut(*m_member.set, position);
    } else {
        m_wasParent = m_member.parameter->parentSet() == m_set;
        m_owner = m_set->takeOut(*m_member.parameter, position);
    }
    for (const auto& [parameter, prefix] : m_prefixesOutside) {
        if (parameter)
            parameter->setNamePrefix(prefix);
    }
    const bool isRenamed = m_member.set && m_nameInside != m_nameOutside;
    if (isRenamed && m_memberLife.alive() && m_member.set->scriptName() == m_nameInside)
        m_member.set->setScriptName(m_nameOutside);
}

/// After a failure on the way in, which goes on.
void ParameterSetEdit::takeOutAgain() noexcept {
    try {
        int position = 0;
        if (m_setLife.alive() && m_memberLife.alive() && isListed())
            takeOut(position);
        else if (m_memberLife.alive() && m_member.set && m_member.set->scriptName() != m_nameOutside)
            m_member.set->setScriptName(m_nameOutside);
    } catch (...) { // NOLINT(bugprone-empty-catch): the first exception is under way
    }
}

bool ParameterSetEdit::add(int position) {
    if (!m_setLife.alive() || !m_memberLife.alive() || isListed())
        return false;
    const boost::shared_ptr<void> kept = m_owner;
    try {
        putIn(position);
        const bool isIn = m_setLife.alive() && m_memberLife.alive() && isListed();
        if (isIn && m_afterAdding)
            m_afterAdding(m_member);
        if (isIn)
            m_owner.reset();
        return isIn;
    } catch (...) {
        takeOutAgain();
        throw;
    }
}

bool ParameterSetEdit::remove(int& position) {
    if (!m_setLife.alive() || !m_memberLife.alive() || !isListed())
        return false;
    if (m_beforeRemoving)
        m_beforeRemoving(m_member);
    if (!m_setLife.alive() || !m_memberLife.alive() || !isListed())
        return false;
    try {
        takeOut(position);
    } catch (...) {
        if (m_afterAdding && m_memberLife.alive())
            m_afterAdding(m_member);
        throw;
    }
    return true;
}

ParameterSetAddEdit::ParameterSetAddEdit(ParameterSet& set, const boost::shared_ptr<BasicParameter>& member,
                                         int position)
    : ParameterSetEdit(set, {member.get(), nullptr}, member, "Add"), m_position(position) {}

ParameterSetAddEdit::ParameterSetAddEdit(ParameterSet& set, const boost::shared_ptr<CompoundParameter>& member,
                                         int position)
    : ParameterSetAddEdit(set, boost::shared_ptr<BasicParameter>(member), position) {}

ParameterSetAddEdit::ParameterSetAddEdit(ParameterSet& set, const boost::shared_ptr<ParameterSet>& member, int position)
    : ParameterSetEdit(set, {nullptr, member.get()}, member, "Add"), m_position(position) {}

ParameterSetAddEdit::ParameterSetAddEdit(ParameterSet& set, BasicParameter& member, int position)
    : ParameterSetEdit(set, {&member, nullptr}, nullptr, "Add"), m_position(position) {}

ParameterSetAddEdit::ParameterSetAddEdit(ParameterSet& set, CompoundParameter& member, int position)
    : ParameterSetAddEdit(set, static_cast<BasicParameter&>(member), position) {}

ParameterSetAddEdit::ParameterSetAddEdit(ParameterSet& set, ParameterSet& member, int position)
    : ParameterSetEdit(set, {nullptr, &member}, nullptr, "Add"), m_position(position) {}

void ParameterSetAddEdit::doIt() {
    m_isChanged = add(m_position);
    noteDone();
}

void ParameterSetAddEdit::undoIt() {
    noteUndone();
    int position = 0;
    if (m_isChanged)
        remove(position);
}

ParameterSetRemoveEdit::ParameterSetRemoveEdit(ParameterSet& set, BasicParameter& member)
    : ParameterSetEdit(set, {&member, nullptr}, nullptr, "Remove") {}

ParameterSetRemoveEdit::ParameterSetRemoveEdit(ParameterSet& set, CompoundParameter& member)
    : ParameterSetRemoveEdit(set, static_cast<BasicParameter&>(member)) {}

ParameterSetRemoveEdit::ParameterSetRemoveEdit(ParameterSet& set, ParameterSet& member)
    : ParameterSetEdit(set, {nullptr, &member}, nullptr, "Remove") {}

void ParameterSetRemoveEdit::doIt() {
    m_isChanged = remove(m_position);
    noteDone();
}

void ParameterSetRemoveEdit::undoIt() {
    noteUndone();
    if (m_isChanged)
        add(m_position);
}

} // namespace Prm

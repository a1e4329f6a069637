#pragma once

#include "prm/Export.h"
#include "prm/ParameterSet.h"
#include "prm/UndoableEdit.h"

#include <QPointer>
#include <QString>
#include <boost/shared_ptr.hpp>

#include <functional>
#include <utility>
#include <vector>

namespace Prm {

class CompoundParameter;

/// Adds or removes one member of a set: an animatable parameter, one that does not animate, or a subset. A compound is
/// a parameter of its set, and a set of its parts.
///
/// While the member is out of the set, the edit has the share of ownership that the set had; the object stays the same
/// and keeps its connections, masters and edits. So a member that only the set owned is deleted with an edit that is
/// done and has removed it, or is undone and had added it. Undoing puts the member back at its place in the list; the
/// name prefixes of an added member and of what is below it are then those of before.
///
/// Does nothing, both ways, if the set or the member was deleted, or if the member is in the set, or out of it,
/// already. The member may be added to other sets meanwhile. A subset gets a unique script name when it comes into the
/// set, and its former one when it leaves.
///
/// Trees are notified of subsets. If a tree or an observer throws, the member is where it was, and the exception goes
/// on.
///
/// \snippet set_members.cpp remove
/// \threads The owning thread of the set. A compound must not be evaluated meanwhile if the member is its part.
class PRM_EXPORT ParameterSetEdit : public UndoableEdit {
public:
    using Observing = std::function<void(const ParameterSet::Member&)>;
    /// Sets what is called each time after the member was added, and before it is removed, for example to connect and
    /// disconnect observers. Without it all connections stay.
    void observeWith(const Observing& afterAdding, const Observing& beforeRemoving);

    /// The script name of the member, followed by " (deleted)" after it was deleted.
    QString usageLogInfo() const override;
    EditSummary summary() const override;
    ~ParameterSetEdit() override;

protected:
    /// The owner is null for a member that the set does not own.
    ParameterSetEdit(ParameterSet& set, const ParameterSet::Member& member, const boost::shared_ptr<void>& owner,
                     const char* act);

    /// Adds the member before a position, at the end for one outside the list. Returns whether it did.
    bool add(int position);
    /// The same the other way round; keeps the position.
    bool remove(int& position);

private:
    using Prefixes = std::vector<std::pair<QPointer<ParameterWithoutType>, QString>>;

    bool isListed() const;
    Prefixes namePrefixes() const;
    const QString& presentName() const;
    void putIn(int position);
    void takeOut(int& position);
    void takeOutAgain() noexcept;

    ParameterSet* m_set;
    ParameterSet::Member m_member;
    detail::LifeGuard m_setLife;
    detail::LifeGuard m_memberLife;
    boost::shared_ptr<void> m_owner;
    bool m_wasParent = false;
    /// Of a subset that was renamed when it came into the set.
    QString m_nameOutside;
    QString m_nameInside;
    /// Those of the member and of what is below it when it came into the set. They are part of the text of what is tied
    /// to these parameters.
    Prefixes m_prefixesOutside;
    /// Of the member when the edit was made.
    QString m_name;
    const char* m_act;
    Observing m_afterAdding;
    Observing m_beforeRemoving;
};

/// Adds a member.
///
/// \snippet set_members.cpp add
class PRM_EXPORT ParameterSetAddEdit : public ParameterSetEdit {
public:
    /// The set shares the ownership. Adds before the position, at the end for -1. Throws
    /// `std::invalid_argument` for null.
    ParameterSetAddEdit(ParameterSet& set, const boost::shared_ptr<BasicParameter>& member, int position = -1);
    ParameterSetAddEdit(ParameterSet& set, const boost::shared_ptr<CompoundParameter>& member, int position = -1);
    ParameterSetAddEdit(ParameterSet& set, const boost::shared_ptr<ParameterSet>& member, int position = -1);
    /// The same without ownership.
    ParameterSetAddEdit(ParameterSet& set, BasicParameter& member, int position = -1);
    ParameterSetAddEdit(ParameterSet& set, CompoundParameter& member, int position = -1);
    ParameterSetAddEdit(ParameterSet& set, ParameterSet& member, int position = -1);

    void doIt() override;
    void undoIt() override;

private:
    int m_position;
    bool m_isChanged = false;
};

/// Removes a member.
///
/// \snippet set_members.cpp remove
class PRM_EXPORT ParameterSetRemoveEdit : public ParameterSetEdit {
public:
    ParameterSetRemoveEdit(ParameterSet& set, BasicParameter& member);
    ParameterSetRemoveEdit(ParameterSet& set, CompoundParameter& member);
    ParameterSetRemoveEdit(ParameterSet& set, ParameterSet& member);

    void doIt() override;
    void undoIt() override;

private:
    int m_position = -1;
    bool m_isChanged = false;
};

} // namespace Prm

#pragma once

#include "prm/ProjectMerge.h"
#include "prm/document/Budget.h"

namespace Prm::document {

using Side = MergeSide;
using Conflict = ProjectConflict;

/// The place of something in a text that does not have it.
constexpr int none = -1;

/// Resolves one thing after another, which is the choice of a side, and collects the conflicts.
class Resolver {
public:
    /// What is resolved.
    struct Subject {
        QString path;
        QVariant view;
        QString what;
        QVariant frame;
        /// "the value of the keyframe at 10", for example; empty for the group or parameter itself.
        QString words;
        /// What happens to it when it gets another value.
        QString verb = QStringLiteral("changed");
    };

    /// What one side has done: "moved" to "25"; "deleted".
    struct Change {
        QString verb;
        QString result;
    };

    /// As conflicts show them; what a text does not have is null.
    struct Values {
        QVariant base;
        QVariant ours;
        QVariant theirs;
    };

    explicit Resolver(MergeSettlement settlement) : m_settlement(std::move(settlement)) {}

    /// The side that has changed the value; ours when that is both, or none.
    Side choose(const Subject& subject, const Values& values);
    /// The side that has deleted it, if the other one has left it alone; otherwise that is a conflict.
    Side chooseDeletion(const Subject& subject, const Values& values, bool isEdited,
                        const Change& edit = {QStringLiteral("edited"), {}});
    /// For what both sides have changed.
    Side settle(const Subject& subject, const Values& values, const Change& ours, const Change& theirs);
    /// The same, with a message of its own.
    Side settle(const Subject& subject, const Values& values, const QString& message);

    /// The side that is kept in the conflicts of a path.
    Side kept(const QString& path) const { return m_settlement(path).value_or(Side::Ours); }

    std::vector<Conflict> takeConflicts() { return std::move(m_conflicts); }

private:
    MergeSettlement m_settlement;
    std::vector<Conflict> m_conflicts;
    TextBudget m_budget;
};

} // namespace Prm::document

#pragma once

#include "tool/Budget.h"

#include <QVariant>

#include <functional>
#include <optional>
#include <vector>

namespace Tool {

enum class Side { Ours, Theirs };

/// One thing that both sides have changed, each in another way.
struct Conflict {
    /// Of the parameter or group, or what stands before "=" in a line that belongs to none.
    QString path;
    /// Null for what is the same in all views.
    QVariant view;
    /// "time", "value", "interpolation", "keyframe", "view", "parameter", "group", "name", "hidden", "master",
    /// "before", "after", "line".
    QString what;
    /// That of the keyframe, in the base if it is there.
    QVariant frame;
    /// Null where a side has none.
    QVariant base;
    QVariant ours;
    QVariant theirs;
    /// All of it, in a line for people.
    QString message;
};

/// The side that counts for a path, where the user has said so.
using Settlement = std::function<std::optional<Side>(const QString& path)>;

/// Decides, for one thing after another, which side counts, and notes the conflicts.
class Judge {
public:
    /// What a decision is about.
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

    /// What became of it on one side: "moved" to "25"; "deleted".
    struct Deed {
        QString verb;
        QString result;
    };

    struct Values {
        QVariant base;
        QVariant ours;
        QVariant theirs;
    };

    explicit Judge(Settlement settlement) : m_settlement(std::move(settlement)) {}

    /// The side that has changed the value; ours when that is both, or none. What is not there is null.
    Side choose(const Subject& subject, const Values& values);
    /// For what both sides have changed.
    Side settle(const Subject& subject, const Values& values, const Deed& ours, const Deed& theirs);
    /// The same, with a message of its own.
    Side settle(const Subject& subject, const Values& values, const QString& message);

    std::vector<Conflict> takeConflicts() { return std::move(m_conflicts); }

private:
    Settlement m_settlement;
    std::vector<Conflict> m_conflicts;
    TextBudget m_budget;
};

} // namespace Tool

#pragma once

#include "prm/Export.h"
#include "prm/document/ValueKind.h"

#include <QRegExp>
#include <QStringList>

namespace Prm::document {

/// Whether a pattern names a path: the path itself, a group above it, with or without a dot at its end, or a shell
/// pattern (`*`, `?`, `[...]`).
class PRM_EXPORT PathPattern {
public:
    explicit PathPattern(const QString& pattern);
    bool matches(const QString& path) const;

private:
    QString m_pattern;
    /// Matches what the shell pattern does, and all below that; empty for a path.
    QRegExp m_shellPattern;
};

/// What the user knows of the kinds, as "PATTERN=switch", "number", "point" or "text". The last that matches counts.
class PRM_EXPORT KindRules {
public:
    KindRules() = default;
    /// Throws `Problem` for a rule that is none.
    explicit KindRules(const QStringList& rules);
    /// Throws `Problem` for a rule that is none, with the place of the rule before the message.
    void add(const QString& rule, const QString& place);
    /// The kind that the user says for a path, otherwise `guess`.
    Kind kindOf(const QString& path, Kind guess) const;

private:
    std::vector<std::pair<PathPattern, Kind>> m_rules;
};

} // namespace Prm::document

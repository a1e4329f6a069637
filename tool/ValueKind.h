#pragma once

#include "tool/ProjectText.h"

#include <QRegExp>
#include <QStringList>

#include <optional>
#include <vector>

namespace Tool {

/// How the values of a parameter are read.
enum class ValueKind : quint8 {
    Opaque,         ///< listed and kept, but not evaluated
    Text,           ///< the first value stands between double quotes
    Point,          ///< two numbers each
    Number,         ///< one number each
    NumberOrSwitch, ///< one number each, all 0 or 1; read as numbers until somebody settles it
    Switch          ///< only when told so
};

/// "number", with a "?" behind what is not settled.
QString kindName(ValueKind kind);
/// The kind of values of two kinds. A text that begins as one stays one.
ValueKind commonKind(ValueKind a, ValueKind b);

/// Whether a pattern names a path: the path itself, a group above it, or a shell pattern (`*`, `?`, `[...]`).
class PathPattern {
public:
    explicit PathPattern(const QString& pattern);
    bool matches(const QString& path) const;

private:
    QString m_pattern;
    QRegExp m_shellPattern;
};

/// What the user knows of the kinds, as "PATTERN=switch", "number", "point" or "text". The last that matches counts.
class KindRules {
public:
    /// Throws `Problem` for a rule that is none, with the place of the rule before the message.
    void add(const QString& rule, const QString& place);
    /// The kind that is told for a path, otherwise `guess`.
    ValueKind kindOf(const QString& path, ValueKind guess) const;

private:
    std::vector<std::pair<PathPattern, ValueKind>> m_rules;
};

/// The kinds of all parameters of a text, each guessed from all its values when it is first asked for. A parameter
/// without values is of its master's kind.
class Kinds {
public:
    Kinds(const ProjectText& text, const KindRules& rules);
    ValueKind of(int node);
    /// Whether some values are not of the kind that the user has told.
    bool isContradicted(int node);

private:
    ValueKind guess(int node);

    const ProjectText& m_text;
    KindRules m_rules;
    std::vector<std::optional<ValueKind>> m_guesses;
};

} // namespace Tool

#include "prm/document/PathPattern.h"

#include "prm/document/Problem.h"

#include <algorithm>

namespace Prm::document {

namespace {

/// "[abc]" or "[!abc]" at a place of a shell pattern; empty where no bracket closes it.
QString characterSet(const QString& pattern, int start) {
    const bool isNegated = pattern.mid(start + 1, 1) == "!";
    const int first = start + (isNegated ? 2 : 1);
    const int end = pattern.indexOf(']', first + 1);
    if (end < 0)
        return {};
    return pattern.mid(start, end + 1 - start);
}

/// A set with what a regular expression takes for its own.
QString regularSet(QString set) {
    set.replace('\\', "\\\\");
    return set.startsWith("[!") ? set.replace(1, 1, "^") : set;
}

QString regularExpressionOf(const QString& shellPattern) {
    QString text;
    for (int i = 0; i < shellPattern.size(); ++i) {
        const QChar c = shellPattern.at(i);
        const QString set = c == '[' ? characterSet(shellPattern, i) : QString();
        if (c == '*')
            text += ".*";
        else if (c == '?')
            text += '.';
        else
            text += set.isEmpty() ? QRegExp::escape(c) : regularSet(set);
        i += std::max(0, set.size() - 1);
    }
    return text;
}

} // namespace

PathPattern::PathPattern(const QString& pattern) : m_pattern(pattern) {
    if (pattern.contains('*') || pattern.contains('?') || pattern.contains('['))
        m_shellPattern = QRegExp(regularExpressionOf(pattern) + "(?:\\..*)?");
}

bool PathPattern::matches(const QString& path) const {
    const bool isGroup = m_pattern.endsWith('.') || path.midRef(m_pattern.size()).startsWith('.');
    const bool isBelow = path.startsWith(m_pattern) && isGroup;
    return path == m_pattern || isBelow || (!m_shellPattern.isEmpty() && m_shellPattern.exactMatch(path));
}

KindRules::KindRules(const QStringList& rules) {
    for (const QString& rule : rules)
        add(rule, {});
}

void KindRules::add(const QString& rule, const QString& place) {
    const int equals = rule.lastIndexOf('=');
    const QString name = rule.mid(equals + 1);
    const Kind kind = kindToldAs(name);
    if (equals <= 0)
        throw Problem("%1'%2' is not PATTERN=TYPE", place, rule);
    if (!kind)
        throw Problem("%1'%2' is not a type (switch, number, point or text)", place, name);
    m_rules.emplace_back(PathPattern(rule.left(equals)), kind);
}

Kind KindRules::kindOf(const QString& path, Kind guess) const {
    const auto rule =
        std::find_if(m_rules.rbegin(), m_rules.rend(), [&](const auto& each) { return each.first.matches(path); });
    return rule == m_rules.rend() ? guess : rule->second;
}

} // namespace Prm::document

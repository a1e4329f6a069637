#include "tool/ValueKind.h"

#include "tool/BuiltParameter.h"
#include "tool/Problem.h"

#include <algorithm>
#include <array>

namespace Tool {

namespace {

constexpr std::array<std::pair<ValueKind, const char*>, 6> names{{{ValueKind::Opaque, "opaque"},
                                                                  {ValueKind::Text, "text"},
                                                                  {ValueKind::Point, "point"},
                                                                  {ValueKind::Number, "number"},
                                                                  {ValueKind::NumberOrSwitch, "number?"},
                                                                  {ValueKind::Switch, "switch"}}};

bool isNumber(const QString& text) {
    bool isOne = false;
    text.toDouble(&isOne);
    return isOne;
}

ValueKind kindOfValue(const QString& value) {
    const QString text = value.trimmed();
    if (text.startsWith(QLatin1Char('"')))
        return ValueKind::Text;
    if (text == QLatin1String("0") || text == QLatin1String("1"))
        return ValueKind::NumberOrSwitch;
    if (isNumber(text))
        return ValueKind::Number;
    const QStringList parts = text.simplified().split(QLatin1Char(' '));
    return parts.size() == 2 && isNumber(parts[0]) && isNumber(parts[1]) ? ValueKind::Point : ValueKind::Opaque;
}

/// None for a parameter without values.
std::optional<ValueKind> kindOfValues(const ProjectText& text, int node) {
    std::optional<ValueKind> kind;
    buildRaw(text, node, [&](const QString& value) {
        kind = kind ? commonKind(*kind, kindOfValue(value)) : kindOfValue(value);
        return value;
    });
    return kind;
}

/// "[abc]" or "[!abc]" at a place of a shell pattern; empty where no bracket closes it.
QString characterSet(const QString& pattern, int start) {
    const bool isNegated = pattern.mid(start + 1, 1) == QLatin1String("!");
    const int first = start + (isNegated ? 2 : 1);
    const int end = pattern.indexOf(QLatin1Char(']'), first + 1);
    if (end < 0)
        return {};
    const QString members = pattern.mid(first, end - first).replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    return (isNegated ? QStringLiteral("[^") : QStringLiteral("[")) + members + QLatin1Char(']');
}

QString regularExpressionOf(const QString& shellPattern) {
    QString text;
    for (int i = 0; i < shellPattern.size(); ++i) {
        const QChar c = shellPattern.at(i);
        const QString set = c == QLatin1Char('[') ? characterSet(shellPattern, i) : QString();
        if (c == QLatin1Char('*'))
            text += QLatin1String(".*");
        else if (c == QLatin1Char('?'))
            text += QLatin1Char('.');
        else
            text += set.isEmpty() ? QRegExp::escape(c) : set;
        if (!set.isEmpty())
            i = shellPattern.indexOf(QLatin1Char(']'), i + (shellPattern.at(i + 1) == QLatin1Char('!') ? 3 : 2));
    }
    return text;
}

std::optional<ValueKind> settledKind(const QString& name) {
    for (const auto& [kind, kindName] : names) {
        if (name == QLatin1String(kindName) && kind != ValueKind::Opaque && kind != ValueKind::NumberOrSwitch)
            return kind;
    }
    return {};
}

} // namespace

QString kindName(ValueKind kind) {
    const auto* const found =
        std::find_if(names.begin(), names.end(), [&](const auto& name) { return name.first == kind; });
    return QLatin1String(found->second);
}

ValueKind commonKind(ValueKind a, ValueKind b) {
    const auto isNumeric = [](ValueKind kind) {
        return kind == ValueKind::Number || kind == ValueKind::NumberOrSwitch;
    };
    if (a == b || a == ValueKind::Text)
        return a;
    return isNumeric(a) && isNumeric(b) ? ValueKind::Number : ValueKind::Opaque;
}

/// Matches what the shell pattern does, and all below that.
PathPattern::PathPattern(const QString& pattern)
    : m_pattern(pattern), m_shellPattern(regularExpressionOf(pattern) + QStringLiteral("(?:\\..*)?")) {}

bool PathPattern::matches(const QString& path) const {
    const bool isBelow =
        path.startsWith(m_pattern) && path.size() > m_pattern.size() && path.at(m_pattern.size()) == QLatin1Char('.');
    return path == m_pattern || isBelow || m_shellPattern.exactMatch(path);
}

void KindRules::add(const QString& rule, const QString& place) {
    const int equals = rule.lastIndexOf(QLatin1Char('='));
    const std::optional<ValueKind> kind = settledKind(rule.mid(equals + 1));
    if (equals <= 0)
        throw Problem(place + QStringLiteral("'%1' is not PATTERN=TYPE").arg(rule));
    if (!kind)
        throw Problem(place +
                      QStringLiteral("'%1' is not a type (switch, number, point or text)").arg(rule.mid(equals + 1)));
    m_rules.emplace_back(PathPattern(rule.left(equals)), *kind);
}

ValueKind KindRules::kindOf(const QString& path, ValueKind guess) const {
    const auto rule =
        std::find_if(m_rules.rbegin(), m_rules.rend(), [&](const auto& each) { return each.first.matches(path); });
    return rule == m_rules.rend() ? guess : rule->second;
}

Kinds::Kinds(const ProjectText& text, const KindRules& rules)
    : m_text(text), m_rules(rules), m_guesses(text.nodes().size()) {}

ValueKind Kinds::of(int node) {
    return m_rules.kindOf(m_text.path(node), guess(node));
}

bool Kinds::isContradicted(int node) {
    const ValueKind told = of(node);
    if (told == guess(node) || told == ValueKind::Text)
        return false;
    const std::optional<ValueKind> written = kindOfValues(m_text, node);
    const bool isNumeric = written == ValueKind::Number || written == ValueKind::NumberOrSwitch;
    return written && (told == ValueKind::Point || !isNumeric);
}

ValueKind Kinds::guess(int node) {
    std::vector<int> followers;
    int known = node;
    while (known >= 0 && !m_guesses[static_cast<std::size_t>(known)]) {
        auto& kind = m_guesses[static_cast<std::size_t>(known)];
        kind = kindOfValues(m_text, known);
        if (kind)
            break;
        // What stays when the masters form a circle.
        kind = ValueKind::Opaque;
        followers.push_back(known);
        known = masterOf(m_text, known);
    }
    const ValueKind kind = known < 0 ? ValueKind::Opaque : *m_guesses[static_cast<std::size_t>(known)];
    for (const int follower : followers)
        m_guesses[static_cast<std::size_t>(follower)] = kind;
    return kind;
}

} // namespace Tool

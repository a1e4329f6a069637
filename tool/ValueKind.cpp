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

ValueKind settledKind(const QString& name) {
    for (const auto& [kind, kindName] : names) {
        if (name == QLatin1String(kindName) && kind != ValueKind::Opaque && kind != ValueKind::NumberOrSwitch)
            return kind;
    }
    throw WrongUse(QStringLiteral("'%1' is no type: switch, number, point or text").arg(name));
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

PathPattern::PathPattern(const QString& pattern)
    : m_pattern(pattern), m_glob(pattern, Qt::CaseSensitive, QRegExp::Wildcard) {}

bool PathPattern::matches(const QString& path) const {
    const bool isBelow =
        path.startsWith(m_pattern) && path.size() > m_pattern.size() && path.at(m_pattern.size()) == QLatin1Char('.');
    return path == m_pattern || isBelow || m_glob.exactMatch(path);
}

KindRules::KindRules(const QStringList& rules) {
    for (const QString& rule : rules) {
        const int equals = rule.lastIndexOf(QLatin1Char('='));
        if (equals <= 0)
            throw WrongUse(QStringLiteral("'%1' is not PATTERN=TYPE").arg(rule));
        m_rules.emplace_back(PathPattern(rule.left(equals)), settledKind(rule.mid(equals + 1)));
    }
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

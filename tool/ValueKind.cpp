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

/// The kind of values of two kinds. A text that begins as one stays one.
ValueKind common(ValueKind a, ValueKind b) {
    const auto isNumeric = [](ValueKind kind) {
        return kind == ValueKind::Number || kind == ValueKind::NumberOrSwitch;
    };
    if (a == b || a == ValueKind::Text)
        return a;
    return isNumeric(a) && isNumeric(b) ? ValueKind::Number : ValueKind::Opaque;
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

ValueKind guessKind(const ProjectText& text, int node) {
    bool isFirst = true;
    ValueKind kind = ValueKind::Opaque;
    buildRaw(text, node, [&](const QString& value) {
        kind = isFirst ? kindOfValue(value) : common(kind, kindOfValue(value));
        isFirst = false;
        return value;
    });
    return kind;
}

} // namespace Tool

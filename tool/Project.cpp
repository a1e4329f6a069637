#include "tool/Project.h"

#include "tool/Problem.h"
#include "tool/Streams.h"

#include <algorithm>

namespace Tool {

namespace {

KindRules rulesOf(const Arguments& arguments) {
    KindRules rules;
    for (const QString& file : arguments.values(QStringLiteral("types"))) {
        int number = 0;
        for (const QString& line : QString::fromUtf8(readInput(file)).split(QLatin1Char('\n'))) {
            ++number;
            const QString rule = line.trimmed();
            if (!rule.isEmpty() && !rule.startsWith(QLatin1Char('#')))
                rules.add(rule, QStringLiteral("%1:%2: ").arg(file).arg(number));
        }
    }
    for (const QString& rule : arguments.values(QStringLiteral("type")))
        rules.add(rule, QStringLiteral("--type: "));
    return rules;
}

} // namespace

void Project::declare(Arguments& arguments) {
    arguments.positional(QStringLiteral("FILE"), QStringLiteral("A project text, - for standard input."))
        .option({QStringLiteral("type")},
                QStringLiteral("How the values of parameters are read: switch, number, point or text."),
                QStringLiteral("PATTERN=TYPE"))
        .option({QStringLiteral("types")}, QStringLiteral("A file of such rules, one to a line."),
                QStringLiteral("FILE"));
}

void Project::declareWithPatterns(Arguments& arguments, const QString& syntax) {
    declare(arguments);
    arguments.positional(QStringLiteral("PATTERN"), QStringLiteral("Paths of parameters or groups, or shell patterns."),
                         syntax);
}

Project::Project(const Arguments& arguments)
    : m_name(arguments.file()), m_text(m_name), m_kinds(m_text, rulesOf(arguments)) {}

BuiltParameter Project::shown(int node) {
    BuiltParameter parameter = built(node);
    parameter.followMasters(m_text, m_masters);
    return parameter;
}

std::vector<int> Project::parameters(const QStringList& patterns) const {
    std::vector<PathPattern> wanted;
    for (const QString& pattern : patterns)
        wanted.emplace_back(pattern);
    std::vector<bool> isUsed(wanted.size());
    std::vector<int> found;
    for (int i = 0; i < static_cast<int>(m_text.nodes().size()); ++i) {
        if (!m_text.node(i).isParameter())
            continue;
        const QString path = m_text.path(i);
        bool isWanted = wanted.empty();
        for (std::size_t p = 0; p < wanted.size(); ++p) {
            if (wanted[p].matches(path))
                isWanted = isUsed[p] = true;
        }
        if (isWanted)
            found.push_back(i);
    }
    const auto unused = std::find(isUsed.begin(), isUsed.end(), false);
    if (unused != isUsed.end())
        throw Problem(QStringLiteral("%1: no parameter or group '%2'")
                          .arg(m_name, patterns.at(static_cast<int>(unused - isUsed.begin()))));
    return found;
}

} // namespace Tool

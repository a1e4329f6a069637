#include "prm/project/MemberPaths.h"

#include "prm/ParameterSet.h"
#include "prm/ParameterWithoutType.h"
#include "prm/StaticParameter.h"
#include "prm/text/LineParts.h"

#include <algorithm>

namespace Prm::detail {

MemberPaths::MemberPaths(const ParameterSet& root) {
    QString start;
    collect(root, start);
}

void MemberPaths::add(const QString& path, const BasicParameter& parameter) {
    m_members[path].parameter = &parameter;
    m_longest = std::max(m_longest, path.size());
}

/// Leaves the start as it was: a deep tree does not copy it at every level.
void MemberPaths::collect(const ParameterSet& set, QString& start) {
    const auto collectBelow = [&](const ParameterSet& below, const QString& nameAndDot) {
        const int length = start.size();
        start += nameAndDot;
        collect(below, start);
        start.resize(length);
    };
    for (const auto& parameter : set.parameters()) {
        const QString& name = parameter->scriptName();
        if (!name.isEmpty())
            add(start + name, *parameter);
        for (const QString& other : parameter->additionalScriptNames())
            add(start + other, *parameter);
        if (const auto* const compound = dynamic_cast<const ParameterSet*>(parameter.get()))
            collectBelow(*compound, lineStart({}, name, true));
    }
    for (const BasicParameter* parameter : set.basicParameters())
        add(start + parameter->scriptName(), *parameter);
    for (const ParameterSet* subset : set.subsets()) {
        const QString path = start + subset->scriptName();
        m_members[path].isSet = true;
        m_longest = std::max(m_longest, path.size());
        collectBelow(*subset, subset->scriptName() + QLatin1Char('.'));
    }
}

MemberPaths::Match MemberPaths::match(const QString& line) const {
    Match best = Match::None;
    int dot = line.lastIndexOf(QLatin1Char('.'), std::min(m_longest, line.size() - 1));
    for (; dot > 0 && best != Match::Read; dot = line.lastIndexOf(QLatin1Char('.'), dot - 1)) {
        const auto member = m_members.constFind(line.left(dot));
        if (member != m_members.constEnd())
            best = std::max(best, match(*member, QStringView(line).mid(dot + 1)));
    }
    return best;
}

MemberPaths::Match MemberPaths::match(const Member& member, QStringView rest) {
    const bool readsName = member.isSet && beginsWith(rest, u"name=\"") && rest.back() == QLatin1Char('"');
    if (readsName || (member.parameter && reads(*member.parameter, rest)))
        return Match::Read;
    return member.parameter ? Match::Named : Match::None;
}

/// Moved parameters, and kinds of a host's own, may read every line.
bool MemberPaths::reads(const BasicParameter& parameter, QStringView rest) {
    const auto* const animated = dynamic_cast<const ParameterWithoutType*>(&parameter);
    if (const auto* const compound = dynamic_cast<const ParameterSet*>(&parameter)) {
        const auto& parts = compound->parameters();
        return isUntypedLine(rest) || std::any_of(parts.begin(), parts.end(), [&](const auto& part) {
                   QStringView own;
                   return behindName(rest, part->scriptName(), own) && reads(*part, own);
               });
    }
    const bool isStatic = dynamic_cast<const StaticParameter<QString>*>(&parameter) ||
                          dynamic_cast<const StaticParameter<unsigned int>*>(&parameter);
    return animated ? isParameterLine(rest) : !isStatic || hasKey(rest, ParameterStrings::value);
}

} // namespace Prm::detail

#include "prm/project/MemberPaths.h"

#include "prm/ParameterSet.h"
#include "prm/ParameterWithoutType.h"
#include "prm/StaticParameter.h"
#include "prm/text/LineParts.h"

#include <algorithm>

namespace Prm::detail {

MemberPaths::MemberPaths(const ParameterSet& root) {
    collect(root, {});
}

void MemberPaths::add(const QString& path, Kind kind) {
    m_kinds[path] |= kind;
    m_longest = std::max(m_longest, path.size());
}

MemberPaths::Kind MemberPaths::kindOf(const BasicParameter& parameter) {
    if (dynamic_cast<const ParameterWithoutType*>(&parameter))
        return dynamic_cast<const ParameterSet*>(&parameter) ? Compound : Animated;
    const bool isStatic = dynamic_cast<const StaticParameter<QString>*>(&parameter) ||
                          dynamic_cast<const StaticParameter<unsigned int>*>(&parameter);
    return isStatic ? Static : Other;
}

void MemberPaths::collect(const ParameterSet& set, const QString& start) {
    for (const auto& parameter : set.parameters()) {
        const auto* const compound = dynamic_cast<const ParameterSet*>(parameter.get());
        const QStringList names = QStringList(parameter->scriptName()) + parameter->additionalScriptNames();
        for (const QString& name : names) {
            if (!name.isEmpty())
                add(start + name, kindOf(*parameter));
            if (compound)
                collect(*compound, lineStart(start, name, true));
        }
    }
    for (const BasicParameter* parameter : set.basicParameters())
        add(start + parameter->scriptName(), kindOf(*parameter));
    for (const ParameterSet* subset : set.subsets()) {
        add(start + subset->scriptName(), Set);
        collect(*subset, start + subset->scriptName() + QLatin1Char('.'));
    }
}

MemberPaths::Match MemberPaths::match(const QString& line) const {
    Match best = Match::None;
    int dot = line.lastIndexOf(QLatin1Char('.'), std::min(m_longest, line.size() - 1));
    for (; dot > 0 && best != Match::Read; dot = line.lastIndexOf(QLatin1Char('.'), dot - 1)) {
        const quint8 kinds = m_kinds.value(line.left(dot));
        if (reads(kinds, QStringView(line).mid(dot + 1)))
            best = Match::Read;
        else if ((kinds & ~Set) != 0)
            best = Match::Named;
    }
    return best;
}

bool MemberPaths::reads(quint8 kinds, QStringView rest) {
    return ((kinds & Set) && beginsWith(rest, u"name=\"") && rest.back() == QLatin1Char('"')) ||
           ((kinds & Animated) && isParameterLine(rest)) || ((kinds & Compound) && isUntypedLine(rest)) ||
           ((kinds & Static) && hasKey(rest, ParameterStrings::value)) || (kinds & Other);
}

} // namespace Prm::detail

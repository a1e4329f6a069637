// A set in project text.

#include "prm/BasicParameter.h"
#include "prm/ParameterSet.h"
#include "prm/ParameterWithoutType.h"
#include "prm/detail/LineParts.h"
#include "prm/detail/PlainNumbers.h"

#include <QDebug>
#include <QMutex>
#include <QMutexLocker>
#include <QRegExp>
#include <QTextStream>

#include <array>
#include <typeinfo>

namespace Prm {

namespace {

enum List { Parameters = 0, BasicParameters = 1, Subsets = 2 };

/// The expression is shared by all sets, and holds what it matched last.
struct NameLine {
    QMutex mutex;
    QRegExp expression{QStringLiteral("^name=\"(.+)\"$"), Qt::CaseSensitive, QRegExp::RegExp2};
};

bool matchName(const QString& line, QString& name) {
    static NameLine nameLine;
    if (!line.startsWith(QLatin1String("name"), Qt::CaseInsensitive))
        return false;
    const QMutexLocker lock(&nameLine.mutex);
    if (nameLine.expression.indexIn(line) < 0)
        return false;
    name = nameLine.expression.cap(1);
    return true;
}

} // namespace

bool ParameterSet::bStreamOut(QTextStream& stream, const QString& prefix, bool withPrefixForSubsets) const {
    writeMembers(stream, detail::lineStart(prefix, m_scriptName, true), withPrefixForSubsets);
    return true;
}

void ParameterSet::writeMembers(QTextStream& stream, const QString& path, bool withPrefixForSubsets) const {
    if (!m_name.isEmpty()) {
        if (m_name.contains(QLatin1Char('\n')) || m_name.contains(QLatin1Char('\r')))
            qWarning() << "ParameterSet: a name with a line break will not be read back:" << m_name;
        const detail::PlainNumbers plain(stream);
        stream << path << "name=\"" << m_name << '"' << Qt::endl;
    }
    for (const auto& parameter : m_parameters)
        parameter->streamOut(stream, path, true);
    for (const BasicParameter* parameter : m_basicParameters)
        parameter->streamOut(stream, path, true);
    for (const Subset& subset : m_subsets)
        subset.set->bStreamOut(stream, withPrefixForSubsets ? path : QString(), withPrefixForSubsets);
}

/// Goes down plain sets one after the other, so that a deep tree does not need a deep stack.
bool ParameterSet::bStreamIn(const QString& line, const ProjectFileVersion& version) {
    Descent next{{this, nullptr}, line};
    while (!next.line.isEmpty()) {
        const Descent present = next;
        ParameterSet& set = *present.into.set;
        const detail::LifeGuard guard(set);
        const Reading reading = set.readByAny(present.line, version, next);
        if (reading == Reading::NotMine)
            return guard.alive() && set.readName(present.line);
        if (reading != Reading::Below)
            return reading == Reading::Taken;
    }
    return true;
}

bool ParameterSet::readByMembers(const QString& line, const ProjectFileVersion& version) {
    Descent below{};
    const Reading reading = readByAny(line, version, below);
    return reading == Reading::Below ? below.into.set->bStreamIn(below.line, version) : reading == Reading::Taken;
}

ParameterSet::Reading ParameterSet::readByAny(const QString& line, const ProjectFileVersion& version, Descent& below) {
    static constexpr std::array<std::array<int, 3>, 3> orders{{{Parameters, BasicParameters, Subsets},
                                                               {BasicParameters, Parameters, Subsets},
                                                               {Subsets, Parameters, BasicParameters}}};
    const detail::LifeGuard guard(*this);
    if (m_lastHitList < Parameters || m_lastHitList > Subsets)
        return Reading::NotMine;
    for (const int list : orders[static_cast<std::size_t>(m_lastHitList)]) {
        const Reading reading = readBy(list, line, version, below);
        if (reading != Reading::NotMine || !guard.alive())
            return reading;
    }
    return Reading::NotMine;
}

int ParameterSet::lengthOf(int list) const {
    const std::size_t length = list == Parameters        ? m_parameters.size()
                               : list == BasicParameters ? m_basicParameters.size()
                                                         : m_subsets.size();
    return static_cast<int>(length);
}

/// Offers the line to the members of one list, from where the last line was taken, once around.
ParameterSet::Reading ParameterSet::readBy(int list, const QString& line, const ProjectFileVersion& version,
                                           Descent& below) {
    const detail::LifeGuard guard(*this);
    const int start = m_lastHitIndex;
    const int length = lengthOf(list);
    for (int k = 0; k < length && guard.alive(); ++k) {
        const int index = static_cast<int>((static_cast<qint64>(start) + k) % length);
        // A reader may have removed members.
        if (index >= lengthOf(list))
            continue;
        const Reading reading = offerTo(list, index, line, version, below);
        if (reading == Reading::NotMine)
            continue;
        if (guard.alive()) {
            m_lastHitIndex = index;
            m_lastHitList = list;
        }
        return reading;
    }
    return Reading::NotMine;
}

ParameterSet::Reading ParameterSet::offerToSubset(const Subset& subset, const QString& line,
                                                  const ProjectFileVersion& version, Descent& below) {
    QString rest;
    if (!detail::behindName(line, subset.set->scriptName(), rest))
        return Reading::NotMine;
    if (typeid(*subset.set) != typeid(ParameterSet))
        return subset.set->bStreamIn(rest, version) ? Reading::Taken : Reading::Refused;
    below = {subset, rest};
    return Reading::Below;
}

ParameterSet::Reading ParameterSet::offerTo(int list, int index, const QString& line, const ProjectFileVersion& version,
                                            Descent& below) {
    const auto position = static_cast<std::size_t>(index);
    if (list == Subsets)
        return offerToSubset(Subset(m_subsets[position]), line, version, below);
    // Kept alive: its observers may take it out of the set.
    const auto owner = list == Parameters ? m_parameters[position] : nullptr;
    BasicParameter* const parameter = owner ? owner.get() : m_basicParameters[position];
    return parameter->setFromScriptString(line, version) ? Reading::Taken : Reading::NotMine;
}

bool ParameterSet::readName(const QString& line) {
    QString name;
    if (!matchName(line, name))
        return false;
    assignName(name);
    return true;
}

} // namespace Prm

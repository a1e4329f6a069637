// A set in project text.

#include "prm/BasicParameter.h"
#include "prm/ParameterSet.h"
#include "prm/ParameterWithoutType.h"
#include "prm/text/LineParts.h"
#include "prm/text/PlainNumbers.h"

#include <QDebug>
#include <QTextStream>

#include <array>
#include <typeinfo>
#include <utility>

namespace Prm {

namespace {

enum List { Parameters = 0, BasicParameters = 1, Subsets = 2 };

bool matchName(const QString& line, QString& name) {
    const QLatin1String start("name=\"");
    const int length = line.size() - start.size() - 1;
    if (length < 1 || !line.startsWith(start) || !line.endsWith(QLatin1Char('"')))
        return false;
    name = line.mid(start.size(), length);
    return true;
}

} // namespace

bool ParameterSet::bStreamOut(QTextStream& stream, const QString& prefix, bool withPrefixForSubsets) const {
    writeMembers(stream, detail::lineStart(prefix, m_scriptName, true), withPrefixForSubsets);
    return true;
}

void ParameterSet::writeMembers(QTextStream& stream, const QString& path, bool withPrefixForSubsets) const {
    QString growing = path;
    writeBelow(stream, growing, withPrefixForSubsets);
}

/// Leaves the path as it was.
void ParameterSet::writeBelow(QTextStream& stream, QString& path, bool withPrefixForSubsets) const {
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
    QString none;
    for (const Subset& subset : m_subsets)
        subset.set->writeBehind(stream, withPrefixForSubsets ? path : none, withPrefixForSubsets);
}

/// What `bStreamOut` does, but a plain set extends the path itself: a deep tree does not copy it at every level.
void ParameterSet::writeBehind(QTextStream& stream, QString& path, bool withPrefixForSubsets) const {
    if (typeid(*this) != typeid(ParameterSet)) {
        bStreamOut(stream, path, withPrefixForSubsets);
        return;
    }
    const int length = path.size();
    path += detail::lineStart({}, m_scriptName, true);
    writeBelow(stream, path, withPrefixForSubsets);
    path.resize(length);
}

/// What is left of a line behind the names of sets. It becomes a text of its own only for a parameter, so that a deep
/// tree does not copy the line at every level.
class ParameterSet::Rest {
public:
    explicit Rest(const QString& line) : m_text(line), m_view(m_text) {}
    explicit Rest(QStringView view) : m_view(view) {}
    Q_DISABLE_COPY(Rest)

    QStringView view() const { return m_view; }
    const QString& text() {
        if (m_text.isNull())
            m_text = m_view.toString();
        return m_text;
    }

private:
    QString m_text;
    QStringView m_view;
};

struct ParameterSet::Descent {
    Subset into;
    QStringView line;
};

/// Goes down plain sets one after the other, so that a deep tree does not need a deep stack.
bool ParameterSet::bStreamIn(const QString& line, const ProjectFileVersion& version) {
    // The caller's own may change while observers are told. NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const QString whole = line;
    Descent next{{this, nullptr}, whole};
    while (!next.line.isEmpty()) {
        const Subset into = std::move(next.into);
        Rest rest(next.line);
        const detail::LifeGuard guard(*into.set);
        const Reading reading = into.set->readByAny(rest, version, next);
        if (reading == Reading::NotMine)
            return guard.alive() && into.set->readName(rest.text());
        if (reading != Reading::Below)
            return reading == Reading::Taken;
    }
    return true;
}

bool ParameterSet::readByMembers(const QString& line, const ProjectFileVersion& version) {
    Rest rest(line);
    Descent below{};
    const Reading reading = readByAny(rest, version, below);
    return reading == Reading::Below ? below.into.set->bStreamIn(below.line.toString(), version)
                                     : reading == Reading::Taken;
}

ParameterSet::Reading ParameterSet::readByAny(Rest& rest, const ProjectFileVersion& version, Descent& below) {
    static constexpr std::array<std::array<int, 3>, 3> orders{{{Parameters, BasicParameters, Subsets},
                                                               {BasicParameters, Parameters, Subsets},
                                                               {Subsets, Parameters, BasicParameters}}};
    const detail::LifeGuard guard(*this);
    if (m_lastHitList < Parameters || m_lastHitList > Subsets)
        return Reading::NotMine;
    for (const int list : orders[static_cast<std::size_t>(m_lastHitList)]) {
        const Reading reading = readBy(list, rest, version, below);
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
ParameterSet::Reading ParameterSet::readBy(int list, Rest& rest, const ProjectFileVersion& version, Descent& below) {
    const detail::LifeGuard guard(*this);
    const int start = m_lastHitIndex;
    const int length = lengthOf(list);
    for (int k = 0; k < length && guard.alive(); ++k) {
        const int index = static_cast<int>((static_cast<qint64>(start) + k) % length);
        // A reader may have removed members.
        if (index >= lengthOf(list))
            continue;
        const Reading reading = offerTo(list, index, rest, version, below);
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

ParameterSet::Reading ParameterSet::offerToSubset(const Subset& listed, QStringView line,
                                                  const ProjectFileVersion& version, Descent& below) {
    QStringView rest;
    if (!detail::behindName(line, listed.set->scriptName(), rest))
        return Reading::NotMine;
    // Kept alive: its observers may take it out of the set.
    Subset subset = listed;
    if (typeid(*subset.set) != typeid(ParameterSet))
        return subset.set->bStreamIn(rest.toString(), version) ? Reading::Taken : Reading::Refused;
    below = {std::move(subset), rest};
    return Reading::Below;
}

ParameterSet::Reading ParameterSet::offerTo(int list, int index, Rest& rest, const ProjectFileVersion& version,
                                            Descent& below) {
    const auto position = static_cast<std::size_t>(index);
    if (list == Subsets)
        return offerToSubset(m_subsets[position], rest.view(), version, below);
    // Kept alive as well.
    const auto owner = list == Parameters ? m_parameters[position] : nullptr;
    BasicParameter* const parameter = owner ? owner.get() : m_basicParameters[position];
    const std::optional<bool> known = owner ? owner->readBriefly(rest.view(), version) : std::nullopt;
    const bool taken = known ? *known : parameter->setFromScriptString(rest.text(), version);
    return taken ? Reading::Taken : Reading::NotMine;
}

bool ParameterSet::readName(const QString& line) {
    QString name;
    if (!matchName(line, name))
        return false;
    assignName(name);
    return true;
}

} // namespace Prm

// A set in project text.

#include "prm/BasicParameter.h"
#include "prm/ParameterSet.h"
#include "prm/ParameterWithoutType.h"
#include "prm/set/NameIndex.h"
#include "prm/text/LineParts.h"
#include "prm/text/PlainNumbers.h"

#include <QDebug>
#include <QTextStream>

#include <algorithm>
#include <array>
#include <typeinfo>
#include <utility>
#include <vector>

namespace Prm {

namespace {

bool matchName(const QString& line, QString& name) {
    const QLatin1String start("name=\"");
    const int length = line.size() - start.size() - 1;
    if (length < 1 || !line.startsWith(start) || !line.endsWith(QLatin1Char('"')))
        return false;
    name = line.mid(start.size(), length);
    return true;
}

} // namespace

bool ParameterSet::bStreamOut(QTextStream& stream, const QString& prefix, bool withPrefixForSubsets) {
    writeMembers(stream, detail::lineStart(prefix, m_scriptName, true), withPrefixForSubsets);
    return true;
}

void ParameterSet::writeMembers(QTextStream& stream, const QString& path, bool withPrefixForSubsets) {
    if (!m_name.isEmpty()) {
        if (m_name.contains(QLatin1Char('\n')) || m_name.contains(QLatin1Char('\r')))
            qWarning() << "ParameterSet: a name with a line break will not be read back:" << m_name;
        const detail::PlainNumbers plain(stream);
        stream << path << "name=\"" << m_name << '"' << Qt::endl;
    }
    for (const auto& parameter : parameters())
        parameter->streamOut(stream, path, true);
    for (const BasicParameter* parameter : basicParameters())
        parameter->streamOut(stream, path, true);
    for (const Subset& subset : listedSubsets())
        subset.set->bStreamOut(stream, withPrefixForSubsets ? path : QString(), withPrefixForSubsets);
}

/// The rest of a line after the names of sets. It becomes a text of its own for a parameter alone.
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

bool ParameterSet::bStreamIn(const QString& line, const ProjectFileVersion& version) {
    // A copy: observers may change the caller's text. NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const QString whole = line;
    Rest rest(whole);
    return readRest(rest, version);
}

bool ParameterSet::readRest(Rest& rest, const ProjectFileVersion& version) {
    if (rest.view().isEmpty())
        return true;
    const detail::LifeGuard guard(*this);
    const Reading reading = readByAny(rest, version);
    if (reading != Reading::NotMine)
        return reading == Reading::Taken;
    return guard.alive() && readName(rest.text());
}

bool ParameterSet::readByMembers(const QString& line, const ProjectFileVersion& version) {
    Rest rest(line);
    return readByAny(rest, version) == Reading::Taken;
}

/// The order in which the members are asked for a line: the list of the one that took the last line first, and each
/// list once around from the place of that one.
class ParameterSet::Order {
public:
    explicit Order(const ParameterSet& set)
        : m_lists(orders[static_cast<std::size_t>(set.m_lastHitList)]),
          m_start(set.m_lastHitIndex), m_lengths{lengthOf(set.parameters()), lengthOf(set.basicParameters()),
                                                 lengthOf(set.listedSubsets())} {}

    int count() const { return m_lengths[Parameters] + m_lengths[BasicParameters] + m_lengths[Subsets]; }
    std::pair<int, int> memberAt(int step) const {
        std::size_t list = 0;
        for (; step >= length(m_lists[list]); ++list)
            step -= length(m_lists[list]);
        const int untilEnd = length(m_lists[list]) - startIn(m_lists[list]);
        return {m_lists[list], step < untilEnd ? startIn(m_lists[list]) + step : step - untilEnd};
    }
    int stepOf(int list, int place) const {
        int step = place - startIn(list) + (place < startIn(list) ? length(list) : 0);
        for (std::size_t before = 0; m_lists[before] != list; ++before)
            step += length(m_lists[before]);
        return step;
    }

private:
    static constexpr std::array<std::array<int, 3>, 3> orders{{{Parameters, BasicParameters, Subsets},
                                                               {BasicParameters, Parameters, Subsets},
                                                               {Subsets, Parameters, BasicParameters}}};

    template <class Members> static int lengthOf(const Members& members) { return static_cast<int>(members.size()); }
    int length(int list) const { return m_lengths[static_cast<std::size_t>(list)]; }
    /// The list may have become shorter.
    int startIn(int list) const { return m_start < length(list) ? m_start : m_start % length(list); }

    const std::array<int, 3>& m_lists;
    int m_start;
    const std::array<int, NumLists> m_lengths;
};

ParameterSet::Reading ParameterSet::readByAny(Rest& rest, const ProjectFileVersion& version) {
    if (m_lastHitList < Parameters || m_lastHitList > Subsets)
        return Reading::NotMine;
    const detail::LifeGuard guard(*this);
    const Order order(*this);
    const quint32 membership = m_membership;
    const int few = std::min(order.count(), fewMembers);
    Reading reading = readInOrder(order, 0, few, rest, version);
    if (reading != Reading::NotMine || !guard.alive() || few == order.count())
        return reading;
    // Where many members may take any line it is no use to look for further ones.
    if (4 * names().countForAnyName() > order.count())
        return readInOrder(order, few, order.count(), rest, version);
    for (const int step : stepsThatMayTake(order, rest.view())) {
        // What was asked may have changed the lists.
        if (m_membership != membership)
            return readInOrder(order, step, order.count(), rest, version);
        if (step >= few)
            reading = readInOrder(order, step, step + 1, rest, version);
        if (reading != Reading::NotMine || !guard.alive())
            return reading;
    }
    return Reading::NotMine;
}

/// Of the members whose names begin the line, and of those that may take any line.
std::vector<int> ParameterSet::stepsThatMayTake(const Order& order, QStringView line) const {
    std::vector<int> steps;
    const detail::NameIndex& index = names();
    for (const detail::NameIndex::Key key : index.keysOfPrefixes(line)) {
        index.forEach(key, [&](const detail::NameIndex::Entry& entry) {
            const int place = placeOf(*listingsOf(entry.list, entry.member).of(this), entry.member);
            steps.push_back(order.stepOf(entry.list, place));
        });
    }
    std::sort(steps.begin(), steps.end());
    steps.erase(std::unique(steps.begin(), steps.end()), steps.end());
    return steps;
}

/// Offers the line to the members from one step on, up to another.
ParameterSet::Reading ParameterSet::readInOrder(const Order& order, int from, int to, Rest& rest,
                                                const ProjectFileVersion& version) {
    const detail::LifeGuard guard(*this);
    for (int step = from; step < to && guard.alive(); ++step) {
        const auto [list, place] = order.memberAt(step);
        // A reader may have removed members.
        if (place >= lengthOf(list) || !memberAt(list, place))
            continue;
        const Reading reading = offerTo(list, place, rest, version);
        if (reading == Reading::NotMine)
            continue;
        if (guard.alive()) {
            m_lastHitIndex = place;
            m_lastHitList = list;
        }
        return reading;
    }
    return Reading::NotMine;
}

ParameterSet::Reading ParameterSet::offerToSubset(const Subset& listed, QStringView line,
                                                  const ProjectFileVersion& version) {
    QStringView rest;
    if (!detail::afterName(line, listed.set->scriptName(), rest))
        return Reading::NotMine;
    // Kept alive: its observers may take it out of the set.
    const Subset subset = listed;
    Rest below(rest);
    const bool isPlain = typeid(*subset.set) == typeid(ParameterSet);
    const bool taken = isPlain ? subset.set->readRest(below, version) : subset.set->bStreamIn(below.text(), version);
    return taken ? Reading::Taken : Reading::Refused;
}

ParameterSet::Reading ParameterSet::offerTo(int list, int index, Rest& rest, const ProjectFileVersion& version) {
    const auto position = static_cast<std::size_t>(index);
    if (list == Subsets)
        return offerToSubset(m_subsets[position], rest.view(), version);
    // Kept alive as well.
    const auto owner = list == Parameters ? m_parameters[position] : nullptr;
    const bool taken = owner ? owner->readLine(rest.view(), version)
                             : m_basicParameters[position]->setFromScriptString(rest.text(), version);
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

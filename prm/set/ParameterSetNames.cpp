// Finding members by their script names.

#include "prm/CompoundParameter.h"
#include "prm/MovedParameter.h"
#include "prm/ParameterSet.h"
#include "prm/StaticParameter.h"
#include "prm/set/NameIndex.h"
#include "prm/untyped/VirtualTable.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

namespace Prm {

namespace {

/// How the library's classes read lines and name themselves: a host's class that overrides neither does both by its
/// script name.
class KnownClasses {
public:
    KnownClasses() {
        add(ParameterWithoutTypeBase(false, false, nullptr));
        add(CompoundParameter());
        add(MovedParameter({}));
        add(OwnedStaticParameter<unsigned int>({}));
        add(OwnedStaticParameter<QString>({}));
    }

    static bool readsByName(const BasicParameter& parameter) { return contains(known().m_readers, reader(parameter)); }
    static bool isNamed(const BasicParameter& parameter) { return contains(known().m_namers, namer(parameter)); }

private:
    using Functions = std::vector<const void*>;

    static const KnownClasses& known() {
        static const KnownClasses& classes = *new KnownClasses;
        return classes;
    }
    static const void* reader(const BasicParameter& parameter) {
        return detail::implementationOf(parameter, &BasicParameter::setFromScriptString);
    }
    static const void* namer(const BasicParameter& parameter) {
        return detail::implementationOf(parameter, &BasicParameter::scriptName);
    }
    static bool contains(const Functions& functions, const void* function) {
        return function && std::find(functions.begin(), functions.end(), function) != functions.end();
    }
    void add(const BasicParameter& parameter) {
        m_readers.push_back(reader(parameter));
        m_namers.push_back(namer(parameter));
    }

    Functions m_readers;
    Functions m_namers;
};

/// A compound without a name passes lines to its parts, which have names of their own.
bool mayTakeAnyLine(const BasicParameter& parameter) {
    return !KnownClasses::isNamed(parameter) || !KnownClasses::readsByName(parameter) ||
           (parameter.scriptName().isEmpty() && dynamic_cast<const ParameterSet*>(&parameter));
}

/// A script name taken apart for counting: "Blur_2" is "Blur", "_" and 2.
struct CountedName {
    explicit CountedName(const QString& name) {
        int digits = name.size();
        while (digits > 0 && name.at(digits - 1) >= QLatin1Char('0') && name.at(digits - 1) <= QLatin1Char('9'))
            --digits;
        const bool separated = digits > 0 && name.at(digits - 1) == QLatin1Char('_');
        stem = name.left(separated ? digits - 1 : digits);
        // A name that is nothing but a number counts on without a separator.
        if (!stem.isEmpty())
            stem += QLatin1Char('_');
        bool isNumber = false;
        const quint64 number = name.midRef(digits).toULongLong(&isNumber);
        if (isNumber)
            count = number;
        isGiven = isNumber && count < std::numeric_limits<quint64>::max() && stem + QString::number(count) == name;
    }

    QString stem;
    quint64 count = 1;
    /// Whether counting would give the name.
    bool isGiven = false;
};

} // namespace

void ParameterSet::enter(detail::NameIndex& index, int list, const void* address) {
    if (list == Subsets) {
        const QString& name = static_cast<const ParameterSet*>(address)->m_scriptName;
        index.add(name, address, list);
        const CountedName counted(name);
        if (counted.isGiven)
            index.takeNumber(counted.stem, counted.count);
        return;
    }
    const auto& parameter = *static_cast<const BasicParameter*>(address);
    if (mayTakeAnyLine(parameter))
        index.addForAnyName(address, list);
    if (!KnownClasses::isNamed(parameter))
        return;
    index.add(parameter.scriptName(), address, list);
    const auto* const animated = list == Parameters ? dynamic_cast<const ParameterWithoutType*>(&parameter) : nullptr;
    if (!animated)
        return;
    const auto& additionalNames = animated->extraData().additionalScriptNames;
    for (auto name = additionalNames.keyBegin(); name != additionalNames.keyEnd(); ++name)
        index.add(*name, address, list);
}

std::unique_ptr<detail::NameIndex> ParameterSet::indexed() const {
    auto index = std::make_unique<detail::NameIndex>();
    for (const int list : {Parameters, BasicParameters, Subsets}) {
        const int length = lengthOf(list);
        for (int place = 0; place < length; ++place) {
            if (const void* const member = memberAt(list, place))
                enter(*index, list, member);
        }
    }
    return index;
}

detail::NameIndex& ParameterSet::names() const {
    if (!m_names)
        m_names = indexed();
    return *m_names;
}

/// Without memory for it there is no index until it is asked for again.
void ParameterSet::learn(int list, const void* address) noexcept {
    try {
        if (m_names)
            enter(*m_names, list, address);
    } catch (...) {
        m_names.reset();
    }
}

void ParameterSet::relearn(int list, const void* address) noexcept {
    if (m_names)
        m_names->remove(address);
    learn(list, address);
}

/// For a name that a subset had.
void ParameterSet::freeName(const QString& subsetName) noexcept {
    if (!m_names)
        return;
    try {
        const CountedName counted(subsetName);
        if (counted.isGiven && placeOfSubset(subsetName) < 0)
            m_names->freeNumber(counted.stem, counted.count);
    } catch (...) {
        m_names.reset();
    }
}

/// The first place in a list at which the test passes, -1 without one. Beyond the first few only members are tested
/// whose names have one of the keys.
template <class Keys, class Test> int ParameterSet::firstPlace(int list, const Keys& keys, const Test& test) const {
    const int length = lengthOf(list);
    const int few = std::min(length, fewMembers);
    for (int place = 0; place < few; ++place) {
        if (memberAt(list, place) && test(static_cast<std::size_t>(place)))
            return place;
    }
    if (few == length)
        return -1;
    const detail::NameIndex& index = names();
    std::vector<int> places;
    for (const detail::NameIndex::Key key : keys(index)) {
        index.forEach(key, [&](const detail::NameIndex::Entry& entry) {
            if (entry.list == list)
                places.push_back(placeOf(*listingsOf(list, entry.member).of(this), entry.member));
        });
    }
    std::sort(places.begin(), places.end());
    const auto found = std::find_if(places.begin(), places.end(),
                                    [&](int place) { return place >= few && test(static_cast<std::size_t>(place)); });
    return found == places.end() ? -1 : *found;
}

namespace {

auto keysOfName(QStringView name) {
    return [=](const detail::NameIndex& index) { return index.keysOfName(name); };
}

auto keysOfPrefixes(QStringView name) {
    return [=](const detail::NameIndex& index) { return index.keysOfPrefixes(name); };
}

} // namespace

int ParameterSet::placeOfSubset(QStringView name) const {
    return firstPlace(Subsets, keysOfName(name),
                      [&](std::size_t place) { return name == m_subsets[place].set->m_scriptName; });
}

ParameterSet* ParameterSet::ownSubset(QStringView name) const {
    const int place = placeOfSubset(name);
    return place < 0 ? nullptr : m_subsets[static_cast<std::size_t>(place)].set;
}

ParameterWithoutType* ParameterSet::ownAnimatedParameter(QStringView name) const {
    const int place =
        firstPlace(Parameters, keysOfName(name), [&](std::size_t i) { return name == m_parameters[i]->scriptName(); });
    return place < 0 ? nullptr : m_parameters[static_cast<std::size_t>(place)].get();
}

/// A moved parameter is found only when no other member has the name.
BasicParameter* ParameterSet::ownParameter(QStringView name) const {
    if (ParameterWithoutType* animated = ownAnimatedParameter(name))
        return animated;
    BasicParameter* moved = nullptr;
    const int place = firstPlace(BasicParameters, keysOfName(name), [&](std::size_t i) {
        BasicParameter* const parameter = m_basicParameters[i];
        if (name != parameter->scriptName())
            return false;
        const bool isMoved = dynamic_cast<MovedParameter*>(parameter) != nullptr;
        moved = isMoved && !moved ? parameter : moved;
        return !isMoved;
    });
    return place < 0 ? moved : m_basicParameters[static_cast<std::size_t>(place)];
}

/// Own members first, then the rest of a dotted path below the subsets and compounds whose names begin it. What several
/// sets list is not looked through twice for the same rest.
template <class Result, class Own>
Result* ParameterSet::find(QStringView name, const Own& own, Searched& searched) const {
    if (Result* result = own(*this, name))
        return result;
    Result* result = nullptr;
    const auto findBelow = [&](const ParameterSet* set, const QString& setName, bool isShared) {
        const bool leads = set && !setName.isEmpty() && name.size() > setName.size() &&
                           name.at(setName.size()) == QLatin1Char('.') && name.startsWith(setName);
        if (!leads)
            return false;
        const Searched::value_type place(set, static_cast<int>(name.size()) - setName.size());
        if (isShared && searched.contains(place))
            return false;
        if (isShared)
            searched.insert(place);
        result = set->find<Result>(name.mid(setName.size() + 1), own, searched);
        return result != nullptr;
    };
    const auto keys = keysOfPrefixes(name);
    const int place = firstPlace(Subsets, keys, [&](std::size_t i) {
        const ParameterSet* const subset = m_subsets[i].set;
        return findBelow(subset, subset->m_scriptName, subset->m_parents.size() > 1);
    });
    if (place < 0) {
        firstPlace(Parameters, keys, [&](std::size_t i) {
            const ParameterWithoutType* const parameter = m_parameters[i].get();
            return findBelow(dynamic_cast<const ParameterSet*>(parameter), parameter->scriptName(),
                             parameter->m_listedIn.size() > 1);
        });
    }
    return result;
}

BasicParameter* ParameterSet::findParameter(const QString& name) const {
    Searched searched;
    return find<BasicParameter>(
        name, [](const ParameterSet& set, QStringView own) { return set.ownParameter(own); }, searched);
}

ParameterWithoutType* ParameterSet::findAnimatedParameter(const QString& name) const {
    Searched searched;
    return find<ParameterWithoutType>(
        name, [](const ParameterSet& set, QStringView own) { return set.ownAnimatedParameter(own); }, searched);
}

ParameterSet* ParameterSet::findSubset(const QString& name) const {
    Searched searched;
    return find<ParameterSet>(
        name, [](const ParameterSet& set, QStringView own) { return set.ownSubset(own); }, searched);
}

void ParameterSet::setUniqueName(const boost::shared_ptr<ParameterSet>& subset) {
    if (subset)
        giveUniqueName(*subset);
}

void ParameterSet::giveUniqueName(ParameterSet& subset) {
    if (placeOfSubset(subset.m_scriptName) < 0)
        return;
    const CountedName name(subset.m_scriptName);
    subset.setScriptName(name.stem + QString::number(freeNumber(name.stem, name.count + 1)));
}

quint64 ParameterSet::freeNumber(const QString& stem, quint64 from) const {
    if (lengthOf(Subsets) > fewMembers)
        return names().freeNumberFrom(stem, from);
    while (placeOfSubset(stem + QString::number(from)) >= 0)
        ++from;
    return from;
}

} // namespace Prm

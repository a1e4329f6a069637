#include "prm/project/Invariants.h"

#include "prm/CompoundParameter.h"
#include "prm/Parameter.h"
#include "prm/set/NameIndex.h"

#include <QSet>

#include <algorithm>
#include <optional>
#include <vector>

namespace Prm::detail {

template <class T> const char* Invariants::brokenInStorage(const ParameterWithoutType& parameter) {
    const auto* const typed = dynamic_cast<const Parameter<T>*>(&parameter);
    return typed ? typed->m_views.brokenInvariant() : nullptr;
}

const char* Invariants::brokenInKeyframes(const ParameterWithoutType& parameter) {
    const std::vector<View>& views = parameter.viewList();
    const auto isReal = [](View view) { return view.isValid(); };
    if (!std::all_of(views.begin(), views.end(), isReal))
        return "an invalid view has data";
    if (std::adjacent_find(views.begin(), views.end(), [](View a, View b) { return !(a < b); }) != views.end())
        return "the views are not in ascending order";
    bool ascending = true;
    // Of a copy: a compound makes its list anew when it is asked.
    for (const View view : std::vector<View>(views)) {
        std::optional<Time> former;
        parameter.forEachKeyframeTime(
            [&](const Context& at) {
                ascending = ascending && at.time.isValid() && (!former || *former < at.time);
                former = at.time;
            },
            view);
    }
    return ascending ? nullptr : "keyframes are not in ascending order of valid times";
}

/// Looks at each parameter once, however many look for circles above them.
bool Invariants::leadsToCircle(const ParameterWithoutType& parameter) {
    QSet<const ParameterWithoutType*> passed;
    const ParameterWithoutType* one = &parameter;
    for (; one && one->masterParameter() && !m_withoutCircle.contains(one); one = one->masterParameter()) {
        if (passed.contains(one))
            return true;
        passed.insert(one);
    }
    m_withoutCircle.unite(passed);
    return false;
}

const char* Invariants::brokenInLinks(const ParameterWithoutType& parameter) {
    const ParameterWithoutType* previous = nullptr;
    for (const ParameterWithoutType* one = parameter.extraData().firstConstrained; one; one = one->nextConstrained()) {
        if (one->masterParameter() != &parameter)
            return "a parameter is listed as constrained, and has another master";
        if (one->extraData().previousConstrained != previous)
            return "the list of the constrained parameters is torn";
        previous = one;
    }
    if (parameter.extraData().lastConstrained != previous)
        return "the list of the constrained parameters is torn";
    const ParameterWithoutType* const master = parameter.masterParameter();
    if (master && !parameter.nextConstrained() && master->extraData().lastConstrained != &parameter)
        return "the master does not list the parameter";
    return leadsToCircle(parameter) ? "the masters form a circle" : nullptr;
}

const char* Invariants::brokenInUnion(const CompoundParameter& compound) {
    const CompoundParameter::UpstreamParameters& upstream = compound.extraData().upstreamParameters;
    for (const auto& part : compound.parameters()) {
        if (!upstream.contains(part.get()))
            return "the compound does not listen to one of its parts";
    }
    const std::vector<View> views = compound.viewList();
    const auto isGathered = [&](View view) {
        const auto anew = compound.gathered(view);
        const auto& known = compound.keyframesOf(view);
        return std::equal(known.begin(), known.end(), anew.begin(), anew.end(),
                          [](const auto& a, const auto& b) { return a.time == b.time && a.holders == b.holders; });
    };
    return std::all_of(views.begin(), views.end(), isGathered) ? nullptr : "the union of the keyframes is out of date";
}

const char* Invariants::brokenIn(const ParameterWithoutType& parameter) {
    for (const auto storage :
         {brokenInStorage<bool>, brokenInStorage<int>, brokenInStorage<unsigned int>, brokenInStorage<double>,
          brokenInStorage<QString>, brokenInStorage<QPointF>, brokenInStorage<QPoint>}) {
        if (const char* broken = storage(parameter))
            return broken;
    }
    const auto* const compound = dynamic_cast<const CompoundParameter*>(&parameter);
    if (!compound && parameter.isSplit() != (parameter.viewList().size() > 1))
        return "isSplit is wrong";
    if (const char* broken = brokenInKeyframes(parameter))
        return broken;
    if (const char* broken = compound ? brokenInUnion(*compound) : nullptr)
        return broken;
    return brokenInLinks(parameter);
}

const char* Invariants::brokenInNames(const ParameterSet& set) {
    return !set.m_names || *set.m_names == *set.indexed() ? nullptr : "the names of the members are out of date";
}

const char* Invariants::brokenIn(const ParameterSet& set) {
    const auto knowsOnce = [&](const Listings& listings) {
        return std::count_if(listings.begin(), listings.end(), [&](const Listing& l) { return l.set == &set; }) == 1;
    };
    QSet<const void*> members;
    const auto isNew = [&](const void* member) {
        const int before = members.size();
        members.insert(member);
        return member && members.size() > before;
    };
    for (const auto& parameter : set.parameters()) {
        if (!isNew(static_cast<const BasicParameter*>(parameter.get())) || !knowsOnce(parameter->m_listedIn))
            return "a parameter is listed twice, or does not know of it";
    }
    for (const BasicParameter* parameter : set.basicParameters()) {
        if (!isNew(parameter) || !knowsOnce(parameter->m_listedIn))
            return "a parameter that does not animate is listed twice, or does not know of it";
    }
    for (const auto& parameter : set.m_ownedBasicParameters) {
        if (!members.contains(parameter.get()))
            return "an owned parameter is not listed";
    }
    for (const ParameterSet::Subset& subset : set.listedSubsets()) {
        if (!isNew(subset.set) || !knowsOnce(subset.set->m_parents))
            return "a subset is listed twice, or does not know of it";
        if (subset.owner && subset.owner.get() != subset.set)
            return "a subset is owned by way of another one";
    }
    return brokenInNames(set);
}

const char* Invariants::brokenAround(const BasicParameter& parameter) {
    const auto isAmong = [&](const auto& list) {
        return std::any_of(list.begin(), list.end(), [&](const auto& entry) { return &*entry == &parameter; });
    };
    for (const Listing& listing : parameter.m_listedIn) {
        if (!isAmong(listing.set->parameters()) && !isAmong(listing.set->basicParameters()))
            return "a set that seems to list the parameter does not";
    }
    return nullptr;
}

const char* Invariants::brokenAround(const ParameterSet& set) {
    const auto lists = [&](const Listing& parent) {
        const auto& subsets = parent.set->listedSubsets();
        return std::any_of(subsets.begin(), subsets.end(), [&](const auto& subset) { return subset.set == &set; });
    };
    return std::all_of(set.m_parents.begin(), set.m_parents.end(), lists) ? nullptr
                                                                          : "a set that seems to list it does not";
}

namespace {

QString named(const QString& name, const char* broken) {
    return broken ? name + QLatin1String(": ") + QLatin1String(broken) : QString();
}

/// Of everything below a set, each once.
class Below {
public:
    explicit Below(const ParameterSet& top) : m_top(top) {}

    QString brokenIn(const ParameterSet& set) {
        if (const char* broken = Invariants::brokenIn(set))
            return named(set.scriptName(), broken);
        QString found;
        for (const auto& parameter : set.parameters()) {
            if (const char* broken = m_invariants.brokenIn(*parameter))
                return named(parameter->scriptName(), broken);
            if (const auto* const compound = dynamic_cast<const ParameterSet*>(parameter.get()))
                found = found.isEmpty() ? brokenBelow(*compound) : found;
        }
        for (const ParameterSet* subset : set.subsets())
            found = found.isEmpty() ? brokenBelow(*subset) : found;
        return found;
    }

private:
    QString brokenBelow(const ParameterSet& set) {
        if (&set == &m_top)
            return named(set.scriptName(), "the set contains itself");
        if (m_seen.contains(&set))
            return {};
        m_seen.insert(&set);
        return brokenIn(set);
    }

    const ParameterSet& m_top;
    Invariants m_invariants;
    QSet<const ParameterSet*> m_seen;
};

} // namespace

QString verify(const ParameterSet& set) {
    const QString around = named(set.scriptName(), Invariants::brokenAround(set));
    return around.isEmpty() ? Below(set).brokenIn(set) : around;
}

QString verify(const BasicParameter& parameter) {
    const char* broken = Invariants::brokenAround(parameter);
    const auto* const animated = dynamic_cast<const ParameterWithoutType*>(&parameter);
    if (!broken && animated)
        broken = Invariants().brokenIn(*animated);
    const auto* const set = dynamic_cast<const ParameterSet*>(&parameter);
    return broken || !set ? named(parameter.scriptName(), broken) : verify(*set);
}

QString verify(const CompoundParameter& compound) {
    return verify(static_cast<const BasicParameter&>(compound));
}

} // namespace Prm::detail

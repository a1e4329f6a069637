// The three lists of members: places, holes, and members that leave.

#include "prm/ParameterSet.h"
#include "prm/ParameterWithoutType.h"
#include "prm/set/NameIndex.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace Prm {

const void* ParameterSet::addressOf(const boost::shared_ptr<ParameterWithoutType>& parameter) {
    return static_cast<const BasicParameter*>(parameter.get());
}

const detail::Listings& ParameterSet::listingsOf(int list, const void* address) {
    return list == Subsets ? static_cast<const ParameterSet*>(address)->m_parents
                           : static_cast<const BasicParameter*>(address)->m_listedIn;
}

template <class Act> auto ParameterSet::inList(int list, const Act& act) const {
    switch (list) {
    case Parameters:
        return act(m_parameters);
    case BasicParameters:
        return act(m_basicParameters);
    default:
        return act(m_subsets);
    }
}

int ParameterSet::lengthOf(int list) const {
    return inList(list, [](const auto& members) { return static_cast<int>(members.size()); });
}

const void* ParameterSet::memberAt(int list, int place) const {
    return inList(list, [=](const auto& members) { return addressOf(members[static_cast<std::size_t>(place)]); });
}

bool ParameterSet::hasMembers() const {
    return !m_parameters.empty() || !m_basicParameters.empty() || !m_subsets.empty();
}

/// A member that is not where it was found last is mostly near. Where it is not, many others have shifted as well.
int ParameterSet::placeOf(const detail::Listing& listing, const void* address) const {
    constexpr int near = 64;
    const int length = lengthOf(listing.list);
    const auto isAt = [&](int place) {
        return place >= 0 && place < length && memberAt(listing.list, place) == address;
    };
    for (int away = 0; away <= near; ++away) {
        for (const int place : {listing.place - away, listing.place + away}) {
            if (isAt(place))
                return listing.place = place;
        }
    }
    renumber(listing.list);
    return listingsOf(listing.list, address).of(this)->place;
}

void ParameterSet::renumber(int list) const {
    const int length = lengthOf(list);
    for (int place = 0; place < length; ++place) {
        const void* const member = memberAt(list, place);
        const detail::Listing* const listing = member ? listingsOf(list, member).of(this) : nullptr;
        if (listing)
            listing->place = place;
    }
}

/// Two threads that evaluate a compound may both find holes.
void ParameterSet::moveTogether(int list) const {
    static std::mutex mutex;
    const std::lock_guard<std::mutex> lock(mutex);
    std::atomic<int>& holes = m_holes[static_cast<std::size_t>(list)];
    if (holes.load(std::memory_order_relaxed) == 0)
        return;
    inList(list, [](auto& members) {
        const auto isHole = [](const auto& member) { return !addressOf(member); };
        members.erase(std::remove_if(members.begin(), members.end(), isHole), members.end());
    });
    holes.store(0, std::memory_order_release);
}

void ParameterSet::removeAt(int list, int place) {
    ++m_membership;
    std::atomic<int>& holes = m_holes[static_cast<std::size_t>(list)];
    inList(list, [&](auto& members) {
        // Members that only the set owned are deleted last.
        [[maybe_unused]] const auto leaving = std::exchange(members[static_cast<std::size_t>(place)], {});
        int count = holes.load(std::memory_order_relaxed) + 1;
        for (; !members.empty() && !addressOf(members.back()); --count)
            members.pop_back();
        holes.store(count, std::memory_order_relaxed);
        if (2 * static_cast<std::size_t>(count) > members.size())
            closeHoles(list);
    });
}

void ParameterSet::removeListed(const detail::Listing& listing, const void* address) noexcept {
    const int place = placeOf(listing, address);
    if (m_names)
        m_names->remove(address);
    removeAt(listing.list, place);
}

void ParameterSet::removeSubset(ParameterSet& subset) noexcept {
    const detail::Listing* const listing = subset.m_parents.of(this);
    if (!listing)
        return;
    // Kept alive until nothing more is asked of it.
    const auto owner = m_subsets[static_cast<std::size_t>(placeOf(*listing, &subset))].owner;
    removeListed(*listing, &subset);
    subset.m_parents.remove(this);
    freeName(subset.m_scriptName);
}

void ParameterSet::putIn(BasicParameter& parameter, const boost::shared_ptr<void>& owner, int position) {
    const detail::LifeGuard guard(*this);
    const detail::LifeGuard parameterGuard(parameter);
    auto* const animated = qobject_cast<ParameterWithoutType*>(&parameter);
    if (animated && owner) {
        addParameter(boost::shared_ptr<ParameterWithoutType>(owner, animated));
    } else if (animated) {
        addParameter(*animated);
    } else {
        m_ownedBasicParameters.reserve(m_ownedBasicParameters.size() + 1);
        addBasicParameter(parameter);
        if (owner)
            m_ownedBasicParameters.emplace_back(owner, &parameter);
    }
    const detail::Listing* const listing =
        guard.alive() && parameterGuard.alive() ? parameter.m_listedIn.of(this) : nullptr;
    if (!listing)
        return;
    closeHoles(listing->list);
    const int from = placeOf(*listing, &parameter);
    if (position < 0 || position >= from)
        return;
    inList(listing->list, [=](auto& members) {
        std::rotate(members.begin() + position, members.begin() + from, members.begin() + from + 1);
    });
    listing->place = position;
    ++m_membership;
}

boost::shared_ptr<void> ParameterSet::takeOut(BasicParameter& parameter, int& position) {
    const detail::Listing listing = *parameter.m_listedIn.of(this);
    closeHoles(listing.list);
    position = placeOf(listing, &parameter);
    boost::shared_ptr<void> owner;
    if (listing.list == Parameters) {
        const auto& leaving = m_parameters[static_cast<std::size_t>(position)];
        if (auto* const compound = dynamic_cast<ParameterWithoutType*>(this))
            compound->removeUpstreamParameter(*leaving);
        owner = leaving;
    } else {
        auto& all = m_ownedBasicParameters;
        const auto owned =
            std::find_if(all.begin(), all.end(), [&](const auto& one) { return one.get() == &parameter; });
        if (owned != all.end()) {
            owner = *owned;
            all.erase(owned);
        }
    }
    removeListed(listing, &parameter);
    delist(parameter);
    return owner;
}

boost::shared_ptr<void> ParameterSet::takeOut(ParameterSet& subset, int& position) {
    closeHoles(Subsets);
    position = placeOf(*subset.m_parents.of(this), &subset);
    const boost::shared_ptr<ParameterSet> owner = m_subsets[static_cast<std::size_t>(position)].owner;
    unlistSubset(subset);
    return owner;
}

} // namespace Prm

#include "prm/KeyframeSelection.h"

#include "prm/ParameterSet.h"
#include "prm/edits/KeyframeMoves.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace Prm {

void KeyframeSelection::add(ParameterWithoutType& parameter, const TimeSpan& span) {
    for (const auto& owner : detail::ownersOf(parameter)) {
        const std::vector<View> views = owner->viewList();
        for (const View view : views)
            addTimes(*owner, view, span);
        if (views.empty())
            addTimes(*owner, View(View::defaultViewId()), span);
    }
}

void KeyframeSelection::add(ParameterWithoutType& parameter, const View& view, const TimeSpan& span) {
    for (const auto& owner : detail::ownersOf(parameter))
        addTimes(*owner, detail::writtenAt(*owner, Context(Time(), view)).view, span);
}

void KeyframeSelection::addSet(const ParameterSet& set, const TimeSpan& span) {
    set.forEachParameter([&](ParameterWithoutType* parameter) { add(*parameter, span); }, true);
}

void KeyframeSelection::addTimes(ParameterWithoutType& owner, const View& view, const TimeSpan& span) {
    std::vector<Time> times = detail::keyframeTimes(owner, view);
    times.erase(std::remove_if(times.begin(), times.end(), [&](Time time) { return !span.contains(time); }),
                times.end());
    const auto [place, isNew] = m_places.emplace(std::make_pair(&owner, view), m_views.size());
    if (isNew || !m_views[place->second].parameter) {
        place->second = m_views.size();
        m_views.push_back({&owner, view, std::move(times)});
        return;
    }
    std::vector<Time>& former = m_views[place->second].times;
    std::vector<Time> both;
    std::set_union(former.begin(), former.end(), times.begin(), times.end(), std::back_inserter(both));
    former = std::move(both);
}

std::size_t KeyframeSelection::count() const {
    std::size_t sum = 0;
    for (const OfView& one : m_views)
        sum += one.times.size();
    return sum;
}

} // namespace Prm

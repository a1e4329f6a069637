#include "prm/edits/ReshapingPlan.h"

#include "prm/edits/KeyframeMoves.h"
#include "prm/untyped/State.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>

namespace Prm::detail {

void ReshapingPlan::add(ParameterWithoutType& parameter) {
    for (const auto& owner : ownersOf(parameter)) {
        if (!owner->isKeyframed() || reshaperOf(*owner))
            continue;
        if (auto reshaper = KeyframeReshaper::of(*owner))
            m_reshapers.push_back(std::move(reshaper));
    }
}

KeyframeReshaper* ReshapingPlan::reshaperOf(const ParameterWithoutType& parameter) const {
    const auto found = std::find_if(m_reshapers.begin(), m_reshapers.end(),
                                    [&](const auto& reshaper) { return reshaper->parameter() == &parameter; });
    return found == m_reshapers.end() ? nullptr : found->get();
}

void ReshapingPlan::restart() {
    m_refusal = nullptr;
    for (const auto& reshaper : m_reshapers) {
        if (reshaper->parameter())
            reshaper->restart();
    }
}

void ReshapingPlan::reshape(const View& view, const Reshaping& how) {
    for (const auto& reshaper : m_reshapers)
        reshape(*reshaper, view, how);
}

void ReshapingPlan::reshape(KeyframeReshaper& one, const View& view, const Reshaping& how) {
    std::vector<View> views{view};
    if (!view.isValid())
        views = one.views();
    if (views.empty())
        views.emplace_back(View::defaultViewId());
    for (const View each : views) {
        if (!m_refusal)
            m_refusal = one.reshape(each, how);
    }
}

void ReshapingPlan::keepTogether(ParameterWithoutType& edited) {
    const std::vector<ParameterWithoutType*> compounds = State::keyedTogether(edited);
    for (bool again = true; again && !m_refusal;) {
        again = false;
        for (ParameterWithoutType* const compound : compounds)
            again = completeTimes(*compound) || again;
    }
}

bool ReshapingPlan::completeTimes(ParameterWithoutType& compound) {
    add(compound);
    std::map<View, std::set<Time>> changed;
    const Owners owners = ownersOf(compound);
    for (const auto& owner : owners) {
        const KeyframeReshaper* const one = reshaperOf(*owner);
        for (const View view : one ? one->views() : std::vector<View>()) {
            const std::vector<Time> former = one->formerTimes(view);
            const std::vector<Time> now = one->times(view);
            std::set<Time>& times = changed[view];
            std::set_symmetric_difference(former.begin(), former.end(), now.begin(), now.end(),
                                          std::inserter(times, times.end()));
        }
    }
    bool any = false;
    for (const auto& [view, times] : changed) {
        std::set<Time> kept;
        for (const auto& owner : owners) {
            const KeyframeReshaper* const one = reshaperOf(*owner);
            const std::vector<Time> now = one ? one->times(view) : std::vector<Time>();
            std::set_intersection(times.begin(), times.end(), now.begin(), now.end(), std::inserter(kept, kept.end()));
        }
        for (const auto& owner : owners) {
            KeyframeReshaper* const one = reshaperOf(*owner);
            const std::vector<Time> now = one ? one->times(view) : std::vector<Time>();
            for (const Time time : one ? kept : std::set<Time>()) {
                if (std::binary_search(now.begin(), now.end(), time))
                    continue;
                reshape(*one, view, {KeyInsertion{time}});
                any = true;
            }
        }
    }
    return any && !m_refusal;
}

Places ReshapingPlan::places() const {
    Places all;
    for (const auto& reshaper : m_reshapers) {
        const Places places = reshaper->places();
        all.insert(all.end(), places.begin(), places.end());
    }
    return all;
}

void ReshapingPlan::apply() const {
    for (const auto& reshaper : m_reshapers) {
        if (reshaper->parameter())
            reshaper->store();
    }
    for (const auto& reshaper : m_reshapers) {
        if (reshaper->parameter())
            reshaper->announce();
    }
}

} // namespace Prm::detail

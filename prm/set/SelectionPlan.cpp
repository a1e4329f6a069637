#include "prm/set/SelectionPlan.h"

#include "prm/edits/KeyframeMoves.h"
#include "prm/untyped/Restoring.h"

#include <map>
#include <set>

namespace Prm::detail {

namespace {

SelectedKeyframes::Times listOf(const std::set<Time>& times) {
    return std::make_shared<const std::vector<Time>>(times.begin(), times.end());
}

} // namespace

SelectionPlan::SelectionPlan(const KeyframeSelection& selection) {
    struct Times {
        std::set<Time> selected;
        std::set<Time> together;
    };
    std::map<std::pair<KeyframeReshaper*, View>, Times> all;
    const auto timesOf = [&](ParameterWithoutType& owner, const View& view) {
        m_plan.add(owner);
        KeyframeReshaper* const reshaper = m_plan.reshaperOf(owner);
        return reshaper ? &all[{reshaper, writtenAt(owner, Context(Time(), view)).view}] : nullptr;
    };
    for (const KeyframeSelection::OfView& one : selection.views()) {
        if (!one.parameter || one.times.empty())
            continue;
        if (Times* const times = timesOf(*one.parameter, one.view))
            times->selected.insert(one.times.begin(), one.times.end());
        for (ParameterWithoutType* const compound : State::keyedTogether(*one.parameter)) {
            for (const auto& part : ownersOf(*compound)) {
                if (Times* const times = timesOf(*part, one.view))
                    times->together.insert(one.times.begin(), one.times.end());
            }
        }
    }
    for (auto& [place, times] : all) {
        times.together.insert(times.selected.begin(), times.selected.end());
        m_views.push_back({place.first, place.second, listOf(times.selected), listOf(times.together)});
    }
}

const char* SelectionPlan::compute(const KeyframeChange& change) {
    m_plan.restart();
    const char* refusal = nullptr;
    for (const OfView& one : m_views) {
        if (!refusal && one.reshaper->parameter())
            refusal = one.reshaper->reshape(one.view, {SelectedKeyframes{one.selected, one.together, change}});
    }
    const bool mayAdd = !change.parts.empty() || (change.handles && change.handles->addsExtremum);
    for (std::size_t i = 0; mayAdd && !refusal && i < m_views.size(); ++i) {
        if (ParameterWithoutType* const parameter = m_views[i].reshaper->parameter())
            m_plan.keepTogether(*parameter);
        refusal = m_plan.refusal();
    }
    return refusal;
}

State::EditedPlaces SelectionPlan::places() const {
    State::EditedPlaces edited;
    for (const auto& reshaper : m_plan.reshapers()) {
        const Places places = reshaper->parameter() ? reshaper->places() : Places();
        if (!places.empty())
            edited.emplace_back(reshaper->parameter(), places);
    }
    return edited;
}

void SelectionPlan::putBack() {
    m_plan.restart();
    FirstException first;
    for (const auto& reshaper : m_plan.reshapers()) {
        if (reshaper->parameter())
            first.during([&] { reshaper->store(); });
    }
    for (const auto& reshaper : m_plan.reshapers()) {
        if (reshaper->parameter())
            first.during([&] { reshaper->announce(); });
    }
    first.goOn();
}

} // namespace Prm::detail

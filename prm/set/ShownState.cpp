#include "prm/set/ShownState.h"

#include <algorithm>

namespace Prm::detail {

ShownState::Link::Link(const ParameterWithoutType& of) : parameter(&of), guard(of), changes(of.m_changes) {
    if (const Differences* const type = typeOf(of))
        snapshot = type->snapshot(of);
}

bool ShownState::Link::isOf(const ParameterWithoutType& now) const {
    return guard.alive() && parameter == &now && changes == now.m_changes && (!snapshot || snapshot->isOf(now));
}

const ParameterWithoutType* ShownState::shownInstead(const ParameterWithoutType& parameter, const Differences& type) {
    const ParameterWithoutType* const master = parameter.masterParameter();
    return master && master->asTyped(type.valueType()) ? master : nullptr;
}

ShownState::ShownState(const ParameterWithoutType& parameter) {
    const Differences* const type = typeOf(parameter);
    m_isOpaque = !type;
    std::vector<const ParameterWithoutType*> chain{&parameter};
    while (type && chain.back()) {
        m_isOpaque = m_isOpaque || type->asksHooks(*chain.back());
        chain.push_back(shownInstead(*chain.back(), *type));
    }
    if (type)
        chain.pop_back();
    for (const ParameterWithoutType* const one : chain) {
        if (m_isOpaque || one == chain.back())
            m_links.emplace_back(*one);
    }
}

bool ShownState::isOf(const ParameterWithoutType& parameter) const {
    const Differences* const type = typeOf(parameter);
    const ParameterWithoutType* shown = &parameter;
    std::size_t position = 0;
    while (true) {
        const ParameterWithoutType* const next = type ? shownInstead(*shown, *type) : nullptr;
        if (m_isOpaque || !next) {
            if (position == m_links.size() || !m_links[position].isOf(*shown))
                return false;
            ++position;
        }
        if (!next)
            return position == m_links.size();
        if (!m_isOpaque && type->asksHooks(*shown))
            return false;
        shown = next;
    }
}

Reach ShownState::differenceTo(const ShownState& now) const {
    if (m_isOpaque || now.m_isOpaque)
        return everywhere();
    const TracksSnapshot* const former = m_links.back().snapshot.get();
    const TracksSnapshot* const present = now.m_links.back().snapshot.get();
    return former && present ? former->differenceTo(*present) : everywhere();
}

bool ShownState::hasCustomKinds() const {
    return std::any_of(m_links.begin(), m_links.end(),
                       [](const Link& link) { return link.snapshot && link.snapshot->hasCustomKinds(); });
}

} // namespace Prm::detail

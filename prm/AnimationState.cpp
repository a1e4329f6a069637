#include "prm/AnimationState.h"

#include "prm/Views.h"

namespace Prm {

AnimationState::AnimationState(AnimationFlags flags, const IViewsProvider* provider)
    : AnimationFlags(flags), m_provider(provider) {}

std::vector<View> AnimationState::views() const {
    if (!m_provider)
        return {View(View::defaultViewId())};
    return m_provider->views(*this);
}

} // namespace Prm

#include "prm/AnimationState.h"

namespace Prm {

AnimationState::AnimationState(AnimationFlags flags, const IViewsProvider* provider)
    : AnimationFlags(flags), m_provider(provider) {}

} // namespace Prm

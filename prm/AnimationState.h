#pragma once

#include "prm/Export.h"
#include "prm/View.h"

#include <QtGlobal>

#include <array>
#include <vector>

namespace Prm {

class IViewsProvider;

/// Which views an edit concerns: four flags, packed into the low four bits of a number (bit i is flag i). The library
/// reads only *all views* (flag 2); the others are for the host.
///
/// \snippet times_and_views.cpp state
/// \threads A plain value.
class PRM_EXPORT AnimationFlags {
public:
    static constexpr quint32 DEFAULT = 3;

    constexpr AnimationFlags() : AnimationFlags(DEFAULT) {}
    /// Bits above the low four are dropped.
    explicit constexpr AnimationFlags(quint32 packed)
        : m_flags{{(packed & 1u) != 0, (packed & 2u) != 0, (packed & 4u) != 0, (packed & 8u) != 0}} {}

    /// The four flags as a number.
    constexpr quint32 packed() const {
        return (m_flags[0] ? 1u : 0u) | (m_flags[1] ? 2u : 0u) | (m_flags[2] ? 4u : 0u) | (m_flags[3] ? 8u : 0u);
    }

    /// Whether an edit concerns every view of the project instead of the current ones.
    constexpr bool allViews() const { return m_flags[2]; }
    /// Sets whether an edit concerns every view.
    void setAllViews(bool allViews) { m_flags[2] = allViews; }

    friend constexpr bool operator==(const AnimationFlags& a, const AnimationFlags& b) {
        return a.packed() == b.packed();
    }
    friend constexpr bool operator!=(const AnimationFlags& a, const AnimationFlags& b) { return !(a == b); }

private:
    std::array<bool, 4> m_flags;
};

/// Flags together with the registry that resolves them into views.
///
/// \snippet times_and_views.cpp state
/// \threads A plain value; `views()` calls the provider on the calling thread.
class PRM_EXPORT AnimationState : public AnimationFlags {
public:
    /// Only view 0.
    AnimationState() : AnimationState(AnimationFlags()) {}
    /// Only view 0. Explicit, so that a context and flags do not convert to a frame and a state, which would lose the
    /// context's view.
    explicit AnimationState(AnimationFlags flags) : AnimationState(flags, nullptr) {}
    /// The provider is not owned and may be null.
    AnimationState(AnimationFlags flags, const IViewsProvider* provider);

    /// The provider's views for these flags; without a provider only view 0.
    std::vector<View> views() const;

    /// The provider given to the constructor; may be null.
    const IViewsProvider* provider() const { return m_provider; }

    /// For the host; the library does not read it.
    void* hostData = nullptr;

private:
    const IViewsProvider* m_provider;
};

} // namespace Prm

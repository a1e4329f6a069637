#pragma once

#include "prm/AnimationState.h"
#include "prm/Export.h"
#include "prm/Time.h"
#include "prm/View.h"

#include <QMetaType>

class QDebug;

namespace Prm {

class ParameterWithoutType;

/// A time without a view; a `Frame` can be made from it.
///
/// \snippet times_and_views.cpp time
/// \threads A plain value.
class PRM_EXPORT BaseContext {
public:
    constexpr BaseContext() = default;
    explicit constexpr BaseContext(Time at) : time(at) {}

    Time time;
};

/// A time in a view, at which parameters are evaluated and edited. A default context is time 0 in the default view.
/// Registered with Qt's meta-types as "Prm::Context" when the library is loaded.
///
/// \snippet times_and_views.cpp context
/// \threads A plain value.
class PRM_EXPORT Context : public BaseContext {
public:
    class Explicit;

    /// Tag for a context of the invalid time.
    struct InvalidTime {};
    static constexpr InvalidTime INVALID_TIME{};

    constexpr Context() = default;
    constexpr Context(InvalidTime) : BaseContext(Time::INVALID) {}
    constexpr Context(Time::Invalid) : BaseContext(Time::INVALID) {}
    constexpr Context(Time at, View inView = View(), AnimationFlags withFlags = {})
        : BaseContext(at), view(inView), flags(withFlags) {}
    constexpr Context(const Explicit& exact);

    /// Exact: the same time, view and flags.
    friend constexpr bool operator==(const Context& a, const Context& b) {
        return a.time == b.time && a.view == b.view && a.flags == b.flags;
    }
    friend constexpr bool operator!=(const Context& a, const Context& b) { return !(a == b); }

    View view;
    AnimationFlags flags;
};

/// Exactly one time in exactly one view, for operations that concern nothing else, such as deleting a keyframe.
///
/// \snippet times_and_views.cpp context
/// \threads A plain value.
class PRM_EXPORT Context::Explicit : public BaseContext {
public:
    constexpr Explicit() = default;
    constexpr Explicit(Time at, View inView, AnimationFlags withFlags = {})
        : BaseContext(at), view(inView), flags(withFlags) {}
    explicit constexpr Explicit(const Context& context)
        : BaseContext(context.time), view(context.view), flags(context.flags) {}

    View view;
    AnimationFlags flags;
};

constexpr Context::Context(const Explicit& exact) : BaseContext(exact.time), view(exact.view), flags(exact.flags) {}

/// Names one keyframe: the parameter (may be null), the view, and the position in that view's list of keyframes.
///
/// \snippet times_and_views.cpp index
/// \threads A plain value; `toContext()` calls the parameter, which must exist.
class PRM_EXPORT KeyframeIndex {
public:
    /// The index that means no keyframe.
    static constexpr quint32 INVALID_INDEX = 0xFFFFFFFFu;

    KeyframeIndex() = default;
    KeyframeIndex(const ParameterWithoutType* ofParameter, View inView, quint32 atIndex)
        : parameter(ofParameter), view(inView), index(atIndex) {}

    /// The keyframe's time in its view; the invalid time in the default view if there is no parameter or no valid view.
    Context toContext() const;

    const ParameterWithoutType* parameter = nullptr;
    View view = View::INVALID();
    quint32 index = 0;
};

inline bool operator==(const KeyframeIndex& a, const KeyframeIndex& b) {
    return a.parameter == b.parameter && a.view == b.view && a.index == b.index;
}
inline bool operator!=(const KeyframeIndex& a, const KeyframeIndex& b) {
    return !(a == b);
}

PRM_EXPORT QDebug operator<<(QDebug debug, const Context& context);

} // namespace Prm

Q_DECLARE_METATYPE(Prm::Context)

#pragma once

#include "prm/Export.h"
#include "prm/Extent.h"

#include <memory>

namespace Prm {

namespace detail {
class Watch;
}

/// Finds what has changed below a set since it was asked last: values, members, names. Nothing is missed, however it
/// was changed: announced or not, with signals blocked, by undo, by project text, through a master outside the set. It
/// connects to nothing; it compares the present state with snapshots that share their keyframes with the parameters.
///
/// A model or a cache of a host makes one and asks it once a frame. A parameter that has not changed costs a few
/// comparisons; one that has, a pass over its keyframes; and its first edit after each call makes a copy of the edited
/// view's keyframes.
///
/// A class of a host whose hooks read other parameters has to emit a change of its own when these change. Parameters
/// that do not animate are compared by value. The set may be deleted: then its members have gone.
///
/// \snippet dope_sheet.cpp take
/// \threads The owning thread.
class PRM_EXPORT ChangedSince {
public:
    explicit ChangedSince(ParameterSet& set);
    ~ChangedSince();
    ChangedSince(ChangedSince&& other) noexcept;
    ChangedSince& operator=(ChangedSince&& other) noexcept;

    /// What has changed since the last call, or since construction. A member that came, and each that went, differs at
    /// all times. What was changed and changed back is not included.
    Extent take();

private:
    std::unique_ptr<detail::Watch> m_watch;
};

} // namespace Prm

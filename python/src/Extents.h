#pragma once

#include "prm/Extent.h"
#include "python/src/Handles.h"

#include <optional>

namespace PrmPython {

/// Where values may differ: of the changed parameter and those that show it, or of a group.
struct Extent { // NOLINT(bugprone-exception-escape): its move throws nothing
    Prm::Extent extent;
    /// The parameter that changed, or the group that was watched.
    std::optional<Handle> changed;
    std::optional<GroupHandle> watched;
    py::list parameters;
    py::list came;
    py::list renamed;
    /// Paths below the group, since the objects may be gone.
    QStringList went;
};

/// To be called while the change is being announced.
Extent extentOf(const KeeperPointer& keeper, const Prm::ParameterChange& change);

} // namespace PrmPython

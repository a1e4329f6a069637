#pragma once

#include "prm/Export.h"

namespace Prm {

class ParameterSet;

/// The host's view of a tree of sets: told when subtrees come and go. Must outlive the sets that belong to it.
///
/// \snippet host_services.cpp tree
/// \threads Told on the thread that changes the sets, inside the change.
struct PRM_EXPORT ParameterTree {
    virtual ~ParameterTree();
    /// The subtree is in its place.
    virtual void subtreeAdded(ParameterSet* subtree) = 0;
    /// The subtree is still whole and in its place. Told from a set's destructor, when it is no more than a
    /// `ParameterSet`.
    virtual void subtreeRemoved(ParameterSet* subtree) = 0;
};

} // namespace Prm

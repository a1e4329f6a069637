#pragma once

#include "prm/Export.h"

namespace Prm {

class ParameterSet;

/// Implemented by the host, which is notified when subtrees are added to and removed from a tree of sets. It must
/// outlive the sets that belong to it.
///
/// \snippet host_services.cpp tree
/// \threads Called on the thread that changes the sets, before the change returns.
struct PRM_EXPORT ParameterTree {
    virtual ~ParameterTree();
    /// The subtree has been added.
    virtual void subtreeAdded(ParameterSet* subtree) = 0;
    /// The subtree is about to be removed; it is complete and in its place. Also called from a set's destructor, where
    /// derived parts of the set are destroyed already.
    virtual void subtreeRemoved(ParameterSet* subtree) = 0;
};

} // namespace Prm

#pragma once

#include "prm/Export.h"

#include <QtGlobal>

#include <atomic>

namespace Prm::detail {

/// How often any parameter has been tied to a master, or freed. Counted after the tie has changed and before its owner
/// does anything else: who reads the same number before and after an evaluation has seen one state of the ties.
extern PRM_EXPORT std::atomic<quint64> masterChanges;

/// One parameter that asks another one, its master. Scopes of a thread nest where a master is of a class of a host's,
/// which may override the question, and asks its own master in turn.
class PRM_EXPORT MasterScope {
public:
    MasterScope();
    ~MasterScope();
    MasterScope(const MasterScope&) = delete;
    MasterScope& operator=(const MasterScope&) = delete;

    /// Whether so many scopes are nested on this thread that its stack might not hold many more.
    static bool isDeep();
};

} // namespace Prm::detail

#pragma once

#include "host/bsc/MementoBase.h"
#include "host/bsc/MementoUndoable.h"
#include "prm/BasicParameter.h"

#include <boost/shared_ptr.hpp>

namespace Prm::detail {

using Snapshot = boost::shared_ptr<Bsc::MementoBase>;

/// Changes a parameter; when that throws, goes back before the exception goes on. What going back throws comes too
/// late: it is an observer's, who was told of what is done.
template <class Change, class Back>
void changeOrGoBack(const BasicParameter& parameter, const Change& change, const Back& back) {
    const LifeGuard guard(parameter);
    try {
        change();
    } catch (...) {
        try {
            if (guard.alive())
                back();
        } catch (...) { // NOLINT(bugprone-empty-catch)
        }
        throw;
    }
}

/// The same, back to a snapshot.
template <class Change> void changeOrPutBack(BasicParameter& parameter, const Snapshot& former, const Change& change) {
    changeOrGoBack(parameter, change, [&] { Bsc::importState(parameter, former, true); });
}

} // namespace Prm::detail

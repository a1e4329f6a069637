#pragma once

#include "host/Export.h"
#include "host/bsc/MementoBase.h"

#include <boost/shared_ptr.hpp>

namespace Bsc {

/// An object whose state can be taken as a snapshot and put back. Meant as a virtual base.
///
/// Restore states with `Bsc::importState`, which sets `isImporting`, and not by calling the two import operations.
///
/// \snippet host_services.cpp snapshot
/// \threads One at a time.
class PRM_HOST_EXPORT MementoUndoable {
public:
    /// Takes over the state of a snapshot that an object of the same kind exported. A snapshot of another kind throws
    /// (`std::bad_cast`) before anything changes; null is not allowed.
    virtual void doImportState(boost::shared_ptr<MementoBase> snapshot) = 0;
    /// Called once the state is back, for what has to be worked out from it. Does nothing here.
    virtual void postImportState();
    virtual ~MementoUndoable();
    /// A new snapshot; the object does not change.
    virtual boost::shared_ptr<MementoBase> exportState() const = 0;

    /// Whether a state is being put back right now.
    bool isImporting() const noexcept { return m_import.isRunning; }

protected:
    // Defaulted, so that the copy constructors of derived classes need not name this base.
    MementoUndoable() = default;
    MementoUndoable(const MementoUndoable&) = default;
    MementoUndoable& operator=(const MementoUndoable&) = default;

private:
    class ImportScope;
    friend PRM_HOST_EXPORT void importState(MementoUndoable& object, boost::shared_ptr<MementoBase> snapshot,
                                            bool flagDuringPost);

    /// Importing belongs to the object and not to its state: a copy is not importing, and assignment changes nothing.
    struct Import {
        Import() = default;
        Import(const Import&) noexcept {}
        Import& operator=(const Import&) noexcept { return *this; }

        ImportScope* innermost = nullptr;
        bool isRunning = false;
    };
    Import m_import;
};

/// Puts a snapshot back: `doImportState`, then `postImportState`. `isImporting` is true during the first, and during
/// the second as well when `flagDuringPost` is set; then it is again what it was before, also when an exception passes
/// (which it does unchanged; `postImportState` is left out when `doImportState` throws). Imports may nest.
///
/// Either operation may lead to the object's destruction, for instance by an observer. From then on nothing of it is
/// touched, and `postImportState` is not called. Nothing is allocated.
PRM_HOST_EXPORT void importState(MementoUndoable& object, boost::shared_ptr<MementoBase> snapshot,
                                 bool flagDuringPost = false);

} // namespace Bsc

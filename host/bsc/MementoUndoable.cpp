#include "host/bsc/MementoUndoable.h"

#include <utility>

namespace Bsc {

/// One import under way. The scopes of an object form a chain from the innermost outwards, so that its destructor can
/// reach them all.
class MementoUndoable::ImportScope {
public:
    explicit ImportScope(MementoUndoable& object) noexcept
        : m_object(&object), m_outer(object.m_import.innermost), m_wasImporting(object.m_import.isRunning) {
        object.m_import.innermost = this;
        object.m_import.isRunning = true;
    }

    ~ImportScope() {
        if (!m_object)
            return;
        putFlagBack();
        m_object->m_import.innermost = m_outer;
    }

    ImportScope(const ImportScope&) = delete;
    ImportScope& operator=(const ImportScope&) = delete;

    bool objectIsAlive() const noexcept { return m_object != nullptr; }
    void putFlagBack() noexcept { m_object->m_import.isRunning = m_wasImporting; }

    /// Notes in this scope and all outer ones that the object was destroyed.
    void disconnectChain() noexcept {
        for (ImportScope* scope = this; scope; scope = scope->m_outer)
            scope->m_object = nullptr;
    }

private:
    MementoUndoable* m_object;
    ImportScope* m_outer;
    bool m_wasImporting;
};

MementoUndoable::~MementoUndoable() {
    if (m_import.innermost)
        m_import.innermost->disconnectChain();
}

void MementoUndoable::postImportState() {}

void importState(MementoUndoable& object, boost::shared_ptr<MementoBase> snapshot, bool flagDuringPost) {
    MementoUndoable::ImportScope scope(object);
    object.doImportState(std::move(snapshot));
    if (!scope.objectIsAlive())
        return;
    if (!flagDuringPost)
        scope.putFlagBack();
    object.postImportState();
}

} // namespace Bsc

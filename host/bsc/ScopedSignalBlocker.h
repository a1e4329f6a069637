#pragma once

#include <QObject>
#include <QPointer>

namespace Bsc {

/// Blocks the signals of an object for a scope. Does nothing if they are blocked already. The object may be null, and
/// may be deleted within the scope.
///
/// \snippet observing.cpp block
/// \threads The thread of the object whose signals are blocked.
class ScopedSignalBlocker {
public:
    explicit ScopedSignalBlocker(QObject* object)
        : m_blockedHere(object && !object->signalsBlocked() ? object : nullptr) {
        if (m_blockedHere)
            m_blockedHere->blockSignals(true);
    }
    explicit ScopedSignalBlocker(QObject& object) : ScopedSignalBlocker(&object) {}

    ~ScopedSignalBlocker() {
        if (m_blockedHere)
            m_blockedHere->blockSignals(false);
    }

    ScopedSignalBlocker(const ScopedSignalBlocker&) = delete;
    ScopedSignalBlocker& operator=(const ScopedSignalBlocker&) = delete;

private:
    QPointer<QObject> m_blockedHere;
};

} // namespace Bsc

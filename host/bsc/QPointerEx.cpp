#include "host/bsc/QPointerEx.h"

namespace Bsc::detail {

// Two QPointers to dead objects are equal, whichever objects they were; two weak pointers are not. Qt keeps the
// constructor for objects as deprecated.
QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED
QWeakPointer<const QObject> lifeOf(const QObject* object) {
    return QWeakPointer<const QObject>(object);
}
QT_WARNING_POP

} // namespace Bsc::detail

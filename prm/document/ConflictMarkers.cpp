#include "prm/document/ConflictMarkers.h"

#include "prm/document/Problem.h"
#include "prm/project/ProjectLines.h"

namespace Prm::document {

void refuseConflicts(const QByteArray& text, const QString& name) {
    constexpr int shownSigns = 7;
    const detail::ProjectLine marker = detail::conflictMarkerIn(text);
    if (marker.number > 0)
        throw Problem("%1:%2: unresolved merge conflict, the line begins with '%3'", name, marker.number,
                      marker.bytes().left(shownSigns));
}

} // namespace Prm::document

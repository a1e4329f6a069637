#pragma once

#include "prm/Export.h"

#include <QByteArray>
#include <QString>

namespace Prm::document {

/// A version control system leaves both sides of a conflict in the file, between such lines. To read on would mix the
/// sides, and keep the markers. Throws `Problem`, which names the text so.
PRM_EXPORT void refuseConflicts(const QByteArray& text, const QString& name);

} // namespace Prm::document

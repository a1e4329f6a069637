#pragma once

#include "prm/Export.h"
#include "prm/document/ParameterPatch.h"

namespace Prm::document {

/// The header of a text that is written now.
PRM_EXPORT Lines newestHeader();

/// What makes the text one of the newest version of the format, which says the same to a reader of that version. Throws
/// `Problem` for a text that is newer, and names the file.
PRM_EXPORT LineChanges upgradingChanges(const ProjectText& text, const QString& name);

} // namespace Prm::document

#pragma once

#include "tool/edit/ParameterPatch.h"

namespace Tool {

/// The header of a text that is written now.
Lines newestHeader();

/// What makes the text one of the newest version of the format, which says the same to a reader of that version. Throws
/// `Problem` for a text that is newer, and names the file.
LineChanges upgradingChanges(const ProjectText& text, const QString& name);

} // namespace Tool

#pragma once

#include "tool/ProjectText.h"
#include "tool/edit/WrittenParameter.h"

#include <QByteArray>

#include <map>
#include <vector>

namespace Tool {

/// What stands in place of lines, which may be nothing. Other lines keep their bytes.
using LineChanges = std::map<int, std::vector<QByteArray>>;

/// The whole text with such changes. Lines that are new end as the line does whose place they take; a text without a
/// last line end keeps having none.
QByteArray bytesWith(const ProjectText& text, const LineChanges& changes);

/// The fewest changes to a parameter's lines that make it say what an edit has made of it: keyframes and values that
/// are as before stay where they stand. Throws `Problem` when the format cannot hold it, such as two keyframes whose
/// times are written alike.
LineChanges changedLines(const ProjectText& text, int node, const WrittenState& before, const WrittenParameter& edited);

/// The same with all lines of keyframes and values anew, at the place of the first, for a reader of that version.
LineChanges allLines(const ProjectText& text, int node, const WrittenState& before, const WrittenParameter& edited,
                     const Prm::ProjectFileVersion& version);

} // namespace Tool

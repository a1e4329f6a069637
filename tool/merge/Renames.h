#pragma once

#include "tool/ProjectText.h"
#include "tool/merge/Judge.h"

#include <array>
#include <map>

namespace Tool {

/// The paths of groups and what becomes of them.
using Renames = std::map<QByteArray, QByteArray>;

/// The groups of a text that have another path in the other text: a group that is gone and one that is new, at least
/// half of whose parameters have the same names and lines.
Renames renamesIn(const ProjectText& from, const ProjectText& to);

/// The text with these groups renamed, in the paths of lines and of masters.
QByteArray renamed(const ProjectText& text, const Renames& renames);

/// Base, ours and theirs with one path for each group, that of the side which has renamed it.
std::array<QByteArray, 3> withSamePaths(const ProjectText& base, const ProjectText& ours, const ProjectText& theirs,
                                        Judge& judge);

} // namespace Tool

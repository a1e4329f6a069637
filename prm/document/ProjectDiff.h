#pragma once

#include "prm/ProjectDiff.h"
#include "prm/document/ProjectText.h"

namespace Prm::document {

using Difference = ProjectDifference;

/// What leads from one text to the other: the header, then groups and parameters in the order of the first text, then
/// those that only the second one has, then lines that belong to nothing. Takes about linear time.
PRM_EXPORT std::vector<Difference> differences(const ProjectText& from, const ProjectText& to);

/// What the bytes of texts that say the same differ in, for people; empty for equal bytes.
PRM_EXPORT QString differenceInBytes(const ProjectText& from, const ProjectText& to);

} // namespace Prm::document

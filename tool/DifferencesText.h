#pragma once

#include "prm/document/ProjectDiff.h"
#include "tool/Problem.h"

namespace Tool {

/// The messages of differences, a line each.
QByteArray plainText(const std::vector<Difference>& differences);

} // namespace Tool

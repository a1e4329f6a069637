#pragma once

#include "prm/document/ProjectText.h"
#include "tool/Problem.h"

#include <vector>

namespace Tool {

/// One thing that a line does wrong, or will suffer.
struct Finding {
    /// Counted from 0.
    int line = 0;
    QString message;
};

/// Everything worth a remark, in the order of the lines.
std::vector<Finding> findingsIn(const ProjectText& text);

} // namespace Tool

#pragma once

#include "prm/document/Problem.h"

namespace Tool {

/// The tool shares the words of the rooms that read project text.
using namespace Prm::document;

/// How the program ends, for those who call it.
enum ExitCode { Fine = 0, Findings = 1, Unusable = 2 };

/// A problem of the command line: the user is shown where to read on.
class WrongUse : public Problem {
public:
    using Problem::Problem;
};

} // namespace Tool

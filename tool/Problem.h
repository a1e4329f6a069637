#pragma once

#include <QString>

#include <stdexcept>

namespace Tool {

/// How the program ends, for those who call it.
enum ExitCode { Fine = 0, Findings = 1, Unusable = 2 };

/// Ends the program with `Unusable` and one line for the user.
class Problem : public std::runtime_error {
public:
    explicit Problem(const QString& message) : std::runtime_error(message.toStdString()) {}
};

/// A problem of the command line: the user is shown where to read on.
class WrongUse : public Problem {
public:
    using Problem::Problem;
};

} // namespace Tool

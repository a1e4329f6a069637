#pragma once

#include <stdexcept>
#include <string>

namespace Prm::detail {

/// What an operation that is declared in its place, but not available yet, answers: better an error than a silence that
/// looks like success.
[[noreturn]] inline void throwNotBuiltYet(const char* operation) {
    throw std::logic_error(std::string(operation) + " is not available yet");
}

} // namespace Prm::detail

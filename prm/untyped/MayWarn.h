#pragma once

#include <cstddef>
#include <new>

namespace Prm::detail {

/// Whether there is memory for a warning. Qt's warnings end the process when there is none, which destructors must not
/// do.
inline bool mayWarn() {
    constexpr std::size_t enough = 4096;
    // Volatile, or the compiler leaves both calls out.
    void* volatile probe = ::operator new(enough, std::nothrow);
    const bool found = probe != nullptr;
    ::operator delete(probe);
    return found;
}

} // namespace Prm::detail

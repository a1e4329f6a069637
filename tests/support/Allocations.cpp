#include "tests/support/Allocations.h"

#include <cstdlib>
#include <memory>
#include <string>

namespace {

thread_local int count = 0;
thread_local int failing = 0;

} // namespace

#if defined(__GLIBC__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
extern "C" void* __libc_malloc(std::size_t size); // NOLINT(bugprone-reserved-identifier)
extern "C" void* malloc(std::size_t size) {
    ++count;
    return count == failing ? nullptr : __libc_malloc(size);
}
#endif

namespace Allocations {

bool areCounted() {
    const int before = count;
    return std::make_unique<std::string>(100, 'a')->size() == 100 && count != before;
}

int made() {
    return count;
}

void failAt(int n) {
    failing = n > 0 ? count + n : 0;
}

bool hasFailed() {
    return failing > 0 && count >= failing;
}

} // namespace Allocations

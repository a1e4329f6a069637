#include "tests/support/Allocations.h"

#include "tests/support/QtCallers.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <new>
#include <string>

namespace {

thread_local int count = 0;
thread_local int living = 0;
thread_local std::size_t requested = 0;
thread_local int failing = 0;
thread_local bool sparesQt = true;
thread_local bool failed = false;

} // namespace

// Sanitizers have functions of their own for memory.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define PRM_SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define PRM_SANITIZED
#endif
#endif

#if defined(__GLIBC__) && !defined(PRM_SANITIZED)

namespace {

thread_local bool isLooking = false;

/// Counts an allocation, and says whether it is to fail.
bool fails(std::size_t size) {
    ++count;
    requested += size;
    if (count != failing || isLooking)
        return false;
    isLooking = true;
    const bool isSpared = sparesQt && isBeneathQtCaller();
    isLooking = false;
    if (isSpared)
        ++failing;
    failed = !isSpared;
    return failed;
}

void* counted(void* made) {
    living += made ? 1 : 0;
    return made;
}

} // namespace

// NOLINTBEGIN(bugprone-reserved-identifier)
#pragma GCC visibility push(default) // so that libraries call these
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t number, std::size_t size);
void* __libc_realloc(void* former, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* former);

void* malloc(std::size_t size) {
    return fails(size) ? nullptr : counted(__libc_malloc(size));
}
void* calloc(std::size_t number, std::size_t size) {
    return fails(number * size) ? nullptr : counted(__libc_calloc(number, size));
}
void* realloc(void* former, std::size_t size) {
    if (fails(size))
        return nullptr;
    return former ? __libc_realloc(former, size) : counted(__libc_realloc(former, size));
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return fails(size) ? nullptr : counted(__libc_memalign(alignment, size));
}
void free(void* former) {
    living -= former ? 1 : 0;
    __libc_free(former);
}
}
#pragma GCC visibility pop
// NOLINTEND(bugprone-reserved-identifier)
#endif

namespace Allocations {

bool areCounted() {
    const int before = count;
    return std::make_unique<std::string>(100, 'a')->size() == 100 && count != before;
}

int made() {
    return count;
}

std::size_t bytes() {
    return requested;
}

int alive() {
    return living;
}

void failAnywhereAt(int n) {
    failed = false;
    sparesQt = false;
    failing = n > 0 ? count + n : 0;
}

void failAt(int n) {
    failAnywhereAt(n);
    sparesQt = true;
}

bool hasFailed() {
    return failed;
}

void failEach(const std::function<Attempt()>& make, const std::function<bool(const std::string&)>& isAllowed) {
    constexpr int most = 100000;
    // Looking at callers and throwing take memory for good when they are first done.
    isBeneathQtCaller();
    for (int n = 0; n < most; ++n) {
        const int before = alive();
        bool threw = false;
        bool didFail = false;
        {
            const Attempt attempt = make();
            failAt(n);
            try {
                attempt.act();
            } catch (const std::bad_alloc&) {
                threw = true;
            }
            didFail = hasFailed();
            failAt(0);
            const std::string state = attempt.state();
            EXPECT_TRUE(isAllowed(state)) << "failure " << n << (threw ? "" : ", not thrown") << "\n" << state;
        }
        // What is made once and kept is there after the first attempt, in which nothing fails.
        EXPECT_TRUE(n == 0 || alive() == before) << "failure " << n << " leaks " << alive() - before;
        if (n > 0 && !didFail)
            return;
    }
    ADD_FAILURE() << "never came through";
}

} // namespace Allocations

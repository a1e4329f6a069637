#include "tests/support/Allocations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <dlfcn.h>
#include <execinfo.h>
#include <memory>
#include <new>
#include <string>

namespace {

thread_local int count = 0;
thread_local int living = 0;
thread_local std::size_t requested = 0;
thread_local int failing = 0;
thread_local bool staying = false;
thread_local bool failed = false;

/// Whether the calling function runs beneath one of those of Qt 5 that end the process, or are not themselves any more,
/// when an allocation fails. No failure is injected there, for that would be a test of Qt.
bool isBeneathQtCaller() {
    // How the symbols of QObject::connect, of QSettings, of qWarning and of QJsonDocument::fromJson begin.
    const char* const callers[] = {"_ZN7QObject7connect", "_ZN9QSettings", "_ZN6QDebug", "_ZN13QJsonDocument8fromJson"};
    std::array<void*, 100> addresses{};
    const int depth = backtrace(addresses.data(), static_cast<int>(addresses.size()));
    return std::any_of(addresses.begin(), addresses.begin() + depth, [&](void* address) {
        Dl_info found{};
        const bool isNamed = dladdr(address, &found) != 0 && found.dli_sname;
        return isNamed && std::any_of(std::begin(callers), std::end(callers), [&](const char* caller) {
                   return std::strncmp(found.dli_sname, caller, std::strlen(caller)) == 0;
               });
    });
}

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
    if (failing == 0 || isLooking || (staying ? count < failing : count != failing))
        return false;
    isLooking = true;
    const bool isSpared = isBeneathQtCaller();
    isLooking = false;
    if (isSpared && !staying)
        ++failing;
    failed = failed || !isSpared;
    return !isSpared;
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

void failAt(int n) {
    failed = failed && n == 0;
    staying = false;
    failing = n > 0 ? count + n : 0;
}

namespace {

/// Makes attempts, so many allocations further on each time, until none fails any more. Nothing may leak.
void failEach(int step, bool isForGood, const std::function<Attempt()>& make,
              const std::function<bool(const std::string&)>& isAllowed) {
    // Looking at callers and throwing take memory for good when they are first done, and so may the first attempt,
    // in which nothing fails.
    isBeneathQtCaller();
    for (int n = 1 - step; n < 100000; n += step) {
        const int before = alive();
        auto attempt = std::make_unique<Attempt>(make());
        failAt(n);
        staying = isForGood;
        const int intended = failing;
        try {
            attempt->act();
        } catch (const std::bad_alloc&) {
        }
        const int spared = failing - intended;
        if (isForGood && n % 2 == 0)
            attempt.reset();
        failAt(0);
        EXPECT_TRUE(!attempt || isAllowed(attempt->state())) << "failure " << n << "\n" << attempt->state();
        attempt.reset();
        EXPECT_TRUE(n <= 0 || alive() == before) << "failure " << n << " leaks";
        if (n > 0 && !failed)
            return;
        n += spared;
    }
    ADD_FAILURE() << "never came through";
}

} // namespace

void failOnce(const std::function<Attempt()>& make, const std::function<bool(const std::string&)>& isAllowed) {
    failEach(1, false, make, isAllowed);
}

void failForGood(const std::function<Attempt()>& make, const std::function<bool(const std::string&)>& isAllowed) {
    failEach(3, true, make, isAllowed);
}

} // namespace Allocations

#pragma once

#include <cstddef>
#include <functional>
#include <string>

/// What this thread allocates, Qt's containers included. Not counted under sanitizers, which bring a `malloc` of their
/// own.
namespace Allocations {

bool areCounted();
/// Since the thread began.
int made();
/// How many bytes these asked for.
std::size_t bytes();
/// Those that are not freed.
int alive();
/// The n-th allocation from now on fails, once; none with 0. One beneath a function that Qt does not bring through
/// comes through, and the next one outside fails instead.
void failAt(int n);

/// One attempt of an operation, on a world of its own.
struct Attempt {
    std::function<void()> act;
    /// Tells one state of the world from another.
    std::function<std::string()> state;
};
/// Makes an attempt for every n at which an allocation fails, until none does. Each ends with `std::bad_alloc` or
/// comes through, leaves a state for which the last argument holds, and frees what it took.
void failOnce(const std::function<Attempt()>& make, const std::function<bool(const std::string&)>& isAllowed);
/// The same for every third n, with memory that stays exhausted from there on: until the attempt has ended, or until
/// its world has been destroyed as well. Nothing ends the process.
void failForGood(const std::function<Attempt()>& make, const std::function<bool(const std::string&)>& isAllowed);

} // namespace Allocations

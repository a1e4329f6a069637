#pragma once

/// What this thread allocates, Qt's containers included. Not counted under sanitizers, which bring a `malloc` of their
/// own.
namespace Allocations {

bool areCounted();
/// Since the thread began.
int made();
/// The n-th allocation from now on fails, once; none with 0.
void failAt(int n);
/// Whether that has happened.
bool hasFailed();

} // namespace Allocations

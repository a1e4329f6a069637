#pragma once

// What most tests of the library begin with.

#include "tests/support/ChangeRecorder.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

#pragma once

#include "Runtime.h"

/// From now on the `countdown`-th allocation of the library under test fails, once; 0 for none. Call `watchMemory`
/// first.
void failAllocation(int countdown);
/// Whether the allocation that was to fail was reached.
bool allocationFailed();

/// Puts a function of the test's own before the allocation functions that `module` imports.
void watchMemory(const char* module);

/// How many blocks the library under test has allocated and not given back since it was watched.
int64_t liveBlocks();

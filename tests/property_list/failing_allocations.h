// SPDX-License-Identifier: MIT
#pragma once

// The program's operator new, which can be made to fail.

namespace quellar::tests {

/// Lets so many allocations succeed, the next one fail, and those after it succeed again.
void failAllocationAfter(long successes);

/// Lets all allocations succeed; returns whether one has failed.
bool stopFailing();

}  // namespace quellar::tests

// SPDX-License-Identifier: MIT

// The program that libFuzzer drives; it is built once for each function of targets.h.

#include <cstddef>
#include <cstdint>

#include "targets.h"

/// What libFuzzer calls for each input.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  quellar::tests::fuzz::QUELLAR_FUZZED({reinterpret_cast<const char*>(bytes), size});
  return 0;
}

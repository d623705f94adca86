// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <stdexcept>
#include <string>

#if defined(__SANITIZE_ADDRESS__)
// GCC does not install the header that declares it.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace quellar::tests {

/// The bytes that this process holds. The address sanitizer keeps freed memory for a while, so that its own count is
/// asked.
inline std::int64_t memoryInUse() {
#if defined(__SANITIZE_ADDRESS__)
  return static_cast<std::int64_t>(__sanitizer_get_current_allocated_bytes());
#else
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) return std::stoll(line.substr(6)) * 1024;
  }
  throw std::runtime_error("no VmRSS in /proc/self/status");
#endif
}

}  // namespace quellar::tests

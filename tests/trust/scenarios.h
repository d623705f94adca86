// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "host/linux/file_descriptor.h"
#include "writing.h"

namespace quellar::tests {

/// One way in which a write can go, with all that it does to files.
struct Scenario {
  std::string name;
  /// Makes what the writer finds.
  std::function<void(const WrittenRoot&)> prepare;
  /// Runs in a process of its own, which it may end; its result is an exit code.
  std::function<int(const WrittenRoot&, int output)> write;
  /// Looks at what is left as the next program does; returns what is wrong, or "". `isDone` is true where the writer
  /// has told that its value is set.
  std::function<std::string(const WrittenRoot&, bool isDone)> faults;
};

void PrintTo(const Scenario& scenario, std::ostream* stream);

/// The number of the value before the write of each scenario, and after it.
inline constexpr int kFormer = 1;
inline constexpr int kLatter = 2;

/// A file of the store's own, an empty device root, a file of another program's, a file that is corrupt, a
/// value that no dictionary may replace without a copy, a torn file beside the version that a former release kept.
[[nodiscard]] const std::vector<Scenario>& scenarios();

/// The two ends of a pipe; the reading one doesn't wait.
struct Pipe {
  Pipe();
  host::linux::FileDescriptor reading;
  host::linux::FileDescriptor writing;
  /// What has been written and not been read.
  [[nodiscard]] std::string contents() const;
};

}  // namespace quellar::tests

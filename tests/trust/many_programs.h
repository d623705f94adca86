// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "scenarios.h"

namespace quellar::tests {

/// A program of a test's, in a process of its own.
class Child {
 public:
  explicit Child(const std::function<int(int output)>& work);
  ~Child();
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  [[nodiscard]] pid_t process() const { return process_; }

  /// What it has told so far. A pipe that is full would end it, so that it is to be asked now and then.
  const std::string& told();

  /// Its exit code once it has ended; nothing where that takes too long.
  std::optional<int> endsWithin(std::chrono::steady_clock::duration limit);

 private:
  Pipe output_;
  pid_t process_ = -1;
  std::string told_;
};

/// A line of such a program.
void tellParent(int output, const std::string& line);

}  // namespace quellar::tests

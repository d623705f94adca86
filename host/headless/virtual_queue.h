// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <utility>

#include "platform/ports.h"

namespace quellar::host::headless {

/// A main queue whose time stands still until it is advanced.
class VirtualQueue : public platform::MainQueue {
 public:
  void after(std::chrono::nanoseconds delay, Work work) override;

  /// Time since the queue was made.
  [[nodiscard]] std::chrono::nanoseconds now() const { return now_; }
  /// Moves time on and runs what falls due on the way, at its own time and in order; work that is added meanwhile
  /// runs too where it falls due in time. Time never moves back and stops at the end of its range.
  void advance(std::chrono::nanoseconds time);
  [[nodiscard]] bool empty() const { return works_.empty(); }

 private:
  std::chrono::nanoseconds now_{0};
  std::uint64_t calls_ = 0;
  /// By due time, then by the order of the calls.
  std::map<std::pair<std::chrono::nanoseconds, std::uint64_t>, Work> works_;
};

}  // namespace quellar::host::headless

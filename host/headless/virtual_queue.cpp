// SPDX-License-Identifier: MIT
#include "host/headless/virtual_queue.h"

#include <algorithm>

namespace quellar::host::headless {

namespace {

std::chrono::nanoseconds later(std::chrono::nanoseconds from, std::chrono::nanoseconds by) {
  if (by <= std::chrono::nanoseconds::zero()) return from;
  return by > std::chrono::nanoseconds::max() - from ? std::chrono::nanoseconds::max() : from + by;
}

}  // namespace

void VirtualQueue::after(std::chrono::nanoseconds delay, Work work) {
  works_.emplace(std::pair{later(now_, delay), calls_++}, std::move(work));
}

void VirtualQueue::advance(std::chrono::nanoseconds time) {
  const std::chrono::nanoseconds end = later(now_, time);
  while (!works_.empty() && works_.begin()->first.first <= end) {
    auto due = works_.extract(works_.begin());
    now_ = std::max(now_, due.key().first);
    due.mapped()();
  }
  now_ = end;
}

}  // namespace quellar::host::headless

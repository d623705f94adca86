// SPDX-License-Identifier: MIT
#include "host/window/qt_main_queue.h"

#include <algorithm>

namespace quellar::host::window {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

QtMainQueue::QtMainQueue() {
  timer_.setSingleShot(true);
  timer_.setTimerType(Qt::PreciseTimer);
  connect(&timer_, &QTimer::timeout, this, &QtMainQueue::runDueWorks);
}

void QtMainQueue::after(nanoseconds delay, Work work) {
  const auto now = Clock::now();
  // A delay beyond the clock's range means "never"; it is held at the clock's end.
  const auto wait = std::clamp(delay, nanoseconds::zero(), Clock::time_point::max() - now);
  works_.emplace(Due{now + wait, calls_++}, std::move(work));
  schedule();
}

void QtMainQueue::runDueWorks() {
  const auto now = Clock::now();
  while (!works_.empty() && works_.begin()->first.first <= now) {
    // Off the queue before it runs: the work may add others.
    auto node = works_.extract(works_.begin());
    node.mapped()();
  }
  if (works_.empty()) {
    emit becameIdle();
  } else {
    schedule();
  }
}

void QtMainQueue::schedule() {
  // The timer counts whole milliseconds; rounded up, so that no work runs early.
  constexpr milliseconds kLongest = std::chrono::hours(24);
  const auto wait = std::chrono::ceil<milliseconds>(works_.begin()->first.first - Clock::now());
  timer_.start(std::clamp(wait, milliseconds::zero(), kLongest));
}

}  // namespace quellar::host::window

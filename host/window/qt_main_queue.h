// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QTimer>
#include <chrono>
#include <cstdint>
#include <map>
#include <utility>

#include "platform/ports.h"

namespace quellar::host::window {

/// The main queue on the toolkit's event loop. The main thread alone uses it.
class QtMainQueue final : public QObject, public platform::MainQueue {
  Q_OBJECT

 public:
  QtMainQueue();

  /// Runs the work once, `delay` from now on the monotonic clock, never within this call; a negative delay counts as
  /// none. Works run in the order in which they fall due, those of the same nanosecond in the order of their calls.
  void after(std::chrono::nanoseconds delay, Work work) override;

  /// True while no work waits.
  [[nodiscard]] bool idle() const { return works_.empty(); }

 signals:
  /// The last work that waited has run.
  void becameIdle();

 private:
  using Clock = std::chrono::steady_clock;
  /// When a work falls due, and its place among all calls.
  using Due = std::pair<Clock::time_point, std::uint64_t>;

  void runDueWorks();
  void schedule();

  std::map<Due, Work> works_;
  std::uint64_t calls_ = 0;
  QTimer timer_;
};

}  // namespace quellar::host::window

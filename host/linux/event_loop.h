// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <csignal>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "host/linux/file_descriptor.h"
#include "platform/ports.h"

namespace quellar::host::linux {

/// The main queue of a program without a toolkit's loop: runs deferred work in real time and watches file descriptors.
/// One thread alone uses it.
class EventLoop final : public platform::MainQueue {
 public:
  /// Is called with the poll(2) events that have occurred.
  using Ready = std::function<void(short)>;

  EventLoop() = default;
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;
  ~EventLoop() override;

  /// Runs the work once, `delay` from now on the monotonic clock, never within this call; a negative delay counts as
  /// none. Works run in the order in which they fall due, those of the same nanosecond in the order of their calls.
  void after(std::chrono::nanoseconds delay, Work work) override;

  /// Calls `ready` whenever one of the poll(2) `events` (or an error or hang-up) occurs on a descriptor, until
  /// `unwatch` is called with the identifier that is returned. The caller keeps the descriptor open until then.
  int watch(int descriptor, short events, Ready ready);
  /// Ends a watch, also from within its own call; an identifier that is not known does nothing.
  void unwatch(int identifier);

  /// Makes each of these signals end `run`, instead of what it did before, until the loop is destroyed. Programs that
  /// are executed later start with the signals' default action. Of all loops of a process one at a time may do so; a
  /// second one throws std::logic_error. Throws std::system_error where the system refuses.
  void stopOnSignals(std::initializer_list<int> signals);

  /// Runs works and watches until no work is left or `stop` is called; watches alone don't keep it running.
  void runUntilIdle();
  /// Runs works and watches until `stop` is called or one of the signals arrives.
  void run();
  /// Ends the innermost `run` or `runUntilIdle` once the call that is under way returns; without one, the next.
  void stop() { stopped_ = true; }

 private:
  using Clock = std::chrono::steady_clock;
  /// When a work falls due, and its place among all calls.
  using Due = std::pair<Clock::time_point, std::uint64_t>;

  void turn();
  void runDueWorks();

  std::map<Due, Work> works_;
  std::uint64_t calls_ = 0;
  struct Watch {
    int descriptor;
    short events;
    Ready ready;
  };
  std::map<int, std::shared_ptr<Watch>> watches_;
  int lastWatch_ = 0;
  bool stopped_ = false;

  FileDescriptor signalPipe_;
  std::vector<std::pair<int, struct sigaction>> previousActions_;
};

}  // namespace quellar::host::linux

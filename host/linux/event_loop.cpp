// SPDX-License-Identifier: MIT
#include "host/linux/event_loop.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace quellar::host::linux {

namespace {

// A signal handler reaches nothing but globals: the counter of the one loop that ends on signals, or -1. A handler is
// used rather than signalfd(2), because blocked signals stay blocked in the programs that a process executes.
std::atomic<int> signalCounter = -1;
static_assert(std::atomic<int>::is_always_lock_free);

void countSignal(int) {
  const int saved = errno;
  const std::uint64_t one = 1;
  [[maybe_unused]] const auto written = ::write(signalCounter.load(), &one, sizeof one);
  errno = saved;
}

timespec timespecOf(std::chrono::nanoseconds duration) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(duration);
  return {.tv_sec = seconds.count(), .tv_nsec = (duration - seconds).count()};
}

}  // namespace

EventLoop::~EventLoop() {
  for (const auto& [signal, action] : previousActions_) ::sigaction(signal, &action, nullptr);
  if (signalPipe_) signalCounter = -1;
}

void EventLoop::after(std::chrono::nanoseconds delay, Work work) {
  const auto now = Clock::now();
  const auto longest = Clock::time_point::max() - now;
  const auto wait = std::clamp<Clock::duration>(delay, Clock::duration::zero(), longest);
  works_.emplace(Due{now + wait, ++calls_}, std::move(work));
}

int EventLoop::watch(int descriptor, short events, Ready ready) {
  watches_.emplace(++lastWatch_, std::make_shared<Watch>(Watch{descriptor, events, std::move(ready)}));
  return lastWatch_;
}

void EventLoop::unwatch(int identifier) {
  watches_.erase(identifier);
}

void EventLoop::stopOnSignals(std::initializer_list<int> signals) {
  if (!signalPipe_) {
    FileDescriptor counter(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!counter) throw std::system_error(errno, std::generic_category(), "eventfd");
    int none = -1;
    if (!signalCounter.compare_exchange_strong(none, counter.get())) {
      throw std::logic_error("another event loop of this process ends on signals already");
    }
    signalPipe_ = std::move(counter);
    watch(signalPipe_.get(), POLLIN, [this](short) {
      std::uint64_t count = 0;
      if (::read(signalPipe_.get(), &count, sizeof count) == sizeof count) stop();
    });
  }
  for (const int signal : signals) {
    struct sigaction action = {};
    action.sa_handler = countSignal;
    action.sa_flags = SA_RESTART;
    struct sigaction previous = {};
    if (::sigaction(signal, &action, &previous) != 0) {
      throw std::system_error(errno, std::generic_category(), "sigaction");
    }
    previousActions_.emplace(previousActions_.begin(), signal, previous);
  }
}

void EventLoop::runUntilIdle() {
  while (!stopped_ && !works_.empty()) turn();
  stopped_ = false;
}

void EventLoop::run() {
  while (!stopped_) turn();
  stopped_ = false;
}

void EventLoop::turn() {
  std::vector<pollfd> polled;
  std::vector<int> identifiers;
  polled.reserve(watches_.size());
  identifiers.reserve(watches_.size());
  for (const auto& [identifier, watch] : watches_) {
    polled.push_back({.fd = watch->descriptor, .events = watch->events, .revents = 0});
    identifiers.push_back(identifier);
  }

  std::optional<timespec> wait;
  if (!works_.empty()) {
    wait = timespecOf(std::max(works_.begin()->first.first - Clock::now(), Clock::duration::zero()));
  }
  const int occurred = ::ppoll(polled.data(), polled.size(), wait ? &*wait : nullptr, nullptr);
  if (occurred < 0 && errno != EINTR) throw std::system_error(errno, std::generic_category(), "ppoll");

  if (occurred > 0) {
    for (std::size_t i = 0; i < polled.size() && !stopped_; ++i) {
      if (polled[i].revents == 0) continue;
      // An earlier call of this turn may have ended this watch; its own call may too, hence the copy.
      const auto found = watches_.find(identifiers[i]);
      if (found == watches_.end()) continue;
      const std::shared_ptr<Watch> watch = found->second;
      watch->ready(polled[i].revents);
    }
  }
  runDueWorks();
}

void EventLoop::runDueWorks() {
  // The time is read once: works that are added meanwhile wait for the next turn, so that one that repeats itself can't
  // starve a watch.
  const auto now = Clock::now();
  while (!stopped_ && !works_.empty() && works_.begin()->first.first <= now) {
    const auto next = works_.extract(works_.begin());
    next.mapped()();
  }
}

}  // namespace quellar::host::linux

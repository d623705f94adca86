// SPDX-License-Identifier: MIT

// A bus that is not there, goes, stands still or is flooded: no post may hold the panel up.

#include "host/linux/bus.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sdbus-c++/sdbus-c++.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <functional>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "bus/private_bus.h"
#include "support/memory_in_use.h"
#include "writing.h"

namespace quellar::tests {
namespace bus_test {

using host::linux::Bus;
using host::linux::BusNotification;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr auto kLongest = 50ms;
// Long enough for a busy machine; it is waited for only where something is lost.
constexpr auto kPatience = 600s;

BusNotification darwin(const std::string& name) {
  return {.centre = BusNotification::Centre::Darwin, .name = name, .object = {}, .userInfo = {}};
}

/// Posts, and takes the time of each. What the machine takes away for other programs counts as if the post had, so the
/// short form, which runs beside other tests, is generous.
class Poster {
 public:
  explicit Poster(Bus& bus) : bus_(bus) {}

  void post(const std::string& name) {
    const auto began = Clock::now();
    bus_.post(darwin(name));
    const auto took = Clock::now() - began;
    longest_ = std::max(longest_, took);
    ++posts_;
    if (took > kLongest) ++late_;
  }

  void expectQuick(const std::string& what) const {
    const auto milliseconds = std::chrono::duration<double, std::milli>(longest_).count();
    std::cout << what << ": " << posts_ << " posts, the longest took " << milliseconds << " ms.\n";
    EXPECT_LE(late_, isLongForm() ? 0 : 3);
    if (isLongForm()) {
      EXPECT_LE(longest_, kLongest);
    }
  }

 private:
  Bus& bus_;
  Clock::duration longest_{};
  int posts_ = 0;
  int late_ = 0;
};

bool processUntil(Bus& bus, const std::function<bool()>& condition) {
  for (const auto until = Clock::now() + kPatience; !condition();) {
    if (Clock::now() > until) return false;
    pollfd polled = {.fd = bus.descriptor(), .events = POLLIN, .revents = 0};
    if (::poll(&polled, 1, 10) > 0) bus.process();
  }
  return true;
}

std::vector<std::string> numbered(int count) {
  std::vector<std::string> names;
  for (int number = 0; number < count; ++number) names.push_back("number " + std::to_string(number));
  return names;
}

/// Another program that listens.
struct Listener {
  explicit Listener(const std::string& address) : bus(address) {
    bus.listen([this](const BusNotification& notification) { names.push_back(notification.name); });
    if (!bus.waitUntilConnected(kPatience)) throw std::runtime_error("the bus is not there");
  }
  Bus bus;
  std::vector<std::string> names;
};

TEST(TrustInTheBus, GoneAtTheStartItHoldsUpNoPost) {
  for (const std::string address : {"", "unix:path=/nonexistent/bus"}) {
    Bus bus(address, 1ms);
    Poster poster(bus);
    for (const std::string& name : numbered(500)) poster.post(name);
    poster.expectQuick(address.empty() ? "no bus" : "a bus that is gone");
    EXPECT_EQ(bus.state() == Bus::State::Connected, false);
  }
}

TEST(TrustInTheBus, ThatNeverAnswersItHoldsUpNoPost) {
  PrivateBus server;
  // It takes the connection, and stands still from the first word on.
  server.daemon().signal(SIGSTOP);
  Bus bus(server.address());
  Poster poster(bus);
  for (const std::string& name : numbered(500)) poster.post(name);
  poster.expectQuick("a bus that never answers");
  server.daemon().signal(SIGCONT);
}

TEST(TrustInTheBus, GoneInTheMiddleItHoldsUpNoPostAndIsFoundAgain) {
  PrivateBus server;
  Bus bus(server.address(), 20ms);
  ASSERT_TRUE(bus.waitUntilConnected(kPatience));
  Poster poster(bus);
  for (int round = 0; round < 5; ++round) {
    for (const std::string& name : numbered(200)) {
      poster.post(name);
      if (name == "number 100") server.daemon().kill();
      if (name == "number 150") server.restart();
      bus.process();
    }
  }
  poster.expectQuick("a bus that goes five times");
  Listener listener(server.address());
  const bool hasArrived = processUntil(listener.bus, [&] {
    poster.post("found again");
    bus.process();
    return !listener.names.empty();
  });
  EXPECT_TRUE(hasArrived);
}

TEST(TrustInTheBus, SlowItHoldsUpNoPostAndKeepsTheirOrder) {
  PrivateBus server;
  Listener listener(server.address());
  Bus bus(server.address());
  ASSERT_TRUE(bus.waitUntilConnected(kPatience));
  Poster poster(bus);
  const std::vector<std::string> names = numbered(4000);
  // It stands still for most of the time.
  std::size_t next = 0;
  for (int round = 0; round < 8; ++round) {
    server.daemon().signal(SIGSTOP);
    for (; next < names.size() * static_cast<std::size_t>(round + 1) / 8; ++next) poster.post(names[next]);
    server.daemon().signal(SIGCONT);
    std::this_thread::sleep_for(5ms);
    bus.process();
  }
  poster.expectQuick("a slow bus");
  EXPECT_TRUE(processUntil(listener.bus, [&] {
    bus.process();
    return listener.names.size() >= names.size();
  }));
  EXPECT_EQ(listener.names, names);
}

TEST(TrustInTheBus, FloodedItHoldsUpNoPostKeepsTheirOrderAndTheMemoryFlat) {
  const int signals = isLongForm() ? 100000 : 10000;
  const PrivateBus server;
  Listener listener(server.address());
  Bus bus(server.address());
  std::int64_t foreign = 0;
  bus.listen([&](const BusNotification&) { ++foreign; });
  ASSERT_TRUE(bus.waitUntilConnected(kPatience));
  const pid_t flood = ::fork();
  ASSERT_GE(flood, 0);
  if (flood == 0) {
    // Half of them are of our signature, the other half only seem to be.
    {
      const auto connection = sdbus::createSessionBusConnectionWithAddress(server.address());
      const auto object = sdbus::createObject(*connection, "/com/vantorick/Notifications");
      for (int number = 0; number < signals; ++number) {
        sdbus::Signal signal = object->createSignal("com.vantorick.Notifications1", "Darwin");
        if (number % 2 == 0) {
          signal << "foreign";
        } else {
          signal << number << std::string(200, 'x');
        }
        object->emitSignal(signal);
      }
      // What the bus has not taken yet is sent when the connection ends.
    }
    ::_exit(0);
  }

  Poster poster(bus);
  std::vector<std::string> posted;
  std::int64_t heard = 0;
  std::int64_t inUse = 0;
  std::int64_t most = 0;
  const auto half = static_cast<std::int64_t>(signals) / 2;
  EXPECT_TRUE(processUntil(bus, [&] {
    if (posted.size() < 1000) {
      posted.push_back("ours " + std::to_string(posted.size()));
      poster.post(posted.back());
    }
    listener.bus.process();
    // The listener hears the flood too, which is of no interest.
    std::erase(listener.names, "foreign");
    heard = foreign - static_cast<std::int64_t>(posted.size());
    if (heard > half / 10 && inUse == 0) inUse = memoryInUse();
    if (inUse != 0) most = std::max(most, memoryInUse());
    return foreign >= half + 1000;
  }));
  int status = 0;
  ::waitpid(flood, &status, 0);
  EXPECT_EQ(status, 0);
  poster.expectQuick("a bus flooded with " + std::to_string(signals) + " signals");
  EXPECT_TRUE(processUntil(listener.bus, [&] {
    bus.process();
    std::erase(listener.names, "foreign");
    return listener.names.size() >= posted.size();
  }));
  EXPECT_EQ(listener.names, posted);
  EXPECT_EQ(foreign, half + static_cast<std::int64_t>(posted.size()));
  std::cout << "  memory in use grew by " << (most - inUse) / 1024 << " KiB at most after the first tenth.\n";
  EXPECT_LT(most - inUse, 4 * 1024 * 1024);
}

}  // namespace bus_test
}  // namespace quellar::tests

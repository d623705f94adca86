// SPDX-License-Identifier: MIT

// A clock that jumps by years.
//
// The promise: whatever the time of day is, for a program or for the files that it finds, what was acknowledged stays,
// and nobody waits longer than with a clock that goes.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "black_box.h"
#include "chronicle.h"
#include "many_programs.h"
#include "stranger.h"

namespace quellar::tests {
namespace clock_test {

using platform::Dictionary;
using platform::Value;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

/// As QUELLAR_CLOCK of the shim; "0" is a clock that goes.
constexpr std::array kClocks = {"0", "-631152000", "631152000", "restless"};
constexpr std::array<std::time_t, 3> kFileTimes = {946684800, 2208988800, 1700000000};

TEST(ClockJumps, AreSeenByPrograms) {
  std::map<std::string, std::string> environment;
  preload(environment);
  std::vector<int> years;
  for (const char* clock : kClocks) {
    const std::string command = "LD_PRELOAD='" + environment["LD_PRELOAD"] + "' QUELLAR_CLOCK=" + clock + " date +%Y";
    const std::unique_ptr<FILE, int (*)(FILE*)> output(::popen(command.c_str(), "r"), &::pclose);
    int year = 0;
    ASSERT_EQ(std::fscanf(output.get(), "%d", &year), 1);  // NOLINT(cert-err34-c)
    years.push_back(year);
  }
  EXPECT_EQ(years, (std::vector{years[0], years[0] - 20, years[0] + 20, years[0] + 20}));
}

TEST(ClockJumps, LoseNothing) {
  if (!fs::exists(QUELLAR_PROGRAM)) GTEST_SKIP() << "quellar is not built";
  Device device;
  preload(device.environment);
  fs::create_directories(device.store().parent_path());
  replaceAsStranger(device.store(), domainOfOthers());
  Chronicle chronicle;
  chronicle.beginWith(domainOfOthers());
  const Chronicle::Place bySet{kProofPageKey, kProofSwitch};
  const Chronicle::Place bySession{"Alerts_Defaults", "userDisablesEdgeAlerts"};
  const Chronicle::Place byOther{"", "Other_Program_Number"};

  std::size_t time = 0;
  const auto store = [&](const Chronicle::Place& place, const Value& value, const auto& write) {
    const std::size_t attempt = chronicle.begin(place, value, time);
    ++time;
    ASSERT_TRUE(write());
    chronicle.acknowledge(place, attempt, time);
    ASSERT_EQ(chronicle.faults(readAsStranger(device.store()), time), "");
  };
  const auto session = device.start({"session"});
  const auto command = [&](const std::string& line) {
    session->write(line + "\n");
    std::string answer;
    do answer = session->readLine();
    while (closingLines(answer).empty());
    return answer;
  };
  command(R"({"do":"open","page":"Alerts"})");
  const int rounds = isLongForm() ? 200 : 8;
  for (int round = 0; round < rounds; ++round) {
    SCOPED_TRACE(round);
    device.environment["QUELLAR_CLOCK"] = kClocks.at(static_cast<std::size_t>(round) % kClocks.size());
    const bool isOn = round / 2 % 2 == 0;
    store(bySet, Value(isOn),
          [&] { return device.run({"set", kProofPage, kProofSwitch, isOn ? "on" : "off"}) == succeeded(""); });
    store(byOther, Value(round), [&] {
      Dictionary domain = readAsStranger(device.store()).value();
      domain.insert_or_assign(byOther.key, Value(round));
      replaceAsStranger(device.store(), domain);
      const std::time_t seconds = kFileTimes.at(static_cast<std::size_t>(round) % kFileTimes.size());
      const std::array<timespec, 2> times = {{{seconds, 0}, {seconds, 0}}};
      return ::utimensat(AT_FDCWD, device.store().c_str(), times.data(), 0) == 0;
    });
    store(bySession, Value(!isOn), [&] {
      const std::string value = isOn ? "false" : "true";
      return command(R"({"do":"set","row":"userDisablesEdgeAlerts","value":)" + value + "}") == R"({"ok":true})";
    });
    if (HasFatalFailure()) return;
  }
  std::cout << "a clock that jumps: " << chronicle.acknowledged() << " values acknowledged, none lost.\n";
}

TEST(ClockJumps, MakeNobodyWait) {
  if (!fs::exists(QUELLAR_PROGRAM)) GTEST_SKIP() << "quellar is not built";
  Device device;
  preload(device.environment);
  fs::create_directories(device.store().parent_path());
  replaceAsStranger(device.store(), domainOfOthers());
  ASSERT_EQ(device.run({"set", kProofPage, kProofSwitch, "on"}), succeeded(""));
  const fs::path lock = device.store().string() + ".lock";

  // Once with another program that holds the lock for a moment; in the long form also with one that never gives it
  // back.
  for (const bool isStuck : {false, true}) {
    if (isStuck && !isLongForm()) continue;
    std::optional<Clock::duration> usual;
    for (const char* clock : kClocks) {
      SCOPED_TRACE(clock);
      device.environment["QUELLAR_CLOCK"] = clock;
      Child holder([&](int output) {
        const host::linux::FileDescriptor held(::open(lock.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
        if (::flock(held.get(), LOCK_EX) != 0) return 1;
        tellParent(output, "locked 1");
        std::this_thread::sleep_for(isStuck ? 1h : 150ms);
        return 0;
      });
      while (lastOf(holder.told(), "locked") != 1) std::this_thread::sleep_for(1ms);
      const auto began = Clock::now();
      const auto program = device.start({"set", kProofPage, kProofSwitch, "off"});
      const bool hasEnded = program->hasEnded(60s);
      const auto took = Clock::now() - began;
      ASSERT_TRUE(hasEnded);
      const Ended ended = program->wait();
      EXPECT_EQ(ended.code, isStuck ? 1 : 0) << ended.errors;
      if (isStuck) {
        EXPECT_NE(ended.errors.find("locked"), std::string::npos) << ended.errors;
      }
      if (!usual) usual = took;
      // Another program may have had the processor.
      EXPECT_LT(took, *usual + 3s);
    }
  }
}

}  // namespace clock_test
}  // namespace quellar::tests

// SPDX-License-Identifier: MIT

// Many callers of the command line on one page, whose values are one dictionary in the file.
//
// The promise: a value whose command ended with 0 is in the file until its own caller changes it, however many others
// write to the same page meanwhile, and whatever becomes of the lock file.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <memory>
#include <sstream>
#include <thread>

#include "black_box.h"
#include "many_programs.h"
#include "stranger.h"

namespace quellar::tests {
namespace side_by_side_test {

using platform::Dictionary;
using platform::Value;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr std::array kSwitches = {"disablesAlarmSTBIcon",      "disablesAirplaneSTBIcon",  "disablesAssistantSTBIcon",
                                  "disablesBatterySTBIcon",    "disablesBluetoothSTBIcon", "disablesCarplaySTBIcon",
                                  "disablesHeadphonesSTBIcon", "disablesWifiSTBIcon"};

/// What the callers have told, where all processes see it: twice the number of the value that a switch has for sure,
/// and one more while it is being changed.
struct Told {
  std::array<std::atomic<unsigned>, kSwitches.size()> states;
  /// How many writes all callers have made, and have looked at after the others had made theirs.
  std::atomic<unsigned> writes;
  std::atomic<unsigned> looks;
  std::atomic<bool> hasGivenUp;

  static bool isChanging(unsigned state) { return state % 2 != 0; }
  static bool valueOf(unsigned state) { return state / 2 % 2 != 0; }
};

class SharedTold {
 public:
  SharedTold() : memory_(::mmap(nullptr, sizeof(Told), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) {
    if (memory_ == MAP_FAILED) throw std::system_error(errno, std::generic_category(), "mmap");
    told_ = new (memory_) Told{};
  }
  ~SharedTold() { ::munmap(memory_, sizeof(Told)); }
  SharedTold(const SharedTold&) = delete;
  SharedTold& operator=(const SharedTold&) = delete;
  Told* operator->() const { return told_; }

 private:
  void* memory_;
  Told* told_ = nullptr;
};

/// Waits until each caller has made a write, so that all of them write at once again; false where one has given up.
bool waitForAll(const Told& told, const std::atomic<unsigned>& count, unsigned expected) {
  for (; count < expected; std::this_thread::sleep_for(500us)) {
    if (told.hasGivenUp) return false;
  }
  return true;
}

struct Meanwhile {
  bool locksAreRemoved = false;
  bool strangersWrite = false;
};

struct Result {
  int writes = 0;
  int lost = 0;
  int torn = 0;
  int looks = 0;
  int strangersKeys = 0;
  std::string first;
  std::string troubles;
};

/// Removes the lock file again and again.
int removeLocks(const fs::path& lock) {
  while (true) {
    ::unlink(lock.c_str());
    std::this_thread::sleep_for(3ms);
  }
}

/// Another program rewrites the file by a rename now and then, without the lock, each time with a key more. Tells each
/// key that is in the file, and "lost KEY" for one that is so no more.
///
/// Two windows remain that no lock of ours can close. What is stored between this program's reading and its renaming it
/// writes over itself; therefore only its own keys are looked for here, and our values as they were told after it had
/// ended. And while a writer of ours has exchanged the file, and finds only then that it displaced this program's
/// version, a reader misses the version for the moment until it is put back; therefore a key counts as lost where it
/// does not come back in time.
int writeAsStranger(const fs::path& file, int output, const std::atomic<unsigned>& stop) {
  const auto keyOf = [](int number) { return "Other_Program_" + std::to_string(number); };
  const auto missing = [&](const Dictionary& domain, int count) -> std::optional<std::string> {
    for (int number = 0; number < count; ++number) {
      if (platform::find(domain, keyOf(number)) == nullptr) return keyOf(number);
    }
    return std::nullopt;
  };
  for (int count = 0; stop == 0; ++count) {
    std::optional<Dictionary> domain;
    std::optional<std::string> lost;
    for (const auto until = Clock::now() + 500ms; Clock::now() < until; std::this_thread::sleep_for(5ms)) {
      domain = readAsStranger(file);
      lost = domain ? missing(*domain, count) : std::nullopt;
      if (domain && !lost) break;
    }
    if (!domain || lost) {
      tellParent(output, "lost " + lost.value_or("all"));
      return 0;
    }
    domain->insert_or_assign(keyOf(count), Value(count));
    replaceAsStranger(file, *domain);
    tellParent(output, "set " + std::to_string(count + 1));
    std::this_thread::sleep_for(std::chrono::milliseconds(20 + count * 7 % 40));
  }
  return 0;
}

Result writeSideBySide(int writes, Meanwhile meanwhile) {
  const Device device;
  fs::create_directories(device.store().parent_path());
  replaceAsStranger(device.store(), domainOfOthers());
  const SharedTold told;
  // A word of its own beside those of the callers.
  const SharedTold stop;
  Result result;

  std::vector<std::unique_ptr<Child>> callers;
  const bool strangersMayWriteOver = meanwhile.strangersWrite;
  const int each = writes / static_cast<int>(kSwitches.size());
  for (std::size_t caller = 0; caller < kSwitches.size(); ++caller) {
    callers.push_back(std::make_unique<Child>([&, caller](int output) {
      for (int write = 1; write <= each; ++write) {
        std::atomic<unsigned>& state = told->states.at(caller);
        ++state;
        constexpr int kTries = 10;
        for (int tries = 1;; ++tries) {
          const Ended ended = device.run({"set", kProofPage, kSwitches.at(caller), write % 2 != 0 ? "on" : "off"});
          if (ended == succeeded("")) break;
          tellParent(output, "trouble exit " + std::to_string(ended.code) + ": " + ended.errors);
          if (tries < kTries) continue;
          told->hasGivenUp = true;
          return 1;
        }
        ++state;
        tellParent(output, "set " + std::to_string(write));
        const unsigned all = static_cast<unsigned>(write) * kSwitches.size();
        ++told->writes;
        if (!waitForAll(*told.operator->(), told->writes, all)) return 1;
        const auto found = pageEntry(readAsStranger(device.store()), kProofPageKey, kSwitches.at(caller));
        if (!strangersMayWriteOver && found != Value(write % 2 != 0)) {
          tellParent(output, "lost " + std::to_string(write));
        }
        ++told->looks;
        if (!waitForAll(*told.operator->(), told->looks, all)) return 1;
      }
      return 0;
    }));
  }
  std::unique_ptr<Child> remover;
  if (meanwhile.locksAreRemoved) {
    remover = std::make_unique<Child>([&](int) { return removeLocks(device.store().string() + ".lock"); });
  }
  std::unique_ptr<Child> stranger;
  if (meanwhile.strangersWrite) {
    stranger = std::make_unique<Child>(
        [&](int output) { return writeAsStranger(device.store(), output, stop->states.front()); });
  }

  const auto look = [&](bool atEnd) {
    std::array<unsigned, kSwitches.size()> before{};
    for (std::size_t index = 0; index < before.size(); ++index) before.at(index) = told->states.at(index);
    const std::optional<Dictionary> domain = readAsStranger(device.store());
    ++result.looks;
    if (!domain) ++result.torn;
    // What another program wrote over is its loss.
    if (!domain || (meanwhile.strangersWrite && !atEnd)) return;
    for (std::size_t index = 0; index < before.size(); ++index) {
      const unsigned state = before.at(index);
      if (state == 0 || Told::isChanging(state) || told->states.at(index) != state) continue;
      if (pageEntry(domain, kProofPageKey, kSwitches.at(index)) == Value(Told::valueOf(state))) continue;
      if (++result.lost == 1) {
        result.first = std::string(kSwitches.at(index)) + " after " + std::to_string(state / 2) + " writes";
      }
    }
  };
  std::vector<bool> hasEnded(callers.size());
  while (std::ranges::count(hasEnded, true) < static_cast<std::ptrdiff_t>(callers.size())) {
    for (std::size_t caller = 0; caller < callers.size(); ++caller) {
      if (!hasEnded[caller] && callers[caller]->endsWithin(1ms)) hasEnded[caller] = true;
    }
    look(false);
  }
  if (stranger) {
    stop->states.front() = 1;
    if (stranger->endsWithin(20s) != 0) result.troubles += "the other program is stuck; ";
    if (stranger->told().find("lost") != std::string::npos)
      result.troubles += stranger->told().substr(stranger->told().find("lost"));
    result.strangersKeys = lastOf(stranger->told(), "set").value_or(0);
    // Once more with nobody who writes over it.
    for (std::size_t index = 0; index < kSwitches.size(); ++index) {
      ++told->states.at(index);
      const bool value = Told::valueOf(told->states.at(index) + 1);
      const Ended ended = device.run({"set", kProofPage, kSwitches.at(index), value ? "on" : "off"});
      ++told->states.at(index);
      if (ended != succeeded("")) result.troubles += ended.errors;
    }
    const std::optional<Dictionary> domain = readAsStranger(device.store());
    for (int number = 0; domain && number < result.strangersKeys; ++number) {
      const std::string key = "Other_Program_" + std::to_string(number);
      if (platform::find(*domain, key) == nullptr) result.troubles += key + " is lost; ";
    }
  }
  look(true);
  for (const auto& caller : callers) {
    result.writes += lastOf(caller->told(), "set").value_or(0);
    std::istringstream lines(caller->told());
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with("lost")) ++result.lost;
      if (line.starts_with("trouble")) result.troubles += line + "; ";
    }
  }
  result.troubles += faultsOfOthers(device);
  std::cout << "eight callers on one page: " << result.writes << " writes, looked at " << result.looks << " times, "
            << result.strangersKeys << " keys of another program; " << result.lost << " times a value was missing.\n";
  return result;
}

void expectNothingLost(const Result& result, int writes) {
  EXPECT_EQ(result.lost, 0) << result.first;
  EXPECT_EQ(result.torn, 0);
  EXPECT_EQ(result.troubles, "");
  EXPECT_EQ(result.writes, writes);
}

TEST(SideBySide, CallersOnOnePageLoseNoValueOfEachOther) {
  if (!fs::exists(QUELLAR_PROGRAM)) GTEST_SKIP() << "quellar is not built";
  const int writes = isLongForm() ? 3000 : 240;
  expectNothingLost(writeSideBySide(writes, {}), writes);
}

TEST(SideBySide, CallersLoseNoValueWhileTheLockFileIsRemoved) {
  if (!fs::exists(QUELLAR_PROGRAM)) GTEST_SKIP() << "quellar is not built";
  const int writes = isLongForm() ? 1000 : 80;
  expectNothingLost(writeSideBySide(writes, {.locksAreRemoved = true}), writes);
}

TEST(SideBySide, AProgramThatTakesNoLockLosesNoneOfItsKeys) {
  if (!fs::exists(QUELLAR_PROGRAM)) GTEST_SKIP() << "quellar is not built";
  const int writes = isLongForm() ? 1000 : 80;
  const Result result = writeSideBySide(writes, {.strangersWrite = true});
  EXPECT_GE(result.strangersKeys, 3);
  expectNothingLost(result, writes);
}

}  // namespace side_by_side_test
}  // namespace quellar::tests

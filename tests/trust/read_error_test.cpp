// SPDX-License-Identifier: MIT

// System calls of the programs that fail once.
//
// The promise: whatever call fails, once or for good, the domain file stays whole with all entries that it had; a
// command ends with 0 just when its value is stored; else it ends with 1 and one line that says why, and a session says
// so in its closing line.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iostream>
#include <limits>

#include "black_box.h"
#include "host/linux/posix_call.h"
#include "many_programs.h"
#include "stranger.h"

namespace quellar::tests {
namespace read_error_test {

using platform::Value;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr auto kErrors = std::to_array<int>({EIO, EMFILE, ENOSPC, EACCES});
constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

const std::string kSessionLines = R"({"do":"open","page":"Status Bar"}
{"do":"set","row":"disablesAlarmSTBIcon","value":true}
)";

void prepare(const Device& device) {
  fs::create_directories(device.store().parent_path());
  for (const auto& entry : fs::directory_iterator(device.store().parent_path())) fs::remove(entry);
  replaceAsStranger(device.store(), domainOfOthers());
}

/// A call that may read the domain file.
bool isOfDomainFile(const SystemCall& call) {
  return call.number == SYS_openat2 || call.number == SYS_pread64 || call.number == SYS_read;
}

/// Which calls fail with which errors: all with all, or in the short form those at the store with one of them.
struct Plan {
  Plan(const TracedRun& undisturbed, std::size_t shortStep) {
    const bool isLong = isLongForm();
    std::size_t passed = 0;
    for (std::size_t call = isLong ? 0 : undisturbed.firstAtStore; call < undisturbed.calls.size(); ++call) {
      const SystemCall& which = undisturbed.calls[call];
      if (!isLong && (!undisturbed.isAtStore[call] || which.number == SYS_close)) continue;
      if (!isLong && !isOfDomainFile(which) && ++passed % shortStep != 0) continue;
      for (std::size_t error = 0; error < kErrors.size(); ++error) {
        // A read fails with the error of a device, and an open with any.
        const std::size_t usual = which.number == SYS_openat || which.number == SYS_openat2 ? call % kErrors.size() : 0;
        if (isLong || error == usual) failures.emplace_back(call, kErrors.at(error));
      }
    }
  }
  std::vector<std::pair<std::size_t, int>> failures;
};

std::string describe(const TracedRun& run, std::size_t failing, int error) {
  const std::string text = "call " + std::to_string(failing) + " (number " +
                           (failing < run.calls.size() ? std::to_string(run.calls[failing].number) : "?") +
                           ") fails with " + host::linux::errorText(error) + "; exit " + std::to_string(run.end.code);
  return text + "\n" + run.output + run.errors;
}

/// How many faults of one kind there were, and the first.
class Faults {
 public:
  void add(const std::string& fault, const std::string& where) {
    if (fault.empty()) return;
    if (count_++ == 0) first_ = fault + " " + where;
  }
  [[nodiscard]] int count() const { return count_; }
  [[nodiscard]] const std::string& first() const { return first_; }

 private:
  int count_ = 0;
  std::string first_;
};

TEST(ReadErrors, AtEachCallOfACommandLoseNoEntryAndAreToldWhereTheValueIsNotStored) {
  if (!fs::exists(QUELLAR_PROGRAM)) GTEST_SKIP() << "quellar is not built";
  const Device device;
  const std::vector<std::string> command = {"set", kProofPage, kProofSwitch, "on"};
  prepare(device);
  const TracedRun undisturbed = runTraced(device, command, "", kNone, 0);
  ASSERT_EQ(undisturbed.end, Tracee::End{}) << undisturbed.errors;
  ASSERT_EQ(storedSwitch(device), Value(true));
  ASSERT_TRUE(undisturbed.isReplaced);
  ASSERT_GT(undisturbed.firstAtStore, 0U);

  Faults lost;
  Faults wrongEnds;
  int refused = 0;
  int failures = 0;
  for (const auto& [failing, error] : Plan(undisturbed, 3).failures) {
    prepare(device);
    const TracedRun run = runTraced(device, command, "", failing, error);
    ++failures;
    const std::string where = describe(run, failing, error);
    lost.add(faultsOfOthers(device), where);
    const bool isStored = storedSwitch(device) == Value(true);
    if (run.end.code == 0 && !isStored) wrongEnds.add("exit 0, and nothing is stored", where);
    if (run.end.code == 0) continue;
    ++refused;
    // The start of a program, before it comes to the store, fails as the system has it.
    if (failing < undisturbed.firstAtStore) continue;
    if (run.end != Tracee::End{false, 1}) wrongEnds.add("neither exit 0 nor exit 1", where);
    if (std::ranges::count(run.errors, '\n') != 1) wrongEnds.add("not one line says why", where);
    // A value that is in the file and may not last is no success.
    if (isStored && !run.isReplaced) wrongEnds.add("exit 1, and the value is stored", where);
  }
  EXPECT_EQ(lost.count(), 0) << lost.first();
  EXPECT_EQ(wrongEnds.count(), 0) << wrongEnds.first();
  EXPECT_GT(refused, 0);
  std::cout << "quellar set: " << failures << " failures of " << undisturbed.calls.size() << " system calls, "
            << refused << " refused; " << lost.count() << " lost entries, " << wrongEnds.count() << " ended wrongly.\n";
}

TEST(ReadErrors, AtEachCallOfASessionLoseNoEntryAndAreToldInTheClosingLine) {
  if (!fs::exists(QUELLAR_PROGRAM)) GTEST_SKIP() << "quellar is not built";
  const Device device;
  const auto isWithoutWarning = [](const std::string& line) { return line == R"({"ok":true})"; };
  bool isStoredWhenTold = false;
  const auto atOutput = [&](const std::string& bytes) {
    const std::vector<std::string> closing = closingLines(bytes);
    if (std::ranges::any_of(closing, isWithoutWarning)) isStoredWhenTold = storedSwitch(device) == Value(true);
  };
  prepare(device);
  const TracedRun undisturbed = runTraced(device, {"session"}, kSessionLines, kNone, 0, atOutput);
  ASSERT_EQ(undisturbed.end, Tracee::End{}) << undisturbed.errors;
  ASSERT_EQ(closingLines(undisturbed.output).size(), 2U) << undisturbed.output;
  ASSERT_TRUE(isStoredWhenTold);

  Faults lost;
  Faults unseen;
  int failures = 0;
  int told = 0;
  for (const auto& [failing, error] : Plan(undisturbed, 9).failures) {
    prepare(device);
    isStoredWhenTold = false;
    const TracedRun run = runTraced(device, {"session"}, kSessionLines, failing, error, atOutput);
    ++failures;
    const std::string where = describe(run, failing, error);
    lost.add(faultsOfOthers(device), where);
    if (run.end.wasKilled || (run.end.code != 0 && failing >= undisturbed.firstAtStore && run.errors.empty())) {
      unseen.add("it ended without a word", where);
    }
    const std::vector<std::string> closing = closingLines(run.output);
    const bool isAcknowledged = closing.size() == 2 && isWithoutWarning(closing.back());
    if (isAcknowledged && !isStoredWhenTold) unseen.add("no warning, and nothing is stored", where);
    told += isAcknowledged ? 0 : 1;
  }
  EXPECT_EQ(lost.count(), 0) << lost.first();
  EXPECT_EQ(unseen.count(), 0) << unseen.first();
  EXPECT_GT(told, 0);
  std::cout << "a session: " << failures << " failures of " << undisturbed.calls.size() << " system calls, " << told
            << " told; " << lost.count() << " lost entries, " << unseen.count() << " unseen.\n";
}

TEST(ReadErrors, OfAFileThatMayNotBeReadWhileItsPageOpensLoseNoEntry) {
  if (!fs::exists(QUELLAR_PROGRAM)) GTEST_SKIP() << "quellar is not built";
  if (::geteuid() != 0) GTEST_SKIP() << "only root can run a program as somebody who may not read a file";
  const Device device;
  prepare(device);
  constexpr uid_t kNobody = 65534;
  for (const auto& entry : fs::recursive_directory_iterator(device.folder().path())) {
    ASSERT_EQ(::lchown(entry.path().c_str(), kNobody, kNobody), 0);
  }
  ASSERT_EQ(::lchown(device.folder().path().c_str(), kNobody, kNobody), 0);
  Child child([&](int output) {
    if (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0 || ::access(QUELLAR_PROGRAM, X_OK) != 0) {
      tellParent(output, "skipped: the programs can't be run by others");
      return 0;
    }
    ::chmod(device.store().c_str(), 0);
    const auto session = device.start({"session"});
    const auto command = [&](const std::string& line) {
      session->write(line + "\n");
      std::string answer;
      do answer = session->readLine();
      while (closingLines(answer).empty());
      return answer;
    };
    const std::string opened = command(R"({"do":"open","page":"Status Bar"})");
    ::chmod(device.store().c_str(), 0600);
    const std::string set = command(R"({"do":"set","row":"disablesAlarmSTBIcon","value":true})");
    const bool isStored = storedSwitch(device) == Value(true);
    tellParent(output, faultsOfOthers(device));
    if ((opened + set).find("warning") == std::string::npos) tellParent(output, "not told: " + opened + set);
    if (set.find("warning") == std::string::npos && !isStored) tellParent(output, "not told of the write: " + set);
    session->wait();
    tellParent(output, faultsOfOthers(device));
    return 0;
  });
  ASSERT_EQ(child.endsWithin(60s), 0) << child.told();
  if (child.told().starts_with("skipped")) GTEST_SKIP() << child.told();
  EXPECT_EQ(child.told(), "\n\n");
}

}  // namespace read_error_test
}  // namespace quellar::tests

// SPDX-License-Identifier: MIT

// Writers whose system calls fail, one at a time, with each error that may come from outside.

#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/syscall.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <sstream>

#include "host/linux/posix_call.h"
#include "host/linux/property_list/property_list.h"
#include "scenarios.h"
#include "support/temporary_folder.h"
#include "tracer.h"

namespace quellar::tests {
namespace error_test {

namespace fs = std::filesystem;

constexpr auto kErrors = std::to_array<int>({ENOSPC, EIO, EACCES, EROFS, EMFILE, EINTR});

/// What a writer did and told when it was let alone, or when a call failed.
struct WriterRun {
  Tracee::End end;
  std::string told;
  /// The calls of its first thread that have to do with files, without those that tell.
  std::vector<SystemCall> calls;
  /// Whether a call to put the new file into its place was carried out.
  bool isRenamed = false;
};

bool isPipe(pid_t process, std::int64_t descriptor) {
  std::error_code error;
  const fs::path link = "/proc/" + std::to_string(process) + "/fd/" + std::to_string(descriptor);
  return fs::read_symlink(link, error).string().starts_with("pipe:");
}

/// Lets the writer of a scenario run; where `failing` is not negative, that call fails.
WriterRun runWriter(const Scenario& scenario, const WrittenRoot& root, int failing, int error) {
  WriterRun run;
  const Pipe output;
  const int outputEnd = output.writing.get();
  Tracee writer([&] { return scenario.write(root, outputEnd); });
  const pid_t main = writer.process();
  const auto atEntry = [&](const SystemCall& call) {
    if (call.thread != main || isAboutMemoryOrTime(call.number)) return Verdict{};
    // What is written to a pipe is what the writer tells, or a probe of memory by a sanitizer.
    if (call.number == SYS_write && isPipe(main, call.argument(0))) return Verdict{};
    const int ordinal = static_cast<int>(run.calls.size());
    run.calls.push_back(call);
    return ordinal == failing ? Verdict{Verdict::Kind::Fail, error} : Verdict{};
  };
  const auto atReturn = [&](const SystemCall& call) {
    const bool isRename = call.number == SYS_renameat || call.number == SYS_renameat2;
    if (isRename && call.result == 0 && writer.textAt(call.arguments[3]) == kTrustFile) run.isRenamed = true;
    return Verdict{};
  };
  run.end = writer.run(atEntry, atReturn);
  run.told = output.contents();
  return run;
}

std::string bytesOrNone(const fs::path& file) {
  return fs::exists(file) ? bytesOf(file) : "(none)";
}

/// Whether the file holds the new value.
bool holdsLatter(const WrittenRoot& root) {
  try {
    const platform::Value whole = host::linux::parsePropertyList(bytesOf(root.file()));
    const platform::Dictionary* entries = whole.as<platform::Dictionary>();
    return entries != nullptr && entries->contains(WritingTask().key) &&
           numberOf(entries->at(WritingTask().key)) == kLatter;
  } catch (const std::exception&) {
    return false;
  }
}

/// A failure of these must never go unseen.
bool mustBeTold(const SystemCall& call) {
  // A lock that can't be given back is given back when its file is closed.
  if (call.number == SYS_flock) return (call.argument(1) & LOCK_UN) == 0;
  return call.number == SYS_write || call.number == SYS_fsync || call.number == SYS_renameat ||
         call.number == SYS_renameat2;
}

/// Whether some line of trouble names the file, or a folder above it, and the cause.
bool tellsTrouble(const std::string& told, const WrittenRoot& root, int error) {
  std::istringstream lines(told);
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with("trouble ") || line.find(host::linux::errorText(error)) == std::string::npos) continue;
    // Where a folder can't be made it is the folder that is named.
    const std::string file = line.substr(8, line.find(": ") - 8);
    if (file == root.file() || file.starts_with(root.root.string()) || root.root.string().starts_with(file))
      return true;
  }
  return false;
}

class Errors : public testing::TestWithParam<Scenario> {};

INSTANTIATE_TEST_SUITE_P(Store, Errors, testing::ValuesIn(scenarios()),
                         [](const auto& scenario) { return scenario.param.name; });

TEST_P(Errors, OfEachSystemCallAreToldAndLoseNothing) {
  const Scenario& scenario = GetParam();
  const TemporaryFolder folder(quickFolder());
  const WrittenRoot root{folder.path() / "root"};
  scenario.prepare(root);
  const WriterRun undisturbed = runWriter(scenario, root, -1, 0);
  ASSERT_EQ(undisturbed.end, Tracee::End{}) << undisturbed.told;
  ASSERT_EQ(scenario.faults(root, true), "");
  ASSERT_TRUE(undisturbed.isRenamed);
  ASSERT_GT(undisturbed.calls.size(), 25U);

  int failures = 0;
  int told = 0;
  const int shortStep = scenario.name == "AFlushedFile" ? 4 : 31;
  const int step = isLongForm() ? 1 : shortStep;
  for (int pair = 0;; pair += step) {
    const auto failing = static_cast<std::size_t>(pair) / kErrors.size();
    const int error = kErrors.at(static_cast<std::size_t>(pair) % kErrors.size());
    scenario.prepare(root);
    const std::string former = bytesOrNone(root.file());
    const WriterRun run = runWriter(scenario, root, static_cast<int>(failing), error);
    // The list of calls is complete because a number beyond it is never reached.
    if (run.calls.size() <= failing) break;
    const SystemCall& call = run.calls[failing];
    SCOPED_TRACE("call " + std::to_string(failing) + " (number " + std::to_string(call.number) + ") fails with " +
                 host::linux::errorText(error));
    ++failures;
    SCOPED_TRACE("told:\n" + run.told);
    EXPECT_FALSE(run.end.wasKilled);
    ASSERT_LE(run.end.code, 1) << "the writer broke down";
    EXPECT_EQ(lastOf(run.told, "ended"), 1);

    const bool isSeen = run.told != undisturbed.told;
    bool isNew = true;
    if (error == EINTR) {
      EXPECT_FALSE(isSeen) << "an interrupted call is made again";
    } else if (isSeen) {
      ++told;
      EXPECT_TRUE(tellsTrouble(run.told, root, error));
      isNew = run.isRenamed;
    } else {
      EXPECT_FALSE(mustBeTold(call)) << "nobody was told";
    }
    EXPECT_EQ(holdsLatter(root), isNew);
    if (!isNew) {
      EXPECT_EQ(bytesOrNone(root.file()), former) << "the old file must stand";
    }
    if (fs::exists(root.preferences())) {
      for (const std::string& name : filesIn(root.preferences())) {
        const std::string extension = name.substr(std::string(kTrustFile).size());
        const bool isCopy = extension == ".corrupt-1" || extension == ".kept-1";
        EXPECT_TRUE(extension.empty() || extension == ".lock" || (extension == ".flushed" && !isNew) ||
                    (isCopy && isNew))
            << name << " is left";
      }
    }
    ASSERT_EQ(scenario.faults(root, isNew), "");
    if (HasFailure()) return;
  }
  EXPECT_GT(told, 0);
  std::cout << scenario.name << ": " << failures << " failures of " << undisturbed.calls.size() << " system calls, "
            << told << " told.\n";
}

TEST(Error, AFileSystemOrASystemWithoutExchangesGetsTheFileRenamed) {
  const TemporaryFolder folder(quickFolder());
  const WrittenRoot root{folder.path() / "root"};
  const Scenario& scenario = scenarios().front();
  scenario.prepare(root);
  const WriterRun undisturbed = runWriter(scenario, root, -1, 0);
  const auto exchange = std::ranges::find_if(undisturbed.calls, [](const SystemCall& call) {
    return call.number == SYS_renameat2 && call.argument(4) == RENAME_EXCHANGE;
  });
  ASSERT_NE(exchange, undisturbed.calls.end());
  const auto ordinal = static_cast<int>(exchange - undisturbed.calls.begin());
  for (const int error : {EINVAL, EOPNOTSUPP, ENOSYS, EPERM}) {
    SCOPED_TRACE(host::linux::errorText(error));
    scenario.prepare(root);
    const WriterRun run = runWriter(scenario, root, ordinal, error);
    EXPECT_EQ(run.end, Tracee::End{});
    EXPECT_EQ(run.told, undisturbed.told);
    EXPECT_TRUE(run.isRenamed);
    EXPECT_TRUE(holdsLatter(root));
    EXPECT_FALSE(root.hasTemporaryFile());
    EXPECT_EQ(scenario.faults(root, true), "");
  }
}

}  // namespace error_test
}  // namespace quellar::tests

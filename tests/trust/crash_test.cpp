// SPDX-License-Identifier: MIT

// Writers that die: at each system call that a write makes, and at any moment.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <fstream>
#include <iostream>
#include <limits>
#include <map>
#include <random>
#include <regex>
#include <thread>

#include "scenarios.h"
#include "support/temporary_folder.h"
#include "tracer.h"

namespace quellar::tests {
namespace crash_test {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

enum class Side { Before, After };

/// A folder of its own for a device root.
struct TrustRoot {
  TemporaryFolder folder{quickFolder()};
  WrittenRoot written{folder.path() / "root"};
};

Verdict killAt(const SystemCall& call, pid_t thread, int index) {
  return {call.thread == thread && call.index == index ? Verdict::Kind::Kill : Verdict::Kind::GoOn, 0};
}

class Crash : public testing::TestWithParam<Scenario> {};

INSTANTIATE_TEST_SUITE_P(Store, Crash, testing::ValuesIn(scenarios()),
                         [](const auto& scenario) { return scenario.param.name; });

TEST_P(Crash, BeforeAndAfterEachSystemCallLeavesAWholeFile) {
  const Scenario& scenario = GetParam();
  const TrustRoot root;
  // The short form looks at some of the calls, at more of them in the most usual case.
  const int shortStep = scenario.name == "AFlushedFile" ? 3 : 17;
  const int step = isLongForm() ? 1 : shortStep;
  int deaths = 0;
  int calls = 0;
  bool hasEnded = false;
  for (int index = 0; !hasEnded; index += step) {
    for (const Side side : {Side::Before, Side::After}) {
      scenario.prepare(root.written);
      const Pipe output;
      Tracee writer([&] { return scenario.write(root.written, output.writing.get()); });
      const pid_t main = writer.process();
      const Tracee::Handler kill = [&](const SystemCall& call) { return killAt(call, main, index); };
      const Tracee::End end = side == Side::Before ? writer.run(kill) : writer.run({}, kill);
      const std::string told = output.contents();
      // The list of calls is complete because a number beyond it is never reached. The last one doesn't return.
      if (!end.wasKilled) {
        EXPECT_EQ(end, Tracee::End{}) << told;
        EXPECT_EQ(lastOf(told, "ended"), 1) << told;
        hasEnded = hasEnded || side == Side::Before;
      }
      deaths += end.wasKilled ? 1 : 0;
      if (end.wasKilled) calls = index + 1;
      ASSERT_EQ(scenario.faults(root.written, lastOf(told, "set").has_value()), "")
          << (side == Side::Before ? "before" : "after") << " call " << index << "; told:\n"
          << told;
    }
  }
  EXPECT_GT(calls, 40);
  std::cout << scenario.name << ": " << deaths << " deaths at " << calls << " system calls, every " << step << ".\n";
}

TEST(CrashAtRandom, LeavesAWholeFileWithAllThatWasTold) {
  const int deaths = isLongForm() ? 9000 : 60;
  const TrustRoot root;
  root.written.makeWith(0);
  // The same moments in every run; where the writer is by then is left to the machine.
  std::mt19937 random(20);
  std::uniform_int_distribution<int> microseconds(0, 4000);
  int former = 0;
  int writes = 0;
  for (int death = 0; death < deaths; ++death) {
    const Pipe output;
    const pid_t writer = ::fork();
    ASSERT_GE(writer, 0);
    if (writer == 0) {
      WritingTask task;
      task.root = root.written.root;
      task.first = former + 1;
      task.count = 1000;
      task.synchronizes = death % 2 == 0;
      task.output = output.writing.get();
      ::_exit(runWriting(task));
    }
    // Half of them die once they are at work.
    std::string told;
    for (int tries = 0; death % 4 < 2 && told.empty() && tries < 1000; ++tries) {
      std::this_thread::sleep_for(100us);
      told = output.contents();
    }
    std::this_thread::sleep_for(std::chrono::microseconds(microseconds(random)));
    ::kill(writer, SIGKILL);
    ::waitpid(writer, nullptr, 0);
    told += output.contents();
    ASSERT_EQ(told.find("trouble"), std::string::npos) << told;
    const int set = lastOf(told, "set").value_or(former);
    writes += set - former;
    ASSERT_EQ(root.written.faultsAfterDeath(set, set + 1), "") << "death " << death << "; told:\n" << told;
    // What was under way may have come out either way.
    host::linux::FilePreferences store{host::linux::DeviceRoot(root.written.root)};
    former = numberOf(store.copyAppValue(WritingTask().key, kTrustDomain)).value();
  }
  EXPECT_GT(writes, deaths / 4);
  std::cout << "at random: " << deaths << " deaths during " << writes << " writes.\n";
}

/// The calls of each thread of a program as strace(1) tells them, from its own execve on.
std::vector<std::vector<std::int64_t>> callsByStrace(const std::vector<std::string>& command, const fs::path& log) {
  std::string line = "strace -f -n -o '" + log.string() + "'";
  for (const std::string& word : command) line += " '" + word + "'";
  EXPECT_EQ(std::system((line + " >/dev/null").c_str()), 0);  // NOLINT(concurrency-mt-unsafe,cert-env33-c)
  std::ifstream stream(log);
  const std::regex begun(R"(^(\d+) +\[ *(\d+)\] [a-z_0-9]+\(.*)");
  std::vector<std::string> threads;
  std::vector<std::vector<std::int64_t>> calls;
  std::smatch match;
  for (std::string text; std::getline(stream, text);) {
    if (!std::regex_match(text, match, begun)) continue;
    const auto known = std::ranges::find(threads, match[1].str());
    const auto thread = static_cast<std::size_t>(known - threads.begin());
    if (known == threads.end()) {
      threads.push_back(match[1].str());
      calls.emplace_back();
    }
    calls[thread].push_back(std::stoll(match[2].str()));
  }
  return calls;
}

std::vector<std::vector<std::int64_t>> callsByTracer(const std::vector<std::string>& command) {
  Tracee program(command);
  std::vector<pid_t> threads;
  std::vector<std::vector<std::int64_t>> calls;
  program.run([&](const SystemCall& call) {
    const auto known = std::ranges::find(threads, call.thread);
    const auto thread = static_cast<std::size_t>(known - threads.begin());
    if (known == threads.end()) {
      threads.push_back(call.thread);
      calls.emplace_back();
    }
    calls[thread].push_back(call.number);
    return Verdict{};
  });
  // What the child did before it became the program.
  std::erase_if(calls.front(), [isBefore = true](std::int64_t number) mutable {
    if (number == SYS_execve) isBefore = false;
    return isBefore;
  });
  return calls;
}

/// Without what differs from one run to the next by itself.
std::vector<std::vector<std::int64_t>> withoutMemoryAndTime(std::vector<std::vector<std::int64_t>> calls) {
  // By which the address sanitizer asks whether memory can be read, a number of times that differs between runs.
  static constexpr auto kProbe = std::to_array<std::int64_t>({SYS_pipe2, SYS_write, SYS_close, SYS_close});
  for (std::vector<std::int64_t>& thread : calls) {
    std::erase_if(thread, isAboutMemoryOrTime);
    while (true) {
      const auto probe = std::ranges::search(thread, kProbe);
      if (probe.empty()) break;
      thread.erase(probe.begin(), probe.end());
    }
  }
  return calls;
}

TEST(Tracer, SeesTheSystemCallsThatStraceSees) {
  const TrustRoot root;
  const auto command = [&](int first) {
    return std::vector<std::string>{
        QUELLAR_TRUST_WRITER, root.written.root.string(), WritingTask().key, std::to_string(first), "2",
        "--synchronize"};
  };
  // The leak checker doesn't work under a tracer, and ends the program for it.
  ::setenv("ASAN_OPTIONS", "detect_leaks=0", 1);
  root.written.makeWith(0);
  const auto byStrace = callsByStrace(command(7), root.folder.path() / "log");
  root.written.makeWith(0);
  const auto byTracer = callsByTracer(command(7));
  ASSERT_FALSE(byStrace.empty());
  EXPECT_EQ(withoutMemoryAndTime(byTracer), withoutMemoryAndTime(byStrace));
  EXPECT_GT(withoutMemoryAndTime(byTracer).front().size(), 60U);
  EXPECT_EQ(std::ranges::count(byTracer.front(), SYS_renameat2), 2) << "the file was replaced twice";
}

TEST(Tracer, KillsBeforeACallIsCarriedOutOrAfterIt) {
  const TrustRoot root;
  for (const Side side : {Side::Before, Side::After}) {
    root.written.makeWith(kFormer);
    const Pipe output;
    Tracee writer([&] { return scenarios().front().write(root.written, output.writing.get()); });
    const Tracee::Handler kill = [](const SystemCall& call) {
      const bool isRename = call.number == SYS_renameat || call.number == SYS_renameat2;
      return Verdict{isRename ? Verdict::Kind::Kill : Verdict::Kind::GoOn, 0};
    };
    EXPECT_TRUE((side == Side::Before ? writer.run(kill) : writer.run({}, kill)).wasKilled);
    // The two files exchange their names.
    const int expected = side == Side::Before ? kFormer : kLatter;
    const std::vector<std::string> names = filesIn(root.written.preferences());
    const auto temporary = std::ranges::find_if(
        names, [](const std::string& name) { return name.starts_with(std::string(kTrustFile) + ".tmp"); });
    ASSERT_NE(temporary, names.end());
    EXPECT_NE(bytesOf(root.written.preferences() / *temporary), bytesOf(root.written.file()));
    EXPECT_EQ(root.written.faultsAfterDeath(expected, expected), "");
  }
}

}  // namespace crash_test
}  // namespace quellar::tests

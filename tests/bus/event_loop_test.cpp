// SPDX-License-Identifier: MIT
#include "host/linux/event_loop.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>
#include <string>
#include <vector>

namespace quellar::host::linux {
namespace event_loop_test {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using Clock = std::chrono::steady_clock;
using testing::ElementsAre;

struct Pipe {
  Pipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) throw std::runtime_error("pipe2");
    reading = FileDescriptor(ends[0]);
    writing = FileDescriptor(ends[1]);
  }
  void fill() const { ASSERT_EQ(::write(writing.get(), "x", 1), 1); }
  void drain() const {
    char byte = 0;
    ASSERT_EQ(::read(reading.get(), &byte, 1), 1);
  }

  FileDescriptor reading;
  FileDescriptor writing;
};

void (*actionOf(int signal))(int) {
  struct sigaction action = {};
  ::sigaction(signal, nullptr, &action);
  return action.sa_handler;
}

TEST(EventLoop, RunsWorksInTheOrderInWhichTheyFallDue) {
  EventLoop loop;
  std::vector<std::string> ran;
  loop.after(milliseconds(30), [&] { ran.emplace_back("third"); });
  loop.after(milliseconds(10), [&] { ran.emplace_back("first"); });
  loop.after(milliseconds(20), [&] { ran.emplace_back("second"); });
  EXPECT_THAT(ran, ElementsAre());
  loop.runUntilIdle();
  EXPECT_THAT(ran, ElementsAre("first", "second", "third"));
}

TEST(EventLoop, RunsWorksOfTheSameDelayInTheOrderOfTheirCalls) {
  EventLoop loop;
  std::vector<int> ran;
  std::vector<int> expected;
  for (int i = 0; i < 1000; ++i) {
    loop.after(milliseconds(i % 2 == 0 ? 0 : -5), [&ran, i] { ran.push_back(i); });
    expected.push_back(i);
  }
  loop.runUntilIdle();
  EXPECT_EQ(ran, expected);
}

TEST(EventLoop, RunsNoWorkBeforeItIsDueNorMuchLater) {
  EventLoop loop;
  const auto began = Clock::now();
  Clock::time_point ran;
  loop.after(nanoseconds(100'000'001), [&] { ran = Clock::now(); });
  loop.runUntilIdle();
  EXPECT_GE(ran - began, nanoseconds(100'000'001));
  EXPECT_LT(ran - began, milliseconds(1100));
}

TEST(EventLoop, RunsUntilIdleRunsTheWorksThatAWorkAdds) {
  EventLoop loop;
  std::vector<std::string> ran;
  loop.after(milliseconds(0), [&] {
    ran.emplace_back("outer");
    loop.after(milliseconds(5), [&] { ran.emplace_back("follow-up"); });
    loop.after(milliseconds(0), [&] { ran.emplace_back("at once"); });
    ran.emplace_back("outer ends");
  });
  loop.runUntilIdle();
  EXPECT_THAT(ran, ElementsAre("outer", "outer ends", "at once", "follow-up"));
}

TEST(EventLoop, ReturnsAtOnceWhenThereIsNoWorkThoughADescriptorIsWatched) {
  EventLoop loop;
  const Pipe pipe;
  loop.watch(pipe.reading.get(), POLLIN, [](short) {});
  loop.runUntilIdle();
}

TEST(EventLoop, TheLongestDelayDoesNotWrapAround) {
  EventLoop loop;
  std::vector<std::string> ran;
  loop.after(nanoseconds::max(), [&] { ran.emplace_back("never"); });
  loop.after(milliseconds(5), [&] {
    ran.emplace_back("soon");
    loop.stop();
  });
  loop.run();
  EXPECT_THAT(ran, ElementsAre("soon"));
}

TEST(EventLoop, StopKeepsTheWorksThatAreLeftForTheNextRun) {
  EventLoop loop;
  std::vector<int> ran;
  loop.after(milliseconds(0), [&] {
    ran.push_back(1);
    loop.stop();
  });
  loop.after(milliseconds(0), [&] { ran.push_back(2); });
  loop.runUntilIdle();
  EXPECT_THAT(ran, ElementsAre(1));
  loop.runUntilIdle();
  EXPECT_THAT(ran, ElementsAre(1, 2));
}

TEST(EventLoop, AWorkThatThrowsIsGoneAndTheOthersStay) {
  EventLoop loop;
  std::vector<int> ran;
  loop.after(milliseconds(0), [] { throw std::runtime_error("broken"); });
  loop.after(milliseconds(0), [&] { ran.push_back(2); });
  EXPECT_THROW(loop.runUntilIdle(), std::runtime_error);
  loop.runUntilIdle();
  EXPECT_THAT(ran, ElementsAre(2));
}

TEST(EventLoop, CallsAWatchAsLongAsItsDescriptorIsReadable) {
  EventLoop loop;
  const Pipe pipe;
  std::vector<short> events;
  loop.watch(pipe.reading.get(), POLLIN, [&](short occurred) {
    events.push_back(occurred);
    pipe.drain();
    if (events.size() == 2) loop.stop();
  });
  pipe.fill();
  pipe.fill();
  loop.run();
  EXPECT_THAT(events, ElementsAre(POLLIN, POLLIN));
}

TEST(EventLoop, AWatchCanEndItselfAndAnotherThatIsReadyToo) {
  EventLoop loop;
  const Pipe first;
  const Pipe second;
  std::vector<std::string> called;
  int firstWatch = 0;
  int secondWatch = 0;
  firstWatch = loop.watch(first.reading.get(), POLLIN, [&](short) {
    called.emplace_back("first");
    loop.unwatch(firstWatch);
    loop.unwatch(secondWatch);
  });
  secondWatch = loop.watch(second.reading.get(), POLLIN, [&](short) { called.emplace_back("second"); });
  first.fill();
  second.fill();
  loop.after(milliseconds(20), [] {});
  loop.runUntilIdle();
  EXPECT_THAT(called, ElementsAre("first"));
}

TEST(EventLoop, AWorkThatRepeatsItselfAtOnceDoesNotStarveAWatch) {
  EventLoop loop;
  const Pipe pipe;
  int turns = 0;
  std::function<void()> again = [&] {
    ++turns;
    if (turns == 10) pipe.fill();
    if (turns < 1000000) loop.after(milliseconds(0), again);
  };
  loop.after(milliseconds(0), again);
  loop.watch(pipe.reading.get(), POLLIN, [&](short) { loop.stop(); });
  loop.run();
  EXPECT_LT(turns, 20);
}

TEST(EventLoop, EndsOnASignalAndRestoresItsActionAfterwards) {
  const auto before = actionOf(SIGTERM);
  {
    EventLoop loop;
    loop.stopOnSignals({SIGINT, SIGTERM});
    loop.after(milliseconds(10), [] { ::kill(::getpid(), SIGTERM); });
    loop.run();
    loop.after(milliseconds(10), [] { ::kill(::getpid(), SIGINT); });
    loop.run();
    EXPECT_NE(actionOf(SIGTERM), before);
  }
  EXPECT_EQ(actionOf(SIGTERM), before);
  EventLoop next;
  next.stopOnSignals({SIGTERM});
  ::kill(::getpid(), SIGTERM);
  next.run();
}

TEST(EventLoop, ASignalThatCameBeforeTheRunEndsIt) {
  EventLoop loop;
  loop.stopOnSignals({SIGTERM});
  ::kill(::getpid(), SIGTERM);
  loop.run();
}

TEST(EventLoop, OnlyOneLoopAtATimeEndsOnSignals) {
  EventLoop loop;
  loop.stopOnSignals({SIGTERM});
  EventLoop second;
  EXPECT_THROW(second.stopOnSignals({SIGTERM}), std::logic_error);
}

TEST(EventLoop, AProgramThatIsExecutedMeanwhileDiesOfTheSignalAsUsual) {
  EventLoop loop;
  loop.stopOnSignals({SIGTERM});
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    ::execl("/bin/sh", "sh", "-c", "kill -TERM $$; sleep 0", nullptr);
    ::_exit(127);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGTERM);
}

}  // namespace event_loop_test
}  // namespace quellar::host::linux

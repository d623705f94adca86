// SPDX-License-Identifier: MIT

// Eight programs that write to one domain at once, one that dies again and again, and one that is stuck.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <iostream>
#include <limits>
#include <map>
#include <thread>

#include "cli/program.h"
#include "host/linux/property_list/property_list.h"
#include "many_programs.h"
#include "scenarios.h"

namespace quellar::tests {
namespace many_writers_test {

using host::linux::DeviceRoot;
using host::linux::FilePreferences;
using platform::Dictionary;
using platform::Value;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

std::function<int(int)> storeWriter(const WrittenRoot& root, const std::string& key, Clock::time_point until) {
  return [=](int output) {
    WritingTask task;
    task.root = root.root;
    task.key = key;
    task.count = std::numeric_limits<int>::max() - 1;
    task.until = until;
    task.options = {.lockLimit = 20s};
    task.output = output;
    return runWriting(task);
  };
}

/// Starts writers and kills them wherever they are. After each it tells the last number that any has told ("set 7"),
/// and the highest that may have been under way ("begun 8").
std::function<int(int)> mortalWriter(const WrittenRoot& root, const std::string& key, Clock::time_point until) {
  return [=](int output) {
    int last = 0;
    int first = 1;
    for (int life = 0; Clock::now() < until; ++life) {
      const Pipe words;
      const pid_t writer = ::fork();
      if (writer == 0) {
        WritingTask task;
        task.root = root.root;
        task.key = key;
        task.first = first;
        task.count = 100000;
        task.options = {.lockLimit = 20s};
        task.output = words.writing.get();
        ::_exit(runWriting(task));
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(20 + 7 * (life % 10)));
      ::kill(writer, SIGKILL);
      ::waitpid(writer, nullptr, 0);
      const std::string told = words.contents();
      if (told.find("trouble") != std::string::npos) tellParent(output, told);
      // One that told nothing may have died in the middle of its first.
      const std::optional<int> set = lastOf(told, "set");
      const int begun = set ? *set + 1 : first;
      last = set.value_or(last);
      tellParent(output, "set " + std::to_string(last) + "\nbegun " + std::to_string(begun));
      first = begun + 1;
    }
    tellParent(output, "ended 1");
    return 0;
  };
}

/// Calls the command line again and again, or talks to a session; a switch goes on and off. Tells "set 1" and "set 0".
std::function<int(int)> commandWriter(const Device& device, const std::string& page, const std::string& key,
                                      Clock::time_point until) {
  return [=, &device](int output) {
    for (int value = 1; Clock::now() < until; value = 1 - value) {
      const Ended ended = device.run({"set", page, key, value == 1 ? "on" : "off"});
      if (ended != succeeded("")) tellParent(output, "trouble " + ended.errors);
      tellParent(output, "set " + std::to_string(value));
    }
    tellParent(output, "ended 1");
    return 0;
  };
}

std::function<int(int)> sessionWriter(const Device& device, const std::string& page, const std::string& key,
                                      Clock::time_point until) {
  return [=, &device](int output) {
    const auto session = device.start({"session"});
    const auto command = [&](const std::string& line) {
      session->write(line + "\n");
      std::string answer;
      do answer = session->readLine();
      while (!answer.starts_with(R"({"ok")") && !answer.starts_with(R"({"error")"));
      if (!answer.starts_with(R"({"ok":true)") || answer.find("warning") != std::string::npos) {
        tellParent(output, "trouble " + answer);
      }
    };
    command(R"({"do":"open","page":")" + page + "\"}");
    for (int value = 1; Clock::now() < until; value = 1 - value) {
      command(R"({"do":"set","row":")" + key + R"(","value":)" + (value == 1 ? "true" : "false") + "}");
      tellParent(output, "set " + std::to_string(value));
    }
    tellParent(output, "ended 1");
    return session->wait().code;
  };
}

TEST(ManyWriters, LoseNoKeyTearNoFileAndNeverLockEachOtherOut) {
  const auto duration = isLongForm() ? 60s : 2s;
  const Device device;
  const WrittenRoot root{device.root()};
  root.makeWith(0);
  const auto until = Clock::now() + duration;

  std::map<std::string, std::unique_ptr<Child>> children;
  const auto start = [&](const std::string& name, const std::function<int(int)>& work) {
    children[name] = std::make_unique<Child>(work);
  };
  const bool isBuilt = fs::exists(QUELLAR_PROGRAM);
  start("Mortal_Defaults", mortalWriter(root, "Mortal_Defaults", until));
  if (isBuilt) {
    start("set", commandWriter(device, "Status Bar", "usesLowercaseAMPM", until));
    start("set too", commandWriter(device, "Dock", "userDisablesBackgroundBlur", until));
    start("session", sessionWriter(device, "Home Screen", "userRequestsDisablingHSRotation", until));
  }
  while (children.size() < 8) {
    const std::string key = "Writer" + std::to_string(children.size()) + "_Defaults";
    start(key, storeWriter(root, key, until));
  }

  // Meanwhile each version of the file is a whole one, in which no number goes back.
  std::map<std::string, int> numbers;
  int versions = 0;
  while (Clock::now() < until) {
    for (const auto& [name, child] : children) child->told();
    const Value whole = host::linux::parsePropertyList(bytesOf(root.file()));
    ASSERT_TRUE(whole.is<Dictionary>());
    for (const auto& [key, value] : otherKeys()) {
      if (key == "StatusBar_Defaults" || key == "Dock_Defaults") continue;
      ASSERT_EQ(whole.as<Dictionary>()->at(key), value);
    }
    for (const auto& [name, child] : children) {
      const auto found = whole.as<Dictionary>()->find(name);
      if (found == whole.as<Dictionary>()->end()) continue;
      const std::optional<int> number = numberOf(found->second);
      ASSERT_TRUE(number) << name;
      ASSERT_GE(*number, numbers[name]) << name;
      numbers[name] = *number;
    }
    ++versions;
    std::this_thread::sleep_for(1ms);
  }

  std::size_t writes = 0;
  for (const auto& [name, child] : children) {
    EXPECT_EQ(child->endsWithin(40s), 0) << name << " is stuck or has failed:\n" << child->told();
    EXPECT_EQ(child->told().find("trouble"), std::string::npos) << name << ":\n" << child->told();
    EXPECT_EQ(lastOf(child->told(), "ended"), 1) << name;
    const auto lines = std::ranges::count(child->told(), '\n') - 1;
    const auto count = name == "Mortal_Defaults" ? lines / 2 : lines;
    EXPECT_GT(count, 0) << name;
    writes += static_cast<std::size_t>(count);
    std::cout << "  " << name << ": " << count << (name == "Mortal_Defaults" ? " deaths\n" : " writes\n");
  }

  FilePreferences next{DeviceRoot(root.root)};
  for (const auto& [name, child] : children) {
    const std::optional<int> last = lastOf(child->told(), "set");
    ASSERT_TRUE(last) << name;
    if (name.ends_with("_Defaults")) {
      const std::optional<int> number = numberOf(next.copyAppValue(name, kTrustDomain));
      // On a busy machine each life may have ended before its first write.
      if (*last == 0 && !next.copyAppValue(name, kTrustDomain)) continue;
      ASSERT_TRUE(number) << name;
      EXPECT_GE(*number, *last) << name;
      EXPECT_LE(*number, lastOf(child->told(), "begun").value_or(*last)) << name;
    }
  }
  if (isBuilt) {
    const auto expectGet = [&](const std::string& page, const std::string& key, const std::string& child) {
      const bool isOn = lastOf(children.at(child)->told(), "set") == 1;
      EXPECT_EQ(device.run({"get", page, key}), succeeded(isOn ? "true\n" : "false\n")) << page;
    };
    expectGet("Status Bar", "usesLowercaseAMPM", "set");
    expectGet("Dock", "userDisablesBackgroundBlur", "set too");
  }
  EXPECT_EQ(next.copyAppValue("alone", kTrustDomain), otherKeys().at("alone"));
  std::cout << "eight writers" << (isBuilt ? "" : " (without the programs, which are not built)") << ": " << writes
            << " writes in " << std::chrono::duration_cast<std::chrono::seconds>(duration).count() << " s, read "
            << versions << " times meanwhile.\n";
}

TEST(ManyWriters, TellOfOneThatIsStuckWithinTheirLimitAndGoOnWhenItDies) {
  const TemporaryFolder folder;
  const WrittenRoot root{folder.path() / "root"};
  root.makeWith(0);
  Child stuck([&](int output) {
    const int lock = ::open(root.beside(".lock").c_str(), O_RDONLY | O_CLOEXEC);
    if (::flock(lock, LOCK_EX) != 0) return 1;
    tellParent(output, "locked 1");
    ::raise(SIGSTOP);
    return 0;
  });
  while (lastOf(stuck.told(), "locked") != 1) std::this_thread::sleep_for(1ms);

  constexpr auto kLimit = 300ms;
  FilePreferences store{DeviceRoot(root.root), {}, {.lockLimit = kLimit}};
  const auto began = Clock::now();
  store.setAppValue("Stuck_Defaults", numberedValue(1), kTrustDomain);
  const auto waited = Clock::now() - began;
  const auto troubles = store.takeTroubles();
  ASSERT_EQ(troubles.size(), 1U);
  EXPECT_EQ(troubles[0].file, root.file());
  EXPECT_EQ(troubles[0].cause, "another program has kept " + std::string(kTrustFile) + ".lock locked for 300 ms");
  EXPECT_GE(waited, kLimit);
  EXPECT_LT(waited, kLimit + 2s);
  EXPECT_EQ(numberOf(store.copyAppValue("Stuck_Defaults", kTrustDomain)), 1) << "it stays in memory";

  ::kill(stuck.process(), SIGKILL);
  EXPECT_EQ(stuck.endsWithin(10s), 128 + SIGKILL);
  store.setAppValue("Next_Defaults", numberedValue(2), kTrustDomain);
  EXPECT_TRUE(store.takeTroubles().empty());
  FilePreferences next{DeviceRoot(root.root)};
  EXPECT_EQ(numberOf(next.copyAppValue("Stuck_Defaults", kTrustDomain)), 1);
  EXPECT_EQ(numberOf(next.copyAppValue("Next_Defaults", kTrustDomain)), 2);
}

}  // namespace many_writers_test
}  // namespace quellar::tests

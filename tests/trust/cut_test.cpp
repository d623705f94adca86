// SPDX-License-Identifier: MIT

// Power cuts on real file systems.
//
// The promise: whoever reads the domain file after a power cut at any moment, whoever that is, finds a whole property
// list with every value that was acknowledged before the cut, and with all other keys.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <functional>
#include <iostream>
#include <thread>

#include "black_box.h"
#include "chronicle.h"
#include "cli/program.h"
#include "many_programs.h"
#include "recorded_disk.h"
#include "stranger.h"
#include "writing.h"

namespace quellar::tests {
namespace cut_test {

using platform::Dictionary;
using platform::Value;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

const std::string kLockScreenPage = "Custom Lockscreen Strings";
const Chronicle::Place kOne{"LockScreen_Defaults", "userCustomDeviceText"};
const Chronicle::Place kOther{"LockScreen_Defaults", "userCustomLegalText"};
const Chronicle::Place kBySession{"StatusBar_Defaults", "userCustomCarrierText"};
const Chronicle::Place kStrangers{"", "Other_Program"};

/// Large enough for several blocks, so that a file can be torn.
Dictionary formerDomain() {
  return {{"LockScreen_Defaults",
           Dictionary{{"userRequestsCustomDeviceText", true}, {"userRequestsCustomLegalText", true}}},
          {"StatusBar_Defaults", Dictionary{{"usesCustomCarrierText", true}}},
          {"Dock_Defaults", Dictionary{{"dockAlpha", 0.25}, {"usesCustomDockBlur", true}}},
          {"large", std::string(9000, 'x')}};
}

/// Programs at work on a recorded disk, and what they told.
class Writers {
 public:
  explicit Writers(const RecordedDisk& disk) : disk_(disk) {
    device_.environment["QUELLAR_DEVICE_ROOT"] = (disk.path() / "device").string();
    fs::create_directories(file().parent_path());
    replaceAsStranger(file(), formerDomain());
    chronicle.beginWith(formerDomain());
    disk.synchronize();
    beginCuts();
  }

  /// Cuts are made from now on.
  void beginCuts() { start_ = disk_.count(); }
  [[nodiscard]] std::size_t start() const { return start_; }

  [[nodiscard]] fs::path file() const { return disk_.path() / "device/var/mobile/Library/Preferences" / kTrustFile; }

  Chronicle chronicle;
  /// What went wrong without a cut.
  std::string faults;

  /// `quellar set`; several at once for several places.
  void set(const std::vector<Chronicle::Place>& places) {
    struct Call {
      std::unique_ptr<Running> program;
      std::size_t attempt = 0;
    };
    std::vector<Call> calls;
    for (const Chronicle::Place& place : places) {
      const std::string value = nextValue();
      const std::size_t attempt = chronicle.begin(place, Value(value), disk_.count());
      calls.push_back({device_.start({"set", kLockScreenPage, place.key, value}), attempt});
    }
    for (std::size_t index = 0; index < calls.size(); ++index) {
      const Ended ended = calls[index].program->wait();
      last = ended;
      if (ended.code == 0) chronicle.acknowledge(places[index], calls[index].attempt, disk_.count());
      if (ended.code != 0 && std::ranges::count(ended.errors, '\n') != 1) faults += "not told why; ";
    }
  }

  /// A session that stays, with its page open.
  void setInSession() {
    if (!session_) {
      session_ = device_.start({"session"});
      command(R"({"do":"open","page":"Custom Carrier Strings"})");
    }
    const std::string value = nextValue();
    const std::size_t attempt = chronicle.begin(kBySession, Value(value), disk_.count());
    const std::string closing = command(R"({"do":"set","row":")" + kBySession.key + R"(","value":")" + value + "\"}");
    if (closing == R"({"ok":true})") chronicle.acknowledge(kBySession, attempt, disk_.count());
    last.code = closing == R"({"ok":true})" ? 0 : 1;
  }

  /// Another program changes the file. What it flushed is acknowledged too.
  void setAsStranger(std::optional<std::time_t> time = std::nullopt, Care care = Care::FlushesAll) {
    std::optional<Dictionary> domain = readAsStranger(file());
    if (!domain) {
      faults += "another program finds no property list; ";
      return;
    }
    const std::string value = nextValue();
    domain->insert_or_assign(kStrangers.key, Value(value));
    const std::size_t attempt = chronicle.begin(kStrangers, Value(value), disk_.count());
    replaceAsStranger(file(), *domain, care);
    chronicle.acknowledge(kStrangers, attempt, disk_.count());
    if (!time) return;
    const std::array<timespec, 2> times = {{{*time, 0}, {*time, 0}}};
    ::utimensat(AT_FDCWD, file().c_str(), times.data(), 0);
  }

  void endSession() {
    if (session_) session_->wait();
    session_.reset();
  }

  /// How the last of our programs ended.
  Ended last;

  Device& device() { return device_; }

 private:
  std::string nextValue() {
    ++number_;
    return std::to_string(number_) + std::string(static_cast<std::size_t>(number_ % 5) * 900, 'v');
  }

  std::string command(const std::string& line) {
    session_->write(line + "\n");
    std::string answer;
    do answer = session_->readLine();
    while (!answer.starts_with(R"({"ok")") && !answer.starts_with(R"({"error")"));
    return answer;
  }

  const RecordedDisk& disk_;
  Device device_;
  std::unique_ptr<Running> session_;
  int number_ = 0;
  std::size_t start_ = 0;
};

/// Has a file of its own flushed again and again, so that the file system writes its journal at any moment.
std::function<int(int)> restlessNeighbour(const fs::path& folder) {
  return [=](int) {
    for (unsigned number = 0;; ++number) {
      const std::string bytes(number % 3000 + 1, 'n');
      const host::linux::FileDescriptor file(
          ::open((folder / "neighbour").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
      if (::write(file.get(), bytes.data(), bytes.size()) < 0 || ::fsync(file.get()) != 0) return 0;
      std::this_thread::sleep_for(std::chrono::microseconds(number * 37 % 2000));
    }
  };
}

struct CutCount {
  int cuts = 0;
  int failed = 0;
  std::string first;
};

/// Looks at cuts all over what was recorded.
CutCount judgeCuts(const FileSystemKind& kind, const RecordedDisk& disk, std::vector<DiskAction> actions,
                   const Writers& writers, int most) {
  CutCount count;
  const std::size_t end = actions.size();
  const auto flushes = std::ranges::count(actions, DiskAction::Kind::Flush, &DiskAction::kind);
  EXPECT_GT(flushes, 3);
  CutImages images(kind, disk.firstImage(), std::move(actions));
  // At each moment: all that the device was given, only what it was told to keep, and parts of the rest.
  constexpr std::array kRests = {CutImages::Rest::All, CutImages::Rest::None, CutImages::Rest::Some};
  const std::size_t moments = end - writers.start() + 1;
  for (int cut = 0; cut < most; ++cut) {
    const auto number = static_cast<std::size_t>(cut);
    const std::size_t moment = writers.start() + number * moments / static_cast<std::size_t>(most);
    const CutImages::Rest rest = images.hasRest(moment) ? kRests.at(number % kRests.size()) : CutImages::Rest::All;
    std::string faults;
    try {
      images.at(moment, rest, static_cast<unsigned>(cut), [&](const fs::path& mounted) {
        const fs::path file = mounted / fs::relative(writers.file(), disk.path());
        faults = writers.chronicle.faults(readAsStranger(file), moment);
        std::error_code ignored;
        if (!faults.empty()) faults += std::to_string(fs::file_size(file, ignored)) + " bytes";
      });
    } catch (const std::exception& error) {
      faults = error.what();
    }
    ++count.cuts;
    if (faults.empty()) continue;
    if (++count.failed == 1) {
      count.first = "after action " + std::to_string(moment) + " of " + std::to_string(end) + ": " + faults;
    }
  }
  return count;
}

class Cut : public testing::TestWithParam<FileSystemKind> {
 protected:
  void SetUp() override {
    const FileSystemKind& kind = GetParam();
    if (const std::string why = RecordedDisk::whyNot(kind); !why.empty()) GTEST_SKIP() << why;
    if (!fs::exists(QUELLAR_PROGRAM)) GTEST_SKIP() << "quellar is not built";
    if (!isLongForm() && kind.name != "ext4") GTEST_SKIP() << "the long form cuts on " << kind.name;
  }
};

INSTANTIATE_TEST_SUITE_P(OnA, Cut, testing::ValuesIn(fileSystemKinds()),
                         [](const auto& kind) { return kind.param.name; });

TEST_P(Cut, AtAnyMomentLeavesAWholeFileWithAllThatWasAcknowledged) {
  const FileSystemKind& kind = GetParam();
  RecordedDisk disk(kind);
  Writers writers(disk);
  {
    const Child neighbour(restlessNeighbour(disk.path()));
    const int rounds = isLongForm() ? 40 : 4;
    preload(writers.device().environment);
    for (int round = 0; round < rounds; ++round) {
      constexpr std::array kClocks = {"0", "-631152000", "631152000", "restless"};
      writers.device().environment["QUELLAR_CLOCK"] = kClocks.at(static_cast<std::size_t>(round) % kClocks.size());
      writers.set({kOne});
      EXPECT_EQ(writers.last, succeeded(""));
      writers.setInSession();
      EXPECT_EQ(writers.last.code, 0);
      // Its time says nothing of what was flushed. What it flushed stays, whatever we write next.
      constexpr std::array<std::time_t, 3> kTimes = {946684800, 2208988800, 0};
      if (round % 2 == 0) writers.setAsStranger(kTimes.at(static_cast<std::size_t>(round / 2) % kTimes.size()));
      writers.set({kOne, kOther});
      EXPECT_EQ(writers.last, succeeded(""));
    }
    writers.endSession();
  }
  EXPECT_EQ(writers.faults, "");
  EXPECT_EQ(writers.chronicle.faults(readAsStranger(writers.file()), disk.count()), "");
  // Others take longer to be mounted.
  const int cuts = !isLongForm() ? 60 : kind.name == "ext4" ? 1000 : 400;
  const CutCount count = judgeCuts(kind, disk, disk.takeActions(), writers, cuts);
  std::cout << kind.name << ": " << count.cuts << " cuts, " << writers.chronicle.acknowledged()
            << " values acknowledged; " << count.failed << " cuts left less.\n";
  EXPECT_EQ(count.failed, 0) << count.first;
}

TEST_P(Cut, IsSurvivedByACarefulProgramAndNotByACarelessOne) {
  const FileSystemKind& kind = GetParam();
  for (const Care care : {Care::FlushesAll, Care::FlushesNothing}) {
    RecordedDisk disk(kind);
    Writers writers(disk);
    {
      const Child neighbour(restlessNeighbour(disk.path()));
      for (int round = 0; round < 6; ++round) writers.setAsStranger(std::nullopt, care);
    }
    const CutCount count = judgeCuts(kind, disk, disk.takeActions(), writers, 20);
    EXPECT_EQ(count.failed == 0, care == Care::FlushesAll) << count.failed << " cuts left less; " << count.first;
  }
}

// The promise: a value whose write or flush failed is written to a new file, because the old one's data may be gone
// although a second flush of it succeeds; so what ended with exit 0 survives a cut on a device that fails now and then.

TEST_P(Cut, OnADeviceThatFailsNowAndThenLeavesAllThatWasAcknowledged) {
  const FileSystemKind& kind = GetParam();
  int refused = 0;
  for (const bool isFlush : {false, true}) {
    SCOPED_TRACE(isFlush ? "a flush fails" : "a write fails");
    RecordedDisk disk(kind);
    Writers writers(disk);
    const int rounds = isLongForm() ? 12 : 3;
    for (int round = 0; round < rounds; ++round) {
      writers.set({kOne});
      EXPECT_EQ(writers.last, succeeded(""));
      isFlush ? disk.failFlushes(1) : disk.failPropertyLists(1);
      if (round % 2 == 0) {
        writers.set({kOther});
      } else {
        writers.setInSession();
      }
      refused += writers.last.code != 0 ? 1 : 0;
      EXPECT_EQ(disk.failuresLeft(), 0) << "the device had nothing to fail";
      disk.failPropertyLists(0);
      // A file system whose journal could not be flushed takes no more writes; that must be told.
      if (isFlush) break;
      writers.set({kOne});
      EXPECT_EQ(writers.last, succeeded(""));
    }
    writers.endSession();
    EXPECT_EQ(writers.faults, "");
    const CutCount count = judgeCuts(kind, disk, disk.takeActions(), writers, isLongForm() ? 200 : 30);
    EXPECT_EQ(count.failed, 0) << count.first;
    std::cout << kind.name << ": " << count.cuts << " cuts on a device that failed a " << (isFlush ? "flush" : "write")
              << " now and then, " << count.failed << " left less; " << refused << " writes were told as failed.\n";
  }
}

// The promise: writers on a slow device are served about in turn; each succeeds, or says why it does not.

TEST_P(Cut, OfASlowDeviceLosesNothingAndItsWritersAreServedInTurn) {
  const FileSystemKind& kind = GetParam();
  if (kind.name != "ext4") GTEST_SKIP() << "a slow device is slow with any file system";
  const std::vector<std::pair<Chronicle::Place, std::string>> places = [] {
    std::vector<std::pair<Chronicle::Place, std::string>> all;
    for (const char* key :
         {"disablesAlarmSTBIcon", "disablesAirplaneSTBIcon", "disablesAssistantSTBIcon", "disablesBatterySTBIcon",
          "disablesBluetoothSTBIcon", "disablesCarplaySTBIcon", "disablesDNDSTBIcon", "disablesHeadphonesSTBIcon",
          "disablesRotationSTBIcon", "disablesSignalSTBIcon", "disablesTTYSTBIcon", "disablesWifiSTBIcon"}) {
      all.push_back({{"StatusBar_Defaults", key}, "Status Bar"});
    }
    for (const char* key : {"userDisablesEdgeAlerts", "userDisablesNoSimAlerts"}) {
      all.push_back({{"Alerts_Defaults", key}, "Alerts"});
    }
    return all;
  }();
  RecordedDisk disk(kind);
  Writers writers(disk);
  disk.delayFlushes(isLongForm() ? 3s : 100ms);

  struct Caller {
    Chronicle::Place place;
    std::unique_ptr<Running> program;
    std::size_t attempt = 0;
    std::optional<Ended> ended;
    /// How many had ended before it.
    int rank = -1;
  };
  std::vector<Caller> callers;
  for (const auto& [place, page] : places) {
    const std::size_t attempt = writers.chronicle.begin(place, Value(true), disk.count());
    callers.push_back({place, writers.device().start({"set", page, place.key, "on"}), attempt, {}});
    // Far enough apart that their order is known.
    std::this_thread::sleep_for(60ms);
  }
  ASSERT_EQ(callers.size(), 14U);

  const auto began = std::chrono::steady_clock::now();
  const auto until = began + (isLongForm() ? 600s : 60s);
  int ranks = 0;
  int overtaken = 0;
  int refused = 0;
  while (ranks < static_cast<int>(callers.size()) && std::chrono::steady_clock::now() < until) {
    for (Caller& caller : callers) {
      if (caller.ended) continue;
      // Its end closes its output.
      if (!caller.program->hasEnded(2ms)) continue;
      caller.ended = caller.program->wait();
      caller.rank = ranks++;
      if (caller.ended->code == 0) {
        writers.chronicle.acknowledge(caller.place, caller.attempt, disk.count());
      } else {
        ++refused;
        EXPECT_EQ(caller.ended->code, 1);
        EXPECT_EQ(std::ranges::count(caller.ended->errors, '\n'), 1) << caller.ended->errors;
        EXPECT_NE(caller.ended->errors.find(writers.file().filename().string()), std::string::npos)
            << caller.ended->errors;
      }
    }
  }
  EXPECT_EQ(ranks, static_cast<int>(callers.size())) << "some wait for ever";
  for (std::size_t index = 0; index < callers.size(); ++index) {
    const auto late = std::count_if(callers.begin() + static_cast<std::ptrdiff_t>(index), callers.end(),
                                    [&](const Caller& later) { return later.rank < callers[index].rank; });
    overtaken = std::max(overtaken, static_cast<int>(late));
  }
  // The kernel wakes those who wait for a lock in order, but they may ask again in any.
  EXPECT_LE(overtaken, 7) << "a caller was overtaken by more than half of those that came after it";
  disk.delayFlushes(0ms);
  EXPECT_EQ(writers.chronicle.faults(readAsStranger(writers.file()), disk.count()), "");
  const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - began);
  const CutCount count = judgeCuts(kind, disk, disk.takeActions(), writers, isLongForm() ? 200 : 30);
  EXPECT_EQ(count.failed, 0) << count.first;
  std::cout << "14 callers on a slow device: " << 14 - refused << " stored and " << refused << " refused within "
            << took.count() << " ms, one overtaken by " << overtaken << " at most; " << count.cuts << " cuts, "
            << count.failed << " left less.\n";
}

}  // namespace cut_test
}  // namespace quellar::tests

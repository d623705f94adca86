// SPDX-License-Identifier: MIT
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "comparison.h"
#include "figures.h"
#include "frame/names.h"
#include "host/linux/background_preferences.h"
#include "settings_peers.h"

namespace quellar::benches {

/// How long each flush of this program takes in addition.
std::atomic<std::chrono::milliseconds>& flushTime() {
  static std::atomic<std::chrono::milliseconds> time{};
  return time;
}

}  // namespace quellar::benches

// Takes the place of the C library's in this program.
extern "C" int fsync(int descriptor) {
  std::this_thread::sleep_for(quellar::benches::flushTime().load());
  return static_cast<int>(::syscall(SYS_fsync, descriptor));
}

namespace quellar::benches {

namespace {

using namespace std::chrono_literals;

constexpr int kRounds = 20;
constexpr int kOperationsInARound = 100;
/// Lets what follows a notification end before the next write.
constexpr auto kPause = 300us;

constexpr const char* kPanel = "quellar: a switch";
constexpr const char* kPanelTwice = "quellar: a switch with two notifications";
constexpr const char* kBare = "floor: rename of the same bytes, one signal, one read";
constexpr const char* kBareTwice = "floor with two signals";
constexpr const char* kGSettings = "GSettings (dconf), asynchronous";
constexpr const char* kGSettingsSync = "GSettings (dconf), synchronous";
constexpr const char* kQSettings = "QSettings and a QtDBus signal";
constexpr const char* kKConfig = "KConfig with its notification";

/// Keeps this thread, and what it starts, on one processor.
class OneProcessor {
 public:
  OneProcessor() {
    if (::sched_getaffinity(0, sizeof former_, &former_) != 0) throwError();
    cpu_set_t one;
    CPU_ZERO(&one);
    int last = 0;
    for (int number = 0; number < CPU_SETSIZE; ++number) {
      if (CPU_ISSET(number, &former_)) last = number;
    }
    CPU_SET(last, &one);
    if (::sched_setaffinity(0, sizeof one, &one) != 0) throwError();
  }
  OneProcessor(const OneProcessor&) = delete;
  OneProcessor& operator=(const OneProcessor&) = delete;
  ~OneProcessor() { ::sched_setaffinity(0, sizeof former_, &former_); }

 private:
  [[noreturn]] static void throwError() {
    throw std::system_error(errno, std::generic_category(), "sched_setaffinity");
  }

  cpu_set_t former_{};
};

/// How a settings system is started: what follows the program's role, in its own home.
struct Entrant {
  const char* name;
  const char* program;
  const char* writeRole = "write";
  PeerHome::Service service = PeerHome::Service::None;
  /// A file or folder there; "" for none.
  const char* file = "";
  std::vector<std::string> options = {};
};

std::vector<std::string> commandOf(const Entrant& entrant, const char* role, const PeerHome& home) {
  std::vector<std::string> command = {(programFolder() / "quellar-bench-").string() + entrant.program, role};
  if (*entrant.file != '\0') command.push_back((home.folder() / entrant.file).string());
  command.insert(command.end(), entrant.options.begin(), entrant.options.end());
  return command;
}

/// A settings system on a bus of its own: a process that writes and one that reads.
class Contender {
 public:
  Contender(const Entrant& entrant, const Place& place)
      : name_(entrant.name),
        home_(place, entrant.service),
        reader_(commandOf(entrant, "read", home_), home_.variables()),
        writer_(commandOf(entrant, entrant.writeRole, home_), home_.variables()) {
    expectReady(reader_);
    expectReady(writer_);
    // The first ones make files and connections.
    for (int number = 0; number < 4; ++number) static_cast<void>(write());
  }

  [[nodiscard]] const std::string& name() const { return name_; }

  /// Writes the other value; returns the time until it was read in the other process.
  std::chrono::nanoseconds write() {
    value_ = !value_;
    writer_.tell(value_ ? '1' : '0');
    // Some tell of a write more than once, or before the new value can be read; what counts is that it was.
    std::chrono::nanoseconds read{0};
    for (bool isRead = false; !isRead;) {
      const std::string line = reader_.readLine();
      isRead = line.ends_with(value_ ? " 1" : " 0");
      if (!isRead) ++early_;
      read = std::chrono::nanoseconds(std::stoll(line));
    }
    writer_.tell('t');
    return read - std::chrono::nanoseconds(std::stoll(writer_.readLine()));
  }

  /// Flushes what was written to the storage device; returns how long that took.
  std::chrono::nanoseconds flush() {
    writer_.tell('f');
    return std::chrono::nanoseconds(std::stoll(writer_.readLine()));
  }

  /// The processor time so far of the process that writes, of the bus, and of the process that reads.
  [[nodiscard]] std::array<std::chrono::nanoseconds, 3> processorTimes() {
    return {processorTime(writer_.process()), processorTime(home_.busProcess()), processorTime(reader_.process())};
  }

  /// How many notifications came when the value could not be read yet.
  [[nodiscard]] int early() const { return early_; }

  Sample written;
  Sample flushed;
  /// For each write, as `processorTimes` has them.
  std::array<Sample, 3> processor;

 private:
  static void expectReady(Program& program) {
    if (program.readLine() != "ready") throw std::runtime_error("a program of the comparison does not start");
  }

  std::string name_;
  PeerHome home_;
  Program reader_;
  Program writer_;
  bool value_ = false;
  int early_ = 0;
};

const std::vector<Entrant>& entrants() {
  constexpr auto kDconf = PeerHome::Service::Dconf;
  static const std::vector<Entrant> all = {
      {.name = kPanel, .program = "panel", .file = "device", .options = {"disablesCarrierSTBIcon", "1"}},
      {.name = kPanelTwice, .program = "panel", .file = "device", .options = {"disablesBatterySTBIcon", "2"}},
      {.name = kBare, .program = "bare", .file = "device", .options = {"1"}},
      {.name = kBareTwice, .program = "bare", .file = "device", .options = {"2"}},
      {.name = kGSettings, .program = "gsettings", .service = kDconf},
      {.name = kGSettingsSync, .program = "gsettings", .writeRole = "write-sync", .service = kDconf},
      {.name = kQSettings, .program = "qsettings", .file = "qsettings.ini"},
      {.name = kKConfig, .program = "kconfig", .options = {"quellarbenchrc"}},
  };
  return all;
}

void report(const std::vector<std::unique_ptr<Contender>>& all, bool flushes) {
  std::map<std::string, double> medians;
  for (const auto& contender : all) medians[contender->name()] = contender->written.median();
  std::vector<std::vector<std::string>> rows = {{"from the write until another process has read it", "median",
                                                 "99th of 100", "99th / median", "/ floor", "/ GSettings",
                                                 "flush: median", "99th of 100"}};
  for (const auto& contender : all) {
    const double median = contender->written.median();
    const double late = contender->written.quantile(0.99);
    const std::string& name = contender->name();
    const char* floor = name == kPanelTwice || name == kBareTwice ? kBareTwice : kBare;
    rows.push_back({name, shownTime(median), shownTime(late), shownRatio(late / median),
                    shownRatio(median / medians[floor]), shownRatio(median / medians[kGSettings])});
    if (flushes && contender->flushed.size() > 0) {
      rows.back().push_back(shownTime(contender->flushed.median()));
      rows.back().push_back(shownTime(contender->flushed.quantile(0.99)));
    }
  }
  printTable(std::cout, rows);
  std::cout << "a second notification: " << shownTime(std::max(0.0, medians[kPanelTwice] - medians[kPanel]))
            << ", of the floor: " << shownTime(std::max(0.0, medians[kBareTwice] - medians[kBare])) << "\n";
  for (const auto& contender : all) {
    if (contender->early() == 0) continue;
    std::cout << contender->name() << ": " << contender->early() << " notifications came before the value\n";
  }
  std::cout << std::endl;
}

/// Where the time goes on one processor: each round is one sample, its processor time divided among its writes.
void reportProcessors(const std::vector<std::unique_ptr<Contender>>& all) {
  std::vector<std::vector<std::string>> rows = {
      {"processor time of one write", "the writer's", "the bus daemon's", "the reader's", "all"}};
  for (const auto& contender : all) {
    // GSettings has one more process.
    if (contender->name() == kGSettings) break;
    double sum = 0;
    rows.push_back({contender->name()});
    for (const Sample& sample : contender->processor) {
      sum += sample.median();
      rows.back().push_back(shownTime(sample.median()));
    }
    rows.back().push_back(shownTime(sum));
  }
  printTable(std::cout, rows);
  std::cout << std::endl;
}

/// Lets all contenders take turns in a place.
void compareIn(const Place& place, bool flushes) {
  std::vector<std::unique_ptr<Contender>> all;
  for (const Entrant& entrant : entrants()) all.push_back(std::make_unique<Contender>(entrant, place));
  for (int round = 0; round < kRounds; ++round) {
    for (const auto& contender : all) {
      const auto before = contender->processorTimes();
      for (int number = 0; number < kOperationsInARound; ++number) {
        contender->written.add(contender->write());
        std::this_thread::sleep_for(kPause);
        if (flushes && number % 10 == 9) contender->flushed.add(contender->flush());
      }
      const auto after = contender->processorTimes();
      for (std::size_t process = 0; process < before.size(); ++process) {
        contender->processor[process].add((after[process] - before[process]) / kOperationsInARound);
      }
    }
  }
  report(all, flushes);
  if (!flushes) reportProcessors(all);
}

/// What a write costs the panel's thread, which leaves it to another one: on the device as it is, and where each flush
/// takes 50 ms.
void measurePanelThread(const Place& place) {
  struct Case {
    const char* name;
    std::chrono::milliseconds flush;
    Sample writes;
  };
  std::array<Case, 2> cases = {Case{"a write, on this device", 0ms, {}},
                               Case{"a write, where each flush takes 50 ms", 50ms, {}}};
  constexpr int kWritesInARound = 50;
  for (int round = 0; round < 20; ++round) {
    for (Case& each : cases) {
      const tests::TemporaryFolder folder(place.folder);
      flushTime() = each.flush;
      host::linux::BackgroundPreferences store(host::linux::DeviceRoot(folder.path()), {}, {});
      for (int number = 0; number < kWritesInARound; ++number) {
        const platform::Dictionary value = {{"disablesCarrierSTBIcon", number % 2 == 0}};
        const Stopwatch stopwatch;
        store.setAppValue("StatusBar_Defaults", value, frame::kSettingsDomain);
        each.writes.add(stopwatch.elapsed());
        store.deliver();
        std::this_thread::sleep_for(1ms);
      }
    }
  }
  flushTime() = 0ms;
  std::vector<std::vector<std::string>> rows = {{"the panel's thread", "median", "p90", "p99"}};
  for (const Case& each : cases) {
    rows.push_back({each.name, shownTime(each.writes.median()), shownTime(each.writes.quantile(0.9)),
                    shownTime(each.writes.quantile(0.99))});
  }
  printTable(std::cout, rows);
}

}  // namespace

void compareNotified() {
  describeMachine(std::cout, settingsPackages());
  for (const Place& place : places()) {
    const bool isInMemory = place.fileSystem == "tmpfs";
    std::cout << place.fileSystem << (isInMemory ? ", all on one processor, " : ", ") << kRounds * kOperationsInARound
              << " operations each in turns of " << kOperationsInARound << ":\n\n";
    if (isInMemory) {
      const OneProcessor one;
      compareIn(place, false);
    } else {
      compareIn(place, true);
      measurePanelThread(place);
    }
  }
}

}  // namespace quellar::benches

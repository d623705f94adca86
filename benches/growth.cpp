// SPDX-License-Identifier: MIT
#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "bus/private_bus.h"
#include "chart.h"
#include "comparison.h"
#include "figures.h"
#include "frame/list_controller.h"
#include "frame/names.h"
#include "host/linux/property_list/property_list.h"
#include "panel_on_file.h"
#include "program.h"

namespace quellar::benches {

namespace {

using platform::Dictionary;
using platform::Value;

/// The processor time of this thread, which other work on the machine has less part in than in the time that passes.
class ThreadStopwatch {
 public:
  [[nodiscard]] std::chrono::nanoseconds elapsed() const { return now() - start_; }

 private:
  static std::chrono::nanoseconds now() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
  }

  std::chrono::nanoseconds start_ = now();
};

/// Times `operation` often enough for a steady median, and for no longer than seconds.
template <typename Operation>
double medianOf(Operation operation) {
  constexpr std::size_t kMost = 400;
  constexpr std::size_t kLeast = 9;
  constexpr std::chrono::milliseconds kEnough{700};
  Sample sample;
  const Stopwatch all;
  while (sample.size() < kLeast || (sample.size() < kMost && all.elapsed() < kEnough)) {
    const ThreadStopwatch stopwatch;
    operation();
    sample.add(stopwatch.elapsed());
  }
  return sample.median();
}

/// The same for an operation that tells its time itself.
template <typename Operation>
double medianTold(int times, Operation operation) {
  Sample sample;
  for (int number = 0; number < times; ++number) sample.add(operation());
  return sample.median();
}

void tell(const Chart& chart) {
  std::cout << chart.title << ":\n\n";
  std::vector<std::vector<std::string>> rows = {{chart.sizes}};
  for (const auto& [size, time] : chart.curves.front().points) {
    rows.front().push_back(std::to_string(static_cast<long>(size)));
  }
  rows.front().emplace_back("last / first");
  for (const Curve& curve : chart.curves) {
    rows.push_back({curve.name});
    for (const auto& [size, time] : curve.points) rows.back().push_back(shownTime(time));
    rows.back().push_back(shownRatio(curve.points.back().second / curve.points.front().second));
  }
  printTable(std::cout, rows);
}

// A domain of many keys.

/// Pages like the status bar's, with fifteen switches of which every third is on, until there are so many keys.
void fillDomain(platform::Preferences& preferences, int keys) {
  constexpr int kKeysOfAPage = 15;
  for (int page = 0; page < keys / kKeysOfAPage; ++page) {
    Dictionary settings;
    for (int key = 0; key < kKeysOfAPage; ++key) {
      settings["disablesItem" + std::to_string(page) + "_" + std::to_string(key)] = key % 3 == 0;
    }
    preferences.setAppValue("Page" + std::to_string(page) + "_Defaults", settings, frame::kSettingsDomain);
  }
}

/// The bytes of such a domain, put into place at once: writing page after page would take the square of the time.
void placeDomain(PanelOnFile& panel, int keys) {
  struct Memory final : platform::Preferences {
    Dictionary domain;
    std::optional<Value> copyAppValue(std::string_view, std::string_view) override { return std::nullopt; }
    void setAppValue(std::string_view key, const std::optional<Value>& value, std::string_view) override {
      domain[std::string(key)] = *value;
    }
    [[nodiscard]] bool wasRead(std::string_view) const override { return true; }
    void appSynchronize(std::string_view) override {}
  } memory;
  fillDomain(memory, keys);
  panel.replaceDomain(host::linux::encodePropertyList(memory.domain).bytes());
}

Chart growDomain(const Place& place) {
  Chart chart{"A domain of many keys (" + place.fileSystem + ")",
              "keys of the domain",
              {{"a switch, to the renamed file", {}},
               {"another process reads the switch again", {}},
               {"floor: write and rename of the same bytes", {}}}};
  for (const int keys : {450, 5000, 50000}) {
    PanelOnFile panel(place);
    placeDomain(panel, keys);
    const auto page = panel.makePage();
    const auto row = page->specifierForID("disablesCarrierSTBIcon");
    PanelOnFile::flip(*page, *row);
    const auto other = panel.makeOtherStore();
    const auto readAgain = [&] {
      static_cast<void>(other->preferences.copyAppValue("StatusBar_Defaults", frame::kSettingsDomain));
    };
    Sample writes;
    Sample reads;
    constexpr int kTimes = 41;
    for (int number = 0; number < kTimes; ++number) {
      const ThreadStopwatch writing;
      PanelOnFile::flip(*page, *row);
      writes.add(writing.elapsed());
      const ThreadStopwatch reading;
      readAgain();
      reads.add(reading.elapsed());
    }
    BareWrite bare(panel.domainFile());
    chart.curves[0].points.emplace_back(keys, writes.median());
    chart.curves[1].points.emplace_back(keys, reads.median());
    chart.curves[2].points.emplace_back(keys, medianOf([&] { bare.run(); }));
  }
  return chart;
}

// A page of many rows.

frame::Page longPage(int rows) {
  frame::Page page{.className = "LongPage", .defaultsKey = "Long_Defaults", .posts = {}, .rows = {}};
  page.posts.push_back(frame::darwin(frame::kSettings));
  for (int number = 0; number < rows; ++number) {
    const std::string name = std::to_string(number);
    page.rows.emplace_back(frame::Switch{.label = frame::Localized("Setting"), .key = "setting" + name});
    if (number != rows / 2) continue;
    page.rows.emplace_back(frame::Dependent{.name = "block",
                                            .shownBy = "setting" + name,
                                            .rows = {frame::Switch{.label = "Shown", .key = "shown"},
                                                     frame::Switch{.label = "Shown too", .key = "shownToo"}}});
  }
  return page;
}

Chart growPage(const Place& place) {
  Chart chart{"A page of many rows (" + place.fileSystem + ")",
              "rows of the page",
              {{"make the page and its rows", {}},
               {"a switch, nothing stored before", {}},
               {"a switch, every row stored", {}},
               {"a switch that shows or hides a block", {}}}};
  for (const int rows : {30, 1000, 10000}) {
    const frame::Page description = longPage(rows);
    PanelOnFile panel(place, 0);
    std::shared_ptr<frame::KVQuellarListController> page;
    chart.curves[0].points.emplace_back(rows, medianOf([&] {
                                          page = std::make_shared<frame::KVQuellarListController>(panel.platform(),
                                                                                                  description);
                                          if (page->specifiers().empty()) throw std::runtime_error("no rows");
                                        }));
    const auto row = page->specifierForID("setting1");
    chart.curves[1].points.emplace_back(rows, medianOf([&] { PanelOnFile::flip(*page, *row); }));

    Dictionary all;
    for (int number = 0; number < rows; ++number) all["setting" + std::to_string(number)] = false;
    panel.platform().preferences.setAppValue("Long_Defaults", all, frame::kSettingsDomain);
    page = std::make_shared<frame::KVQuellarListController>(panel.platform(), description);
    const auto stored = page->specifierForID("setting1");
    chart.curves[2].points.emplace_back(rows, medianOf([&] { PanelOnFile::flip(*page, *stored); }));
    const auto controlling = page->specifierForID("setting" + std::to_string(rows / 2));
    chart.curves[3].points.emplace_back(rows, medianOf([&] { PanelOnFile::flip(*page, *controlling); }));
  }
  return chart;
}

// Many listeners.

Chart growListeners(const Place& place) {
  Chart chart{"Many listeners (" + place.fileSystem + ")",
              "listeners on the bus",
              {{"a switch, as the panel's thread sees it", {}},
               {"a switch, until all listeners have its signal", {}},
               {"the same for each listener", {}}}};
  for (const int count : {1, 10, 100}) {
    const tests::PrivateBus bus;
    std::vector<std::unique_ptr<Program>> listeners;
    for (int number = 0; number < count; ++number) {
      listeners.push_back(std::make_unique<Program>(
          std::vector<std::string>{programFolder() / "quellar-bench-listener", bus.address()}));
    }
    for (const auto& listener : listeners) {
      if (listener->readLine() != "ready") throw std::runtime_error("a listener does not listen");
    }
    PanelOnFile panel(place, 1, bus.address());
    const auto page = panel.makePage();
    const auto row = page->specifierForID("disablesCarrierSTBIcon");
    Sample returned;
    constexpr int kTimes = 151;
    const double heard = medianTold(kTimes, [&] {
      const Stopwatch stopwatch;
      PanelOnFile::flip(*page, *row);
      returned.add(stopwatch.elapsed());
      std::chrono::nanoseconds last{0};
      for (const auto& listener : listeners) {
        const std::chrono::nanoseconds time{std::stoll(listener->readLine())};
        last = std::max(last, stopwatch.until(Stopwatch::Clock::time_point(time)));
      }
      return last;
    });
    chart.curves[0].points.emplace_back(count, returned.median());
    chart.curves[1].points.emplace_back(count, heard);
    chart.curves[2].points.emplace_back(count, heard / count);
  }
  return chart;
}

}  // namespace

void measureGrowth(const char* pictures) {
  describeMachine(std::cout, {});
  const Place place = places().back();
  const std::vector<Chart> charts = {growDomain(place), growPage(place), growListeners(place)};
  std::cout << "processor time of the panel's thread, and for listeners the time that passes:\n\n";
  for (const Chart& chart : charts) tell(chart);
  const std::filesystem::path file = std::filesystem::path(pictures) / "growth.svg";
  drawCharts(charts, file);
  std::cout << "drawn in " << file.string() << std::endl;
}

}  // namespace quellar::benches

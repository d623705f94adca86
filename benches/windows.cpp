// SPDX-License-Identifier: MIT
#include <xcb/xcb.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "comparison.h"
#include "figures.h"
#include "settings_peers.h"

namespace quellar::benches {

namespace {

using namespace std::chrono_literals;

constexpr int kFrameRounds = 41;
constexpr int kMapRounds = 21;
constexpr int kMemoryRounds = 5;
/// What a window does right after its first frame is done by then.
constexpr auto kSettles = 1500ms;
constexpr auto kMapLimit = 20s;

/// What makes a Qt Quick program draw without a display and tell of each frame on standard error.
const std::vector<std::string> kDrawingVariables = {
    "QT_QPA_PLATFORM=offscreen",
    "QT_QUICK_BACKEND=software",
    "QT_FORCE_STDERR_LOGGING=1",
    "QT_LOGGING_RULES=qt.scenegraph.time.renderloop.debug=true",
};

/// What the software render loop logs when it has drawn a frame and handed it to the window.
constexpr std::string_view kFrameDrawn = "Frame rendered with 'software' renderloop";

/// The memory of a process in KiB, what it shares with others divided among them, by /proc/PID/smaps_rollup.
double proportionalMemory(pid_t process) {
  std::ifstream stream("/proc/" + std::to_string(process) + "/smaps_rollup");
  for (std::string name; stream >> name;) {
    double size = 0;
    if (name == "Pss:" && stream >> size) return size;
  }
  throw std::runtime_error("the system does not tell the memory of a process");
}

struct Drawn {
  std::string name;
  std::vector<std::string> command;
  Sample firstFrame;
  Sample memory;
};

void compareFirstFrames(const PeerHome& home) {
  const std::string programs = programFolder().string();
  std::vector<Drawn> all = {
      {"quellar-settings", {programs + "/quellar-settings", "--lang", "en"}, {}, {}},
      {"Qt Quick Controls: forty switch rows", {programs + "/quellar-bench-switches-window"}, {}, {}},
      {"Qt Quick Controls: a list view of forty", {programs + "/quellar-bench-switches-window", "list"}, {}, {}},
      {"Qt Quick: an empty window", {programs + "/quellar-bench-bare-window"}, {}, {}},
  };
  std::vector<std::string> variables = home.variables();
  variables.insert(variables.end(), kDrawingVariables.begin(), kDrawingVariables.end());
  for (int round = 0; round < kFrameRounds; ++round) {
    for (Drawn& drawn : all) {
      const Stopwatch stopwatch;
      Program program(drawn.command, variables, Program::Output::Errors);
      program.waitForOutput(kFrameDrawn);
      drawn.firstFrame.add(stopwatch.elapsed());
      if (round >= kMemoryRounds) continue;
      std::this_thread::sleep_for(kSettles);
      drawn.memory.add(std::chrono::nanoseconds(static_cast<std::int64_t>(proportionalMemory(program.process()))));
    }
  }
  std::cout << "without a display, drawn by software; " << kFrameRounds << " starts each in turns; memory "
            << kSettles.count() << " ms later:\n\n";
  std::vector<std::vector<std::string>> rows = {
      {"from exec to first frame", "median", "99th of 100", "quellar / it", "memory (PSS)", "quellar / it"}};
  for (const Drawn& drawn : all) {
    rows.push_back({drawn.name, shownTime(drawn.firstFrame.median()), shownTime(drawn.firstFrame.quantile(0.99)),
                    shownRatio(all.front().firstFrame.median() / drawn.firstFrame.median()),
                    shownRatio(drawn.memory.median() / 1024) + " MiB",
                    shownRatio(all.front().memory.median() / drawn.memory.median())});
  }
  printTable(std::cout, rows);
}

/// An X server without a screen.
class Display {
 public:
  explicit Display(const PeerHome& home)
      : server_({"Xvfb", "-displayfd", "1", "-screen", "0", "1280x1024x24", "-nolisten", "tcp"}, home.variables()),
        name_(":" + server_.readLine()),
        connection_(::xcb_connect(name_.c_str(), nullptr), ::xcb_disconnect) {
    if (::xcb_connection_has_error(connection_.get()) != 0) throw std::runtime_error("Xvfb does not answer");
    root_ = ::xcb_setup_roots_iterator(::xcb_get_setup(connection_.get())).data->root;
    const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    ::xcb_change_window_attributes(connection_.get(), root_, XCB_CW_EVENT_MASK, &events);
    ::xcb_flush(connection_.get());
  }

  [[nodiscard]] const std::string& name() const { return name_; }

  /// Waits until a window of a usual size is mapped.
  void waitForWindow() {
    const Stopwatch stopwatch;
    while (stopwatch.elapsed() < kMapLimit) {
      const std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> event(::xcb_poll_for_event(connection_.get()),
                                                                             std::free);
      if (!event) {
        if (::xcb_connection_has_error(connection_.get()) != 0) break;
        std::this_thread::sleep_for(200us);
        continue;
      }
      if ((event->response_type & 0x7F) != XCB_MAP_NOTIFY) continue;
      const auto& mapped = reinterpret_cast<const xcb_map_notify_event_t&>(*event);
      if (mapped.override_redirect == 0 && isLarge(mapped.window)) return;
    }
    throw std::runtime_error("no window was mapped");
  }
  /// Forgets what happened so far.
  void forget() {
    const xcb_get_input_focus_cookie_t cookie = ::xcb_get_input_focus(connection_.get());
    std::free(::xcb_get_input_focus_reply(connection_.get(), cookie, nullptr));
    while (xcb_generic_event_t* event = ::xcb_poll_for_event(connection_.get())) std::free(event);
  }

 private:
  bool isLarge(xcb_window_t window) {
    const xcb_get_geometry_cookie_t cookie = ::xcb_get_geometry(connection_.get(), window);
    const std::unique_ptr<xcb_get_geometry_reply_t, decltype(&std::free)> geometry(
        ::xcb_get_geometry_reply(connection_.get(), cookie, nullptr), std::free);
    constexpr std::uint16_t kUsual = 100;
    return geometry && geometry->width >= kUsual && geometry->height >= kUsual;
  }

  Program server_;
  std::string name_;
  std::unique_ptr<xcb_connection_t, decltype(&::xcb_disconnect)> connection_;
  xcb_window_t root_ = 0;
};

struct Mapped {
  std::string name;
  std::vector<std::string> command;
  Sample times;
};

void compareMaps(const PeerHome& home) {
  Display display(home);
  std::vector<std::string> variables = home.variables();
  variables.push_back("DISPLAY=" + display.name());
  // One program's platform theme is no part of what is measured.
  variables.emplace_back("QT_QPA_PLATFORM=xcb");
  const std::string programs = programFolder().string();
  std::vector<Mapped> all = {
      {"quellar-settings", {programs + "/quellar-settings", "--lang", "en"}, {}},
      {"Qt Quick Controls: forty switch rows", {programs + "/quellar-bench-switches-window"}, {}},
      {"lxqt-config", {"lxqt-config"}, {}},
      {"xfce4-settings-manager", {"xfce4-settings-manager"}, {}},
  };
  for (int round = -1; round < kMapRounds; ++round) {
    for (Mapped& mapped : all) {
      display.forget();
      const Stopwatch stopwatch;
      {
        const Program program(mapped.command, variables);
        display.waitForWindow();
        // The first start reads the programs from the disk, and makes what they keep.
        if (round >= 0) mapped.times.add(stopwatch.elapsed());
      }
      std::this_thread::sleep_for(50ms);
    }
  }
  std::cout << "on an X server (Xvfb); " << kMapRounds << " starts each in turns:\n\n";
  std::vector<std::vector<std::string>> rows = {
      {"from exec to the mapped window", "median", "99th of 100", "quellar / it"}};
  for (const Mapped& mapped : all) {
    rows.push_back({mapped.name, shownTime(mapped.times.median()), shownTime(mapped.times.quantile(0.99)),
                    shownRatio(all.front().times.median() / mapped.times.median())});
  }
  printTable(std::cout, rows);
}

}  // namespace

void compareWindows() {
  describeMachine(std::cout, {"libqt6quick6", "lxqt-config", "xfce4-settings", "xvfb"});
  const PeerHome home(places().back(), PeerHome::Service::None);
  compareFirstFrames(home);
  compareMaps(home);
}

}  // namespace quellar::benches

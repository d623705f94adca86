// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "host/linux/file_descriptor.h"
#include "panel_on_file.h"
#include "suite.h"

namespace quellar::benches {

namespace {

using host::linux::FileDescriptor;

constexpr int kLimitInMilliseconds = 20000;

/// What makes a Qt Quick program draw without a display and tell of each frame on standard error.
constexpr std::array kDrawingEnvironment = {
    "QT_QPA_PLATFORM=offscreen",
    "QT_QUICK_BACKEND=software",
    "QT_FORCE_STDERR_LOGGING=1",
    "QT_LOGGING_RULES=qt.scenegraph.time.renderloop.debug=true",
};

/// What the software render loop logs when it has drawn a frame and handed it to the window.
constexpr std::string_view kFrameDrawn = "Frame rendered with 'software' renderloop";

/// Texts as a program takes them, which live as long as `texts`.
std::vector<char*> asArguments(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

/// A program with its standard error on a pipe; it is killed at the end.
class DrawingProgram {
 public:
  explicit DrawingProgram(std::vector<std::string> command) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe2");
    errors_ = FileDescriptor(ends[0]);
    const FileDescriptor input(ends[1]);

    std::vector<std::string> variables(kDrawingEnvironment.begin(), kDrawingEnvironment.end());
    for (char** variable = environ; *variable != nullptr; ++variable) {
      if (!std::string_view(*variable).starts_with("QT_")) variables.emplace_back(*variable);
    }
    const std::vector<char*> arguments = asArguments(command);
    const std::vector<char*> environment = asArguments(variables);

    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
    const int error = ::posix_spawn(&process_, arguments[0], &actions, nullptr, arguments.data(), environment.data());
    ::posix_spawn_file_actions_destroy(&actions);
    if (error != 0) throw std::system_error(error, std::generic_category(), command.front());
  }
  DrawingProgram(const DrawingProgram&) = delete;
  DrawingProgram& operator=(const DrawingProgram&) = delete;
  ~DrawingProgram() {
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
  }

  void waitForFrame() {
    std::string told;
    while (told.find(kFrameDrawn) == std::string::npos) {
      pollfd polled = {.fd = errors_.get(), .events = POLLIN, .revents = 0};
      if (::poll(&polled, 1, kLimitInMilliseconds) <= 0) throw std::runtime_error("no frame was drawn: " + told);
      std::array<char, 4096> bytes{};
      const auto count = ::read(errors_.get(), bytes.data(), bytes.size());
      if (count <= 0) throw std::runtime_error("ended without a frame: " + told);
      told.append(bytes.data(), static_cast<std::size_t>(count));
    }
  }

 private:
  pid_t process_ = -1;
  FileDescriptor errors_;
};

std::chrono::nanoseconds timeToFirstFrame(const std::vector<std::string>& command) {
  const Stopwatch stopwatch;
  DrawingProgram program(command);
  program.waitForFrame();
  return stopwatch.elapsed();
}

}  // namespace

void addFirstFrame(Suite& suite) {
  constexpr Suite::Effort kEffort = {.unit = benchmark::kMillisecond, .repetitions = 11, .operations = 1};
  const Place place = places().front();
  const std::string bare = "from exec to first frame: a bare Qt Quick window";

  suite.add({.name = "from exec to first frame: quellar-settings", .floors = {bare}}, kEffort, [place] {
    return [panel = std::make_shared<PanelOnFile>(place)] {
      return timeToFirstFrame(
          {programFolder() / "quellar-settings", "--device-root", panel->deviceRoot(), "--lang", "en"});
    };
  });

  suite.add({.name = bare, .floors = {}}, kEffort,
            [] { return [] { return timeToFirstFrame({programFolder() / "quellar-bench-bare-window"}); }; });
}

}  // namespace quellar::benches

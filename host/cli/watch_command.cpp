// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <map>
#include <optional>
#include <system_error>
#include <utility>

#include "host/cli/commands.h"
#include "host/cli/output.h"
#include "host/headless/json.h"
#include "host/linux/bus.h"
#include "host/linux/event_loop.h"
#include "host/linux/file_descriptor.h"
#include "platform/printable.h"

namespace quellar::host::cli {

using headless::dump;
using headless::Json;
using headless::toJson;
using linux::BusNotification;
using platform::printable;
using platform::Value;

namespace {

constexpr std::chrono::seconds kConnectLimit{5};

Json objectJson(const BusNotification& notification) {
  return notification.object ? Json(*notification.object) : Json(nullptr);
}

Json userInfoJson(const BusNotification& notification) {
  return notification.userInfo ? toJson(Value(*notification.userInfo)) : Json(nullptr);
}

std::string_view centreName(const BusNotification& notification) {
  switch (notification.centre) {
    case BusNotification::Centre::Darwin:
      return "darwin";
    case BusNotification::Centre::Distributed:
      return "distributed";
  }
  return "darwin";
}

std::string lineOf(const BusNotification& notification, bool json) {
  if (json) {
    return dump({{"centre", centreName(notification)},
                 {"name", notification.name},
                 {"object", objectJson(notification)},
                 {"userInfo", userInfoJson(notification)}});
  }
  std::string line = std::string(centreName(notification)) + " " + printable(notification.name);
  if (notification.object) line += " " + dump(objectJson(notification));
  if (notification.userInfo) line += " " + dump(userInfoJson(notification));
  return line;
}

/// Runs the shell commands of hooks beside this program: one at a time for a name, and of the notifications that come
/// meanwhile the newest alone. However many come, as many shells run as names have hooks.
class HookRunner {
 public:
  HookRunner(const std::vector<Hook>& hooks, linux::EventLoop& loop) {
    for (const Hook& hook : hooks) names_[hook.name].commands.push_back(hook.command);

    // The end of a command is read like other input. Its shell starts with the signals as this program found them.
    struct sigaction usual{};
    usual.sa_handler = SIG_DFL;
    ::sigaction(SIGCHLD, &usual, nullptr);
    sigset_t ended;
    sigset_t before;
    sigset_t ignored;
    ::sigemptyset(&ended);
    ::sigaddset(&ended, SIGCHLD);
    ::sigprocmask(SIG_BLOCK, &ended, &before);
    ::sigemptyset(&ignored);
    ::sigaddset(&ignored, SIGXFSZ);
    ends_ = linux::FileDescriptor(::signalfd(-1, &ended, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!ends_) throw std::system_error(errno, std::generic_category(), "signalfd");
    loop.watch(ends_.get(), POLLIN, [this](short) { takeEnds(); });

    ::posix_spawnattr_init(&attributes_);
    ::posix_spawnattr_setsigmask(&attributes_, &before);
    ::posix_spawnattr_setsigdefault(&attributes_, &ignored);
    ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    ::posix_spawn_file_actions_init(&files_);
    ::posix_spawn_file_actions_addopen(&files_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  }
  ~HookRunner() {
    ::posix_spawn_file_actions_destroy(&files_);
    ::posix_spawnattr_destroy(&attributes_);
  }
  HookRunner(const HookRunner&) = delete;
  HookRunner& operator=(const HookRunner&) = delete;

  void run(const BusNotification& notification) {
    const auto found = names_.find(notification.name);
    if (found == names_.end()) return;
    found->second.waiting = notification;
    goOn(found->second);
  }

  /// Starts what still waits, at the end of the program: what was printed gets its run.
  void finish() {
    for (auto& [name, state] : names_) {
      do {
        state.running = 0;
        goOn(state);
      } while (state.running != 0);
    }
  }

 private:
  /// What runs for a name.
  struct Name {
    std::vector<std::string> commands;
    /// What the commands are run for, and the next one of them.
    std::optional<BusNotification> current;
    std::size_t next = 0;
    /// The process of the one before it; 0 where it has ended.
    pid_t running = 0;
    std::optional<BusNotification> waiting;
  };

  void goOn(Name& name) {
    while (name.running == 0) {
      if (!name.current || name.next == name.commands.size()) {
        name.current = std::exchange(name.waiting, std::nullopt);
        name.next = 0;
        if (!name.current) return;
      }
      name.running = start(name.commands[name.next++], *name.current);
    }
  }

  void takeEnds() {
    // Several ends may be one signal.
    signalfd_siginfo signal{};
    while (::read(ends_.get(), &signal, sizeof signal) > 0) continue;
    for (auto& [name, state] : names_) {
      if (state.running == 0 || ::waitpid(state.running, nullptr, WNOHANG) == 0) continue;
      state.running = 0;
      goOn(state);
    }
  }

  /// The process of the shell; 0, told, where it can't be started.
  [[nodiscard]] pid_t start(const std::string& command, const BusNotification& notification) const {
    const std::array variables = {
        std::pair<std::string, std::string>("QUELLAR_NAME=", notification.name),
        std::pair<std::string, std::string>("QUELLAR_OBJECT=", notification.object.value_or("")),
        std::pair<std::string, std::string>("QUELLAR_USERINFO=", dump(userInfoJson(notification))),
    };
    std::vector<std::string> environment;
    for (char** each = environ; *each; ++each) {
      const std::string_view entry = *each;
      const bool isOurs =
          std::ranges::any_of(variables, [&](const auto& variable) { return entry.starts_with(variable.first); });
      if (!isOurs) environment.emplace_back(entry);
    }
    for (const auto& [name, value] : variables) environment.push_back(name + value);

    std::vector<std::string> arguments = {"sh", "-c", command};
    pid_t child = 0;
    const int error = ::posix_spawn(&child, "/bin/sh", &files_, &attributes_, pointers(arguments).data(),
                                    pointers(environment).data());
    if (error == 0) return child;
    const std::string cause = std::generic_category().message(error);
    std::fprintf(stderr, "quellar: can't run the command for %s: %s\n", printable(notification.name).c_str(),
                 cause.c_str());
    return 0;
  }

  static std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts) result.push_back(text.data());
    result.push_back(nullptr);
    return result;
  }

  std::map<std::string, Name> names_;
  linux::FileDescriptor ends_;
  posix_spawnattr_t attributes_{};
  posix_spawn_file_actions_t files_{};
};

}  // namespace

void watch(const WatchCommand& command) {
  linux::EventLoop loop;
  loop.stopOnSignals({SIGINT, SIGTERM});
  HookRunner hooks(command.hooks, loop);
  linux::Bus bus;
  bool lost = false;
  bus.listen([&](const BusNotification& notification) {
    printLine(lineOf(notification, command.json));
    hooks.run(notification);
  });
  bus.onLost([&] {
    lost = true;
    loop.stop();
  });
  if (!bus.waitUntilConnected(kConnectLimit)) {
    const std::string address = linux::sessionBusAddress();
    throw Failure(address.empty() ? "there is no session bus: DBUS_SESSION_BUS_ADDRESS is not set"
                                  : "there is no session bus at " + address);
  }
  loop.watch(bus.descriptor(), POLLIN, [&](short) { bus.process(); });
  if (command.json) printLine(R"({"event":"watching"})");
  loop.run();
  hooks.finish();
  if (lost) throw Failure("the session bus is gone");
}

}  // namespace quellar::host::cli

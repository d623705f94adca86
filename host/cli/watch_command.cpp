// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <system_error>
#include <utility>

#include "host/cli/commands.h"
#include "host/cli/output.h"
#include "host/headless/json.h"
#include "host/linux/bus.h"
#include "host/linux/event_loop.h"
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

/// Runs shell commands beside this program, without waiting for them.
class HookRunner {
 public:
  HookRunner() {
    // The system reaps the children by itself. The shells start with the default action of the signal all the same.
    struct sigaction action{};
    action.sa_handler = SIG_DFL;
    action.sa_flags = SA_NOCLDWAIT;
    ::sigaction(SIGCHLD, &action, nullptr);
    ::posix_spawn_file_actions_init(&files_);
    ::posix_spawn_file_actions_addopen(&files_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  }
  ~HookRunner() { ::posix_spawn_file_actions_destroy(&files_); }
  HookRunner(const HookRunner&) = delete;
  HookRunner& operator=(const HookRunner&) = delete;

  void run(const std::string& command, const BusNotification& notification) const {
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
    const int error =
        ::posix_spawn(&child, "/bin/sh", &files_, nullptr, pointers(arguments).data(), pointers(environment).data());
    if (error == 0) return;
    const std::string cause = std::generic_category().message(error);
    std::fprintf(stderr, "quellar: can't run the command for %s: %s\n", printable(notification.name).c_str(),
                 cause.c_str());
  }

 private:
  static std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts) result.push_back(text.data());
    result.push_back(nullptr);
    return result;
  }

  posix_spawn_file_actions_t files_{};
};

}  // namespace

void watch(const WatchCommand& command) {
  linux::EventLoop loop;
  loop.stopOnSignals({SIGINT, SIGTERM});
  const HookRunner hooks;
  linux::Bus bus;
  bool lost = false;
  bus.listen([&](const BusNotification& notification) {
    printLine(lineOf(notification, command.json));
    for (const Hook& hook : command.hooks) {
      if (hook.name == notification.name) hooks.run(hook.command, notification);
    }
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
  if (lost) throw Failure("the session bus is gone");
}

}  // namespace quellar::host::cli

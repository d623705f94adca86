// SPDX-License-Identifier: MIT
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "host/cli/commands.h"
#include "host/cli/output.h"
#include "host/headless/session.h"

namespace quellar::host::cli {

namespace {

/// How long a slow bus may hold up the answer to a command.
constexpr std::chrono::seconds kBusLimit{1};

class StandardInput {
 public:
  StandardInput() = default;
  ~StandardInput() { std::free(line_); }
  StandardInput(const StandardInput&) = delete;
  StandardInput& operator=(const StandardInput&) = delete;

  /// The next line without its line feed, valid until the next call; nothing at the end.
  std::optional<std::string_view> nextLine() {
    const ssize_t length = ::getline(&line_, &capacity_, stdin);
    if (length < 0) return std::nullopt;
    std::string_view line(line_, static_cast<std::size_t>(length));
    if (line.ends_with('\n')) line.remove_suffix(1);
    return line;
  }

 private:
  char* line_ = nullptr;
  std::size_t capacity_ = 0;
};

}  // namespace

void runSession(const SessionCommand& command, linux::Services& services) {
  auto& preferences = services.preferences;
  headless::Session session(command.device,
                            {.preferences = preferences,
                             .files = services.bundles,
                             .bundles = services.bundles,
                             .applications = services.applications,
                             .darwin = command.bus ? &services.darwin : nullptr,
                             .distributed = command.bus ? &services.distributed : nullptr},
                            printLine, [&preferences]() -> std::optional<std::string> {
                              const auto troubles = preferences.takeTroubles();
                              if (troubles.empty()) return std::nullopt;
                              return troubles.front().file + ": " + troubles.front().cause;
                            });
  StandardInput input;
  while (const auto line = input.nextLine()) {
    session.feed(*line);
    preferences.retryUnsaved();
    if (command.bus) services.bus.flush(kBusLimit);
  }
}

}  // namespace quellar::host::cli

// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "host/cli/commands.h"
#include "host/cli/output.h"
#include "host/headless/session.h"
#include "host/linux/posix_call.h"

namespace quellar::host::cli {

namespace {

/// How long a slow bus may hold up the answer to a command.
constexpr std::chrono::seconds kBusLimit{1};

class StandardInput {
 public:
  /// The next line without its line feed, valid until the next call; nothing at the end. Of a line that no session
  /// takes only so much is kept as shows it.
  std::optional<std::string_view> nextLine() {
    line_.clear();
    bool begun = false;
    while (!unread_.empty() || fill()) {
      begun = true;
      const std::size_t end = std::min(unread_.find('\n'), unread_.size());
      line_ += unread_.substr(0, std::min(end, headless::kLongestLine + 1 - line_.size()));
      const bool ended = end < unread_.size();
      unread_.remove_prefix(ended ? end + 1 : end);
      if (ended) return line_;
    }
    return begun ? std::optional<std::string_view>(line_) : std::nullopt;
  }

 private:
  bool fill() {
    const auto count = linux::retried([this] { return ::read(STDIN_FILENO, bytes_.data(), bytes_.size()); });
    unread_ = {bytes_.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
    return count > 0;
  }

  std::array<char, 65536> bytes_{};
  std::string_view unread_;
  std::string line_;
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

// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/headless/session.h"
#include "support/memory_services.h"

namespace quellar::tests {

using Lines = std::vector<std::string>;

/// A session on services in memory.
class ScriptedSession {
 public:
  explicit ScriptedSession(const host::headless::DeviceOptions& device = {})
      : session(
            device, {.preferences = preferences, .files = files, .bundles = bundles, .applications = applications},
            [this](std::string_view line) { lines_.emplace_back(line); },
            [this] { return std::exchange(failedWrite, std::nullopt); }) {}

  MemoryPreferences preferences;
  MemoryFiles files;
  MemoryBundles bundles;
  MemoryApplications applications;
  /// What the session is told the next time that it asks.
  std::optional<std::string> failedWrite;

 private:
  Lines lines_;

 public:
  host::headless::Session session;

  /// The lines that one line of input gives.
  Lines feed(std::string_view line) {
    session.feed(line);
    return std::exchange(lines_, {});
  }
  /// The last of them.
  std::string closing(std::string_view line) { return feed(line).back(); }

  /// Puts a page on top; returns it.
  template <typename Page, typename... Arguments>
  std::shared_ptr<Page> push(Arguments&&... arguments) {
    auto page = std::make_shared<Page>(session.host().platform(), std::forward<Arguments>(arguments)...);
    session.host().navigation().pushViewController(page);
    lines_.clear();
    return page;
  }
  Lines take() { return std::exchange(lines_, {}); }
};

inline const std::string kOk = R"({"ok":true})";

inline std::string error(const std::string& text) {
  return dump(host::headless::Json::object({{"error", text}}));
}

}  // namespace quellar::tests

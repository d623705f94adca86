// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/ports.h"

namespace quellar::host::window {

/// A store on top of another one that remembers what this process last read or wrote, so that changes by others show.
class SeenPreferences final : public platform::Preferences {
 public:
  explicit SeenPreferences(platform::Preferences& beneath) : beneath_(beneath) {}

  [[nodiscard]] std::optional<platform::Value> copyAppValue(std::string_view key, std::string_view domain) override;
  [[nodiscard]] bool wasRead(std::string_view domain) const override { return beneath_.wasRead(domain); }
  void setAppValue(std::string_view key, const std::optional<platform::Value>& value, std::string_view domain) override;
  void appSynchronize(std::string_view domain) override { beneath_.appSynchronize(domain); }

  /// Whether the store holds another value under a key than this process last read or wrote there; false for a key that
  /// it never did. Asking is no reading.
  [[nodiscard]] bool changedElsewhere(std::string_view key, std::string_view domain) const;

  /// Is called after each read and write.
  void setListener(std::function<void()> listener) { listener_ = std::move(listener); }

 private:
  void note(std::string_view key, std::string_view domain, const std::optional<platform::Value>& value);

  platform::Preferences& beneath_;
  std::function<void()> listener_;
  /// By domain and key.
  std::map<std::pair<std::string, std::string>, std::optional<platform::Value>> seen_;
};

}  // namespace quellar::host::window

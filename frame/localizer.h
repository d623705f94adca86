// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/platform.h"
#include "platform/specifier.h"

namespace quellar::frame {

/// Turns the English texts of the pages into the user's language, with the string tables of the settings bundle. The
/// English text is the key, so a text without a translation stays English.
class KVQuellarLocalizer {
 public:
  explicit KVQuellarLocalizer(platform::Bundles& bundles) : bundles_(bundles) {}

  /// The one localizer of a platform, made on first use, thread-safely.
  static KVQuellarLocalizer& sharedLocalizer(platform::Platform& platform);

  /// Platform path of the bundle that holds the string tables.
  [[nodiscard]] std::string_view localizationBundle() const;

  /// The text of a key in a table (no table: the default one), or the key where the table does not have it.
  [[nodiscard]] std::string localizedStringForKey(std::string_view key,
                                                  const std::optional<std::string>& table = std::nullopt) const;

  /// Localises names, footers, titles and short titles of the rows in place, but for those that come from the system;
  /// returns the same rows.
  const platform::Specifiers& localizedSpecifiersForSpecifiers(
      const platform::Specifiers& rows, const std::optional<std::string>& table = std::nullopt) const;

  /// Stores the localised rows in the caller's slot.
  void loadLocalizedSpecifiersForSpecifiers(const platform::Specifiers& rows, platform::Specifiers& intoArray) const;

 private:
  platform::Bundles& bundles_;
};

}  // namespace quellar::frame

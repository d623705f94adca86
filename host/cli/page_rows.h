// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "frame/page.h"
#include "platform/list_controller.h"

namespace quellar::host::cli {

/// A row of a page that holds a value, shown or not.
struct KeyedRow {
  platform::PSSpecifier::Pointer row;
  /// The key of the value; of a color row its colorKey.
  std::string key;
  /// For a row that is hidden now: how the user brings it in ('turn on "Use Custom String" (usesCustomText)').
  std::string hidden;
};

/// The rows of a page that hold values: those that it shows, in display order, then those of its hidden blocks.
[[nodiscard]] std::vector<KeyedRow> keyedRows(platform::PSListController& page);

/// What a page's description says of a key that no row has; nullptr where it says nothing.
[[nodiscard]] const frame::ForeignKey* foreignKey(const frame::Page& page, std::string_view key);

/// The row of a key. Throws a UsageError that lists the page's keys where there is none.
[[nodiscard]] KeyedRow rowOfKey(platform::PSListController& page, std::string_view key);

}  // namespace quellar::host::cli

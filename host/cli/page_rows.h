// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "frame/hidden_row.h"
#include "frame/page.h"
#include "host/cli/panel_host.h"
#include "platform/list_controller.h"

namespace quellar::host::cli {

/// What a page's description says of a key that no row has; nullptr where it says nothing.
[[nodiscard]] const frame::ForeignKey* foreignKey(const frame::Page& page, std::string_view key);

/// The row of a key, or of a colorKey, listed or not. Throws a UsageError that lists the page's keys where there is
/// none.
[[nodiscard]] frame::FoundRow rowOfKey(platform::PSListController& page, std::string_view key);

/// Why the page does not list a row now, and what would show it.
[[nodiscard]] std::string whyHidden(const frame::FoundRow& row, const frame::KVQuellarListController& page,
                                    const PanelHost& host);

/// A key in messages and tables: the empty one is to be seen.
[[nodiscard]] std::string shownKey(std::string_view key);

}  // namespace quellar::host::cli

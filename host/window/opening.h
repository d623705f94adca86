// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "frame/hidden_row.h"
#include "frame/page_registry.h"
#include "platform/platform.h"

namespace quellar::host::window {

/// Pushes the first page, unless it is there alone already, and then those that lead to a page by their links, each as
/// a tap on its link would. A page that no link leads to is pushed right onto the first one.
void openPage(platform::Platform& platform, frame::PageRegistry& pages, const frame::PageRegistry::Entry& page);

/// The keys of the switches that show a page's blocks, from the outermost inwards.
[[nodiscard]] std::vector<std::string> keysThatShowBlocks(const frame::Page& page);

/// Shows all blocks of a page, or none, as a user does: by its switches, and by the choices that blocks belong to.
void showBlocks(platform::PSListController& page, bool shown);

/// The row of a key on the page on top: one that the page lists or that the user can bring in. A text that says why
/// where nothing on the page shows such a row.
[[nodiscard]] std::variant<frame::FoundRow, std::string> rowToOpen(platform::Platform& platform,
                                                                   const frame::PageRegistry& pages,
                                                                   std::string_view key);

}  // namespace quellar::host::window

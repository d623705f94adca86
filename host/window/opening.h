// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

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

/// Opens the page on top anew, as a tap on its link would: it is another page then, which reads the store again.
void reopenPage(platform::Platform& platform);

/// The row of the page on top that a key is to be found at: the row itself, or the switch that shows it; nothing where
/// the page has no such row.
[[nodiscard]] std::optional<std::string> rowShownFor(platform::Platform& platform, std::string_view key);

}  // namespace quellar::host::window

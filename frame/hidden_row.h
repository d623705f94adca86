// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frame/list_controller.h"
#include "frame/page.h"
#include "frame/page_registry.h"
#include "platform/specifier.h"

namespace quellar::frame {

/// What the user sets so that a page lists a block.
struct StepToRow {
  /// The row that shows the block. It may be hidden itself; then an earlier step brings it in.
  platform::PSSpecifier::Pointer row = nullptr;
  const Dependent* block = nullptr;
  /// The row is set so already: it must be set otherwise and back while the page is open.
  bool again = false;

  /// The page must be open while the row is set: one that opens later does not list the block.
  [[nodiscard]] bool needsOpenPage() const;
};

/// The row of a key, and how the page comes to list it.
struct FoundRow {
  platform::PSSpecifier::Pointer row = nullptr;
  /// One after the other; none for a row that is listed.
  std::vector<StepToRow> steps = {};
  /// Nothing on the page can show it.
  bool isUnreachable = false;
};

/// The row of a preference key, or of a colorKey: a listed one first, then one that can be shown. Nothing where the
/// page has no such row.
[[nodiscard]] std::optional<FoundRow> findRow(KVQuellarListController& page, std::string_view key);

/// The name of another page that keeps a key in the same dictionary and can show its row; "" for none.
[[nodiscard]] std::string otherPageThatShows(const PageRegistry& pages, const KVQuellarListController& page,
                                             std::string_view key);

}  // namespace quellar::frame

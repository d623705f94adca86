// SPDX-License-Identifier: MIT
#pragma once

#include "frame/list_controller.h"

namespace quellar::pages {

/// A page of toggle colours that can take over those of the sibling add-on.
class ToggleColorsPage : public frame::KVQuellarListController {
 public:
  using KVQuellarListController::KVQuellarListController;

  [[nodiscard]] std::optional<platform::Action> actionForSelector(std::string_view selector) override;

  /// Copies every key of the sibling add-on's preferences file, whatever it is, into the colour dictionary, stores it
  /// and posts; the page is drawn anew a little later. A file that is missing or can't be read copies nothing.
  void handleImportingGlint2Colors();
};

/// The "Glint 2" button with its group.
[[nodiscard]] std::vector<frame::Row> importRows();

}  // namespace quellar::pages

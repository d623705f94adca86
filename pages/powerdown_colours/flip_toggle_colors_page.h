// SPDX-License-Identifier: MIT
#pragma once

#include "pages/powerdown_colours/sibling_colors.h"

namespace quellar::pages {

/// The colours of the switches that the switch library knows. Its page dictionary is the colours', which it shares with
/// the toggle colours page; its one switch is read from the control centre page's dictionary.
class KVQuellarFCCGlintListController : public ToggleColorsPage {
 public:
  explicit KVQuellarFCCGlintListController(platform::Platform& platform);

  static const frame::Page& page();

  void loadView() override;
  /// Keeps the value in the copy of the control centre's dictionary, and stores the colours, not that copy, under the
  /// control centre's key: the add-on knows this page so.
  void setPreferenceValue(const std::optional<frame::Value>& value, platform::PSSpecifier& specifier) override;
  std::optional<frame::Value> readPreferenceValue(platform::PSSpecifier& specifier) override;

 private:
  platform::Dictionary ccDefaults_;
};

}  // namespace quellar::pages

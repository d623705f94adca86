// SPDX-License-Identifier: MIT
#pragma once

#include "frame/list_controller.h"

namespace quellar::pages {

class KVQuellarLockScreenListController : public frame::KVQuellarListController {
 public:
  explicit KVQuellarLockScreenListController(platform::Platform& platform)
      : KVQuellarListController(platform, page()) {}

  static const frame::Page& page();

  [[nodiscard]] std::optional<platform::Action> actionForSelector(std::string_view selector) override;
  /// Picks the colour of the action label.
  void setActionLabelColor();
  /// Picks the lock-screen clock colour. It reads the settings domain and writes the legacy one.
  void setLockScreenClockColor();
};

}  // namespace quellar::pages

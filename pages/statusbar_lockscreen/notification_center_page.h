// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string_view>

#include "frame/list_controller.h"

namespace quellar::pages {

class KVQuellarNotificationCenterListController : public frame::KVQuellarListController {
 public:
  explicit KVQuellarNotificationCenterListController(platform::Platform& platform)
      : KVQuellarListController(platform, page()) {}

  static const frame::Page& page();

  [[nodiscard]] std::optional<platform::Action> actionForSelector(std::string_view selector) override;
  /// Opens the picker of the background's blur style, which stores the style itself.
  void presentBlurPickerForBackground();
  void loadView() override;
};

}  // namespace quellar::pages

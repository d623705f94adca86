// SPDX-License-Identifier: MIT
#pragma once

#include "frame/list_controller.h"

namespace quellar::pages {

class KVQuellarLockScreenListController : public frame::KVQuellarListController {
 public:
  explicit KVQuellarLockScreenListController(platform::Platform& platform)
      : KVQuellarListController(platform, page()) {}

  static const frame::Page& page();

  /// Picks the lock-screen clock colour. It reads the settings domain and writes the legacy one. No row reaches it.
  void setLockScreenClockColor();
};

}  // namespace quellar::pages

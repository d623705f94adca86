// SPDX-License-Identifier: MIT
#pragma once

#include "frame/list_controller.h"

namespace quellar::pages {

class KVQuellarAppSwitcherListController : public frame::KVQuellarListController {
 public:
  explicit KVQuellarAppSwitcherListController(platform::Platform& platform)
      : KVQuellarListController(platform, page()) {}

  static const frame::Page& page();

  /// Picks the lock-screen clock colour, reading and writing the legacy domain. No row reaches it.
  void setLockScreenClockColor();
};

}  // namespace quellar::pages

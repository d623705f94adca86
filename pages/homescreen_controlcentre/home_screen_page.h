// SPDX-License-Identifier: MIT
#pragma once

#include "frame/list_controller.h"

namespace quellar::pages {

class KVQuellarHomeScreenListController : public frame::KVQuellarListController {
 public:
  explicit KVQuellarHomeScreenListController(platform::Platform& platform)
      : KVQuellarListController(platform, page()) {}

  static const frame::Page& page();
};

}  // namespace quellar::pages

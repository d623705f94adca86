// SPDX-License-Identifier: MIT
#pragma once

#include "frame/list_controller.h"

namespace quellar::pages {

class KVQuellarAlertsListController : public frame::KVQuellarListController {
 public:
  explicit KVQuellarAlertsListController(platform::Platform& platform) : KVQuellarListController(platform, page()) {}

  static const frame::Page& page();
};

}  // namespace quellar::pages

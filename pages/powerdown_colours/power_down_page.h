// SPDX-License-Identifier: MIT
#pragma once

#include "frame/list_controller.h"

namespace quellar::pages {

class KVQuellarPowerDownListController : public frame::KVQuellarListController {
 public:
  explicit KVQuellarPowerDownListController(platform::Platform& platform) : KVQuellarListController(platform, page()) {}

  static const frame::Page& page();
};

}  // namespace quellar::pages

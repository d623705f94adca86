// SPDX-License-Identifier: MIT
#pragma once

#include "frame/list_controller.h"

namespace quellar::pages {

class KVQuellarStatusBarListController : public frame::KVQuellarListController {
 public:
  explicit KVQuellarStatusBarListController(platform::Platform& platform) : KVQuellarListController(platform, page()) {}

  static const frame::Page& page();
};

}  // namespace quellar::pages

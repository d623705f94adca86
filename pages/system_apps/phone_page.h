// SPDX-License-Identifier: MIT
#pragma once

#include "frame/list_controller.h"

namespace quellar::pages {

class KVQuellarPhoneListController : public frame::KVQuellarListController {
 public:
  explicit KVQuellarPhoneListController(platform::Platform& platform) : KVQuellarListController(platform, page()) {}

  static const frame::Page& page();
};

}  // namespace quellar::pages

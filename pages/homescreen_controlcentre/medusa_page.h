// SPDX-License-Identifier: MIT
#pragma once

#include "frame/list_controller.h"

namespace quellar::pages {

class KVQuellarMedusaListController : public frame::KVQuellarListController {
 public:
  explicit KVQuellarMedusaListController(platform::Platform& platform) : KVQuellarListController(platform, page()) {}

  static const frame::Page& page();
};

}  // namespace quellar::pages

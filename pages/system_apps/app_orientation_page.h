// SPDX-License-Identifier: MIT
#pragma once

#include "frame/list_controller.h"

namespace quellar::pages {

/// The rows of the orientation row file, as they come: without the localizer, a page dictionary or handlers.
class KVQuellarAppOrientationListController : public frame::KVQuellarListController {
 public:
  explicit KVQuellarAppOrientationListController(platform::Platform& platform)
      : KVQuellarListController(platform, page()) {}

  static const frame::Page& page();
};

}  // namespace quellar::pages

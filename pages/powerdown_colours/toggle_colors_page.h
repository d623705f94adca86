// SPDX-License-Identifier: MIT
#pragma once

#include "pages/powerdown_colours/sibling_colors.h"

namespace quellar::pages {

class KVQuellarGlintListController : public ToggleColorsPage {
 public:
  explicit KVQuellarGlintListController(platform::Platform& platform) : ToggleColorsPage(platform, page()) {}

  static const frame::Page& page();
};

}  // namespace quellar::pages

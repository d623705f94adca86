// SPDX-License-Identifier: MIT
#include "pages/system_apps/app_orientation_page.h"

namespace quellar::pages {

using namespace frame;

const Page& KVQuellarAppOrientationListController::page() {
  static const Page page{.className = "KVQuellarAppOrientationListController",
                         .rows = {RowFile{.name = "QuellarOrientation", .localized = false}}};
  return page;
}

}  // namespace quellar::pages

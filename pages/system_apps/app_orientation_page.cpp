// SPDX-License-Identifier: MIT
#include "pages/system_apps/app_orientation_page.h"

#include "frame/names.h"

namespace quellar::pages {

using namespace frame;

const Page& KVQuellarAppOrientationListController::page() {
  static const Page page{.className = "KVQuellarAppOrientationListController", .rows = {}};
  return page;
}

platform::Specifiers KVQuellarAppOrientationListController::makeSpecifiers() {
  return loadSpecifiersFromPlistName("QuellarOrientation", kBundlePath);
}

}  // namespace quellar::pages

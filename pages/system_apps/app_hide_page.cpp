// SPDX-License-Identifier: MIT
#include "pages/system_apps/app_hide_page.h"

#include "frame/names.h"

namespace quellar::pages {

using namespace frame;

const Page& KVQuellarAppHideListController::page() {
  static const Page page{.className = "KVQuellarAppHideListController",
                         .defaultsKey = "AppHide_Defaults",
                         .posts = {darwin(kSettings)},
                         .rows = {
                             RowFile{.name = "QuellarAppHide"},
                             Group{.footer = "Allow hidden apps to show in the App Switcher"},
                             Switch{.label = "Show In Switcher", .key = "showsHiddenAppsInSwitcher"},
                         }};
  return page;
}

}  // namespace quellar::pages

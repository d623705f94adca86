// SPDX-License-Identifier: MIT
#include "pages/system_apps/quick_edit_page.h"

#include "frame/names.h"

namespace quellar::pages {

using namespace frame;

const Page& KVQuellarQuickEditListController::page() {
  static const Page page{
      .className = "KVQuellarQuickEditListController",
      .defaultsKey = "QuickEdit_Defaults",
      .posts = {darwin(kSettings)},
      .rows = {
          Group{.footer =
                    "When using the Quick Edit menu functionality, a icon similar to the app deletion x button will "
                    "appear on the bottom left of an icon. Tapping this button will bring up the Quellar Quick "
                    "Action menu from which you can change some Quellar settings on the fly."},
          Switch{.label = "Use Quick Edit", .key = "userRequestsQuickEditMenu"},
          Group{.title = "Appearance",
                .footer = "Fading app labels will help keep the look of the icon pleasant due to the quick edit button "
                          "being so close to the label"},
          Switch{.label = "Fade App Labels", .key = "userRequestsFadingLabelsInEditMode"},
      }};
  return page;
}

}  // namespace quellar::pages

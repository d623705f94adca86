// SPDX-License-Identifier: MIT
#include "pages/system_apps/camera_page.h"

#include "frame/names.h"

namespace quellar::pages {

using namespace frame;

const Page& KVQuellarCameraListController::page() {
  static const Page page{
      .className = "KVQuellarCameraListController",
      .defaultsKey = "Camera_Defaults",
      .posts = {darwin(kSettingsCamera)},
      .rows = {
          Group{.title = "Behavior",
                .footer = "'Warn If Flash' will warn you are about to take a picture with flash to confirm you want to "
                          "take with flash."},
          Switch{.label = "Always HDR On", .key = "userSetAlwaysHDROn"},
          Switch{.label = "Double Tap To Flip", .key = "userRequestsTapTapFlip"},
          Switch{.label = "Warn If Flash", .key = "userWantsFlashWarning"},
      }};
  return page;
}

}  // namespace quellar::pages

// SPDX-License-Identifier: MIT
#include "panel_system/page_lines.h"

namespace quellar::tests {
namespace camera_page_test {

constexpr auto kPage = "KVQuellarCameraListController";

TEST(CameraPage, ShowsItsRowsInOrderOnAFreshInstall) {
  Panel panel;
  EXPECT_EQ(
      rowLines(panel.open(kPage)),
      (Lines{
          group("Behavior",
                "'Warn If Flash' will warn you are about to take a picture with flash to confirm you want to take with "
                "flash."),
          toggle("Always HDR On", "userSetAlwaysHDROn"),
          toggle("Double Tap To Flip", "userRequestsTapTapFlip"),
          toggle("Warn If Flash", "userWantsFlashWarning"),
      }));
}

TEST(CameraPage, LooksUpAllItsTexts) {
  Panel panel;
  EXPECT_EQ(lookupsOf(panel, kPage),
            (std::set<std::string>{"Behavior",
                                   ("'Warn If Flash' will warn you are about to take a picture "
                                    "with flash to confirm you want to take with flash."),
                                   "Always HDR On", "Double Tap To Flip", "Warn If Flash"}));
}

TEST(CameraPage, PostsItsOwnNotificationOnceForEveryWriteAndNoOther) {
  expectEverySwitchPosts(kPage, "Camera_Defaults",
                         {"userSetAlwaysHDROn", "userRequestsTapTapFlip", "userWantsFlashWarning"},
                         {darwinPost("com.vantorick.quellar2.settings.camera")});
}

}  // namespace camera_page_test
}  // namespace quellar::tests

// SPDX-License-Identifier: MIT
#include "panel_system/page_lines.h"

namespace quellar::tests {
namespace quick_edit_page_test {

constexpr auto kPage = "KVQuellarQuickEditListController";

TEST(QuickEditPage, ShowsItsRowsInOrderOnAFreshInstall) {
  Panel panel;
  EXPECT_EQ(
      rowLines(panel.open(kPage)),
      (Lines{
          group("",
                "When using the Quick Edit menu functionality, a icon similar to the app deletion x button will appear "
                "on the bottom left of an icon. Tapping this button will bring up the Quellar Quick Action menu from "
                "which you can change some Quellar settings on the fly."),
          toggle("Use Quick Edit", "userRequestsQuickEditMenu"),
          group("Appearance",
                "Fading app labels will help keep the look of the icon pleasant due to the quick edit button "
                "being so close to the label"),
          toggle("Fade App Labels", "userRequestsFadingLabelsInEditMode"),
      }));
}

TEST(QuickEditPage, LooksUpAllItsTexts) {
  Panel panel;
  EXPECT_EQ(
      lookupsOf(panel, kPage),
      (std::set<std::string>{("When using the Quick Edit menu functionality, a icon similar to the app deletion x "
                              "button will appear on the bottom left of an icon. Tapping this button will bring up the "
                              "Quellar Quick Action menu from which you can change some Quellar settings on the fly."),
                             "Use Quick Edit", "Appearance",
                             ("Fading app labels will help keep the look of the icon pleasant due to the quick edit "
                              "button being so close to the label"),
                             "Fade App Labels"}));
}

TEST(QuickEditPage, PostsItsOwnNotificationOnceForEveryWriteAndNoOther) {
  expectEverySwitchPosts(kPage, "QuickEdit_Defaults",
                         {"userRequestsQuickEditMenu", "userRequestsFadingLabelsInEditMode"},
                         {darwinPost("com.vantorick.quellar2.settings")});
}

}  // namespace quick_edit_page_test
}  // namespace quellar::tests

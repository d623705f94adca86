// SPDX-License-Identifier: MIT
#include "panel_system/page_lines.h"

namespace quellar::tests {
namespace preferences_page_test {

constexpr auto kPage = "KVQuellarPreferencesListController";

TEST(SettingsAppPage, ShowsItsRowsInOrderOnAFreshInstall) {
  Panel panel;
  EXPECT_EQ(
      rowLines(panel.open(kPage)),
      (Lines{
          group("Passcode Entry Field", "iOS 10.3 Style is to use empty dots instead of dashes in the passcode field"),
          toggle("Disable App Section", "userRequestsDisablingAppSpecs"),
          toggle("Remove Update Badges", "userRequestsRemovingSoftwareBadge"),
          toggle("Use iOS 10.3 Style", "userRequests103PasscodeDash"),
      }));
}

TEST(SettingsAppPage, LooksUpAllItsTexts) {
  Panel panel;
  EXPECT_EQ(lookupsOf(panel, kPage),
            (std::set<std::string>{"Passcode Entry Field",
                                   "iOS 10.3 Style is to use empty dots instead of dashes in the passcode field",
                                   "Disable App Section", "Remove Update Badges", "Use iOS 10.3 Style"}));
}

TEST(SettingsAppPage, PostsItsOwnNotificationOnceForEveryWriteAndNoOther) {
  expectEverySwitchPosts(
      kPage, "Preference_Defaults",
      {"userRequestsDisablingAppSpecs", "userRequestsRemovingSoftwareBadge", "userRequests103PasscodeDash"},
      {darwinPost("com.vantorick.quellar2.uikit")});
}

}  // namespace preferences_page_test
}  // namespace quellar::tests

// SPDX-License-Identifier: MIT
#include "panel_system/page_lines.h"

namespace quellar::tests {
namespace messages_page_test {

constexpr auto kPage = "KVQuellarMessagesListController";

TEST(MessagesPage, ShowsItsRowsInOrderOnAFreshInstall) {
  Panel panel;
  EXPECT_EQ(
      rowLines(panel.open(kPage)),
      (Lines{
          group("Behavior",
                "Disabling plugins will remove the iOS 10 digital touch and iMessage AppStore from the entry view"),
          toggle("Disable Plugins", "userSetSMSPluginsDisabled"),
      }));
}

TEST(MessagesPage, LooksUpAllItsTexts) {
  Panel panel;
  EXPECT_EQ(lookupsOf(panel, kPage),
            (std::set<std::string>{
                "Behavior",
                "Disabling plugins will remove the iOS 10 digital touch and iMessage AppStore from the entry view",
                "Disable Plugins"}));
}

TEST(MessagesPage, PostsItsOwnNotificationOnceForEveryWriteAndNoOther) {
  expectEverySwitchPosts(kPage, "Messages_Defaults", {"userSetSMSPluginsDisabled"},
                         {darwinPost("com.vantorick.quellar2.settings.mobilesms")});
}

}  // namespace messages_page_test
}  // namespace quellar::tests

// SPDX-License-Identifier: MIT
#include "panel_system/page_lines.h"

namespace quellar::tests {
namespace phone_page_test {

constexpr auto kPage = "KVQuellarPhoneListController";

TEST(PhonePage, ShowsItsRowsInOrderOnAFreshInstall) {
  Panel panel;
  EXPECT_EQ(
      rowLines(panel.open(kPage)),
      (Lines{
          group("Hidden Tabs", "Turn on to disable the tab from showing"),
          toggle("Contacts Tab", "userDisablesContactsTab"),
          toggle("Dialer Tab", "userDisablesKeypadTab"),
          toggle("Favorites Tab", "userDisablesFavoritesTab"),
          toggle("Recents Tab", "userDisablesRecentsTab"),
          toggle("Voicemail Tab", "userDisablesVoicemailTab"),
          group("Recents", "Turning these options on will prevent those type of logs from showing in the recents tab"),
          toggle("Cellular Call Logs", "userDisablesCellularLogs"),
          toggle("FaceTime Audio Logs", "userDisablesFTAudioLogs"),
          toggle("FaceTime Video Logs", "userDisablesFTVideoLogs"),
          toggle("Third Party Apps", "userDisablesTPPartyLogs"),
      }));
}

TEST(PhonePage, LooksUpAllItsTexts) {
  Panel panel;
  EXPECT_EQ(
      lookupsOf(panel, kPage),
      (std::set<std::string>{"Hidden Tabs", "Turn on to disable the tab from showing", "Contacts Tab", "Dialer Tab",
                             "Favorites Tab", "Recents Tab", "Voicemail Tab", "Recents",
                             "Turning these options on will prevent those type of logs from showing in the recents tab",
                             "Cellular Call Logs", "FaceTime Audio Logs", "FaceTime Video Logs", "Third Party Apps"}));
}

TEST(PhonePage, PostsItsOwnNotificationOnceForEveryWriteAndNoOther) {
  expectEverySwitchPosts(kPage, "Phone_Defaults",
                         {"userDisablesContactsTab", "userDisablesKeypadTab", "userDisablesFavoritesTab",
                          "userDisablesRecentsTab", "userDisablesVoicemailTab", "userDisablesCellularLogs",
                          "userDisablesFTAudioLogs", "userDisablesFTVideoLogs", "userDisablesTPPartyLogs"},
                         {darwinPost("com.vantorick.quellar2.settings.phone")});
}

TEST(PhonePage, ShowsTheGlyphsThatTheDeviceHas) {
  const std::string artwork = "/System/Library/Frameworks/UIKit.framework/Artwork.bundle/";
  const std::string phone = "/Applications/MobilePhone.app/";
  const std::map<std::string, std::string> glyphs = {
      {"userDisablesContactsTab", artwork + "UITabBarContactsTemplate.png"},
      {"userDisablesKeypadTab", phone + "BarDialer.png"},
      {"userDisablesFavoritesTab", artwork + "UITabBarFavoritesTemplate.png"},
      {"userDisablesRecentsTab", artwork + "UITabBarHistoryTemplate.png"},
      {"userDisablesVoicemailTab", phone + "BarVoicemail.png"},
  };
  Panel panel;
  for (const auto& [key, path] : glyphs) panel.files.existing.insert(path);
  panel.files.existing.insert(phone + "ControlCenterGlyphTimer1M.png");
  auto& page = panel.open(kPage);
  std::map<std::string, std::string> shown;
  for (const auto& row : page.specifiers()) {
    if (const auto* icon = row->propertyForKey("iconImage")) {
      shown[row->stringForKey("key")] = std::get<platform::Image>(*icon).path;
    }
  }
  EXPECT_EQ(shown, glyphs);
}

TEST(PhonePage, LeavesATabWithoutIconWhereItsGlyphIsMissing) {
  Panel panel;
  panel.files.existing.insert("/Applications/MobilePhone.app/ControlCenterGlyphTimer1M.png");
  panel.open(kPage);
  EXPECT_EQ(panel.row("userDisablesContactsTab").propertyForKey("iconImage"), nullptr);
}

}  // namespace phone_page_test
}  // namespace quellar::tests

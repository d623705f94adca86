// SPDX-License-Identifier: MIT
#include "panel_system/page_lines.h"

namespace quellar::tests {
namespace app_hide_page_test {

constexpr auto kPage = "KVQuellarAppHideListController";
const std::string kFileFooter = "A hidden app has no icon on the home screen. It stays installed and keeps its data.";

const Lines kOwnRows = {
    group("", "Allow hidden apps to show in the App Switcher"),
    toggle("Show In Switcher", "showsHiddenAppsInSwitcher"),
};

std::string application(const std::string& name, const std::string& identifier) {
  return toggle(name, "hidden-" + identifier, {{"default", false}});
}

TEST(AppHidePage, ListsTheInstalledApplicationsAsSwitchesUnderTheirOwnKeys) {
  Panel panel;
  useRowFile(panel, "QuellarAppHide");
  panel.applications.installed = {{"org.example.Camera.desktop", "Camera"},
                                  {"mail.desktop", "Mail"},
                                  {"org.example.\u00dcben.desktop", "\u00dcben"}};
  EXPECT_EQ(rowLines(panel.open(kPage)),
            with(kOwnRows, 0,
                 {group("Hidden Apps", kFileFooter), application("Camera", "org.example.Camera.desktop"),
                  application("Mail", "mail.desktop"), application("\u00dcben", "org.example.\u00dcben.desktop")}));
  EXPECT_EQ(panel.bundles.reports, Lines());

  panel.set("hidden-mail.desktop", true);
  EXPECT_EQ(panel.events(), (Lines{write("AppHide_Defaults", R"({"hidden-mail.desktop":true})"), kSettingsPost}));
  panel.set("showsHiddenAppsInSwitcher", true);
  EXPECT_EQ(panel.events(),
            (Lines{write("AppHide_Defaults", R"({"hidden-mail.desktop":true,"showsHiddenAppsInSwitcher":true})"),
                   kSettingsPost}));
}

TEST(AppHidePage, ShowsTheGroupOfTheFileAloneWhereNoApplicationIsInstalled) {
  Panel panel;
  useRowFile(panel, "QuellarAppHide");
  EXPECT_EQ(rowLines(panel.open(kPage)), with(kOwnRows, 0, {group("Hidden Apps", kFileFooter)}));
}

TEST(AppHidePage, ShowsItsOwnRowsAloneWhereTheFileIsMissing) {
  Panel panel;
  EXPECT_EQ(rowLines(panel.open(kPage)), kOwnRows);
}

TEST(AppHidePage, KeepsOddIdentifiersWhole) {
  const std::string long_ = std::string(3000, 'x') + ".desktop";
  Panel panel;
  useRowFile(panel, "QuellarAppHide");
  panel.applications.installed = {{"", "Nameless"}, {long_, ""}, {"a/../b.desktop", "Slashes"}, {"%@", "Percent"}};
  panel.open(kPage);
  for (const std::string& identifier : {std::string(), long_, std::string("a/../b.desktop"), std::string("%@")}) {
    panel.set("hidden-" + identifier, true);
  }
  EXPECT_EQ(panel.stored("AppHide_Defaults"),
            R"({"hidden-":true,"hidden-%@":true,"hidden-a/../b.desktop":true,"hidden-)" + long_ + R"(":true})");
}

TEST(AppHidePage, KeepsTheValueOfAnApplicationThatIsGone) {
  Panel panel;
  useRowFile(panel, "QuellarAppHide");
  panel.store("AppHide_Defaults", platform::Dictionary{{"hidden-gone.desktop", true}});
  panel.open(kPage);
  panel.set("showsHiddenAppsInSwitcher", true);
  EXPECT_EQ(panel.stored("AppHide_Defaults"), R"({"hidden-gone.desktop":true,"showsHiddenAppsInSwitcher":true})");
}

TEST(AppHidePage, LooksUpAllItsTextsAndNoNameOfAnApplication) {
  Panel panel;
  useRowFile(panel, "QuellarAppHide");
  panel.applications.installed = {{"mail.desktop", "Mail"}};
  EXPECT_EQ(lookupsOf(panel, kPage),
            (std::set<std::string>{"Hidden Apps", kFileFooter, "Allow hidden apps to show in the App Switcher",
                                   "Show In Switcher"}));
}

TEST(AppHidePage, PostsTheSettingsNotificationOnceForEveryWrite) {
  expectEverySwitchPosts(kPage, "AppHide_Defaults", {"showsHiddenAppsInSwitcher"}, {kSettingsPost});
}

}  // namespace app_hide_page_test
}  // namespace quellar::tests

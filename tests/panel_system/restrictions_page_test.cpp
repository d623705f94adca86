// SPDX-License-Identifier: MIT
#include "panel_system/page_lines.h"

namespace quellar::tests {
namespace restrictions_page_test {

constexpr auto kPage = "KVQuellarRestrictionsListController";

const Lines kOwnRows = {
    toggle("Enable Orientation Locks", "userRequestsCustomOrientationLocking"),
    group(),
    toggle("Disable CC Everywhere", "userDisablesControlCenter"),
    toggle("Disable Homescreen Editing", "userDisablesHomescreenEditing"),
    toggle("Disable Lift To Wake", "userDisablesLiftToWake"),
    toggle("Disable NC Everywhere", "userDisablesNotificationCenter"),
    toggle("Disable Screenshots", "userDisableScreenshots"),
    toggle("Disable Spotlight", "userDisablesSpotlight"),
    toggle("Disable Suggested App", "userDisablesSuggestedApp"),
};
const std::string kLink = rowLine("PSLinkListCell", "App Orientation", "opens KVQuellarAppOrientationListController",
                                  {{"label", "App Orientation"}});
const std::string kLinkFooter = "With orientation locks on, each app keeps to the orientation that you choose for it.";

TEST(RestrictionsPage, ShowsTheRowsOfItsFileAndThenItsOwn) {
  Panel panel;
  useRowFile(panel, "QuellarRestrictions");
  EXPECT_EQ(rowLines(panel.open(kPage)), with(kOwnRows, 0, {group("App Orientation", kLinkFooter), kLink}));
  EXPECT_EQ(panel.bundles.reports, Lines());
}

TEST(RestrictionsPage, ShowsItsOwnRowsAloneWhereTheFileIsMissing) {
  Panel panel;
  EXPECT_EQ(rowLines(panel.open(kPage)), kOwnRows);
}

TEST(RestrictionsPage, OpensTheOrientationPage) {
  Panel panel;
  useRowFile(panel, "QuellarRestrictions");
  panel.open(kPage);
  tap(panel, "App Orientation");
  EXPECT_EQ(panel.events(), (Lines{R"({"event":"push","page":"KVQuellarAppOrientationListController","t":0.0})"}));
  EXPECT_EQ(panel.host.topList()->title(), "App Orientation");
}

TEST(RestrictionsPage, LooksUpAllItsTexts) {
  Panel panel;
  useRowFile(panel, "QuellarRestrictions");
  EXPECT_EQ(lookupsOf(panel, kPage),
            (std::set<std::string>{"App Orientation", kLinkFooter, "Enable Orientation Locks", "Disable CC Everywhere",
                                   "Disable Homescreen Editing", "Disable Lift To Wake", "Disable NC Everywhere",
                                   "Disable Screenshots", "Disable Spotlight", "Disable Suggested App"}));
}

TEST(RestrictionsPage, PostsInTheProcessAfterTheSettingsNotification) {
  expectEverySwitchPosts(kPage, "Restriction_Defaults",
                         {"userRequestsCustomOrientationLocking", "userDisablesControlCenter",
                          "userDisablesHomescreenEditing", "userDisablesLiftToWake", "userDisablesNotificationCenter",
                          "userDisableScreenshots", "userDisablesSpotlight", "userDisablesSuggestedApp"},
                         {kSettingsPost, post("process", "SBPolicyAggregatorCapabilitiesChangedNotification", "0.0")});
}

TEST(RestrictionsPage, TellsObserversOfItsProcessOnceTheValueIsStored) {
  Panel panel;
  panel.open(kPage);
  const auto observer = std::make_shared<int>();
  Lines seen;
  panel.host.platform().notifications.addObserver(
      observer, "SBPolicyAggregatorCapabilitiesChangedNotification", [&](const platform::Notification& notification) {
        EXPECT_TRUE(std::holds_alternative<std::monostate>(notification.object));
        EXPECT_FALSE(notification.userInfo);
        seen.push_back(panel.stored("Restriction_Defaults"));
      });
  panel.set("userDisablesSpotlight", true);
  EXPECT_EQ(seen, (Lines{R"({"userDisablesSpotlight":true})"}));
}

}  // namespace restrictions_page_test
}  // namespace quellar::tests

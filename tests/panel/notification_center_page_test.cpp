// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "cells/backdrop_picker.h"
#include "frame/list_controller.h"
#include "platform/navigation_controller.h"
#include "support/expectations.h"
#include "support/memory_services.h"

namespace quellar::tests {
namespace notification_center_page_test {

using namespace std::chrono_literals;
using cells::KVQuellarBackdropPickerViewController;
using platform::Dictionary;
using platform::PSSpecifier;
using platform::Value;
using testing::ElementsAre;
using Lines = std::vector<std::string>;

constexpr auto kPage = "KVQuellarNotificationCenterListController";

std::string write(const std::string& dictionary) {
  return writeLine("NotificationCenter_Defaults", dictionary);
}

const std::string kDefaultWithNotifications =
    switchRow("Default with Notifications", "ncDefaultsToNotificationsWhenExist");
const std::string kText = R"(PSEditTextCell {"key":"ncNoNotificationText","label":"Text:"} set get)";

Lines rowsWith(bool defaultWithNotifications, bool text) {
  Lines rows = {
      groupRow("Behavior",
               "When enabling Swipe Location Sets Page, swiping down from left half of device opens widgets page while "
               "the right side opens notifications page. Enabling this option adds an option to select whether to "
               "default to the notifications page if you have notifications."),
      switchRow("Disable On LockScreen", "ncDisabledOnLockScreen"),
      switchRow("Show On First Swipe", "ncShowOnFirstSwipe"),
      switchRow("Swipe Location Sets Page", "ncSwipeLocationDeterminesPage"),
      groupRow("Clear Button Behavior",
               "By default iOS requires you to tap the X and then clear to remove notifications. Enabling Default to "
               "Clear makes this button default to the 'Clear' state. \n\nBy default iOS clears notifications by "
               "sections. Enable 'Default to Clear All' to well...clear all."),
      switchRow("Default To Clear", "userDefaultsNotificationToClearState"),
      switchRow("Default To Clear All", "userDefaultsNotificationToClearAll"),
      groupRow("Appearance",
               "Enabling 'Remove Widgets Footer' will remove the Edit button along with the Weather Channel and Yahoo "
               "attribution labels."),
      R"(PSButtonCell {"label":"Blur Style"} action presentBlurPickerForBackground)",
      switchRow("Extend To Bottom", "ncExtendToBottom"),
      switchRow("Extend To Top", "ncExtendToTop"),
      switchRow("Hide Bottom Separator", "ncHideBottomSeparator"),
      switchRow("Hide Chevron View", "ncHideChevronView"),
      switchRow("Hide Page Dots", "ncDisablePageControl"),
      switchRow("Hide Search Bar", "ncDisableSearchBar"),
      switchRow("Hide Status Bar", "ncHideStatusBar"),
      switchRow("Hide Top Separator", "ncHideTopSeparator"),
      switchRow("One Line Date Label", "ncDisableMultilineDate"),
      switchRow("Remove Widgets Footer", "ncHidesWidgetsFooter"),
      groupRow("Batteries Widget"),
      switchRow("Always Visible", "userRequestsAlwaysVisibleBatteryWidget"),
      groupRow("Custom No Notifications Text"),
      switchRow("Use Custom Text", "isNotificationCenterCustomText")};
  if (text) rows.push_back(kText);
  if (defaultWithNotifications) rows.insert(rows.begin() + 4, kDefaultWithNotifications);
  return rows;
}

class NotificationCenterPage : public testing::Test {
 protected:
  Panel panel;

  platform::PSListController& open(const Dictionary& stored = {}) {
    if (!stored.empty()) panel.store("NotificationCenter_Defaults", stored);
    return panel.open(kPage);
  }
  std::shared_ptr<KVQuellarBackdropPickerViewController> openPicker() {
    const auto rows = panel.rows();
    const auto row = std::find(rows.begin(), rows.end(), "PSButtonCell Blur Style");
    panel.host.topList()->userTapsRow(static_cast<std::size_t>(row - rows.begin()));
    return std::dynamic_pointer_cast<KVQuellarBackdropPickerViewController>(
        panel.host.navigation().topViewController());
  }
};

TEST_F(NotificationCenterPage, ShowsItsRowsInOrderOnAFreshInstall) {
  EXPECT_EQ(wholeRows(open()), rowsWith(false, false));
}

TEST_F(NotificationCenterPage, OpensWithEachDependentRowUnderItsSwitchWhereThatIsStoredOn) {
  EXPECT_EQ(wholeRows(open({{"ncSwipeLocationDeterminesPage", true}, {"isNotificationCenterCustomText", true}})),
            rowsWith(true, true));
}

TEST_F(NotificationCenterPage, SetsThePlainBackButtonOfPagesPushedFromIt) {
  panel.bundles.texts = {{"Back", "wrong"}};
  panel.host.open(kPage);
  EXPECT_THAT(panel.events(),
              ElementsAre(R"({"event":"push","page":"KVQuellarNotificationCenterListController","t":0.0})",
                          R"({"event":"bar","side":"back","title":"Back","style":"plain","t":0.0})"));
  const auto& back = panel.host.topList()->navigationItem().backBarButtonItem();
  ASSERT_TRUE(back);
  EXPECT_EQ(back->action, "");
  EXPECT_FALSE(back->run);
}

TEST_F(NotificationCenterPage, LocalisesEveryTextButTheTitleOfTheCustomText) {
  panel.bundles.texts = {
      {"Custom No Notifications Text", "wrong"}, {"Blur Style", "Stil"}, {"Batteries Widget", "Batterien"}};
  auto& page = open();
  EXPECT_EQ(page.specifiers()[8]->name(), "Stil");
  EXPECT_EQ(page.specifiers()[19]->name(), "Batterien");
  EXPECT_EQ(page.specifiers()[21]->name(), "Custom No Notifications Text");
}

TEST_F(NotificationCenterPage, PostsTheSettingsForEverySwitch) {
  for (const auto* key : {"ncDisabledOnLockScreen", "ncShowOnFirstSwipe", "ncDefaultsToNotificationsWhenExist",
                          "userDefaultsNotificationToClearState", "userDefaultsNotificationToClearAll",
                          "ncExtendToBottom", "ncExtendToTop", "ncHideBottomSeparator", "ncHideChevronView",
                          "ncDisablePageControl", "ncDisableSearchBar", "ncHideStatusBar", "ncHideTopSeparator",
                          "ncDisableMultilineDate", "ncHidesWidgetsFooter", "userRequestsAlwaysVisibleBatteryWidget"}) {
    Panel each;
    each.store("NotificationCenter_Defaults", Dictionary{{"ncSwipeLocationDeterminesPage", true}});
    each.open(kPage);
    each.set(key, true);
    each.advance(1s);
    const Dictionary expected{{"ncSwipeLocationDeterminesPage", true}, {key, true}};
    EXPECT_THAT(each.events(),
                ElementsAre(write(dump(host::headless::toJson(Value(expected)))), darwinLine("settings")));
  }
}

TEST_F(NotificationCenterPage, RemovesTheDefaultRowWithItsSwitchAndPutsItBackInTheSamePlace) {
  auto& page = open({{"ncSwipeLocationDeterminesPage", true}});
  const PSSpecifier* row = &panel.row("ncDefaultsToNotificationsWhenExist");
  panel.set("ncSwipeLocationDeterminesPage", false);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"ncSwipeLocationDeterminesPage":false})"), darwinLine("settings"),
                                          removeLine(4, R"(["Default with Notifications"])")));
  EXPECT_EQ(wholeRows(page), rowsWith(false, false));
  panel.set("ncSwipeLocationDeterminesPage", true);
  EXPECT_THAT(panel.events(),
              ElementsAre(write(R"({"ncSwipeLocationDeterminesPage":true})"), darwinLine("settings"),
                          insertLine("ncSwipeLocationDeterminesPage", 4, R"(["Default with Notifications"])")));
  EXPECT_EQ(wholeRows(page), rowsWith(true, false));
  EXPECT_EQ(&panel.row("ncDefaultsToNotificationsWhenExist"), row);
}

TEST_F(NotificationCenterPage, InsertsTheTextUnderItsSwitchAndStoresWhatIsTyped) {
  auto& page = open();
  panel.set("isNotificationCenterCustomText", true);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"isNotificationCenterCustomText":true})"), darwinLine("settings"),
                                          insertLine("isNotificationCenterCustomText", 23, R"(["Text:"])")));
  EXPECT_EQ(wholeRows(page), rowsWith(false, true));
  panel.type("ncNoNotificationText", "All quiet");
  EXPECT_THAT(panel.events(), ElementsAre(keyboardLine(true), barLine("Save")));
  page.navigationItem().rightBarButtonItem()->run();
  EXPECT_THAT(panel.events(),
              ElementsAre(write(R"({"isNotificationCenterCustomText":true,"ncNoNotificationText":"All quiet"})"),
                          darwinLine("settings"), keyboardLine(false), kBarClearedLine));
  panel.set("isNotificationCenterCustomText", false);
  EXPECT_THAT(panel.events(),
              ElementsAre(write(R"({"isNotificationCenterCustomText":false,"ncNoNotificationText":"All quiet"})"),
                          darwinLine("settings"), removeLine(23, R"(["Text:"])")));
}

TEST_F(NotificationCenterPage, OpensTheBackdropPickerForItsStyle) {
  open({{"ncExtendToTop", true}});
  const auto picker = openPicker();
  ASSERT_TRUE(picker);
  EXPECT_THAT(panel.events(),
              ElementsAre(R"({"event":"push","page":"KVQuellarBackdropPickerViewController","t":0.0})"));
  EXPECT_EQ(picker->title(), "Pick A Style");
  picker->backdropCollectionView().didSelectItem(0);
  EXPECT_THAT(
      panel.events(),
      ElementsAre(write(R"({"ncExtendToTop":true,"ncPrefferedBackdropStyle":2060})"), notifyPostLine("settings"),
                  R"({"event":"pop","page":"KVQuellarBackdropPickerViewController","animated":true,"t":0.0})"));
  EXPECT_EQ(panel.host.topList()->className(), kPage);
}

TEST_F(NotificationCenterPage, KeepsThePickedStyleInItsNextWrites) {
  open({{"ncPrefferedBackdropStyle", 2000}});
  openPicker()->backdropCollectionView().didSelectItem(2);
  panel.events();
  panel.set("ncExtendToTop", true);
  EXPECT_THAT(panel.events(),
              ElementsAre(write(R"({"ncExtendToTop":true,"ncPrefferedBackdropStyle":2040})"), darwinLine("settings")));
  openPicker()->backdropCollectionView().didSelectItem(30);
  panel.set("ncExtendToTop", false);
  EXPECT_EQ(panel.stored("NotificationCenter_Defaults"), R"({"ncExtendToTop":false,"ncPrefferedBackdropStyle":4003})");
}

TEST_F(NotificationCenterPage, TakesNoOtherKeyOverFromTheStore) {
  open({{"ncHideStatusBar", true}});
  panel.store("NotificationCenter_Defaults", Dictionary{{"ncHideStatusBar", false}, {"other", 1}});
  panel.set("ncExtendToTop", true);
  EXPECT_EQ(panel.stored("NotificationCenter_Defaults"), R"({"ncExtendToTop":true,"ncHideStatusBar":true})");
}

}  // namespace notification_center_page_test
}  // namespace quellar::tests

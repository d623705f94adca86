// SPDX-License-Identifier: MIT
#include "pages/statusbar_lockscreen/notification_center_page.h"

#include "cells/backdrop_picker.h"
#include "frame/names.h"
#include "platform/navigation_controller.h"

namespace quellar::pages {

using namespace frame;

namespace {

constexpr const char* kDefaultsKey = "NotificationCenter_Defaults";
constexpr const char* kStyleKey = "ncPrefferedBackdropStyle";
constexpr std::string_view kPresentBlurPicker = "presentBlurPickerForBackground";

/// The styles of the picker, under the numbers that label its previews.
Choices backdropStyles() {
  cells::KVQuellarBackdropPickerCollectionView const picker(nullptr);
  Choices styles;
  for (std::size_t item = 0; item < picker.numberOfItems(); ++item) {
    const auto cell = picker.cellForItem(item);
    styles.values.emplace_back(cell.style());
    styles.titles.push_back(cell.styleLabel());
  }
  return styles;
}

}  // namespace

const Page& KVQuellarNotificationCenterListController::page() {
  static const Page page{
      .className = "KVQuellarNotificationCenterListController",
      .defaultsKey = kDefaultsKey,
      .posts = {darwin(kSettings)},
      // Written by the picker; the page's next write must not put the older style back.
      .takesOver = {kStyleKey},
      .foreignKeys =
          {{.label = "Blur Style", .key = kStyleKey, .choices = backdropStyles(), .posts = {notifyPost(kSettings)}}},
      .saveButton = true,
      .rows = {
          Group{.title = "Behavior",
                .footer = "When enabling Swipe Location Sets Page, swiping down from left half of device opens widgets "
                          "page while the right side opens notifications page. Enabling this option adds an option to "
                          "select whether to default to the notifications page if you have notifications."},
          Switch{.label = "Disable On LockScreen", .key = "ncDisabledOnLockScreen"},
          Switch{.label = "Show On First Swipe", .key = "ncShowOnFirstSwipe"},
          Switch{.label = "Swipe Location Sets Page", .key = "ncSwipeLocationDeterminesPage"},
          Dependent{
              .name = "defaultWithNotiSpec",
              .shownBy = "ncSwipeLocationDeterminesPage",
              .rows = {Switch{.label = "Default with Notifications", .key = "ncDefaultsToNotificationsWhenExist"}}},
          Group{.title = "Clear Button Behavior",
                .footer = "By default iOS requires you to tap the X and then clear to remove notifications. Enabling "
                          "Default to Clear makes this button default to the 'Clear' state. \n\n"
                          "By default iOS clears notifications by sections. Enable 'Default to Clear All' to "
                          "well...clear all."},
          Switch{.label = "Default To Clear", .key = "userDefaultsNotificationToClearState"},
          Switch{.label = "Default To Clear All", .key = "userDefaultsNotificationToClearAll"},
          Group{.title = "Appearance",
                .footer = "Enabling 'Remove Widgets Footer' will remove the Edit button along with the Weather Channel "
                          "and Yahoo attribution labels."},
          Button{.label = "Blur Style", .action = std::string(kPresentBlurPicker)},
          Switch{.label = "Extend To Bottom", .key = "ncExtendToBottom"},
          Switch{.label = "Extend To Top", .key = "ncExtendToTop"},
          Switch{.label = "Hide Bottom Separator", .key = "ncHideBottomSeparator"},
          Switch{.label = "Hide Chevron View", .key = "ncHideChevronView"},
          Switch{.label = "Hide Page Dots", .key = "ncDisablePageControl"},
          Switch{.label = "Hide Search Bar", .key = "ncDisableSearchBar"},
          Switch{.label = "Hide Status Bar", .key = "ncHideStatusBar"},
          Switch{.label = "Hide Top Separator", .key = "ncHideTopSeparator"},
          Switch{.label = "One Line Date Label", .key = "ncDisableMultilineDate"},
          Switch{.label = "Remove Widgets Footer", .key = "ncHidesWidgetsFooter"},
          Group{.title = "Batteries Widget"},
          Switch{.label = "Always Visible", .key = "userRequestsAlwaysVisibleBatteryWidget"},
          Group{.title = asWritten("Custom No Notifications Text")},
          Switch{.label = "Use Custom Text", .key = "isNotificationCenterCustomText"},
          Dependent{.name = "noNotipec",
                    .shownBy = "isNotificationCenterCustomText",
                    .rows = {TextEntry{.key = "ncNoNotificationText"}}},
      }};
  return page;
}

std::optional<platform::Action> KVQuellarNotificationCenterListController::actionForSelector(
    std::string_view selector) {
  if (selector == kPresentBlurPicker) {
    return platform::Action{std::string(selector),
                            [this](platform::PSSpecifier&) { presentBlurPickerForBackground(); }};
  }
  return KVQuellarListController::actionForSelector(selector);
}

void KVQuellarNotificationCenterListController::presentBlurPickerForBackground() {
  platform().navigation.pushViewController(
      std::make_shared<cells::KVQuellarBackdropPickerViewController>(platform(), kStyleKey, kDefaultsKey));
}

void KVQuellarNotificationCenterListController::loadView() {
  PSListController::loadView();
  navigationItem().setBackBarButtonItem(
      platform::BarButtonItem{.title = "Back", .style = platform::BarButtonItemStyle::plain, .action = {}, .run = {}});
  observeNotifications();
}

}  // namespace quellar::pages

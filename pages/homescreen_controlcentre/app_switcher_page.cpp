// SPDX-License-Identifier: MIT
#include "pages/homescreen_controlcentre/app_switcher_page.h"

#include "frame/list_items.h"
#include "frame/names.h"
#include "pages/clock_color.h"

namespace quellar::pages {

using namespace frame;

namespace {

/// The rows that customise a backdrop.
std::vector<Row> backdrop(bool transparent, const char* style, const char* strength, const char* saturation,
                          const char* darkening) {
  return {Picker{.label = bundled("Blur style"), .key = style, .choices = blurLooks(transparent)},
          Picker{.label = bundled("Blur Strength"), .key = strength, .choices = blurStrengths()},
          Picker{.label = bundled("Saturation Amount"), .key = saturation, .choices = saturationAmounts()},
          Slider{.label = bundled("Darkening Amount"),
                 .key = darkening,
                 .byDefault = 0,
                 .minimum = 0,
                 .maximum = 1,
                 .typedEntry = false}};
}

}  // namespace

const Page& KVQuellarAppSwitcherListController::page() {
  static const Page page{
      .className = "KVQuellarAppSwitcherListController",
      .defaultsKey = "AppSwitcher_Defaults",
      .posts = {darwin(kSettings)},
      .takesOver = {"switcherMaxCards"},
      .rows = {
          Group{.title = "Force Touch"},
          Switch{.label = "Disable Pop From Side", .key = "disablePopFromSide"},
          Switch{.label = "Disable Side Peek Haptic", .key = "playInitialHapticFeedback"},
          Switch{.label = "Disable Side Pop Haptic", .key = "playCommitHapticFeedback"},
          Group{.title = "Switcher Cards"},
          Switch{.label = "Display Icon Badges", .key = "userRequestsSwitcherIconBadges"},
          Switch{.label = "Hide Icon & Label", .key = "hideSwitcherIconAndLabel"},
          Switch{.label = "Hide Inactive App Cards", .key = "userRemovesInactiveAppsFromSwitcher"},
          Switch{.label = "Limit Displayed Cards", .key = "userLimitsMaxSwitcherCards"},
          Dependent{.name = "maxCardsSpec",
                    .shownBy = "userLimitsMaxSwitcherCards",
                    .rows = {Stepper{.label = "Maximum Cards",
                                     .key = "switcherMaxCards",
                                     .byDefault = 10,
                                     .minimum = 1,
                                     .maximum = 100,
                                     .updatesLabelValue = true}}},
          Group{.title = "Switcher Wallpaper"},
          Switch{.label = "No Blur", .key = "userDisablesAppSwitcherBlur"},
          Switch{.label = "Customize Appearance", .key = "usesCustomSwitcherWallpaper"},
          Dependent{.name = "wallpaperSpecs",
                    .shownBy = "usesCustomSwitcherWallpaper",
                    .rows = backdrop(false, "switcherBackgroundStyle", "switcherBackgroundBlurStrength",
                                     "switcherBackgroundSaturationAmount", "switcherBackgroundDarkeningAmount")},
          Group{.title = "Switcher Home Card Wallpaper"},
          Switch{.label = "Customize Appearance", .key = "usesCustomSwitcherCardWallpaper"},
          Dependent{.name = "cardWallpaperSpecs",
                    .shownBy = "usesCustomSwitcherCardWallpaper",
                    .rows = backdrop(true, "switcherForegroundWallpaperStyle", "switcherForegroundBlurStrength",
                                     "switcherForegroundSaturationAmount", "switcherForegroundDarkeningAmount")},
      }};
  return page;
}

void KVQuellarAppSwitcherListController::setLockScreenClockColor() {
  pickClockColor(*this, kLegacyDomain);
}

}  // namespace quellar::pages

// SPDX-License-Identifier: MIT
#include "pages/homescreen_controlcentre/control_center_page.h"

#include "frame/names.h"
#include "platform/platform.h"

namespace quellar::pages {

using namespace frame;

namespace {

/// An alpha or a strength from 0 to 1.
Slider fraction(const char* label, const char* key, double byDefault) {
  return {.label = label, .key = key, .byDefault = byDefault, .minimum = 0.0, .maximum = 1.0};
}

/// The links to the toggle colour pages, with a second one for each other control centre that is installed.
std::vector<Row> toggleColors(const Surroundings& surroundings) {
  const bool flip = surroundings.platform.files.fileExists("/usr/lib/libflipcontrolcenter.dylib");
  const bool tessaly = surroundings.platform.files.fileExists("/usr/lib/libtessaly.dylib");
  const auto link = [](const char* page) { return Link{"Custom Toggle Colors", page, {"qlrGlintSettingsIcon.png"}}; };
  std::vector<Row> rows = {Group{.title = asWritten(flip || tessaly ? "Stock Toggles" : "")},
                           link("KVQuellarGlintListController")};
  if (flip) {
    rows.emplace_back(Group{.title = asWritten("FlipControlCenter")});
    rows.emplace_back(link("KVQuellarFCCGlintListController"));
  }
  if (tessaly) {
    rows.emplace_back(Group{.title = asWritten("Tessaly")});
    rows.emplace_back(link("KVQuellarFCCGlintListController"));
  }
  return rows;
}

}  // namespace

const Page& KVQuellarControlCenterListController::page() {
  static const Page page{
      .className = "KVQuellarControlCenterListController",
      .defaultsKey = "ControlCenter_Defaults",
      .posts = {darwin(kSettings)},
      .colors = {.fallback = "#ffffff", .post = notifyPost(kSettings)},
      .savesTypedValues = true,
      .rows = {
          Computed{toggleColors},
          Group{.title = "Appearance"},
          Switch{.label = "Custom Blur Strength", .key = "usesCustomCCBlurStength"},
          Switch{.label = "Disable Button Text", .key = "disableCCButtonText"},
          Switch{.label = "Disable Status Text", .key = "disableCCStatusText"},
          Switch{.label = "Disable Toggle Coloring", .key = "disableToggleColors"},
          Switch{.label = "Remove Page Dots", .key = "userRequestsRemovingCCPageDots"},
          Switch{.label = "Remove White Overlay", .key = "userRequestsRemovingWhiteView"},
          Dependent{
              .name = "blurSpecs",
              .shownBy = "usesCustomCCBlurStength",
              .after = "userRequestsRemovingWhiteView",
              .rows = {Group{.title = "Blur Strength"}, fraction("Blur Strength", "controlCenterBlurStregth", 1.0)}},
          Group{.title = "Behavior"},
          Switch{.label = "Disable on LockScreen", .key = "disableCCOnLockScreen"},
          Switch{.label = "Show On First Swipe", .key = "controlCenterFirstSwipe"},
          Switch{.label = "Use Old Bounce", .key = "usingOldCCBounce"},
          Group{.title = "Darkening View",
                .footer = "Custom opacity only affects the darkening view when not replacing the darkening view with "
                          "blur. If you'd like to remove it entirely set custom opacity to 0"},
          Switch{.label = "Replace With Blur", .key = "userRequestsLumenfold"},
          Switch{.label = "Use Custom Opacity", .key = "useCustomDarkeningAlpha"},
          Dependent{.name = "darkeningSpec",
                    .shownBy = "useCustomDarkeningAlpha",
                    .rows = {fraction("Darkening View Alpha", "controlCenterDarkeningAlpha", 0.6)}},
          Dependent{.name = "darkeningBlurSpec",
                    .shownBy = "userRequestsLumenfold",
                    .after = "useCustomDarkeningAlpha",
                    .alternative = Dependent::Alternative{.whileOn = "useCustomDarkeningAlpha",
                                                          .after = "controlCenterDarkeningAlpha"},
                    .rows = {Group{.title = "Darkening Blur Style"},
                             Segment{.label = "Blur Style",
                                     .key = "userStyleForLumenfold",
                                     .byDefault = 3,
                                     .choices = {{1, 2, 3}, {"Extra Light", "Light", "Dark"}}}}},
          Group{.title = "Wallpaper Alpha",
                .footer =
                    "The Control Center blurs use a wallpaper image for color highlights, you can increase this to "
                    "make colors more vibrant in the blur"},
          Switch{.label = "Use Custom Alpha", .key = "useCustomWallpaperAlpha"},
          Dependent{.name = "wallpaperSpec",
                    .shownBy = "useCustomWallpaperAlpha",
                    .rows = {fraction("Wallpaper View Alpha", "controlCenterWallpaperAlpha", 0.6)}},
          Group{.title = "Background Color"},
          Switch{.label = "Use Custom Color", .key = "useCustomCCBackgroundColor"},
          Dependent{.name = "colorSpec",
                    .shownBy = "useCustomCCBackgroundColor",
                    .rows = {ColorRow{.label = "Background Color",
                                      .colorKey = "controlCenterBackgroundColor",
                                      .defaultColor = "#ffffff",
                                      .action = "setControlCenterBackgroundColor"}}},
      }};
  return page;
}

}  // namespace quellar::pages

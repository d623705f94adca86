// SPDX-License-Identifier: MIT
#include "pages/homescreen_controlcentre/home_screen_page.h"

#include "frame/names.h"

namespace quellar::pages {

using namespace frame;

namespace {

/// One count of the icon grid, labelled with what is stored. It writes itself; the page reads it again then.
Stepper count(const char* key, int byDefault, const char* unit) {
  return {.units = Units{unit, unit}, .key = key, .byDefault = byDefault, .requestsNotification = true};
}

Slider distance(const char* label, const char* key, double byDefault, double maximum) {
  return {.label = label, .key = key, .byDefault = byDefault, .minimum = 1.0, .maximum = maximum};
}

/// The post that asks for the icons' places, but not their grid, to be worked out anew.
Post minimalLayout() {
  Post post = darwin(kIconLayoutMinimal);
  post.forKeys = {"userCustomHorizontalIconPadding", "userRequestsCustomIconInsets", "userCustomVerticalIconPadding",
                  "userCustomTopIconInset", "userCustomSideIconInset"};
  post.moment = Moment::afterBlocks;
  return post;
}

}  // namespace

const Page& KVQuellarHomeScreenListController::page() {
  static const Page page{
      .className = "KVQuellarHomeScreenListController",
      .defaultsKey = "HomeScreen_Defaults",
      .posts = {darwin(kSettings),
                {.centre = Centre::distributed,
                 .name = std::string(kPageControl),
                 .userInfo = {{"enabled", WrittenBoolean{}}},
                 .forKeys = {"hidePageDots"}},
                minimalLayout()},
      // A value typed into a slider's entry dialog is not saved here; a drag is.
      .stepperRefresh = StepperRefresh{.posts = {darwin(kIconLayoutHarsh)}},
      .rows = {
          Group{.title = "Behavior", .footer = ""},
          Switch{.label = "Disable Rotation", .key = "userRequestsDisablingHSRotation"},
          Switch{.label = "Disable Scroll", .key = "userRequestsLockingHSScroll"},
          Group{.title = "Icon Layout",
                .footer = "This option allows you to set custom icon columns and rows for landscape and portrait "
                          "orientations"},
          Switch{.label = "Use Custom Layout", .key = "userRequestsCustomIconLayout"},
          Dependent{.name = "customIconLayoutSpecs",
                    .shownBy = "userRequestsCustomIconLayout",
                    .rows = {Group{.title = "Landscape Layout"}, count("userIconCountColumnsLandscape", 6, "Columns"),
                             count("userIconCountRowsLandscape", 4, "Rows"), Group{.title = "Portrait Layout"},
                             count("userIconCountColumnsPortrait", 4, "Columns"),
                             count("userIconCountRowsPortrait", 6, "Rows")}},
          Group{.title = "Icon Padding", .footer = "This option allows you to set custom icon insets and padding"},
          Switch{.label = "Use Custom Padding", .key = "userRequestsCustomIconInsets"},
          Dependent{
              .name = "customIconInsetSpecs",
              .shownBy = "userRequestsCustomIconInsets",
              .rows = {Group{.title = "Horizontal Icon Padding", .footer = "Adjusts the space between icon columns"},
                       distance("Horizontal Icon Padding", "userCustomHorizontalIconPadding", 34.0, 200.0),
                       Group{.title = "Vertical Icon Padding",
                             .footer = "Adjusts the space between bottom of icon and the top of the next row"},
                       distance("Vertical Icon Padding", "userCustomVerticalIconPadding", 26.0, 200.0),
                       Group{.title = "Icon Side Inset",
                             .footer = "Adjusts the space between first and last icon columns from the side of device"},
                       distance("Icon Side Inset", "userCustomSideIconInset", 35.0, 200.0),
                       Group{.title = "Icon Top Inset",
                             .footer = "Adjusts the space between the top and the first icon row"},
                       distance("Icon Top Inset", "userCustomTopIconInset", 35.0, 350.0)}},
          Group{.title = "Page Dots"},
          Switch{.label = "Hide Page Dots", .key = "hidePageDots"},
          Group{.title = "Wallpaper"},
          Switch{.label = "Disable Wallpaper Zoom", .key = "disableWallpaperZoom"},
          Switch{.label = "Disable Wallpaper Gradient", .key = "hideWallpaperGradient"},
          Switch{.label = "Suppress Wallpaper Parallax", .key = "suppressWallpaperParallax"},
      }};
  return page;
}

}  // namespace quellar::pages

// SPDX-License-Identifier: MIT
#include "pages/statusbar_lockscreen/force_touch_page.h"

#include "frame/names.h"

namespace quellar::pages {

using namespace frame;

namespace {

ColorRow color(const char* label, const char* key, const char* action) {
  return {.label = label, .colorKey = key, .defaultColor = "#000000", .action = action};
}

}  // namespace

const Page& KVQuellarForceTouchListController::page() {
  static const Page page{
      .className = "KVQuellarForceTouchListController",
      .defaultsKey = "ForceTouch_Defaults",
      .posts = {darwin(kSettings)},
      .colors = {.fallback = "#000000", .post = notifyPost(kSettings)},
      .savesTypedValues = true,
      .rows = {
          Group{.title = asWritten("Control Center Modules"), .footer = "Customize Module Actions"},
          Link{"Custom Timers", "KVQuellarCustomCCTimersListController", {"qlrAppForceTouchSettingsIcon.png"}},
          Group{.title = "Shortcut Menu Appearance",
                .footer = "By default 'Colorize Background Blur' will color the background based on the dominant color "
                          "of the app icon."},
          Switch{.label = "Colorize Background Blur", .key = "shortcutsColorizeBlur"},
          // Switching the outer switch off leaves a colour row that is shown where it is.
          Dependent{.name = "useCustomColorSpec",
                    .shownBy = "shortcutsColorizeBlur",
                    .rows = {Switch{.label = "Use Custom Color", .key = "usesCustomColorForBackgroundBlur"},
                             Dependent{.name = "customColorSpec",
                                       .shownBy = "usesCustomColorForBackgroundBlur",
                                       .rows = {color("Background Blur Color", "shortcutMenuBackgroundBlurColor",
                                                      "setBackgroundBlurColor")}}}},
          Switch{.label = "Colorize Labels", .key = "shortcutsColorizeLabels"},
          Switch{.label = "Hide Wallpaper Blur", .key = "shortcutsHideBackgroundBlur"},
          Switch{.label = "Dim Icons Instead of Blur", .key = "shortcutsDimIcons"},
          Switch{.label = "Remove Divider Lines", .key = "shortcutsHideDividerLines"},
          Dependent{.name = "alphaSliderSpecs",
                    .shownBy = "shortcutsDimIcons",
                    .after = "shortcutsHideDividerLines",
                    .rows = {Group{.title = "Dimmed Icon Alpha"}, Slider{.label = "Dimmed Icon Alpha",
                                                                         .key = "shortcutsDimmedIconAlpha",
                                                                         .byDefault = 0.2,
                                                                         .minimum = 0.0,
                                                                         .maximum = 1.0}}},
          Dependent{.name = "customColorSpecs",
                    .shownBy = "shortcutsColorizeLabels",
                    .after = "shortcutsHideDividerLines",
                    .alternative =
                        Dependent::Alternative{.whileOn = "shortcutsDimIcons", .after = "shortcutsDimmedIconAlpha"},
                    .rows = {Group{.title = "Shortcut Menu Colors"},
                             color("Title Text Color", "shortcutMenuTextColor", "setTitleColor"),
                             color("Subtitle Text Color", "shortcutMenuSubtitleTextColor", "setSubtitleColor")}},
          Group{.title = "Shortcuts"},
          Switch{.label = "Remove Beta Feedback", .key = "userRequestsRemovingBetaFeedbackShortcut"},
          Switch{.label = "Remove Share App", .key = "userRequestsRemovingShareShortcut"},
          Switch{.label = "Reverse Order", .key = "userRequestsReversedShortcutOrder"},
      }};
  return page;
}

}  // namespace quellar::pages

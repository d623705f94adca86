// SPDX-License-Identifier: MIT
#include "pages/system_apps/system_wide_page.h"

#include "frame/names.h"

namespace quellar::pages {

using namespace frame;

const Page& KVQuellarSystemWideListController::page() {
  static const Page page{.className = "KVQuellarSystemWideListController",
                         .defaultsKey = "SystemWide_Defaults",
                         .posts = {darwin(kSettingsUIKit)},
                         // A colour posts the general name, a switch the name of the interface kit: both are meant.
                         .colors = {.fallback = "#ffffff", .post = darwin(kSettings)},
                         .rows = {
                             Group{.title = "Charging Behavior"},
                             Switch{.label = "Disable Sound/Vibration", .key = "userRequestsDisableingChargingChirp"},
                             Group{.title = "Keyboard Behavior"},
                             Switch{.label = "Haptic Feedback", .key = "userRequestsKeyboardHaptics"},
                             Switch{.label = "Hide Keyboard Dictation Key", .key = "userHidesKeyboardDictationKey"},
                             Group{.title = "Screenshot Flash"},
                             Switch{.label = "Use Custom Color", .key = "userColorsScreenshotFlash"},
                             Dependent{.name = "customColorSpec",
                                       .shownBy = "userColorsScreenshotFlash",
                                       .rows = {ColorRow{.label = "Flash Color",
                                                         .colorKey = "userCustomScreenshotFlashColor",
                                                         .defaultColor = "#ffffff",
                                                         .action = "setColorForSpecifier:"}}},
                             Group{.title = "System UI"},
                             Switch{.label = "Hide Table Seperators", .key = "userHidesTableSeperators"},
                         }};
  return page;
}

}  // namespace quellar::pages

// SPDX-License-Identifier: MIT
#include "host/headless/row_json.h"
#include "panel_system/page_lines.h"

namespace quellar::tests {
namespace system_wide_page_test {

using namespace std::chrono_literals;
using platform::Color;
using platform::Dictionary;

constexpr auto kPage = "KVQuellarSystemWideListController";
constexpr auto kDefaults = "SystemWide_Defaults";
constexpr auto kSwitch = "userColorsScreenshotFlash";
const std::string kUIKitPost = darwinPost("com.vantorick.quellar2.settings.uikit");
const std::string kFlashColor =
    colorRow("Flash Color", "userCustomScreenshotFlashColor", "#ffffff", kDefaults, "setColorForSpecifier:");

const Lines kClosed = {
    group("Charging Behavior"),
    toggle("Disable Sound/Vibration", "userRequestsDisableingChargingChirp"),
    group("Keyboard Behavior"),
    toggle("Haptic Feedback", "userRequestsKeyboardHaptics"),
    toggle("Hide Keyboard Dictation Key", "userHidesKeyboardDictationKey"),
    group("Screenshot Flash"),
    toggle("Use Custom Color", kSwitch),
    group("System UI"),
    toggle("Hide Table Seperators", "userHidesTableSeperators"),
};

TEST(SystemWidePage, ShowsItsRowsInOrderOnAFreshInstall) {
  Panel panel;
  EXPECT_EQ(rowLines(panel.open(kPage)), kClosed);
}

TEST(SystemWidePage, OpensWithTheFlashColorWhereItsSwitchIsStoredOn) {
  Panel panel;
  panel.store(kDefaults, Dictionary{{kSwitch, true}});
  EXPECT_EQ(rowLines(panel.open(kPage)), with(kClosed, 7, {kFlashColor}));
}

TEST(SystemWidePage, LooksUpAllItsTexts) {
  Panel panel;
  EXPECT_EQ(lookupsOf(panel, kPage),
            (std::set<std::string>{"Charging Behavior", "Disable Sound/Vibration", "Keyboard Behavior",
                                   "Haptic Feedback", "Hide Keyboard Dictation Key", "Screenshot Flash",
                                   "Use Custom Color", "Flash Color", "System UI", "Hide Table Seperators"}));
}

TEST(SystemWidePage, InsertsTheFlashColorUnderItsSwitchAndRemovesItAgain) {
  Panel panel;
  auto& page = panel.open(kPage);
  panel.set(kSwitch, true);
  EXPECT_EQ(panel.events(), (Lines{write(kDefaults, R"({"userColorsScreenshotFlash":true})"), kUIKitPost,
                                   insert(kSwitch, 7, {"Flash Color"})}));
  EXPECT_EQ(rowLines(page), with(kClosed, 7, {kFlashColor}));
  panel.set(kSwitch, false);
  EXPECT_EQ(panel.events(), (Lines{write(kDefaults, R"({"userColorsScreenshotFlash":false})"), kUIKitPost,
                                   remove(7, {"Flash Color"})}));
  EXPECT_EQ(rowLines(page), kClosed);
}

TEST(SystemWidePage, PostsTheInterfaceKitsNameForItsSwitches) {
  expectEverySwitchPosts(kPage, kDefaults,
                         {"userRequestsDisableingChargingChirp", "userRequestsKeyboardHaptics",
                          "userHidesKeyboardDictationKey", "userHidesTableSeperators"},
                         {kUIKitPost});
}

TEST(SystemWidePage, StartsTheColorDialogFromTheStoredColorOrWhite) {
  for (const auto& [stored, start] : std::map<std::string, std::string>{
           {"", "#ffffff"}, {"#0e7afe", "#0e7afe"}, {"ff3b30", "#ff3b30"}, {"no color", "#ffffff"}}) {
    Panel panel;
    Dictionary dictionary{{kSwitch, true}};
    if (!stored.empty()) dictionary["userCustomScreenshotFlashColor"] = stored;
    panel.store(kDefaults, dictionary);
    panel.open(kPage);
    tap(panel, "Flash Color");
    EXPECT_EQ(panel.events(), (Lines{colorDialog(start, false)})) << stored;
  }
}

TEST(SystemWidePage, StoresAPickedColorAndDrawsItsCellsAnewATenthOfASecondLater) {
  Panel panel;
  panel.store(kDefaults, Dictionary{{kSwitch, true}});
  auto& page = panel.open(kPage);
  const auto rows = page.specifiers();
  tap(panel, "Flash Color");
  panel.events();
  panel.host.navigation().completeColorDialog(Color{255, 59, 48, 0.5});
  EXPECT_EQ(panel.events(),
            (Lines{kDismiss,
                   write(kDefaults, R"({"userColorsScreenshotFlash":true,"userCustomScreenshotFlashColor":"#ff3b30"})"),
                   kSettingsPost}));
  const auto cell = rows[7]->cell();
  panel.advance(99'999'999ns);
  EXPECT_EQ(panel.events(), Lines());
  EXPECT_EQ(rows[7]->cell(), cell);
  panel.advance(1ns);
  EXPECT_EQ(panel.events(), (Lines{reload("page", "0.1")}));
  EXPECT_EQ(page.specifiers(), rows);
  EXPECT_EQ(host::headless::cellJson(*rows[7])["swatch"]["color"], "#ff3b30");
  panel.advance(10s);
  EXPECT_EQ(panel.events(), Lines());
}

TEST(SystemWidePage, ShowsAnUnsetFlashColorAsWhite) {
  Panel panel;
  panel.store(kDefaults, Dictionary{{kSwitch, true}});
  auto& page = panel.open(kPage);
  EXPECT_EQ(host::headless::cellJson(*page.specifiers()[7])["swatch"]["color"], "#ffffff");
}

TEST(SystemWidePage, StoresNothingWhenTheColorDialogIsCancelled) {
  Panel panel;
  panel.store(kDefaults, Dictionary{{kSwitch, true}});
  panel.open(kPage);
  tap(panel, "Flash Color");
  panel.events();
  panel.host.navigation().pressDialogButton(0);
  panel.advance(10s);
  EXPECT_EQ(panel.events(), (Lines{kDismiss}));
}

}  // namespace system_wide_page_test
}  // namespace quellar::tests

// SPDX-License-Identifier: MIT
#include "frame/list_controller.h"
#include "host/headless/row_json.h"
#include "panel_system/page_lines.h"

namespace quellar::tests {
namespace toggle_colors_page_test {

using namespace std::chrono_literals;
using platform::Array;
using platform::Color;
using platform::Data;
using platform::Date;
using platform::Dictionary;
using platform::Value;

constexpr auto kPage = "KVQuellarGlintListController";
constexpr auto kDefaults = "ToggleColoring_Defaults";
constexpr auto kSwitch = "usesCustomCCToggleColors";
constexpr auto kSiblingFile = "/private/var/mobile/Library/Preferences/com.vantorick.glint2.plist";
const std::string kTogglesPost = darwinPost("com.vantorick.quellar2.togglesupdate");
const std::string kLaterTogglesPost = darwinPost("com.vantorick.quellar2.togglesupdate", "0.1");

std::string color(const std::string& label, const std::string& key, const std::string& defaultColor,
                  const std::string& icon) {
  return colorRow(label, key, defaultColor, kDefaults, "setColorForToggle:", kImages + icon);
}

const Lines kClosed = {toggle("Use Custom Colors", kSwitch)};
const Lines kBlock = {
    group("Custom Colors"),
    color("AirDrop", "airdrop", "#0e7afe", "qlrCCAirdropToggle.png"),
    color("Airplane", "airplaneMode", "#f09a37", "qlrCCAirplaneToggle.png"),
    color("AirPlay", "airplay", "#0e7afe", "qlrCCAirplayToggle.png"),
    color("Bluetooth", "bluetooth", "#3478f6", "qlrCCBluetoothToggle.png"),
    color("Do Not Disturb", "doNotDisturb", "#5856ce", "qlrCCMoonToggle.png"),
    color("Low Power", "lowPowerMode", "#4BD964", "qlrCCLowPowerToggle.png"),
    color("Mute", "mute", "#eb5b3f", "qlrCCMuteToggle.png"),
    color("NightShift", "nightshift", "#5856ce", "qlrCCNightShiftToggle.png"),
    color("Orientation", "orientationLock", "#eb5b3f", "qlrCCOrientationToggle.png"),
    color("Wifi", "wifi", "#3478f6", "qlrCCWifiToggle.png"),
    group("Import Colors From"),
    rowLine("PSButtonCell", "Glint 2", "does handleImportingGlint2Colors:",
            {{"label", "Glint 2"}, {"iconImage", image(kImages + "qlrGlint2Icon.png")}}),
};
const Lines kBlockLabels = {"Custom Colors", "AirDrop", "Airplane",   "AirPlay",     "Bluetooth", "Do Not Disturb",
                            "Low Power",     "Mute",    "NightShift", "Orientation", "Wifi",      "Import Colors From",
                            "Glint 2"};

struct TogglesPanel : Panel {
  void storeOn() { store(kDefaults, Dictionary{{kSwitch, true}}); }
  std::string swatch(std::string_view name) {
    return host::headless::cellJson(*host.topList()->specifiers()[placeOf(*this, name)])["swatch"]["color"];
  }
};

TEST(ToggleColorsPage, ShowsItsSwitchAloneOnAFreshInstall) {
  Panel panel;
  EXPECT_EQ(rowLines(panel.open(kPage)), kClosed);
}

TEST(ToggleColorsPage, OpensWithTheColorsWhereItsSwitchIsStoredOn) {
  TogglesPanel panel;
  panel.storeOn();
  EXPECT_EQ(rowLines(panel.open(kPage)), with(kClosed, 1, kBlock));
}

TEST(ToggleColorsPage, LooksUpAllItsTexts) {
  Panel panel;
  EXPECT_EQ(lookupsOf(panel, kPage),
            (std::set<std::string>{"Use Custom Colors", "Custom Colors", "AirDrop", "Airplane", "AirPlay", "Bluetooth",
                                   "Do Not Disturb", "Low Power", "Mute", "NightShift", "Orientation", "Wifi",
                                   "Import Colors From", "Glint 2"}));
}

TEST(ToggleColorsPage, InsertsThirteenRowsAndPostsTheTogglesUpdateTwice) {
  ASSERT_EQ(kBlock.size(), 13U);
  Panel panel;
  auto& page = panel.open(kPage);
  panel.set(kSwitch, true);
  EXPECT_EQ(panel.events(), (Lines{write(kDefaults, R"({"usesCustomCCToggleColors":true})"), kSettingsPost,
                                   kTogglesPost, insert(kSwitch, 1, kBlockLabels), kTogglesPost}));
  EXPECT_EQ(rowLines(page), with(kClosed, 1, kBlock));
  panel.set(kSwitch, false);
  EXPECT_EQ(panel.events(), (Lines{write(kDefaults, R"({"usesCustomCCToggleColors":false})"), kSettingsPost,
                                   kTogglesPost, remove(1, kBlockLabels), kTogglesPost}));
  EXPECT_EQ(rowLines(page), kClosed);
  panel.advance(10s);
  EXPECT_EQ(panel.events(), Lines());
}

TEST(ToggleColorsPage, PostsTheTogglesUpdateOnceForAnotherKey) {
  Panel panel;
  auto& page = dynamic_cast<frame::KVQuellarListController&>(panel.open(kPage));
  const auto row =
      platform::PSSpecifier::preferenceSpecifierNamed("", &page, {}, {}, "", platform::PSCellType::PSSwitchCell);
  row->setProperty("key", Value("other"));
  page.setPreferenceValue(Value(true), *row);
  EXPECT_EQ(panel.events(), (Lines{write(kDefaults, R"({"other":true})"), kSettingsPost, kTogglesPost}));
}

TEST(ToggleColorsPage, StartsTheColorDialogWithoutAlphaFromTheStoredOrTheDefaultColor) {
  TogglesPanel panel;
  panel.store(kDefaults, Dictionary{{kSwitch, true}, {"mute", "#010203"}, {"wifi", Array{}}});
  panel.open(kPage);
  EXPECT_EQ(panel.swatch("Low Power"), "#4bd964");
  for (const auto& [name, start] :
       std::map<std::string, std::string>{{"Low Power", "#4bd964"}, {"Mute", "#010203"}, {"Wifi", "#3478f6"}}) {
    tap(panel, name);
    EXPECT_EQ(panel.events(), (Lines{colorDialog(start, false)})) << name;
    panel.host.navigation().dismiss();
    panel.events();
  }
}

TEST(ToggleColorsPage, StoresAPickedColorAndDrawsItATenthOfASecondLater) {
  TogglesPanel panel;
  panel.storeOn();
  panel.open(kPage);
  tap(panel, "AirPlay");
  panel.events();
  panel.host.navigation().completeColorDialog(Color{255, 59, 48, 0.5});
  EXPECT_EQ(
      panel.events(),
      (Lines{kDismiss, write(kDefaults, R"({"airplay":"#ff3b30","usesCustomCCToggleColors":true})"), kSettingsPost}));
  panel.advance(99'999'999ns);
  EXPECT_EQ(panel.events(), Lines());
  EXPECT_EQ(panel.swatch("AirPlay"), "#0e7afe");
  panel.advance(1ns);
  EXPECT_EQ(panel.events(), (Lines{kLaterTogglesPost, reload("specifiers", "0.1")}));
  EXPECT_EQ(panel.swatch("AirPlay"), "#ff3b30");
  EXPECT_EQ(panel.swatch("AirDrop"), "#0e7afe");
  panel.advance(10s);
  EXPECT_EQ(panel.events(), Lines());
}

TEST(ToggleColorsPage, ImportsEveryKeyOfTheSiblingsFileWhateverItIs) {
  TogglesPanel panel;
  panel.store(kDefaults, Dictionary{{kSwitch, true}, {"wifi", "#000000"}, {"mute", "#111111"}});
  panel.files.propertyLists[kSiblingFile] = Dictionary{{"wifi", "#abcdef"},
                                                       {"unrelated", 7},
                                                       {"real", 0.5},
                                                       {"list", Array{1, "two"}},
                                                       {"nested", Dictionary{{"a", true}}},
                                                       {"data", Data{{1, 2}}},
                                                       {"date", Date{0}},
                                                       {"", "empty"}};
  panel.open(kPage);
  tap(panel, "Glint 2");
  EXPECT_EQ(panel.events(),
            (Lines{write(kDefaults, R"({"":"empty","data":{"$data":"AQI="},"date":{"$date":"2001-01-01T00:00:00Z"},)"
                                    R"("list":[1,"two"],"mute":"#111111","nested":{"a":true},"real":0.5,"unrelated":7,)"
                                    R"("usesCustomCCToggleColors":true,"wifi":"#abcdef"})"),
                   kSettingsPost}));
  panel.advance(99'999'999ns);
  EXPECT_EQ(panel.events(), Lines());
  EXPECT_EQ(panel.swatch("Wifi"), "#000000");
  panel.advance(1ns);
  EXPECT_EQ(panel.events(), (Lines{kLaterTogglesPost, reload("specifiers", "0.1")}));
  EXPECT_EQ(panel.swatch("Wifi"), "#abcdef");
  EXPECT_EQ(rowLines(*panel.host.topList()), with(kClosed, 1, kBlock));
}

TEST(ToggleColorsPage, StoresAndPostsWhereTheSiblingsFileGivesNothing) {
  const std::vector<std::optional<Value>> files = {std::nullopt, Value("text"), Value(Array{"wifi", "#abcdef"}),
                                                   Value(1), Value(Dictionary{})};
  for (const auto& file : files) {
    TogglesPanel panel;
    panel.storeOn();
    if (file) panel.files.propertyLists[kSiblingFile] = *file;
    panel.open(kPage);
    tap(panel, "Glint 2");
    EXPECT_EQ(panel.events(), (Lines{write(kDefaults, R"({"usesCustomCCToggleColors":true})"), kSettingsPost}));
    panel.advance(100ms);
    EXPECT_EQ(panel.events(), (Lines{kLaterTogglesPost, reload("specifiers", "0.1")}));
  }
}

TEST(ToggleColorsPage, TakesTheSwitchOverFromTheSiblingsFileToo) {
  TogglesPanel panel;
  panel.storeOn();
  panel.files.propertyLists[kSiblingFile] = Dictionary{{kSwitch, false}};
  auto& page = panel.open(kPage);
  tap(panel, "Glint 2");
  panel.advance(100ms);
  EXPECT_EQ(rowLines(page), kClosed);
}

TEST(ToggleColorsPage, ShowsImportedColorsInABlockThatWasHiddenWhenTheyWereDrawn) {
  TogglesPanel panel;
  panel.storeOn();
  panel.files.propertyLists[kSiblingFile] = Dictionary{{"wifi", "#123456"}};
  panel.open(kPage);
  EXPECT_EQ(panel.swatch("Wifi"), "#3478f6");
  tap(panel, "Glint 2");
  panel.set(kSwitch, false);
  panel.advance(100ms);
  panel.set(kSwitch, true);
  EXPECT_EQ(panel.swatch("Wifi"), "#123456");
}

TEST(ToggleColorsPage, ImportsAFileOfTenThousandKeys) {
  TogglesPanel panel;
  panel.storeOn();
  Dictionary many;
  for (int key = 0; key < 10'000; ++key) many["key" + std::to_string(key)] = key;
  panel.files.propertyLists[kSiblingFile] = many;
  panel.open(kPage);
  tap(panel, "Glint 2");
  many[kSwitch] = true;
  EXPECT_EQ(panel.preferences.copyAppValue(kDefaults, "com.vantorick.quellar2"), Value(many));
}

TEST(ToggleColorsPage, PostsTheTogglesUpdateOfAnImportAlthoughItIsGone) {
  TogglesPanel panel;
  panel.storeOn();
  panel.open(kPage);
  tap(panel, "Glint 2");
  panel.host.navigation().popViewController(true);
  panel.events();
  panel.advance(10s);
  EXPECT_EQ(panel.events(), (Lines{kLaterTogglesPost}));
}

TEST(ToggleColorsPage, DrawsOddStoredColorsAndKeepsThem) {
  struct Case {
    Value stored;
    const char* swatch;
  };
  for (const Case& each :
       {Case{"#ff0000:0.40", "#ff0000"}, Case{"ff3b30", "#0f3b30"}, Case{"", "#000000"}, Case{"#", "#000000"},
        Case{"purple", "#000000"}, Case{"#123", "#000123"}, Case{5, "#3478f6"}, Case{Dictionary{}, "#3478f6"}}) {
    TogglesPanel panel;
    panel.store(kDefaults, Dictionary{{kSwitch, true}, {"wifi", each.stored}});
    panel.open(kPage);
    EXPECT_EQ(panel.swatch("Wifi"), each.swatch);
    panel.set(kSwitch, true);
    EXPECT_EQ(panel.preferences.copyAppValue(kDefaults, "com.vantorick.quellar2"),
              Value(Dictionary{{kSwitch, true}, {"wifi", each.stored}}));
  }
}

}  // namespace toggle_colors_page_test
}  // namespace quellar::tests

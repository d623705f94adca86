// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cells/slider_cell.h"
#include "cells/stepper_cell.h"
#include "frame/list_controller.h"
#include "platform/navigation_controller.h"
#include "support/expectations.h"
#include "support/memory_services.h"

namespace quellar::tests {
namespace home_screen_page_test {

using namespace std::chrono_literals;
using cells::KVQuellarSliderCell;
using cells::KVQuellarStepperCell;
using platform::Array;
using platform::Dictionary;
using platform::PSSpecifier;
using platform::Value;
using testing::ElementsAre;
using testing::IsEmpty;
using Lines = std::vector<std::string>;

constexpr auto kPage = "KVQuellarHomeScreenListController";

std::string write(const std::string& dictionary) {
  return writeLine("HomeScreen_Defaults", dictionary);
}

std::string stepperRow(const std::string& label, const std::string& key, int byDefault) {
  return R"(PSStaticTextCell {"cellClass":{"$class":"KVQuellarStepperCell"},"default":)" + std::to_string(byDefault) +
         R"(,"defaultsKey":"HomeScreen_Defaults","enabled":true,"key":")" + key + R"(","label":")" + label +
         R"(","requestsNotification":true,"updatesLabelValue":false} set get)";
}

const Lines kLayoutRows = {groupRow("Landscape Layout"),
                           stepperRow("0 Columns", "userIconCountColumnsLandscape", 6),
                           stepperRow("0 Rows", "userIconCountRowsLandscape", 4),
                           groupRow("Portrait Layout"),
                           stepperRow("0 Columns", "userIconCountColumnsPortrait", 4),
                           stepperRow("0 Rows", "userIconCountRowsPortrait", 6)};
const Lines kInsetRows = {
    groupRow("Horizontal Icon Padding", "Adjusts the space between icon columns"),
    typedSliderRow("Horizontal Icon Padding", "userCustomHorizontalIconPadding", "34.0", "1.0", "200.0"),
    groupRow("Vertical Icon Padding", "Adjusts the space between bottom of icon and the top of the next row"),
    typedSliderRow("Vertical Icon Padding", "userCustomVerticalIconPadding", "26.0", "1.0", "200.0"),
    groupRow("Icon Side Inset", "Adjusts the space between first and last icon columns from the side of device"),
    typedSliderRow("Icon Side Inset", "userCustomSideIconInset", "35.0", "1.0", "200.0"),
    groupRow("Icon Top Inset", "Adjusts the space between the top and the first icon row"),
    typedSliderRow("Icon Top Inset", "userCustomTopIconInset", "35.0", "1.0", "350.0")};

Lines rowsWith(const Lines& layout, const Lines& insets) {
  Lines rows = {
      groupRow("Behavior", ""), switchRow("Disable Rotation", "userRequestsDisablingHSRotation"),
      switchRow("Disable Scroll", "userRequestsLockingHSScroll"),
      groupRow("Icon Layout",
               "This option allows you to set custom icon columns and rows for landscape and portrait orientations"),
      switchRow("Use Custom Layout", "userRequestsCustomIconLayout")};
  rows.insert(rows.end(), layout.begin(), layout.end());
  rows.push_back(groupRow("Icon Padding", "This option allows you to set custom icon insets and padding"));
  rows.push_back(switchRow("Use Custom Padding", "userRequestsCustomIconInsets"));
  rows.insert(rows.end(), insets.begin(), insets.end());
  for (const auto& row : {groupRow("Page Dots"), switchRow("Hide Page Dots", "hidePageDots"), groupRow("Wallpaper"),
                          switchRow("Disable Wallpaper Zoom", "disableWallpaperZoom"),
                          switchRow("Disable Wallpaper Gradient", "hideWallpaperGradient"),
                          switchRow("Suppress Wallpaper Parallax", "suppressWallpaperParallax")}) {
    rows.push_back(row);
  }
  return rows;
}

class HomeScreenPage : public testing::Test {
 protected:
  Panel panel;

  platform::PSListController& open(const Dictionary& stored = {}) {
    if (!stored.empty()) panel.store("HomeScreen_Defaults", stored);
    return panel.open(kPage);
  }
  std::shared_ptr<KVQuellarStepperCell> stepper(std::string_view key) {
    return std::dynamic_pointer_cast<KVQuellarStepperCell>(panel.row(key).cell());
  }
};

TEST_F(HomeScreenPage, ShowsItsRowsInOrderOnAFreshInstall) {
  EXPECT_EQ(wholeRows(open()), rowsWith({}, {}));
}

TEST_F(HomeScreenPage, OpensWithBothBlocksWhereTheirSwitchesAreStoredOn) {
  EXPECT_EQ(wholeRows(open({{"userRequestsCustomIconLayout", true}, {"userRequestsCustomIconInsets", 1}})),
            rowsWith(kLayoutRows, kInsetRows));
}

TEST_F(HomeScreenPage, HasNoButtonsOfItsOwnInTheBar) {
  panel.store("HomeScreen_Defaults", Dictionary{{"userRequestsCustomIconInsets", true}});
  panel.host.open(kPage);
  EXPECT_THAT(panel.events(), ElementsAre(R"({"event":"push","page":"KVQuellarHomeScreenListController","t":0.0})"));
  std::dynamic_pointer_cast<KVQuellarSliderCell>(panel.row("userCustomTopIconInset").cell())->presentPopup();
  EXPECT_EQ(panel.events().at(1), keyboardLine(true));
  EXPECT_FALSE(panel.host.topList()->navigationItem().rightBarButtonItem());
}

TEST_F(HomeScreenPage, PostsTheSettingsAloneForPlainSwitches) {
  for (const auto* key : {"userRequestsDisablingHSRotation", "userRequestsLockingHSScroll", "disableWallpaperZoom",
                          "hideWallpaperGradient", "suppressWallpaperParallax"}) {
    Panel each;
    each.open(kPage);
    each.set(key, true);
    each.advance(1s);
    EXPECT_THAT(each.events(), ElementsAre(write(std::string(R"({")") + key + R"(":true})"), darwinLine("settings")));
  }
}

TEST_F(HomeScreenPage, TellsWhetherThePageDotsAreHidden) {
  open();
  for (const auto* state : {"true", "false"}) {
    panel.set("hidePageDots", state == std::string("true"));
    EXPECT_THAT(
        panel.events(),
        ElementsAre(
            write(std::string(R"({"hidePageDots":)") + state + "}"), darwinLine("settings"),
            std::string(
                R"({"event":"post","centre":"distributed","name":"com.vantorick.quellar2.pagecontrol","object":null,"userInfo":{"enabled":)") +
                state + R"(},"immediately":true,"through":"centre","t":0.0})"));
  }
}

TEST_F(HomeScreenPage, ShowsTheGridCountsUnderTheirSwitchWithoutAnIconLayout) {
  auto& page = open();
  const std::string labels = R"(["Landscape Layout","0 Columns","0 Rows","Portrait Layout","0 Columns","0 Rows"])";
  panel.set("userRequestsCustomIconLayout", true);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"userRequestsCustomIconLayout":true})"), darwinLine("settings"),
                                          insertLine("userRequestsCustomIconLayout", 5, labels)));
  EXPECT_EQ(wholeRows(page), rowsWith(kLayoutRows, {}));
  panel.set("userRequestsCustomIconLayout", false);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"userRequestsCustomIconLayout":false})"), darwinLine("settings"),
                                          removeLine(5, labels)));
  EXPECT_EQ(wholeRows(page), rowsWith({}, {}));
}

TEST_F(HomeScreenPage, ShowsThePaddingUnderItsSwitchAndThenAsksForAMinimalIconLayout) {
  auto& page = open();
  const std::string labels =
      R"(["Horizontal Icon Padding","Horizontal Icon Padding","Vertical Icon Padding","Vertical Icon Padding","Icon Side Inset","Icon Side Inset","Icon Top Inset","Icon Top Inset"])";
  panel.set("userRequestsCustomIconInsets", true);
  EXPECT_THAT(panel.events(),
              ElementsAre(write(R"({"userRequestsCustomIconInsets":true})"), darwinLine("settings"),
                          insertLine("userRequestsCustomIconInsets", 7, labels), darwinLine("iconlayoutminimal")));
  EXPECT_EQ(wholeRows(page), rowsWith({}, kInsetRows));
  panel.set("userRequestsCustomIconInsets", false);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"userRequestsCustomIconInsets":false})"), darwinLine("settings"),
                                          removeLine(7, labels), darwinLine("iconlayoutminimal")));
  EXPECT_EQ(wholeRows(page), rowsWith({}, {}));
}

TEST_F(HomeScreenPage, SavesADraggedSliderAndAsksForAMinimalIconLayout) {
  for (const auto* key : {"userCustomHorizontalIconPadding", "userCustomVerticalIconPadding", "userCustomSideIconInset",
                          "userCustomTopIconInset"}) {
    Panel each;
    each.store("HomeScreen_Defaults", Dictionary{{"userRequestsCustomIconInsets", true}});
    each.open(kPage);
    each.host.topList()->userMovesSlider(each.row(key), 50);
    each.advance(1s);
    EXPECT_THAT(each.events(),
                ElementsAre(write(std::string(R"({")") + key + R"(":50.0,"userRequestsCustomIconInsets":true})"),
                            darwinLine("settings"), darwinLine("iconlayoutminimal")));
  }
}

TEST_F(HomeScreenPage, DoesNotSaveATypedValue) {
  open({{"userRequestsCustomIconInsets", true}});
  std::dynamic_pointer_cast<KVQuellarSliderCell>(panel.row("userCustomTopIconInset").cell())->presentPopup();
  panel.host.navigation().setDialogText("60");
  panel.events();
  panel.host.navigation().pressDialogButton(1);
  panel.advance(1s);
  EXPECT_THAT(panel.events(), ElementsAre(kDismissLine,
                                          processLine("sliderValueChanged", R"("userCustomTopIconInset")",
                                                      R"({"newValue":60.0,"settingsKey":"userCustomTopIconInset"})"),
                                          keyboardLine(false)));
  EXPECT_EQ(panel.stored("HomeScreen_Defaults"), R"({"userRequestsCustomIconInsets":true})");
}

TEST_F(HomeScreenPage, ShowsZeroForACountThatWasNeverStoredWhileItsStepperStartsFromTheDefault) {
  open({{"userRequestsCustomIconLayout", true}});
  std::vector<std::pair<std::string, double>> shown;
  for (const auto* key : {"userIconCountColumnsLandscape", "userIconCountRowsLandscape", "userIconCountColumnsPortrait",
                          "userIconCountRowsPortrait"}) {
    shown.emplace_back(panel.row(key).name(), stepper(key)->stepper().value);
    EXPECT_EQ(stepper(key)->label().text, "");
  }
  EXPECT_THAT(shown, ElementsAre(std::pair("0 Columns", 6.0), std::pair("0 Rows", 4.0), std::pair("0 Columns", 4.0),
                                 std::pair("0 Rows", 6.0)));
  EXPECT_THAT(panel.events(), IsEmpty());
  EXPECT_EQ(panel.stored("HomeScreen_Defaults"), R"({"userRequestsCustomIconLayout":true})");
}

TEST_F(HomeScreenPage, LabelsACountWithItsStoredWholePart) {
  struct Case {
    Value stored;
    const char* label;
  };
  for (const Case& each : {Case{5, "5 Columns"}, Case{5.0, "5 Columns"}, Case{5.9, "5 Columns"}, Case{1, "1 Columns"},
                           Case{-2, "-2 Columns"}, Case{"7", "0 Columns"}, Case{Array{7}, "0 Columns"}}) {
    Panel fresh;
    fresh.store("HomeScreen_Defaults",
                Dictionary{{"userRequestsCustomIconLayout", true}, {"userIconCountColumnsPortrait", each.stored}});
    fresh.open(kPage);
    EXPECT_EQ(fresh.row("userIconCountColumnsPortrait").name(), each.label);
    EXPECT_EQ(fresh.row("userIconCountColumnsPortrait").stringForKey("label"), each.label);
  }
}

TEST_F(HomeScreenPage, ReadsItsDictionaryAgainAfterAStepThenAsksForAHarshIconLayout) {
  open({{"userRequestsCustomIconLayout", true}, {"foreign", "kept"}});
  const PSSpecifier::Pointer row = panel.row("userIconCountColumnsLandscape").shared_from_this();
  stepper("userIconCountColumnsLandscape")->press(1);
  EXPECT_THAT(
      panel.events(),
      ElementsAre(
          write(R"({"foreign":"kept","userIconCountColumnsLandscape":7.0,"userRequestsCustomIconLayout":true})"),
          R"({"event":"synchronize","domain":"com.vantorick.quellar2","t":0.0})", notifyPostLine("settings"),
          processLine("stepperValueChanged", R"("userIconCountColumnsLandscape")", "null"), rowsReloadedLine(),
          darwinLine("iconlayoutharsh")));
  EXPECT_NE(panel.row("userIconCountColumnsLandscape").shared_from_this(), row) << "the blocks are built anew";
  EXPECT_EQ(panel.row("userIconCountColumnsLandscape").name(), "7 Columns");
  EXPECT_EQ(panel.row("userIconCountRowsLandscape").name(), "0 Rows");
  EXPECT_EQ(stepper("userIconCountColumnsLandscape")->stepper().value, 7.0);
  // The page's next write keeps the count.
  panel.set("disableWallpaperZoom", true);
  EXPECT_EQ(
      panel.stored("HomeScreen_Defaults"),
      R"({"disableWallpaperZoom":true,"foreign":"kept","userIconCountColumnsLandscape":7.0,"userRequestsCustomIconLayout":true})");
}

TEST_F(HomeScreenPage, GivesTheOtherSteppersFreshCopiesAfterAStep) {
  open({{"userRequestsCustomIconLayout", true}});
  stepper("userIconCountColumnsLandscape")->press(1);
  stepper("userIconCountRowsLandscape")->press(-1);
  EXPECT_EQ(
      panel.stored("HomeScreen_Defaults"),
      R"({"userIconCountColumnsLandscape":7.0,"userIconCountRowsLandscape":3.0,"userRequestsCustomIconLayout":true})");
}

TEST_F(HomeScreenPage, LosesWhatItWroteItselfSinceTheStepperReadItsCopy) {
  open({{"userRequestsCustomIconLayout", true}});
  panel.set("disableWallpaperZoom", true);
  stepper("userIconCountRowsPortrait")->press(1);
  EXPECT_EQ(panel.stored("HomeScreen_Defaults"),
            R"({"userIconCountRowsPortrait":7.0,"userRequestsCustomIconLayout":true})");
  auto& page = dynamic_cast<frame::KVQuellarListController&>(*panel.host.topList());
  EXPECT_EQ(page.readPreferenceValue(panel.row("disableWallpaperZoom")), std::nullopt);
}

TEST_F(HomeScreenPage, TakesAnEmptyDictionaryWhereNothingIsStoredAtAStep) {
  open({{"userRequestsCustomIconLayout", true}});
  panel.preferences.domains.clear();
  panel.host.platform().notifications.postNotification({"stepperValueChanged", "anything", std::nullopt});
  EXPECT_EQ(wholeRows(*panel.host.topList()), rowsWith({}, {}));
}

}  // namespace home_screen_page_test
}  // namespace quellar::tests

// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cells/color_preview_cell.h"
#include "cells/slider_cell.h"
#include "frame/list_controller.h"
#include "frame/row_value.h"
#include "platform/navigation_controller.h"
#include "support/expectations.h"
#include "support/memory_services.h"

namespace quellar::tests {
namespace icons_page_test {

using namespace std::chrono_literals;
using platform::Dictionary;
using platform::PSSpecifier;
using platform::Value;
using testing::ElementsAre;
using testing::IsEmpty;
using Lines = std::vector<std::string>;

constexpr auto kPage = "KVQuellarIconsListController";

std::string write(const std::string& dictionary, const std::string& time = "0.0") {
  return writeLine("Icon_Defaults", dictionary, time);
}

std::string color(const char* label, const char* key, const char* byDefault) {
  return colorRow(label, key, byDefault, "Icon_Defaults", "setColorForSpecifier:");
}

const Lines kAppearance = {groupRow("Appearance"), switchRow("Use Custom Size", "usesCustomIconSize")};
const Lines kCustomSize = {groupRow("Custom Icon Scale"),
                           typedSliderRow("Icon Scale", "customIconScaleSize", "1.0", "0.1", "2.0")};
const Lines kBadges = {groupRow("Badges"), switchRow("Hide All", "hidesAllIconBadges"),
                       switchRow("Hide On Docked Icons", "hideDockBadges"),
                       switchRow("Hide On Folder Icons", "hideFolderBadges"),
                       switchRow("Use Custom Color", "userRequestsColoredBadges")};
const Lines kUseBadge = {switchRow("Add Badge Border", "userRequestsBadgeBorder"),
                         color("Border Color", "iconBadgeBorderColor", "#ffffff")};
const Lines kColorChoice = {
    groupRow(""),
    R"(PSSegmentCell {"default":2,"key":"userStyleForIconBadgeColoring","label":"Color Badges via"} set get values [1,2] titles ["Custom Color","Dominant App Color"])"};
const Lines kCustomColor = {color("Custom Color", "iconBadgeColor", "#ff0303")};
const Lines kBehaviorAndDots = {
    groupRow("Behavior"),
    switchRow("Don't Darken With Tap", "disablesShadowWhenTapped"),
    switchRow("Suppress Icon Jittering", "supressesIconJittering"),
    groupRow("Icon Label Dots",
             "Quellar makes two new types of icon dots available. Notification Indicators are perfect for when hiding "
             "icon badges but still want a minimal way of knowing a notifiaction exists. Running indicators are just "
             "fun to have."),
    switchRow("Hide Blue Update Dot", "disablesBlueUpdateDot"),
    switchRow("Hide Orange Beta Dot", "disablesOrangeBetaDot"),
    switchRow("Use Notification Indicator Dot", "userRequestsNotificationIndicatorDot"),
    switchRow("Use Running Indicator Dot", "userRequestsRunningIndicatorDot"),
    switchRow("Use Custom Colors", "useCustomLabelIndicatorColors")};
const Lines kDotColors = {color("Beta Dot", "userIconBetaDotColor", "#ffc103"),
                          color("Notification Indicator Dot", "userNotificationIndicatorDotColor", "#ff0000"),
                          color("Recently Updated Dot", "", "#0362ff"),
                          color("Running Indicator Dot", "userRunningIndicatorDotColor", "#ffffff")};
const Lines kLabels = {groupRow("Labels"), switchRow("Disable Label Shadow", "hidesLabelShadow"),
                       switchRow("Hide All", "hidesAllIconLabels"),
                       switchRow("Hide On Docked Icons", "hidesDockedIconLabels"),
                       switchRow("Hide On Folder Icons", "hidesFolderIconLabels")};

Lines joined(std::initializer_list<Lines> parts) {
  Lines all;
  for (const Lines& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

class IconsPage : public testing::Test {
 protected:
  Panel panel;

  platform::PSListController& open(const Dictionary& stored = {}) {
    if (!stored.empty()) panel.store("Icon_Defaults", stored);
    return panel.open(kPage);
  }
  PSSpecifier& rowNamed(std::string_view label) {
    for (const auto& row : panel.host.topList()->specifiers()) {
      if (row->name() == label) return *row;
    }
    throw std::out_of_range(std::string(label));
  }
  void tap(std::string_view label) {
    auto& page = *panel.host.topList();
    page.userTapsRow(*page.indexOfSpecifier(rowNamed(label)));
  }
  void pick(const platform::Color& picked) { panel.host.navigation().completeColorDialog(picked); }
  const platform::Dialog& dialog() { return *panel.host.navigation().dialog(); }
  std::string swatchOf(std::string_view label) {
    const auto& swatch = dynamic_cast<cells::KVQuellarColorPreviewTableCell&>(*rowNamed(label).cell()).swatch();
    return hexString(swatch.colorAt(swatch.pixelWidth / 2, swatch.pixelHeight / 2));
  }
};

TEST_F(IconsPage, ShowsItsRowsInOrderOnAFreshInstall) {
  EXPECT_EQ(wholeRows(open()), joined({kAppearance, kBadges, kBehaviorAndDots, kLabels}));
}

TEST_F(IconsPage, ShowsEverySwitchOffTheScaleAtOneAndTheDominantColorOnAFreshInstall) {
  open();
  for (const auto& row : panel.host.topList()->specifiers()) {
    if (row->cellType() != platform::PSCellType::PSSwitchCell) continue;
    EXPECT_EQ(frame::shownValue(*row), Value(0));
  }
  panel.set("usesCustomIconSize", true);
  panel.set("userRequestsColoredBadges", true);
  EXPECT_EQ(frame::shownValue(panel.row("customIconScaleSize")), Value(1.0));
  EXPECT_EQ(dynamic_cast<cells::KVQuellarSliderCell&>(*panel.row("customIconScaleSize").cell()).value(), 1.0);
  EXPECT_EQ(frame::shownValue(panel.row("userStyleForIconBadgeColoring")), Value(2));
  EXPECT_EQ(panel.stored("Icon_Defaults"), R"({"userRequestsColoredBadges":true,"usesCustomIconSize":true})");
}

TEST_F(IconsPage, OpensWithEachBlockUnderItsSwitchWhereThatIsStoredOn) {
  auto& page = open({{"usesCustomIconSize", true},
                     {"userRequestsColoredBadges", 1},
                     {"userStyleForIconBadgeColoring", 1},
                     {"useCustomLabelIndicatorColors", true}});
  EXPECT_EQ(wholeRows(page), joined({kAppearance, kCustomSize, kBadges, kUseBadge, kColorChoice, kCustomColor,
                                     kBehaviorAndDots, kDotColors, kLabels}));
}

TEST_F(IconsPage, PutsARespringButtonAtTheRightAndSaveWhileTheKeyboardIsUp) {
  panel.bundles.texts = {{"Respring", "Neustart"}, {"Save", "Sichern"}};
  panel.host.open(kPage);
  EXPECT_THAT(panel.events(),
              ElementsAre(R"({"event":"push","page":"KVQuellarIconsListController","t":0.0})", barLine("Neustart")));
  panel.host.navigation().setKeyboardVisible(true);
  EXPECT_THAT(panel.events(), ElementsAre(keyboardLine(true), barLine("Sichern")));
  EXPECT_EQ(panel.host.topList()->navigationItem().rightBarButtonItem()->action, "Save");
  panel.host.navigation().setKeyboardVisible(false);
  EXPECT_THAT(panel.events(), ElementsAre(keyboardLine(false), barLine("Neustart")));
  const auto button = panel.host.topList()->navigationItem().rightBarButtonItem();
  EXPECT_EQ(button->action, "respring:");
  button->run();
  EXPECT_EQ(dialog().title, "Are You Sure?");
  panel.events();
  panel.host.navigation().pressDialogButton(1);
  EXPECT_THAT(
      panel.events(),
      ElementsAre(
          kDismissLine,
          R"({"event":"post","centre":"darwin","name":"com.vantorick.quellar2.respring","object":null,"userInfo":null,"immediately":false,"through":"centre","t":0.0})"));
}

TEST_F(IconsPage, AsksForAnIconLayoutAfterEveryWriteButTheOneOfTheJitterSwitch) {
  for (const auto* key :
       {"hideDockBadges", "hideFolderBadges", "userRequestsBadgeBorder", "disablesShadowWhenTapped",
        "disablesBlueUpdateDot", "disablesOrangeBetaDot", "userRequestsNotificationIndicatorDot",
        "userRequestsRunningIndicatorDot", "hidesLabelShadow", "hidesDockedIconLabels", "hidesFolderIconLabels"}) {
    Panel each;
    each.store("Icon_Defaults", Dictionary{{"userRequestsColoredBadges", true}});
    each.open(kPage);
    each.set(key, true);
    const Dictionary expected{{"userRequestsColoredBadges", true}, {key, true}};
    EXPECT_THAT(each.events(), ElementsAre(write(dump(host::headless::toJson(Value(expected)))), darwinLine("settings"),
                                           darwinLine("iconlayout")))
        << key;
    each.advance(1s);
    EXPECT_THAT(each.events(), IsEmpty()) << key;
  }
  open();
  panel.set("supressesIconJittering", true);
  panel.advance(1s);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"supressesIconJittering":true})"), darwinLine("settings")));
}

TEST_F(IconsPage, ClearsTheDockAndFolderSwitchesWhenAllLabelsAreHidden) {
  open({{"hidesDockedIconLabels", true}, {"hideDockBadges", true}, {"hideFolderBadges", true}});
  panel.set("hidesAllIconLabels", true);
  EXPECT_THAT(
      panel.events(),
      ElementsAre(
          write(
              R"({"hideDockBadges":true,"hideFolderBadges":true,"hidesAllIconLabels":true,"hidesDockedIconLabels":false,"hidesFolderIconLabels":false})"),
          darwinLine("settings"), darwinLine("iconlayout"), rowsReloadedLine()));
  panel.set("hidesDockedIconLabels", true);
  panel.events();
  panel.set("hidesAllIconLabels", false);
  EXPECT_THAT(
      panel.events(),
      ElementsAre(
          write(
              R"({"hideDockBadges":true,"hideFolderBadges":true,"hidesAllIconLabels":false,"hidesDockedIconLabels":true,"hidesFolderIconLabels":false})"),
          darwinLine("settings"), darwinLine("iconlayout")));
}

TEST_F(IconsPage, ClearsTheFolderSwitchAloneWhenAllBadgesAreHidden) {
  open({{"hideDockBadges", true}, {"hideFolderBadges", true}, {"hidesDockedIconLabels", true}});
  panel.set("hidesAllIconBadges", true);
  EXPECT_THAT(
      panel.events(),
      ElementsAre(
          write(
              R"({"hideDockBadges":true,"hideFolderBadges":false,"hidesAllIconBadges":true,"hidesDockedIconLabels":true})"),
          darwinLine("settings"), darwinLine("iconlayout"), rowsReloadedLine()));
  panel.set("hidesAllIconBadges", false);
  EXPECT_THAT(
      panel.events(),
      ElementsAre(
          write(
              R"({"hideDockBadges":true,"hideFolderBadges":false,"hidesAllIconBadges":false,"hidesDockedIconLabels":true})"),
          darwinLine("settings"), darwinLine("iconlayout")));
}

TEST_F(IconsPage, KeepsItsBlocksWhereTheyStandWhenItIsReloaded) {
  auto& page = open({{"usesCustomIconSize", true}, {"userRequestsColoredBadges", true}});
  const auto before = wholeRows(page);
  const PSSpecifier* slider = &panel.row("customIconScaleSize");
  const auto cell = slider->cell();
  panel.set("hidesAllIconLabels", true);
  EXPECT_EQ(wholeRows(page), before);
  EXPECT_EQ(&panel.row("customIconScaleSize"), slider) << "the rows of a block are those that were built first";
  EXPECT_NE(slider->cell(), cell);
}

TEST_F(IconsPage, InsertsTheScaleUnderItsSwitchAndRemovesIt) {
  auto& page = open();
  panel.set("usesCustomIconSize", true);
  EXPECT_THAT(panel.events(),
              ElementsAre(write(R"({"usesCustomIconSize":true})"), darwinLine("settings"), darwinLine("iconlayout"),
                          insertLine("usesCustomIconSize", 2, R"(["Custom Icon Scale","Icon Scale"])")));
  EXPECT_EQ(wholeRows(page), joined({kAppearance, kCustomSize, kBadges, kBehaviorAndDots, kLabels}));
  panel.set("usesCustomIconSize", false);
  EXPECT_THAT(panel.events(),
              ElementsAre(write(R"({"usesCustomIconSize":false})"), darwinLine("settings"), darwinLine("iconlayout"),
                          removeLine(2, R"(["Custom Icon Scale","Icon Scale"])")));
  EXPECT_EQ(wholeRows(page), joined({kAppearance, kBadges, kBehaviorAndDots, kLabels}));
}

TEST_F(IconsPage, PutsTheBorderRowsAboveTheColoringChoice) {
  auto& page = open();
  panel.set("userRequestsColoredBadges", true);
  EXPECT_THAT(
      panel.events(),
      ElementsAre(write(R"({"userRequestsColoredBadges":true})"), darwinLine("settings"), darwinLine("iconlayout"),
                  darwinLine("badgeupdate"), insertLine("userRequestsColoredBadges", 7, R"(["","Color Badges via"])"),
                  insertLine("userRequestsColoredBadges", 7, R"(["Add Badge Border","Border Color"])")));
  EXPECT_EQ(wholeRows(page), joined({kAppearance, kBadges, kUseBadge, kColorChoice, kBehaviorAndDots, kLabels}));
  panel.set("userRequestsColoredBadges", false);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"userRequestsColoredBadges":false})"), darwinLine("settings"),
                                          darwinLine("iconlayout"), darwinLine("badgeupdate"),
                                          removeLine(7, R"(["Add Badge Border","Border Color"])"),
                                          removeLine(7, R"(["","Color Badges via"])")));
  EXPECT_EQ(wholeRows(page), joined({kAppearance, kBadges, kBehaviorAndDots, kLabels}));
}

TEST_F(IconsPage, ListsTheBadgeRowsTwiceWhenTheirSwitchIsSetOnWhileItIsOn) {
  // The colouring choice does not stand right after the switch, so it is inserted again, and then the border rows are.
  auto& page = open({{"userRequestsColoredBadges", true}});
  panel.set("userRequestsColoredBadges", true);
  EXPECT_EQ(wholeRows(page), joined({kAppearance, kBadges, kUseBadge, kColorChoice, kUseBadge, kColorChoice,
                                     kBehaviorAndDots, kLabels}));
}

TEST_F(IconsPage, InsertsTheBadgeColorUnderTheChoiceForACustomColorAndRemovesItForTheDominantOne) {
  auto& page = open({{"userRequestsColoredBadges", true}});
  panel.set("userStyleForIconBadgeColoring", 1);
  EXPECT_THAT(panel.events(),
              ElementsAre(write(R"({"userRequestsColoredBadges":true,"userStyleForIconBadgeColoring":1})"),
                          darwinLine("settings"), darwinLine("iconlayout"), darwinLine("badgeupdate"),
                          insertLine("userStyleForIconBadgeColoring", 11, R"(["Custom Color"])")));
  EXPECT_EQ(wholeRows(page),
            joined({kAppearance, kBadges, kUseBadge, kColorChoice, kCustomColor, kBehaviorAndDots, kLabels}));
  panel.set("userStyleForIconBadgeColoring", 2);
  EXPECT_THAT(panel.events(),
              ElementsAre(write(R"({"userRequestsColoredBadges":true,"userStyleForIconBadgeColoring":2})"),
                          darwinLine("settings"), darwinLine("iconlayout"), darwinLine("badgeupdate"),
                          removeLine(11, R"(["Custom Color"])")));
  // It is removed although it is not listed, and so nothing happens.
  panel.set("userStyleForIconBadgeColoring", 2);
  EXPECT_THAT(panel.events(),
              ElementsAre(write(R"({"userRequestsColoredBadges":true,"userStyleForIconBadgeColoring":2})"),
                          darwinLine("settings"), darwinLine("iconlayout"), darwinLine("badgeupdate")));
}

TEST_F(IconsPage, ListsTheBadgeColorByItsStyleAloneAndNeverRemovesItWithTheSwitch) {
  for (const Value& style : {Value(1), Value(1.0)}) {
    Panel each;
    each.store("Icon_Defaults", Dictionary{{"userStyleForIconBadgeColoring", style}});
    auto& page = each.open(kPage);
    const auto closed = joined({kAppearance, kBadges, kCustomColor, kBehaviorAndDots, kLabels});
    EXPECT_EQ(wholeRows(page), closed);
    each.set("userRequestsColoredBadges", true);
    EXPECT_EQ(wholeRows(page),
              joined({kAppearance, kBadges, kUseBadge, kColorChoice, kCustomColor, kBehaviorAndDots, kLabels}));
    each.set("userRequestsColoredBadges", false);
    EXPECT_EQ(wholeRows(page), closed);
  }
}

TEST_F(IconsPage, ListsNoBadgeColorForAStoredStyleThatIsNotTheCustomOne) {
  for (const Value& style : {Value(2), Value(0), Value(3), Value("1"), Value(platform::Array{1})}) {
    Panel each;
    each.store("Icon_Defaults", Dictionary{{"userStyleForIconBadgeColoring", style}});
    EXPECT_EQ(wholeRows(each.open(kPage)), joined({kAppearance, kBadges, kBehaviorAndDots, kLabels}));
  }
}

TEST_F(IconsPage, InsertsTheDotColorsUnderTheirSwitchAndRemovesThem) {
  auto& page = open();
  const std::string labels =
      R"(["Beta Dot","Notification Indicator Dot","Recently Updated Dot","Running Indicator Dot"])";
  panel.set("useCustomLabelIndicatorColors", true);
  EXPECT_THAT(panel.events(),
              ElementsAre(write(R"({"useCustomLabelIndicatorColors":true})"), darwinLine("settings"),
                          darwinLine("iconlayout"), insertLine("useCustomLabelIndicatorColors", 16, labels)));
  EXPECT_EQ(wholeRows(page), joined({kAppearance, kBadges, kBehaviorAndDots, kDotColors, kLabels}));
  panel.set("useCustomLabelIndicatorColors", false);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"useCustomLabelIndicatorColors":false})"), darwinLine("settings"),
                                          darwinLine("iconlayout"), removeLine(16, labels)));
}

TEST_F(IconsPage, SavesADraggedScaleAsAReal) {
  open({{"usesCustomIconSize", true}});
  panel.host.topList()->userMovesSlider(panel.row("customIconScaleSize"), 1.25);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"customIconScaleSize":1.25,"usesCustomIconSize":true})"),
                                          darwinLine("settings"), darwinLine("iconlayout")));
  panel.host.topList()->userMovesSlider(panel.row("customIconScaleSize"), 5);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"customIconScaleSize":2.0,"usesCustomIconSize":true})"),
                                          darwinLine("settings"), darwinLine("iconlayout")));
  panel.advance(1s);
  EXPECT_THAT(panel.events(), IsEmpty());
}

TEST_F(IconsPage, SavesATypedScaleAndDrawsTheSliderAnewAFifthOfASecondLater) {
  open({{"usesCustomIconSize", true}});
  auto cell = std::dynamic_pointer_cast<cells::KVQuellarSliderCell>(panel.row("customIconScaleSize").cell());
  cell->presentPopup();
  EXPECT_THAT(
      panel.events(),
      ElementsAre(
          R"({"event":"dialog","kind":"alert","title":"Icon Scale","message":"Please enter a value between 0.1 and 2.0.","buttons":[{"title":"Cancel","style":"cancel"},{"title":"Enter","style":"default"}],"text":"","keyboardType":"numberPad","accessory":["Point"],"anchor":null,"t":0.0})",
          keyboardLine(true), barLine("Save")));
  panel.host.navigation().setDialogText("1.3");
  panel.host.navigation().pressDialogButton(1);
  EXPECT_THAT(panel.events(),
              ElementsAre(kDismissLine,
                          processLine("sliderValueChanged", R"("customIconScaleSize")",
                                      R"({"newValue":1.2999999523162842,"settingsKey":"customIconScaleSize"})"),
                          write(R"({"customIconScaleSize":1.2999999523162842,"usesCustomIconSize":true})"),
                          darwinLine("settings"), darwinLine("iconlayout"), keyboardLine(false), barLine("Respring")));
  EXPECT_EQ(cell->value(), 1.0);
  panel.advance(200ms - 1ns);
  EXPECT_THAT(panel.events(), IsEmpty());
  panel.advance(1ns);
  EXPECT_THAT(panel.events(), ElementsAre(rowReloadedLine("customIconScaleSize", "0.2")));
  const auto fresh = std::dynamic_pointer_cast<cells::KVQuellarSliderCell>(panel.row("customIconScaleSize").cell());
  EXPECT_NE(fresh, cell);
  EXPECT_EQ(fresh->value(), 1.2999999523162842);
}

TEST_F(IconsPage, StartsTheColorDialogFromTheStoredColorElseFromBlack) {
  struct Case {
    std::optional<Value> stored;
    const char* start;
    double alpha;
  };
  for (const Case& each :
       {Case{std::nullopt, "#000000", 1}, Case{"#0e7afe", "#0e7afe", 1}, Case{"0E7AFE", "#0e7afe", 1},
        Case{"#ff0000:0.5", "#ff0000", 0.5}, Case{"#ff0000:2", "#000000", 1}, Case{"#ff0000:", "#000000", 1},
        Case{"#ff00", "#000000", 1}, Case{"#ff00000", "#000000", 1}, Case{"red", "#000000", 1}, Case{"", "#000000", 1},
        Case{"##ff000", "#000000", 1}, Case{"#-f0000", "#000000", 1}, Case{"#ff0000:nan", "#000000", 1},
        Case{5, "#000000", 1}, Case{platform::Array{}, "#000000", 1}}) {
    Panel fresh;
    Dictionary stored{{"useCustomLabelIndicatorColors", true}};
    if (each.stored) stored.insert_or_assign("userRunningIndicatorDotColor", *each.stored);
    fresh.store("Icon_Defaults", stored);
    auto& page = fresh.open(kPage);
    page.userTapsRow(19);
    const auto& color = fresh.host.navigation().dialog()->color;
    ASSERT_TRUE(color);
    const std::string what = each.stored ? dump(host::headless::toJson(*each.stored)) : "nothing";
    EXPECT_EQ(hexString(color->start), each.start) << what;
    EXPECT_EQ(color->start.alpha, each.alpha) << what;
    EXPECT_TRUE(color->showAlpha);
  }
}

TEST_F(IconsPage, StoresAPickedColorAndDrawsThePageAnewAFifthOfASecondLater) {
  open({{"userRequestsColoredBadges", true}});
  EXPECT_EQ(swatchOf("Border Color"), "#ffffff");
  const PSSpecifier::Pointer row = rowNamed("Border Color").shared_from_this();
  tap("Border Color");
  EXPECT_THAT(
      panel.events(),
      ElementsAre(
          R"({"event":"dialog","kind":"color","title":"","message":"","buttons":[{"title":"Cancel","style":"cancel"}],"text":null,"keyboardType":"default","accessory":[],"anchor":null,"start":"#000000","startAlpha":1.0,"showAlpha":true,"t":0.0})"));
  pick({18, 52, 86, 1});
  EXPECT_THAT(panel.events(),
              ElementsAre(kDismissLine, write(R"({"iconBadgeBorderColor":"#123456","userRequestsColoredBadges":true})"),
                          notifyPostLine("settings")));
  panel.advance(200ms - 1ns);
  EXPECT_THAT(panel.events(), IsEmpty());
  EXPECT_EQ(swatchOf("Border Color"), "#ffffff");
  panel.advance(1ns);
  EXPECT_THAT(panel.events(), ElementsAre(rowsReloadedLine("0.2"), darwinLine("badgeupdate", "0.2")));
  EXPECT_EQ(swatchOf("Border Color"), "#123456");
  EXPECT_NE(rowNamed("Border Color").shared_from_this(), row) << "the blocks are built anew";
}

TEST_F(IconsPage, AppendsThePickedAlphaWhereItIsBelowOne) {
  open({{"useCustomLabelIndicatorColors", true}});
  tap("Beta Dot");
  pick({255, 0, 0, 0.5});
  EXPECT_EQ(panel.stored("Icon_Defaults"),
            R"({"useCustomLabelIndicatorColors":true,"userIconBetaDotColor":"#ff0000:0.50"})");
  panel.advance(1s);
  EXPECT_EQ(swatchOf("Beta Dot"), "#ff0000");
  tap("Beta Dot");
  EXPECT_EQ(dialog().color->start, (platform::Color{255, 0, 0, 0.5}));
}

TEST_F(IconsPage, StoresTheColorOfTheRecentlyUpdatedDotUnderTheEmptyKey) {
  open({{"useCustomLabelIndicatorColors", true}});
  EXPECT_EQ(swatchOf("Recently Updated Dot"), "#0362ff");
  tap("Recently Updated Dot");
  panel.events();
  pick({1, 2, 3, 1});
  panel.advance(1s);
  EXPECT_THAT(panel.events(),
              ElementsAre(kDismissLine, write(R"({"":"#010203","useCustomLabelIndicatorColors":true})"),
                          notifyPostLine("settings"), rowsReloadedLine("0.2"), darwinLine("badgeupdate", "0.2")));
  EXPECT_EQ(swatchOf("Recently Updated Dot"), "#010203");
  tap("Recently Updated Dot");
  EXPECT_EQ(dialog().color->start, (platform::Color{1, 2, 3, 1}));
}

TEST_F(IconsPage, WritesNothingWhereTheColorDialogIsCancelled) {
  open({{"useCustomLabelIndicatorColors", true}});
  tap("Beta Dot");
  panel.events();
  panel.host.navigation().pressDialogButton(0);
  panel.advance(1s);
  EXPECT_THAT(panel.events(), ElementsAre(kDismissLine));
}

TEST_F(IconsPage, UpdatesTheBadgesAlthoughItIsGoneBeforeTheDelayIsOver) {
  open({{"useCustomLabelIndicatorColors", true}});
  tap("Beta Dot");
  pick({1, 2, 3, 1});
  panel.host.navigation().popViewController(true);
  panel.events();
  panel.advance(1s);
  EXPECT_THAT(panel.events(), ElementsAre(darwinLine("badgeupdate", "0.2")));
}

}  // namespace icons_page_test
}  // namespace quellar::tests

// SPDX-License-Identifier: MIT
#include "frame/list_controller.h"
#include "host/headless/row_json.h"
#include "panel_system/page_lines.h"

namespace quellar::tests {
namespace flip_toggle_colors_page_test {

using namespace std::chrono_literals;
using platform::Array;
using platform::Color;
using platform::Dictionary;
using platform::Value;

constexpr auto kPage = "KVQuellarFCCGlintListController";
constexpr auto kColors = "ToggleColoring_Defaults";
constexpr auto kControlCenter = "ControlCenter_Defaults";
constexpr auto kSwitch = "usesCustomCCToggleColors";
constexpr auto kSwitchesFile = "/Library/Switches/switches.plist";
constexpr auto kSiblingFile = "/private/var/mobile/Library/Preferences/com.vantorick.glint2.plist";
const std::string kGlyph = "/System/Library/Glyphs/wifi.png";
const std::string kLaterTogglesPost = darwinPost("com.vantorick.quellar2.togglesupdate", "0.1");

std::string color(const std::string& title, const std::string& identifier, const std::string& icon = "") {
  return colorRow(title, identifier, "#000000", kColors, "setColorForFlipswitchSpecifier:", icon);
}

/// The page with these colour rows.
Lines pageOf(const Lines& colors) {
  const Lines rows = {
      group(),
      toggle("Use Custom Colors", kSwitch),
      group("Custom Colors"),
      group("Import Colors From"),
      rowLine("PSButtonCell", "Glint 2", "does handleImportingGlint2Colors:",
              {{"label", "Glint 2"}, {"iconImage", image(kImages + "qlrGlint2Icon.png")}}),
  };
  return with(rows, 3, colors);
}

struct SwitchesPanel : Panel {
  SwitchesPanel() {
    files.propertyLists[kSwitchesFile] =
        Array{Dictionary{{"identifier", "com.example.wifi"}, {"title", "Wi-Fi"}, {"glyph", kGlyph}},
              Dictionary{{"identifier", "airplane"}, {"title", "Airplane"}},
              Dictionary{{"identifier", "lte"}, {"title", "LTE"}, {"glyph", "/missing.png"}}};
    files.missingImages.insert("/missing.png");
  }
  std::string swatch(std::string_view name) {
    return host::headless::cellJson(*host.topList()->specifiers()[placeOf(*this, name)])["swatch"]["color"];
  }
};

TEST(FlipToggleColorsPage, ListsTheSwitchesOfTheRegistryInItsOrder) {
  SwitchesPanel panel;
  EXPECT_EQ(rowLines(panel.open(kPage)),
            pageOf({color("Wi-Fi", "com.example.wifi", kGlyph), color("Airplane", "airplane"), color("LTE", "lte")}));
}

TEST(FlipToggleColorsPage, FlattensTheGlyphsToBlack) {
  SwitchesPanel panel;
  auto& page = panel.open(kPage);
  const auto& icon = std::get<platform::Image>(*page.specifiers()[3]->propertyForKey("iconImage"));
  EXPECT_EQ(icon, (platform::Image{.path = kGlyph, .flatColor = "#000000"}));
  // The sibling's icon keeps its colours.
  const auto& sibling = std::get<platform::Image>(*page.specifiers().back()->propertyForKey("iconImage"));
  EXPECT_EQ(sibling.flatColor, std::nullopt);
}

TEST(FlipToggleColorsPage, ShowsNoSwitchesWithoutTheRegistry) {
  Panel missing;
  EXPECT_EQ(rowLines(missing.open(kPage)), pageOf({}));
  for (const Value& registry : {Value(Array{}), Value(Dictionary{{"identifier", "x"}}), Value("x"), Value(1)}) {
    Panel panel;
    panel.files.propertyLists[kSwitchesFile] = registry;
    EXPECT_EQ(rowLines(panel.open(kPage)), pageOf({}));
  }
}

TEST(FlipToggleColorsPage, PassesOverEntriesOfAnotherShape) {
  Panel panel;
  panel.files.propertyLists[kSwitchesFile] =
      Array{"text",
            7,
            Dictionary{{"title", "No identifier"}},
            Dictionary{{"identifier", 5}, {"title", "A number"}},
            Dictionary{{"identifier", "untitled"}},
            Dictionary{{"identifier", "odd"}, {"title", 5}, {"glyph", Array{}}},
            Dictionary{{"identifier", "good"}, {"title", "Good"}, {"more", true}}};
  EXPECT_EQ(rowLines(panel.open(kPage)),
            pageOf({color("untitled", "untitled"), color("odd", "odd"), color("Good", "good")}));
}

TEST(FlipToggleColorsPage, StoresUnderOddIdentifiersAsTheyStand) {
  const std::string long_(5000, 'i');
  for (const std::string& identifier :
       {std::string(), long_, std::string("a/../b"), std::string("\u00dc\u6f22\U0001F600")}) {
    Panel panel;
    panel.files.propertyLists[kSwitchesFile] = Array{Dictionary{{"identifier", identifier}, {"title", "Odd"}}};
    panel.open(kPage);
    tap(panel, "Odd");
    panel.host.navigation().completeColorDialog(Color{1, 2, 3, 1});
    EXPECT_EQ(panel.preferences.copyAppValue(kColors, "com.vantorick.quellar2"),
              Value(Dictionary{{identifier, "#010203"}}));
  }
}

TEST(FlipToggleColorsPage, LeavesTheTitlesOfTheSwitchesAsTheRegistryGivesThem) {
  SwitchesPanel panel;
  EXPECT_EQ(lookupsOf(panel, kPage), (std::set<std::string>{"Use Custom Colors", "Custom Colors", "Import Colors From",
                                                            "Glint 2", "Available Switches"}));
}

TEST(FlipToggleColorsPage, HasItsLocalisedTitle) {
  SwitchesPanel panel;
  panel.bundles.texts = {{"Available Switches", "Schalter"}};
  EXPECT_EQ(panel.open(kPage).title(), "Schalter");
}

TEST(FlipToggleColorsPage, IsKnownByTheDictionaryThatItsWritesReplace) {
  const Panel panel;
  EXPECT_EQ(panel.host.registry().find("Available Switches")->page->className, kPage);
  EXPECT_EQ(panel.host.registry().find(kPage)->page->defaultsKey, kControlCenter);
}

TEST(FlipToggleColorsPage, WritesTheColorsOverTheControlCentersDictionary) {
  SwitchesPanel panel;
  panel.store(kColors, Dictionary{{"airplane", "#112233"}, {"foreign", 5}});
  panel.store(kControlCenter, Dictionary{{"userDisablesBlur", true}, {kSwitch, false}});
  panel.open(kPage);
  auto& row = panel.row(kSwitch);
  EXPECT_EQ(row.getter()(row), Value(false));
  panel.set(kSwitch, true);
  EXPECT_EQ(panel.events(), (Lines{write(kControlCenter, R"({"airplane":"#112233","foreign":5})"), kSettingsPost}));
  EXPECT_EQ(panel.stored(kColors), R"({"airplane":"#112233","foreign":5})");
  EXPECT_EQ(row.getter()(row), Value(true));
  panel.advance(10s);
  EXPECT_EQ(panel.events(), Lines());

  // A new page reads the store, which does not hold the switch.
  panel.open(kPage);
  auto& fresh = panel.row(kSwitch);
  EXPECT_EQ(fresh.getter()(fresh), std::nullopt);
}

TEST(FlipToggleColorsPage, StartsWithEmptyDictionariesWhereNoneAreStored) {
  for (const auto& stored : {std::optional<Value>(), std::optional<Value>("x"), std::optional<Value>(Array{1})}) {
    SwitchesPanel panel;
    if (stored) {
      panel.store(kColors, *stored);
      panel.store(kControlCenter, *stored);
    }
    panel.open(kPage);
    auto& row = panel.row(kSwitch);
    EXPECT_EQ(row.getter()(row), std::nullopt);
    panel.set(kSwitch, true);
    EXPECT_EQ(panel.events(), (Lines{write(kControlCenter, "{}"), kSettingsPost}));
    EXPECT_EQ(row.getter()(row), Value(true));
    panel.set(kSwitch, false);
    EXPECT_EQ(panel.events(), (Lines{write(kControlCenter, "{}"), kSettingsPost}));
    EXPECT_EQ(row.getter()(row), Value(false));
  }
}

TEST(FlipToggleColorsPage, ReadsItsSwitchFromTheControlCenterAlone) {
  SwitchesPanel panel;
  panel.store(kColors, Dictionary{{kSwitch, true}});
  panel.open(kPage);
  auto& row = panel.row(kSwitch);
  EXPECT_EQ(row.getter()(row), std::nullopt);
}

TEST(FlipToggleColorsPage, StartsTheColorDialogFromTheStoredColorOrBlackWithAlpha) {
  SwitchesPanel panel;
  panel.store(kColors, Dictionary{{"airplane", "ff3b30:0.25"}, {"lte", "nonsense"}});
  panel.open(kPage);
  tap(panel, "Wi-Fi");
  EXPECT_EQ(panel.events(), (Lines{colorDialog("#000000", true)}));
  panel.host.navigation().dismiss();
  panel.events();
  tap(panel, "LTE");
  EXPECT_EQ(panel.events(), (Lines{colorDialog("#000000", true)}));
  panel.host.navigation().dismiss();
  panel.events();
  tap(panel, "Airplane");
  EXPECT_EQ(panel.events(), (Lines{colorDialog("#ff3b30", true, "0.25")}));
}

TEST(FlipToggleColorsPage, StoresAPickedColorWithTheColorsAndDrawsItATenthOfASecondLater) {
  SwitchesPanel panel;
  panel.store(kControlCenter, Dictionary{{"userDisablesBlur", true}});
  panel.open(kPage);
  tap(panel, "Airplane");
  panel.events();
  panel.host.navigation().completeColorDialog(Color{255, 59, 48, 0.5});
  EXPECT_EQ(panel.events(), (Lines{kDismiss, write(kColors, R"({"airplane":"#ff3b30:0.50"})"),
                                   systemPost("com.vantorick.quellar2.settings")}));
  EXPECT_EQ(panel.stored(kControlCenter), R"({"userDisablesBlur":true})");
  panel.advance(99'999'999ns);
  EXPECT_EQ(panel.events(), Lines());
  EXPECT_EQ(panel.swatch("Airplane"), "#000000");
  panel.advance(1ns);
  EXPECT_EQ(panel.events(), (Lines{kLaterTogglesPost, reload("specifiers", "0.1")}));
  EXPECT_EQ(panel.swatch("Airplane"), "#ff3b30");
  panel.advance(10s);
  EXPECT_EQ(panel.events(), Lines());
}

TEST(FlipToggleColorsPage, ImportsTheSiblingsColorsAndPostsOnTheDarwinCentre) {
  SwitchesPanel panel;
  panel.files.propertyLists[kSiblingFile] = Dictionary{{"airplane", "#abcdef"}, {"unrelated", Array{1}}};
  panel.store(kColors, Dictionary{{"lte", "#010101"}});
  panel.open(kPage);
  tap(panel, "Glint 2");
  EXPECT_EQ(panel.events(),
            (Lines{write(kColors, R"({"airplane":"#abcdef","lte":"#010101","unrelated":[1]})"), kSettingsPost}));
  panel.advance(99'999'999ns);
  EXPECT_EQ(panel.events(), Lines());
  panel.advance(1ns);
  EXPECT_EQ(panel.events(), (Lines{kLaterTogglesPost, reload("specifiers", "0.1")}));
  EXPECT_EQ(panel.swatch("Airplane"), "#abcdef");
  EXPECT_EQ(panel.stored(kControlCenter), "null");
}

TEST(FlipToggleColorsPage, StoresAndPostsWhereTheSiblingsFileGivesNothing) {
  for (const auto& file : {std::optional<Value>(), std::optional<Value>("text"), std::optional<Value>(Array{"x"})}) {
    SwitchesPanel panel;
    if (file) panel.files.propertyLists[kSiblingFile] = *file;
    panel.open(kPage);
    tap(panel, "Glint 2");
    EXPECT_EQ(panel.events(), (Lines{write(kColors, "{}"), kSettingsPost}));
    panel.advance(100ms);
    EXPECT_EQ(panel.events(), (Lines{kLaterTogglesPost, reload("specifiers", "0.1")}));
  }
}

TEST(FlipToggleColorsPage, DoesNotShareItsSwitchWithTheToggleColorsPage) {
  SwitchesPanel panel;
  panel.open("KVQuellarGlintListController");
  panel.set(kSwitch, true);
  panel.open(kPage);
  auto& row = panel.row(kSwitch);
  EXPECT_EQ(row.getter()(row), std::nullopt);
  panel.set(kSwitch, true);
  EXPECT_EQ(panel.stored(kControlCenter), R"({"usesCustomCCToggleColors":true})") << "the colours, with their switch";
  panel.set(kSwitch, false);
  EXPECT_EQ(panel.stored(kControlCenter), R"({"usesCustomCCToggleColors":true})");
}

}  // namespace flip_toggle_colors_page_test
}  // namespace quellar::tests

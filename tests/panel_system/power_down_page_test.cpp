// SPDX-License-Identifier: MIT
#include <ranges>

#include "frame/list_controller.h"
#include "host/headless/row_json.h"
#include "panel_system/page_lines.h"

namespace quellar::tests {
namespace power_down_page_test {

using namespace std::chrono_literals;
using platform::Color;
using platform::Dictionary;

constexpr auto kPage = "KVQuellarPowerDownListController";
constexpr auto kDefaults = "Powerdown_Defaults";
constexpr auto kTint = "userRequestsCustomPowerOffTint";
constexpr auto kText = "userRequestsCustomPowerOffText";
constexpr auto kRespringSlider = "userRequestsRespringSlider";
constexpr auto kRebootSlider = "userRequestsRebootSlider";
const std::string kRespringFooter = "Enabling 'slide to respring' will add a new slider below the power down slider";
const std::string kRebootFooter =
    "Enabling 'slide to reboot' will add a new slider below the respring slider if enabled otherwise below power down "
    "slider";

const Lines kClosed = {
    group("slide to power off"),         toggle("Custom Knob Tint", kTint),
    toggle("Custom Slider Text", kText), group("slide to respring", kRespringFooter),
    toggle("Enable", kRespringSlider),   group("slide to reboot", kRebootFooter),
    toggle("Enable", kRebootSlider),
};

std::string text(const std::string& key) {
  return rowLine("PSEditTextCell", "Text:", "set get", {{"label", "Text:"}, {"key", key}});
}
std::string tint(const std::string& key, const std::string& defaultColor) {
  return colorRow("Knob Image Tint", key, defaultColor, kDefaults, "setColorForSpecifier:");
}

/// One of the four blocks: where it goes on the closed page, and its rows.
struct Block {
  const char* key;
  std::size_t at;
  Lines rows;
  Lines labels;
};
const std::vector<Block> kBlocks = {
    {kTint, 2, {tint("customPowerDownSliderTint", "#ff0000")}, {"Knob Image Tint"}},
    {kText, 3, {text("customPowerDownSliderText")}, {"Text:"}},
    {kRespringSlider,
     5,
     {text("customRespringSliderText"), tint("customRespringSliderTint", "007aff")},
     {"Text:", "Knob Image Tint"}},
    {kRebootSlider,
     7,
     {text("customRebootSliderText"), tint("customRebootSliderTint", "ff3b30")},
     {"Text:", "Knob Image Tint"}},
};

TEST(PowerDownPage, ShowsItsRowsInOrderOnAFreshInstall) {
  Panel panel;
  EXPECT_EQ(rowLines(panel.open(kPage)), kClosed);
}

TEST(PowerDownPage, OpensWithEveryBlockWhoseSwitchIsStoredOn) {
  Panel panel;
  panel.store(kDefaults, Dictionary{{kTint, true}, {kText, 1}, {kRespringSlider, true}, {kRebootSlider, true}});
  Lines open = kClosed;
  for (const auto& block : std::views::reverse(kBlocks)) open = with(open, block.at, block.rows);
  EXPECT_EQ(rowLines(panel.open(kPage)), open);
}

TEST(PowerDownPage, LooksUpAllItsTexts) {
  Panel panel;
  EXPECT_EQ(lookupsOf(panel, kPage),
            (std::set<std::string>{"slide to power off", "Custom Knob Tint", "Knob Image Tint", "Custom Slider Text",
                                   "Text:", "slide to respring", kRespringFooter, "Enable", "slide to reboot",
                                   kRebootFooter}));
}

TEST(PowerDownPage, InsertsEachBlockUnderItsSwitchAndRemovesItAgain) {
  for (const Block& block : kBlocks) {
    SCOPED_TRACE(block.key);
    Panel panel;
    auto& page = panel.open(kPage);
    const auto written = [&](const char* value) {
      return write(kDefaults, std::string("{\"") + block.key + "\":" + value + "}");
    };
    panel.set(block.key, true);
    EXPECT_EQ(panel.events(), (Lines{written("true"), kSettingsPost, insert(block.key, block.at, block.labels)}));
    EXPECT_EQ(rowLines(page), with(kClosed, block.at, block.rows));
    panel.set(block.key, false);
    EXPECT_EQ(panel.events(), (Lines{written("false"), kSettingsPost, remove(block.at, block.labels)}));
    EXPECT_EQ(rowLines(page), kClosed);
    panel.advance(10s);
    EXPECT_EQ(panel.events(), Lines());
  }
}

TEST(PowerDownPage, StoresATextAndShowsSaveOnlyWhileTheKeyboardIsUp) {
  Panel panel;
  panel.store(kDefaults, Dictionary{{kRebootSlider, true}});
  auto& page = panel.open(kPage);
  EXPECT_FALSE(page.navigationItem().rightBarButtonItem());
  panel.type("customRebootSliderText", "again");
  EXPECT_EQ(panel.events(), (Lines{keyboard(true), rightBar("Save")}));
  const auto save = *page.navigationItem().rightBarButtonItem();
  EXPECT_EQ(save.action, "Save");
  save.run();
  EXPECT_EQ(panel.events(),
            (Lines{write(kDefaults, R"({"customRebootSliderText":"again","userRequestsRebootSlider":true})"),
                   kSettingsPost, keyboard(false), rightBar("")}));
  EXPECT_FALSE(page.navigationItem().rightBarButtonItem());
}

TEST(PowerDownPage, DrawsADefaultTintWithoutItsFirstDigitWhereItHasNoHash) {
  Panel panel;
  panel.store(kDefaults, Dictionary{{kTint, true}, {kRespringSlider, true}, {kRebootSlider, true}});
  auto& page = panel.open(kPage);
  Lines swatches;
  for (const auto& row : page.specifiers()) {
    if (row->name() == "Knob Image Tint") {
      swatches.push_back(host::headless::cellJson(*row)["swatch"].dump());
    }
  }
  EXPECT_EQ(swatches, (Lines{R"({"size":[30.0,30.0],"scale":2.0,"color":"#ff0000"})",
                             R"({"size":[30.0,30.0],"scale":2.0,"color":"#007aff"})",
                             R"({"size":[30.0,30.0],"scale":2.0,"color":"#0f3b30"})"}));
}

TEST(PowerDownPage, StartsTheColorDialogFromTheWholeColor) {
  struct Case {
    const char* key;
    const char* stored;
    const char* start;
    const char* alpha;
  };
  for (const Case& each :
       {Case{"customPowerDownSliderTint", "", "#ff0000", "1.0"}, Case{"customRespringSliderTint", "", "#007aff", "1.0"},
        Case{"customRebootSliderTint", "", "#ff3b30", "1.0"},
        Case{"customRebootSliderTint", "#0e7afe:0.25", "#0e7afe", "0.25"},
        Case{"customRebootSliderTint", "nonsense", "#ff3b30", "1.0"}}) {
    Panel panel;
    Dictionary stored{{kTint, true}, {kRespringSlider, true}, {kRebootSlider, true}};
    if (*each.stored) stored[each.key] = each.stored;
    panel.store(kDefaults, stored);
    auto& page = panel.open(kPage);
    for (std::size_t place = 0; place < page.specifiers().size(); ++place) {
      if (page.specifiers()[place]->stringForKey("colorKey") == each.key) page.userTapsRow(place);
    }
    EXPECT_EQ(panel.events(), (Lines{colorDialog(each.start, true, each.alpha)})) << each.key << " " << each.stored;
  }
}

TEST(PowerDownPage, StoresAPickedTintAndBuildsItsBlocksAndRowsAnewAFifthOfASecondLater) {
  Panel panel;
  panel.store(kDefaults, Dictionary{{kTint, true}});
  auto& page = dynamic_cast<frame::KVQuellarListController&>(panel.open(kPage));
  const auto before = page.specifiers();
  tap(panel, "Knob Image Tint");
  panel.events();
  panel.host.navigation().completeColorDialog(Color{14, 122, 254, 1});
  EXPECT_EQ(panel.events(),
            (Lines{kDismiss,
                   write(kDefaults, R"({"customPowerDownSliderTint":"#0e7afe","userRequestsCustomPowerOffTint":true})"),
                   systemPost("com.vantorick.quellar2.settings")}));
  panel.advance(199'999'999ns);
  EXPECT_EQ(panel.events(), Lines());
  EXPECT_EQ(page.specifiers(), before);
  EXPECT_EQ(host::headless::cellJson(*before[2])["swatch"]["color"], "#ff0000");
  panel.advance(1ns);
  EXPECT_EQ(panel.events(), (Lines{reload("specifiers", "0.2")}));
  EXPECT_EQ(rowLines(page), with(kClosed, 2, kBlocks[0].rows));
  EXPECT_NE(page.specifiers()[2], before[2]) << "the row of the block is a new one";
  EXPECT_EQ(page.specifiers()[2], page.dynamicSpecs("customPowerDownTintSpec")[0]);
  EXPECT_EQ(host::headless::cellJson(*page.specifiers()[2])["swatch"]["color"], "#0e7afe");
  panel.advance(10s);
  EXPECT_EQ(panel.events(), Lines());

  // The new row is the one that its switch removes and inserts.
  panel.set(kTint, false);
  EXPECT_EQ(rowLines(page), kClosed);
}

TEST(PowerDownPage, StoresThePickedAlphaBehindAColon) {
  Panel panel;
  panel.store(kDefaults, Dictionary{{kTint, true}});
  auto& page = panel.open(kPage);
  tap(panel, "Knob Image Tint");
  panel.host.navigation().completeColorDialog(Color{255, 0, 0, 0.5});
  EXPECT_EQ(panel.stored(kDefaults),
            R"({"customPowerDownSliderTint":"#ff0000:0.50","userRequestsCustomPowerOffTint":true})");
  panel.advance(200ms);
  EXPECT_EQ(host::headless::cellJson(*page.specifiers()[2])["swatch"]["color"], "#ff0000");
}

TEST(PowerDownPage, DrawsNothingAnewOnceItIsGone) {
  Panel panel;
  panel.store(kDefaults, Dictionary{{kTint, true}});
  panel.open(kPage);
  tap(panel, "Knob Image Tint");
  panel.host.navigation().completeColorDialog(Color{1, 2, 3, 1});
  panel.host.navigation().popViewController(true);
  panel.events();
  panel.advance(10s);
  EXPECT_EQ(panel.events(), Lines());
}

TEST(PowerDownPage, ReplacesAValueOfAnotherTypeOnlyWhenTheUserChangesIt) {
  Panel panel;
  panel.store(kDefaults, Dictionary{{kTint, "x"}, {"customPowerDownSliderTint", 5}, {kText, true}});
  auto& page = panel.open(kPage);
  EXPECT_EQ(rowLines(page), with(kClosed, 3, kBlocks[1].rows));
  panel.type("customPowerDownSliderText", "off");
  page.endEditing();
  EXPECT_EQ(panel.stored(kDefaults), R"({"customPowerDownSliderText":"off","customPowerDownSliderTint":5,)"
                                     R"("userRequestsCustomPowerOffText":true,"userRequestsCustomPowerOffTint":"x"})");
}

}  // namespace power_down_page_test
}  // namespace quellar::tests

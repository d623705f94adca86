// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <numbers>

#include "cells/color_preview_cell.h"
#include "frame/list_controller.h"
#include "frame/names.h"
#include "frame/row_value.h"
#include "platform/color.h"
#include "platform/navigation_controller.h"
#include "support/expectations.h"
#include "support/memory_services.h"

namespace quellar::tests {
namespace color_cell_test {

using namespace std::chrono_literals;
using namespace frame;
using cells::_accessoryImageForColor;
using cells::KVQuellarColorPreviewTableCell;
using cells::Picture;
using platform::Color;
using platform::Dictionary;
using platform::hexFromColor;
using platform::LCPParseColorString;
using testing::ElementsAre;

Color middle(const Picture& picture) {
  return picture.colorAt(picture.pixelWidth / 2, picture.pixelHeight / 2);
}

TEST(Swatch, IsDrawnInTheColorOfTheSixDigitsBehindTheFirstCharacter) {
  struct Case {
    const char* text;
    Color color;
  };
  for (const Case& each : {
           Case{"#0e7afe", {14, 122, 254, 1}},
           Case{"#0E7AFE", {14, 122, 254, 1}},
           Case{"#ff0000:0.5", {255, 0, 0, 1}},
           Case{"#ff0000:", {255, 0, 0, 1}},
           Case{"007aff", {0, 122, 255, 1}},
           Case{"ff3b30", {15, 59, 48, 1}},
           Case{"xff3b30", {255, 59, 48, 1}},
           Case{"\xc3\xa9"
                "ff3b30",
                {255, 59, 48, 1}},
           Case{"#fff", {0, 15, 255, 1}},
           Case{"#12ff3b30", {255, 59, 48, 1}},
           Case{"#ff3b3g", {15, 243, 179, 1}},
           Case{"# ff3b30", {255, 59, 48, 1}},
           Case{"#0xff3b30", {255, 59, 48, 1}},
           Case{"#fffffffff", {255, 255, 255, 1}},
           Case{"#red", {0, 0, 0, 1}},
           Case{"#-ff3b30", {0, 0, 0, 1}},
           Case{"#", {0, 0, 0, 1}},
           Case{"", {0, 0, 0, 1}},
           Case{":#ff3b30", {0, 0, 0, 1}},
       }) {
    EXPECT_EQ(middle(_accessoryImageForColor(each.text, 2)), each.color) << each.text;
  }
}

TEST(Swatch, IsThirtyPointsWideAtEveryScale) {
  for (const auto& [scale, pixels] : std::vector<std::pair<double, int>>{{1, 30}, {1.5, 45}, {2, 60}, {3, 90}}) {
    const Picture picture = _accessoryImageForColor("#ff0000", scale);
    EXPECT_EQ(picture.width, 30);
    EXPECT_EQ(picture.height, 30);
    EXPECT_EQ(picture.scale, scale);
    EXPECT_EQ(picture.pixelWidth, pixels);
    EXPECT_EQ(picture.pixelHeight, pixels);
    EXPECT_EQ(picture.pixels.size(), static_cast<std::size_t>(pixels) * static_cast<std::size_t>(pixels) * 4);
  }
}

TEST(Swatch, IsADiscWithASoftEdgeOnClearGround) {
  const Picture picture = _accessoryImageForColor("#336699", 2);
  for (const auto& [x, y] : std::array<std::pair<int, int>, 4>{{{0, 0}, {59, 0}, {0, 59}, {59, 59}}}) {
    EXPECT_EQ(picture.colorAt(x, y), (Color{0, 0, 0, 0}));
  }
  double area = 0;
  int soft = 0;
  for (int y = 0; y < 60; ++y) {
    for (int x = 0; x < 60; ++x) {
      const double alpha = picture.colorAt(x, y).alpha;
      EXPECT_EQ(alpha, picture.colorAt(59 - x, y).alpha);
      EXPECT_EQ(alpha, picture.colorAt(y, x).alpha);
      area += alpha;
      if (alpha > 0 && alpha < 1) ++soft;
    }
  }
  EXPECT_NEAR(area, std::numbers::pi * 30 * 30, 3);
  EXPECT_GT(soft, 100);
  for (const auto& [x, y] : std::array<std::pair<int, int>, 4>{{{30, 1}, {1, 30}, {58, 30}, {30, 58}}}) {
    EXPECT_EQ(picture.colorAt(x, y), (Color{51, 102, 153, 1})) << "it reaches the edges of its square";
  }
}

TEST(ColorString, IsSixDigitsWithAnOptionalMarkAndAnOptionalAlpha) {
  const Color kFallback{1, 2, 3, 1};
  struct Case {
    const char* text;
    Color color;
  };
  for (const Case& each : {
           Case{"#0e7afe", {14, 122, 254, 1}},
           Case{"0e7afe", {14, 122, 254, 1}},
           Case{"#0E7aFE", {14, 122, 254, 1}},
           Case{"#ff0000:0.5", {255, 0, 0, 0.5}},
           Case{"ff0000:0", {255, 0, 0, 0}},
           Case{"ff0000:1", {255, 0, 0, 1}},
           Case{"ff0000:1.00", {255, 0, 0, 1}},
           Case{"#ff0000:", kFallback},
           Case{"#ff0000:1.01", kFallback},
           Case{"#ff0000:-0.1", kFallback},
           Case{"#ff0000:nan", kFallback},
           Case{"#ff0000:inf", kFallback},
           Case{"#ff0000:0.5x", kFallback},
           Case{"#ff0000:0,5", kFallback},
           Case{"#ff0000:0.5:1", kFallback},
           Case{"#ff000", kFallback},
           Case{"#ff00000", kFallback},
           Case{"#fff", kFallback},
           Case{"##ff0000", kFallback},
           Case{"#ff000g", kFallback},
           Case{"#0xff00", kFallback},
           Case{"#-ff000", kFallback},
           Case{"#+ff000", kFallback},
           Case{" #ff0000", kFallback},
           Case{"#ff0000 ", kFallback},
           Case{"", kFallback},
           Case{"#", kFallback},
           Case{":", kFallback},
           Case{"red", kFallback},
           Case{"\xc3\xa9"
                "ff000",
                kFallback},
       }) {
    EXPECT_EQ(LCPParseColorString(each.text, "#010203"), each.color) << each.text;
  }
  EXPECT_EQ(LCPParseColorString("no", "#010203:0.25"), (Color{1, 2, 3, 0.25}));
  EXPECT_EQ(LCPParseColorString("no", "neither"), (Color{0, 0, 0, 1}));
}

TEST(ColorString, IsWrittenInLowerCaseAndWithTwoDecimalsOfAnAlphaBelowOne) {
  EXPECT_EQ(hexFromColor({14, 122, 254, 1}, true), "#0e7afe");
  EXPECT_EQ(hexFromColor({14, 122, 254, 0.5}, true), "#0e7afe:0.50");
  EXPECT_EQ(hexFromColor({14, 122, 254, 0.5}, false), "#0e7afe");
  EXPECT_EQ(hexFromColor({0, 0, 0, 0}, true), "#000000:0.00");
  EXPECT_EQ(hexFromColor({255, 255, 255, 0.126}, true), "#ffffff:0.13");
  EXPECT_EQ(LCPParseColorString(hexFromColor({255, 254, 0, 0.25}, true), ""), (Color{255, 254, 0, 0.25}));
}

class ColorCell : public testing::Test {
 protected:
  Panel panel;

  static const Page& page(bool showAlpha) {
    static const auto make = [](bool alpha) {
      return Page{
          .className = "Colors",
          .defaultsKey = "C_Defaults",
          .colors = {.showAlpha = alpha, .post = notifyPost(kSettings)},
          .rows = {ColorRow{
              .label = "Color", .colorKey = "color", .defaultColor = "ff3b30", .action = "setColorForSpecifier:"}}};
    };
    static const Page with = make(true);
    static const Page without = make(false);
    return showAlpha ? with : without;
  }
  KVQuellarListController& open(bool showAlpha = true) {
    auto controller = std::make_shared<KVQuellarListController>(panel.host.platform(), page(showAlpha));
    panel.host.navigation().pushViewController(controller);
    panel.events();
    return *controller;
  }
  static const KVQuellarColorPreviewTableCell& cell(KVQuellarListController& controller) {
    return dynamic_cast<const KVQuellarColorPreviewTableCell&>(*controller.specifiers()[0]->cell());
  }
};

TEST_F(ColorCell, DrawsTheDefaultColorAtTheScreensScaleWhereNoneIsStored) {
  auto& controller = open();
  EXPECT_EQ(cell(controller).className(), "KVQuellarColorPreviewTableCell");
  EXPECT_EQ(cell(controller).control(), platform::Control::color);
  EXPECT_EQ(cell(controller).swatch().scale, 2);
  EXPECT_EQ(middle(cell(controller).swatch()), (Color{15, 59, 48, 1}));
}

TEST_F(ColorCell, DrawsTheDefaultColorWhereTheDictionaryOrTheColorIsOfAnotherKind) {
  for (const Value& stored : {Value("text"), Value(Dictionary{{"color", 5}}), Value(Dictionary{{"other", "#000000"}}),
                              Value(Dictionary{{"color", platform::Array{}}})}) {
    Panel fresh;
    fresh.store("C_Defaults", stored);
    auto controller = std::make_shared<KVQuellarListController>(fresh.host.platform(), page(true));
    fresh.host.navigation().pushViewController(controller);
    EXPECT_EQ(middle(cell(*controller).swatch()), (Color{15, 59, 48, 1}));
    EXPECT_EQ(shownValue(*controller->specifiers()[0]), Value("ff3b30"));
  }
}

TEST_F(ColorCell, ReadsTheStoreAndNotThePagesDictionary) {
  auto& controller = open();
  panel.store("C_Defaults", Dictionary{{"color", Value("#112233")}});
  controller.reload();
  EXPECT_EQ(middle(cell(controller).swatch()), (Color{17, 34, 51, 1}));
  EXPECT_EQ(controller.userDefaults(), Dictionary{});
}

TEST_F(ColorCell, ShowsANewColorOnlyAfterTheDelayedReload) {
  auto& controller = open();
  controller.userTapsRow(0);
  EXPECT_EQ(panel.host.navigation().dialog()->color->start, (Color{255, 59, 48, 1})) << "the default is read whole";
  panel.events();
  panel.host.navigation().completeColorDialog({1, 2, 3, 1});
  EXPECT_EQ(middle(cell(controller).swatch()), (Color{15, 59, 48, 1}));
  panel.advance(100ms);
  EXPECT_EQ(middle(cell(controller).swatch()), (Color{1, 2, 3, 1}));
  EXPECT_THAT(panel.events(), ElementsAre(kDismissLine, writeLine("C_Defaults", R"({"color":"#010203"})"),
                                          notifyPostLine("settings"), R"({"event":"reload","what":"page","t":0.1})"));
}

TEST_F(ColorCell, StoresNoAlphaWhereTheDialogShowsNone) {
  auto& controller = open(false);
  controller.userTapsRow(0);
  EXPECT_FALSE(panel.host.navigation().dialog()->color->showAlpha);
  panel.host.navigation().completeColorDialog({1, 2, 3, 0.5});
  EXPECT_EQ(panel.stored("C_Defaults"), R"({"color":"#010203"})");
}

}  // namespace color_cell_test
}  // namespace quellar::tests

// SPDX-License-Identifier: MIT
#include "cells/slider_cell.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "frame/list_controller.h"
#include "frame/names.h"
#include "platform/navigation_controller.h"
#include "support/expectations.h"
#include "support/memory_services.h"

namespace quellar::tests {
namespace slider_cell_test {

using namespace std::chrono_literals;
using namespace frame;
using cells::floatValue;
using cells::KVQuellarSliderCell;
using platform::Color;
using platform::Dictionary;
using platform::PSSliderTableCell;
using platform::PSSpecifier;
using platform::Rect;
using testing::ElementsAre;
using testing::IsEmpty;

Row slider(const char* key, Value minimum, Value maximum) {
  return Slider{
      .label = "Factor", .key = key, .byDefault = 1, .minimum = std::move(minimum), .maximum = std::move(maximum)};
}

const Page& slidersPage() {
  static const Page page{.className = "Sliders",
                         .defaultsKey = "S_Defaults",
                         .posts = {darwin(kSettings)},
                         .savesTypedValues = true,
                         .rows = {slider("both", -10, 10), slider("keys", -5, 5), slider("none", 0, 100),
                                  slider("negate", -100, 100), slider("point", 0, 10), slider("wide", 0, 10.5),
                                  slider("negative", -0.5, 9.5), slider("fraction", 0.1, 2.0)}};
  return page;
}

class SliderCell : public testing::Test {
 protected:
  Panel panel;
  Panel pad{{.idiom = 1, .scale = 2, .width = 768}};
  Panel silent{{.idiom = std::nullopt, .scale = 2, .width = 320}};

  KVQuellarListController& open(Panel& host, const Dictionary& stored = {}) {
    host.store("S_Defaults", stored);
    auto page = std::make_shared<KVQuellarListController>(host.host.platform(), slidersPage());
    host.host.navigation().pushViewController(page);
    host.events();
    return *page;
  }
  static std::shared_ptr<KVQuellarSliderCell> cell(Panel& host, std::string_view key) {
    return std::dynamic_pointer_cast<KVQuellarSliderCell>(host.row(key).cell());
  }
  platform::NavigationController& navigation() { return panel.host.navigation(); }
  /// Types a text into the entry dialog of a row and presses "Enter"; gives the events of the press.
  std::vector<std::string> enter(std::string_view key, std::string text) {
    cell(panel, key)->presentPopup();
    navigation().setDialogText(std::move(text));
    panel.events();
    navigation().pressDialogButton(1);
    return panel.events();
  }
  static std::vector<std::string> accessory(Panel& host, std::string_view key) {
    cell(host, key)->presentPopup();
    std::vector<std::string> titles;
    for (const auto& button : host.host.navigation().dialog()->accessory) titles.push_back(button.title);
    return titles;
  }
};

TEST_F(SliderCell, LaysOutTitleTapAreaAndTints) {
  open(panel);
  const auto shown = cell(panel, "both");
  EXPECT_EQ(shown->className(), "KVQuellarSliderCell");
  EXPECT_EQ(shown->control(), platform::Control::typedSlider);
  EXPECT_EQ(shown->frame(), (Rect{0, 0, 320, 44}));
  EXPECT_EQ(shown->labelText().text, "Factor");
  EXPECT_EQ(shown->labelText().frame, (Rect{16, 5, 250, 20}));
  EXPECT_EQ(shown->labelText().color, (Color{22, 36, 51, 1}));
  EXPECT_FALSE(shown->footerText());
  EXPECT_EQ(shown->tapArea(), (Rect{270, 0, 50, 44}));
  EXPECT_EQ(shown->minimumTrackTint, (Color{65, 169, 214, 1}));
  EXPECT_EQ(shown->maximumTrackTint, (Color{22, 36, 51, 1}));
  EXPECT_TRUE(shown->showValue());
  open(pad);
  EXPECT_EQ(cell(pad, "both")->tapArea(), (Rect{718, 0, 50, 44}));
}

TEST_F(SliderCell, ShowsTheSubtitleAsAGrayFootnote) {
  auto& page = open(panel);
  panel.row("both").setProperty("subtitle", Value("Below"));
  panel.row("both").setProperty("label", Value("Above"));
  page.reloadSpecifier(panel.row("both"));
  const auto shown = cell(panel, "both");
  EXPECT_EQ(shown->labelText().text, "Above");
  ASSERT_TRUE(shown->footerText());
  EXPECT_EQ(shown->footerText()->text, "Below");
  EXPECT_EQ(shown->footerText()->frame, Rect{});
  EXPECT_EQ(hexString(shown->footerText()->color), "#aaaaaa");
}

TEST_F(SliderCell, StandsAtTheStoredValueHeldWithinTheBoundsElseAtTheDefault) {
  open(panel, {{"both", 4}, {"none", 250.5}, {"negate", -1000}, {"point", "text"}, {"wide", true}});
  EXPECT_EQ(cell(panel, "both")->value(), 4.0);
  EXPECT_EQ(cell(panel, "none")->value(), 100.0);
  EXPECT_EQ(cell(panel, "negate")->value(), -100.0);
  EXPECT_EQ(cell(panel, "point")->value(), 1.0) << "a text is no value of a slider";
  EXPECT_EQ(cell(panel, "wide")->value(), 1.0) << "nor is a boolean";
  EXPECT_EQ(cell(panel, "fraction")->value(), 1.0);
  EXPECT_THAT(panel.events(), IsEmpty());
}

TEST_F(SliderCell, WritesItsValueWithAsManyDecimalsAsItsRangeNeeds) {
  struct Case {
    double minimum, maximum, value;
    const char* text;
  };
  for (const Case& each :
       {Case{0.1, 2.0, 1.234, "1.23"}, Case{0, 2, 1, "1.00"}, Case{0, 2.01, 1.26, "1.3"}, Case{0, 50, 7, "7.0"},
        Case{0, 50.1, 7.4, "7"}, Case{1, 200, 34, "34"}, Case{-100, 100, -12.6, "-13"}}) {
    const auto row =
        PSSpecifier::preferenceSpecifierNamed("Row", nullptr, {}, {}, "", platform::PSCellType::PSSliderCell);
    row->setProperty("min", Value(each.minimum));
    row->setProperty("max", Value(each.maximum));
    PSSliderTableCell plain(*row, {});
    plain.setValue(each.value);
    EXPECT_EQ(plain.valueText(), each.text);
  }
}

TEST_F(SliderCell, OffersTheKeysThatThePhonesNumberPadLacks) {
  open(panel);
  EXPECT_THAT(accessory(panel, "keys"), ElementsAre("Negate", "Point"));
  EXPECT_THAT(accessory(panel, "negative"), ElementsAre("Negate", "Point"));
  EXPECT_THAT(accessory(panel, "point"), ElementsAre("Point"));
  EXPECT_THAT(accessory(panel, "fraction"), ElementsAre("Point"));
  EXPECT_THAT(accessory(panel, "negate"), ElementsAre("Negate"));
  EXPECT_THAT(accessory(panel, "none"), IsEmpty());
  EXPECT_THAT(accessory(panel, "wide"), IsEmpty());
}

TEST_F(SliderCell, OffersNoKeysOnAPadButOnADeviceThatDoesNotAnswer) {
  open(pad);
  open(silent);
  for (const auto* key : {"keys", "negative", "point", "fraction", "negate", "none", "wide"}) {
    EXPECT_THAT(accessory(pad, key), IsEmpty()) << key;
  }
  EXPECT_THAT(accessory(silent, "keys"), ElementsAre("Negate", "Point"));
  EXPECT_THAT(accessory(silent, "negate"), ElementsAre("Negate"));
  EXPECT_THAT(accessory(silent, "none"), IsEmpty());
}

TEST_F(SliderCell, ShowsAnEmptyEntryDialogForItsBounds) {
  open(panel);
  cell(panel, "negate")->presentPopup();
  EXPECT_THAT(
      panel.events(),
      ElementsAre(
          R"({"event":"dialog","kind":"alert","title":"Factor","message":"Please enter a value between -100.0 and 100.0.","buttons":[{"title":"Cancel","style":"cancel"},{"title":"Enter","style":"default"}],"text":"","keyboardType":"numberPad","accessory":["Negate"],"anchor":null,"t":0.0})",
          keyboardLine(true)));
  cell(panel, "wide")->presentPopup();
  EXPECT_EQ(navigation().dialog()->message, "Please enter a value between 0.0 and 10.5.");
}

TEST_F(SliderCell, PutsAMinusBeforeTheTextAndTakesItAwayAgain) {
  open(panel);
  cell(panel, "keys")->presentPopup();
  for (const auto* text : {"", "5", "2.5", "-3", "x"}) {
    navigation().setDialogText(text);
    navigation().pressAccessoryButton(0);
    EXPECT_EQ(navigation().dialog()->text, *text == '-' ? text + 1 : "-" + std::string(text));
    navigation().pressAccessoryButton(0);
    EXPECT_EQ(navigation().dialog()->text, text);
  }
}

TEST_F(SliderCell, AppendsAPointEachTime) {
  open(panel);
  cell(panel, "keys")->presentPopup();
  navigation().pressAccessoryButton(1);
  EXPECT_EQ(navigation().dialog()->text, ".");
  navigation().setDialogText("2");
  navigation().pressAccessoryButton(1);
  navigation().pressAccessoryButton(1);
  EXPECT_EQ(navigation().dialog()->text, "2..");
}

TEST_F(SliderCell, TypesNothingWhereNoDialogIsShown) {
  open(panel);
  cell(panel, "both")->typeMinus();
  cell(panel, "both")->typePoint();
  EXPECT_FALSE(navigation().dialog());
  EXPECT_THAT(panel.events(), IsEmpty());
}

TEST_F(SliderCell, HandsATypedValueToThePageAsANumberMadeFromA32BitFloat) {
  open(panel);
  EXPECT_THAT(enter("both", "2.3"), ElementsAre(kDismissLine,
                                                processLine("sliderValueChanged", R"("both")",
                                                            R"({"newValue":2.299999952316284,"settingsKey":"both"})"),
                                                writeLine("S_Defaults", R"({"both":2.299999952316284})"),
                                                darwinLine("settings"), keyboardLine(false)));
  EXPECT_EQ(cell(panel, "both")->value(), 1.0);
  panel.advance(200ms - 1ns);
  EXPECT_THAT(panel.events(), IsEmpty());
  panel.advance(1ns);
  EXPECT_THAT(panel.events(), ElementsAre(rowReloadedLine("both", "0.2")));
  EXPECT_EQ(cell(panel, "both")->value(), 2.299999952316284);
}

TEST_F(SliderCell, AcceptsBothBoundsAndNothingBeyond) {
  struct Case {
    const char* key;
    const char* text;
    bool accepted;
  };
  for (const Case& each :
       {Case{"both", "-10", true}, Case{"both", "10", true}, Case{"both", "10.0000009", false},
        Case{"both", "10.0000001", true}, Case{"both", "-10.01", false}, Case{"fraction", "0.1", true},
        Case{"fraction", "0.09", false}, Case{"fraction", "2", true}, Case{"fraction", "2.1", false},
        Case{"none", "", true}, Case{"none", "abc", true}, Case{"fraction", "abc", false}, Case{"fraction", "", false},
        Case{"none", "1e39", false}, Case{"both", "-1e39", false}, Case{"none", "inf", true}, Case{"none", "nan", true},
        Case{"fraction", "nan", false}, Case{"fraction", "1,5", true}}) {
    Panel fresh;
    open(fresh);
    cell(fresh, each.key)->presentPopup();
    fresh.host.navigation().setDialogText(each.text);
    fresh.events();
    fresh.host.navigation().pressDialogButton(1);
    EXPECT_EQ(fresh.events().at(1).starts_with(R"({"event":"post","centre":"process")"), each.accepted)
        << each.key << " " << each.text;
    EXPECT_EQ(fresh.host.navigation().dialog().has_value(), !each.accepted) << each.key << " " << each.text;
  }
}

TEST_F(SliderCell, StoresZeroForATextThatIsNoNumber) {
  open(panel);
  enter("none", "five");
  EXPECT_EQ(panel.stored("S_Defaults"), R"({"none":0.0})");
}

TEST_F(SliderCell, AnswersAValueOutOfRangeWithTheErrorDialogAndThenAFreshEntryDialog) {
  open(panel, {{"both", 5}});
  const std::string error =
      R"({"event":"dialog","kind":"alert","title":"Error","message":"Ensure you enter a valid value.","buttons":[{"title":"OK","style":"cancel"}],"text":null,"keyboardType":"default","accessory":[],"anchor":null,"t":0.0})";
  EXPECT_THAT(enter("both", "11"), ElementsAre(kDismissLine, error, keyboardLine(false)));
  navigation().pressDialogButton(0);
  EXPECT_THAT(
      panel.events(),
      ElementsAre(
          kDismissLine,
          R"({"event":"dialog","kind":"alert","title":"Factor","message":"Please enter a value between -10.0 and 10.0.","buttons":[{"title":"Cancel","style":"cancel"},{"title":"Enter","style":"default"}],"text":"","keyboardType":"numberPad","accessory":["Negate"],"anchor":null,"t":0.0})",
          keyboardLine(true)));
  navigation().setDialogText("-11");
  navigation().pressDialogButton(1);
  EXPECT_THAT(panel.events(), ElementsAre(kDismissLine, error, keyboardLine(false)));
  EXPECT_EQ(panel.stored("S_Defaults"), R"({"both":5})");
}

TEST_F(SliderCell, PostsNothingOnCancel) {
  open(panel);
  cell(panel, "both")->presentPopup();
  navigation().setDialogText("5");
  panel.events();
  navigation().pressDialogButton(0);
  panel.advance(1s);
  EXPECT_THAT(panel.events(), ElementsAre(kDismissLine, keyboardLine(false)));
}

TEST_F(SliderCell, TellsItsDialogsApartByTheirTags) {
  open(panel);
  const auto shown = cell(panel, "both");
  shown->alertViewClickedButtonAtIndex(1, 1, "5");
  shown->alertViewClickedButtonAtIndex(342879, 0, "5");
  shown->alertViewClickedButtonAtIndex(342879, 2, "5");
  EXPECT_THAT(panel.events(), IsEmpty());
  EXPECT_FALSE(navigation().dialog());
  shown->alertViewClickedButtonAtIndex(85230234, 3, "");
  EXPECT_EQ(navigation().dialog()->title, "Factor");
  panel.events();
  shown->alertViewClickedButtonAtIndex(342879, 1, "5");
  EXPECT_EQ(panel.events().at(0),
            processLine("sliderValueChanged", R"("both")", R"({"newValue":5.0,"settingsKey":"both"})"));
}

TEST_F(SliderCell, GoesOnAlthoughItsRowIsReloadedBeneathTheDialog) {
  open(panel);
  enter("both", "3");
  cell(panel, "both")->presentPopup();
  const std::weak_ptr<KVQuellarSliderCell> old = cell(panel, "both");
  panel.advance(1s);
  EXPECT_NE(cell(panel, "both"), old.lock());
  navigation().setDialogText("11");
  navigation().pressDialogButton(1);
  navigation().pressDialogButton(0);
  navigation().pressAccessoryButton(0);
  EXPECT_EQ(navigation().dialog()->text, "-");
  navigation().setDialogText("4");
  navigation().pressDialogButton(1);
  EXPECT_EQ(panel.stored("S_Defaults"), R"({"both":4.0})");
  EXPECT_TRUE(old.expired());
}

TEST_F(SliderCell, SavesWhatIsDraggedOnlyWhenItIsLetGo) {
  auto& page = open(panel);
  cell(panel, "both")->setValue(7.5);
  EXPECT_THAT(panel.events(), IsEmpty());
  page.userMovesSlider(panel.row("both"), 7.5);
  page.userMovesSlider(panel.row("both"), -99);
  EXPECT_THAT(panel.events(), ElementsAre(writeLine("S_Defaults", R"({"both":7.5})"), darwinLine("settings"),
                                          writeLine("S_Defaults", R"({"both":-10.0})"), darwinLine("settings")));
}

TEST(TypedNumber, IsTheLongestDecimalNumberThatTheTextBeginsWith) {
  struct Case {
    const char* text;
    float value;
  };
  for (const Case& each : {Case{"5", 5.0F},
                           Case{"-5", -5.0F},
                           Case{"+5", 5.0F},
                           Case{"2.5", 2.5F},
                           Case{".5", 0.5F},
                           Case{"-.5", -0.5F},
                           Case{"5.", 5.0F},
                           Case{"1,5", 1.0F},
                           Case{"1.5.7", 1.5F},
                           Case{"12abc", 12.0F},
                           Case{"  7 8", 7.0F},
                           Case{"\t-2", -2.0F},
                           Case{"1e2", 100.0F},
                           Case{"1e", 1.0F},
                           Case{"1e+", 1.0F},
                           Case{"25E-1x", 2.5F},
                           Case{"007", 7.0F},
                           Case{"1.3", 1.3F},
                           Case{"0x1A", 0.0F},
                           Case{"", 0.0F},
                           Case{" ", 0.0F},
                           Case{"-", 0.0F},
                           Case{".", 0.0F},
                           Case{"--5", 0.0F},
                           Case{"-+5", 0.0F},
                           Case{"abc", 0.0F},
                           Case{"inf", 0.0F},
                           Case{"-inf", 0.0F},
                           Case{"Infinity", 0.0F},
                           Case{"nan", 0.0F},
                           Case{"\xd9\xa3", 0.0F},
                           Case{"\xe2\x88\x92"
                                "5",
                                0.0F}}) {
    EXPECT_EQ(floatValue(each.text), each.value) << each.text;
  }
}

TEST(TypedNumber, IsInfiniteWhereItIsTooLargeAndZeroWhereItIsTooSmall) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  EXPECT_EQ(floatValue("1e39"), kInfinity);
  EXPECT_EQ(floatValue("-1e39"), -kInfinity);
  EXPECT_EQ(floatValue("1e99999999999999999999"), kInfinity);
  EXPECT_EQ(floatValue(std::string(400, '9')), kInfinity);
  EXPECT_EQ(floatValue("0." + std::string(400, '0') + "1e500"), kInfinity);
  EXPECT_EQ(floatValue("1e-60"), 0.0F);
  EXPECT_EQ(floatValue("-1e-60"), 0.0F);
  EXPECT_EQ(floatValue("1e-99999999999999999999"), 0.0F);
  EXPECT_EQ(floatValue("0." + std::string(400, '0') + "1"), 0.0F);
  EXPECT_EQ(floatValue(std::string(100, '9') + "e-500"), 0.0F);
  EXPECT_EQ(floatValue("0e999"), 0.0F);
}

}  // namespace slider_cell_test
}  // namespace quellar::tests

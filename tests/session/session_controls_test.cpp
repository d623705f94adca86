// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cells/backdrop_picker.h"
#include "platform/cell.h"
#include "session_fixture.h"

namespace quellar::tests {
namespace session_controls_test {

using platform::ButtonStyle;
using platform::Color;
using platform::Dialog;
using platform::DialogKind;
using platform::PSCellType;
using platform::PSListController;
using platform::PSSpecifier;
using platform::Specifiers;
using platform::Value;
using testing::ElementsAre;

/// One row of each control that the platform has; what is set goes into the store as it is, under the row's key.
class ControlsPage : public PSListController {
 public:
  explicit ControlsPage(platform::Platform& platform) : PSListController(platform, "ControlsPage") {}

  Specifiers makeSpecifiers() override {
    auto picker = valueRow("Picker", "picker", PSCellType::PSLinkListCell);
    picker->setValues({12, 16, 16, 0.69999, "text"}, {"Normal", "Less", "More", "Light", "Text"}, {});
    auto segment = valueRow("Segment", "segment", PSCellType::PSSegmentCell);
    segment->setValues({0, 1}, {"Zero", "One"}, {"0", "1"});
    segment->setProperty("default", Value(0));
    auto slider = valueRow("Slider", "slider", PSCellType::PSSliderCell);
    slider->setProperty("min", Value(-10));
    slider->setProperty("max", Value(2.5));
    auto disabled = valueRow("Disabled", "disabled", PSCellType::PSSwitchCell);
    disabled->setProperty("enabled", Value(false));
    auto button = PSSpecifier::preferenceSpecifierNamed("Button", this, {}, {}, "", PSCellType::PSButtonCell);
    button->setAction({"reset:", [this](PSSpecifier&) { platform().preferences.setAppValue("reset", true, "d"); }});
    return {PSSpecifier::groupSpecifierWithName("Group"),
            valueRow("Switch", "switch", PSCellType::PSSwitchCell),
            std::move(picker),
            std::move(segment),
            std::move(slider),
            valueRow("Plain slider", "plain", PSCellType::PSSliderCell),
            std::move(disabled),
            std::move(button),
            PSSpecifier::preferenceSpecifierNamed("Words", this, {}, {}, "", PSCellType::PSStaticTextCell),
            PSSpecifier::preferenceSpecifierNamed("Link", this, {}, {}, "Nowhere", PSCellType::PSLinkListCell)};
  }

 private:
  PSSpecifier::Pointer valueRow(const std::string& label, const std::string& key, PSCellType kind) {
    auto row = PSSpecifier::preferenceSpecifierNamed(
        label, this, [this](const auto& value, auto& specifier) { setPreferenceValue(value, specifier); },
        [this](auto& specifier) { return readPreferenceValue(specifier); }, "", kind);
    row->setProperty("key", Value(key));
    row->setProperty("defaults", Value("d"));
    return row;
  }
};

Lines written(const std::string& key, const std::string& value) {
  return {R"({"event":"write","domain":"d","key":")" + key + R"(","value":)" + value + R"(,"t":0.0})", kOk};
}

std::string set(const std::string& row, const std::string& value) {
  return R"({"do":"set","row":)" + row + R"(,"value":)" + value + "}";
}

TEST(SessionControls, SetEachToAValueThatItCanGive) {
  ScriptedSession session;
  session.push<ControlsPage>();
  EXPECT_EQ(session.feed(set(R"("switch")", "true")), written("switch", "true"));
  EXPECT_EQ(session.feed(set(R"("switch")", "true")), written("switch", "true")) << "the same value is written again";
  EXPECT_EQ(session.feed(set(R"("picker")", "16")), written("picker", "16"));
  EXPECT_EQ(session.feed(set(R"("picker")", "12.0")), written("picker", "12")) << "the choice's own value is written";
  EXPECT_EQ(session.feed(set(R"("picker")", "0.69999")), written("picker", "0.69999"));
  EXPECT_EQ(session.feed(set(R"("picker")", R"("text")")), written("picker", R"("text")"));
  EXPECT_EQ(session.feed(set(R"("slider")", "-10")), written("slider", "-10.0"));
  EXPECT_EQ(session.feed(set(R"("slider")", "2.5")), written("slider", "2.5"));
  EXPECT_EQ(session.feed(set(R"("plain")", "1")), written("plain", "1.0"));
  EXPECT_EQ(session.feed(set(R"("segment")", "1")), written("segment", "1"));
}

TEST(SessionControls, DoNothingWhenTheSelectedSegmentIsTapped) {
  ScriptedSession session;
  session.push<ControlsPage>();
  EXPECT_THAT(session.feed(set(R"("segment")", "0")), ElementsAre(kOk)) << "the default is selected";
  EXPECT_EQ(session.feed(set(R"("segment")", "1")), written("segment", "1"));
  EXPECT_THAT(session.feed(set(R"("segment")", "1")), ElementsAre(kOk));
  EXPECT_EQ(session.feed(set(R"("segment")", "0")), written("segment", "0"));
}

TEST(SessionControls, RefuseWhatTheyCanNotGive) {
  ScriptedSession session;
  session.push<ControlsPage>();
  const std::vector<std::pair<std::string, std::string>> cases = {
      {set(R"("switch")", "1"), R"(row 1 ("Switch") takes true or false)"},
      {set(R"("switch")", "null"), R"(row 1 ("Switch") takes true or false)"},
      {set(R"("picker")", "17"), R"(row 2 ("Picker") takes one of [12,16,16,0.69999,"text"])"},
      {set(R"("picker")", "true"), R"(row 2 ("Picker") takes one of [12,16,16,0.69999,"text"])"},
      {set(R"("picker")", "[12]"), R"(row 2 ("Picker") takes one of [12,16,16,0.69999,"text"])"},
      {set(R"("picker")", R"("Normal")"), R"(row 2 ("Picker") takes one of [12,16,16,0.69999,"text"])"},
      {set(R"("segment")", "2"), R"(row 3 ("Segment") takes one of [0,1])"},
      {set(R"("segment")", "false"), R"(row 3 ("Segment") takes one of [0,1])"},
      {set(R"("slider")", "2.6"), R"(row 4 ("Slider") takes a number from -10.0 to 2.5)"},
      {set(R"("slider")", "-10.1"), R"(row 4 ("Slider") takes a number from -10.0 to 2.5)"},
      {set(R"("slider")", R"("1")"), R"(row 4 ("Slider") takes a number from -10.0 to 2.5)"},
      {set(R"("slider")", "true"), R"(row 4 ("Slider") takes a number from -10.0 to 2.5)"},
      {set(R"("plain")", "1.5"), R"(row 5 ("Plain slider") takes a number from 0.0 to 1.0)"},
      {set(R"("disabled")", "true"), R"(row 6 ("Disabled") is disabled)"},
      {set("0", "true"), R"(row 0 ("Group") has no control that is set to a value)"},
      {set("7", "true"), R"(row 7 ("Button") has no control that is set to a value)"},
      {set("8", "true"), R"(row 8 ("Words") has no control that is set to a value)"},
      {set("9", "true"), R"(row 9 ("Link") has no control that is set to a value)"},
      {R"({"do":"drag","row":1,"value":1})", R"(row 1 ("Switch") is no slider)"},
      {R"({"do":"drag","row":6,"value":1})", R"(row 6 ("Disabled") is disabled)"},
      {R"({"do":"step","row":1,"by":-1})", R"(row 1 ("Switch") is no stepper)"},
      {R"({"do":"popup","row":4})", R"(row 4 ("Slider") is no slider with typed entry)"},
      {R"({"do":"edit","row":4,"text":"1"})", R"(row 4 ("Slider") is no text row)"},
      {R"({"do":"tap","row":0})", R"(row 0 ("Group") is no row that is tapped)"},
      {R"({"do":"tap","row":1})", R"(row 1 ("Switch") is no row that is tapped)"},
      {R"({"do":"tap","row":3})", R"(row 3 ("Segment") is no row that is tapped)"},
      {R"({"do":"tap","row":6})", R"(row 6 ("Disabled") is disabled)"},
      {R"({"do":"tap","row":8})", R"(row 8 ("Words") is no row that is tapped)"},
      {R"({"do":"style","style":2060})", "ControlsPage is no backdrop picker"},
  };
  for (const auto& [line, message] : cases) EXPECT_THAT(session.feed(line), ElementsAre(error(message))) << line;
  EXPECT_TRUE(session.preferences.domains.empty()) << "what fails changes nothing";
}

TEST(SessionControls, DragASliderToTheNearestNumberWithinItsBounds) {
  ScriptedSession session;
  session.push<ControlsPage>();
  EXPECT_EQ(session.feed(R"({"do":"drag","row":"slider","value":1})"), written("slider", "1.0"));
  EXPECT_EQ(session.feed(R"({"do":"drag","row":"slider","value":1e300})"), written("slider", "2.5"));
  EXPECT_EQ(session.feed(R"({"do":"drag","row":"slider","value":-11})"), written("slider", "-10.0"));
}

TEST(SessionControls, OpenNothingForALinkWhoseClassIsNotThere) {
  ScriptedSession session;
  session.push<ControlsPage>();
  EXPECT_THAT(session.feed(R"({"do":"tap","row":{"label":"Link","nth":0}})"), ElementsAre(kOk));
}

TEST(SessionControls, RunTheActionOfAButtonThatIsTapped) {
  ScriptedSession session;
  session.push<ControlsPage>();
  EXPECT_EQ(session.feed(R"({"do":"tap","row":7})"), written("reset", "true"));
  EXPECT_THAT(session.closing(R"({"do":"inspect","row":7})"), testing::HasSubstr(R"("action":"reset:")"));
}

TEST(SessionControls, PickAnItemAndMoveItsCheckMarkWhileTheListStaysOpen) {
  ScriptedSession session;
  const auto controls = session.push<ControlsPage>();
  session.preferences.domains["d"]["picker"] = 16;
  const auto list = session.push<platform::PSListItemsController>(std::string("PSListItemsController"));
  EXPECT_EQ(list->specifiers().size(), 1U) << "without a picker row there is nothing to choose";
  session.feed(R"({"do":"back"})");

  auto items = std::make_shared<platform::PSListItemsController>(session.session.host().platform(), "Items");
  items->setSpecifier(controls->specifierForID("picker"));
  session.session.host().navigation().pushViewController(items);
  session.take();
  const auto accessories = [&] {
    const auto closing = host::headless::Json::parse(session.closing(R"({"do":"rows"})"));
    std::string text;
    for (const auto& row : closing["rows"])
      text += row["label"].get<std::string>() + ":" + row["accessory"].dump() + " ";
    return text;
  };
  EXPECT_EQ(accessories(), R"(:null Normal:null Less:"checkmark" More:null Light:null Text:null )");
  EXPECT_EQ(session.feed(R"({"do":"tap","row":{"label":"More","nth":0}})"), written("picker", "16"));
  EXPECT_EQ(accessories(), R"(:null Normal:null Less:null More:"checkmark" Light:null Text:null )");
  EXPECT_THAT(session.feed(R"({"do":"set","row":1,"value":12})"),
              ElementsAre(error(R"(row 1 ("Normal") has no control that is set to a value)")));
}

// ---- The panel's own rows

/// A page with a stepper, a typed slider and a colour row; it builds its rows anew whenever the stepper has stored.
class CellsPage : public PSListController {
 public:
  explicit CellsPage(platform::Platform& platform) : PSListController(platform, "CellsPage") {}

  void loadView() override {
    platform().notifications.addObserver(lifetime(), "stepperValueChanged",
                                         [this](const auto&) { reloadSpecifiers(); });
    platform().notifications.addObserver(lifetime(), "sliderValueChanged", [this](const auto& notification) {
      platform().preferences.setAppValue("typed", notification.userInfo->at("newValue"), "d");
    });
  }

  Specifiers makeSpecifiers() override {
    auto stepper = PSSpecifier::preferenceSpecifierNamed("Count", this, {}, {}, "", PSCellType::PSStaticTextCell);
    set(*stepper, {{"key", "count"},
                   {"defaultsKey", "C_Defaults"},
                   {"default", 4},
                   {"minimumValue", 1},
                   {"maximumValue", 7},
                   {"updatesLabelValue", true},
                   {"requestsNotification", true}});
    stepper->setProperty("cellClass", platform::Class{"KVQuellarStepperCell"});
    auto slider = PSSpecifier::preferenceSpecifierNamed(
        "Factor", this, [](const auto&, auto&) {}, {}, "", PSCellType::PSSliderCell);
    set(*slider, {{"key", "factor"},
                  {"default", 1},
                  {"min", -10},
                  {"max", 10},
                  {"showValue", true},
                  {"subtitle", "Small print"}});
    slider->setProperty("cellClass", platform::Class{"KVQuellarSliderCell"});
    auto color = PSSpecifier::preferenceSpecifierNamed("Tint", this, {}, {}, "", PSCellType::PSButtonCell);
    set(*color, {{"colorKey", "tint"}, {"defaultsKey", "C_Defaults"}, {"defaultColor", "ff3b30"}});
    color->setProperty("cellClass", platform::Class{"KVQuellarColorPreviewTableCell"});
    return {std::move(stepper), std::move(slider), std::move(color)};
  }

 private:
  static void set(PSSpecifier& row, const std::vector<std::pair<std::string, Value>>& properties) {
    for (const auto& [key, value] : properties) row.setProperty(key, value);
  }
};

/// The lines of one press of the stepper: the store, the notifications and the rows built anew.
Lines pressed(const std::string& value) {
  return {
      R"({"event":"write","domain":"com.vantorick.quellar2","key":"C_Defaults","value":{"count":)" + value +
          R"(},"t":0.0})",
      R"({"event":"synchronize","domain":"com.vantorick.quellar2","t":0.0})",
      R"({"event":"post","centre":"darwin","name":"com.vantorick.quellar2.settings","object":null,"userInfo":null,"immediately":true,"through":"notify_post","t":0.0})",
      R"({"event":"post","centre":"process","name":"stepperValueChanged","object":"count","userInfo":null,"immediately":true,"through":"centre","t":0.0})",
      R"({"event":"reload","what":"specifiers","t":0.0})"};
}

Lines joined(const std::vector<Lines>& parts) {
  Lines lines;
  for (const auto& part : parts) lines.insert(lines.end(), part.begin(), part.end());
  return lines;
}

TEST(SessionControls, StepOncePerUnitOnTheRowsThatStandThen) {
  ScriptedSession session;
  session.push<CellsPage>();
  EXPECT_EQ(session.feed(R"({"do":"step","row":"count","by":2})"), joined({pressed("5.0"), pressed("6.0"), {kOk}}));
  EXPECT_EQ(session.feed(R"({"do":"step","row":"count","by":18446744073709551615})"), joined({pressed("7.0"), {kOk}}));
  EXPECT_THAT(session.feed(R"({"do":"step","row":"count","by":1})"), ElementsAre(kOk)) << "it is at its bound";
  EXPECT_EQ(session.feed(R"({"do":"step","row":"count","by":-1})"), joined({pressed("6.0"), {kOk}}));
  EXPECT_EQ(session.feed(R"({"do":"step","row":"count","by":-9223372036854775808})"),
            joined({pressed("5.0"), pressed("4.0"), pressed("3.0"), pressed("2.0"), pressed("1.0"), {kOk}}));
}

TEST(SessionControls, TypeAnExactValueIntoASlidersDialog) {
  ScriptedSession session;
  session.push<CellsPage>();
  EXPECT_THAT(
      session.feed(R"({"do":"popup","row":"factor"})"),
      ElementsAre(
          R"({"event":"dialog","kind":"alert","title":"Factor","message":"Please enter a value between -10.0 and 10.0.","buttons":[{"title":"Cancel","style":"cancel"},{"title":"Enter","style":"default"}],"text":"","keyboardType":"numberPad","accessory":["Negate"],"anchor":null,"t":0.0})",
          R"({"event":"keyboard","visible":true,"t":0.0})", kOk));
  EXPECT_THAT(session.feed(R"({"do":"type","text":"0.1"})"), ElementsAre(kOk));
  EXPECT_THAT(session.feed(R"({"do":"accessory","button":"Negate"})"), ElementsAre(R"({"ok":true,"text":"-0.1"})"));
  EXPECT_THAT(
      session.feed(R"({"do":"press","button":"Enter"})"),
      ElementsAre(
          R"({"event":"dismiss","t":0.0})",
          R"({"event":"post","centre":"process","name":"sliderValueChanged","object":"factor","userInfo":{"newValue":-0.10000000149011612,"settingsKey":"factor"},"immediately":true,"through":"centre","t":0.0})",
          R"({"event":"write","domain":"d","key":"typed","value":-0.10000000149011612,"t":0.0})",
          R"({"event":"keyboard","visible":false,"t":0.0})", kOk));
}

TEST(SessionControls, InspectTheCellsOfThePanelsOwnRows) {
  ScriptedSession session;
  session.push<CellsPage>();
  const auto cell = [&](const std::string& row) {
    const auto closing = session.closing(R"({"do":"inspect","row":)" + row + "}");
    return closing.substr(closing.find(R"("cell":)") + 7, closing.size() - closing.find(R"("cell":)") - 8);
  };
  EXPECT_EQ(cell(R"("count")"),
            R"({"class":"KVQuellarStepperCell","titleColor":"#000000","frame":[0.0,0.0,320.0,44.0],"stepper":{"frame":)"
            R"([220.0,8.0,84.0,28.0],"value":4.0,"minimum":1.0,"maximum":7.0,"step":1.0,"continuous":true,)"
            R"("autorepeat":true,"wraps":false},"stepperLabel":{"frame":[141.0,0.0,72.0,44.0],"text":"4","color":)"
            R"("#000000"},"dictionary":{"count":4}})");
  EXPECT_EQ(
      cell(R"("factor")"),
      R"({"class":"KVQuellarSliderCell","titleColor":"#000000","frame":[0.0,0.0,320.0,44.0],"titleLabel":{"text":)"
      R"("Factor","frame":[16.0,5.0,250.0,20.0],"color":"#162433"},"footnote":{"text":"Small print","color":)"
      R"("#aaaaaa"},"tapArea":{"frame":[270.0,0.0,50.0,44.0]},"slider":{"minimum":-10.0,"maximum":10.0,"value":)"
      R"(1.0,"minimumTrackTint":"#41a9d6","maximumTrackTint":"#162433"},"showValue":true})");
  EXPECT_EQ(cell("2"),
            R"({"class":"KVQuellarColorPreviewTableCell","titleColor":"#000000","frame":[0.0,0.0,320.0,44.0],)"
            R"("swatch":{"size":[30.0,30.0],"scale":2.0,"color":"#0f3b30"}})");
}

TEST(SessionControls, PickABackdropStyleAndGoBack) {
  ScriptedSession session;
  session.push<ControlsPage>();
  session.push<cells::KVQuellarBackdropPickerViewController>("style", "C_Defaults");
  const auto screen = host::headless::Json::parse(session.closing(R"({"do":"screen"})"));
  EXPECT_EQ(screen["title"], "Pick A Style");
  EXPECT_EQ(screen["items"].size(), 31U);
  EXPECT_EQ(dump(screen["items"][1]), R"({"style":2000,"label":"2000","size":[140.0,90.0]})");
  EXPECT_THAT(session.feed(R"({"do":"rows"})"),
              ElementsAre(error("KVQuellarBackdropPickerViewController has no rows")));
  EXPECT_THAT(session.feed(R"({"do":"style","style":1})"), ElementsAre(error("no preview has the style 1")));
  EXPECT_THAT(
      session.feed(R"({"do":"style","style":2060})"),
      ElementsAre(
          R"({"event":"write","domain":"com.vantorick.quellar2","key":"C_Defaults","value":{"style":2060},"t":0.0})",
          R"({"event":"post","centre":"darwin","name":"com.vantorick.quellar2.settings","object":null,"userInfo":null,"immediately":true,"through":"notify_post","t":0.0})",
          R"({"event":"pop","page":"KVQuellarBackdropPickerViewController","animated":true,"t":0.0})", kOk));
}

// ---- Dialogs

/// Presents a dialog with a text field, buttons and a bar above the keyboard.
void presentEntry(ScriptedSession& session, std::string& entered) {
  auto& navigation = session.session.host().navigation();
  Dialog dialog;
  dialog.title = "Size";
  dialog.message = "Please enter a value.";
  dialog.text = "";
  dialog.keyboardType = platform::KeyboardType::numberPad;
  dialog.buttons = {{"Cancel", ButtonStyle::cancel, {}},
                    {"Enter", ButtonStyle::plain, [&entered](const std::string& text) { entered = text; }}};
  dialog.accessory = {{"Point", [&navigation] { navigation.setDialogText(*navigation.dialog()->text + "."); }}};
  navigation.present(std::move(dialog));
}

TEST(SessionDialogs, TypeIntoTheFieldAndPressTheBarAboveTheKeyboard) {
  ScriptedSession session;
  session.push<ControlsPage>();
  std::string entered;
  presentEntry(session, entered);
  EXPECT_THAT(
      session.take(),
      ElementsAre(
          R"({"event":"dialog","kind":"alert","title":"Size","message":"Please enter a value.","buttons":[{"title":"Cancel","style":"cancel"},{"title":"Enter","style":"default"}],"text":"","keyboardType":"numberPad","accessory":["Point"],"anchor":null,"t":0.0})",
          R"({"event":"keyboard","visible":true,"t":0.0})"));
  EXPECT_THAT(session.feed(R"({"do":"type","text":"12"})"), ElementsAre(kOk));
  EXPECT_THAT(session.feed(R"({"do":"accessory","button":"Negate"})"),
              ElementsAre(error(R"(no button "Negate" above the keyboard; its buttons: "Point")")));
  EXPECT_THAT(session.feed(R"({"do":"accessory","button":"Point"})"), ElementsAre(R"({"ok":true,"text":"12."})"));
  EXPECT_THAT(session.feed(R"({"do":"pick","color":"#ff0000"})"),
              ElementsAre(error("the dialog that is shown is no color dialog")));
  EXPECT_THAT(session.feed(R"({"do":"press","button":"Enter"})"),
              ElementsAre(R"({"event":"dismiss","t":0.0})", R"({"event":"keyboard","visible":false,"t":0.0})", kOk));
  EXPECT_EQ(entered, "12.");
  EXPECT_THAT(session.feed(R"({"do":"accessory","button":"Point"})"), ElementsAre(error("no dialog is shown")));
}

TEST(SessionDialogs, RefuseTypingWhereThereIsNoField) {
  ScriptedSession session;
  session.push<ControlsPage>();
  Dialog dialog;
  dialog.buttons = {{"OK", ButtonStyle::cancel, {}}};
  session.session.host().navigation().present(std::move(dialog));
  session.take();
  EXPECT_THAT(session.feed(R"({"do":"type","text":"1"})"),
              ElementsAre(error("the dialog that is shown has no text field")));
  EXPECT_THAT(session.feed(R"({"do":"accessory","button":"Point"})"),
              ElementsAre(error(R"(no button "Point" above the keyboard; its buttons: none)")));
}

TEST(SessionDialogs, CompleteAColorDialogWithTheColorAndAlphaPicked) {
  struct Case {
    bool showAlpha;
    const char* fields;
    Color picked;
  };
  for (const Case& each : {Case{true, R"("color":"#0E7afe")", {14, 122, 254, 1}},
                           Case{true, R"("color":"#000000","alpha":0.25)", {0, 0, 0, 0.25}},
                           Case{false, R"("color":"#ffffff","alpha":0.25)", {255, 255, 255, 1}}}) {
    ScriptedSession session;
    session.push<ControlsPage>();
    std::optional<Color> picked;
    Dialog dialog;
    dialog.kind = DialogKind::color;
    dialog.color = {{1, 2, 3, 0.5}, each.showAlpha, [&picked](const Color& color) { picked = color; }};
    session.session.host().navigation().present(std::move(dialog));
    EXPECT_THAT(session.take(),
                ElementsAre(std::string(R"({"event":"dialog","kind":"color","title":"","message":"","buttons":[],)"
                                        R"("text":null,"keyboardType":"default","accessory":[],"anchor":null,)"
                                        R"("start":"#010203","startAlpha":0.5,"showAlpha":)") +
                            (each.showAlpha ? "true" : "false") + R"(,"t":0.0})"));
    EXPECT_THAT(session.feed(std::string(R"({"do":"pick",)") + each.fields + "}"),
                ElementsAre(R"({"event":"dismiss","t":0.0})", kOk));
    EXPECT_EQ(picked, each.picked);
  }
}

}  // namespace session_controls_test
}  // namespace quellar::tests

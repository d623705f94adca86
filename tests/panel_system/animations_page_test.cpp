// SPDX-License-Identifier: MIT
#include "cells/slider_cell.h"
#include "frame/list_controller.h"
#include "panel_system/page_lines.h"

namespace quellar::tests {
namespace animations_page_test {

using namespace std::chrono_literals;
using platform::Dictionary;

constexpr auto kPage = "KVQuellarAnimationsListController";
constexpr auto kDefaults = "Animation_Defaults";
constexpr auto kSpringy = "userRequestsSpringyAnimations";
constexpr auto kFactor = "userRequestsCustomAnimationFactor";

const Lines kClosed = {
    group("Animation Behavior"),
    toggle("Use Springy Animations", kSpringy),
    group("Animation Speed"),
    toggle("Use Custom Speed Factor", kFactor),
};
const Lines kSpringyRows = {
    group("Damping"),
    toggle("Use Custom Damping", "userRequestsCustomDamping", {{"default", 1}}),
    slider("Damping", "userSpringyAnimationDamping", 30.0, 0.1, 100.0),
    group("Mass"),
    toggle("Use Custom Mass", "userRequestsCustomMass", {{"default", 1}}),
    slider("Mass", "userSpringyAnimationMass", 1.0, 0.1, 2.0),
    group("Speed Multiplier"),
    toggle("Use Custom Multiplier ", "userRequestsCustomMultiplier", {{"default", 1}}),
    slider("Speed Multiplier", "userSpringyAnimationSpeedMultiplier", 1.0, 0.1, 2.0),
    group("Stiffness"),
    toggle("Use Custom Stiffness ", "userRequestsCustomStiffness", {{"default", 1}}),
    slider("Stiffness", "userSpringyAnimationStiffness", 300.0, 100.0, 500.0),
    group("Velocity"),
    toggle("Use Custom Velocity ", "userRequestsCustomVelocity", {{"default", 1}}),
    slider("Velocity", "userSpringyAnimationVelocity", 20.0, 10.0, 50.0),
};
const Lines kFactorRows = {group("Animation Factor"), slider("Factor", "userSlowDownFactor", 0.2, 0.2, 1.0)};
const Lines kSpringyLabels = {
    "Damping",          "Use Custom Damping",     "Damping",          "Mass",      "Use Custom Mass",       "Mass",
    "Speed Multiplier", "Use Custom Multiplier ", "Speed Multiplier", "Stiffness", "Use Custom Stiffness ", "Stiffness",
    "Velocity",         "Use Custom Velocity ",   "Velocity"};
const Lines kFactorLabels = {"Animation Factor", "Factor"};

cells::KVQuellarSliderCell& sliderCell(Panel& panel, std::string_view key) {
  return dynamic_cast<cells::KVQuellarSliderCell&>(*panel.row(key).cell());
}

std::string typed(const std::string& key, const std::string& value) {
  return R"({"event":"post","centre":"process","name":"sliderValueChanged","object":")" + key +
         R"(","userInfo":{"newValue":)" + value + R"(,"settingsKey":")" + key +
         R"("},"immediately":true,"through":"centre","t":0.0})";
}

TEST(AnimationsPage, ShowsTwoSwitchesOnAFreshInstall) {
  Panel panel;
  EXPECT_EQ(rowLines(panel.open(kPage)), kClosed);
}

TEST(AnimationsPage, OpensWithTheBlocksOfTheSwitchesThatAreStoredOn) {
  Panel panel;
  panel.store(kDefaults, Dictionary{{kSpringy, true}, {kFactor, true}});
  EXPECT_EQ(rowLines(panel.open(kPage)), with(with(kClosed, 4, kFactorRows), 2, kSpringyRows));
}

TEST(AnimationsPage, InsertsFifteenRowsUnderTheSpringySwitchAndRemovesThemWhole) {
  ASSERT_EQ(kSpringyRows.size(), 15U);
  Panel panel;
  auto& page = panel.open(kPage);
  panel.set(kSpringy, true);
  EXPECT_EQ(panel.events(), (Lines{write(kDefaults, R"({"userRequestsSpringyAnimations":true})"), kSettingsPost,
                                   insert(kSpringy, 2, kSpringyLabels)}));
  EXPECT_EQ(rowLines(page), with(kClosed, 2, kSpringyRows));
  panel.set(kSpringy, false);
  EXPECT_EQ(panel.events(), (Lines{write(kDefaults, R"({"userRequestsSpringyAnimations":false})"), kSettingsPost,
                                   remove(2, kSpringyLabels)}));
  EXPECT_EQ(rowLines(page), kClosed);
}

TEST(AnimationsPage, InsertsTheSpeedFactorUnderItsSwitchAndRemovesItAgain) {
  Panel panel;
  panel.store(kDefaults, Dictionary{{kSpringy, true}});
  auto& page = panel.open(kPage);
  panel.set(kFactor, true);
  EXPECT_EQ(
      panel.events(),
      (Lines{write(kDefaults, R"({"userRequestsCustomAnimationFactor":true,"userRequestsSpringyAnimations":true})"),
             kSettingsPost, insert(kFactor, 19, kFactorLabels)}));
  EXPECT_EQ(rowLines(page), with(with(kClosed, 4, kFactorRows), 2, kSpringyRows));
  panel.set(kFactor, false);
  EXPECT_EQ(
      panel.events(),
      (Lines{write(kDefaults, R"({"userRequestsCustomAnimationFactor":false,"userRequestsSpringyAnimations":true})"),
             kSettingsPost, remove(19, kFactorLabels)}));
  EXPECT_EQ(rowLines(page), with(kClosed, 2, kSpringyRows));
}

TEST(AnimationsPage, PostsTheSettingsNotificationOnceForARowOfABlock) {
  Panel panel;
  panel.store(kDefaults, Dictionary{{kSpringy, true}});
  auto& page = panel.open(kPage);
  panel.set("userRequestsCustomMass", false);
  EXPECT_EQ(panel.events(),
            (Lines{write(kDefaults, R"({"userRequestsCustomMass":false,"userRequestsSpringyAnimations":true})"),
                   kSettingsPost}));
  page.userMovesSlider(panel.row("userSpringyAnimationMass"), 5);
  EXPECT_EQ(panel.events(),
            (Lines{write(kDefaults, R"({"userRequestsCustomMass":false,"userRequestsSpringyAnimations":true,)"
                                    R"("userSpringyAnimationMass":2.0})"),
                   kSettingsPost}));
  panel.advance(10s);
  EXPECT_EQ(panel.events(), Lines());
}

TEST(AnimationsPage, LooksUpAllItsTexts) {
  Panel panel;
  EXPECT_EQ(lookupsOf(panel, kPage),
            (std::set<std::string>{"Animation Behavior", "Use Springy Animations", "Damping", "Use Custom Damping",
                                   "Mass", "Use Custom Mass", "Speed Multiplier", "Use Custom Multiplier ", "Stiffness",
                                   "Use Custom Stiffness ", "Velocity", "Use Custom Velocity ", "Animation Speed",
                                   "Use Custom Speed Factor", "Animation Factor", "Factor", "Respring"}));
}

TEST(AnimationsPage, StoresATypedValueAndDrawsTheSliderAnewAFifthOfASecondLater) {
  Panel panel;
  panel.store(kDefaults, Dictionary{{kFactor, true}});
  panel.open(kPage);
  sliderCell(panel, "userSlowDownFactor").presentPopup();
  const auto shown = panel.events();
  ASSERT_EQ(shown.size(), 3U);
  EXPECT_THAT(shown[0],
              testing::HasSubstr(R"("title":"Factor","message":"Please enter a value between 0.2 and 1.0.")"));
  EXPECT_EQ(shown[1], keyboard(true));
  EXPECT_EQ(shown[2], rightBar("Save"));

  panel.host.navigation().setDialogText("0.5");
  panel.host.navigation().pressDialogButton(1);
  EXPECT_EQ(panel.events(),
            (Lines{kDismiss, typed("userSlowDownFactor", "0.5"),
                   write(kDefaults, R"({"userRequestsCustomAnimationFactor":true,"userSlowDownFactor":0.5})"),
                   kSettingsPost, keyboard(false), rightBar("Respring")}));
  panel.advance(199'999'999ns);
  EXPECT_EQ(panel.events(), Lines());
  EXPECT_EQ(sliderCell(panel, "userSlowDownFactor").value(), 0.2);
  panel.advance(1ns);
  EXPECT_EQ(panel.events(), (Lines{R"({"event":"reload","what":"row","row":"userSlowDownFactor","t":0.2})"}));
  EXPECT_EQ(sliderCell(panel, "userSlowDownFactor").value(), 0.5);
  panel.advance(10s);
  EXPECT_EQ(panel.events(), Lines());
}

TEST(AnimationsPage, RefusesATypedValueOutOfBounds) {
  Panel panel;
  panel.store(kDefaults, Dictionary{{kFactor, true}});
  panel.open(kPage);
  for (const auto* text : {"1.1", "0.1", "", "abc"}) {
    sliderCell(panel, "userSlowDownFactor").presentPopup();
    panel.host.navigation().setDialogText(text);
    panel.host.navigation().pressDialogButton(1);
    ASSERT_TRUE(panel.host.navigation().dialog()) << text;
    EXPECT_EQ(panel.host.navigation().dialog()->title, "Error") << text;
  }
  panel.advance(10s);
  EXPECT_EQ(panel.stored(kDefaults), R"({"userRequestsCustomAnimationFactor":true})");
}

TEST(AnimationsPage, HasARespringButtonThatAsksFirst) {
  const std::string sheet =
      R"({"event":"dialog","kind":"sheet","title":"Are You Sure?","message":"Respring Confirmation",)"
      R"("buttons":[{"title":"Not Right Now","style":"cancel"},{"title":"Respring","style":"destructive"}],)"
      R"("text":null,"keyboardType":"default","accessory":[],"anchor":null,"t":0.0})";
  Panel panel;
  panel.host.open(kPage);
  EXPECT_EQ(panel.events(),
            (Lines{R"({"event":"push","page":"KVQuellarAnimationsListController","t":0.0})", rightBar("Respring")}));
  const auto button = *panel.host.topList()->navigationItem().rightBarButtonItem();
  EXPECT_EQ(button.action, "respring:");
  button.run();
  EXPECT_EQ(panel.events(), (Lines{sheet}));
  panel.host.navigation().pressDialogButton(0);
  EXPECT_EQ(panel.events(), (Lines{kDismiss}));
  button.run();
  panel.events();
  panel.host.navigation().pressDialogButton(1);
  EXPECT_EQ(panel.events(),
            (Lines{kDismiss, R"({"event":"post","centre":"darwin","name":"com.vantorick.quellar2.respring",)"
                             R"("object":null,"userInfo":null,"immediately":false,"through":"centre","t":0.0})"}));
}

TEST(AnimationsPage, EndsEditingWithSave) {
  Panel panel;
  panel.host.open(kPage);
  panel.host.navigation().setKeyboardVisible(true);
  const auto button = *panel.host.topList()->navigationItem().rightBarButtonItem();
  EXPECT_EQ(button.title, "Save");
  EXPECT_EQ(button.action, "Save");
  panel.host.navigation().setKeyboardVisible(false);
  EXPECT_EQ(panel.host.topList()->navigationItem().rightBarButtonItem()->title, "Respring");
}

}  // namespace animations_page_test
}  // namespace quellar::tests

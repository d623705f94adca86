// SPDX-License-Identifier: MIT
#include <algorithm>

#include "panel_family/family_page.h"

namespace quellar::tests {
namespace timers_page_test {

using platform::Dictionary;
using testing::ElementsAre;

const std::string kGlyphs = "/System/Library/PrivateFrameworks/ControlCenterUI.framework/ControlCenterGlyphTimer";

class TimersPage : public FamilyPage {
 protected:
  TimersPage() : FamilyPage("KVQuellarCustomCCTimersListController", "CustomTimer_Defaults") {}

  /// The labels of the timers, the last four rows.
  Lines timers() {
    const auto& rows = page().specifiers();
    Lines labels;
    for (std::size_t at = rows.size() - 4; at < rows.size(); ++at) labels.push_back(rows[at]->name());
    return labels;
  }
};

const Lines kPosts = {darwinLine("settings"), darwinLine("timersupdate")};

struct Timer {
  const char* key;
  int byDefault;
  const char* glyph;
};
constexpr Timer kLongestFirst[] = {{"oneHourTimer", 1, "1H"},
                                   {"twentyMinuteTimer", 20, "20M"},
                                   {"fiveMinuteTimer", 5, "5M"},
                                   {"oneMinuteTimer", 1, "1M"}};

std::string toggleRow(const std::string& label, const std::string& key) {
  return R"(PSSwitchCell {"key":")" + key + R"(","label":")" + label + R"("} set get)";
}

/// The rows with the labels of the timers from the longest on, in either order, with or without their glyphs.
Lines expected(Texts& texts, const Lines& labels, bool reversed, bool glyphs = false) {
  Lines timers;
  for (std::size_t at = 0; at < 4; ++at) {
    const Timer& timer = kLongestFirst[at];
    const std::string icon =
        glyphs ? R"("iconImage":{"$image":")" + kGlyphs + timer.glyph + R"(.png"},)" : std::string();
    timers.push_back(R"(PSStaticTextCell {"cellClass":{"$class":"KVQuellarStepperCell"},"default":)" +
                     std::to_string(timer.byDefault) + R"(,"defaultsKey":"CustomTimer_Defaults","enabled":true,)" +
                     icon + R"("key":")" + timer.key + R"(","label":")" + texts.asWritten(labels.at(at)) +
                     R"(","requestsNotification":true,"updatesLabelValue":false} set get)");
  }
  if (reversed) std::ranges::reverse(timers);
  return joined(
      {{groupRow(""), toggleRow(texts.translated("Enabled"), "usesCustomCCTimers"),
        untitledGroup(texts.translated("Stock functionality is to open the app after taping a timer, this stops the "
                                       "app from opening to the foreground")),
        toggleRow(texts.translated("Launches App"), "customTimerLaunchesApp"),
        untitledGroup(texts.translated("Switch the order the menu is presented")),
        toggleRow(texts.translated("Reverses Order"), "reversesCCTimers"), groupRow("")},
       timers});
}

const Lines kNothingStored = {"0 Hour", "0 Minute", "0 Minute", "0 Minute"};

TEST_F(TimersPage, ShowsTheLongestTimerFirstAndZeroOfEachOnAFreshInstall) {
  expectRows([](Texts& texts) { return expected(texts, kNothingStored, false); });
  EXPECT_EQ(frame::shownValue(panel.row("usesCustomCCTimers")), std::nullopt);
  for (const Timer& timer : kLongestFirst) EXPECT_EQ(stepperValue(timer.key), timer.byDefault) << timer.key;
  EXPECT_EQ(stored(), "null");
}

TEST_F(TimersPage, ShowsTheShortestTimerFirstWhereTheOrderIsStoredReversed) {
  expectRows([](Texts& texts) { return expected(texts, kNothingStored, true); }, {{"reversesCCTimers", true}});
}

TEST_F(TimersPage, NamesTheStoredCountsWithTheirUnits) {
  expectRows([](Texts& texts) { return expected(texts, {"1 Hour", "2 Minutes", "1 Minute", "100 Minutes"}, false); },
             {{"oneHourTimer", 1.0}, {"twentyMinuteTimer", 2}, {"fiveMinuteTimer", 1}, {"oneMinuteTimer", 100.0}});
  expectRows([](Texts& texts) { return expected(texts, {"2 Hours", "0 Minute", "1 Minute", "2 Minutes"}, false); },
             {{"oneHourTimer", 2.0}, {"twentyMinuteTimer", 0.0}, {"fiveMinuteTimer", 1.9}, {"oneMinuteTimer", 2.9}});
}

TEST_F(TimersPage, ShowsTheGlyphsThatTheDeviceHas) {
  for (const Timer& timer : kLongestFirst) panel.files.existing.insert(kGlyphs + timer.glyph + ".png");
  expectRows([](Texts& texts) { return expected(texts, kNothingStored, false, true); });
}

TEST_F(TimersPage, PostsTheSettingsThenTheTimersUpdateForEverySwitch) {
  for (const auto* key : {"usesCustomCCTimers", "customTimerLaunchesApp"}) {
    panel.preferences.domains.clear();
    open();
    panel.set(key, true);
    EXPECT_EQ(panel.events(), joined({{write(std::string(R"({")") + key + R"(":true})")}, kPosts}));
  }
}

TEST_F(TimersPage, ReordersTheTimersBeforeTheOrderIsWritten) {
  open({{"oneHourTimer", 2.0}});
  panel.set("reversesCCTimers", true);
  EXPECT_EQ(panel.events(),
            joined({{rowsReloadedLine(), write(R"({"oneHourTimer":2.0,"reversesCCTimers":true})")}, kPosts}));
  Texts english(false);
  EXPECT_EQ(wholeRows(page()), expected(english, {"2 Hours", "0 Minute", "0 Minute", "0 Minute"}, true));
  panel.set("reversesCCTimers", false);
  EXPECT_EQ(panel.events(),
            joined({{rowsReloadedLine(), write(R"({"oneHourTimer":2.0,"reversesCCTimers":false})")}, kPosts}));
  EXPECT_EQ(wholeRows(page()), expected(english, {"2 Hours", "0 Minute", "0 Minute", "0 Minute"}, false));
}

TEST_F(TimersPage, StoresAStepWithItsOwnPostsThenShowsTheNewLabel) {
  open();
  step("oneHourTimer", 1);
  EXPECT_THAT(panel.events(),
              ElementsAre(write(R"({"oneHourTimer":2.0})"), kSynchronizeLine, notifyPostLine("settings"),
                          processLine("stepperValueChanged", R"("oneHourTimer")", "null"), rowsReloadedLine()));
  EXPECT_THAT(timers(), ElementsAre("2 Hours", "0 Minute", "0 Minute", "0 Minute"));
  step("fiveMinuteTimer", -1);
  step("oneHourTimer", -1);
  EXPECT_THAT(timers(), ElementsAre("1 Hour", "0 Minute", "4 Minutes", "0 Minute"));
  EXPECT_EQ(stored(), R"({"fiveMinuteTimer":4.0,"oneHourTimer":1.0})");
}

TEST_F(TimersPage, KeepsTheSteppedCountsInItsNextWrite) {
  open();
  step("oneMinuteTimer", 1);
  panel.set("usesCustomCCTimers", true);
  EXPECT_EQ(stored(), R"({"oneMinuteTimer":2.0,"usesCustomCCTimers":true})");
}

TEST_F(TimersPage, KeepsTheNewOrderInTheNextStep) {
  open();
  panel.set("reversesCCTimers", true);
  step("oneMinuteTimer", 1);
  EXPECT_EQ(stored(), R"({"oneMinuteTimer":2.0,"reversesCCTimers":true})");
  EXPECT_THAT(timers(), ElementsAre("2 Minutes", "0 Minute", "0 Minute", "0 Hour"));
}

TEST_F(TimersPage, ReadsTheOrderAnewAfterAStep) {
  open();
  panel.store("CustomTimer_Defaults", Dictionary{{"reversesCCTimers", true}});
  // The stepper writes its own copy, so the order that another wrote meanwhile is gone.
  step("oneHourTimer", 1);
  EXPECT_THAT(timers(), ElementsAre("2 Hours", "0 Minute", "0 Minute", "0 Minute"));
}

TEST_F(TimersPage, HoldsACountBetweenTheStepperOwnBounds) {
  open({{"oneHourTimer", 99.0}});
  for (int presses = 0; presses < 3; ++presses) step("oneHourTimer", 1);
  EXPECT_EQ(stored(), R"({"oneHourTimer":100.0})");
  open({{"oneMinuteTimer", 1.0}});
  for (int presses = 0; presses < 3; ++presses) step("oneMinuteTimer", -1);
  EXPECT_EQ(stored(), R"({"oneMinuteTimer":0.0})");
}

TEST_F(TimersPage, ListensAgainWhenItIsShownAgain) {
  panel.open("KVQuellarForceTouchListController");
  tap("Custom Timers");
  ASSERT_EQ(page().className(), "KVQuellarCustomCCTimersListController");
  auto& timersPage = dynamic_cast<frame::KVQuellarListController&>(page());
  const auto post = [&] {
    panel.host.platform().notifications.postNotification({"stepperValueChanged", "oneHourTimer", std::nullopt});
  };
  const Lines heard = {processLine("stepperValueChanged", R"("oneHourTimer")", "null"), rowsReloadedLine()};
  panel.events();
  post();
  EXPECT_EQ(panel.events(), heard);

  panel.open("KVQuellarAlertsListController");
  panel.store("CustomTimer_Defaults", Dictionary{{"oneHourTimer", 7.0}});
  post();
  EXPECT_EQ(panel.events(), Lines{heard.front()});
  EXPECT_EQ(timersPage.userDefaults(), Dictionary{});

  back();
  panel.events();
  post();
  EXPECT_EQ(panel.events(), heard);
  EXPECT_THAT(timers(), ElementsAre("7 Hours", "0 Minute", "0 Minute", "0 Minute"));

  back();
  panel.events();
  post();
  EXPECT_EQ(panel.events(), Lines{heard.front()});
  EXPECT_EQ(page().className(), "KVQuellarForceTouchListController");
}

TEST_F(TimersPage, ShowsSaveForTheKeyboardOnlyWhileItIsShown) {
  auto& opened = open();
  panel.host.navigation().setKeyboardVisible(true);
  EXPECT_THAT(panel.events(), ElementsAre(keyboardLine(true), barLine("Save")));
  panel.host.navigation().setKeyboardVisible(false);
  panel.open("KVQuellarAlertsListController");
  panel.host.navigation().setKeyboardVisible(true);
  EXPECT_FALSE(opened.navigationItem().rightBarButtonItem());
}

}  // namespace timers_page_test
}  // namespace quellar::tests

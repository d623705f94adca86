// SPDX-License-Identifier: MIT
#include "pages/homescreen_controlcentre/timers_page.h"

#include <algorithm>

#include "frame/names.h"
#include "platform/platform.h"

namespace quellar::pages {

using namespace frame;

namespace {

Stepper timer(const char* key, int byDefault, const char* unit, const char* glyph) {
  return {.units = Units{unit, std::string(unit) + "s"},
          .key = key,
          .byDefault = byDefault,
          .requestsNotification = true,
          .icon = {.name = glyph, .bundlePath = "/System/Library/PrivateFrameworks/ControlCenterUI.framework"}};
}

/// The timers as the menu lists them, the longest first unless the order is reversed.
std::vector<Row> timers(const Surroundings& surroundings) {
  std::vector<Row> rows = {timer("oneHourTimer", 1, "Hour", "ControlCenterGlyphTimer1H"),
                           timer("twentyMinuteTimer", 20, "Minute", "ControlCenterGlyphTimer20M"),
                           timer("fiveMinuteTimer", 5, "Minute", "ControlCenterGlyphTimer5M"),
                           timer("oneMinuteTimer", 1, "Minute", "ControlCenterGlyphTimer1M")};
  const Value* reversed = platform::find(surroundings.userDefaults, "reversesCCTimers");
  if (reversed && reversed->boolValue()) std::ranges::reverse(rows);
  return rows;
}

}  // namespace

const Page& KVQuellarCustomCCTimersListController::page() {
  static const Page page{
      .className = "KVQuellarCustomCCTimersListController",
      .defaultsKey = "CustomTimer_Defaults",
      .posts = {darwin(kSettings), darwin(kTimersUpdate)},
      .rebuiltBy = "reversesCCTimers",
      .stepperRefresh = StepperRefresh{},
      .saveButton = true,
      .rows = {
          Group{},
          Switch{.label = "Enabled", .key = "usesCustomCCTimers", .byDefault = std::nullopt},
          Group{.footer =
                    "Stock functionality is to open the app after taping a timer, this stops the app from opening "
                    "to the foreground"},
          Switch{.label = "Launches App", .key = "customTimerLaunchesApp", .byDefault = std::nullopt},
          Group{.footer = "Switch the order the menu is presented"},
          Switch{.label = "Reverses Order", .key = "reversesCCTimers", .byDefault = std::nullopt},
          Group{},
          Computed{timers},
      }};
  return page;
}

void KVQuellarCustomCCTimersListController::viewWillAppear() {
  KVQuellarListController::viewWillAppear();
  if (!listening_) observeNotifications();
  listening_ = true;
}

void KVQuellarCustomCCTimersListController::viewWillDisappear() {
  KVQuellarListController::viewWillDisappear();
  platform().notifications.removeObserver(lifetime());
  listening_ = false;
}

}  // namespace quellar::pages

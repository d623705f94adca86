// SPDX-License-Identifier: MIT
#include <ostream>

#include "panel_family/family_page.h"

namespace quellar::tests {
namespace wrong_values_test {

using namespace std::chrono_literals;
using platform::Array;
using platform::Data;
using platform::Date;
using platform::Dictionary;
using platform::Value;

std::string json(const Value& value) {
  return dump(host::headless::toJson(value));
}

/// A row of a page whose stored value is of a type that the row can't show.
struct WrongValue {
  std::string name;
  std::string page;
  std::string defaultsKey;
  std::string key;
  /// What shows the row.
  Dictionary around;
  std::vector<Value> wrong;
  std::optional<Value> shown;
  /// A switch of the page, to write something else.
  std::string other;
  /// The user changes the row, and what is stored then.
  std::function<void(Panel&)> change;
  Value changed;
};
void PrintTo(const WrongValue& each, std::ostream* stream) {
  *stream << each.name;
}

const std::vector<Value> kNoNumbers = {"yes", Array{true}, Dictionary{{"a", 1}}, Data{{1, 2}}, Date{5}};

void moveSlider(Panel& panel, const std::string& key, double value) {
  panel.host.topList()->userMovesSlider(panel.row(key), value);
}
void step(Panel& panel, const std::string& key) {
  std::dynamic_pointer_cast<cells::KVQuellarStepperCell>(panel.row(key).cell())->press(1);
}
void pickFirst(Panel& panel, const std::string& key) {
  auto& page = *panel.host.topList();
  page.userTapsRow(*page.indexOfSpecifier(panel.row(key)));
  EXPECT_EQ(dynamic_cast<platform::PSListItemsController&>(*panel.host.topList()).checkedIndex(), std::nullopt);
  panel.host.topList()->userTapsRow(1);
  panel.host.navigation().popViewController(true);
}

std::vector<WrongValue> wrongValues() {
  std::vector<Value> noCounts = kNoNumbers;
  noCounts.emplace_back(true);
  return {
      {"Switch",
       "KVQuellarAlertsListController",
       "Alerts_Defaults",
       "userDisablesNoSimAlerts",
       {},
       kNoNumbers,
       Value(0),
       "userRequestsDynamicAlerts",
       [](Panel& panel) { panel.set("userDisablesNoSimAlerts", true); },
       true},
      {"SwitchWithoutDefault",
       "KVQuellarCustomCCTimersListController",
       "CustomTimer_Defaults",
       "usesCustomCCTimers",
       {},
       kNoNumbers,
       std::nullopt,
       "customTimerLaunchesApp",
       [](Panel& panel) { panel.set("usesCustomCCTimers", false); },
       false},
      {"TypedSlider",
       "KVQuellarForceTouchListController",
       "ForceTouch_Defaults",
       "shortcutsDimmedIconAlpha",
       {{"shortcutsDimIcons", true}},
       noCounts,
       Value(0.2),
       "shortcutsHideBackgroundBlur",
       [](Panel& panel) { moveSlider(panel, "shortcutsDimmedIconAlpha", 0.5); },
       0.5},
      {"PlainSlider",
       "KVQuellarAppSwitcherListController",
       "AppSwitcher_Defaults",
       "switcherBackgroundDarkeningAmount",
       {{"usesCustomSwitcherWallpaper", true}},
       noCounts,
       Value(0),
       "disablePopFromSide",
       [](Panel& panel) { moveSlider(panel, "switcherBackgroundDarkeningAmount", 0.5); },
       0.5},
      {"Stepper",
       "KVQuellarDockListController",
       "Dock_Defaults",
       "dockMaxIcons",
       {{"customMaxDockIcons", true}},
       noCounts,
       Value(4),
       "userDisablesBackgroundBlur",
       [](Panel& panel) { step(panel, "dockMaxIcons"); },
       5.0},
      {"Text",
       "KVQuellarLockScreenStringsListController",
       "LockScreen_Defaults",
       "callToActionText",
       {{"useCustomActionText", true}},
       {5, 0.5, true, Array{"a"}, Dictionary{{"a", 1}}, Data{{1}}},
       std::nullopt,
       "userRequestsCustomLegalText",
       [](Panel& panel) {
         panel.host.topList()->beginEditing(panel.row("callToActionText"));
         EXPECT_EQ(panel.host.topList()->editingText(), "");
         panel.host.topList()->setEditingText("mine");
         panel.host.topList()->endEditing();
       },
       "mine"},
      {"Segment",
       "KVQuellarControlCenterListController",
       "ControlCenter_Defaults",
       "userStyleForLumenfold",
       {{"userRequestsLumenfold", true}},
       noCounts,
       Value(3),
       "disableCCButtonText",
       [](Panel& panel) { panel.set("userStyleForLumenfold", 1); },
       1},
      {"Picker",
       "KVQuellarDockListController",
       "Dock_Defaults",
       "dockBackgroundStyle",
       {{"usesCustomDockBlur", true}},
       noCounts,
       std::nullopt,
       "userDisablesBackgroundBlur",
       [](Panel& panel) { pickFirst(panel, "dockBackgroundStyle"); },
       0},
      {"CameraApp",
       "KVQuellarLockScreenListController",
       "LockScreen_Defaults",
       "userCustomCameraApp",
       {{"userRequestsCustomCameraApp", true}},
       {5, true, Array{"lens.desktop"}, Dictionary{{"a", 1}}},
       std::nullopt,
       "hideCancelButton",
       [](Panel& panel) { pickFirst(panel, "userCustomCameraApp"); },
       "lens.desktop"},
  };
}

class WrongStoredValue : public testing::TestWithParam<WrongValue> {};

TEST_P(WrongStoredValue, ShowsTheDefaultAndIsReplacedOnlyByTheUser) {
  const WrongValue& each = GetParam();
  for (const Value& wrong : each.wrong) {
    Panel panel;
    panel.bundles.rowFiles["QuellarCameraApp"] = Array{Dictionary{{"cell", "PSLinkListCell"},
                                                                  {"key", "userCustomCameraApp"},
                                                                  {"detail", "KVQuellarListItemsController"},
                                                                  {"applications", true}}};
    panel.applications.installed = {{"lens.desktop", "Lens"}};
    Dictionary dictionary = each.around;
    dictionary.insert_or_assign(each.key, wrong);
    panel.store(each.defaultsKey, dictionary);

    panel.open(each.page);
    EXPECT_EQ(frame::shownValue(panel.row(each.key)), each.shown) << json(wrong);
    EXPECT_EQ(frame::storedValue(panel.row(each.key)), wrong);
    panel.advance(1s);
    EXPECT_EQ(panel.stored(each.defaultsKey), json(dictionary));

    panel.set(each.other, true);
    dictionary.insert_or_assign(each.other, true);
    EXPECT_EQ(panel.stored(each.defaultsKey), json(dictionary));

    // Opened again, because a stepper row writes its own copy of what was stored when it was first shown.
    panel.open(each.page);
    each.change(panel);
    dictionary.insert_or_assign(each.key, each.changed);
    EXPECT_EQ(panel.stored(each.defaultsKey), json(dictionary)) << json(wrong);
  }
}

INSTANTIATE_TEST_SUITE_P(OfEachKind, WrongStoredValue, testing::ValuesIn(wrongValues()),
                         [](const auto& each) { return each.param.name; });

TEST(WrongStoredColor, ShowsTheDefaultColorAndIsReplacedOnlyByTheUser) {
  for (const Value& wrong : {Value(5), Value(true), Value(Array{"#ffffff"}), Value(Dictionary{{"a", 1}})}) {
    Panel panel;
    Dictionary dictionary{{"useCustomCCBackgroundColor", true}, {"controlCenterBackgroundColor", wrong}};
    panel.store("ControlCenter_Defaults", dictionary);
    auto& page = panel.open("KVQuellarControlCenterListController");
    auto& row = *page.specifiers().back();
    EXPECT_EQ(frame::shownValue(row), Value("#ffffff"));
    const auto& swatch = dynamic_cast<cells::KVQuellarColorPreviewTableCell&>(*row.cell()).swatch();
    EXPECT_EQ(hexString(swatch.colorAt(30, 30)), "#ffffff");
    panel.set("disableCCButtonText", true);
    dictionary.insert_or_assign("disableCCButtonText", true);
    EXPECT_EQ(panel.stored("ControlCenter_Defaults"), json(dictionary));
    page.userTapsRow(page.specifiers().size() - 1);
    EXPECT_EQ(hexString(panel.host.navigation().dialog()->color->start), "#ffffff");
    panel.host.navigation().completeColorDialog({1, 2, 3, 1});
    dictionary.insert_or_assign("controlCenterBackgroundColor", "#010203");
    EXPECT_EQ(panel.stored("ControlCenter_Defaults"), json(dictionary));
  }
}

TEST(WrongStoredSwitch, HidesTheBlockThatItControls) {
  for (const Value& wrong : kNoNumbers) {
    Panel panel;
    panel.store("Medusa_Defaults", Dictionary{{"userRequestsCustomSlideOverBlur", wrong}});
    EXPECT_EQ(panel.open("KVQuellarMedusaListController").specifiers().size(), 4U);
    panel.set("userRequestsCustomSlideOverBlur", true);
    EXPECT_EQ(panel.host.topList()->specifiers().size(), 6U);
  }
}

TEST(WrongStoredTimer, CountsAsNone) {
  for (const Value& wrong : kNoNumbers) {
    Panel panel;
    panel.store("CustomTimer_Defaults", Dictionary{{"twentyMinuteTimer", wrong}});
    auto& page = panel.open("KVQuellarCustomCCTimersListController");
    EXPECT_EQ(panel.row("twentyMinuteTimer").name(), "0 Minute");
    step(panel, "twentyMinuteTimer");
    EXPECT_EQ(panel.stored("CustomTimer_Defaults"), R"({"twentyMinuteTimer":21.0})");
    EXPECT_EQ(page.specifiers().at(8)->name(), "21 Minutes");
  }
}

TEST(WrongStoredChoice, IsShownAsItIsWhereItIsANumberThatIsNoneOfTheChoices) {
  Panel panel;
  panel.store("LockScreen_Defaults", Dictionary{{"disableLSDateTime", true}, {"userStyleForDateTimeHiding", 9}});
  panel.open("KVQuellarLockScreenListController");
  EXPECT_EQ(frame::shownValue(panel.row("userStyleForDateTimeHiding")), Value(9));
  EXPECT_EQ(panel.row("userStyleForDateTimeHiding").indexOfValue(9), std::nullopt);
  panel.set("hideCancelButton", true);
  EXPECT_EQ(panel.stored("LockScreen_Defaults"),
            R"({"disableLSDateTime":true,"hideCancelButton":true,"userStyleForDateTimeHiding":9})");
}

struct Store {
  std::string page;
  std::string defaultsKey;
  std::string toggle;
};
void PrintTo(const Store& each, std::ostream* stream) {
  *stream << each.page;
}

class WrongPageDictionary : public testing::TestWithParam<Store> {};

TEST_P(WrongPageDictionary, ReadsAsEmptyAndIsReplacedByTheFirstWrite) {
  for (const Value& wrong : {Value("a text"), Value(5), Value(Array{1})}) {
    Panel panel;
    const Store& each = GetParam();
    const std::size_t rows = panel.open(each.page).specifiers().size();
    panel.store(each.defaultsKey, wrong);
    EXPECT_EQ(panel.open(each.page).specifiers().size(), rows);
    panel.advance(1s);
    EXPECT_EQ(panel.stored(each.defaultsKey), json(wrong));
    panel.set(each.toggle, true);
    EXPECT_EQ(panel.stored(each.defaultsKey), R"({")" + each.toggle + R"(":true})");
  }
}

INSTANTIATE_TEST_SUITE_P(
    OfEachPage, WrongPageDictionary,
    testing::Values(Store{"KVQuellarLockScreenListController", "LockScreen_Defaults", "hideCancelButton"},
                    Store{"KVQuellarLockScreenStringsListController", "LockScreen_Defaults", "useCustomActionText"},
                    Store{"KVQuellarAlertsListController", "Alerts_Defaults", "userRequestsDynamicAlerts"},
                    Store{"KVQuellarForceTouchListController", "ForceTouch_Defaults", "shortcutsDimIcons"},
                    Store{"KVQuellarDockListController", "Dock_Defaults", "customMaxDockIcons"},
                    Store{"KVQuellarFoldersListController", "Folders_Defaults", "foldersHideOpenBlur"},
                    Store{"KVQuellarControlCenterListController", "ControlCenter_Defaults", "userRequestsLumenfold"},
                    Store{"KVQuellarCustomCCTimersListController", "CustomTimer_Defaults", "reversesCCTimers"},
                    Store{"KVQuellarAppSwitcherListController", "AppSwitcher_Defaults", "userLimitsMaxSwitcherCards"},
                    Store{"KVQuellarMedusaListController", "Medusa_Defaults", "userRequestsMedusaEnabled"}),
    [](const auto& each) { return each.param.page; });

}  // namespace wrong_values_test
}  // namespace quellar::tests

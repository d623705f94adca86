// SPDX-License-Identifier: MIT
#include "cells/stepper_cell.h"

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
namespace stepper_cell_test {

using namespace frame;
using cells::KVQuellarStepperCell;
using platform::Class;
using platform::Color;
using platform::Dictionary;
using platform::PSCellType;
using platform::PSSpecifier;
using platform::Rect;
using testing::ElementsAre;
using testing::IsEmpty;
using Properties = std::vector<std::pair<std::string, Value>>;

const std::string kSynchronizeLine = R"({"event":"synchronize","domain":"com.vantorick.quellar2","t":0.0})";

class StepperCell : public testing::Test {
 protected:
  Panel panel;
  PSSpecifier::Pointer row =
      PSSpecifier::preferenceSpecifierNamed("Row", nullptr, {}, {}, "", PSCellType::PSStaticTextCell);

  /// The cell of a row with these properties beside key and defaults key, laid out.
  std::shared_ptr<KVQuellarStepperCell> make(const Properties& properties, Rect frame = {0, 0, 320, 44}) {
    row->setProperty("key", Value("count"));
    row->setProperty("defaultsKey", Value("S_Defaults"));
    row->setProperty("cellClass", Class{"KVQuellarStepperCell"});
    for (const auto& [key, value] : properties) row->setProperty(key, value);
    auto cell = std::make_shared<KVQuellarStepperCell>(panel.host.platform(), *row, frame);
    cell->layoutSubviews();
    panel.events();
    return cell;
  }
  static std::string copyOf(const KVQuellarStepperCell& cell) {
    return dump(host::headless::toJson(Value(*cell.userDefaults())));
  }
};

TEST_F(StepperCell, LaysOutControlAndLabelFromTheCellsFrame) {
  const auto cell = make({});
  EXPECT_EQ(cell->className(), "KVQuellarStepperCell");
  EXPECT_EQ(cell->control(), platform::Control::stepper);
  EXPECT_EQ(cell->stepper().frame, (Rect{220, 8, 84, 28}));
  EXPECT_EQ(cell->label().frame, (Rect{141, 0, 72, 44}));
  EXPECT_EQ(cell->label().color, (Color{0, 0, 0, 1}));
  const auto wide = make({}, {0, 0, 768, 60});
  EXPECT_EQ(wide->stepper().frame, (Rect{620, 8, 132, 44}));
  EXPECT_EQ(wide->label().frame, (Rect{493, 0, 104, 60}));
}

TEST_F(StepperCell, HasThePlatformControlsSettingsWhereTheRowSetsNone) {
  const auto plain = make({})->stepper();
  EXPECT_EQ(plain.minimum, 0);
  EXPECT_EQ(plain.maximum, 100);
  EXPECT_EQ(plain.step, 1);
  EXPECT_TRUE(plain.continuous && plain.autorepeat && !plain.wraps);
  const auto set = make({{"minimumValue", 2},
                         {"maximumValue", 8.5},
                         {"stepValue", 0.5},
                         {"continuous", false},
                         {"autorepeat", false},
                         {"wraps", true}})
                       ->stepper();
  EXPECT_EQ(set.minimum, 2);
  EXPECT_EQ(set.maximum, 8.5);
  EXPECT_EQ(set.step, 0.5);
  EXPECT_TRUE(!set.continuous && !set.autorepeat && set.wraps);
}

TEST_F(StepperCell, HoldsTheDefaultAsAnIntegerWhereNothingIsStored) {
  const auto cell = make({{"default", 4}, {"updatesLabelValue", true}});
  EXPECT_EQ(cell->stepper().value, 4.0);
  EXPECT_EQ(cell->label().text, "4");
  EXPECT_EQ(copyOf(*cell), R"({"count":4})");
  EXPECT_EQ(panel.stored("S_Defaults"), "null") << "it reaches the store with the next step";
  EXPECT_EQ(copyOf(*make({{"default", 4.9}})), R"({"count":4})");
}

TEST_F(StepperCell, HoldsItsCurrentValueAsARealWhereThereIsNoDefaultEither) {
  EXPECT_EQ(copyOf(*make({})), R"({"count":0.0})");
  const auto raised = make({{"minimumValue", 3}});
  EXPECT_EQ(raised->stepper().value, 3.0);
  EXPECT_EQ(copyOf(*raised), R"({"count":3.0})");
}

TEST_F(StepperCell, TakesTheStoredValueBeforeTheDefault) {
  panel.store("S_Defaults", Dictionary{{"count", 9}, {"other", "x"}});
  const auto cell = make({{"default", 4}, {"updatesLabelValue", true}});
  EXPECT_EQ(cell->stepper().value, 9.0);
  EXPECT_EQ(cell->label().text, "9");
  EXPECT_EQ(copyOf(*cell), R"({"count":9,"other":"x"})");
}

TEST_F(StepperCell, HoldsAStoredValueOutOfBoundsAtTheBoundAndLeavesItInTheCopy) {
  panel.store("S_Defaults", Dictionary{{"count", 250}});
  const auto high = make({{"default", 4}});
  EXPECT_EQ(high->stepper().value, 100.0);
  EXPECT_EQ(copyOf(*high), R"({"count":250})");
  high->press(1);
  EXPECT_THAT(panel.events(), IsEmpty());
  high->press(-1);
  EXPECT_EQ(panel.stored("S_Defaults"), R"({"count":99.0})");
  panel.store("S_Defaults", Dictionary{{"count", -7.5}});
  EXPECT_EQ(make({{"default", 4}})->stepper().value, 0.0);
}

TEST_F(StepperCell, StartsFromTheDefaultWhereTheStoredValueIsNoNumberAndKeepsThatUntilAStep) {
  for (const auto& [stored, copy] : std::vector<std::pair<Value, std::string>>{
           {"9", R"({"count":"9"})"}, {true, R"({"count":true})"}, {platform::Array{1}, R"({"count":[1]})"}}) {
    panel.store("S_Defaults", Dictionary{{"count", stored}});
    const auto cell = make({{"default", 4}});
    EXPECT_EQ(cell->stepper().value, 4.0);
    EXPECT_EQ(copyOf(*cell), copy);
    cell->press(1);
    EXPECT_EQ(panel.stored("S_Defaults"), R"({"count":5.0})");
  }
}

TEST_F(StepperCell, StartsFromAnEmptyCopyWhereThePagesDictionaryIsNone) {
  panel.store("S_Defaults", Value("text"));
  const auto cell = make({{"default", 4}});
  EXPECT_EQ(copyOf(*cell), R"({"count":4})");
}

TEST_F(StepperCell, StoresARealWithItsWholeCopyThenSynchronisesThenPosts) {
  panel.store("S_Defaults", Dictionary{{"other", "x"}});
  const auto cell = make({{"default", 4}, {"updatesLabelValue", true}, {"requestsNotification", false}});
  cell->press(1);
  EXPECT_THAT(panel.events(), ElementsAre(writeLine("S_Defaults", R"({"count":5.0,"other":"x"})"), kSynchronizeLine,
                                          notifyPostLine("settings")));
  EXPECT_EQ(cell->label().text, "5");
  cell->press(-1);
  EXPECT_THAT(panel.events(), ElementsAre(writeLine("S_Defaults", R"({"count":4.0,"other":"x"})"), kSynchronizeLine,
                                          notifyPostLine("settings")));
  EXPECT_EQ(cell->label().text, "4");
}

TEST_F(StepperCell, PostsItsKeyInTheProcessWhereTheRowRequestsIt) {
  const auto cell = make({{"default", 4}, {"requestsNotification", true}});
  cell->press(1);
  EXPECT_THAT(panel.events(),
              ElementsAre(writeLine("S_Defaults", R"({"count":5.0})"), kSynchronizeLine, notifyPostLine("settings"),
                          processLine("stepperValueChanged", R"("count")", "null")));
  EXPECT_EQ(cell->label().text, "") << "the row asks for no number beside the stepper";
}

TEST_F(StepperCell, ShowsTheNumberRoundedToAWholeOne) {
  panel.store("S_Defaults", Dictionary{{"count", 2.6}});
  EXPECT_EQ(make({{"updatesLabelValue", true}})->label().text, "3");
}

TEST_F(StepperCell, StopsAtItsBounds) {
  const auto cell = make({{"default", 2}, {"minimumValue", 1}, {"maximumValue", 3}});
  cell->press(1);
  EXPECT_EQ(cell->stepper().value, 3.0);
  panel.events();
  cell->press(1);
  EXPECT_THAT(panel.events(), IsEmpty());
  cell->press(-1);
  cell->press(-1);
  panel.events();
  cell->press(-1);
  EXPECT_EQ(cell->stepper().value, 1.0);
  EXPECT_THAT(panel.events(), IsEmpty());
}

TEST_F(StepperCell, WrapsFromOneBoundToTheOther) {
  const auto cell = make({{"default", 3}, {"minimumValue", 1}, {"maximumValue", 3}, {"wraps", true}});
  cell->press(1);
  EXPECT_EQ(panel.stored("S_Defaults"), R"({"count":1.0})");
  cell->press(-1);
  EXPECT_EQ(panel.stored("S_Defaults"), R"({"count":3.0})");
}

TEST_F(StepperCell, EndsAtTheBoundWhereAStepIsLongerThanWhatIsLeft) {
  const auto cell = make({{"default", 7}, {"maximumValue", 10}, {"stepValue", 5}});
  cell->press(1);
  EXPECT_EQ(cell->stepper().value, 10.0);
}

TEST_F(StepperCell, IsWrittenOnceWhateverTheDistance) {
  const auto cell = make({{"default", 2}});
  cell->moveTo(40);
  EXPECT_THAT(panel.events(),
              ElementsAre(writeLine("S_Defaults", R"({"count":40.0})"), kSynchronizeLine, notifyPostLine("settings")));
  cell->moveTo(40);
  EXPECT_THAT(panel.events(), IsEmpty());
  cell->moveTo(1000);
  EXPECT_EQ(panel.stored("S_Defaults"), R"({"count":100.0})");
}

TEST_F(StepperCell, RefusesWhatNoStepsLeadTo) {
  const auto cell = make({{"default", 2}});
  for (const double value : {4.9e-324, 2.5, 3.0000000001, 99.99999999999999, std::nan(""),
                             std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()}) {
    EXPECT_FALSE(cell->reaches(value)) << value;
    cell->moveTo(value);
    EXPECT_EQ(cell->stepper().value, 2.0) << value;
  }
  EXPECT_THAT(panel.events(), IsEmpty());
  cell->moveTo(-0.0);
  EXPECT_EQ(panel.stored("S_Defaults"), R"({"count":0.0})");
  const auto halves = make({{"minimumValue", 1}, {"stepValue", 0.5}});
  EXPECT_TRUE(halves->reaches(2.5));
  EXPECT_FALSE(halves->reaches(2.25));
}

TEST_F(StepperCell, StepsOnFromAStoredFraction) {
  panel.store("S_Defaults", Dictionary{{"count", 2.5}});
  const auto cell = make({});
  cell->press(1);
  EXPECT_EQ(cell->stepper().value, 3.5);
}

TEST_F(StepperCell, WritesTheCopyOfItsFirstLayoutBackOverWhatOthersWrote) {
  panel.store("S_Defaults", Dictionary{{"other", 1}});
  const auto cell = make({{"default", 2}});
  panel.store("S_Defaults", Dictionary{{"other", 2}, {"new", true}});
  cell->layoutSubviews();
  cell->press(1);
  EXPECT_EQ(panel.stored("S_Defaults"), R"({"count":3.0,"other":1})");
}

TEST_F(StepperCell, ReadsAndWritesNoDictionaryWithoutADefaultsKey) {
  panel.preferences.setAppValue("", Dictionary{{"count", 8}}, "com.vantorick.quellar2");
  const auto bare = PSSpecifier::preferenceSpecifierNamed("Row", nullptr, {}, {}, "", PSCellType::PSStaticTextCell);
  bare->setProperty("key", Value("count"));
  bare->setProperty("cellClass", Class{"KVQuellarStepperCell"});
  const auto cell = std::make_shared<KVQuellarStepperCell>(panel.host.platform(), *bare, Rect{0, 0, 320, 44});
  cell->layoutSubviews();
  EXPECT_EQ(copyOf(*cell), R"({"count":0.0})");
  cell->press(1);
  EXPECT_THAT(panel.events(), ElementsAre(kSynchronizeLine, notifyPostLine("settings")));
  EXPECT_EQ(panel.stored(""), R"({"count":8})");
}

TEST_F(StepperCell, ConfiguresNothingWithoutACellClassButItsLabel) {
  const auto bare = PSSpecifier::preferenceSpecifierNamed("Row", nullptr, {}, {}, "", PSCellType::PSStaticTextCell);
  bare->setProperty("key", Value("count"));
  bare->setProperty("defaultsKey", Value("S_Defaults"));
  bare->setProperty("default", Value(4));
  bare->setProperty("maximumValue", Value(50));
  bare->setProperty("updatesLabelValue", Value(true));
  KVQuellarStepperCell cell(panel.host.platform(), *bare, {0, 0, 320, 44});
  cell.layoutSubviews();
  EXPECT_EQ(copyOf(cell), "{}");
  EXPECT_EQ(cell.stepper().value, 0.0);
  EXPECT_EQ(cell.stepper().maximum, 100.0);
  EXPECT_EQ(cell.label().text, "0");
}

TEST_F(StepperCell, KeepsItsCopyOnAPageThatDoesNotBuildItsRowsAnew) {
  static const Page page{
      .className = "P",
      .defaultsKey = "S_Defaults",
      .rows = {
          Switch{.label = "Show", .key = "show"},
          Dependent{.name = "countSpec",
                    .shownBy = "show",
                    .rows = {Stepper{.label = "Count", .key = "count", .byDefault = 4, .minimum = 1, .maximum = 6}}},
          Switch{.label = "Other", .key = "other"}}};
  auto controller = std::make_shared<KVQuellarListController>(panel.host.platform(), page);
  panel.host.navigation().pushViewController(controller);
  panel.set("show", true);
  const auto cell = std::dynamic_pointer_cast<KVQuellarStepperCell>(panel.row("count").cell());
  ASSERT_TRUE(cell);
  EXPECT_EQ(cell->stepper().minimum, 1.0);
  EXPECT_EQ(cell->stepper().maximum, 6.0);
  panel.set("other", true);
  cell->press(1);
  EXPECT_EQ(panel.stored("S_Defaults"), R"({"count":5.0,"show":true})") << "its copy is older than the other switch";
  panel.set("show", false);
  EXPECT_EQ(panel.stored("S_Defaults"), R"({"other":true,"show":false})") << "the page's copy knows of no step";
  // The block comes back with its cell, and its cell with its copy.
  panel.set("show", true);
  EXPECT_EQ(panel.row("count").cell(), cell);
  EXPECT_EQ(cell->stepper().value, 5.0);
  cell->press(1);
  EXPECT_EQ(panel.stored("S_Defaults"), R"({"count":6.0,"show":true})");
}

}  // namespace stepper_cell_test
}  // namespace quellar::tests

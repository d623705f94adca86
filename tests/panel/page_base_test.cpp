// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "frame/list_controller.h"
#include "frame/localizer.h"
#include "frame/names.h"
#include "frame/row_value.h"
#include "support/memory_services.h"

namespace quellar::tests {
namespace page_base_test {

using namespace frame;
using platform::Array;
using platform::Dictionary;
using platform::PSCellType;
using platform::PSSpecifier;
using platform::Value;
using testing::ElementsAre;

const Page& nestedPage() {
  static const Page page{
      .className = "NestedPage",
      .defaultsKey = "Nested_Defaults",
      .posts = {darwin("com.vantorick.quellar2.settings")},
      .rows = {
          Switch{.label = "Outer", .key = "outer"},
          Dependent{.name = "outerSpecs",
                    .shownBy = "outer",
                    .after = "last",
                    .rows = {Switch{.label = "Inner", .key = "inner"},
                             Dependent{.name = "innerSpec", .shownBy = "inner", .rows = {TextEntry{.key = "text"}}},
                             Switch{.label = "Inner last", .key = "innerLast"}}},
          Switch{.label = "Last", .key = "last"}}};
  return page;
}

class PageBaseTest : public testing::Test {
 protected:
  Panel panel;

  KVQuellarListController& open(const Page& page) {
    auto controller = std::make_shared<KVQuellarListController>(panel.host.platform(), page);
    panel.host.navigation().pushViewController(controller);
    panel.events();
    return *controller;
  }
};

TEST_F(PageBaseTest, StartsWithAnEmptyDictionaryOnAFreshInstallAndWithWhatIsNoDictionary) {
  EXPECT_EQ(open(nestedPage()).userDefaults(), Dictionary{});
  panel.store("Nested_Defaults", Value("a text"));
  auto& page = open(nestedPage());
  EXPECT_EQ(page.userDefaults(), Dictionary{});
  EXPECT_EQ(panel.stored("Nested_Defaults"), R"("a text")");
  panel.set("last", true);
  EXPECT_EQ(panel.stored("Nested_Defaults"), R"({"last":true})");
}

TEST_F(PageBaseTest, WritesItsWholeDictionaryAndPostsAlthoughTheValueIsTheSame) {
  panel.store("Nested_Defaults", Dictionary{{"foreign", Array{1, "x"}}, {"last", true}});
  auto& page = open(nestedPage());
  for (int times = 0; times < 2; ++times) {
    panel.set("last", true);
    EXPECT_THAT(
        panel.events(),
        ElementsAre(
            R"({"event":"write","domain":"com.vantorick.quellar2","key":"Nested_Defaults","value":{"foreign":[1,"x"],"last":true},"t":0.0})",
            R"({"event":"post","centre":"darwin","name":"com.vantorick.quellar2.settings","object":null,"userInfo":null,"immediately":true,"through":"centre","t":0.0})"));
  }
  EXPECT_EQ(panel.stored("Nested_Defaults"), dump(host::headless::toJson(Value(page.userDefaults()))));
}

TEST_F(PageBaseTest, KeepsItsCopyWhateverHappensToTheStore) {
  panel.store("Nested_Defaults", Dictionary{{"last", true}});
  auto& page = open(nestedPage());
  panel.store("Nested_Defaults", Dictionary{{"other", true}});
  EXPECT_EQ(page.readPreferenceValue(panel.row("last")), Value(true));
  panel.set("outer", false);
  EXPECT_EQ(panel.stored("Nested_Defaults"), R"({"last":true,"outer":false})");
}

TEST_F(PageBaseTest, PutsANestedBlockIntoTheOneThatHoldsItsSwitch) {
  panel.store("Nested_Defaults", Dictionary{{"outer", true}, {"inner", true}});
  open(nestedPage());
  EXPECT_THAT(panel.rows(),
              ElementsAre("PSSwitchCell Outer | outer", "PSSwitchCell Inner | inner", "PSEditTextCell Text: | text",
                          "PSSwitchCell Inner last | innerLast", "PSSwitchCell Last | last"));
}

TEST_F(PageBaseTest, HidesANestedBlockWhoseOuterSwitchIsOff) {
  panel.store("Nested_Defaults", Dictionary{{"inner", true}});
  open(nestedPage());
  EXPECT_THAT(panel.rows(), ElementsAre("PSSwitchCell Outer | outer", "PSSwitchCell Last | last"));
}

TEST_F(PageBaseTest, InsertsABlockAfterTheRowThatItNamesAndRemovesOnlyItsOwnRows) {
  open(nestedPage());
  panel.set("outer", true);
  panel.set("inner", true);
  EXPECT_THAT(panel.rows(),
              ElementsAre("PSSwitchCell Outer | outer", "PSSwitchCell Last | last", "PSSwitchCell Inner | inner",
                          "PSEditTextCell Text: | text", "PSSwitchCell Inner last | innerLast"));
  panel.set("outer", false);
  EXPECT_THAT(panel.rows(),
              ElementsAre("PSSwitchCell Outer | outer", "PSSwitchCell Last | last", "PSEditTextCell Text: | text"));
}

TEST_F(PageBaseTest, CountsANumberOtherThanZeroAsOnAndWhatIsNoNumberAsOff) {
  for (const auto& [value, shown] : std::vector<std::pair<Value, bool>>{
           {1, true}, {0.5, true}, {0, false}, {Value("true"), false}, {Array{1}, false}, {Dictionary{}, false}}) {
    panel.store("Nested_Defaults", Dictionary{{"outer", value}});
    EXPECT_EQ(open(nestedPage()).specifiers().size(), shown ? 4U : 2U);
  }
}

TEST_F(PageBaseTest, GivesItsSwitchesAndTitlesOneLook) {
  auto& page = open(nestedPage());
  const auto& cell = *page.specifiers()[0]->cell();
  EXPECT_EQ(hexString(cell.titleColor), "#162433");
  ASSERT_TRUE(cell.onTint);
  EXPECT_EQ(hexString(*cell.onTint), "#41a9d6");
  EXPECT_EQ(cell.className(), "PSSwitchTableCell");
}

TEST_F(PageBaseTest, ShowsNoSaveButtonOnAPageThatAsksForNone) {
  panel.store("Nested_Defaults", Dictionary{{"outer", true}, {"inner", true}});
  open(nestedPage());
  panel.type("text", "x");
  EXPECT_THAT(panel.events(), ElementsAre(R"({"event":"keyboard","visible":true,"t":0.0})"));
}

TEST_F(PageBaseTest, PutsTheRespringButtonBackWhenTheKeyboardGoes) {
  static const Page page{.className = "P",
                         .defaultsKey = "P_Defaults",
                         .respringButton = true,
                         .saveButton = true,
                         .rows = {TextEntry{.key = "text"}}};
  auto& opened = open(page);
  panel.type("text", "x");
  opened.Save();
  EXPECT_THAT(
      panel.events(),
      ElementsAre(
          R"({"event":"keyboard","visible":true,"t":0.0})",
          R"({"event":"bar","side":"right","title":"Save","style":"done","t":0.0})",
          R"({"event":"write","domain":"com.vantorick.quellar2","key":"P_Defaults","value":{"text":"x"},"t":0.0})",
          R"({"event":"keyboard","visible":false,"t":0.0})",
          R"({"event":"bar","side":"right","title":"Respring","style":"done","t":0.0})"));
}

TEST_F(PageBaseTest, LoadsTheRowsOfARowFileLocalised) {
  panel.bundles.texts = {{"Flag", "Fahne"}, {"Foot", "Fuß"}, {"One", "Eins"}, {"1st", "1."}};
  panel.bundles.rowFiles["Rows"] =
      Array{Dictionary{{"cell", "PSGroupCell"}, {"footerText", "Foot"}}, Dictionary{{"cell", "PSSegmentCell"},
                                                                                    {"label", "Flag"},
                                                                                    {"key", "flag"},
                                                                                    {"validValues", Array{1}},
                                                                                    {"validTitles", Array{"One"}},
                                                                                    {"shortTitles", Array{"1st"}}}};
  static const Page page{.className = "P", .defaultsKey = "P_Defaults", .rows = {RowFile{"Rows"}}};
  auto& opened = open(page);
  ASSERT_EQ(opened.specifiers().size(), 2U);
  EXPECT_EQ(opened.specifiers()[0]->stringForKey("footerText"), "Fuß");
  EXPECT_EQ(opened.specifiers()[1]->name(), "Fahne");
  EXPECT_THAT(opened.specifiers()[1]->titles(), ElementsAre("Eins"));
  EXPECT_THAT(opened.specifiers()[1]->shortTitles(), ElementsAre("1."));
  panel.set("flag", Value(1));
  EXPECT_EQ(panel.stored("P_Defaults"), R"({"flag":1})");
}

TEST_F(PageBaseTest, ReadsAndWritesWithThePagesCopyWhateverTheKindOfTheStoredValue) {
  panel.store("Nested_Defaults", Dictionary{{"last", "a text"}});
  auto& page = open(nestedPage());
  EXPECT_EQ(page.readPreferenceValue(panel.row("last")), Value("a text"));
  EXPECT_EQ(shownValue(panel.row("last")), Value(0));
  panel.set("outer", false);
  EXPECT_EQ(panel.stored("Nested_Defaults"), R"({"last":"a text","outer":false})");
}

TEST(ShownValue, TakesTheStoredValueOnlyWhereItIsOfTheRowsType) {
  struct Case {
    PSCellType kind;
    Value stored;
    bool shown;
  };
  for (const Case& each :
       {Case{PSCellType::PSSwitchCell, true, true}, Case{PSCellType::PSSwitchCell, 5, true},
        Case{PSCellType::PSSwitchCell, 0.5, true}, Case{PSCellType::PSSwitchCell, "x", false},
        Case{PSCellType::PSEditTextCell, "x", true}, Case{PSCellType::PSEditTextCell, 5, false},
        Case{PSCellType::PSSliderCell, 5, true}, Case{PSCellType::PSSliderCell, 0.5, true},
        Case{PSCellType::PSSliderCell, true, false}, Case{PSCellType::PSSliderCell, "5", false},
        Case{PSCellType::PSSegmentCell, 7, true}, Case{PSCellType::PSSegmentCell, "7", false},
        Case{PSCellType::PSLinkListCell, 7.5, true}, Case{PSCellType::PSLinkListCell, Dictionary{}, false}}) {
    const auto row = PSSpecifier::preferenceSpecifierNamed(
        "Row", nullptr, {}, [&](auto&) { return std::optional(each.stored); }, "", each.kind);
    row->setProperty("default", Value("default"));
    row->setValues({1, 2}, {"One", "Two"}, {});
    EXPECT_EQ(storedValue(*row), each.stored);
    EXPECT_EQ(shownValue(*row), each.shown ? each.stored : Value("default"))
        << cellTypeName(each.kind) << " " << typeName(each.stored);
  }
  const auto plain = PSSpecifier::preferenceSpecifierNamed("Row", nullptr, {}, {}, "", PSCellType::PSSwitchCell);
  EXPECT_EQ(shownValue(*plain), std::nullopt);
}

TEST_F(PageBaseTest, SharesOneLocalizerAmongAllThreads) {
  KVQuellarLocalizer* found[4] = {};
  std::vector<std::thread> threads;
  for (auto*& each : found) {
    threads.emplace_back([&] { each = &KVQuellarLocalizer::sharedLocalizer(panel.host.platform()); });
  }
  for (auto& thread : threads) thread.join();
  for (const auto* each : found) EXPECT_EQ(each, found[0]);
  EXPECT_EQ(found[0]->localizationBundle(), "/Library/PreferenceBundles/Quellar.bundle");
}

TEST_F(PageBaseTest, LooksTextsUpInTheSettingsBundle) {
  auto& localizer = KVQuellarLocalizer::sharedLocalizer(panel.host.platform());
  panel.bundles.texts = {{"Save", "Sichern"}, {"Table/Save", "Speichern"}};
  panel.bundles.bundles.clear();
  EXPECT_EQ(localizer.localizedStringForKey("Save"), "Sichern");
  EXPECT_EQ(localizer.localizedStringForKey("Save", "Table"), "Speichern");
  EXPECT_EQ(localizer.localizedStringForKey("Unknown"), "Unknown");
  EXPECT_THAT(panel.bundles.bundles, ElementsAre("/Library/PreferenceBundles/Quellar.bundle"));
}

TEST_F(PageBaseTest, LocalisesRowsInPlaceAndTouchesNothingElse) {
  auto& localizer = KVQuellarLocalizer::sharedLocalizer(panel.host.platform());
  panel.bundles.texts = {{"Name", "N"}, {"Foot", "F"}, {"One", "1"}, {"S", "s"}, {"place", "x"}};
  const auto full = PSSpecifier::preferenceSpecifierNamed("Name", nullptr, {}, {}, "", PSCellType::PSLinkListCell);
  full->setProperty("footerText", Value("Foot"));
  full->setProperty("placeholder", Value("place"));
  full->setValues({Value("One")}, {"One"}, {"S"});
  const auto bare = PSSpecifier::emptyGroupSpecifier();
  const platform::Specifiers rows{full, bare};
  const auto& result = localizer.localizedSpecifiersForSpecifiers(rows);
  EXPECT_EQ(&result, &rows);
  EXPECT_EQ(full->name(), "N");
  EXPECT_EQ(full->stringForKey("label"), "Name");
  EXPECT_EQ(full->stringForKey("footerText"), "F");
  EXPECT_EQ(full->stringForKey("placeholder"), "place");
  EXPECT_THAT(full->titles(), ElementsAre("1"));
  EXPECT_THAT(full->shortTitles(), ElementsAre("s"));
  EXPECT_THAT(full->values(), ElementsAre(Value("One")));
  EXPECT_TRUE(bare->name().empty() && bare->properties().empty());
  platform::Specifiers slot;
  localizer.loadLocalizedSpecifiersForSpecifiers(rows, slot);
  EXPECT_EQ(slot, rows);
}

TEST(PageRegistry, FindsAPageByClassAndByNameInAnyCaseWithSpacesOrDashes) {
  const Panel panel;
  const auto& registry = panel.host.registry();
  for (const auto* name :
       {"KVQuellarStatusBarListController", "Status Bar", "status bar", "STATUS-BAR", "status-bar"}) {
    ASSERT_TRUE(registry.find(name)) << name;
    EXPECT_EQ(registry.find(name)->page->className, "KVQuellarStatusBarListController");
  }
  for (const auto* name : {"kvquellarstatusbarlistcontroller", "StatusBar", "", "Status Bar "}) {
    EXPECT_FALSE(registry.find(name)) << name;
  }
}

}  // namespace page_base_test
}  // namespace quellar::tests

// SPDX-License-Identifier: MIT
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "host/linux/property_list/property_list.h"
#include "host/linux/string_table.h"
#include "panel_family/family_page.h"

namespace quellar::tests {
namespace row_files_test {

using platform::Array;
using platform::Dictionary;
using platform::Value;
using testing::ElementsAre;
using testing::IsEmpty;

const std::filesystem::path kResources = QUELLAR_RESOURCES;

std::string contents(const std::filesystem::path& file) {
  std::ifstream stream(kResources / file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

Array items(const std::string& name) {
  const Value list = host::linux::parsePropertyList(contents(name + ".plist"));
  return *platform::find(*list.as<Dictionary>(), "items")->as<Array>();
}

class RowFileOfTheBundle : public testing::Test {
 protected:
  Panel panel;

  void SetUp() override {
    for (const std::string name : {"QuellarCameraApp", "QuellarMedusa"}) panel.bundles.rowFiles[name] = items(name);
  }
};

TEST_F(RowFileOfTheBundle, OffersTheInstalledApplicationsAsCameraApp) {
  panel.applications.installed = {{"a.desktop", "Alpha"}, {"b.desktop", "Beta"}};
  panel.store("LockScreen_Defaults", Dictionary{{"userRequestsCustomCameraApp", true}});
  EXPECT_EQ(wholeRows(panel.open("KVQuellarLockScreenListController")).at(10),
            R"(PSLinkListCell {"key":"userCustomCameraApp","label":"Camera App"} set get opens )"
            R"(KVQuellarListItemsController values ["a.desktop","b.desktop"] titles ["Alpha","Beta"])");
  EXPECT_THAT(panel.bundles.reports, IsEmpty());
}

TEST_F(RowFileOfTheBundle, HeadsTheMultitaskingPage) {
  const auto rows = wholeRows(panel.open("KVQuellarMedusaListController"));
  ASSERT_EQ(rows.size(), 5U);
  EXPECT_EQ(rows.front(), groupRow("Slide Over",
                                   "Slide an app over the one that you are using, from the side of the "
                                   "screen."));
  EXPECT_THAT(panel.bundles.reports, IsEmpty());
}

TEST_F(RowFileOfTheBundle, HasEveryTextOfThePagesInTheEnglishTable) {
  for (const auto* page : {"KVQuellarLockScreenListController", "KVQuellarLockScreenStringsListController",
                           "KVQuellarAlertsListController", "KVQuellarForceTouchListController",
                           "KVQuellarDockListController", "KVQuellarFoldersListController",
                           "KVQuellarControlCenterListController", "KVQuellarCustomCCTimersListController",
                           "KVQuellarAppSwitcherListController", "KVQuellarMedusaListController"}) {
    panel.open(page);
    panel.host.navigation().setKeyboardVisible(true);
    panel.host.navigation().setKeyboardVisible(false);
  }
  const auto table = host::linux::parseStringTable(contents("en.lproj/Localizable.strings"));
  EXPECT_TRUE(table.problems.empty());
  std::set<std::string> missing;
  ASSERT_GT(panel.bundles.lookups.size(), 100U);
  for (const std::string& text : panel.bundles.lookups) {
    if (!table.entries.contains(text)) missing.insert(text);
  }
  EXPECT_THAT(missing, IsEmpty());
}

class OddRowFile : public testing::Test {
 protected:
  Panel panel;

  /// The rows that the page has before its own.
  Lines rowsOf(const Array& file) {
    panel.bundles.rowFiles["QuellarMedusa"] = file;
    panel.bundles.reports.clear();
    Lines rows = wholeRows(panel.open("KVQuellarMedusaListController"));
    rows.resize(rows.size() - 4);
    return rows;
  }
};

TEST_F(OddRowFile, LosesTheItemsThatAreNoneAndKeepsTheRest) {
  EXPECT_THAT(rowsOf({1, "text", Array{}, Dictionary{}, Dictionary{{"cell", "PSWheelCell"}},
                      Dictionary{{"cell", "PSSwitchCell"}, {"label", "Good"}, {"key", "good"}}}),
              ElementsAre(R"(PSSwitchCell {"key":"good","label":"Good"} set get)"));
  EXPECT_THAT(panel.bundles.reports, ElementsAre("QuellarMedusa: item 0 is skipped: it is no dictionary",
                                                 "QuellarMedusa: item 1 is skipped: it is no dictionary",
                                                 "QuellarMedusa: item 2 is skipped: it is no dictionary",
                                                 "QuellarMedusa: item 3 is skipped: \"\" is no row kind",
                                                 "QuellarMedusa: item 4 is skipped: \"PSWheelCell\" is no row kind"));
}

TEST_F(OddRowFile, GivesNoRowsWhenItIsEmpty) {
  EXPECT_THAT(rowsOf({}), IsEmpty());
  EXPECT_THAT(panel.bundles.reports, IsEmpty());
}

TEST_F(OddRowFile, KeepsTheFirstOfTwoItemsWithTheSameKey) {
  EXPECT_THAT(
      rowsOf({Dictionary{{"cell", "PSSwitchCell"}, {"label", "First"}, {"key", "twice"}},
              Dictionary{{"cell", "PSEditTextCell"}, {"label", "Second"}, {"key", "twice"}},
              Dictionary{{"cell", "PSGroupCell"}, {"label", "No key"}},
              Dictionary{{"cell", "PSGroupCell"}, {"label", "No key"}}}),
      ElementsAre(R"(PSSwitchCell {"key":"twice","label":"First"} set get)", groupRow("No key"), groupRow("No key")));
  EXPECT_THAT(panel.bundles.reports, ElementsAre("QuellarMedusa: item 1 is skipped: the key \"twice\" stands twice"));
}

TEST_F(OddRowFile, LosesAnItemOneOfWhoseEntriesIsOfTheWrongType) {
  for (const auto& [entry, wrong] : std::vector<std::pair<std::string, Value>>{{"cell", 6},
                                                                               {"label", 5},
                                                                               {"key", true},
                                                                               {"id", Array{}},
                                                                               {"default", Dictionary{}},
                                                                               {"validValues", "1"},
                                                                               {"validTitles", Array{"One", 2}},
                                                                               {"shortTitles", Array{1}},
                                                                               {"footerText", 1.5},
                                                                               {"iconImage", Dictionary{}},
                                                                               {"detail", false},
                                                                               {"action", 1},
                                                                               {"min", "0"},
                                                                               {"max", Array{1}},
                                                                               {"showValue", "yes"},
                                                                               {"placeholder", 3},
                                                                               {"defaults", true},
                                                                               {"applications", "yes"}}) {
    Dictionary item{{"cell", "PSSegmentCell"}, {"key", "odd"}};
    item.insert_or_assign(entry, wrong);
    EXPECT_THAT(rowsOf({item, Dictionary{{"cell", "PSGroupCell"}}}), ElementsAre(groupRow(""))) << entry;
    EXPECT_THAT(panel.bundles.reports,
                ElementsAre("QuellarMedusa: item 0 is skipped: its \"" + entry + "\" is of the wrong type"));
  }
}

TEST_F(OddRowFile, LosesAnItemWhoseChoicesDoNotMatchTheirTitles) {
  EXPECT_THAT(rowsOf({Dictionary{{"cell", "PSSegmentCell"}, {"key", "a"}, {"validValues", Array{1, 2}}},
                      Dictionary{{"cell", "PSSegmentCell"},
                                 {"key", "b"},
                                 {"validValues", Array{1, 2}},
                                 {"validTitles", Array{"One", "Two"}},
                                 {"shortTitles", Array{"1"}}}}),
              IsEmpty());
  EXPECT_THAT(panel.bundles.reports, ElementsAre("QuellarMedusa: item 0 is skipped: it has 2 values and 0 titles",
                                                 "QuellarMedusa: item 1 is skipped: it has 2 titles and 1 short ones"));
}

TEST_F(OddRowFile, GivesARowForEachApplicationWhereItsKeyHasAPlaceForIt) {
  panel.applications.installed = {{"a.desktop", "Alpha"}, {"a.desktop", "Twice"}, {"b.desktop", "Beta"}};
  const Array file{Dictionary{{"cell", "PSSwitchCell"},
                              {"label", "Replaced"},
                              {"key", "hidden-%@"},
                              {"default", false},
                              {"applications", true}}};
  EXPECT_THAT(rowsOf(file),
              ElementsAre(R"(PSSwitchCell {"default":false,"key":"hidden-a.desktop","label":"Alpha"} set get)",
                          R"(PSSwitchCell {"default":false,"key":"hidden-b.desktop","label":"Beta"} set get)"));
  EXPECT_THAT(panel.bundles.reports,
              ElementsAre("QuellarMedusa: item 0 is skipped: the key \"hidden-a.desktop\" stands twice"));
  panel.applications.installed.clear();
  EXPECT_THAT(rowsOf(file), IsEmpty());
  EXPECT_THAT(panel.bundles.reports, IsEmpty());
}

TEST_F(OddRowFile, AsksForNoApplicationsWhereItSaysSo) {
  panel.applications.installed = {{"a.desktop", "Alpha"}};
  EXPECT_THAT(rowsOf({Dictionary{{"cell", "PSSwitchCell"}, {"key", "plain-%@"}, {"applications", false}}}),
              ElementsAre(R"(PSSwitchCell {"key":"plain-%@"} set get)"));
}

}  // namespace row_files_test
}  // namespace quellar::tests

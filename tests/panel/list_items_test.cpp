// SPDX-License-Identifier: MIT
#include "frame/list_items.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "frame/list_controller.h"
#include "frame/names.h"
#include "platform/navigation_controller.h"
#include "support/expectations.h"
#include "support/memory_services.h"

namespace quellar::tests {
namespace list_items_test {

using namespace frame;
using platform::Dictionary;
using platform::PSListItemsController;
using testing::ElementsAre;
using Lines = std::vector<std::string>;

/// Lines "title = value".
Lines paired(const std::vector<std::string>& titles, const std::vector<Value>& values) {
  Lines lines;
  EXPECT_EQ(titles.size(), values.size());
  for (std::size_t place = 0; place < titles.size(); ++place) {
    lines.push_back(titles[place] + " = " + dump(host::headless::toJson(values.at(place))));
  }
  return lines;
}

const Lines kLooks = {"Very White Blur = 9",
                      "Less White Blur = 16",
                      "Normal = 12",
                      "Even Less White Blur = 17",
                      "Transparent White (No Blur) = 15",
                      "More Transparent White (No Blur) = 16",
                      "Transparent Black (No Blur) = 19",
                      "Saturated Blur = 5",
                      "Saturated Blur Medium = 13",
                      "Saturated Blur Strong = 3",
                      "Saturated Blur Stronger = 4"};

TEST(ValueLists, OfferTheBlurLooksWithTheTransparentOneFirstIfAsked) {
  EXPECT_EQ(paired(KVQLRListItems::visualEffectTitlesIncludeTransparent(false),
                   KVQLRListItems::visualEffectValuesIncludeTransparent(false)),
            kLooks);
  Lines withTransparent = kLooks;
  withTransparent.insert(withTransparent.begin(), "Transparent = 0");
  EXPECT_EQ(paired(KVQLRListItems::visualEffectTitlesIncludeTransparent(true),
                   KVQLRListItems::visualEffectValuesIncludeTransparent(true)),
            withTransparent);
}

TEST(ValueLists, OfferTheBlurStrengthsWithShortTitles) {
  const auto values = KVQLRListItems::visualEffectBlurStrengthValues();
  EXPECT_THAT(paired(KVQLRListItems::visualEffectBlurStrengthTitles(), values),
              ElementsAre("None = 0", "Small = 10", "Medium = 20", "Large = 30", "Extra Large = 60",
                          "Extra Extra Large = 90", "Extra Extra Extra Large = 100"));
  EXPECT_THAT(paired(KVQLRListItems::visualEffectBlurStrengthShortTitles(), values),
              ElementsAre("None = 0", "Small = 10", "Medium = 20", "Large = 30", "Extra Large = 60", "XX Large = 90",
                          "XXX Large = 100"));
}

TEST(ValueLists, OfferTheSaturationsAsIntegersAndReals) {
  EXPECT_THAT(
      paired(KVQLRListItems::visualEffectSaturationAmountTitles(),
             KVQLRListItems::visualEffectSaturationAmountValues()),
      ElementsAre("Desaturate = 0.0", "Desaturate Light = 0.69999", "None = 1", "Extra Light = 1.2", "Light = 1.3",
                  "Medium Light = 1.39999", "Medium = 1.5", "Medium Strong = 1.6", "Strong = 1.8", "Extra Strong = 2"));
}

TEST(ValueLists, MakeChoicesForPickers) {
  EXPECT_EQ(paired(blurLooks(false).titles, blurLooks(false).values), kLooks);
  EXPECT_EQ(blurLooks(true).values.size(), 12U);
  EXPECT_TRUE(blurLooks(true).shortTitles.empty());
  EXPECT_EQ(blurStrengths().values, KVQLRListItems::visualEffectBlurStrengthValues());
  EXPECT_EQ(blurStrengths().titles, KVQLRListItems::visualEffectBlurStrengthTitles());
  EXPECT_EQ(blurStrengths().shortTitles, KVQLRListItems::visualEffectBlurStrengthShortTitles());
  EXPECT_EQ(saturationAmounts().values, KVQLRListItems::visualEffectSaturationAmountValues());
  EXPECT_EQ(saturationAmounts().titles, KVQLRListItems::visualEffectSaturationAmountTitles());
  EXPECT_TRUE(saturationAmounts().shortTitles.empty());
}

const Page& lookPage() {
  static const Page page{.className = "Looks",
                         .defaultsKey = "L_Defaults",
                         .posts = {darwin(kSettings)},
                         .rows = {Picker{.label = "Blur style", .key = "look", .choices = blurLooks(true)},
                                  Picker{.label = "Saturation", .key = "saturation", .choices = saturationAmounts()}}};
  return page;
}

class PickerList : public testing::Test {
 protected:
  Panel panel;

  /// Opens the test page and then the list of its first picker.
  PSListItemsController& open(const Dictionary& stored = {}, std::size_t row = 0) {
    panel.store("L_Defaults", stored);
    auto page = std::make_shared<KVQuellarListController>(panel.host.platform(), lookPage());
    panel.host.navigation().pushViewController(page);
    panel.events();
    page->userTapsRow(row);
    return dynamic_cast<PSListItemsController&>(*panel.host.topList());
  }
};

TEST_F(PickerList, OpensUnderTheRowsLabelWithOneRowAChoice) {
  auto& list = open({}, 1);
  EXPECT_THAT(panel.events(), ElementsAre(R"({"event":"push","page":"KVQuellarListItemsController","t":0.0})"));
  EXPECT_EQ(list.title(), "Saturation");
  EXPECT_EQ(list.className(), "KVQuellarListItemsController");
  Lines lines;
  for (const auto& row : list.specifiers()) {
    const Value* value = row->valueForKey("value");
    lines.push_back(std::string(cellTypeName(row->cellType())) + " " + row->name() + " " +
                    (value ? dump(host::headless::toJson(*value)) : "-"));
  }
  EXPECT_THAT(
      lines,
      ElementsAre("PSGroupCell  -", "PSListItemCell Desaturate 0.0", "PSListItemCell Desaturate Light 0.69999",
                  "PSListItemCell None 1", "PSListItemCell Extra Light 1.2", "PSListItemCell Light 1.3",
                  "PSListItemCell Medium Light 1.39999", "PSListItemCell Medium 1.5",
                  "PSListItemCell Medium Strong 1.6", "PSListItemCell Strong 1.8", "PSListItemCell Extra Strong 2"));
}

TEST_F(PickerList, MarksTheStoredChoiceWhateverKindOfNumberItIs) {
  EXPECT_EQ(open({{"look", 12}}).checkedIndex(), 4U);
  EXPECT_EQ(open({{"look", 12.0}}).checkedIndex(), 4U);
  EXPECT_EQ(open({{"look", 0}}).checkedIndex(), 1U);
  EXPECT_EQ(open({{"saturation", 1.39999}}, 1).checkedIndex(), 6U);
  EXPECT_EQ(open({{"saturation", 0}}, 1).checkedIndex(), 1U);
}

TEST_F(PickerList, MarksNothingForAValueOutsideTheListAndRewritesNothing) {
  for (const Value& stored : {Value(99), Value("12"), Value(true), Value(platform::Array{12}), Value(1.4)}) {
    auto& list = open({{"look", stored}});
    EXPECT_EQ(list.checkedIndex(), std::nullopt);
    EXPECT_THAT(panel.events(), ElementsAre(R"({"event":"push","page":"KVQuellarListItemsController","t":0.0})"));
  }
  EXPECT_EQ(open().checkedIndex(), std::nullopt) << "nothing is stored, and there is no default";
}

TEST_F(PickerList, WritesThePickedChoiceThroughThePagesHandlerAndStaysOpen) {
  auto& list = open({{"other", "x"}});
  panel.events();
  list.userTapsRow(4);
  EXPECT_THAT(panel.events(),
              ElementsAre(writeLine("L_Defaults", R"({"look":12,"other":"x"})"), darwinLine("settings")));
  EXPECT_EQ(list.checkedIndex(), 4U);
  EXPECT_EQ(panel.host.topList(), &list);
  list.userTapsRow(4);
  EXPECT_THAT(panel.events(),
              ElementsAre(writeLine("L_Defaults", R"({"look":12,"other":"x"})"), darwinLine("settings")));
}

TEST_F(PickerList, StoresANumberAsTheKindThatTheListHas) {
  auto& list = open({}, 1);
  for (const auto& [row, stored] :
       std::vector<std::pair<std::size_t, std::string>>{{1, "0.0"}, {3, "1"}, {2, "0.69999"}, {10, "2"}}) {
    list.userTapsRow(row);
    EXPECT_EQ(panel.stored("L_Defaults"), R"({"saturation":)" + stored + "}");
  }
}

TEST_F(PickerList, MarksTheTappedOneOfTwoEqualChoicesAndTheFirstOneNextTime) {
  auto& list = open();
  list.userTapsRow(7);
  EXPECT_EQ(panel.stored("L_Defaults"), R"({"look":16})") << "More Transparent White (No Blur)";
  EXPECT_EQ(list.checkedIndex(), 7U);
  panel.host.navigation().popViewController(true);
  const auto& picker = *panel.host.topList()->specifiers()[0];
  EXPECT_EQ(picker.titles().at(*picker.indexOfValue(16)), "Less White Blur");
  panel.host.topList()->userTapsRow(0);
  EXPECT_EQ(dynamic_cast<PSListItemsController&>(*panel.host.topList()).checkedIndex(), 3U);
}

TEST_F(PickerList, DoesNothingWhereItsGroupRowIsTapped) {
  auto& list = open({{"look", 12}});
  panel.events();
  list.userTapsRow(0);
  EXPECT_TRUE(panel.events().empty());
  EXPECT_EQ(list.checkedIndex(), 4U);
}

}  // namespace list_items_test
}  // namespace quellar::tests

// SPDX-License-Identifier: MIT
#include "platform/list_controller.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/memory_services.h"

namespace quellar::tests {
namespace list_controller_test {

using platform::Action;
using platform::Array;
using platform::Dictionary;
using platform::PSCellType;
using platform::PSListController;
using platform::PSSpecifier;
using platform::Specifiers;
using platform::Value;
using testing::ElementsAre;
using testing::IsEmpty;

PSSpecifier::Pointer row(const std::string& key, PSCellType kind = PSCellType::PSSwitchCell) {
  auto made = PSSpecifier::preferenceSpecifierNamed("Label of " + key, nullptr, {}, {}, "", kind);
  made->setProperty("key", Value(key));
  return made;
}

/// A page of three groups: rows a; b, c; d.
class ListPage : public PSListController {
 public:
  explicit ListPage(platform::Platform& platform) : PSListController(platform, "ListPage") {}

  Specifiers makeSpecifiers() override {
    ++builds;
    return {row("a"), PSSpecifier::groupSpecifierWithName("One"), row("b"),
            row("c"), PSSpecifier::emptyGroupSpecifier(),         row("d")};
  }
  std::string keys() {
    std::string text;
    for (const auto& each : specifiers()) {
      text += each->cellType() == PSCellType::PSGroupCell ? "[" + each->name() + "]" : each->stringForKey("key");
    }
    return text;
  }
  int builds = 0;
};

class ListPageTest : public testing::Test {
 protected:
  ListPageTest() {
    panel.host.navigation().pushViewController(page);
    panel.events();
  }
  Panel panel;
  std::shared_ptr<ListPage> page = std::make_shared<ListPage>(panel.host.platform());
};

TEST_F(ListPageTest, BuildsItsRowsOnceAndReturnsTheSameList) {
  const Specifiers& first = page->specifiers();
  EXPECT_EQ(&page->specifiers(), &first);
  EXPECT_EQ(page->builds, 1);
}

TEST_F(ListPageTest, CountsRowsBeforeTheFirstGroupAsSectionZero) {
  std::vector<std::size_t> sections;
  for (std::size_t at = 0; at < page->specifiers().size(); ++at) sections.push_back(page->sectionOfIndex(at));
  EXPECT_THAT(sections, ElementsAre(0, 1, 1, 1, 2, 2));
}

TEST(ListPage, CountsAFirstGroupAsSectionZero) {
  class Page : public PSListController {
   public:
    explicit Page(platform::Platform& platform) : PSListController(platform, "Page") {}
    Specifiers makeSpecifiers() override {
      return {PSSpecifier::emptyGroupSpecifier(), row("a"), PSSpecifier::emptyGroupSpecifier(), row("b")};
    }
  };
  Panel panel;
  Page page(panel.host.platform());
  EXPECT_EQ(page.sectionOfIndex(0), 0U);
  EXPECT_EQ(page.sectionOfIndex(1), 0U);
  EXPECT_EQ(page.sectionOfIndex(2), 1U);
  EXPECT_EQ(page.sectionOfIndex(3), 1U);
}

TEST_F(ListPageTest, InsertsABlockAfterTheRowWithTheIdentifier) {
  page->insertContiguousSpecifiers({row("x"), row("y")}, "b", true);
  EXPECT_EQ(page->keys(), "a[One]bxyc[]d");
  EXPECT_THAT(
      panel.events(),
      ElementsAre(
          R"({"event":"insert","after":"b","at":3,"labels":["Label of x","Label of y"],"animated":true,"t":0.0})"));
}

TEST_F(ListPageTest, InsertsAtTheEndWithoutAnimationWhenToldSo) {
  page->insertSpecifier(row("x"), "d", false);
  EXPECT_EQ(page->keys(), "a[One]bc[]dx");
  EXPECT_THAT(panel.events(),
              ElementsAre(R"({"event":"insert","after":"d","at":6,"labels":["Label of x"],"animated":false,"t":0.0})"));
}

TEST_F(ListPageTest, InsertsNothingAfterAnIdentifierThatIsNotListed) {
  page->insertSpecifier(row("x"), "nowhere", true);
  EXPECT_EQ(page->keys(), "a[One]bc[]d");
  EXPECT_THAT(panel.events(), IsEmpty());
}

TEST_F(ListPageTest, InsertsABlockOnceWhereItStandsAlready) {
  const Specifiers block{row("x"), row("y")};
  page->insertContiguousSpecifiers(block, "b", true);
  panel.events();
  page->insertContiguousSpecifiers(block, "b", true);
  EXPECT_EQ(page->keys(), "a[One]bxyc[]d");
  EXPECT_THAT(panel.events(), IsEmpty());
}

TEST_F(ListPageTest, ListsARowTwiceWhenItIsInsertedAtAnotherPlace) {
  const auto twice = row("x");
  page->insertSpecifier(twice, "b", true);
  page->insertSpecifier(twice, "d", true);
  EXPECT_EQ(page->keys(), "a[One]bxc[]dx");
  page->removeSpecifier(twice, true);
  EXPECT_EQ(page->keys(), "a[One]bc[]dx");
}

TEST_F(ListPageTest, RemovesABlockAsOneRun) {
  const Specifiers block{row("x"), row("y")};
  page->insertContiguousSpecifiers(block, "c", true);
  panel.events();
  page->removeContiguousSpecifiers(block, true);
  EXPECT_EQ(page->keys(), "a[One]bc[]d");
  EXPECT_THAT(panel.events(),
              ElementsAre(R"({"event":"remove","at":4,"labels":["Label of x","Label of y"],"animated":true,"t":0.0})"));
}

TEST_F(ListPageTest, RemovesABlockThatAnotherRowStandsInAndLeavesThatRow) {
  const Specifiers block{row("x"), row("y")};
  page->insertContiguousSpecifiers(block, "c", true);
  page->insertSpecifier(row("z"), "x", true);
  panel.events();
  page->removeContiguousSpecifiers(block, false);
  EXPECT_EQ(page->keys(), "a[One]bcz[]d");
  EXPECT_THAT(panel.events(),
              ElementsAre(R"({"event":"remove","at":4,"labels":["Label of x"],"animated":false,"t":0.0})",
                          R"({"event":"remove","at":5,"labels":["Label of y"],"animated":false,"t":0.0})"));
}

TEST_F(ListPageTest, RemovesNothingThatIsNotListed) {
  page->removeContiguousSpecifiers({row("x"), row("y")}, true);
  EXPECT_EQ(page->keys(), "a[One]bc[]d");
  EXPECT_THAT(panel.events(), IsEmpty());
}

TEST_F(ListPageTest, MakesRowsAndCellsAnewOnReloadSpecifiers) {
  const auto before = page->specifiers()[2];
  page->reloadSpecifiers();
  EXPECT_EQ(page->builds, 2);
  EXPECT_NE(page->specifiers()[2], before);
  EXPECT_TRUE(page->specifiers()[2]->cell());
  EXPECT_THAT(panel.events(), ElementsAre(R"({"event":"reload","what":"specifiers","t":0.0})"));
}

TEST_F(ListPageTest, KeepsRowsAndMakesCellsAnewOnReload) {
  const auto before = page->specifiers()[2];
  const auto cell = before->cell();
  page->reload();
  EXPECT_EQ(page->specifiers()[2], before);
  EXPECT_NE(before->cell(), cell);
  EXPECT_EQ(page->builds, 1);
  EXPECT_THAT(panel.events(), ElementsAre(R"({"event":"reload","what":"page","t":0.0})"));
}

TEST_F(ListPageTest, MakesOneCellAnewOnReloadSpecifier) {
  const auto b = page->specifiers()[2]->cell();
  const auto c = page->specifiers()[3]->cell();
  page->reloadSpecifier(*page->specifiers()[2]);
  EXPECT_NE(page->specifiers()[2]->cell(), b);
  EXPECT_EQ(page->specifiers()[3]->cell(), c);
  EXPECT_THAT(panel.events(), ElementsAre(R"({"event":"reload","what":"row","row":"b","t":0.0})"));
  const auto hidden = row("x");
  page->reloadSpecifier(*hidden);
  EXPECT_THAT(panel.events(), IsEmpty());
}

TEST_F(ListPageTest, BringsTheCellsOfABlockBackWithIt) {
  const Specifiers block{row("x")};
  page->insertContiguousSpecifiers(block, "c", true);
  const auto cell = block[0]->cell();
  ASSERT_TRUE(cell);
  page->removeContiguousSpecifiers(block, true);
  page->insertContiguousSpecifiers(block, "c", true);
  EXPECT_EQ(block[0]->cell(), cell);
}

TEST_F(ListPageTest, KeepsAPlatformRowsValueInItsOwnDomain) {
  auto own = row("flag");
  own->setProperty("defaults", Value("org.example.other"));
  EXPECT_EQ(page->readPreferenceValue(*own), std::nullopt);
  page->setPreferenceValue(Value(true), *own);
  EXPECT_EQ(page->readPreferenceValue(*own), Value(true));
  EXPECT_THAT(panel.events(),
              ElementsAre(R"({"event":"write","domain":"org.example.other","key":"flag","value":true,"t":0.0})"));
  page->setPreferenceValue(Value(true), *row("homeless"));
  EXPECT_THAT(panel.events(), IsEmpty());
}

TEST_F(ListPageTest, OpensNothingForALinkToAClassThatDoesNotExist) {
  const auto link =
      PSSpecifier::preferenceSpecifierNamed("Gone", page.get(), {}, {}, "NoSuchController", PSCellType::PSLinkListCell);
  page->insertSpecifier(link, "d", false);
  panel.events();
  page->userTapsRow(6);
  EXPECT_THAT(panel.events(), IsEmpty());
}

TEST_F(ListPageTest, RunsTheActionOfAButtonWithItsRow) {
  const auto button = row("x", PSCellType::PSButtonCell);
  const PSSpecifier* given = nullptr;
  button->setAction(Action{"tap:", [&](PSSpecifier& sender) { given = &sender; }});
  page->insertSpecifier(button, "d", false);
  page->userTapsRow(6);
  EXPECT_EQ(given, button.get());
}

TEST_F(ListPageTest, HandsTheEditedTextOverWhenItsRowIsTakenOffTheList) {
  std::vector<std::string> written;
  const auto text = PSSpecifier::preferenceSpecifierNamed(
      "Text:", page.get(), [&](const auto& value, auto&) { written.push_back(*value->template as<std::string>()); },
      [](auto&) { return std::optional<Value>("old"); }, "", PSCellType::PSEditTextCell);
  page->insertSpecifier(text, "d", false);
  page->beginEditing(*text);
  EXPECT_EQ(page->editingText(), "old");
  page->setEditingText("new");
  page->removeSpecifier(text, true);
  EXPECT_THAT(written, ElementsAre("new"));
  EXPECT_FALSE(panel.host.navigation().keyboardVisible());
}

TEST_F(ListPageTest, LetsTheUserGoOnTypingInTheRowThatReplacesTheEditedOne) {
  std::vector<std::string> written;
  class Page : public PSListController {
   public:
    Page(platform::Platform& platform, std::vector<std::string>& sink)
        : PSListController(platform, "Page"), sink_(sink) {}
    Specifiers makeSpecifiers() override {
      auto text = PSSpecifier::preferenceSpecifierNamed(
          "Text:", this, [this](const auto& value, auto&) { sink_.push_back(*value->template as<std::string>()); },
          [](auto&) { return std::optional<Value>(); }, "", PSCellType::PSEditTextCell);
      text->setProperty("key", Value("text"));
      return {text};
    }
    std::vector<std::string>& sink_;
  };
  const auto typed = std::make_shared<Page>(panel.host.platform(), written);
  panel.host.navigation().pushViewController(typed);
  typed->beginEditing(*typed->specifiers()[0]);
  typed->setEditingText("half");
  typed->reloadSpecifiers();
  EXPECT_EQ(typed->editedSpecifier(), typed->specifiers()[0].get());
  EXPECT_EQ(typed->editingText(), "half");
  EXPECT_THAT(written, IsEmpty());
  typed->endEditing();
  EXPECT_THAT(written, ElementsAre("half"));
}

TEST_F(ListPageTest, WritesATextOnceWhateverItsHandlerDoes) {
  int writes = 0;
  const auto text = PSSpecifier::preferenceSpecifierNamed(
      "Text:", page.get(),
      [&](const auto&, auto&) {
        ++writes;
        page->endEditing();
      },
      {}, "", PSCellType::PSEditTextCell);
  page->insertSpecifier(text, "d", false);
  page->beginEditing(*text);
  page->endEditing();
  page->endEditing();
  EXPECT_EQ(writes, 1);
}

TEST(RowFile, MakesRowsOfItsItemsAndReportsTheBadOnes) {
  Panel panel;
  panel.bundles.rowFiles["Rows"] = Array{
      Dictionary{{"cell", "PSGroupCell"}, {"label", "Group"}, {"footerText", "Foot"}},
      Dictionary{{"cell", "PSSwitchCell"},
                 {"label", "Flag"},
                 {"key", "flag"},
                 {"default", true},
                 {"iconImage", "images/x.png"}},
      Dictionary{{"cell", "PSWheelCell"}, {"label", "Unknown"}},
      Value("no dictionary"),
      Dictionary{{"cell", "PSSwitchCell"}, {"label", "Again"}, {"key", "flag"}},
      Dictionary{{"cell", "PSLinkListCell"},
                 {"label", "Pick"},
                 {"key", "pick"},
                 {"detail", "KVQuellarListItemsController"},
                 {"validValues", Array{1, 2}},
                 {"validTitles", Array{"One", "Two"}},
                 {"shortTitles", Array{"1", "2"}}},
      Dictionary{{"cell", "PSSegmentCell"},
                 {"label", "Odd"},
                 {"key", "odd"},
                 {"validValues", Array{1, 2}},
                 {"validTitles", Array{"One"}}},
      Dictionary{{"cell", "PSSliderCell"},
                 {"label", "Slide"},
                 {"key", "slide"},
                 {"min", 0},
                 {"max", 2.5},
                 {"showValue", true}},
      Dictionary{{"cell", "PSEditTextCell"},
                 {"label", "Text"},
                 {"key", "text"},
                 {"id", "named"},
                 {"placeholder", "type"},
                 {"defaults", "org.example.other"}},
      Dictionary{{"cell", "PSButtonCell"}, {"label", "Press"}, {"action", "press:"}},
      Dictionary{{"cell", "PSSwitchCell"}, {"label", "Escape"}, {"key", "escape"}, {"iconImage", "../../x.png"}},
  };
  ListPage page(panel.host.platform());
  const auto rows = page.loadSpecifiersFromPlistName("Rows", "/B.bundle");
  std::vector<std::string> lines;
  for (const auto& each : rows) {
    std::string line = std::string(cellTypeName(each->cellType())) + ":";
    for (const auto& [key, property] : each->properties()) {
      line += " " + key + "=" + dump(host::headless::toJson(property));
    }
    lines.push_back(line);
  }
  EXPECT_THAT(
      lines,
      ElementsAre(
          R"(PSGroupCell: footerText="Foot" label="Group")",
          R"(PSSwitchCell: default=true iconImage={"$image":"/B.bundle/images/x.png"} key="flag" label="Flag")",
          R"(PSLinkListCell: key="pick" label="Pick")",
          R"(PSSliderCell: key="slide" label="Slide" max=2.5 min=0 showValue=true)",
          R"(PSEditTextCell: defaults="org.example.other" id="named" key="text" label="Text" placeholder="type")",
          R"(PSButtonCell: label="Press")", R"(PSSwitchCell: key="escape" label="Escape")"));
  EXPECT_THAT(rows[2]->values(), ElementsAre(Value(1), Value(2)));
  EXPECT_THAT(rows[2]->titles(), ElementsAre("One", "Two"));
  EXPECT_THAT(rows[2]->shortTitles(), ElementsAre("1", "2"));
  EXPECT_EQ(rows[2]->detailControllerClass(), "KVQuellarListItemsController");
  EXPECT_EQ(rows[4]->identifier(), "named");
  EXPECT_EQ(rows[5]->action()->selector, "press:");
  EXPECT_THAT(panel.bundles.reports, ElementsAre("Rows: item 2 is skipped: \"PSWheelCell\" is no row kind",
                                                 "Rows: item 3 is skipped: it is no dictionary",
                                                 "Rows: item 4 is skipped: the key \"flag\" stands twice",
                                                 "Rows: item 6 is skipped: it has 2 values and 1 titles",
                                                 "Rows: item 10: its image \"../../x.png\" is outside the bundle"));
  EXPECT_THAT(page.loadSpecifiersFromPlistName("Missing", "/B.bundle"), IsEmpty());
}

TEST(RowFile, PutsTheApplicationIntoEachPlaceOfItsKey) {
  Panel panel;
  panel.applications.installed = {{"a%@", "Alpha"}};
  std::string key = "%@";
  std::string filled = "a%@";
  // So many that work which grows with their square would not end.
  for (int doubled = 0; doubled < 20; ++doubled) {
    key += key;
    filled += filled;
  }
  panel.bundles.rowFiles["Rows"] = {
      Dictionary{{"cell", "PSSwitchCell"}, {"key", "<" + key + "%>"}, {"applications", true}}};
  ListPage page(panel.host.platform());
  const auto rows = page.loadSpecifiersFromPlistName("Rows", "/B.bundle");
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_TRUE(rows[0]->identifier() == "<" + filled + "%>");
}

}  // namespace list_controller_test
}  // namespace quellar::tests

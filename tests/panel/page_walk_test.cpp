// SPDX-License-Identifier: MIT
#include "frame/page_walk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "frame/hidden_row.h"
#include "support/memory_services.h"

namespace quellar::tests {
namespace page_walk_test {

using namespace frame;
using platform::Array;
using platform::Dictionary;
using platform::Value;
using testing::ElementsAre;

const Page& walkedPage() {
  static const Page page{
      .className = "WalkedPage",
      .defaultsKey = "Walked_Defaults",
      .rows = {
          Link{"Other", "OtherPage"},
          Group{.title = "First"},
          Switch{.label = "Outer", .key = "outer"},
          Dependent{
              .name = "outerSpecs",
              .shownBy = "outer",
              .rows = {Group{.title = "Within"},
                       Segment{.label = "Style",
                               .key = "style",
                               .byDefault = 2,
                               .choices = {.values = {1, 2}, .titles = {"One", "Two"}}},
                       Dependent{.name = "innerSpecs",
                                 .shownBy = "style",
                                 .shownAt = 1,
                                 .rows = {ColorRow{.label = "Color", .colorKey = "", .defaultColor = "#123456"}}}}},
          Switch{.label = "After", .key = "after"},
          Group{.title = "Last"},
          RowFile{.name = "File"},
          Computed{[](const Surroundings&) { return std::vector<Row>{Switch{.label = "Made", .key = "made"}}; }},
          Dependent{.name = "lateSpecs",
                    .shownBy = "made",
                    .onlyInserted = true,
                    .rows = {TextEntry{.label = "Late", .key = "late"}}},
          Dependent{.name = "swappedSpecs",
                    .shownBy = "after",
                    .listedAs = "lateSpecs",
                    .rows = {TextEntry{.label = "Swapped", .key = "swapped"}}},
          Dependent{.name = "lostSpecs", .shownBy = "nothing", .rows = {TextEntry{.label = "Lost", .key = "lost"}}},
      }};
  return page;
}

class PageWalkTest : public testing::Test {
 protected:
  PageWalkTest() {
    panel.bundles.rowFiles["File"] =
        Array{Dictionary{{"cell", "PSGroupCell"}, {"label", "Of the file"}},
              Dictionary{{"cell", "PSSwitchCell"}, {"label", "Filed"}, {"key", "filed"}},
              Dictionary{{"cell", "PSLinkListCell"}, {"label", "Link"}, {"detail", "FiledPage"}}};
  }

  std::vector<std::string> walk(RowFiles rowFiles) {
    std::vector<std::string> lines;
    walkRows(
        walkedPage(), {panel.host.platform(), {}},
        [&](const RowPlace& place) {
          std::string line = place.group + ": ";
          for (const Dependent* block : place.blocks) line += block->name + " > ";
          line += place.key() ? "\"" + *place.key() + "\"" : "-";
          if (!place.opens().empty()) line += " opens " + place.opens();
          lines.push_back(line);
        },
        rowFiles);
    return lines;
  }

  KVQuellarListController& open(const Dictionary& stored = {}) {
    panel.store("Walked_Defaults", Value(stored));
    auto page = std::make_shared<KVQuellarListController>(panel.host.platform(), walkedPage());
    panel.host.navigation().pushViewController(page);
    return *page;
  }
  /// The row of a key, and what shows it: "Outer, Style again: Color".
  static std::string found(KVQuellarListController& page, std::string_view key) {
    const auto row = findRow(page, key);
    if (!row) return "no such row";
    std::string line;
    for (const StepToRow& step : row->steps) {
      line += (line.empty() ? "" : ", ") + step.row->name() + (step.again ? " again" : "") +
              (step.needsOpenPage() ? " while open" : "");
    }
    if (row->isUnreachable) line += "unreachable";
    return line + (line.empty() ? "" : ": ") + row->row->name();
  }

  Panel panel;
};

TEST_F(PageWalkTest, VisitsEachRowWithItsGroupAndBlocksInDisplayOrder) {
  EXPECT_THAT(
      walk(RowFiles::read),
      ElementsAre(": - opens OtherPage", "First: -", "First: \"outer\"", "Within: outerSpecs > -",
                  "Within: outerSpecs > \"style\"", "Within: outerSpecs > innerSpecs > \"\"", "First: \"after\"",
                  "Last: -", "Of the file: -", "Of the file: \"filed\"", "Of the file: - opens FiledPage",
                  "Of the file: \"made\"", "Of the file: lateSpecs > \"late\"",
                  "Of the file: swappedSpecs > \"swapped\"", "Of the file: lostSpecs > \"lost\""));
}

TEST_F(PageWalkTest, LeavesRowFilesOutWhereTheyAreNotWanted) {
  panel.bundles.rowFiles["File"] = Array{7};
  const auto lines = walk(RowFiles::leftOut);
  EXPECT_EQ(lines.size(), 12U);
  EXPECT_THAT(panel.bundles.reports, ElementsAre());
}

TEST_F(PageWalkTest, FindsTheRowOfAKeyAndWhatTheUserSetsToSeeIt) {
  auto& page = open();
  EXPECT_EQ(found(page, "outer"), "Outer");
  EXPECT_EQ(found(page, "filed"), "Filed");
  EXPECT_EQ(found(page, "made"), "Made");
  EXPECT_EQ(found(page, "style"), "Outer: Style");
  EXPECT_EQ(found(page, ""), "Outer, Style: Color");
  EXPECT_EQ(found(page, "late"), "Made while open: Late");
  EXPECT_EQ(found(page, "swapped"), "After while open: Swapped");
  EXPECT_EQ(found(page, "lost"), "unreachable: Lost");
  EXPECT_EQ(found(page, "other"), "no such row");
}

TEST_F(PageWalkTest, LeavesOutTheStepsThatAreDone) {
  EXPECT_EQ(found(open({{"outer", true}}), ""), "Style: Color");
  EXPECT_EQ(found(open({{"outer", true}, {"style", 1}}), ""), "Color");
  EXPECT_EQ(found(open({{"style", 1}}), ""), "Outer, Style: Color") << "the outer switch brings in its own rows alone";
  EXPECT_EQ(found(open({{"after", true}}), "swapped"), "After again while open: Swapped");
  EXPECT_EQ(found(open({{"after", true}}), "late"), "Late") << "it is listed under the other switch";
}

}  // namespace page_walk_test
}  // namespace quellar::tests

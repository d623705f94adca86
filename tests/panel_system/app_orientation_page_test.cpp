// SPDX-License-Identifier: MIT
#include "panel_system/page_lines.h"

namespace quellar::tests {
namespace app_orientation_page_test {

using platform::Array;
using platform::Dictionary;
using platform::Value;
using testing::ElementsAre;

constexpr auto kPage = "KVQuellarAppOrientationListController";

std::string choice(const std::string& name, const std::string& identifier) {
  return rowLine(
      "PSLinkListCell", name, "set get opens KVQuellarListItemsController",
      {{"label", name}, {"key", "orientation-" + identifier}, {"default", 0}, {"defaults", "com.vantorick.quellar2"}});
}

TEST(AppOrientationPage, OffersAChoiceForEachApplicationWithoutTheLocalizer) {
  Panel panel;
  useRowFile(panel, "QuellarOrientation");
  panel.bundles.texts = {{"Apps", "wrong"}, {"Mail", "wrong"}, {"Portrait", "wrong"}};
  panel.applications.installed = {{"camera.desktop", "Camera"}, {"mail.desktop", "Mail"}};
  auto& page = panel.open(kPage);
  EXPECT_EQ(rowLines(page), (Lines{group("Apps", "Automatic follows the device."), choice("Camera", "camera.desktop"),
                                   choice("Mail", "mail.desktop")}));
  EXPECT_EQ(panel.bundles.lookups, Lines());
  EXPECT_EQ(panel.bundles.reports, Lines());
  for (std::size_t place = 1; place < 3; ++place) {
    EXPECT_THAT(page.specifiers()[place]->values(), ElementsAre(0, 1, 2));
    EXPECT_THAT(page.specifiers()[place]->titles(), ElementsAre("Automatic", "Portrait", "Landscape"));
    EXPECT_THAT(page.specifiers()[place]->shortTitles(), ElementsAre());
  }
}

TEST(AppOrientationPage, StoresInTheDomainItselfAndPostsNothing) {
  Panel panel;
  useRowFile(panel, "QuellarOrientation");
  panel.applications.installed = {{"camera.desktop", "Camera"}, {"mail.desktop", "Mail"}};
  auto& page = panel.open(kPage);
  panel.set("orientation-mail.desktop", 2);
  EXPECT_EQ(panel.events(), (Lines{write("orientation-mail.desktop", "2")}));
  EXPECT_EQ(panel.stored("orientation-mail.desktop"), "2");
  auto& row = panel.row("orientation-mail.desktop");
  EXPECT_EQ(row.getter()(row), Value(2));
  EXPECT_EQ(page.readPreferenceValue(row), Value(2));
  auto& other = panel.row("orientation-camera.desktop");
  EXPECT_EQ(other.getter()(other), std::nullopt);
  panel.advance(std::chrono::seconds(10));
  EXPECT_EQ(panel.events(), Lines());
}

TEST(AppOrientationPage, PicksFromTheListThatTheRowOpens) {
  Panel panel;
  useRowFile(panel, "QuellarOrientation");
  panel.applications.installed = {{"mail.desktop", "Mail"}};
  panel.open(kPage);
  tap(panel, "Mail");
  auto& list = *panel.host.topList();
  EXPECT_EQ(list.title(), "Mail");
  EXPECT_TRUE(list.showsCheckmark(1)) << "Automatic is the default";
  panel.events();
  list.userTapsRow(3);
  EXPECT_EQ(panel.events(), (Lines{write("orientation-mail.desktop", "2")}));
  EXPECT_FALSE(list.showsCheckmark(1));
  EXPECT_TRUE(list.showsCheckmark(3));
}

TEST(AppOrientationPage, ShowsNothingWhereTheFileIsMissing) {
  Panel panel;
  EXPECT_EQ(rowLines(panel.open(kPage)), Lines());
}

TEST(AppOrientationPage, StoresNothingForARowThatNamesNoDomain) {
  Panel panel;
  panel.bundles.rowFiles["QuellarOrientation"] =
      Array{Dictionary{{"cell", "PSSwitchCell"}, {"label", "Odd"}, {"key", "odd"}}};
  panel.store("odd", true);
  panel.open(kPage);
  auto& row = panel.row("odd");
  EXPECT_EQ(row.getter()(row), std::nullopt);
  panel.set("odd", false);
  EXPECT_EQ(panel.events(), Lines());
}

}  // namespace app_orientation_page_test
}  // namespace quellar::tests

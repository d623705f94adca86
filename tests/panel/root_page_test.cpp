// SPDX-License-Identifier: MIT
#include "frame/root_page.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/memory_services.h"

namespace quellar::tests {
namespace root_page_test {

using namespace std::chrono_literals;
using platform::Value;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto kPage = "QuellarListController";

struct LinkRow {
  const char* label;
  const char* opens;
  const char* icon;
};

constexpr LinkRow kLinks[] = {
    {"Quick Edit Menu", "KVQuellarQuickEditListController", "qlrQuickEditSettingsIcon.png"},
    {"Alerts", "KVQuellarAlertsListController", "qlrAppAlertsSettingsIcon.png"},
    {"Animations", "KVQuellarAnimationsListController", "qlrAppAnimationsSettingsIcon.png"},
    {"App Hide", "KVQuellarAppHideListController", "qlrAppHideSettingsIcon.png"},
    {"App Switcher", "KVQuellarAppSwitcherListController", "qlrAppSwitcherSettingsIcon.png"},
    {"Control Center", "KVQuellarControlCenterListController", "qlrControlCenterSettingsIcon.png"},
    {"Dock", "KVQuellarDockListController", "qlrDockSettingsIcon.png"},
    {"Folders", "KVQuellarFoldersListController", "qlrFoldersSettingsIcon.png"},
    {"Force Touch", "KVQuellarForceTouchListController", "qlrAppForceTouchSettingsIcon.png"},
    {"Home Screen", "KVQuellarHomeScreenListController", "qlrHomeScreenSettingsIcon.png"},
    {"Icons", "KVQuellarIconsListController", "qlrIconsSettingsIcon.png"},
    {"LockScreen", "KVQuellarLockScreenListController", "qlrLockScreenSettingsIcon.png"},
    {"Medusa", "KVQuellarMedusaListController", "qlrMedusaSettingsIcon.png"},
    {"Notification Center", "KVQuellarNotificationCenterListController", "qlrNotificationsCenterSettingsIcon.png"},
    {"Power Down", "KVQuellarPowerDownListController", "qlrPowerDownSettingsIcon.png"},
    {"Restrictions", "KVQuellarRestrictionsListController", "qlrRestrictionsSettingsIcon.png"},
    {"Status Bar", "KVQuellarStatusBarListController", "qlrStatusBarSettingsIcon.png"},
    {"System Wide", "KVQuellarSystemWideListController", "qlrAdvancedSettingsIcon.png"},
    {"Camera", "KVQuellarCameraListController", "qlrCameraSettingsIcon.png"},
    {"Messages", "KVQuellarMessagesListController", "qlrMessagesSettingsIcon.png"},
    {"Phone", "KVQuellarPhoneListController", "qlrPhoneSettingsIcon.png"},
    {"Settings", "KVQuellarPreferencesListController", "qlrPreferenesSettingsIcon.png"},
    {"Weather", "KVQuellarWeatherListController", "qlrWeatherSettingsIcon.png"},
    {"Music Changes", "KVQuellarMusicListController", "qlrMusicChangesSettingsIcon.png"},
};

const platform::Image* icon(const platform::PSSpecifier& row) {
  const auto* property = row.propertyForKey("iconImage");
  return property ? std::get_if<platform::Image>(property) : nullptr;
}

TEST(RootPage, ListsTheMasterSwitchAndALinkToEveryPage) {
  Panel panel;
  auto& page = panel.open(kPage);
  std::vector<std::string> expected = {"PSGroupCell ", "PSSwitchCell Enable | QLREnableKey",
                                       "PSLinkListCell Quick Edit Menu", "PSGroupCell "};
  for (std::size_t at = 1; at < std::size(kLinks); ++at) {
    if (std::string_view(kLinks[at].label) == "Camera") expected.emplace_back("PSGroupCell First Party Apps");
    if (std::string_view(kLinks[at].label) == "Music Changes") expected.emplace_back("PSGroupCell Reactions");
    expected.push_back(std::string("PSLinkListCell ") + kLinks[at].label);
  }
  EXPECT_EQ(panel.rows(), expected);

  std::size_t link = 0;
  for (const auto& row : page.specifiers()) {
    EXPECT_TRUE(row->enabled());
    if (row->cellType() != platform::PSCellType::PSLinkListCell) continue;
    EXPECT_EQ(row->detailControllerClass(), kLinks[link].opens);
    ASSERT_TRUE(icon(*row)) << row->name();
    EXPECT_EQ(icon(*row)->path, std::string("/Library/PreferenceBundles/Quellar.bundle/images/") + kLinks[link].icon);
    EXPECT_FALSE(row->setter() || row->getter());
    ++link;
  }
  EXPECT_EQ(link, std::size(kLinks));
}

TEST(RootPage, LocalisesOnlyTheMasterSwitch) {
  Panel panel;
  panel.bundles.texts = {{"Enable", "Einschalten"}, {"Alerts", "x"}, {"First Party Apps", "x"}, {"Reactions", "x"}};
  auto& page = panel.open(kPage);
  EXPECT_EQ(page.specifiers()[1]->name(), "Einschalten");
  EXPECT_EQ(page.specifiers()[4]->name(), "Alerts");
  EXPECT_EQ(panel.rows()[21], "PSGroupCell First Party Apps");
}

TEST(RootPage, LeavesARowWithoutAnIconWhoseImageIsMissing) {
  Panel panel;
  panel.files.missingImages = {"/Library/PreferenceBundles/Quellar.bundle/images/enableIcon.png",
                               "/Library/PreferenceBundles/Quellar.bundle/images/headerLogo.png"};
  auto& page = panel.open(kPage);
  EXPECT_EQ(page.specifiers()[1]->propertyForKey("iconImage"), nullptr);
  EXPECT_FALSE(page.navigationItem().titleView());
  panel.advance(2s);
  EXPECT_THAT(panel.events(), IsEmpty());
}

TEST(RootPage, KeepsTheMasterSwitchDirectlyInTheDomainAndPostsNothing) {
  Panel panel;
  panel.open(kPage);
  EXPECT_EQ(panel.row("QLREnableKey").valueForKey("default"), nullptr);
  EXPECT_EQ(panel.row("QLREnableKey").stringForKey("defaults"), "com.vantorick.quellar2");
  panel.set("QLREnableKey", true);
  panel.advance(2s);
  EXPECT_THAT(
      panel.events(),
      ElementsAre(R"({"event":"write","domain":"com.vantorick.quellar2","key":"QLREnableKey","value":true,"t":0.0})",
                  R"({"event":"alpha","to":1.0,"duration":0.5,"t":0.5})"));
  // It reads the store itself, not a copy of the page's.
  panel.store("QLREnableKey", false);
  EXPECT_EQ(panel.row("QLREnableKey").getter()(panel.row("QLREnableKey")), Value(false));
}

TEST(RootPage, FadesItsLogoInHalfASecondAfterItLoaded) {
  Panel panel;
  panel.host.open(kPage);
  EXPECT_THAT(panel.events(),
              ElementsAre(R"({"event":"push","page":"QuellarListController","t":0.0})",
                          R"({"event":"bar","side":"right","title":"Respring","style":"done","t":0.0})"));
  const auto& view = panel.host.topList()->navigationItem().titleView();
  ASSERT_TRUE(view);
  EXPECT_EQ(view->image.path, "/Library/PreferenceBundles/Quellar.bundle/images/headerLogo.png");
  EXPECT_TRUE(view->isTemplate);
  EXPECT_EQ(view->alpha, 0.0);
  panel.advance(499'999'999ns);
  EXPECT_THAT(panel.events(), IsEmpty());
  panel.advance(1ns);
  EXPECT_THAT(panel.events(), ElementsAre(R"({"event":"alpha","to":1.0,"duration":0.5,"t":0.5})"));
  EXPECT_EQ(view->alpha, 1.0);
  panel.advance(10s);
  EXPECT_THAT(panel.events(), IsEmpty());
}

TEST(RootPage, FadesNoLogoOfAPageThatIsGone) {
  Panel panel;
  panel.open(kPage);
  panel.host.navigation().popViewController(true);
  panel.events();
  panel.advance(1s);
  EXPECT_THAT(panel.events(), IsEmpty());
}

TEST(RootPage, AsksBeforeItPostsTheRespringRequestOnce) {
  Panel panel;
  panel.bundles.texts = {{"Are You Sure?", "Sicher?"},
                         {"Respring Confirmation", "Neustart"},
                         {"Not Right Now", "Nein"},
                         {"Respring", "Ja"}};
  auto& page = panel.open(kPage);
  const auto& button = page.navigationItem().rightBarButtonItem();
  EXPECT_EQ(button->title, "Ja");
  EXPECT_EQ(button->action, "respring:");
  button->run();
  EXPECT_THAT(
      panel.events(),
      ElementsAre(
          R"({"event":"dialog","kind":"sheet","title":"Sicher?","message":"Neustart","buttons":[{"title":"Nein","style":"cancel"},{"title":"Ja","style":"destructive"}],"text":null,"keyboardType":"default","accessory":[],"anchor":null,"t":0.0})"));
  panel.host.navigation().pressDialogButton(0);
  EXPECT_THAT(panel.events(), ElementsAre(R"({"event":"dismiss","t":0.0})"));

  button->run();
  panel.events();
  panel.host.navigation().pressDialogButton(1);
  EXPECT_THAT(
      panel.events(),
      ElementsAre(
          R"({"event":"dismiss","t":0.0})",
          R"({"event":"post","centre":"darwin","name":"com.vantorick.quellar2.respring","object":null,"userInfo":null,"immediately":false,"through":"centre","t":0.0})"));
}

TEST(RootPage, PointsTheSheetAtItsButtonOnAPadOnly) {
  for (const std::optional<int> idiom : {std::optional(0), std::optional(1), std::optional<int>()}) {
    Panel panel({.idiom = idiom});
    panel.open(kPage).navigationItem().rightBarButtonItem()->run();
    EXPECT_EQ(panel.host.navigation().dialog()->anchoredToRightBar, idiom == 1);
  }
}

TEST(RootPage, DismissesTheComposerThatIsShown) {
  Panel panel;
  auto& page = dynamic_cast<frame::QuellarListController&>(panel.open(kPage));
  page.emailKV();
  EXPECT_THAT(panel.events(), IsEmpty());
  panel.host.navigation().present({});
  panel.events();
  page.mailComposeControllerDidFinish();
  EXPECT_THAT(panel.events(), ElementsAre(R"({"event":"dismiss","t":0.0})"));
}

TEST(RootPage, OpensEveryPageThatExistsFromItsLink) {
  Panel panel;
  auto& page = panel.open(kPage);
  for (std::size_t at = 0; at < page.specifiers().size(); ++at) {
    const auto& row = *page.specifiers()[at];
    if (row.cellType() != platform::PSCellType::PSLinkListCell) continue;
    page.userTapsRow(at);
    const bool exists = panel.host.registry().find(row.detailControllerClass()) != nullptr;
    EXPECT_EQ(panel.host.navigation().viewControllers().size(), exists ? 2U : 1U) << row.name();
    if (exists) {
      EXPECT_EQ(panel.host.topList()->title(), row.name());
      EXPECT_EQ(panel.host.registry().find(row.name())->page->className, row.detailControllerClass());
      panel.host.navigation().popViewController(true);
    }
  }
}

}  // namespace root_page_test
}  // namespace quellar::tests

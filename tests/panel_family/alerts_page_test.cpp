// SPDX-License-Identifier: MIT
#include "panel_family/family_page.h"

namespace quellar::tests {
namespace alerts_page_test {

using platform::Value;

class AlertsPage : public FamilyPage {
 protected:
  AlertsPage() : FamilyPage("KVQuellarAlertsListController", "Alerts_Defaults") {}
};

struct Alert {
  const char* label;
  const char* key;
};
constexpr Alert kSuppressed[] = {
    {"Airplane Alerts", "userDisablesAirplaneModeAlerts"},
    {"Cellular Data Alerts", "userDisablesCellDataAccesorryAlerts"},
    {"Deprecated 32Bit Alerts", "userDisablesDeprecatedAlerts"},
    {"Edge Alerts", "userDisablesEdgeAlerts"},
    {"GameCenter Alerts", "userDisablesGameCenterAccesorryAlerts"},
    {"Location Improved Alerts", "userDisablesLocationImprovedAlerts"},
    {"Low Power Alerts", "userDisablesLowPowerAlerts"},
    {"Low Space Alerts", "userDisablesLowSpaceAlerts"},
    {"No Sim Alerts", "userDisablesNoSimAlerts"},
    {"Shake To Undo Alerts", "userDisablesShakeToUndoAlerts"},
    {"Unreliable Accessory Alerts", "userDisablesUnreliableAccesorryAlerts"},
    {"Unsupported Charging", "userDisablesUnsupportedChargingAlerts"},
};

Lines expected(Texts& texts) {
  Lines rows = {groupRow(texts.asWritten("Alert Behavior"),
                         texts.translated("Dynamic alerts allow you to perform actions from the alert i.e.--Data "
                                          "alerts allow disabling airplane mode or enabling wifi.")),
                switchRow(texts.translated("Use Dynamic Alerts"), "userRequestsDynamicAlerts"),
                groupRow(texts.asWritten("Suppress Alerts"))};
  for (const Alert& each : kSuppressed) rows.push_back(switchRow(texts.translated(each.label), each.key));
  return rows;
}

TEST_F(AlertsPage, ShowsItsRowsWithTheGroupTitlesAsWritten) {
  expectRows(expected);
}

TEST_F(AlertsPage, SwitchesEachAlertOffAndOnAndPostsTheSettingsOnce) {
  std::vector<std::string> keys = {"userRequestsDynamicAlerts"};
  for (const Alert& each : kSuppressed) keys.emplace_back(each.key);
  ASSERT_EQ(keys.size(), 13U);
  expectPlainSwitches(keys, {darwinLine("settings")});
}

TEST_F(AlertsPage, StoresTheKeysAsTheyAreSpelt) {
  open({{"foreign", "kept"}});
  panel.set("userDisablesCellDataAccesorryAlerts", true);
  EXPECT_EQ(stored(), R"({"foreign":"kept","userDisablesCellDataAccesorryAlerts":true})");
}

TEST_F(AlertsPage, WritesNothingWhenItOpensAndRemovesTheEntryOfAWrittenNull) {
  auto& page = open({{"userRequestsDynamicAlerts", true}});
  EXPECT_EQ(stored(), R"({"userRequestsDynamicAlerts":true})");
  EXPECT_EQ(frame::shownValue(panel.row("userRequestsDynamicAlerts")), Value(true));
  page.setPreferenceValue(std::nullopt, panel.row("userRequestsDynamicAlerts"));
  EXPECT_THAT(panel.events(), testing::ElementsAre(write("{}"), darwinLine("settings")));
}

}  // namespace alerts_page_test
}  // namespace quellar::tests

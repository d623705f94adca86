// SPDX-License-Identifier: MIT
#include "pages/statusbar_lockscreen/alerts_page.h"

#include "frame/names.h"

namespace quellar::pages {

using namespace frame;

const Page& KVQuellarAlertsListController::page() {
  static const Page page{
      .className = "KVQuellarAlertsListController",
      .defaultsKey = "Alerts_Defaults",
      .posts = {darwin(kSettings)},
      .rows = {
          Group{.title = asWritten("Alert Behavior"),
                .footer =
                    "Dynamic alerts allow you to perform actions from the alert i.e.--Data alerts allow disabling "
                    "airplane mode or enabling wifi."},
          Switch{.label = "Use Dynamic Alerts", .key = "userRequestsDynamicAlerts"},
          Group{.title = asWritten("Suppress Alerts")},
          Switch{.label = "Airplane Alerts", .key = "userDisablesAirplaneModeAlerts"},
          Switch{.label = "Cellular Data Alerts", .key = "userDisablesCellDataAccesorryAlerts"},
          Switch{.label = "Deprecated 32Bit Alerts", .key = "userDisablesDeprecatedAlerts"},
          Switch{.label = "Edge Alerts", .key = "userDisablesEdgeAlerts"},
          Switch{.label = "GameCenter Alerts", .key = "userDisablesGameCenterAccesorryAlerts"},
          Switch{.label = "Location Improved Alerts", .key = "userDisablesLocationImprovedAlerts"},
          Switch{.label = "Low Power Alerts", .key = "userDisablesLowPowerAlerts"},
          Switch{.label = "Low Space Alerts", .key = "userDisablesLowSpaceAlerts"},
          Switch{.label = "No Sim Alerts", .key = "userDisablesNoSimAlerts"},
          Switch{.label = "Shake To Undo Alerts", .key = "userDisablesShakeToUndoAlerts"},
          Switch{.label = "Unreliable Accessory Alerts", .key = "userDisablesUnreliableAccesorryAlerts"},
          Switch{.label = "Unsupported Charging", .key = "userDisablesUnsupportedChargingAlerts"},
      }};
  return page;
}

}  // namespace quellar::pages

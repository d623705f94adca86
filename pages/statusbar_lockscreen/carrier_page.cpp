// SPDX-License-Identifier: MIT
#include "pages/statusbar_lockscreen/carrier_page.h"

#include "frame/names.h"

namespace quellar::pages {

using namespace frame;
using namespace std::chrono_literals;

const Page& KVQuellarStatusBarCarrierListController::page() {
  static const Page page{
      .className = "KVQuellarStatusBarCarrierListController",
      .defaultsKey = "StatusBar_Defaults",
      .posts = {{.centre = Centre::distributed, .name = std::string(kSettingsUIKit), .delay = 100ms},
                {.centre = Centre::distributed, .name = std::string(kStatusBarCarrier), .delay = 100ms}},
      .saveButton = true,
      .rows = {
          Group{.title = "Default Carrier String"},
          Switch{.label = "Use Custom String", .key = "usesCustomCarrierText"},
          Dependent{.name = "customCarrierSpec",
                    .shownBy = "usesCustomCarrierText",
                    .rows = {TextEntry{.key = "userCustomCarrierText"}}},
          Group{.title = "No Service Carrier String"},
          Switch{.label = "Use Custom String", .key = "userRequestsCustomNoServiceString"},
          Dependent{.name = "customNoServiceSpec",
                    .shownBy = "userRequestsCustomNoServiceString",
                    .rows = {TextEntry{.key = "userCustomNoServiceText"}}},
          Group{.title = "Searching... Carrier String"},
          Switch{.label = "Use Custom String", .key = "userRequestsCustomSearchingString"},
          // The page opens with the no-service text under this switch; only a write brings in the searching text.
          Dependent{.name = "customSearchingSpec",
                    .shownBy = "userRequestsCustomSearchingString",
                    .listedAs = "customNoServiceSpec",
                    .rows = {TextEntry{.key = "userCustomSearchingText"}}},
          Group{.title = "WiFi Calling Carrier String"},
          Switch{.label = "Use Custom String", .key = "userRequestsCustomWifiCallingString"},
          Dependent{.name = "customWiFiCarrierSpec",
                    .shownBy = "userRequestsCustomWifiCallingString",
                    .rows = {TextEntry{.key = "userCustomWifiCarrierText"}}},
      }};
  return page;
}

}  // namespace quellar::pages

// SPDX-License-Identifier: MIT
#include "pages/statusbar_lockscreen/status_bar_page.h"

#include "frame/names.h"

namespace quellar::pages {

using namespace frame;
using namespace std::chrono_literals;

namespace {

constexpr std::string_view kFormatterHelp =
    "If you are going to set seconds in the custom formatter make sure to enable the 'Uses Seconds in Formatter' "
    "option. It makes sure to refresh your status bar every second. \n\n"
    "y | year | 1, 2 or 4 y's will show the value, 2 digit zero-padded value or 4 digit zero-padded value "
    "respectively \n\n"
    "M | Month | 1, 2, 3, 4 or 5 M's will show the value, 2 digit zero-padded value, short name, long name or initial "
    "letter months \n\n"
    "d | Day of Month | 1 or 2 d's will show the value or 2 digit zero-padded value representation respectively. \n\n"
    "E | Weekday | 1, 2, 3, 4 or 5 e's will show the value weekday number, 2 digit zero-padded value weekday number, "
    "short name, long name or initial letter respectively. Weekday numbers starts on Sunday. Use lowercase e's; for "
    "weekday numbers starting on Monday. \n\n"
    "a | AM or PM \n\n"
    "h | Hour | 1 or 2 h's will show the value or 2 digit zero-padded value representation respectively. Use uppercase "
    "for 24 hour time. \n\n"
    "m | Minute | 1 or 2 m's will show the value or 2 digit zero-padded value representation respectively. \n\n"
    "s | Second | 1 or 2 s's will show the value or 2 digit zero-padded value representation respectively."
    "\u2028\u2028 \n\n"
    "z| Timezone | 1, 2, 3 or 4 z's will show short acronym, short name, long acronym, long name respectively. Use "
    "uppercase to show GMT offset instead of name \u2014 1 or 2 digit zero-padded values shows GMT or RFC 822 "
    "respectively.";

constexpr const char* kItem = "statusBarItem";

/// A switch that hides an item of the status bar, with the add-on's number of that item.
Switch item(const char* label, const char* key, int number, const char* icon) {
  return {
      .label = label, .key = key, .icon = {std::string("statusbarimages/") + icon}, .properties = {{kItem, number}}};
}

/// A switch that hides something of the status bar that has no number.
Switch unnumbered(const char* label, const char* key, const char* icon = "") {
  return {.label = label, .key = key, .icon = {*icon ? std::string("statusbarimages/") + icon : std::string()}};
}

/// A post that follows the writes of the carrier keys.
Post carrierPost(std::string_view name) {
  return {.centre = Centre::distributed,
          .name = std::string(name),
          .forKeys = {"userCustomCarrierText", "userCustomWifiCarrierText", "userRequestsCustomWifiCallingString"},
          .delay = 100ms};
}

}  // namespace

const Page& KVQuellarStatusBarListController::page() {
  static const Page page{
      .className = "KVQuellarStatusBarListController",
      .defaultsKey = "StatusBar_Defaults",
      .posts = {darwin(kSettings),
                {.centre = Centre::distributed,
                 .name = std::string(kStatusBarItems),
                 .object = "string object",
                 .userInfo = {{"barItem", RowProperty{kItem}}, {"enabled", WrittenBoolean{}}},
                 .forRowsWith = kItem},
                {.centre = Centre::distributed,
                 .name = std::string(kStatusBarTime),
                 .forKeys = {"userCustomClockFormatter"},
                 .delay = 100ms},
                carrierPost(kSettingsUIKit),
                carrierPost(kStatusBarCarrier)},
      .saveButton = true,
      .rows = {
          Link{"Custom Carrier Strings", "KVQuellarStatusBarCarrierListController", {"qlrAppAlertsSettingsIcon.png"}},
          Group{.title = "Appearance", .footer = "The no bold option will require a respring to take effect"},
          Switch{.label = "Lowercase AM/PM", .key = "usesLowercaseAMPM"},
          Switch{.label = "No Bold Text", .key = "userRequestsUnboldStatusBar"},
          Switch{.label = "Same Size Everywhere", .key = "usesSameSizeStatusBar"},
          // No row shows these; the writes of "usesCustomCarrierText" bring them in where a row has that key.
          Dependent{.name = "dynamicCarrierSpecs",
                    .shownBy = "usesCustomCarrierText",
                    .onlyInserted = true,
                    .rows = {Group{.title = "Custom Carrier Text",
                                   .footer = "If you use a custom formatter with seconds make sure to enable to 'Uses "
                                             "Seconds in Formatter' option"},
                             TextEntry{.key = "userCustomCarrierText"},
                             Group{.title = "When Wifi-Calling Connected",
                                   .footer = "Enabling this will allow you to set a custom carrier text for when "
                                             "connected to Wifi-Calling"},
                             Switch{.label = "Use Custom Carrier", .key = "userRequestsCustomWifiCallingString"},
                             TextEntry{.key = "userCustomWifiCarrierText"}}},
          Group{},
          Switch{.label = "Use Custom Time Format", .key = "usesCustomTimeFormatter"},
          Dependent{.name = "dynamicClockSpecs",
                    .shownBy = "usesCustomTimeFormatter",
                    .rows = {Group{.title = "Custom Time Formatter", .footer = std::string(kFormatterHelp)},
                             TextEntry{.key = "userCustomClockFormatter"}}},
          Group{.title = "Behavior"},
          Switch{.label = "Disable Breadcrumbs", .key = "userDisablesBreadcrumbs"},
          Group{.title = "Disable Status Bar Items"},
          item("Activity Indicator", "disablesActivitySTBIcon", 26, "activityIndicator.png"),
          item("Airplane Mode", "disablesAirplaneSTBIcon", 20, "airplane.png"),
          item("Alarm", "disablesAlarmSTBIcon", 14, "alarm.png"),
          item("Assistant (Siri)", "disablesAssistantSTBIcon", 21, "siri.png"),
          item("Battery (+ Bolt)", "disablesBatterySTBIcon", 8, "battery.png"),
          item("Bluetooth", "disablesBluetoothSTBIcon", 12, "bluetooth.png"),
          item("Bluetooth Battery", "disablesBluetoothBatterySTBIcon", 11, "btBattery.png"),
          item("Call Forward", "disablesCallForwardSTBIcon", 25, "callforward.png"),
          item("Carplay", "disablesCarplaySTBIcon", 22, "carplay.png"),
          unnumbered("Carrier Text", "disablesCarrierSTBIcon", "carrier.png"),
          item("Clock", "disablesClockCenterSTBIcon", 0, "clock.png"),
          unnumbered("Clock AM/PM", "disablesClockAMPMSTBIcon", "ampm.png"),
          item("Data Networks", "disablesDataNetworksSTBIcon", 5, "data.png"),
          item("Do Not Disturb", "disablesDNDSTBIcon", 1, "donotdisturb.png"),
          item("Headphones", "disablesHeadphonesSTBIcon", 33, "headphones.png"),
          item("Location Services", "disablesLocationSTBIcon", 17, "location.png"),
          unnumbered("No Service/Searching", "disablesNoServiceSTBIcon"),
          unnumbered("Padlock ('Unlocked Text')", "disablesLockOnSTB"),
          item("Rotation Lock", "disablesRotationSTBIcon", 18, "rotation.png"),
          item("Signal Strength", "disablesSignalSTBIcon", 3, "signalbars.png"),
          item("Student", "disablesStudentSTBIcon", 23, "studentIcon.png"),
          unnumbered("Tethering", "disablesTetheringSTBIcon", "tethering.png"),
          item("TTY", "disablesTTYSTBIcon", 13, "tty.png"),
          item("VPN", "disablesVPNSTBIcon", 24, "vpn.png"),
          item("Water Warning", "disablesWaterSTBIcon", 32, "liquid.png"),
          // The add-on's bundle has no picture of its own for this item.
          item("Wifi", "disablesWifiSTBIcon", 6, "liquid.png"),
      }};
  return page;
}

}  // namespace quellar::pages

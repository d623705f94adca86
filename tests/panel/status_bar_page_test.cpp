// SPDX-License-Identifier: MIT
#include "pages/statusbar_lockscreen/status_bar_page.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "frame/names.h"
#include "support/memory_services.h"

namespace quellar::tests {
namespace status_bar_page_test {

using namespace std::chrono_literals;
using platform::Dictionary;
using platform::PSCellType;
using platform::PSSpecifier;
using platform::Value;
using testing::ElementsAre;

constexpr auto kPage = "KVQuellarStatusBarListController";
constexpr auto kSettingsPost =
    R"({"event":"post","centre":"darwin","name":"com.vantorick.quellar2.settings","object":null,"userInfo":null,"immediately":true,"through":"centre","t":0.0})";

std::string write(const std::string& dictionary, const std::string& time = "0.0") {
  return R"({"event":"write","domain":"com.vantorick.quellar2","key":"StatusBar_Defaults","value":)" + dictionary +
         R"(,"t":)" + time + "}";
}

std::string distributedPost(const std::string& name, const std::string& time) {
  return R"({"event":"post","centre":"distributed","name":")" + name +
         R"(","object":null,"userInfo":null,"immediately":true,"through":"centre","t":)" + time + "}";
}

struct Item {
  const char* label;
  const char* key;
  int number;
  const char* icon;
};

// -1: the row has no number; "": it has no icon.
constexpr Item kItems[] = {
    {"Activity Indicator", "disablesActivitySTBIcon", 26, "activityIndicator.png"},
    {"Airplane Mode", "disablesAirplaneSTBIcon", 20, "airplane.png"},
    {"Alarm", "disablesAlarmSTBIcon", 14, "alarm.png"},
    {"Assistant (Siri)", "disablesAssistantSTBIcon", 21, "siri.png"},
    {"Battery (+ Bolt)", "disablesBatterySTBIcon", 8, "battery.png"},
    {"Bluetooth", "disablesBluetoothSTBIcon", 12, "bluetooth.png"},
    {"Bluetooth Battery", "disablesBluetoothBatterySTBIcon", 11, "btBattery.png"},
    {"Call Forward", "disablesCallForwardSTBIcon", 25, "callforward.png"},
    {"Carplay", "disablesCarplaySTBIcon", 22, "carplay.png"},
    {"Carrier Text", "disablesCarrierSTBIcon", -1, "carrier.png"},
    {"Clock", "disablesClockCenterSTBIcon", 0, "clock.png"},
    {"Clock AM/PM", "disablesClockAMPMSTBIcon", -1, "ampm.png"},
    {"Data Networks", "disablesDataNetworksSTBIcon", 5, "data.png"},
    {"Do Not Disturb", "disablesDNDSTBIcon", 1, "donotdisturb.png"},
    {"Headphones", "disablesHeadphonesSTBIcon", 33, "headphones.png"},
    {"Location Services", "disablesLocationSTBIcon", 17, "location.png"},
    {"No Service/Searching", "disablesNoServiceSTBIcon", -1, ""},
    {"Padlock ('Unlocked Text')", "disablesLockOnSTB", -1, ""},
    {"Rotation Lock", "disablesRotationSTBIcon", 18, "rotation.png"},
    {"Signal Strength", "disablesSignalSTBIcon", 3, "signalbars.png"},
    {"Student", "disablesStudentSTBIcon", 23, "studentIcon.png"},
    {"Tethering", "disablesTetheringSTBIcon", -1, "tethering.png"},
    {"TTY", "disablesTTYSTBIcon", 13, "tty.png"},
    {"VPN", "disablesVPNSTBIcon", 24, "vpn.png"},
    {"Water Warning", "disablesWaterSTBIcon", 32, "liquid.png"},
    {"Wifi", "disablesWifiSTBIcon", 6, "liquid.png"},
};

TEST(StatusBarPage, ShowsItsRowsInOrderOnAFreshInstall) {
  Panel panel;
  panel.open(kPage);
  std::vector<std::string> expected = {
      "PSLinkListCell Custom Carrier Strings",
      "PSGroupCell Appearance",
      "PSSwitchCell Lowercase AM/PM | usesLowercaseAMPM",
      "PSSwitchCell No Bold Text | userRequestsUnboldStatusBar",
      "PSSwitchCell Same Size Everywhere | usesSameSizeStatusBar",
      "PSGroupCell ",
      "PSSwitchCell Use Custom Time Format | usesCustomTimeFormatter",
      "PSGroupCell Behavior",
      "PSSwitchCell Disable Breadcrumbs | userDisablesBreadcrumbs",
      "PSGroupCell Disable Status Bar Items",
  };
  for (const Item& item : kItems) {
    expected.push_back(std::string("PSSwitchCell ") + item.label + " | " + item.key);
  }
  EXPECT_EQ(panel.rows(), expected);
}

TEST(StatusBarPage, GivesItsRowsTheirPropertiesAndHandlers) {
  Panel panel;
  auto& page = panel.open(kPage);
  const auto properties = [&](std::size_t index) {
    std::string text;
    for (const auto& [key, property] : page.specifiers()[index]->properties()) {
      text += key + "=" + dump(host::headless::toJson(property)) + ";";
    }
    return text;
  };
  const std::string images = "/Library/PreferenceBundles/Quellar.bundle/images/";
  EXPECT_EQ(properties(0),
            R"(iconImage={"$image":")" + images + R"(qlrAppAlertsSettingsIcon.png"};label="Custom Carrier Strings";)");
  EXPECT_EQ(page.specifiers()[0]->detailControllerClass(), "KVQuellarStatusBarCarrierListController");
  EXPECT_FALSE(page.specifiers()[0]->setter() || page.specifiers()[0]->getter());
  EXPECT_EQ(properties(1), R"(footerText="The no bold option will require a respring to take effect";)"
                           R"(label="Appearance";)");
  EXPECT_EQ(properties(2), R"(default=0;key="usesLowercaseAMPM";label="Lowercase AM/PM";)");
  EXPECT_EQ(properties(5), "");
  EXPECT_EQ(properties(7), R"(label="Behavior";)");
  EXPECT_EQ(properties(9), R"(label="Disable Status Bar Items";)");
  for (std::size_t at = 0; at < std::size(kItems); ++at) {
    const Item& item = kItems[at];
    const PSSpecifier& row = *page.specifiers()[10 + at];
    std::string expected = std::string(R"(default=0;)");
    if (*item.icon) expected += R"(iconImage={"$image":")" + images + "statusbarimages/" + item.icon + R"("};)";
    expected += std::string(R"(key=")") + item.key + R"(";label=")" + item.label + R"(";)";
    if (item.number >= 0) expected += "statusBarItem=" + std::to_string(item.number) + ";";
    EXPECT_EQ(properties(10 + at), expected);
    EXPECT_TRUE(row.setter() && row.getter()) << item.label;
    EXPECT_TRUE(row.detailControllerClass().empty() && !row.action()) << item.label;
  }
}

TEST(StatusBarPage, LocalisesLabelsThroughTheLocalizerAndLeavesTheLinkAsWritten) {
  Panel panel;
  panel.bundles.texts = {{"Custom Carrier Strings", "wrong"},
                         {"Appearance", "Aussehen"},
                         {"Alarm", "Wecker"},
                         {"The no bold option will require a respring to take effect", "Fuß"}};
  auto& page = panel.open(kPage);
  EXPECT_EQ(page.specifiers()[0]->name(), "Custom Carrier Strings");
  EXPECT_EQ(page.specifiers()[1]->name(), "Aussehen");
  EXPECT_EQ(page.specifiers()[1]->stringForKey("footerText"), "Fuß");
  EXPECT_EQ(panel.row("disablesAlarmSTBIcon").name(), "Wecker");
}

TEST(StatusBarPage, PostsTheItemsNumberWithTheSwitchedState) {
  Panel panel;
  panel.open(kPage);
  panel.set("disablesBatterySTBIcon", true);
  const auto item = [](int number, bool enabled) {
    return R"({"event":"post","centre":"distributed","name":"com.vantorick.quellar2.statusbaritems","object":"string object","userInfo":{"barItem":)" +
           std::to_string(number) + R"(,"enabled":)" + (enabled ? "true" : "false") +
           R"(},"immediately":true,"through":"centre","t":0.0})";
  };
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"disablesBatterySTBIcon":true})"), kSettingsPost, item(8, true)));
  panel.set("disablesBatterySTBIcon", false);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"disablesBatterySTBIcon":false})"), kSettingsPost, item(8, false)));
}

TEST(StatusBarPage, PostsEveryItemThatHasANumberZeroIncluded) {
  for (const Item& item : kItems) {
    Panel panel;
    panel.open(kPage);
    panel.set(item.key, true);
    std::vector<std::string> expected = {write(std::string(R"({")") + item.key + R"(":true})"), kSettingsPost};
    if (item.number >= 0) {
      expected.push_back(
          R"({"event":"post","centre":"distributed","name":"com.vantorick.quellar2.statusbaritems","object":"string object","userInfo":{"barItem":)" +
          std::to_string(item.number) + R"(,"enabled":true},"immediately":true,"through":"centre","t":0.0})");
    }
    EXPECT_EQ(panel.events(), expected) << item.label;
    panel.advance(1s);
    EXPECT_THAT(panel.events(), ElementsAre()) << item.label;
  }
}

TEST(StatusBarPage, InsertsTheClockBlockUnderItsSwitchAndRemovesItWhole) {
  Panel panel;
  panel.open(kPage);
  const auto closed = panel.rows();
  panel.set("usesCustomTimeFormatter", true);
  EXPECT_THAT(
      panel.events(),
      ElementsAre(
          write(R"({"usesCustomTimeFormatter":true})"), kSettingsPost,
          R"({"event":"insert","after":"usesCustomTimeFormatter","at":7,"labels":["Custom Time Formatter","Text:"],"animated":true,"t":0.0})"));
  auto open = closed;
  open.insert(open.begin() + 7,
              {"PSGroupCell Custom Time Formatter", "PSEditTextCell Text: | userCustomClockFormatter"});
  EXPECT_EQ(panel.rows(), open);
  // Switched on once more, the block stands there already.
  panel.set("usesCustomTimeFormatter", true);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"usesCustomTimeFormatter":true})"), kSettingsPost));
  EXPECT_EQ(panel.rows(), open);

  panel.set("usesCustomTimeFormatter", false);
  EXPECT_THAT(
      panel.events(),
      ElementsAre(write(R"({"usesCustomTimeFormatter":false})"), kSettingsPost,
                  R"({"event":"remove","at":7,"labels":["Custom Time Formatter","Text:"],"animated":true,"t":0.0})"));
  EXPECT_EQ(panel.rows(), closed);
}

TEST(StatusBarPage, ReusesTheRowsOfItsBlockForEveryInsertion) {
  Panel panel;
  panel.open(kPage);
  panel.set("usesCustomTimeFormatter", true);
  const PSSpecifier* first = &panel.row("userCustomClockFormatter");
  panel.set("usesCustomTimeFormatter", false);
  panel.set("usesCustomTimeFormatter", true);
  EXPECT_EQ(&panel.row("userCustomClockFormatter"), first);
}

TEST(StatusBarPage, OpensWithTheClockBlockWhereItsSwitchIsStoredOn) {
  Panel panel;
  panel.store("StatusBar_Defaults", Dictionary{{"usesCustomTimeFormatter", true}});
  panel.host.open(kPage);
  EXPECT_THAT(panel.events(), ElementsAre(R"({"event":"push","page":"KVQuellarStatusBarListController","t":0.0})"));
  EXPECT_EQ(panel.rows().at(7), "PSGroupCell Custom Time Formatter");
  EXPECT_EQ(panel.rows().at(8), "PSEditTextCell Text: | userCustomClockFormatter");
  EXPECT_EQ(panel.rows().at(9), "PSGroupCell Behavior");
}

TEST(StatusBarPage, ExplainsTheTimeFormatInTenParagraphs) {
  Panel panel;
  panel.store("StatusBar_Defaults", Dictionary{{"usesCustomTimeFormatter", true}});
  auto& page = panel.open(kPage);
  const std::string footer = page.specifiers()[7]->stringForKey("footerText");
  std::vector<std::string> paragraphs;
  std::size_t from = 0;
  for (std::size_t at = footer.find(" \n\n"); at != std::string::npos; at = footer.find(" \n\n", from)) {
    paragraphs.push_back(footer.substr(from, at - from));
    from = at + 3;
  }
  paragraphs.push_back(footer.substr(from));
  EXPECT_THAT(
      paragraphs,
      ElementsAre(
          "If you are going to set seconds in the custom formatter make sure to enable the 'Uses Seconds in Formatter' "
          "option. It makes sure to refresh your status bar every second.",
          "y | year | 1, 2 or 4 y's will show the value, 2 digit zero-padded value or 4 digit zero-padded value "
          "respectively",
          "M | Month | 1, 2, 3, 4 or 5 M's will show the value, 2 digit zero-padded value, short name, long name or "
          "initial letter months",
          "d | Day of Month | 1 or 2 d's will show the value or 2 digit zero-padded value representation respectively.",
          "E | Weekday | 1, 2, 3, 4 or 5 e's will show the value weekday number, 2 digit zero-padded value weekday "
          "number, short name, long name or initial letter respectively. Weekday numbers starts on Sunday. Use "
          "lowercase e's; for weekday numbers starting on Monday.",
          "a | AM or PM",
          "h | Hour | 1 or 2 h's will show the value or 2 digit zero-padded value representation respectively. Use "
          "uppercase for 24 hour time.",
          "m | Minute | 1 or 2 m's will show the value or 2 digit zero-padded value representation respectively.",
          "s | Second | 1 or 2 s's will show the value or 2 digit zero-padded value representation "
          "respectively.\xE2\x80\xA8\xE2\x80\xA8",
          "z| Timezone | 1, 2, 3 or 4 z's will show short acronym, short name, long acronym, long name respectively. "
          "Use uppercase to show GMT offset instead of name \xE2\x80\x94 1 or 2 digit zero-padded values shows GMT or "
          "RFC 822 respectively."));
}

TEST(StatusBarPage, PostsTheTimeNotificationATenthOfASecondAfterTheFormatWasTyped) {
  Panel panel;
  panel.store("StatusBar_Defaults", Dictionary{{"usesCustomTimeFormatter", true}});
  panel.open(kPage);
  panel.type("userCustomClockFormatter", "HH:mm");
  panel.events();
  panel.host.topList()->endEditing();
  EXPECT_THAT(panel.events(),
              ElementsAre(write(R"({"userCustomClockFormatter":"HH:mm","usesCustomTimeFormatter":true})"),
                          kSettingsPost, R"({"event":"keyboard","visible":false,"t":0.0})",
                          R"({"event":"bar","side":"right","title":null,"style":null,"t":0.0})"));
  panel.advance(99'999'999ns);
  EXPECT_THAT(panel.events(), ElementsAre());
  panel.advance(1ns);
  EXPECT_THAT(panel.events(), ElementsAre(distributedPost("com.vantorick.quellar2.statusbartime", "0.1")));
}

TEST(StatusBarPage, ShowsSaveWhileTheKeyboardIsUp) {
  Panel panel;
  panel.bundles.texts = {{"Save", "Sichern"}};
  panel.store("StatusBar_Defaults", Dictionary{{"usesCustomTimeFormatter", true}});
  auto& page = panel.open(kPage);
  panel.type("userCustomClockFormatter", "h");
  EXPECT_THAT(panel.events(),
              ElementsAre(R"({"event":"keyboard","visible":true,"t":0.0})",
                          R"({"event":"bar","side":"right","title":"Sichern","style":"done","t":0.0})"));
  const auto save = page.navigationItem().rightBarButtonItem();
  ASSERT_TRUE(save);
  EXPECT_EQ(save->action, "Save");
  save->run();
  EXPECT_FALSE(page.navigationItem().rightBarButtonItem());
  EXPECT_EQ(panel.stored("StatusBar_Defaults"), R"({"userCustomClockFormatter":"h","usesCustomTimeFormatter":true})");
  EXPECT_EQ(page.editedSpecifier(), nullptr);
}

TEST(StatusBarPage, PostsBothCarrierNotificationsForTheCarrierKeysInOrder) {
  for (const auto* key :
       {"userCustomCarrierText", "userCustomWifiCarrierText", "userRequestsCustomWifiCallingString"}) {
    Panel panel;
    auto& page = dynamic_cast<frame::KVQuellarListController&>(panel.open(kPage));
    const auto row = PSSpecifier::preferenceSpecifierNamed("", &page, {}, {}, "", PSCellType::PSEditTextCell);
    row->setProperty("key", Value(key));
    page.setPreferenceValue(Value("x"), *row);
    EXPECT_THAT(panel.events(), ElementsAre(write(std::string(R"({")") + key + R"(":"x"})"), kSettingsPost));
    panel.advance(100ms);
    EXPECT_THAT(panel.events(), ElementsAre(distributedPost("com.vantorick.quellar2.settings.uikit", "0.1"),
                                            distributedPost("com.vantorick.quellar2.statusbarcarrier", "0.1")))
        << key;
  }
}

TEST(StatusBarPage, BuildsTheCarrierBlockButListsItNowhere) {
  Panel panel;
  panel.store("StatusBar_Defaults", Dictionary{{"usesCustomCarrierText", true}});
  auto& page = dynamic_cast<frame::KVQuellarListController&>(panel.open(kPage));
  EXPECT_EQ(panel.rows().size(), 36U);
  std::vector<std::string> lines;
  for (const auto& row : page.dynamicSpecs("dynamicCarrierSpecs")) {
    lines.push_back(row->name() + "|" + row->stringForKey("key") + "|" + row->stringForKey("footerText"));
  }
  EXPECT_THAT(
      lines,
      ElementsAre("Custom Carrier Text||If you use a custom formatter with seconds make sure to enable to 'Uses "
                  "Seconds in Formatter' option",
                  "Text:|userCustomCarrierText|",
                  "When Wifi-Calling Connected||Enabling this will allow you to set a custom carrier text for "
                  "when connected to Wifi-Calling",
                  "Use Custom Carrier|userRequestsCustomWifiCallingString|", "Text:|userCustomWifiCarrierText|"));
  // A write of the controlling key finds no row to insert after.
  const auto row = PSSpecifier::preferenceSpecifierNamed("", &page, {}, {}, "", PSCellType::PSSwitchCell);
  row->setProperty("key", Value("usesCustomCarrierText"));
  page.setPreferenceValue(Value(true), *row);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"usesCustomCarrierText":true})"), kSettingsPost));
}

TEST(StatusBarPage, RemovesTheEntryOfAWrittenNull) {
  Panel panel;
  panel.store("StatusBar_Defaults", Dictionary{{"usesLowercaseAMPM", true}, {"foreign", 5}});
  auto& page = dynamic_cast<frame::KVQuellarListController&>(panel.open(kPage));
  page.setPreferenceValue(std::nullopt, panel.row("usesLowercaseAMPM"));
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"foreign":5})"), kSettingsPost));
}

TEST(StatusBarPage, LosesNoValueWhenTheBlockIsHidden) {
  Panel panel;
  panel.store("StatusBar_Defaults", Dictionary{{"usesCustomTimeFormatter", true}, {"userCustomClockFormatter", "HH"}});
  panel.open(kPage);
  panel.set("usesCustomTimeFormatter", false);
  EXPECT_EQ(panel.stored("StatusBar_Defaults"), R"({"userCustomClockFormatter":"HH","usesCustomTimeFormatter":false})");
}

TEST(StatusBarPage, CommitsAnEditedTextBeforeItsBlockGoes) {
  Panel panel;
  panel.store("StatusBar_Defaults", Dictionary{{"usesCustomTimeFormatter", true}});
  panel.open(kPage);
  panel.type("userCustomClockFormatter", "ss");
  panel.events();
  panel.set("usesCustomTimeFormatter", false);
  const auto events = panel.events();
  EXPECT_EQ(events.front(), write(R"({"userCustomClockFormatter":"ss","usesCustomTimeFormatter":true})"));
  EXPECT_EQ(panel.stored("StatusBar_Defaults"), R"({"userCustomClockFormatter":"ss","usesCustomTimeFormatter":false})");
}

TEST(StatusBarPage, PostsWhatWasScheduledAlthoughThePageIsGone) {
  Panel panel;
  panel.store("StatusBar_Defaults", Dictionary{{"usesCustomTimeFormatter", true}});
  panel.open(kPage);
  panel.type("userCustomClockFormatter", "HH");
  panel.host.navigation().popViewController(true);
  panel.events();
  panel.advance(1s);
  EXPECT_THAT(panel.events(), ElementsAre(distributedPost("com.vantorick.quellar2.statusbartime", "0.1")));
}

TEST(StatusBarPage, CommitsTheEditedTextBeforeItIsPopped) {
  Panel panel;
  panel.store("StatusBar_Defaults", Dictionary{{"usesCustomTimeFormatter", true}});
  panel.open(kPage);
  panel.type("userCustomClockFormatter", "HH");
  panel.events();
  panel.host.navigation().popViewController(true);
  EXPECT_THAT(panel.events(),
              ElementsAre(write(R"({"userCustomClockFormatter":"HH","usesCustomTimeFormatter":true})"), kSettingsPost,
                          R"({"event":"keyboard","visible":false,"t":0.0})",
                          R"({"event":"bar","side":"right","title":null,"style":null,"t":0.0})",
                          R"({"event":"pop","page":"KVQuellarStatusBarListController","animated":true,"t":0.0})"));
}

}  // namespace status_bar_page_test
}  // namespace quellar::tests

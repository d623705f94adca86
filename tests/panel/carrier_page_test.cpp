// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/memory_services.h"

namespace quellar::tests {
namespace carrier_page_test {

using namespace std::chrono_literals;
using platform::Dictionary;
using testing::ElementsAre;

constexpr auto kPage = "KVQuellarStatusBarCarrierListController";

std::string write(const std::string& dictionary) {
  return R"({"event":"write","domain":"com.vantorick.quellar2","key":"StatusBar_Defaults","value":)" + dictionary +
         R"(,"t":0.0})";
}

std::string post(const std::string& name) {
  return R"({"event":"post","centre":"distributed","name":")" + name +
         R"(","object":null,"userInfo":null,"immediately":true,"through":"centre","t":0.1})";
}

const std::vector<std::string> kClosed = {
    "PSGroupCell Default Carrier String",      "PSSwitchCell Use Custom String | usesCustomCarrierText",
    "PSGroupCell No Service Carrier String",   "PSSwitchCell Use Custom String | userRequestsCustomNoServiceString",
    "PSGroupCell Searching... Carrier String", "PSSwitchCell Use Custom String | userRequestsCustomSearchingString",
    "PSGroupCell WiFi Calling Carrier String", "PSSwitchCell Use Custom String | userRequestsCustomWifiCallingString",
};

std::vector<std::string> with(std::vector<std::string> rows, std::size_t at, const std::string& key) {
  rows.insert(rows.begin() + static_cast<std::ptrdiff_t>(at), "PSEditTextCell Text: | " + key);
  return rows;
}

TEST(CarrierPage, ShowsFourSwitchesOnAFreshInstall) {
  Panel panel;
  panel.open(kPage);
  EXPECT_EQ(panel.rows(), kClosed);
  for (const auto* key : {"usesCustomCarrierText", "userRequestsCustomNoServiceString",
                          "userRequestsCustomSearchingString", "userRequestsCustomWifiCallingString"}) {
    EXPECT_EQ(*panel.row(key).valueForKey("default"), platform::Value(0)) << key;
  }
}

TEST(CarrierPage, InsertsEachTextUnderItsSwitchAndKeepsTheTextWhenTheRowGoes) {
  struct Case {
    const char* key;
    std::size_t at;
    const char* text;
  };
  for (const Case& each : {Case{"usesCustomCarrierText", 2, "userCustomCarrierText"},
                           Case{"userRequestsCustomNoServiceString", 4, "userCustomNoServiceText"},
                           Case{"userRequestsCustomSearchingString", 6, "userCustomSearchingText"},
                           Case{"userRequestsCustomWifiCallingString", 8, "userCustomWifiCarrierText"}}) {
    Panel panel;
    auto& page = panel.open(kPage);
    panel.set(each.key, true);
    EXPECT_THAT(panel.events(),
                ElementsAre(write(std::string(R"({")") + each.key + R"(":true})"),
                            std::string(R"({"event":"insert","after":")") + each.key + R"(","at":)" +
                                std::to_string(each.at) + R"(,"labels":["Text:"],"animated":true,"t":0.0})"));
    EXPECT_EQ(panel.rows(), with(kClosed, each.at, each.text));
    panel.type(each.text, "abc");
    page.endEditing();
    panel.set(each.key, false);
    EXPECT_EQ(panel.rows(), kClosed);
    const auto stored = panel.preferences.copyAppValue("StatusBar_Defaults", "com.vantorick.quellar2");
    EXPECT_EQ(*stored->as<Dictionary>(), (Dictionary{{each.key, false}, {each.text, "abc"}}));
  }
}

TEST(CarrierPage, PostsBothCarrierNotificationsForEveryWriteAndNeverTheGeneralOne) {
  Panel panel;
  auto& page = panel.open(kPage);
  for (const auto* key : {"usesCustomCarrierText", "userRequestsCustomNoServiceString",
                          "userRequestsCustomSearchingString", "userRequestsCustomWifiCallingString"}) {
    panel.set(key, true);
  }
  panel.advance(1s);
  panel.events();
  for (const auto* key :
       {"userCustomCarrierText", "userCustomNoServiceText", "userCustomSearchingText", "userCustomWifiCarrierText"}) {
    Panel fresh;
    fresh.store("StatusBar_Defaults", *panel.preferences.copyAppValue("StatusBar_Defaults", "com.vantorick.quellar2"));
    (void)page;
    fresh.open(kPage);
    if (!fresh.host.topList()->specifierForID(key)) continue;  // The searching text is not listed at first.
    fresh.type(key, "x");
    fresh.events();
    fresh.host.topList()->endEditing();
    const auto events = fresh.events();
    ASSERT_EQ(events.size(), 3U) << key;
    EXPECT_THAT(events[0], testing::StartsWith(R"({"event":"write")"));
    EXPECT_EQ(events[1], R"({"event":"keyboard","visible":false,"t":0.0})");
    fresh.advance(99'999'999ns);
    EXPECT_THAT(fresh.events(), ElementsAre());
    fresh.advance(1ns);
    EXPECT_THAT(fresh.events(), ElementsAre(post("com.vantorick.quellar2.settings.uikit"),
                                            post("com.vantorick.quellar2.statusbarcarrier")))
        << key;
    fresh.advance(1s);
    EXPECT_THAT(fresh.events(), ElementsAre());
  }
}

TEST(CarrierPage, OpensTheSearchingGroupWithTheNoServiceText) {
  Panel panel;
  panel.store("StatusBar_Defaults", Dictionary{{"userRequestsCustomSearchingString", true}});
  auto& page = panel.open(kPage);
  EXPECT_EQ(panel.rows(), with(kClosed, 6, "userCustomNoServiceText"));

  // Switched off, the searching text is not there to be removed; the no-service text stays.
  panel.set("userRequestsCustomSearchingString", false);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"userRequestsCustomSearchingString":false})")));
  EXPECT_EQ(panel.rows(), with(kClosed, 6, "userCustomNoServiceText"));

  panel.set("userRequestsCustomSearchingString", true);
  EXPECT_EQ(panel.rows(), with(with(kClosed, 6, "userCustomNoServiceText"), 6, "userCustomSearchingText"));
  panel.type("userCustomSearchingText", "Looking");
  page.endEditing();
  EXPECT_EQ(panel.stored("StatusBar_Defaults"),
            R"({"userCustomSearchingText":"Looking","userRequestsCustomSearchingString":true})");
}

TEST(CarrierPage, ListsTheNoServiceRowTwiceWhereBothSwitchesAreStoredOn) {
  Panel panel;
  panel.store("StatusBar_Defaults",
              Dictionary{{"userRequestsCustomNoServiceString", true}, {"userRequestsCustomSearchingString", true}});
  auto& page = panel.open(kPage);
  EXPECT_EQ(panel.rows(), with(with(kClosed, 4, "userCustomNoServiceText"), 7, "userCustomNoServiceText"));
  EXPECT_EQ(page.specifiers()[4], page.specifiers()[7]);
  // Removing the row takes its first place away.
  panel.set("userRequestsCustomNoServiceString", false);
  EXPECT_EQ(panel.rows(), with(kClosed, 6, "userCustomNoServiceText"));
  panel.set("userRequestsCustomNoServiceString", true);
  EXPECT_EQ(panel.rows(), with(with(kClosed, 4, "userCustomNoServiceText"), 7, "userCustomNoServiceText"));
}

TEST(CarrierPage, OverwritesWhatTheStatusBarPageWroteMeanwhile) {
  Panel panel;
  panel.open("KVQuellarStatusBarListController");
  panel.open(kPage);
  panel.set("usesCustomCarrierText", true);
  panel.host.navigation().popViewController(true);
  panel.set("disablesVPNSTBIcon", true);
  EXPECT_EQ(panel.stored("StatusBar_Defaults"), R"({"disablesVPNSTBIcon":true})");
}

TEST(CarrierPage, OpensFromTheStatusBarPagesLink) {
  Panel panel;
  auto& page = panel.open("KVQuellarStatusBarListController");
  page.userTapsRow(0);
  EXPECT_THAT(panel.events(),
              ElementsAre(R"({"event":"push","page":"KVQuellarStatusBarCarrierListController","t":0.0})"));
  EXPECT_EQ(panel.host.navigation().topViewController()->title(), "Custom Carrier Strings");
}

TEST(CarrierPage, MovesTheKeyboardFromOneTextRowToTheNextWithOneCommitEach) {
  Panel panel;
  panel.store("StatusBar_Defaults",
              Dictionary{{"usesCustomCarrierText", true}, {"userRequestsCustomWifiCallingString", true}});
  panel.open(kPage);
  panel.type("userCustomCarrierText", "one");
  panel.events();
  panel.type("userCustomWifiCarrierText", "two");
  EXPECT_THAT(
      panel.events(),
      ElementsAre(
          write(
              R"({"userCustomCarrierText":"one","userRequestsCustomWifiCallingString":true,"usesCustomCarrierText":true})"),
          R"({"event":"keyboard","visible":false,"t":0.0})",
          R"({"event":"bar","side":"right","title":null,"style":null,"t":0.0})",
          R"({"event":"keyboard","visible":true,"t":0.0})",
          R"({"event":"bar","side":"right","title":"Save","style":"done","t":0.0})"));
}

TEST(CarrierPage, StoresAnEmptiedTextAsTheEmptyString) {
  Panel panel;
  panel.store("StatusBar_Defaults", Dictionary{{"usesCustomCarrierText", true}, {"userCustomCarrierText", "x"}});
  auto& page = panel.open(kPage);
  panel.type("userCustomCarrierText", "");
  page.endEditing();
  EXPECT_EQ(panel.stored("StatusBar_Defaults"), R"({"userCustomCarrierText":"","usesCustomCarrierText":true})");
}

}  // namespace carrier_page_test
}  // namespace quellar::tests

// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <map>
#include <set>

#include "accessible_window.h"
#include "host/linux/file_preferences.h"

namespace quellar::tests {
namespace accessibility_test {

using host::linux::BusNotification;
using platform::Dictionary;
using platform::Value;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr const char* kDomain = "com.vantorick.quellar2";

Dictionary stored(const AccessibleWindow& window) {
  host::linux::FilePreferences store((host::linux::DeviceRoot(window.root().path())));
  const auto value = store.copyAppValue("StatusBar_Defaults", kDomain);
  const auto* dictionary = value ? value->as<Dictionary>() : nullptr;
  return dictionary ? *dictionary : Dictionary();
}

BusNotification darwin(const std::string& name) {
  return {BusNotification::Centre::Darwin, name, std::nullopt, std::nullopt};
}

class AccessibilityTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { AccessibleDesktop::shared(); }
};

TEST_F(AccessibilityTest, NamesEveryRowByItsLabelAndRoleInReadingOrder) {
  const AccessibleWindow window({"--page", "Custom Carrier Strings"}, [](const TemporaryFolder& root) {
    host::linux::FilePreferences((host::linux::DeviceRoot(root.path())))
        .setAppValue("StatusBar_Defaults", Value(Dictionary{{"usesCustomCarrierText", true}}), kDomain);
  });
  std::vector<std::pair<std::string, std::string>> listed;
  // The last row comes after its heading.
  EXPECT_TRUE(eventually([&] {
    listed = window.listed();
    return std::ranges::count(listed, std::pair<std::string, std::string>("check box", "Use Custom String")) == 4;
  }));
  std::erase_if(listed, [](const auto& object) { return object.second.empty(); });
  ASSERT_GE(listed.size(), 2U);
  // The program and its window come first.
  listed.erase(listed.begin(), listed.begin() + 2);
  std::ranges::sort(listed.begin(), listed.begin() + 2);
  EXPECT_THAT(listed,
              ElementsAre(Pair("heading", "Custom Carrier Strings"), Pair("push button", "Status Bar"),
                          Pair("heading", "Default Carrier String"), Pair("check box", "Use Custom String"),
                          Pair("entry", "Text:"), Pair("heading", "No Service Carrier String"),
                          Pair("check box", "Use Custom String"), Pair("heading", "Searching... Carrier String"),
                          Pair("check box", "Use Custom String"), Pair("heading", "WiFi Calling Carrier String"),
                          Pair("check box", "Use Custom String")));
}

TEST_F(AccessibilityTest, DescribesAGroupByItsFooter) {
  const AccessibleWindow window({"--page", "Status Bar"});
  EXPECT_EQ(window.find("heading", "Appearance").description(),
            "The no bold option will require a respring to take effect");
}

TEST_F(AccessibilityTest, ReadsTheFooterOfAGroupWithoutATitleAfterItsRows) {
  const auto read = [](const std::string& page) {
    const AccessibleWindow window({"--page", page});
    (void)window.find("heading", page);
    std::vector<std::pair<int, std::string>> rows;
    const auto collect = [&] {
      rows.clear();
      bool isAfterBar = false;
      for (const Accessible& object : window.objects()) {
        const std::string role = object.role();
        isAfterBar = isAfterBar || role == "check box" || role == "label";
        const bool isRow = role == "check box" || role == "label" || role == "spin button" || role == "heading";
        if (isAfterBar && isRow && !object.name().empty()) rows.emplace_back(object.extents().y, role);
      }
      return !rows.empty() && std::ranges::is_sorted(rows, {}, [](const auto& row) { return row.first; });
    };
    EXPECT_TRUE(eventually(collect)) << page << testing::PrintToString(rows);
    std::vector<std::string> roles;
    for (const auto& [top, role] : rows) roles.push_back(role);
    return roles;
  };
  EXPECT_THAT(read("Quick Edit Menu"), ElementsAre("check box", "label", "heading", "check box"));
  EXPECT_THAT(read("Custom Timers"), ElementsAre("check box", "check box", "label", "check box", "label", "spin button",
                                                 "spin button", "spin button", "spin button"));
  EXPECT_THAT(read("Music Changes"), ElementsAre("label", "heading", "check box", "heading", "check box"));
}

TEST_F(AccessibilityTest, ListsEachActionOfEachControlOnce) {
  std::map<std::string, std::vector<std::string>> actions;
  const auto note = [&actions](const AccessibleWindow& window) {
    for (const Accessible& object : window.objects()) {
      const auto own = object.actions();
      const std::set<std::string> once(own.begin(), own.end());
      EXPECT_EQ(own.size(), once.size()) << object.role() << " " << object.name() << testing::PrintToString(own);
      if (object.has(ATSPI_STATE_FOCUSABLE)) actions.emplace(object.role(), own);
    }
  };
  const auto storing = [](const std::string& defaultsKey, const Dictionary& values) {
    return [=](const TemporaryFolder& root) {
      host::linux::FilePreferences((host::linux::DeviceRoot(root.path())))
          .setAppValue(defaultsKey, Value(values), kDomain);
    };
  };
  {
    const AccessibleWindow window({"--page", "Icons"},
                                  storing("Icon_Defaults", {{"usesCustomIconSize", true},
                                                            {"userRequestsColoredBadges", true},
                                                            {"userStyleForIconBadgeColoring", 1}}));
    (void)window.find("slider", "Icon Scale");
    note(window);
    ASSERT_TRUE(window.find("push button", "Border Color").act("Press"));
    (void)window.find("push button", "Choose");
    note(window);
  }
  const AccessibleWindow window({"--page", "Dock"}, storing("Dock_Defaults", {{"customMaxDockIcons", true}}));
  (void)window.find("spin button", "Max Icons");
  note(window);
  EXPECT_EQ(actions["push button"], (std::vector<std::string>{"Press", "SetFocus"}));
  EXPECT_EQ(actions["check box"], (std::vector<std::string>{"Toggle", "Press", "SetFocus"}));
  EXPECT_EQ(actions["slider"], (std::vector<std::string>{"Increase", "Decrease", "SetFocus"}));
  EXPECT_EQ(actions["spin button"], (std::vector<std::string>{"Increase", "Decrease", "SetFocus"}));
}

TEST_F(AccessibilityTest, GivesTheFocusToNoFooter) {
  const AccessibleWindow window({"--page", "Quick Edit Menu"});
  (void)window.find("check box", "Use Quick Edit");
  int footers = 0;
  for (const Accessible& object : window.objects()) {
    if (object.role() != "label" || object.name().empty()) continue;
    ++footers;
    EXPECT_FALSE(object.has(ATSPI_STATE_FOCUSABLE)) << object.name();
  }
  EXPECT_EQ(footers, 1);
  EXPECT_TRUE(window.find("check box", "Use Quick Edit").has(ATSPI_STATE_FOCUSABLE));
}

TEST_F(AccessibilityTest, IsCalledByTheNameOfTheProduct) {
  const AccessibleWindow window;
  (void)window.find("heading", "Quellar");
  EXPECT_EQ(window.applicationName(), "Quellar");
}

TEST_F(AccessibilityTest, TellsRowsOfTheSameNameByTheirGroups) {
  const auto described = [](const AccessibleWindow& window, const std::string& name) {
    std::vector<std::string> descriptions;
    for (const Accessible& object : window.objects()) {
      if (object.name() == name) descriptions.push_back(object.description());
    }
    return descriptions;
  };
  {
    const AccessibleWindow window({"--page", "Icons"});
    (void)window.find("check box", "Suppress Icon Jittering");
    EXPECT_TRUE(eventually([&] { return described(window, "Hide All").size() == 2; }));
    EXPECT_THAT(described(window, "Hide All"), ElementsAre("Badges", "Labels"));
    EXPECT_THAT(described(window, "Suppress Icon Jittering"), ElementsAre("")) << "its name is its own";
  }
  const AccessibleWindow window({"--page", "Status Bar"});
  ASSERT_TRUE(window.find("check box", "Use Custom Time Format").act("Toggle"));
  (void)window.find("entry", "Text:");
  EXPECT_THAT(described(window, "Text:"), ElementsAre("Custom Time Formatter"));
}

TEST_F(AccessibilityTest, OpensAtARowBelowOpenBlocks) {
  const auto storing = [](const std::string& defaultsKey, const Dictionary& values) {
    return [=](const TemporaryFolder& root) {
      host::linux::FilePreferences((host::linux::DeviceRoot(root.path())))
          .setAppValue(defaultsKey, Value(values), kDomain);
    };
  };
  // In sight once the window has come to rest, and still.
  const auto isInSight = [](const AccessibleWindow& window, const std::string& name) {
    return eventually([&] {
      const Accessible row = window.find("check box", name);
      const AtspiRect place = row.extents();
      return row.has(ATSPI_STATE_FOCUSED) && place.y >= 52 && place.y + place.height <= 800;
    });
  };
  {
    const AccessibleWindow window({"--page", "Notification Center/isNotificationCenterCustomText"},
                                  storing("NotificationCenter_Defaults", {{"ncSwipeLocationDeterminesPage", true},
                                                                          {"isNotificationCenterCustomText", true}}));
    (void)window.find("entry", "Text:");
    EXPECT_TRUE(isInSight(window, "Use Custom Text"));
  }
  const AccessibleWindow window({"--page", "Status Bar/disablesWifiSTBIcon"},
                                storing("StatusBar_Defaults", {{"usesCustomTimeFormatter", true}}));
  (void)window.find("entry", "Text:");
  EXPECT_TRUE(isInSight(window, "Wifi"));
}

TEST_F(AccessibilityTest, HasEveryRowOfAPageWithinASecondOfItsOpening) {
  const AccessibleWindow window;
  window.find("push button", "Status Bar").act("Press");
  (void)window.find("heading", "Appearance");
  const auto opened = std::chrono::steady_clock::now();
  (void)window.find("check box", "Wifi");
  EXPECT_LT(std::chrono::steady_clock::now() - opened, std::chrono::seconds(1));
}

TEST_F(AccessibilityTest, StoresAndPostsASwitchThatIsToggled) {
  AccessibleWindow window({"--page", "Status Bar"});
  const Accessible battery = window.find("check box", "Battery (+ Bolt)");
  EXPECT_FALSE(battery.has(ATSPI_STATE_CHECKED));
  ASSERT_TRUE(battery.act("Toggle"));
  ASSERT_TRUE(eventually([&] { return window.notifications().size() == 2; }));
  EXPECT_EQ(stored(window), (Dictionary{{"disablesBatterySTBIcon", true}}));
  EXPECT_THAT(window.notifications(),
              ElementsAre(darwin("com.vantorick.quellar2.settings"),
                          BusNotification{BusNotification::Centre::Distributed, "com.vantorick.quellar2.statusbaritems",
                                          "string object", Dictionary{{"barItem", 8}, {"enabled", true}}}));
  EXPECT_TRUE(window.find("check box", "Battery (+ Bolt)").has(ATSPI_STATE_CHECKED));
}

TEST_F(AccessibilityTest, TypesIntoATextThatHasTheFocus) {
  AccessibleWindow window({"--page", "Status Bar"});
  ASSERT_TRUE(window.find("check box", "Use Custom Time Format").act("Toggle"));
  const Accessible entry = window.find("entry", "Text:");
  EXPECT_TRUE(entry.has(ATSPI_STATE_EDITABLE));
  ASSERT_TRUE(entry.grabFocus());
  (void)window.find("push button", "Save");
  window.type("hhmm");
  EXPECT_TRUE(eventually([&] { return window.find("entry", "Text:").text() == "hhmm"; }));
  EXPECT_EQ(stored(window), (Dictionary{{"usesCustomTimeFormatter", true}}));
  ASSERT_TRUE(window.find("push button", "Save").act("Press"));
  EXPECT_TRUE(eventually([&] { return !window.shows("push button", "Save"); }));
  EXPECT_EQ(stored(window), (Dictionary{{"usesCustomTimeFormatter", true}, {"userCustomClockFormatter", "hhmm"}}));
}

TEST_F(AccessibilityTest, OffersARespringAsADialogWithItsButtons) {
  AccessibleWindow window;
  const auto buttons = [&] {
    std::vector<std::string> names;
    for (const Accessible& child : window.find("dialog", "Are You Sure?").children()) {
      if (child.role() == "push button") names.push_back(child.name());
    }
    return names;
  };
  ASSERT_TRUE(window.find("push button", "Respring").act("Press"));
  EXPECT_THAT(buttons(), ElementsAre("Respring", "Not Right Now"));
  ASSERT_TRUE(window.find("push button", "Not Right Now").act("Press"));
  EXPECT_TRUE(eventually([&] { return !window.shows("dialog", "Are You Sure?"); }));
  EXPECT_THAT(window.notifications(), IsEmpty());

  ASSERT_TRUE(window.find("push button", "Respring").act("Press"));
  for (const Accessible& child : window.find("dialog", "Are You Sure?").children()) {
    if (child.name() == "Respring") {
      EXPECT_TRUE(child.act("Press"));
    }
  }
  ASSERT_TRUE(eventually([&] { return !window.notifications().empty(); }));
  EXPECT_THAT(window.notifications(), ElementsAre(darwin("com.vantorick.quellar2.respring")));
}

TEST_F(AccessibilityTest, GoesToAPageAndBackByPresses) {
  AccessibleWindow window;
  ASSERT_TRUE(window.find("push button", "Status Bar").act("Press"));
  (void)window.find("heading", "Status Bar");
  EXPECT_TRUE(eventually([&] { return !window.shows("push button", "Medusa"); }));
  ASSERT_TRUE(window.find("push button", "Custom Carrier Strings").act("Press"));
  (void)window.find("heading", "Default Carrier String");
  ASSERT_TRUE(window.find("push button", "Status Bar").act("Press"));
  (void)window.find("heading", "Appearance");
  ASSERT_TRUE(window.find("push button", "Quellar").act("Press"));
  (void)window.find("heading", "Quellar");
  EXPECT_TRUE(eventually([&] { return window.find("push button", "Status Bar").has(ATSPI_STATE_FOCUSED); }));
}

TEST_F(AccessibilityTest, ScrollsToARowThatGetsTheFocus) {
  AccessibleWindow window({"--page", "Status Bar"});
  const Accessible last = window.find("check box", "Wifi");
  EXPECT_GT(last.extents().y, 1000);
  ASSERT_TRUE(last.grabFocus());
  EXPECT_TRUE(eventually([&] {
    const AtspiRect extents = window.find("check box", "Wifi").extents();
    return extents.y > 0 && extents.y + extents.height <= 844;
  }));
  EXPECT_TRUE(window.find("check box", "Wifi").has(ATSPI_STATE_FOCUSED));
}

TEST_F(AccessibilityTest, ReadsABlockRightAfterItsSwitchWhereBothAreOffTheWindow) {
  AccessibleWindow window({"--page", "Custom Lockscreen Strings"});
  const auto prompt = window.find("heading", "Your passcode is required to enabled Touch ID");
  EXPECT_GT(prompt.extents().y, 844);
  const auto switchAfter = [&](const std::string& heading) {
    const auto objects = window.objects();
    const auto found = std::ranges::find_if(objects, [&](const auto& object) { return object.name() == heading; });
    return *std::next(found);
  };
  ASSERT_TRUE(switchAfter("Your passcode is required to enabled Touch ID").act("Toggle"));
  (void)window.find("entry", "Text:");
  // Rows may still be on their way to their places.
  const std::vector<std::pair<std::string, std::string>> expected = {
      {"heading", "Your passcode is required to enabled Touch ID"},
      {"check box", "Use Custom Text"},
      {"entry", "Text:"},
      {"heading", "Wipe the home button to clean the sensor."},
      {"check box", "Use Custom Text"}};
  const auto isRead = [&] {
    auto listed = window.listed();
    std::erase_if(listed, [](const auto& object) { return object.second.empty(); });
    return !std::ranges::search(listed, expected).empty();
  };
  EXPECT_TRUE(eventually(isRead)) << testing::PrintToString(window.listed());
}

TEST_F(AccessibilityTest, OpensAtARow) {
  AccessibleWindow window({"--page", "status-bar/disablesVPNSTBIcon"});
  EXPECT_TRUE(eventually([&] { return window.find("check box", "VPN").has(ATSPI_STATE_FOCUSED); }));
  EXPECT_LT(window.find("check box", "VPN").extents().y, 800);
}

TEST_F(AccessibilityTest, IsReadFromTheTopWhereItOpensAtItsEnd) {
  AccessibleWindow window({"--page", "status-bar/disablesWifiSTBIcon"});
  ASSERT_TRUE(eventually([&] { return window.find("check box", "Wifi").has(ATSPI_STATE_FOCUSED); }));
  const auto places = [&] {
    std::vector<int> tops;
    for (const Accessible& object : window.objects()) {
      if (object.role() == "check box" || (object.role() == "heading" && object.name() != "Status Bar")) {
        tops.push_back(object.extents().y);
      }
    }
    return tops;
  };
  // Three headings and thirty-one switches.
  EXPECT_TRUE(eventually([&] { return places().size() == 34 && std::ranges::is_sorted(places()); }))
      << testing::PrintToString(window.listed());
}

TEST_F(AccessibilityTest, OpensAtTheSwitchOfARowThatIsNotShown) {
  AccessibleWindow window({"--page", "status-bar/userCustomClockFormatter"});
  EXPECT_TRUE(eventually([&] { return window.find("check box", "Use Custom Time Format").has(ATSPI_STATE_FOCUSED); }));
}

TEST_F(AccessibilityTest, TellsWhatIsWrongWithTheStore) {
  AccessibleWindow window({}, [](const TemporaryFolder& root) {
    root.write("private/var/mobile/Library/Preferences/com.vantorick.quellar2.plist", "this is no property list");
  });
  std::string told;
  EXPECT_TRUE(eventually([&] {
    for (const auto& [role, name] : window.listed()) {
      if (role == "alert") told = name;
    }
    return !told.empty();
  }));
  EXPECT_EQ(told, "The file of your settings is damaged. It is kept aside when you change something.");
}

}  // namespace accessibility_test
}  // namespace quellar::tests

// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "accessible_window.h"
#include "host/linux/file_preferences.h"

// What changes in a page is told, so that a screen reader need not look for it.
namespace quellar::tests {
namespace accessible_events_test {

using platform::Dictionary;
using platform::Value;
using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;

using Listed = std::vector<std::pair<std::string, std::string>>;

constexpr const char* kCame = "object:children-changed:add";
constexpr const char* kWent = "object:children-changed:remove";
constexpr const char* kShowing = "object:state-changed:showing";

class AccessibleEventsTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { AccessibleDesktop::shared(); }

  static auto storing(const std::string& defaultsKey, const Dictionary& values) {
    return [=](const TemporaryFolder& root) {
      host::linux::FilePreferences((host::linux::DeviceRoot(root.path())))
          .setAppValue(defaultsKey, Value(values), "com.vantorick.quellar2");
    };
  }

  static std::vector<AccessibleEvent> ofType(AccessibleEvents& events, const std::string& type) {
    auto all = events.arrived();
    std::erase_if(all, [&](const AccessibleEvent& each) { return each.type != type; });
    return all;
  }

  static std::vector<std::string> names(const std::vector<AccessibleEvent>& events) {
    std::vector<std::string> result;
    for (const auto& each : events) result.push_back(each.role + " " + each.name);
    return result;
  }

  // Whether these are read one after the other.
  static bool reads(const AccessibleWindow& window, const Listed& part) {
    Listed listed = window.listed();
    std::erase_if(listed, [](const auto& object) { return object.second.empty(); });
    return std::ranges::search(listed, part).begin() != listed.end();
  }
};

TEST_F(AccessibleEventsTest, TellOfTheRowsOfABlockInTheOrderInWhichTheyAreRead) {
  AccessibleEvents events({"object:children-changed", kShowing});
  const AccessibleWindow window({"--page", "Status Bar"});
  const Accessible toggle = window.find("check box", "Use Custom Time Format");
  (void)window.find("check box", "Wifi");
  events.forget();

  ASSERT_TRUE(toggle.act("Toggle"));
  ASSERT_TRUE(eventually([&] { return ofType(events, kCame).size() >= 2; })) << testing::PrintToString(events.lines());
  const auto came = ofType(events, kCame);
  EXPECT_THAT(names(came), ElementsAre("heading Custom Time Formatter", "entry Text:"));
  EXPECT_THAT(events.lines(), IsSupersetOf({std::string(kShowing) + " 1 heading Custom Time Formatter",
                                            std::string(kShowing) + " 1 entry Text:"}));
  const Listed block = {{"check box", "Use Custom Time Format"},
                        {"heading", "Custom Time Formatter"},
                        {"entry", "Text:"},
                        {"heading", "Behavior"}};
  EXPECT_TRUE(reads(window, block)) << testing::PrintToString(window.listed());

  events.forget();
  ASSERT_TRUE(toggle.act("Toggle"));
  ASSERT_TRUE(eventually([&] { return ofType(events, kWent).size() >= 2; })) << testing::PrintToString(events.lines());
  const auto went = ofType(events, kWent);
  ASSERT_EQ(went.size(), 2U) << testing::PrintToString(events.lines());
  EXPECT_EQ(went[0].object, came[0].object);
  EXPECT_EQ(went[1].object, came[1].object);
  EXPECT_THAT(ofType(events, kShowing),
              ElementsAre(testing::Field(&AccessibleEvent::detail, 0), testing::Field(&AccessibleEvent::detail, 0)));
  EXPECT_THAT(ofType(events, kCame), testing::IsEmpty());
  const Listed closed = {block.front(), block.back()};
  EXPECT_TRUE(eventually([&] { return reads(window, closed); })) << testing::PrintToString(window.listed());
}

TEST_F(AccessibleEventsTest, TellOfABlockThatIsOffTheWindow) {
  AccessibleEvents events({"object:children-changed"});
  const AccessibleWindow window({"--page", "Custom Lockscreen Strings"});
  (void)window.find("heading", "Wipe the home button to clean the sensor.");
  const auto objects = window.objects();
  const auto heading = std::ranges::find_if(
      objects, [](const auto& each) { return each.name() == "Your passcode is required to enabled Touch ID"; });
  ASSERT_NE(heading, objects.end());
  EXPECT_GT(heading->extents().y, 844);
  events.forget();
  ASSERT_TRUE(std::next(heading)->act("Toggle"));
  EXPECT_TRUE(eventually([&] { return !events.arrived().empty(); }));
  EXPECT_THAT(events.lines(), ElementsAre(testing::MatchesRegex("object:children-changed:add [0-9]+ entry Text:")));
}

TEST_F(AccessibleEventsTest, TellThatANumberIsRefusedAndWhy) {
  AccessibleEvents events({"object:state-changed:focused", kShowing});
  const AccessibleWindow window({"--page", "Icons"}, storing("Icon_Defaults", {{"usesCustomIconSize", true}}));
  (void)window.find("slider", "Icon Scale");
  ASSERT_TRUE(window.find("push button", "1.00").act("Press"));
  (void)window.find("dialog", "Icon Scale");
  EXPECT_TRUE(eventually([&] { return window.find("entry", "Icon Scale").has(ATSPI_STATE_FOCUSED); }));
  EXPECT_THAT(events.lines(), Contains(std::string(kShowing) + " 1 dialog Icon Scale"));
  window.type("1000000");
  ASSERT_TRUE(eventually([&] { return window.find("entry", "Icon Scale").text() == "1000000"; }));
  events.forget();

  ASSERT_TRUE(window.find("push button", "Enter").act("Press"));
  const std::string focused = "object:state-changed:focused 1 push button OK";
  EXPECT_TRUE(eventually([&] {
    const auto lines = events.lines();
    return std::ranges::find(lines, focused) != lines.end();
  }));
  // The dialog is there before the focus moves into it, so that it is read first.
  const auto lines = events.lines();
  const auto shown = std::ranges::find(lines, std::string(kShowing) + " 1 dialog Error");
  EXPECT_LT(shown, std::ranges::find(lines, focused)) << testing::PrintToString(lines);
  EXPECT_EQ(std::ranges::count(lines, *shown), 1);
  // And nowhere else on its way.
  EXPECT_EQ(
      std::ranges::count_if(lines, [](const auto& line) { return line.starts_with("object:state-changed:focused 1"); }),
      1)
      << testing::PrintToString(lines);
  const Accessible dialog = window.find("dialog", "Error");
  EXPECT_EQ(dialog.description(), "Ensure you enter a valid value.");
  EXPECT_THAT(dialog.children(), Contains(window.find("push button", "OK")));
}

TEST_F(AccessibleEventsTest, TellThatAColorCodeIsRefused) {
  AccessibleEvents events({kShowing});
  const AccessibleWindow window({"--page", "Icons"}, storing("Icon_Defaults", {{"userRequestsColoredBadges", true}}));
  ASSERT_TRUE(window.find("push button", "Border Color").act("Press"));
  (void)window.find("dialog", "Color");
  ASSERT_TRUE(window.find("entry", "Color Code").grabFocus());
  window.type("nothing");
  ASSERT_TRUE(eventually([&] { return window.find("entry", "Color Code").text().ends_with("nothing"); }));
  events.forget();
  ASSERT_TRUE(window.find("push button", "Choose").act("Press"));
  EXPECT_TRUE(eventually([&] { return !events.arrived().empty(); }));
  EXPECT_THAT(
      events.lines(),
      ElementsAre(std::string(kShowing) +
                  " 1 alert This is no color. A color has six digits from 0 to 9 and a to f, such as #41a9d6."));
}

TEST_F(AccessibleEventsTest, TellOfASwitchThatAnotherProgramHasSet) {
  constexpr const char* kChecked = "object:state-changed:checked";
  AccessibleEvents events({kChecked});
  const AccessibleWindow window({"--page", "Dock"});
  (void)window.find("check box", "Disable Blur");
  events.forget();
  storing("Dock_Defaults", {{"userDisablesBackgroundBlur", true}})(window.root());
  EXPECT_TRUE(eventually([&] {
    const auto lines = events.lines();
    return std::ranges::find(lines, std::string(kChecked) + " 1 check box Disable Blur") != lines.end();
  })) << testing::PrintToString(events.lines());
}

}  // namespace accessible_events_test
}  // namespace quellar::tests

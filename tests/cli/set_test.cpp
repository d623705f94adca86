// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "private_bus.h"
#include "program.h"

namespace quellar::tests {
namespace set_test {

using testing::MatchesRegex;
using testing::StartsWith;

/// What the store holds under a key of the settings domain, as a session prints it.
std::string stored(const Device& device, const std::string& key) {
  const Ended ended = device.run({"session"}, R"({"do":"stored","key":")" + key + R"("})");
  EXPECT_EQ(ended.code, 0);
  const std::string before = R"({"ok":true,"value":)";
  EXPECT_THAT(ended.output, StartsWith(before));
  return ended.output.substr(before.size(), ended.output.size() - before.size() - std::string("}\n").size());
}

/// A wrong call: one line that begins like this, and a store that is as it was.
void expectRefused(const Device& device, const std::vector<std::string>& arguments, const std::string& beginning) {
  SCOPED_TRACE(testing::PrintToString(arguments));
  const std::string before = contents(device.store());
  std::vector<std::string> call = {"set"};
  call.insert(call.end(), arguments.begin(), arguments.end());
  const Ended ended = device.run(call);
  EXPECT_EQ(ended.code, 2);
  EXPECT_EQ(ended.output, "");
  EXPECT_THAT(ended.errors, StartsWith("quellar: " + beginning));
  EXPECT_THAT(ended.errors, MatchesRegex("[^\n]+\n"));
  EXPECT_EQ(contents(device.store()), before);
}

TEST(SetPicker, TakesAValueOrATitle) {
  const Device device;
  device.writeStore("<key>Dock_Defaults</key><dict><key>usesCustomDockBlur</key><true/></dict>");
  EXPECT_EQ(device.run({"set", "Dock", "dockBackgroundStyle", "12"}), succeeded(""));
  EXPECT_EQ(stored(device, "Dock_Defaults"), R"({"dockBackgroundStyle":12,"usesCustomDockBlur":true})");
  EXPECT_EQ(device.run({"set", "Dock", "dockBackgroundStyle", "Very White Blur"}), succeeded(""));
  EXPECT_EQ(stored(device, "Dock_Defaults"), R"({"dockBackgroundStyle":9,"usesCustomDockBlur":true})");
  EXPECT_EQ(device.run({"get", "Dock", "dockBackgroundStyle"}), succeeded("9\n"));
}

TEST(SetPicker, RefusesWhatIsNoChoiceAndListsThem) {
  const Device device;
  device.writeStore("<key>Dock_Defaults</key><dict><key>usesCustomDockBlur</key><true/></dict>");
  const std::string kTakes =
      "\" is no value for dockBackgroundStyle; it takes 0 (Transparent), 9 (Very White Blur), 16 (Less White Blur), "
      "12 (Normal), ";
  for (const std::string& value : {std::string("99"), std::string("very white blur"), std::string()}) {
    expectRefused(device, {"Dock", "dockBackgroundStyle", value}, "\"" + value + kTakes);
  }
}

TEST(SetSegment, TakesAValueOrATitleAndRefusesTheRest) {
  const Device device;
  device.writeStore("<key>ControlCenter_Defaults</key><dict><key>userRequestsLumenfold</key><true/></dict>");
  EXPECT_EQ(device.run({"set", "Control Center", "userStyleForLumenfold", "1"}), succeeded(""));
  EXPECT_EQ(stored(device, "ControlCenter_Defaults"), R"({"userRequestsLumenfold":true,"userStyleForLumenfold":1})");
  EXPECT_EQ(device.run({"set", "Control Center", "userStyleForLumenfold", "Light"}), succeeded(""));
  EXPECT_EQ(stored(device, "ControlCenter_Defaults"), R"({"userRequestsLumenfold":true,"userStyleForLumenfold":2})");
  for (const std::string& value : {std::string("4"), std::string("1.5"), std::string("on"), std::string()}) {
    expectRefused(
        device, {"Control Center", "userStyleForLumenfold", value},
        "\"" + value + "\" is no value for userStyleForLumenfold; it takes 1 (Extra Light), 2 (Light), 3 (Dark)\n");
  }
}

TEST(SetSlider, StoresARealWithinItsBounds) {
  const Device device;
  device.writeStore("<key>ControlCenter_Defaults</key><dict><key>useCustomDarkeningAlpha</key><true/></dict>");
  for (const auto& [value, real] : {std::pair("0.25", "0.25"), {"1", "1.0"}, {"0", "0.0"}}) {
    EXPECT_EQ(device.run({"set", "Control Center", "controlCenterDarkeningAlpha", value}), succeeded(""));
    EXPECT_EQ(stored(device, "ControlCenter_Defaults"),
              std::string(R"({"controlCenterDarkeningAlpha":)") + real + R"(,"useCustomDarkeningAlpha":true})");
  }
  for (const std::string& value :
       {std::string("1.01"), std::string("-0.1"), std::string("nan"), std::string("0,5"), std::string("half")}) {
    expectRefused(device, {"Control Center", "controlCenterDarkeningAlpha", value},
                  "\"" + value + "\" is no value for controlCenterDarkeningAlpha; it takes a number from 0.0 to 1.0\n");
  }
}

TEST(SetStepper, StoresANumberThatItsStepsReach) {
  const Device device;
  device.writeStore("<key>Dock_Defaults</key><dict><key>customMaxDockIcons</key><true/></dict>");
  EXPECT_EQ(device.run({"set", "Dock", "dockMaxIcons", "9"}), succeeded(""));
  EXPECT_EQ(stored(device, "Dock_Defaults"), R"({"customMaxDockIcons":true,"dockMaxIcons":9.0})");
  for (const std::string& value : {std::string("0"), std::string("11"), std::string("2.5"), std::string("two"),
                                   std::string("4.9e-324"), std::string("2.0000000001")}) {
    expectRefused(
        device, {"Dock", "dockMaxIcons", value},
        "\"" + value + "\" is no value for dockMaxIcons; it takes a number from 1.0 to 10.0 in steps of 1.0\n");
  }
}

TEST(SetStepper, IsWrittenAndPostedOnceWhateverTheDistance) {
  const PrivateBus bus;
  Device device;
  device.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address();
  device.writeStore("<key>Dock_Defaults</key><dict><key>customMaxDockIcons</key><true/></dict>");
  const auto watching = device.start({"watch", "--json"});
  EXPECT_EQ(watching->readLine(), R"({"event":"watching"})");
  EXPECT_EQ(device.run({"set", "Dock", "dockMaxIcons", "10"}), succeeded(""));
  EXPECT_EQ(device.run({"set", "Phone", "userDisablesContactsTab", "on"}), succeeded(""));
  EXPECT_EQ(watching->readLine(),
            R"({"centre":"darwin","name":"com.vantorick.quellar2.settings","object":null,"userInfo":null})");
  EXPECT_EQ(watching->readLine(),
            R"({"centre":"darwin","name":"com.vantorick.quellar2.settings.phone","object":null,"userInfo":null})");
}

TEST(SetColor, StoresTheColorAndRefusesWhatIsNone) {
  const Device device;
  device.writeStore("<key>SystemWide_Defaults</key><dict><key>userColorsScreenshotFlash</key><true/></dict>");
  EXPECT_EQ(device.run({"set", "System Wide", "userCustomScreenshotFlashColor", "#12ab9F"}), succeeded(""));
  EXPECT_EQ(stored(device, "SystemWide_Defaults"),
            R"({"userColorsScreenshotFlash":true,"userCustomScreenshotFlashColor":"#12ab9f"})");
  EXPECT_EQ(device.run({"get", "System Wide", "userCustomScreenshotFlashColor"}), succeeded("\"#12ab9f\"\n"));
  for (const std::string& value :
       {std::string("red"), std::string("#12345"), std::string("#12345g"), std::string("#123456:0.5"), std::string()}) {
    expectRefused(device, {"System Wide", "userCustomScreenshotFlashColor", value},
                  "\"" + value + "\" is no value for userCustomScreenshotFlashColor; it takes #rrggbb\n");
  }
}

TEST(SetHidden, NamesTheSwitchThatShowsTheRowAndWritesNothing) {
  const Device device;
  const auto isHidden = [](const std::string& key, const std::string& way) {
    return "the row of " + key + " is hidden now; " + way + " to show it\n";
  };
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{"Dock", "dockBackgroundStyle", "12"},
       isHidden("dockBackgroundStyle", "turn on \"Use Custom Blur\" (usesCustomDockBlur)")},
      {{"Dock", "dockMaxIcons", "5"}, isHidden("dockMaxIcons", "turn on \"Use Custom Count\" (customMaxDockIcons)")},
      {{"Control Center", "userStyleForLumenfold", "1"},
       isHidden("userStyleForLumenfold", "turn on \"Replace With Blur\" (userRequestsLumenfold)")},
      {{"Control Center", "controlCenterDarkeningAlpha", "0.5"},
       isHidden("controlCenterDarkeningAlpha", "turn on \"Use Custom Opacity\" (useCustomDarkeningAlpha)")},
      {{"System Wide", "userCustomScreenshotFlashColor", "#123456"},
       isHidden("userCustomScreenshotFlashColor", "turn on \"Use Custom Color\" (userColorsScreenshotFlash)")},
  };
  for (const auto& [arguments, line] : cases) expectRefused(device, arguments, line);
  EXPECT_FALSE(std::filesystem::exists(device.root()));
}

}  // namespace set_test
}  // namespace quellar::tests

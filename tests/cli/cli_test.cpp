// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <system_error>
#include <thread>

#include "host/headless/json.h"
#include "private_bus.h"
#include "program.h"

namespace quellar::tests {
namespace cli_test {

using host::headless::dump;
using host::headless::Json;
using testing::HasSubstr;
using testing::StartsWith;

constexpr auto kBattery = "disablesBatterySTBIcon";

/// The element of a JSON array whose field has a value.
Json elementWith(const std::string& array, const std::string& field, const std::string& value) {
  for (const Json& each : Json::parse(array)) {
    if (each[field] == value) return each;
  }
  return nullptr;
}

// ---- The call

TEST(CommandLine, PrintsItsVersionAndItsHelp) {
  const Device device;
  EXPECT_EQ(device.run({"--version"}), succeeded("quellar " QUELLAR_VERSION "\n"));
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"--help"}, {"-h"}, {"set", "--help"}, {"watch", "-h"}}) {
    const Ended help = device.run(arguments);
    EXPECT_EQ(help.code, 0);
    EXPECT_EQ(help.errors, "");
    EXPECT_THAT(help.output, testing::HasSubstr(arguments.front() == "set" ? "quellar set PAGE KEY VALUE" : "quellar"));
  }
}

TEST(CommandLine, RefusesAWrongCallInOneLineAndWritesNothing) {
  const Device device;
  const std::string kAll = "quellar [--device-root DIR] pages|rows|get|set|watch|schema|session";
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{}, "no command; usage: " + kAll},
      {{"row"}, "no command \"row\"; usage: " + kAll},
      {{"--json", "pages"}, "The following argument was not expected: --json; usage: quellar pages [--json]"},
      {{"pages", "--device-root"}, "--device-root: 1 required DIR missing; usage: quellar pages [--json]"},
      {{"rows"}, "PAGE is required; usage: quellar rows PAGE [--json]"},
      {{"get", "Status Bar"}, "KEY is required; usage: quellar get PAGE KEY"},
      {{"get", "Status Bar", "a", "b"}, "The following argument was not expected: b; usage: quellar get PAGE KEY"},
      {{"set", "Status Bar", kBattery}, "VALUE is required; usage: quellar set PAGE KEY VALUE"},
      {{"set", "Status Bar", kBattery, "on", "off"},
       "The following argument was not expected: off; usage: quellar set PAGE KEY VALUE"},
      {{"watch", "--exec"},
       "--exec: 1 required NAME=COMMAND missing; usage: quellar watch [--json] [--exec NAME=COMMAND]..."},
      {{"watch", "--exec", "name"},
       "--exec takes NAME=COMMAND, not \"name\"; usage: quellar watch [--json] [--exec NAME=COMMAND]..."},
      {{"schema", "--json", "--markdown"}, "--json excludes --markdown; usage: quellar schema [--json | --markdown]"},
  };
  for (const auto& [arguments, line] : cases) {
    EXPECT_EQ(device.run(arguments), refused(line)) << testing::PrintToString(arguments);
  }
  EXPECT_FALSE(std::filesystem::exists(device.root()));
}

TEST(CommandLine, RefusesAWrongOptionOfTheSession) {
  const Device device;
  const std::string kUsage =
      "; usage: quellar session [--idiom phone|pad|none] [--lang LANG] [--scale N] [--width POINTS] [--bus]";
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{"--idiom", "tablet"}, "--idiom: tablet not in {phone,pad,none}"},
      {{"--scale", "0"}, "--scale: \"0\" is no number above 0 and up to 100000"},
      {{"--scale", "nan"}, "--scale: \"nan\" is no number above 0 and up to 100000"},
      {{"--width", "wide"}, "--width: \"wide\" is no number above 0 and up to 100000"},
      {{"--width", "-1"}, "--width: \"-1\" is no number above 0 and up to 100000"},
      {{"file"}, "The following argument was not expected: file"},
  };
  for (auto [arguments, line] : cases) {
    arguments.insert(arguments.begin(), "session");
    EXPECT_EQ(device.run(arguments), refused(line + kUsage)) << line;
  }
}

TEST(CommandLine, NamesThePagesKeysAndValuesThatWouldBeRight) {
  const Device device;
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"rows", "Statusbar"}, {"get", "Statusbar", "a"}, {"set", "Statusbar", "a", "on"}}) {
    const Ended ended = device.run(arguments);
    EXPECT_EQ(ended.code, 2);
    EXPECT_EQ(ended.output, "");
    EXPECT_THAT(ended.errors, testing::MatchesRegex("quellar: no page \"Statusbar\"; the pages are \"Quellar\", "
                                                    ".*\"Status Bar\".*\n"));
  }
  const std::string kKeys =
      "usesCustomCarrierText, userCustomCarrierText, userRequestsCustomNoServiceString, userCustomNoServiceText, "
      "userRequestsCustomSearchingString, userCustomSearchingText, userRequestsCustomWifiCallingString, "
      "userCustomWifiCarrierText";
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"get", "Custom Carrier Strings", "a\nb"},
                                                    {"set", "Custom Carrier Strings", "a\nb", "on"}}) {
    EXPECT_EQ(device.run(arguments),
              refused("no key \"a\\u000ab\" on the page \"Custom Carrier Strings\"; its keys are " + kKeys));
  }
  EXPECT_EQ(device.run({"set", "Status Bar", kBattery, "1"}),
            refused("\"1\" is no value for disablesBatterySTBIcon; it takes on or off"));
  EXPECT_EQ(device.run({"set", "Status Bar", kBattery, ""}),
            refused("\"\" is no value for disablesBatterySTBIcon; it takes on or off"));
  EXPECT_FALSE(std::filesystem::exists(device.root())) << "nothing is written";
}

TEST(CommandLine, FindsTheDeviceRoot) {
  Device device;
  const std::string other = (device.folder().path() / "other").string();
  const std::string file = "/var/mobile/Library/Preferences/com.vantorick.quellar2.plist";
  EXPECT_EQ(device.run({"--device-root", other, "set", "Status Bar", kBattery, "on"}), succeeded(""));
  EXPECT_EQ(device.run({"get", "Status Bar", kBattery, "--device-root", other}), succeeded("true\n"));
  EXPECT_EQ(device.run({"get", "Status Bar", kBattery, "--device-root=" + other}), succeeded("true\n"));
  EXPECT_EQ(device.run({"set", "Status Bar", kBattery, "--device-root", other, "off"}), succeeded(""));
  EXPECT_EQ(device.run({"set", "Status Bar", kBattery, "off", "--device-root", other}), succeeded(""));
  EXPECT_EQ(device.run({"get", "Status Bar", kBattery, "--device-root", other}), succeeded("false\n"));
  EXPECT_FALSE(std::filesystem::exists(device.root())) << "the option goes before the environment";
  EXPECT_EQ(device.run({"set", "Status Bar", kBattery, "on"}), succeeded(""));
  EXPECT_TRUE(std::filesystem::exists(device.store()));

  device.environment.erase("QUELLAR_DEVICE_ROOT");
  EXPECT_EQ(device.run({"set", "Status Bar", kBattery, "on"}), succeeded(""));
  EXPECT_TRUE(std::filesystem::exists(device.folder().path().string() + "/.local/share/quellar/device" + file));
  device.environment["XDG_DATA_HOME"] = device.folder().path() / "data";
  EXPECT_EQ(device.run({"set", "Status Bar", kBattery, "on"}), succeeded(""));
  EXPECT_TRUE(std::filesystem::exists(device.folder().path().string() + "/data/quellar/device" + file));
}

TEST(CommandLine, PrintsNoCharacterThatATerminalActsOn) {
  const Device device;
  // A clear screen in its long and its short form, the other direction, and a line of its own.
  const std::string hostile =
      "a\x1b[2J\xc2\x9b"
      "2J\xe2\x80\xae\x7f\nb";
  const std::string escaped = R"(a\u001b[2J\u009b2J\u202e\u007f)";
  EXPECT_THAT(device.run({"rows", hostile}).errors, StartsWith("quellar: no page \"" + escaped + "\\u000ab\"; "));
  EXPECT_THAT(device.run({"rows", "\xff\x9b"}).errors, StartsWith("quellar: no page \"\\xff\\x9b\"; "));
  EXPECT_EQ(device.run({"set", "Status Bar", "usesCustomTimeFormatter", "on"}), succeeded(""));
  EXPECT_EQ(device.run({"set", "Status Bar", "userCustomClockFormatter", hostile}), succeeded(""));
  EXPECT_EQ(device.run({"get", "Status Bar", "userCustomClockFormatter"}), succeeded("\"" + escaped + "\\nb\"\n"));
  EXPECT_THAT(device.run({"rows", "Status Bar"}).output, HasSubstr("  " + escaped + "\\u000ab  "));
  // Titles may be the device's own.
  device.folder().write("device/Library/PreferenceBundles/Quellar.bundle/en.lproj/Localizable.strings",
                        "\"Appearance\" = \"" + hostile + "\"; \"Lowercase AM/PM\" = \"" + hostile + "\";");
  const std::string rows = device.run({"rows", "Status Bar"}).output;
  EXPECT_THAT(rows, HasSubstr("\n" + escaped + "\\u000ab\n  " + escaped + "\\u000ab  "));
}

TEST(CommandLine, FailsWhereItsOutputCanNotBeWritten) {
  const Device device;
  Running program({"get", "Status Bar", kBattery}, device.environment, "/dev/full");
  EXPECT_EQ(program.wait(), (Ended{1, "", "quellar: standard output: No space left on device\n"}));
}

// ---- pages, rows, get

TEST(Pages, ListsEveryPage) {
  const Device device;
  device.writeStore("<key>StatusBar_Defaults</key><dict><key>usesCustomTimeFormatter</key><true/></dict>");
  const Ended json = device.run({"pages", "--json"});
  EXPECT_EQ(json.code, 0);
  EXPECT_EQ(json.errors, "");
  EXPECT_EQ(dump(elementWith(json.output, "class", "QuellarListController")),
            R"({"class":"QuellarListController","title":"Quellar","defaultsKey":null,"rowCount":29})");
  EXPECT_EQ(dump(elementWith(json.output, "class", "KVQuellarStatusBarListController")),
            R"({"class":"KVQuellarStatusBarListController","title":"Status Bar","defaultsKey":"StatusBar_Defaults",)"
            R"("rowCount":38})");
  const Ended text = device.run({"pages"});
  EXPECT_EQ(text.code, 0);
  EXPECT_THAT(text.output, testing::ContainsRegex("Status Bar +KVQuellarStatusBarListController +StatusBar_Defaults "
                                                  "+38\n"));
}

TEST(Rows, ShowsThePageAsTheUserSeesIt) {
  const Device device;
  device.writeStore(
      "<key>StatusBar_Defaults</key><dict><key>usesCustomCarrierText</key><true/>"
      "<key>userCustomCarrierText</key><string>K\xc3\xa4se</string></dict>");
  EXPECT_EQ(device.run({"rows", "custom-carrier-strings"}),
            succeeded("Custom Carrier Strings\n"
                      "\n"
                      "Default Carrier String\n"
                      "  Use Custom String  on    usesCustomCarrierText\n"
                      "  Text:              K\xc3\xa4se  userCustomCarrierText\n"
                      "\n"
                      "No Service Carrier String\n"
                      "  Use Custom String  off   userRequestsCustomNoServiceString\n"
                      "\n"
                      "Searching... Carrier String\n"
                      "  Use Custom String  off   userRequestsCustomSearchingString\n"
                      "\n"
                      "WiFi Calling Carrier String\n"
                      "  Use Custom String  off   userRequestsCustomWifiCallingString\n"));
}

TEST(Rows, PrintsTheRowObjectsOfTheSession) {
  const Device device;
  device.writeStore("<key>StatusBar_Defaults</key><dict><key>disablesVPNSTBIcon</key><true/></dict>");
  const Ended rows = device.run({"rows", "Status Bar", "--json"});
  EXPECT_EQ(rows.code, 0);
  EXPECT_EQ(rows.errors, "");
  const Ended session = device.run({"session"}, R"({"do":"open","page":"Status Bar"})"
                                                "\n"
                                                R"({"do":"rows"})"
                                                "\n");
  const auto lastLine = session.output.substr(session.output.rfind('\n', session.output.size() - 2) + 1);
  EXPECT_EQ(Json::parse(rows.output), Json::parse(lastLine)["rows"]);
  EXPECT_EQ(Json::parse(rows.output).size(), 36U);
}

TEST(Get, PrintsTheValueThatTheRowShowsAsJson) {
  const Device device;
  device.writeStore(
      "<key>QLREnableKey</key><true/>"
      "<key>StatusBar_Defaults</key><dict><key>disablesVPNSTBIcon</key><true/>"
      "<key>disablesTTYSTBIcon</key><string>yes</string>"
      "<key>disablesWifiSTBIcon</key><integer>2</integer>"
      "<key>userCustomClockFormatter</key><string>h \"m\"</string></dict>");
  EXPECT_EQ(device.run({"get", "Quellar", "QLREnableKey"}), succeeded("true\n"));
  EXPECT_EQ(device.run({"get", "STATUS-BAR", "disablesVPNSTBIcon"}), succeeded("true\n"));
  EXPECT_EQ(device.run({"get", "Status Bar", kBattery}), succeeded("0\n")) << "its default";
  EXPECT_EQ(device.run({"get", "Status Bar", "disablesTTYSTBIcon"}), succeeded("0\n")) << "a text is no switch's value";
  EXPECT_EQ(device.run({"get", "Status Bar", "disablesWifiSTBIcon"}), succeeded("2\n")) << "a number is";
  EXPECT_EQ(device.run({"get", "Status Bar", "userCustomClockFormatter"}), succeeded("\"h \\\"m\\\"\"\n"))
      << "also of a row that is hidden";
  EXPECT_EQ(device.run({"get", "Custom Carrier Strings", "userCustomCarrierText"}), succeeded("null\n"));
}

TEST(Get, PrintsWhatIsStoredUnderAKeyThatNoRowHas) {
  const Device device;
  EXPECT_EQ(device.run({"get", "Music Changes", "userTweetableUsername"}), succeeded("null\n"));
  device.writeStore(
      "<key>Music_Defaults</key><dict><key>userTweetableUsername</key><string>zoe</string></dict>"
      "<key>NotificationCenter_Defaults</key><dict><key>ncPrefferedBackdropStyle</key><integer>2060</integer></dict>");
  EXPECT_EQ(device.run({"get", "Music Changes", "userTweetableUsername"}), succeeded("\"zoe\"\n"));
  EXPECT_EQ(device.run({"get", "Notification Center", "ncPrefferedBackdropStyle"}), succeeded("2060\n"));
  EXPECT_EQ(device.run({"set", "Music Changes", "userTweetableUsername", "adam"}),
            refused("no row has the key userTweetableUsername; what it holds is picked in the window or in a session"));
  device.writeStore(
      "<key>Music_Defaults</key><dict><key>userTweetableUsername</key><true/></dict>"
      "<key>NotificationCenter_Defaults</key><dict><key>ncPrefferedBackdropStyle</key><integer>1</integer></dict>");
  EXPECT_EQ(device.run({"get", "Music Changes", "userTweetableUsername"}), succeeded("null\n"));
  EXPECT_EQ(device.run({"get", "Notification Center", "ncPrefferedBackdropStyle"}), succeeded("null\n"));
}

// ---- set

TEST(Set, StoresWhatTheSwitchInTheWindowStores) {
  const Device device;
  EXPECT_EQ(device.run({"set", "Status Bar", kBattery, "on"}), succeeded(""));
  EXPECT_EQ(contents(device.store()).substr(0, 8), "bplist00");
  struct stat status{};
  ASSERT_EQ(::stat(device.store().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
  EXPECT_EQ(device.run({"set", "Status Bar", "disablesVPNSTBIcon", "off"}), succeeded(""));
  EXPECT_EQ(device.run({"set", "Quellar", "QLREnableKey", "true"}), succeeded(""));
  EXPECT_EQ(device.run({"session"}, R"({"do":"stored","key":"StatusBar_Defaults"})"
                                    "\n"
                                    R"({"do":"stored","key":"QLREnableKey"})"),
            succeeded(R"({"ok":true,"value":{"disablesBatterySTBIcon":true,"disablesVPNSTBIcon":false}})"
                      "\n"
                      R"({"ok":true,"value":true})"
                      "\n"));
}

TEST(Set, TakesATextAsItStands) {
  const Device device;
  device.writeStore("<key>StatusBar_Defaults</key><dict><key>usesCustomTimeFormatter</key><true/></dict>");
  for (const std::string& text : {std::string("HH:mm"), std::string(), std::string("-h"), std::string("--json"),
                                  std::string("--"), std::string("[a,b]"), std::string("a\nb")}) {
    EXPECT_EQ(device.run({"set", "Status Bar", "userCustomClockFormatter", text}), succeeded(""));
    EXPECT_EQ(device.run({"get", "Status Bar", "userCustomClockFormatter"}), succeeded(dump(Json(text)) + "\n"));
  }
  EXPECT_EQ(device.run({"set", "Status Bar", "userCustomClockFormatter", "--", "-5"}), succeeded(""));
  EXPECT_EQ(device.run({"get", "Status Bar", "userCustomClockFormatter"}), succeeded("\"-5\"\n"));
  EXPECT_EQ(device.run({"set", "Status Bar", "userCustomClockFormatter", "a\xff"}),
            refused("the value for userCustomClockFormatter is no UTF-8 text"));
  EXPECT_EQ(device.run({"get", "Status Bar", "userCustomClockFormatter"}), succeeded("\"-5\"\n"));
}

TEST(Set, RefusesAHiddenRowAndNamesTheSwitchThatShowsIt) {
  const Device device;
  EXPECT_EQ(device.run({"set", "Status Bar", "userCustomClockFormatter", "HH"}),
            refused("the row of userCustomClockFormatter is hidden now; turn on \"Use Custom Time Format\" "
                    "(usesCustomTimeFormatter) to show it"));
  EXPECT_EQ(
      device.run({"set", "icons", "iconBadgeColor", "#123456"}),
      refused("the row of iconBadgeColor is hidden now; turn on \"Use Custom Color\" (userRequestsColoredBadges), "
              "then set \"Color Badges via\" (userStyleForIconBadgeColoring) to 1 to show it"));
  EXPECT_FALSE(std::filesystem::exists(device.root()));
  EXPECT_EQ(device.run({"set", "Status Bar", "usesCustomTimeFormatter", "on"}), succeeded(""));
  EXPECT_EQ(device.run({"set", "Status Bar", "userCustomClockFormatter", "HH"}), succeeded(""));
}

TEST(Set, SaysSoWhereNothingOnThePageShowsTheRow) {
  const Device device;
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{"set", "status-bar", "userCustomCarrierText", "x"},
       "nothing on the page \"Status Bar\" shows the row of userCustomCarrierText; it is on the page \"Custom Carrier "
       "Strings\""},
      {{"set", "lockscreen", "userCustomActionLabelColor", "#123456"},
       "nothing on the page \"LockScreen\" shows the row of userCustomActionLabelColor"},
      {{"set", "custom-carrier-strings", "userCustomSearchingText", "x"},
       "the row of userCustomSearchingText shows only when \"Use Custom String\" (userRequestsCustomSearchingString) "
       "is "
       "turned on while the page is open; set it in the window or in a session"}};
  for (const auto& [arguments, line] : cases) EXPECT_EQ(device.run(arguments), refused(line));
  EXPECT_FALSE(std::filesystem::exists(device.root()));
  device.writeStore("<key>StatusBar_Defaults</key><dict><key>userRequestsCustomSearchingString</key><true/></dict>");
  EXPECT_EQ(device.run(cases.back().first), refused(cases.back().second)) << "the page opens with the other text";
}

TEST(EmptyKey, IsReadSetAndListedAsAnyOther) {
  const Device device;
  EXPECT_EQ(device.run({"get", "icons", ""}), succeeded("\"#0362ff\"\n")) << "its default";
  EXPECT_EQ(
      device.run({"set", "icons", "", "#123456"}),
      refused("the row of \"\" is hidden now; turn on \"Use Custom Colors\" (useCustomLabelIndicatorColors) to show "
              "it"));
  EXPECT_FALSE(std::filesystem::exists(device.root()));
  EXPECT_EQ(device.run({"set", "icons", "useCustomLabelIndicatorColors", "on"}), succeeded(""));
  EXPECT_EQ(device.run({"set", "icons", "", "#123456"}), succeeded(""));
  EXPECT_EQ(device.run({"set", "icons", "", "blue"}),
            refused("\"blue\" is no value for \"\"; it takes #rrggbb or #rrggbb:alpha"));
  EXPECT_EQ(device.run({"session"}, R"({"do":"stored","key":"Icon_Defaults"})"),
            succeeded(R"({"ok":true,"value":{"":"#123456","useCustomLabelIndicatorColors":true}})"
                      "\n"));
  EXPECT_EQ(device.run({"get", "icons", ""}), succeeded("\"#123456\"\n"));
  EXPECT_THAT(device.run({"rows", "icons"}).output,
              testing::ContainsRegex("\n  Recently Updated Dot +#123456 +\"\"\n"));
  EXPECT_EQ(dump(elementWith(device.run({"schema", "--json"}).output, "key", "")),
            R"({"page":"KVQuellarIconsListController","defaultsKey":"Icon_Defaults","key":"","type":"color",)"
            R"("default":"#0362ff","minimum":null,"maximum":null,"values":null,"titles":null,)"
            R"("label":"Recently Updated Dot","posts":["com.vantorick.quellar2.settings",)"
            R"("com.vantorick.quellar2.badgeupdate"]})");
}

// ---- A store in trouble

TEST(StoreInTrouble, ReadsAsEmptyWhereItIsCorruptAndSaysSo) {
  const Device device;
  device.folder().write("device/var/mobile/Library/Preferences/com.vantorick.quellar2.plist", "no list at all");
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"get", "Status Bar", kBattery}, {"rows", "Status Bar"}, {"pages"}}) {
    const Ended ended = device.run(arguments);
    EXPECT_EQ(ended.code, 1);
    EXPECT_THAT(ended.errors, testing::StartsWith("quellar: " + device.store().string() + ": "));
    EXPECT_EQ(std::ranges::count(ended.errors, '\n'), 1);
  }
  EXPECT_EQ(device.run({"get", "Status Bar", kBattery}).output, "0\n");
  EXPECT_EQ(contents(device.store()), "no list at all") << "reading leaves the file alone";

  EXPECT_EQ(device.run({"set", "Status Bar", kBattery, "on"}), succeeded("")) << "the first write sets it aside";
  EXPECT_EQ(contents(device.store().string() + ".corrupt-1"), "no list at all");
  EXPECT_EQ(device.run({"get", "Status Bar", kBattery}), succeeded("true\n"));
}

TEST(StoreInTrouble, FailsWhereItCanNotBeWritten) {
  const Device device;
  // A folder in the way stops the superuser too.
  std::filesystem::create_directories(device.store());
  const Ended ended = device.run({"set", "Status Bar", kBattery, "on"});
  EXPECT_EQ(ended.code, 1);
  EXPECT_EQ(ended.output, "");
  EXPECT_THAT(ended.errors, testing::StartsWith("quellar: " + device.store().string() + ": "));
  EXPECT_EQ(std::ranges::count(ended.errors, '\n'), 1);
  EXPECT_TRUE(std::filesystem::is_directory(device.store()));

  const Ended session = device.run({"session"}, R"({"do":"open","page":"Status Bar"})"
                                                "\n"
                                                R"({"do":"set","row":"usesLowercaseAMPM","value":true})"
                                                "\n"
                                                R"({"do":"rows"})"
                                                "\n");
  EXPECT_EQ(session.code, 0);
  EXPECT_EQ(session.errors, "");
  std::istringstream lines(session.output);
  std::vector<std::string> all;
  for (std::string line; std::getline(lines, line);) all.push_back(line);
  ASSERT_EQ(all.size(), 6U);
  EXPECT_THAT(all[2], testing::StartsWith(R"({"event":"write")"));
  EXPECT_THAT(all[3], testing::StartsWith(R"({"event":"post")"));
  EXPECT_THAT(all[4], testing::StartsWith(R"({"ok":true,"warning":")" + device.store().string() + ": "));
  EXPECT_EQ(Json::parse(all[5])["rows"][2]["stored"], true) << "the value stays for this process";
}

// ---- session

TEST(SessionProgram, GivesTheDocumentedExampleAndStoresIt) {
  const Device device;
  EXPECT_EQ(
      device.run({"session"}, R"({"do":"open","page":"Status Bar"})"
                              "\n"
                              R"({"do":"set","row":"disablesBatterySTBIcon","value":true})"
                              "\n"),
      succeeded(
          R"({"event":"push","page":"KVQuellarStatusBarListController","t":0.0})"
          "\n"
          R"({"ok":true,"page":"KVQuellarStatusBarListController","title":"Status Bar"})"
          "\n"
          R"({"event":"write","domain":"com.vantorick.quellar2","key":"StatusBar_Defaults","value":{"disablesBatterySTBIcon":true},"t":0.0})"
          "\n"
          R"({"event":"post","centre":"darwin","name":"com.vantorick.quellar2.settings","object":null,"userInfo":null,"immediately":true,"through":"centre","t":0.0})"
          "\n"
          R"({"event":"post","centre":"distributed","name":"com.vantorick.quellar2.statusbaritems","object":"string object","userInfo":{"barItem":8,"enabled":true},"immediately":true,"through":"centre","t":0.0})"
          "\n"
          R"({"ok":true})"
          "\n"));
  EXPECT_EQ(device.run({"get", "Status Bar", kBattery}), succeeded("true\n"));
}

TEST(SessionProgram, AnswersEachLineAsItComes) {
  const Device device;
  const auto session = device.start({"session"});
  session->write("\n");
  EXPECT_EQ(session->readLine(), R"({"error":"the line is not JSON"})");
  session->write("{\"do\":\"adv");
  session->write("ance\",\"seconds\":0.25}\r\n");
  EXPECT_EQ(session->readLine(), R"({"ok":true,"time":0.25})");
  session->write(R"({"do":"back"})");
  EXPECT_EQ(session->wait(), succeeded("{\"error\":\"no page is open\"}\n")) << "the last line needs no line end";
}

/// The most memory that a program has held so far, in KiB.
long mostMemory(pid_t process) {
  const std::string status = contents("/proc/" + std::to_string(process) + "/status");
  return std::stol(status.substr(status.find("VmHWM:") + 6));
}

TEST(SessionProgram, AnswersALineThatIsTooLongOnceAndHoldsLittleOfIt) {
  const Device device;
  const auto session = device.start({"session"});
  session->write("{\"do\":\"screen\"\n");
  EXPECT_EQ(session->readLine(), R"({"error":"the line is not JSON"})");
  const long before = mostMemory(session->process());
  const std::string part(1 << 20, ' ');
  for (int count = 0; count < 100; ++count) session->write(part);
  session->write("\n{\"do\":\"advance\",\"seconds\":1}\n");
  EXPECT_EQ(session->readLine(), R"({"error":"the line is longer than 1 MiB"})");
  EXPECT_EQ(session->readLine(), R"({"ok":true,"time":1.0})");
  EXPECT_LT(mostMemory(session->process()) - before, 16 * 1024);
  session->write(part + " ");
  EXPECT_EQ(session->wait(), succeeded("{\"error\":\"the line is longer than 1 MiB\"}\n"));
}

TEST(SessionProgram, OutlivesALineThatIsNestedWithoutBound) {
  const Device device;
  std::string line = R"({"do":"set","row":"x","value":)";
  for (int depth = 0; depth < 90'000; ++depth) line += R"({"a":0,"b":)";
  EXPECT_EQ(device.run({"session"}, line.substr(0, 1'000'000) + "\n"),
            succeeded("{\"error\":\"the line is nested deeper than 128\"}\n"));
  line = R"({"do":"set","row":"x","value":)" + std::string(90'000, '[') + std::string(90'000, ']') + "}\n";
  EXPECT_EQ(device.run({"session"}, line), succeeded("{\"error\":\"the line is nested deeper than 128\"}\n"));
}

// ---- How a program starts

/// Where a descriptor of a program leads once it is what is expected, or after a while.
std::string descriptorOnce(const Running& program, int number, const std::string& expected) {
  const std::string link = "/proc/" + std::to_string(program.process()) + "/fd/" + std::to_string(number);
  std::error_code error;
  std::string leads;
  for (int tries = 0; tries < 1000 && leads != expected; ++tries) {
    leads = std::filesystem::read_symlink(link, error).string();
    if (leads != expected) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return leads;
}

TEST(Start, OpensTheStandardDescriptorsThatAreClosedSoThatNoFileOfOursGetsThem) {
  const Device device;
  // It waits for its first line with the store open.
  const auto session = device.startShell("exec \"$0\" session >&- 2>&-");
  for (const int descriptor : {1, 2}) EXPECT_EQ(descriptorOnce(*session, descriptor, "/dev/null"), "/dev/null");
  session->closeInput();
  EXPECT_EQ(session->wait().code, 0);
  const PrivateBus bus;
  Device other;
  other.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address();
  const auto watching = other.startShell("exec \"$0\" watch <&-");
  EXPECT_EQ(descriptorOnce(*watching, 0, "/dev/null"), "/dev/null");
}

TEST(Start, TellsByItsExitThatItsOutputIsClosed) {
  const Device device;
  EXPECT_EQ(device.shell("\"$0\" get 'Status Bar' " + std::string(kBattery) + " >&-"),
            (Ended{1, "", "quellar: standard output: Bad file descriptor\n"}));
  EXPECT_EQ(device.shell("\"$0\" set 'Status Bar' " + std::string(kBattery) + " on <&- >&- 2>&-"), succeeded(""));
  EXPECT_EQ(device.run({"get", "Status Bar", kBattery}), succeeded("true\n"));
  EXPECT_EQ(device.shell("\"$0\" session <&-"), succeeded("")) << "its input ends at once";
}

TEST(Start, MakesALimitOfTheSizeOfFilesAnErrorThatIsTold) {
  const Device device;
  // More than a block, of which a shell counts the limit.
  const std::string text(5000, 'x');
  EXPECT_EQ(device.run({"set", "Status Bar", "usesCustomTimeFormatter", "on"}), succeeded(""));
  const std::string before = contents(device.store());
  const Ended ended = device.shell("ulimit -f 1; exec \"$0\" set 'Status Bar' userCustomClockFormatter " + text);
  EXPECT_EQ(ended.code, 1);
  EXPECT_EQ(ended.output, "");
  EXPECT_EQ(ended.errors, "quellar: " + device.store().string() + ": File too large\n");
  EXPECT_EQ(contents(device.store()), before);
  const std::string printed = (device.folder().path() / "printed").string();
  EXPECT_EQ(device.shell("ulimit -f 1; exec \"$0\" schema >'" + printed + "'"),
            (Ended{1, "", "quellar: standard output: File too large\n"}));
}

TEST(SessionProgram, PlaysTheDeviceOfItsOptions) {
  const Device device;
  const std::string kSheet = R"({"do":"open","page":"Quellar"})"
                             "\n"
                             R"({"do":"inspect","row":1})"
                             "\n"
                             R"({"do":"bar","side":"right"})"
                             "\n";
  const Ended pad = device.run({"session", "--idiom", "pad", "--width", "768", "--lang", "en-XA"}, kSheet);
  EXPECT_EQ(pad.code, 0);
  EXPECT_THAT(pad.output, testing::HasSubstr(R"("frame":[0.0,0.0,768.0,44.0])"));
  EXPECT_THAT(pad.output, testing::HasSubstr(R"("anchor":"rightBar")"));
  EXPECT_THAT(pad.output, testing::Not(testing::HasSubstr("Are You Sure?"))) << "the pseudo-language";
  const Ended none = device.run({"session", "--idiom", "none"}, kSheet);
  EXPECT_THAT(none.output, testing::HasSubstr(R"("anchor":null)"));
  EXPECT_THAT(none.output, testing::HasSubstr("Are You Sure?"));
}

// ---- schema

TEST(Schema, TellsEveryKeyWithItsTypeDefaultAndPosts) {
  const Device device;
  const Ended schema = device.run({"schema", "--json"});
  EXPECT_EQ(schema.code, 0);
  EXPECT_EQ(schema.errors, "");
  EXPECT_EQ(dump(elementWith(schema.output, "key", "QLREnableKey")),
            R"({"page":"QuellarListController","defaultsKey":null,"key":"QLREnableKey","type":"boolean",)"
            R"("default":null,"minimum":null,"maximum":null,"values":null,"titles":null,"label":"Enable","posts":[]})");
  EXPECT_EQ(dump(elementWith(schema.output, "key", kBattery)),
            R"({"page":"KVQuellarStatusBarListController","defaultsKey":"StatusBar_Defaults",)"
            R"("key":"disablesBatterySTBIcon","type":"boolean","default":false,"minimum":null,"maximum":null,)"
            R"j("values":null,"titles":null,"label":"Battery (+ Bolt)","posts":["com.vantorick.quellar2.settings",)j"
            R"("com.vantorick.quellar2.statusbaritems"]})");
  EXPECT_EQ(dump(elementWith(schema.output, "key", "userCustomClockFormatter")),
            R"({"page":"KVQuellarStatusBarListController","defaultsKey":"StatusBar_Defaults",)"
            R"("key":"userCustomClockFormatter","type":"string","default":null,"minimum":null,"maximum":null,)"
            R"("values":null,"titles":null,"label":"Text:","posts":["com.vantorick.quellar2.settings",)"
            R"("com.vantorick.quellar2.statusbartime"]})")
      << "a key of a hidden block";
  EXPECT_EQ(elementWith(schema.output, "key", "userCustomNoServiceText")["posts"].dump(),
            R"(["com.vantorick.quellar2.settings.uikit","com.vantorick.quellar2.statusbarcarrier"])");
  EXPECT_FALSE(std::filesystem::exists(device.root()));
}

TEST(Schema, TellsKeysThatNoRowHas) {
  const Device device;
  const Ended schema = device.run({"schema", "--json"});
  EXPECT_EQ(dump(elementWith(schema.output, "key", "userTweetableUsername")),
            R"({"page":"KVQuellarMusicListController","defaultsKey":"Music_Defaults","key":"userTweetableUsername",)"
            R"("type":"string","default":null,"minimum":null,"maximum":null,"values":null,"titles":null,)"
            R"("label":"Twitter Accounts","posts":["com.vantorick.quellar2.settings"]})");
  Json style = elementWith(schema.output, "key", "ncPrefferedBackdropStyle");
  EXPECT_EQ(style["values"].size(), 31U);
  EXPECT_EQ(style["values"][0], 2060);
  EXPECT_EQ(style["titles"].size(), 31U);
  EXPECT_EQ(style["titles"][30], "4003");
  style.erase("values");
  style.erase("titles");
  EXPECT_EQ(dump(style),
            R"({"page":"KVQuellarNotificationCenterListController","defaultsKey":"NotificationCenter_Defaults",)"
            R"("key":"ncPrefferedBackdropStyle","type":"integer","default":null,"minimum":null,"maximum":null,)"
            R"("label":"Blur Style","posts":["com.vantorick.quellar2.settings"]})");
}

TEST(Schema, TellsTheKeysOfEachInstalledApplication) {
  Device device;
  device.environment["XDG_DATA_HOME"] = (device.folder().path() / "data").string();
  device.environment["XDG_DATA_DIRS"] = "/nonexistent";
  device.folder().write("data/applications/mail.desktop", "[Desktop Entry]\nType=Application\nName=Mail\n");
  const Ended schema = device.run({"schema", "--json"});
  EXPECT_EQ(dump(elementWith(schema.output, "key", "orientation-mail.desktop")),
            R"({"page":"KVQuellarAppOrientationListController","defaultsKey":null,"key":"orientation-mail.desktop",)"
            R"("type":"integer","default":0,"minimum":null,"maximum":null,"values":[0,1,2],)"
            R"("titles":["Automatic","Portrait","Landscape"],"label":"Mail","posts":[]})");
  EXPECT_EQ(dump(elementWith(schema.output, "key", "hidden-mail.desktop")),
            R"({"page":"KVQuellarAppHideListController","defaultsKey":"AppHide_Defaults","key":"hidden-mail.desktop",)"
            R"("type":"boolean","default":false,"minimum":null,"maximum":null,"values":null,"titles":null,)"
            R"("label":"Mail","posts":["com.vantorick.quellar2.settings"]})");
}

TEST(Applications, LoadTheLibraryThatSortsThemWhereTheyAreListedOnly) {
  Device device;
  const auto loads = [&](std::vector<std::string> arguments) {
    device.environment["LD_DEBUG"] = "files";
    return device.run(std::move(arguments)).errors.find("libicui18n") != std::string::npos;
  };
  EXPECT_FALSE(loads({"get", "Status Bar", kBattery}));
  EXPECT_FALSE(loads({"set", "Status Bar", kBattery, "on"}));
  EXPECT_FALSE(loads({"rows", "Dock"}));
  EXPECT_TRUE(loads({"rows", "App Hide"}));
}

TEST(Schema, TellsOnlyKeysThatCanBeRead) {
  const Device device;
  std::map<std::string, std::vector<std::string>> keysOfPages;
  for (const Json& key : Json::parse(device.run({"schema", "--json"}).output)) {
    keysOfPages[key["page"]].push_back(key["key"]);
  }
  for (const auto& [page, keys] : keysOfPages) {
    // Each costs a process, and those that no row has come last.
    EXPECT_EQ(device.run({"get", page, keys.back()}).code, 0) << page << " " << keys.back();
  }
}

TEST(Schema, PrintsTheReferenceThatStandsInTheDocs) {
  Device device;
  // No applications, which would add their own keys.
  device.environment["XDG_DATA_HOME"] = device.environment["XDG_DATA_DIRS"] = "/nonexistent";
  EXPECT_EQ(device.run({"schema", "--markdown"}).output, contents(QUELLAR_DOCS "/keys.md"))
      << "renew it by: XDG_DATA_HOME=/nonexistent XDG_DATA_DIRS=/nonexistent quellar schema --markdown "
         "--device-root /nonexistent > docs/keys.md";
}

TEST(Schema, PrintsTablesForPeople) {
  const Device device;
  EXPECT_THAT(device.run({"schema", "--markdown"}).output,
              testing::HasSubstr("## Status Bar (StatusBar_Defaults)\n\n"
                                 "| Key | Type | Default | Takes | Label | Posts |\n|---|---|---|---|---|---|\n"
                                 "| usesLowercaseAMPM | boolean | false |  | Lowercase AM/PM | "
                                 "com.vantorick.quellar2.settings |\n"));
  EXPECT_THAT(device.run({"schema"}).output,
              testing::ContainsRegex("Status Bar \\(StatusBar_Defaults\\)\n  usesLowercaseAMPM +boolean +false +"
                                     "Lowercase AM/PM +com.vantorick.quellar2.settings\n"));
}

}  // namespace cli_test
}  // namespace quellar::tests

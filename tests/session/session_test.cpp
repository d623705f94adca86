// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "session_fixture.h"

namespace quellar::tests {
namespace session_test {

using host::headless::DeviceOptions;
using platform::Dictionary;
using testing::ElementsAre;

constexpr auto kDomain = "com.vantorick.quellar2";

TEST(Session, GivesTheLinesOfTheDocumentedExample) {
  ScriptedSession session;
  EXPECT_THAT(session.feed(R"({"do":"open","page":"Status Bar"})"),
              ElementsAre(R"({"event":"push","page":"KVQuellarStatusBarListController","t":0.0})",
                          R"({"ok":true,"page":"KVQuellarStatusBarListController","title":"Status Bar"})"));
  EXPECT_THAT(
      session.feed(R"({"do":"set","row":"disablesBatterySTBIcon","value":true})"),
      ElementsAre(
          R"({"event":"write","domain":"com.vantorick.quellar2","key":"StatusBar_Defaults","value":{"disablesBatterySTBIcon":true},"t":0.0})",
          R"({"event":"post","centre":"darwin","name":"com.vantorick.quellar2.settings","object":null,"userInfo":null,"immediately":true,"through":"centre","t":0.0})",
          R"({"event":"post","centre":"distributed","name":"com.vantorick.quellar2.statusbaritems","object":"string object","userInfo":{"barItem":8,"enabled":true},"immediately":true,"through":"centre","t":0.0})",
          R"({"ok":true})"));
}

// ---- Lines and fields

TEST(Session, AnswersWhatIsNoCommandWithOneErrorLine) {
  ScriptedSession session;
  EXPECT_THAT(session.feed(""), ElementsAre(error("the line is not JSON")));
  EXPECT_THAT(session.feed("   "), ElementsAre(error("the line is not JSON")));
  EXPECT_THAT(session.feed(R"({"do":"screen")"), ElementsAre(error("the line is not JSON")));
  EXPECT_THAT(session.feed("{\"do\":\"screen\xff\"}"), ElementsAre(error("the line is not JSON")));
  EXPECT_THAT(session.feed(R"({"do":"advance","seconds":1e999})"), ElementsAre(error("the line is not JSON")));
  EXPECT_THAT(session.feed(R"({"do":"screen"} {"do":"screen"})"), ElementsAre(error("the line is not JSON")));
  EXPECT_THAT(session.feed("[1]"), ElementsAre(error("the line is no JSON object")));
  EXPECT_THAT(session.feed("{}"), ElementsAre(error(R"(the field "do" is missing)")));
  EXPECT_THAT(session.feed(R"({"do":1})"), ElementsAre(error(R"(the field "do" must be a string)")));
  EXPECT_THAT(session.feed(R"({"do":"Open"})"), ElementsAre(error(R"(no command "Open")")));
}

std::string nested(std::size_t depth, const std::string& opening, const std::string& closing) {
  std::string line = R"({"do":"set","row":"x","value":)";
  for (std::size_t each = 1; each < depth; ++each) line += opening;
  line += "1";
  for (std::size_t each = 1; each < depth; ++each) line += closing;
  return line + "}";
}

TEST(Session, BoundsHowDeepALineIsNested) {
  ScriptedSession session;
  const std::string tooDeep = error("the line is nested deeper than 128");
  for (const auto& [opening, closing] : {std::pair("[", "]"), std::pair(R"({"a":)", "}"), std::pair("[0,[", "],0]")}) {
    EXPECT_THAT(session.feed(nested(90'000, opening, closing)), ElementsAre(tooDeep)) << opening;
  }
  EXPECT_THAT(session.feed(nested(129, "[", "]")), ElementsAre(tooDeep));
  EXPECT_THAT(session.feed(nested(128, "[", "]")), ElementsAre(error("no page is open")));
  EXPECT_THAT(session.feed(std::string(900'000, '[')), ElementsAre(tooDeep));
  // Keys that stand beside one another, each deep, are copied as often as their object grows.
  std::string beside = R"({"do":"screen")";
  for (int key = 0; key < 2000; ++key) {
    beside += R"(,"k)" + std::to_string(key) + "\":" + std::string(120, '[') + std::string(120, ']');
  }
  EXPECT_THAT(session.feed(beside + "}"), ElementsAre(error(R"("screen" has no field "k0")")));
}

TEST(Session, BoundsHowLongALineIs) {
  ScriptedSession session;
  const auto padded = [](std::size_t length) {
    const std::string command = R"({"do":"advance","seconds":0})";
    return command + std::string(length - command.size(), ' ');
  };
  EXPECT_THAT(session.feed(padded(1 << 20)), ElementsAre(R"({"ok":true,"time":0.0})"));
  EXPECT_THAT(session.feed(padded((1 << 20) + 1)), ElementsAre(error("the line is longer than 1 MiB")));
}

TEST(Session, ReadsManyKeysInTimeThatGrowsWithTheirNumberAlone) {
  const auto secondsFor = [](int keys) {
    std::string line = "{";
    for (int key = 0; key < keys; ++key) line += "\"" + std::to_string(key) + "\":0,";
    line += R"("do":"screen","do":"screen"})";
    ScriptedSession session;
    const auto before = std::chrono::steady_clock::now();
    EXPECT_THAT(session.feed(line), ElementsAre(error(R"("screen" has no field "0")")));
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - before).count();
  };
  const double few = secondsFor(10'000);
  // Nine times as many; the square would be eighty times as long.
  EXPECT_LT(secondsFor(90'000), 30 * few + 0.2);
}

TEST(Session, TakesTheLastOfTwoFieldsOfOneName) {
  ScriptedSession session;
  EXPECT_EQ(session.closing(R"({"do":"back","do":"advance","seconds":1,"seconds":2})"), R"({"ok":true,"time":2.0})");
}

TEST(Session, PrintsNoCharacterThatATerminalActsOn) {
  ScriptedSession session;
  session.preferences.domains["d"] = {{"k",
                                       "\x1b[2J\n\x7f\xc2\x80\xc2\x9b\xd8\x9c\xe2\x80\x8e\xe2\x80\xae\xe2\x81\xa6 "
                                       "\xc3\xa9\xf0\x9f\x98\x80"}};
  EXPECT_EQ(session.closing(R"({"do":"stored","key":"k","domain":"d"})"),
            R"({"ok":true,"value":"\u001b[2J\n\u007f\u0080\u009b\u061c\u200e\u202e\u2066 )"
            "\xc3\xa9\xf0\x9f\x98\x80\"}");
}

TEST(Session, RefusesAFieldThatACommandDoesNotHave) {
  ScriptedSession session;
  EXPECT_THAT(session.feed(R"({"do":"open","page":"Quellar","animated":true})"),
              ElementsAre(error(R"("open" has no field "animated")")));
  EXPECT_EQ(session.closing(R"({"do":"screen"})"),
            R"({"ok":true,"stack":[],"page":null,"title":null,"titleView":null,"leftBar":null,"rightBar":null,)"
            R"("backBar":null,"keyboard":false,"dialog":null})");
}

TEST(Session, NamesTheFieldThatIsMissing) {
  ScriptedSession session;
  session.feed(R"({"do":"open","page":"Status Bar"})");
  const std::vector<std::pair<std::string, std::string>> cases = {
      {R"({"do":"open"})", "page"},
      {R"({"do":"inspect"})", "row"},
      {R"({"do":"set","value":true})", "row"},
      {R"({"do":"set","row":2})", "value"},
      {R"({"do":"drag","row":2})", "value"},
      {R"({"do":"drag","value":2})", "row"},
      {R"({"do":"step","row":2})", "by"},
      {R"({"do":"step","by":1})", "row"},
      {R"({"do":"tap"})", "row"},
      {R"({"do":"popup"})", "row"},
      {R"({"do":"accessory"})", "button"},
      {R"({"do":"type"})", "text"},
      {R"({"do":"press"})", "button"},
      {R"({"do":"edit","text":""})", "row"},
      {R"({"do":"edit","row":2})", "text"},
      {R"({"do":"bar"})", "side"},
      {R"({"do":"pick"})", "color"},
      {R"({"do":"style"})", "style"},
      {R"({"do":"advance"})", "seconds"},
      {R"({"do":"stored"})", "key"},
  };
  for (const auto& [line, name] : cases) {
    EXPECT_THAT(session.feed(line), ElementsAre(error("the field \"" + name + "\" is missing"))) << line;
  }
}

TEST(Session, RefusesAFieldOfTheWrongType) {
  ScriptedSession session;
  session.feed(R"({"do":"open","page":"Status Bar"})");
  const std::vector<std::pair<std::string, std::string>> cases = {
      {R"({"do":"open","page":1})", R"("page" must be a string)"},
      {R"({"do":"drag","row":2,"value":"1"})", R"("value" must be a number)"},
      {R"({"do":"step","row":2,"by":0})", R"("by" must be a whole number other than 0)"},
      {R"({"do":"step","row":2,"by":1.5})", R"("by" must be a whole number other than 0)"},
      {R"({"do":"type","text":null})", R"("text" must be a string)"},
      {R"({"do":"type","text":"a\u0000"})", R"("text" must be a string without U+0000)"},
      {R"({"do":"bar","side":"back"})", R"("side" must be "left" or "right")"},
      {R"({"do":"pick","color":"ff0000"})", R"("color" must be "#rrggbb")"},
      {R"({"do":"pick","color":"#ff00zz"})", R"("color" must be "#rrggbb")"},
      {R"({"do":"pick","color":"#ff0000","alpha":"1"})", R"("alpha" must be a number)"},
      {R"({"do":"pick","color":"#ff0000","alpha":1.1})", R"("alpha" must be a number from 0 to 1)"},
      {R"({"do":"style","style":"2060"})", R"("style" must be a whole number)"},
      {R"({"do":"advance","seconds":-0.1})", R"("seconds" must be a number from 0 to 9223372035.854776)"},
      {R"({"do":"advance","seconds":1e10})", R"("seconds" must be a number from 0 to 9223372035.854776)"},
      {R"({"do":"advance","seconds":"1"})", R"("seconds" must be a number)"},
      {R"({"do":"stored","key":false})", R"("key" must be a string)"},
      {R"({"do":"stored","key":"a","domain":null})", R"("domain" must be a string)"},
  };
  for (const auto& [line, what] : cases) {
    EXPECT_THAT(session.feed(line), ElementsAre(error("the field " + what))) << line;
  }
}

TEST(Session, FindsARowByIndexIdentifierOrLabelAndRefusesAnyOther) {
  ScriptedSession session;
  session.feed(R"({"do":"open","page":"Custom Carrier Strings"})");
  const auto indexOf = [&](const std::string& row) {
    const auto closing = host::headless::Json::parse(session.closing(R"({"do":"inspect","row":)" + row + "}"));
    return closing.contains("error") ? closing["error"].get<std::string>() : closing["row"]["index"].dump();
  };
  EXPECT_EQ(indexOf("3"), "3");
  EXPECT_EQ(indexOf(R"("userRequestsCustomNoServiceString")"), "3");
  EXPECT_EQ(indexOf(R"({"label":"Use Custom String","nth":0})"), "1");
  EXPECT_EQ(indexOf(R"({"label":"Use Custom String","nth":2})"), "5");
  EXPECT_EQ(indexOf(R"({"label":"Use Custom String"})"), "1");
  EXPECT_EQ(indexOf(R"({"label":"Searching... Carrier String","nth":0})"), "4") << "groups count";

  EXPECT_EQ(indexOf("-0"), indexOf("0"));
  EXPECT_EQ(indexOf("8"), "no row 8; the page has 8 rows");
  EXPECT_EQ(indexOf("-1"), "no row -1; the page has 8 rows");
  EXPECT_EQ(indexOf("18446744073709551615"), "no row 18446744073709551615; the page has 8 rows");
  EXPECT_EQ(indexOf(R"("userCustomCarrierText")"), R"(no row with the identifier "userCustomCarrierText")")
      << "a hidden row can't be named";
  EXPECT_EQ(indexOf(R"({"label":"Use Custom String","nth":4})"),
            R"(no row 4 with the label "Use Custom String"; there are 4)");
  for (const auto* row : {"1.0", "true", "null", "[]", "{}", R"({"nth":0})", R"({"label":"a","nth":-1})",
                          R"({"label":"a","nth":"0"})", R"({"label":1})", R"({"label":"a","n":0})"}) {
    EXPECT_EQ(indexOf(row), R"(the field "row" must be an index, an identifier or {"label":"...","nth":0})") << row;
  }
}

// ---- Pages

TEST(Session, OpensAPageByClassOrNameInAnyCaseWithSpacesOrDashes) {
  for (const auto* name : {"KVQuellarStatusBarListController", "Status Bar", "status-bar", "STATUS bar"}) {
    ScriptedSession session;
    EXPECT_EQ(session.closing(std::string(R"({"do":"open","page":")") + name + "\"}"),
              R"({"ok":true,"page":"KVQuellarStatusBarListController","title":"Status Bar"})")
        << name;
  }
  ScriptedSession session;
  EXPECT_THAT(session.feed(R"({"do":"open","page":"StatusBar"})"), ElementsAre(error(R"(no page "StatusBar")")));
}

TEST(Session, PopsPagesUntilTheStackIsEmpty) {
  ScriptedSession session;
  session.feed(R"({"do":"open","page":"Status Bar"})");
  session.feed(R"({"do":"open","page":"Custom Carrier Strings"})");
  const std::weak_ptr<const void> page = session.session.host().topList()->lifetime();
  EXPECT_THAT(session.feed(R"({"do":"back"})"),
              ElementsAre(R"({"event":"pop","page":"KVQuellarStatusBarCarrierListController","animated":true,"t":0.0})",
                          R"({"ok":true,"page":"KVQuellarStatusBarListController"})"));
  EXPECT_TRUE(page.expired()) << "a popped page is destroyed";
  EXPECT_THAT(session.feed(R"({"do":"back"})"),
              ElementsAre(R"({"event":"pop","page":"KVQuellarStatusBarListController","animated":true,"t":0.0})",
                          R"({"ok":true,"page":null})"));
  for (const auto* line : {R"({"do":"back"})", R"({"do":"rows"})", R"({"do":"inspect","row":0})",
                           R"({"do":"set","row":0,"value":true})", R"({"do":"tap","row":0})", R"({"do":"return"})",
                           R"({"do":"bar","side":"right"})", R"({"do":"style","style":2060})"}) {
    EXPECT_THAT(session.feed(line), ElementsAre(error("no page is open"))) << line;
  }
}

TEST(Session, OpensThePageOfALinkThatIsTapped) {
  ScriptedSession session;
  session.feed(R"({"do":"open","page":"Status Bar"})");
  EXPECT_THAT(session.feed(R"({"do":"tap","row":{"label":"Custom Carrier Strings","nth":0}})"),
              ElementsAre(R"({"event":"push","page":"KVQuellarStatusBarCarrierListController","t":0.0})", kOk));
}

TEST(Session, PrintsRowObjectsWholeAndInOrder) {
  ScriptedSession session;
  session.preferences.domains[kDomain]["StatusBar_Defaults"] =
      Dictionary{{"usesCustomCarrierText", true}, {"userCustomCarrierText", "a \"b\" \xc3\xa4"}};
  session.feed(R"({"do":"open","page":"Custom Carrier Strings"})");
  const auto row = [](int index, int section, const std::string& fields) {
    return R"({"index":)" + std::to_string(index) + R"(,"section":)" + std::to_string(section) + "," + fields + "}";
  };
  const auto group = [&](int index, int section, const std::string& label) {
    return row(index, section,
               R"("kind":"PSGroupCell","label":")" + label +
                   R"(","id":null,"setter":false,"getter":false,"detail":null,"action":null,"enabled":true,)"
                   R"("properties":{"label":")" +
                   label +
                   R"("},"values":null,"titles":null,"shortTitles":null,"stored":null,"shown":null,"accessory":null)");
  };
  const auto toggle = [&](int index, int section, const std::string& key, const std::string& stored) {
    return row(index, section,
               R"("kind":"PSSwitchCell","label":"Use Custom String","id":")" + key +
                   R"(","setter":true,"getter":true,"detail":null,"action":null,"enabled":true,"properties":)"
                   R"({"default":0,"key":")" +
                   key + R"(","label":"Use Custom String"},"values":null,"titles":null,"shortTitles":null,"stored":)" +
                   stored + R"(,"shown":)" + (stored == "null" ? "0" : stored) + R"(,"accessory":null)");
  };
  const std::string text = row(
      2, 0,
      R"("kind":"PSEditTextCell","label":"Text:","id":"userCustomCarrierText","setter":true,"getter":true,)"
      R"("detail":null,"action":null,"enabled":true,"properties":{"key":"userCustomCarrierText","label":"Text:"},)"
      R"("values":null,"titles":null,"shortTitles":null,"stored":"a \"b\" ä","shown":"a \"b\" ä","accessory":null)");
  EXPECT_THAT(session.feed(R"({"do":"rows"})"),
              ElementsAre(R"({"ok":true,"rows":[)" + group(0, 0, "Default Carrier String") + "," +
                          toggle(1, 0, "usesCustomCarrierText", "true") + "," + text + "," +
                          group(3, 1, "No Service Carrier String") + "," +
                          toggle(4, 1, "userRequestsCustomNoServiceString", "null") + "," +
                          group(5, 2, "Searching... Carrier String") + "," +
                          toggle(6, 2, "userRequestsCustomSearchingString", "null") + "," +
                          group(7, 3, "WiFi Calling Carrier String") + "," +
                          toggle(8, 3, "userRequestsCustomWifiCallingString", "null") + "]}"));
}

TEST(Session, InspectsARowAndItsCell) {
  ScriptedSession session({.idiom = 0, .scale = 2, .width = 375});
  session.feed(R"({"do":"open","page":"Status Bar"})");
  EXPECT_THAT(
      session.feed(R"({"do":"inspect","row":0})"),
      ElementsAre(
          R"({"ok":true,"row":{"index":0,"section":0,"kind":"PSLinkListCell","label":"Custom Carrier Strings","id":null,)"
          R"("setter":false,"getter":false,"detail":"KVQuellarStatusBarCarrierListController","action":null,)"
          R"("enabled":true,"properties":{"iconImage":{"$image":)"
          R"("/Library/PreferenceBundles/Quellar.bundle/images/qlrAppAlertsSettingsIcon.png"},)"
          R"("label":"Custom Carrier Strings"},"values":null,"titles":null,"shortTitles":null,"stored":null,)"
          R"("shown":null,"accessory":"disclosure"},"cell":{"class":"PSTableCell","titleColor":"#162433",)"
          R"("frame":[0.0,0.0,375.0,44.0]}})"));
  EXPECT_THAT(
      session.feed(R"({"do":"inspect","row":"disablesWifiSTBIcon"})"),
      ElementsAre(
          R"({"ok":true,"row":{"index":35,"section":4,"kind":"PSSwitchCell","label":"Wifi",)"
          R"("id":"disablesWifiSTBIcon","setter":true,"getter":true,"detail":null,"action":null,"enabled":true,)"
          R"("properties":{"default":0,"iconImage":{"$image":)"
          R"("/Library/PreferenceBundles/Quellar.bundle/images/statusbarimages/liquid.png"},)"
          R"("key":"disablesWifiSTBIcon","label":"Wifi","statusBarItem":6},"values":null,"titles":null,)"
          R"("shortTitles":null,"stored":null,"shown":0,"accessory":null},"cell":{"class":"PSSwitchTableCell",)"
          R"("titleColor":"#162433","frame":[0.0,0.0,375.0,44.0],"onTint":"#41a9d6"}})"));
}

TEST(Session, ShowsTheRootScreenItsSheetAndItsFade) {
  ScriptedSession session;
  const std::string kRoot = R"(,"stack":["QuellarListController"],"page":"QuellarListController","title":"Quellar",)"
                            R"("titleView":{"image":{"$image":)"
                            R"("/Library/PreferenceBundles/Quellar.bundle/images/headerLogo.png"},"alpha":)";
  const std::string kBars = R"(},"leftBar":null,"rightBar":{"title":"Respring","style":"done"},"backBar":null,)"
                            R"("keyboard":false,"dialog":)";
  const std::string kSheet = R"("kind":"sheet","title":"Are You Sure?","message":"Respring Confirmation","buttons":)"
                             R"([{"title":"Not Right Now","style":"cancel"},{"title":"Respring","style":)"
                             R"("destructive"}],"text":null,"keyboardType":"default","accessory":[],"anchor":null)";
  EXPECT_THAT(session.feed(R"({"do":"open","page":"quellar"})"),
              ElementsAre(R"({"event":"push","page":"QuellarListController","t":0.0})",
                          R"({"event":"bar","side":"right","title":"Respring","style":"done","t":0.0})",
                          R"({"ok":true,"page":"QuellarListController","title":"Quellar"})"));
  EXPECT_EQ(session.closing(R"({"do":"screen"})"), R"({"ok":true)" + kRoot + "0.0" + kBars + "null}");
  EXPECT_THAT(session.feed(R"({"do":"advance","seconds":0.5})"),
              ElementsAre(R"({"event":"alpha","to":1.0,"duration":0.5,"t":0.5})", R"({"ok":true,"time":0.5})"));
  EXPECT_THAT(session.feed(R"({"do":"bar","side":"right"})"),
              ElementsAre(R"({"event":"dialog",)" + kSheet + R"(,"t":0.5})", kOk));
  EXPECT_EQ(session.closing(R"({"do":"screen"})"), R"({"ok":true)" + kRoot + "1.0" + kBars + "{" + kSheet + "}}");
  EXPECT_THAT(
      session.feed(R"({"do":"press","button":"Yes"})"),
      ElementsAre(error(R"(no button "Yes" in the dialog that is shown; its buttons: "Not Right Now", "Respring")")));
  EXPECT_THAT(
      session.feed(R"({"do":"press","button":"Respring"})"),
      ElementsAre(
          R"({"event":"dismiss","t":0.5})",
          R"({"event":"post","centre":"darwin","name":"com.vantorick.quellar2.respring","object":null,"userInfo":null,"immediately":false,"through":"centre","t":0.5})",
          kOk));
  EXPECT_THAT(session.feed(R"({"do":"press","button":"Respring"})"), ElementsAre(error("no dialog is shown")));
  EXPECT_THAT(session.feed(R"({"do":"bar","side":"left"})"),
              ElementsAre(error("QuellarListController has no left bar button")));
}

TEST(Session, RefusesWhatNeedsThePageBeneathADialog) {
  ScriptedSession session;
  session.feed(R"({"do":"open","page":"Quellar"})");
  session.feed(R"({"do":"bar","side":"right"})");
  const std::vector<std::pair<std::string, std::string>> refused = {
      {"open", R"({"do":"open","page":"Status Bar"})"},
      {"back", R"({"do":"back"})"},
      {"rows", R"({"do":"rows"})"},
      {"inspect", R"({"do":"inspect","row":0})"},
      {"set", R"({"do":"set","row":1,"value":true})"},
      {"drag", R"({"do":"drag","row":1,"value":1})"},
      {"step", R"({"do":"step","row":1,"by":1})"},
      {"tap", R"({"do":"tap","row":2})"},
      {"popup", R"({"do":"popup","row":2})"},
      {"edit", R"({"do":"edit","row":2,"text":""})"},
      {"return", R"({"do":"return"})"},
      {"bar", R"({"do":"bar","side":"right"})"},
      {"style", R"({"do":"style","style":2060})"},
  };
  for (const auto& [name, line] : refused) {
    EXPECT_THAT(session.feed(line),
                ElementsAre(error("\"" + name + "\" needs the page beneath the dialog that is shown")));
  }
  EXPECT_EQ(session.closing(R"({"do":"stored","key":"a"})"), R"({"ok":true,"value":null})");
  EXPECT_EQ(session.closing(R"({"do":"advance","seconds":0})"), R"({"ok":true,"time":0.0})");
  EXPECT_EQ(session.closing(R"({"do":"press","button":"Not Right Now"})"), kOk);
  EXPECT_EQ(session.closing(R"({"do":"back"})"), R"({"ok":true,"page":null})");
}

// ---- Text rows

TEST(Session, CommitsAnEditedTextOnceAndThenLowersTheKeyboard) {
  ScriptedSession session;
  session.preferences.domains[kDomain]["StatusBar_Defaults"] = Dictionary{{"usesCustomTimeFormatter", true}};
  session.feed(R"({"do":"open","page":"Status Bar"})");
  const auto writes = [](const std::string& text) {
    return Lines{
        R"({"event":"write","domain":"com.vantorick.quellar2","key":"StatusBar_Defaults","value":{"userCustomClockFormatter":")" +
            text + R"(","usesCustomTimeFormatter":true},"t":0.0})",
        R"({"event":"post","centre":"darwin","name":"com.vantorick.quellar2.settings","object":null,"userInfo":null,"immediately":true,"through":"centre","t":0.0})",
        R"({"event":"keyboard","visible":false,"t":0.0})",
        R"({"event":"bar","side":"right","title":null,"style":null,"t":0.0})"};
  };
  const auto then = [](Lines lines, const Lines& more) {
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
  };
  const Lines kShown = {R"({"event":"keyboard","visible":true,"t":0.0})",
                        R"({"event":"bar","side":"right","title":"Save","style":"done","t":0.0})", kOk};

  EXPECT_EQ(session.feed(R"({"do":"edit","row":"userCustomClockFormatter","text":"HH"})"), kShown);
  EXPECT_THAT(session.feed(R"({"do":"edit","row":"userCustomClockFormatter","text":"HH:"})"), ElementsAre(kOk));
  EXPECT_THAT(session.feed(R"({"do":"type","text":"HH:mm"})"), ElementsAre(kOk));
  EXPECT_EQ(session.closing(R"({"do":"stored","key":"StatusBar_Defaults"})"),
            R"({"ok":true,"value":{"usesCustomTimeFormatter":true}})");
  EXPECT_EQ(session.feed(R"({"do":"return"})"), then(writes("HH:mm"), {kOk}));
  EXPECT_THAT(session.feed(R"({"do":"return"})"), ElementsAre(error("no text row is edited")));
  EXPECT_THAT(session.feed(R"({"do":"type","text":"a"})"), ElementsAre(error("no text field has the focus")));

  session.feed(R"({"do":"edit","row":"userCustomClockFormatter","text":""})");
  EXPECT_EQ(session.feed(R"({"do":"bar","side":"right"})"), then(writes(""), {kOk})) << "Save commits";
  EXPECT_THAT(session.feed(R"({"do":"bar","side":"right"})"),
              ElementsAre(error("KVQuellarStatusBarListController has no right bar button")));

  session.feed(R"({"do":"edit","row":"userCustomClockFormatter","text":"h"})");
  EXPECT_EQ(session.feed(R"({"do":"back"})"),
            then(writes("h"), {R"({"event":"pop","page":"KVQuellarStatusBarListController","animated":true,"t":0.0})",
                               R"({"ok":true,"page":null})"}));
}

TEST(Session, CommitsTheEditedTextBeforeAnotherRowIsUsed) {
  ScriptedSession session;
  session.preferences.domains[kDomain]["StatusBar_Defaults"] = Dictionary{{"usesCustomCarrierText", true}};
  session.feed(R"({"do":"open","page":"Custom Carrier Strings"})");
  session.feed(R"({"do":"edit","row":"userCustomCarrierText","text":"x"})");
  EXPECT_THAT(
      session.feed(R"({"do":"set","row":"userRequestsCustomWifiCallingString","value":false})"),
      ElementsAre(
          R"({"event":"write","domain":"com.vantorick.quellar2","key":"StatusBar_Defaults","value":{"userCustomCarrierText":"x","usesCustomCarrierText":true},"t":0.0})",
          R"({"event":"keyboard","visible":false,"t":0.0})",
          R"({"event":"bar","side":"right","title":null,"style":null,"t":0.0})",
          R"({"event":"write","domain":"com.vantorick.quellar2","key":"StatusBar_Defaults","value":{"userCustomCarrierText":"x","userRequestsCustomWifiCallingString":false,"usesCustomCarrierText":true},"t":0.0})",
          kOk));
}

TEST(Session, SetsATextRowWithoutTheKeyboard) {
  ScriptedSession session;
  session.preferences.domains[kDomain]["StatusBar_Defaults"] = Dictionary{{"usesCustomCarrierText", true}};
  session.feed(R"({"do":"open","page":"Custom Carrier Strings"})");
  EXPECT_THAT(
      session.feed(R"({"do":"set","row":"userCustomCarrierText","value":"x"})"),
      ElementsAre(
          R"({"event":"write","domain":"com.vantorick.quellar2","key":"StatusBar_Defaults","value":{"userCustomCarrierText":"x","usesCustomCarrierText":true},"t":0.0})",
          kOk));
  EXPECT_THAT(session.feed(R"({"do":"set","row":"userCustomCarrierText","value":1})"),
              ElementsAre(error(R"(the field "value" must be a string)")));
}

// ---- Time and store

TEST(Session, RunsWhatFallsDueAtItsOwnTimeToTheNanosecond) {
  ScriptedSession session;
  session.feed(R"({"do":"open","page":"Custom Carrier Strings"})");
  session.feed(R"({"do":"advance","seconds":1})");
  session.feed(R"({"do":"set","row":"usesCustomCarrierText","value":false})");
  EXPECT_THAT(session.feed(R"({"do":"advance","seconds":0.099999999})"),
              ElementsAre(R"({"ok":true,"time":1.099999999})"));
  EXPECT_THAT(
      session.feed(R"({"do":"advance","seconds":2.0000000006})"),
      ElementsAre(
          R"({"event":"post","centre":"distributed","name":"com.vantorick.quellar2.settings.uikit","object":null,"userInfo":null,"immediately":true,"through":"centre","t":1.1})",
          R"({"event":"post","centre":"distributed","name":"com.vantorick.quellar2.statusbarcarrier","object":null,"userInfo":null,"immediately":true,"through":"centre","t":1.1})",
          R"({"ok":true,"time":3.1})"));
  EXPECT_THAT(session.feed(R"({"do":"advance","seconds":9223372000})"),
              ElementsAre(R"({"ok":true,"time":9223372003.1})"));
  EXPECT_THAT(session.feed(R"({"do":"advance","seconds":100})"),
              ElementsAre(error(R"(the field "seconds" must be a number from 0 to 32.754775807)")));
}

TEST(Session, SumsTenthsOfASecondWithoutDrift) {
  ScriptedSession session;
  std::string time;
  for (int turn = 0; turn < 30; ++turn) time = session.closing(R"({"do":"advance","seconds":0.1})");
  EXPECT_EQ(time, R"({"ok":true,"time":3.0})");
}

TEST(Session, ReadsTheStoreInEveryDomainAndType) {
  ScriptedSession session;
  session.preferences.domains[kDomain]["a"] = 5.0;
  session.preferences.domains["other"]["a"] = Dictionary{{"data", platform::Data{{1, 2, 3, 255}}},
                                                         {"date", platform::Date{-978307200}},
                                                         {"integer", std::int64_t{9'007'199'254'740'993}},
                                                         {"list", platform::Array{1.0e-7, 0.69999, 1e22, false}},
                                                         {"text", "\xe2\x80\xa8 \n"}};
  EXPECT_EQ(session.closing(R"({"do":"stored","key":"a"})"), R"({"ok":true,"value":5.0})");
  EXPECT_EQ(session.closing(R"({"do":"stored","key":"a","domain":"other"})"),
            R"({"ok":true,"value":{"data":{"$data":"AQID/w=="},"date":{"$date":"1970-01-01T00:00:00Z"},)"
            R"("integer":9007199254740993,"list":[1e-07,0.69999,1e+22,false],"text":")"
            "\xe2\x80\xa8 \\n\"}}");
  EXPECT_EQ(session.closing(R"({"do":"stored","key":"b"})"), R"({"ok":true,"value":null})");
  EXPECT_EQ(session.closing(R"({"do":"stored","key":"a","domain":"none"})"), R"({"ok":true,"value":null})");
}

TEST(Session, WarnsInTheClosingLineOfTheCommandWhoseWriteFailed) {
  ScriptedSession session;
  session.feed(R"({"do":"open","page":"Quellar"})");
  session.failedWrite = "/x/a.plist: Read-only file system";
  EXPECT_THAT(
      session.feed(R"({"do":"set","row":"QLREnableKey","value":true})"),
      ElementsAre(R"({"event":"write","domain":"com.vantorick.quellar2","key":"QLREnableKey","value":true,"t":0.0})",
                  R"({"ok":true,"warning":"/x/a.plist: Read-only file system"})"));
  EXPECT_THAT(session.feed(R"({"do":"set","row":"QLREnableKey","value":true})"), ElementsAre(testing::_, kOk));
}

TEST(Session, PlaysTheDeviceThatItWasGiven) {
  for (const auto& [idiom, anchor] : {std::pair(std::optional(1), "\"rightBar\""), std::pair(std::optional(0), "null"),
                                      std::pair(std::optional<int>(), "null")}) {
    ScriptedSession session(DeviceOptions{.idiom = idiom});
    session.feed(R"({"do":"open","page":"Quellar"})");
    session.feed(R"({"do":"bar","side":"right"})");
    const auto screen = host::headless::Json::parse(session.closing(R"({"do":"screen"})"));
    EXPECT_EQ(screen["dialog"]["anchor"].dump(), anchor);
  }
}

}  // namespace session_test
}  // namespace quellar::tests

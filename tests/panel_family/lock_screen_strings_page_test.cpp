// SPDX-License-Identifier: MIT
#include "panel_family/family_page.h"

namespace quellar::tests {
namespace lock_screen_strings_page_test {

using platform::Dictionary;
using platform::Value;
using testing::ElementsAre;

class LockScreenStringsPage : public FamilyPage {
 protected:
  LockScreenStringsPage() : FamilyPage("KVQuellarLockScreenStringsListController", "LockScreen_Defaults") {}
};

struct Replacement {
  const char* title;
  bool titleTranslated;
  const char* label;
  const char* switchKey;
  const char* textKey;
};

// The first four stand under "Main Page Strings", the others under "Passcode Strings".
constexpr Replacement kReplacements[] = {
    {"Device Information Text", false, "Enable Label", "userRequestsCustomDeviceText", "userCustomDeviceText"},
    {"Legal Text", false, "Enable Label", "userRequestsCustomLegalText", "userCustomLegalText"},
    {"Press Home To Unlock", false, "Use Custom Text", "useCustomActionText", "callToActionText"},
    {"Supervision Text", false, "Enable Label", "userRequestsCustomSupervisionText", "userCustomSupervisionText"},
    {"Enter Passcode", true, "Use Custom Text", "userRequestsCustomPasscodeEntryPromptStatus",
     "customPasscodeEntryStatus"},
    {"Touch ID does not recognize your fingerprint", true, "Use Custom Text", "userRequestsCustomMesaLockoutStatus",
     "customMesaLockoutStatus"},
    {"Touch ID or Enter Passcode", true, "Use Custom Text", "userRequestsCustomMesaEntryStatus",
     "customMesaEntryStatus"},
    {"Try Again", true, "Use Custom Text", "userRequestsCustomRetyPromptStatus", "customRetryText"},
    {"Your passcode is required to enabled Touch ID", true, "Use Custom Text",
     "userRequestsCustomMesaNeedsPasscodeStatus", "customMesaPasscodeStatus"},
    {"Wipe the home button to clean the sensor.", true, "Use Custom Text", "userRequestsCustomMesaDirtyStatus",
     "customMesaDirtyStatus"},
};

std::string replacementRow(const std::string& label, const std::string& key) {
  if (key != "callToActionText") return textRow(label, key);
  return R"(PSEditTextCell {"key":"callToActionText","label":")" + label +
         R"(","placeholder":"Press Home To Unlock"} set get)";
}

/// The rows with the text row of the one switch, of every switch ("all") or of none.
Lines expected(Texts& texts, const std::string& on) {
  Lines rows = {groupRow(texts.translated("Main Page Strings"))};
  for (const Replacement& each : kReplacements) {
    if (&each == &kReplacements[4]) rows.push_back(groupRow(texts.translated("Passcode Strings")));
    rows.push_back(groupRow(each.titleTranslated ? texts.translated(each.title) : texts.asWritten(each.title)));
    rows.push_back(switchRow(texts.translated(each.label), each.switchKey));
    if (on == "all" || on == each.switchKey) {
      rows.push_back(replacementRow(texts.translated("Text:"), each.textKey));
    }
  }
  return rows;
}

TEST_F(LockScreenStringsPage, ShowsTwelveHeadingsAndTenSwitchesOnAFreshInstall) {
  expectRows([](Texts& texts) { return expected(texts, ""); });
  EXPECT_EQ(page().specifiers().size(), 22U);
}

TEST_F(LockScreenStringsPage, OpensWithTheTextRowsWhoseSwitchesAreStoredOn) {
  Dictionary all;
  for (const Replacement& each : kReplacements) {
    expectRows([&](Texts& texts) { return expected(texts, each.switchKey); }, {{each.switchKey, true}});
    all.insert_or_assign(each.switchKey, true);
  }
  expectRows([](Texts& texts) { return expected(texts, "all"); }, all);
}

TEST_F(LockScreenStringsPage, InsertsEachTextRowUnderItsSwitchAndKeepsTheTextWhenItGoes) {
  Texts english(false);
  int at = 3;
  for (const Replacement& each : kReplacements) {
    if (&each == &kReplacements[4]) ++at;
    panel.preferences.domains.clear();
    panel.preferences.domains.clear();
    panel.host.navigation().popViewController(false);
    open();
    const std::string key = each.switchKey;
    panel.set(key, true);
    EXPECT_THAT(panel.events(), ElementsAre(write(R"({")" + key + R"(":true})"), darwinLine("settings"),
                                            insertLine(key, at, R"(["Text:"])")));
    EXPECT_EQ(wholeRows(page()), expected(english, key));
    EXPECT_EQ(frame::shownValue(panel.row(each.textKey)), std::nullopt);

    panel.type(each.textKey, "mine");
    panel.events();
    page().endEditing();
    panel.set(key, false);
    const auto dictionary = [&](const Value& value) {
      return dump(host::headless::toJson(Value(Dictionary{{key, value}, {each.textKey, "mine"}})));
    };
    EXPECT_THAT(panel.events(),
                ElementsAre(write(dictionary(true)), darwinLine("settings"), keyboardLine(false), kBarClearedLine,
                            write(dictionary(false)), darwinLine("settings"), removeLine(at, R"(["Text:"])")));
    EXPECT_EQ(wholeRows(page()), expected(english, ""));
    back();
    panel.events();
    at += 2;
  }
}

TEST_F(LockScreenStringsPage, ShowsAStoredTextAndStoresAnEmptiedOne) {
  open({{"userRequestsCustomRetyPromptStatus", true}, {"customRetryText", "Once more"}});
  EXPECT_EQ(frame::shownValue(panel.row("customRetryText")), Value("Once more"));
  panel.type("customRetryText", "");
  page().endEditing();
  EXPECT_EQ(stored(), R"({"customRetryText":"","userRequestsCustomRetyPromptStatus":true})");
}

TEST_F(LockScreenStringsPage, SavesTheTextWithTheButtonThatIsThereWhileTheKeyboardIsUp) {
  auto& opened = open({{"useCustomActionText", true}});
  panel.bundles.texts = {{"Save", "Sichern"}};
  panel.type("callToActionText", "Press");
  EXPECT_THAT(panel.events(), ElementsAre(keyboardLine(true), barLine("Sichern")));
  opened.navigationItem().rightBarButtonItem()->run();
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"callToActionText":"Press","useCustomActionText":true})"),
                                          darwinLine("settings"), keyboardLine(false), kBarClearedLine));
}

TEST_F(LockScreenStringsPage, StoresTheSwitchesOfTheLockScreenPageButChangesNoRows) {
  open();
  const Lines rows = wholeRows(page());
  writeForeignKey("disableLSDateTime", true);
  writeForeignKey("userRequestsCustomActionLabelColor", true);
  EXPECT_THAT(panel.events(),
              ElementsAre(write(R"({"disableLSDateTime":true})"), darwinLine("settings"),
                          write(R"({"disableLSDateTime":true,"userRequestsCustomActionLabelColor":true})"),
                          darwinLine("settings")));
  EXPECT_EQ(wholeRows(page()), rows);
}

TEST_F(LockScreenStringsPage, KeepsWhatTheLockScreenPageHadStoredWhenItWasOpened) {
  open({{"hideCancelButton", true}});
  panel.set("useCustomActionText", true);
  EXPECT_EQ(stored(), R"({"hideCancelButton":true,"useCustomActionText":true})");
}

}  // namespace lock_screen_strings_page_test
}  // namespace quellar::tests

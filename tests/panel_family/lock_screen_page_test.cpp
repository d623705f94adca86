// SPDX-License-Identifier: MIT
#include "pages/statusbar_lockscreen/lock_screen_page.h"

#include "panel_family/family_page.h"

namespace quellar::tests {
namespace lock_screen_page_test {

using namespace std::chrono_literals;
using platform::Array;
using platform::Dictionary;
using platform::PSListItemsController;
using platform::Value;
using testing::ElementsAre;
using testing::IsEmpty;

const Dictionary kCameraItem{{"cell", "PSLinkListCell"},
                             {"label", "Camera App"},
                             {"key", "userCustomCameraApp"},
                             {"detail", "KVQuellarListItemsController"},
                             {"applications", true}};

class LockScreenPage : public FamilyPage {
 protected:
  LockScreenPage() : FamilyPage("KVQuellarLockScreenListController", "LockScreen_Defaults") {
    panel.bundles.rowFiles["QuellarCameraApp"] = Array{kCameraItem};
    panel.applications.installed = {{"org.example.Lens.desktop", "Lens"}, {"org.example.Photo.desktop", "Photo"}};
  }

  pages::KVQuellarLockScreenListController& lockScreen(const Dictionary& stored = {}) {
    return dynamic_cast<pages::KVQuellarLockScreenListController&>(open(stored));
  }
};

Lines expected(Texts& texts, bool camera, bool dateTime) {
  const std::string cameraApp = texts.translated("Camera App");
  const auto toggle = [&](const char* label, const char* key) { return switchRow(texts.translated(label), key); };
  const auto group = [&](const char* title, const char* footer) {
    return groupRow(texts.translated(title), texts.translated(footer));
  };
  return joined(
      {{linkRow(texts.asWritten("Custom Lockscreen Strings"), "KVQuellarLockScreenStringsListController",
                "qlrAppAlertsSettingsIcon.png"),
        group("Animations",
              "When using two different wallpapers on homescreen and lockscreen by default the system will use a black "
              "fade when unlocking. This option removes the black fade."),
        toggle("Prevent Black Fade", "userRequestsRemovingBlackFade"),
        group("Behavior",
              "This only skips the passcode entry view after a respring. This does NOT skip having to enter your "
              "password"),
        toggle("Skip Passcode Screen After Respring", "userRequestsSkippingPasscodeRespring"),
        groupRow(texts.translated("Press Home To Unlock")), toggle("Disable Entirely", "showCallToActionNever"),
        toggle("Show Immediately", "showCallToActionImmediatly"),
        group("Camera Page",
              "Using a custom app is useful for those without a password. Working on bypassing it for everyone else."),
        toggle("Use Custom App", "userRequestsCustomCameraApp")},
       shownIf(camera,
               {R"(PSLinkListCell {"key":"userCustomCameraApp","label":"Camera App"} set get opens )"
                R"(KVQuellarListItemsController values ["org.example.Lens.desktop","org.example.Photo.desktop"] )"
                R"(titles ["Lens","Photo"])" +
                std::string(cameraApp == "Camera App" ? "" : " named " + cameraApp)}),
       {group("Charging Page", "This page is displayed for a brief period when plugged into a power source"),
        toggle("Disable Charging View", "userRequestsDisablingChargingView"), groupRow(texts.translated("Date & Time")),
        toggle("Hide Date/Time", "disableLSDateTime"), toggle("Vibrant Labels", "userRequestsVibrantLSClock")},
       shownIf(dateTime, {groupRow(texts.translated("Hide Date/Time From")),
                          segmentRow(texts.translated("Hide Date/Time From"), "userStyleForDateTimeHiding", 2,
                                     "[\"" + texts.asWritten("Today View") + "\",\"" + texts.asWritten("Main View") +
                                         "\",\"" + texts.asWritten("Both") + "\"]")}),
       {groupRow(texts.translated("Now Playing Page")),
        toggle("Disable Completely", "userRequestsDisablingNowPlayingView"),
        toggle("Remove Artwork", "userRequestsDisablingNowPlayingArtwork"),
        toggle("Remove Now Playing Blur", "userRequestsDisablingNowPlayingBlur"),
        group("Page Behavior",
              "Disabling app suggestions from the lockscreen will not affect app suggestions/handoff in other parts of "
              "the OS"),
        toggle("Disable App Suggestion", "userRequestsDisableLSHandoff"),
        toggle("Disable Camera Page", "disableCameraPage"),
        toggle("Disable Page Dots", "disableLSPageDots"),
        toggle("Disable Today Page", "disableLSTodayPage"),
        toggle("Time In Status Bar", "showTimeInLSStatusBar"),
        groupRow(texts.translated("Passcode Button Contents")),
        toggle("Hide Everything", "disablePasscodeButtonContents"),
        toggle("Hide Letters", "disablePasscodeButtonLetters"),
        group("Passcode Page Appearance",
              "Disabling blur darkening will result in a more vibrant passcode view. Turn on disabling both blur and "
              "blur darkening to remove the view entirely."),
        toggle("Disable Blur", "disableLSPSBlur"),
        toggle("Disable Blur Darkening", "disableLSPSBlurDarkening"),
        toggle("Disable Keypad Sounds", "disableLSPasscodeSound"),
        toggle("Hide Button Ring", "disableLSPasscodeRing"),
        toggle("Hide Cancel Button", "hideCancelButton"),
        toggle("Hide Emergency Button", "hideEmergencyButton")}});
}

TEST_F(LockScreenPage, ShowsItsRowsOnAFreshInstall) {
  expectRows([](Texts& texts) { return expected(texts, false, false); });
}

TEST_F(LockScreenPage, OpensWithEachBlockWhoseSwitchIsStoredOn) {
  expectRows([](Texts& texts) { return expected(texts, true, false); }, {{"userRequestsCustomCameraApp", true}});
  expectRows([](Texts& texts) { return expected(texts, false, true); }, {{"disableLSDateTime", true}});
  expectRows([](Texts& texts) { return expected(texts, true, true); },
             {{"userRequestsCustomCameraApp", true}, {"disableLSDateTime", true}});
}

TEST_F(LockScreenPage, ShowsTheNamesOfApplicationsAsTheSystemGivesThem) {
  panel.bundles.texts = {{"Camera App", "<Camera App>"}, {"Lens", "wrong"}, {"Photo", "wrong"}};
  open({{"userRequestsCustomCameraApp", true}});
  EXPECT_THAT(panel.row("userCustomCameraApp").titles(), ElementsAre("Lens", "Photo"));
  EXPECT_EQ(panel.row("userCustomCameraApp").name(), "<Camera App>");
  EXPECT_THAT(panel.bundles.lookups, testing::Not(testing::Contains("Lens")));
}

TEST_F(LockScreenPage, PostsTheSettingsForItsPlainSwitches) {
  expectPlainSwitches({"userRequestsRemovingBlackFade",
                       "userRequestsSkippingPasscodeRespring",
                       "showCallToActionNever",
                       "showCallToActionImmediatly",
                       "userRequestsDisablingChargingView",
                       "userRequestsVibrantLSClock",
                       "userRequestsDisablingNowPlayingView",
                       "userRequestsDisablingNowPlayingArtwork",
                       "userRequestsDisablingNowPlayingBlur",
                       "userRequestsDisableLSHandoff",
                       "disableCameraPage",
                       "disableLSPageDots",
                       "disableLSTodayPage",
                       "showTimeInLSStatusBar",
                       "disablePasscodeButtonContents",
                       "disablePasscodeButtonLetters",
                       "disableLSPSBlur",
                       "disableLSPSBlurDarkening",
                       "disableLSPasscodeSound",
                       "disableLSPasscodeRing",
                       "hideCancelButton",
                       "hideEmergencyButton"},
                      {darwinLine("settings")});
}

TEST_F(LockScreenPage, InsertsTheCameraAppUnderItsSwitchBeforeItPostsTheCameraUpdate) {
  open();
  const Lines closed = wholeRows(page());
  panel.set("userRequestsCustomCameraApp", true);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"userRequestsCustomCameraApp":true})"), darwinLine("settings"),
                                          insertLine("userRequestsCustomCameraApp", 10, R"(["Camera App"])"),
                                          darwinLine("cameraappupdate")));
  panel.set("userRequestsCustomCameraApp", false);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"userRequestsCustomCameraApp":false})"), darwinLine("settings"),
                                          removeLine(10, R"(["Camera App"])"), darwinLine("cameraappupdate")));
  EXPECT_EQ(wholeRows(page()), closed);
}

TEST_F(LockScreenPage, InsertsTheDateTimeBlockAfterTheVibrantLabels) {
  open();
  panel.set("disableLSDateTime", true);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"disableLSDateTime":true})"), darwinLine("settings"),
                                          insertLine("userRequestsVibrantLSClock", 15,
                                                     R"(["Hide Date/Time From","Hide Date/Time From"])")));
  Texts english(false);
  EXPECT_EQ(wholeRows(page()), expected(english, false, true));
  EXPECT_EQ(frame::shownValue(panel.row("userStyleForDateTimeHiding")), Value(2));
  panel.set("userStyleForDateTimeHiding", 3);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"disableLSDateTime":true,"userStyleForDateTimeHiding":3})"),
                                          darwinLine("settings")));
  panel.set("disableLSDateTime", false);
  EXPECT_THAT(panel.events(),
              ElementsAre(write(R"({"disableLSDateTime":false,"userStyleForDateTimeHiding":3})"),
                          darwinLine("settings"), removeLine(15, R"(["Hide Date/Time From","Hide Date/Time From"])")));
  EXPECT_EQ(wholeRows(page()), expected(english, false, false));
}

TEST_F(LockScreenPage, StoresTheSwitchesOfTheStringsPageButChangesNoRows) {
  for (const auto* key : {"useCustomActionText", "userRequestsCustomActionLabelColor",
                          "userRequestsCustomMesaDirtyStatus", "userRequestsCustomPasscodeEntryPromptStatus",
                          "userRequestsCustomMesaLockoutStatus", "userRequestsCustomMesaEntryStatus",
                          "userRequestsCustomRetyPromptStatus", "userRequestsCustomMesaNeedsPasscodeStatus"}) {
    panel.preferences.domains.clear();
    open();
    const Lines rows = wholeRows(page());
    for (const bool on : {true, false}) {
      writeForeignKey(key, on);
      EXPECT_THAT(panel.events(), ElementsAre(write(std::string(R"({")") + key + (on ? R"(":true})" : R"(":false})")),
                                              darwinLine("settings")));
      EXPECT_EQ(wholeRows(page()), rows) << key;
    }
  }
}

TEST_F(LockScreenPage, NeverListsTheLabelColorByItself) {
  auto& opened = open({{"userRequestsCustomActionLabelColor", true}});
  EXPECT_THROW(rowNamed("Label Color"), std::out_of_range);
  // It goes under a row of its key, wherever such a row is listed.
  const auto toggle =
      platform::PSSpecifier::preferenceSpecifierNamed("Color", &opened, {}, {}, "", platform::PSCellType::PSSwitchCell);
  toggle->setProperty("key", Value("userRequestsCustomActionLabelColor"));
  opened.insertSpecifier(toggle, "hideCancelButton", false);
  panel.events();
  opened.updateSpecifiersWithValue(true, "userRequestsCustomActionLabelColor");
  const std::size_t at = *opened.indexOfSpecifier(*toggle) + 1;
  EXPECT_EQ(wholeRows(opened).at(at), colorRow("Label Color", "userCustomActionLabelColor", "#ffffff",
                                               "LockScreen_Defaults", "setActionLabelColor"));
  EXPECT_THAT(panel.events(), ElementsAre(insertLine("userRequestsCustomActionLabelColor", static_cast<int>(at),
                                                     R"(["Label Color"])")));
  opened.updateSpecifiersWithValue(false, "userRequestsCustomActionLabelColor");
  EXPECT_THAT(panel.events(), ElementsAre(removeLine(static_cast<int>(at), R"(["Label Color"])")));
}

TEST_F(LockScreenPage, StoresAPickedLabelColorAndReloadsATenthOfASecondLater) {
  auto& opened = open({{"hideCancelButton", true}});
  const auto& row = opened.dynamicSpecs("customTextColorSpec").front();
  row->action()->run(*row);
  EXPECT_EQ(dialogStart(), "#ffffff");
  panel.events();
  pick({0x12, 0xAB, 0xEF, 0.5});
  EXPECT_THAT(panel.events(),
              ElementsAre(kDismissLine, write(R"({"hideCancelButton":true,"userCustomActionLabelColor":"#12abef"})"),
                          notifyPostLine("settings")));
  panel.advance(99'999'999ns);
  EXPECT_THAT(panel.events(), IsEmpty());
  panel.advance(1ns);
  EXPECT_THAT(panel.events(), ElementsAre(R"({"event":"reload","what":"page","t":0.1})"));
  row->action()->run(*row);
  EXPECT_EQ(dialogStart(), "#12abef");
}

TEST_F(LockScreenPage, StartsTheLabelColorFromWhiteWhereNoColorIsStored) {
  for (const Value& odd : {Value("white"), Value("#12"), Value(5)}) {
    auto& opened = open({{"userCustomActionLabelColor", odd}});
    const auto& row = opened.dynamicSpecs("customTextColorSpec").front();
    row->action()->run(*row);
    EXPECT_EQ(dialogStart(), "#ffffff");
  }
}

TEST_F(LockScreenPage, PicksTheClockColorFromTheSettingsDomainIntoTheLegacyOne) {
  auto& opened = lockScreen();
  panel.store("lockscreenClockCustomColor", "#102030");
  panel.preferences.setAppValue("lockscreenClockCustomColor", "#ff0000", "com.vantorick.quellar");
  opened.setLockScreenClockColor();
  EXPECT_EQ(dialogStart(), "#102030");
  panel.events();
  pick({1, 2, 3, 0.25});
  EXPECT_THAT(
      panel.events(),
      ElementsAre(
          kDismissLine,
          R"({"event":"write","domain":"com.vantorick.quellar","key":"lockscreenClockCustomColor","value":"#010203","t":0.0})",
          R"({"event":"post","centre":"darwin","name":"com.vantorick.quellar.settings","object":null,"userInfo":null,"immediately":true,"through":"notify_post","t":0.0})"));
  panel.advance(99'999'999ns);
  EXPECT_THAT(panel.events(), IsEmpty());
  panel.advance(1ns);
  EXPECT_THAT(panel.events(), ElementsAre(R"({"event":"reload","what":"page","t":0.1})"));
  EXPECT_EQ(panel.stored("lockscreenClockCustomColor"), R"("#102030")");
  EXPECT_EQ(stored(), "null");
}

TEST_F(LockScreenPage, StartsTheClockColorFromWhiteAndStoresNothingWhenItIsCancelled) {
  auto& opened = lockScreen();
  for (const Value& odd : {Value("nothing"), Value(7), Value(Dictionary{})}) {
    panel.store("lockscreenClockCustomColor", odd);
    opened.setLockScreenClockColor();
    EXPECT_EQ(dialogStart(), "#ffffff");
  }
  panel.events();
  panel.host.navigation().pressDialogButton(0);
  panel.advance(1s);
  EXPECT_THAT(panel.events(), ElementsAre(kDismissLine));
}

TEST_F(LockScreenPage, RunsItsColorActionsForAButtonOfItsRowFile) {
  const auto button = [this](const std::string& selector) {
    panel.bundles.rowFiles["QuellarCameraApp"] =
        Array{Dictionary{{"cell", "PSButtonCell"}, {"label", "Pick"}, {"action", selector}}};
    open({{"userRequestsCustomCameraApp", true}, {"userCustomActionLabelColor", "#0a0b0c"}});
    panel.store("lockscreenClockCustomColor", "#102030");
    tap("Pick");
    const std::string start = dialogStart();
    panel.events();
    pick({1, 2, 3, 1});
    return start;
  };
  EXPECT_EQ(button("setActionLabelColor"), "#0a0b0c");
  EXPECT_THAT(
      panel.events(),
      ElementsAre(kDismissLine, write(R"({"userCustomActionLabelColor":"#010203","userRequestsCustomCameraApp":true})"),
                  notifyPostLine("settings")));
  EXPECT_EQ(button("setLockScreenClockColor"), "#102030");
  EXPECT_EQ(panel.stored("lockscreenClockCustomColor", "com.vantorick.quellar"), R"("#010203")");
}

TEST_F(LockScreenPage, ReloadsNothingOnceItIsGone) {
  lockScreen().setLockScreenClockColor();
  pick({1, 2, 3, 1});
  back();
  panel.events();
  panel.advance(1s);
  EXPECT_THAT(panel.events(), IsEmpty());
}

TEST_F(LockScreenPage, ShowsSaveWhileTheKeyboardIsUp) {
  auto& opened = open();
  panel.bundles.texts = {{"Save", "Sichern"}};
  panel.host.navigation().setKeyboardVisible(true);
  EXPECT_THAT(panel.events(), ElementsAre(keyboardLine(true), barLine("Sichern")));
  EXPECT_EQ(opened.navigationItem().rightBarButtonItem()->action, "Save");
  panel.host.navigation().setKeyboardVisible(false);
  EXPECT_THAT(panel.events(), ElementsAre(keyboardLine(false), kBarClearedLine));
}

TEST_F(LockScreenPage, OpensTheStringsPageFromItsLinkAndReturns) {
  open();
  tap("Custom Lockscreen Strings");
  EXPECT_THAT(panel.events(),
              ElementsAre(R"({"event":"push","page":"KVQuellarLockScreenStringsListController","t":0.0})"));
  EXPECT_EQ(page().title(), "Custom Lockscreen Strings");
  back();
  EXPECT_THAT(
      panel.events(),
      ElementsAre(R"({"event":"pop","page":"KVQuellarLockScreenStringsListController","animated":true,"t":0.0})"));
  EXPECT_EQ(page().className(), "KVQuellarLockScreenListController");
}

TEST_F(LockScreenPage, OverwritesWithItsOlderCopyWhatTheStringsPageStored) {
  open({{"hideCancelButton", true}});
  tap("Custom Lockscreen Strings");
  panel.set("useCustomActionText", true);
  EXPECT_EQ(stored(), R"({"hideCancelButton":true,"useCustomActionText":true})");
  back();
  panel.set("hideEmergencyButton", true);
  EXPECT_EQ(stored(), R"({"hideCancelButton":true,"hideEmergencyButton":true})");
}

class CameraApp : public LockScreenPage {
 protected:
  /// The titles of the list that the row opens, the chosen one with a mark.
  Lines choices() {
    tap("Camera App");
    auto& list = dynamic_cast<PSListItemsController&>(page());
    Lines lines;
    for (std::size_t at = 1; at < list.specifiers().size(); ++at) {
      lines.push_back((list.checkedIndex() == at ? "* " : "") + list.specifiers()[at]->name());
    }
    return lines;
  }
};

TEST_F(CameraApp, IsPickedAmongTheApplicationsThroughThePagesHandler) {
  open({{"userRequestsCustomCameraApp", true}});
  EXPECT_THAT(choices(), ElementsAre("Lens", "Photo"));
  panel.events();
  tap("Photo");
  EXPECT_THAT(
      panel.events(),
      ElementsAre(write(R"({"userCustomCameraApp":"org.example.Photo.desktop","userRequestsCustomCameraApp":true})"),
                  darwinLine("settings")));
  back();
  EXPECT_THAT(choices(), ElementsAre("Lens", "* Photo"));
}

TEST_F(CameraApp, ShowsNoMarkForAnApplicationThatIsNotInstalledAndKeepsIt) {
  open({{"userRequestsCustomCameraApp", true}, {"userCustomCameraApp", "org.example.Gone.desktop"}});
  EXPECT_THAT(choices(), ElementsAre("Lens", "Photo"));
  back();
  panel.set("hideCancelButton", true);
  EXPECT_EQ(
      stored(),
      R"({"hideCancelButton":true,"userCustomCameraApp":"org.example.Gone.desktop","userRequestsCustomCameraApp":true})");
}

TEST_F(CameraApp, OffersNothingWhereNoApplicationIsInstalled) {
  panel.applications.installed.clear();
  open({{"userRequestsCustomCameraApp", true}});
  EXPECT_EQ(wholeRows(page()).at(10), R"(PSLinkListCell {"key":"userCustomCameraApp","label":"Camera App"} set get )"
                                      R"(opens KVQuellarListItemsController)");
  EXPECT_EQ(panel.row("userCustomCameraApp").cell()->control(), platform::Control::picker);
  EXPECT_THAT(choices(), IsEmpty());
}

TEST_F(CameraApp, OffersThousandsOfApplications) {
  panel.applications.installed.clear();
  for (int number = 0; number < 5000; ++number) {
    const std::string name = "app" + std::to_string(number);
    panel.applications.installed.push_back({name + ".desktop", name});
  }
  open({{"userRequestsCustomCameraApp", true}, {"userCustomCameraApp", "app4999.desktop"}});
  const Lines all = choices();
  ASSERT_EQ(all.size(), 5000U);
  EXPECT_EQ(all.front(), "app0");
  EXPECT_EQ(all.back(), "* app4999");
  tap("app1234");
  EXPECT_EQ(stored(), R"({"userCustomCameraApp":"app1234.desktop","userRequestsCustomCameraApp":true})");
}

TEST_F(CameraApp, IsTheFirstUsableRowOfItsFileAlone) {
  panel.bundles.rowFiles["QuellarCameraApp"] =
      Array{Value("no item"), Dictionary{{"cell", "PSWheelCell"}},
            Dictionary{{"cell", "PSEditTextCell"}, {"label", "App"}, {"key", "userCustomCameraApp"}},
            Dictionary{{"cell", "PSSwitchCell"}, {"label", "More"}, {"key", "more"}}};
  open({{"userRequestsCustomCameraApp", true}});
  EXPECT_EQ(wholeRows(page()).at(10), textRow("App", "userCustomCameraApp"));
  EXPECT_EQ(wholeRows(page()).size(), 36U);
  panel.type("userCustomCameraApp", "x");
  page().endEditing();
  EXPECT_EQ(stored(), R"({"userCustomCameraApp":"x","userRequestsCustomCameraApp":true})");
}

TEST_F(CameraApp, IsMissingWhereItsFileIsMissingEmptyOrWithoutUsableItems) {
  for (const bool present : {false, true}) {
    for (const Array& items : {Array{}, Array{1, "x", Dictionary{}, Dictionary{{"cell", 5}}}}) {
      panel.bundles.rowFiles.clear();
      if (present) panel.bundles.rowFiles["QuellarCameraApp"] = items;
      panel.preferences.domains.clear();
      open({{"userRequestsCustomCameraApp", true}});
      Texts english(false);
      EXPECT_EQ(wholeRows(page()), expected(english, false, false));
      panel.set("userRequestsCustomCameraApp", true);
      panel.set("userRequestsCustomCameraApp", false);
      EXPECT_THAT(panel.events(),
                  ElementsAre(write(R"({"userRequestsCustomCameraApp":true})"), darwinLine("settings"),
                              darwinLine("cameraappupdate"), write(R"({"userRequestsCustomCameraApp":false})"),
                              darwinLine("settings"), darwinLine("cameraappupdate")));
    }
  }
}

}  // namespace lock_screen_page_test
}  // namespace quellar::tests

// SPDX-License-Identifier: MIT
#include "pages/homescreen_controlcentre/app_switcher_page.h"

#include "panel_family/family_page.h"

namespace quellar::tests {
namespace app_switcher_page_test {

using namespace std::chrono_literals;
using platform::Dictionary;
using platform::PSListItemsController;
using testing::ElementsAre;

class AppSwitcherPage : public FamilyPage {
 protected:
  AppSwitcherPage() : FamilyPage("KVQuellarAppSwitcherListController", "AppSwitcher_Defaults") {}
};

constexpr auto kStrengthLists =
    R"(values [0,10,20,30,60,90,100] titles ["None","Small","Medium","Large","Extra Large","Extra Extra Large",)"
    R"("Extra Extra Extra Large"] short ["None","Small","Medium","Large","Extra Large","XX Large","XXX Large"])";
constexpr auto kSaturationValues = "[0.0,0.69999,1,1.2,1.3,1.39999,1.5,1.6,1.8,2]";
constexpr auto kSaturationTitles =
    R"(["Desaturate","Desaturate Light","None","Extra Light","Light","Medium Light","Medium","Medium Strong",)"
    R"("Strong","Extra Strong"])";

Lines backdrop(Texts& texts, bool transparent, const std::string& style, const std::string& strength,
               const std::string& saturation, const std::string& darkening) {
  for (const auto* title : {"Transparent", "Normal", "Saturated Blur", "Small", "XX Large", "Desaturate", "Strong"}) {
    texts.asWritten(title);
  }
  return {pickerRow(texts.translated("Blur style"), style, transparent ? kLookValuesWithTransparent : kLookValues,
                    transparent ? kLookTitlesWithTransparent : kLookTitles),
          R"(PSLinkListCell {"key":")" + strength + R"(","label":")" + texts.translated("Blur Strength") +
              R"("} set get opens KVQuellarListItemsController )" + kStrengthLists,
          pickerRow(texts.translated("Saturation Amount"), saturation, kSaturationValues, kSaturationTitles),
          R"(PSSliderCell {"default":0,"key":")" + darkening + R"(","label":")" + texts.translated("Darkening Amount") +
              R"(","max":1,"min":0,"showValue":true} set get)"};
}

Lines expected(Texts& texts, bool cards, bool wallpaper, bool cardWallpaper) {
  const auto toggle = [&](const char* label, const char* key) { return switchRow(texts.translated(label), key); };
  return joined(
      {{groupRow(texts.translated("Force Touch")), toggle("Disable Pop From Side", "disablePopFromSide"),
        toggle("Disable Side Peek Haptic", "playInitialHapticFeedback"),
        toggle("Disable Side Pop Haptic", "playCommitHapticFeedback"), groupRow(texts.translated("Switcher Cards")),
        toggle("Display Icon Badges", "userRequestsSwitcherIconBadges"),
        toggle("Hide Icon & Label", "hideSwitcherIconAndLabel"),
        toggle("Hide Inactive App Cards", "userRemovesInactiveAppsFromSwitcher"),
        toggle("Limit Displayed Cards", "userLimitsMaxSwitcherCards")},
       shownIf(
           cards,
           {R"(PSStaticTextCell {"cellClass":{"$class":"KVQuellarStepperCell"},"default":10,)"
            R"("defaultsKey":"AppSwitcher_Defaults","enabled":true,"key":"switcherMaxCards","label":")" +
            texts.translated("Maximum Cards") +
            R"(","maximumValue":100,"minimumValue":1,"requestsNotification":false,"updatesLabelValue":true} set get)"}),
       {groupRow(texts.translated("Switcher Wallpaper")), toggle("No Blur", "userDisablesAppSwitcherBlur"),
        toggle("Customize Appearance", "usesCustomSwitcherWallpaper")},
       shownIf(wallpaper, backdrop(texts, false, "switcherBackgroundStyle", "switcherBackgroundBlurStrength",
                                   "switcherBackgroundSaturationAmount", "switcherBackgroundDarkeningAmount")),
       {groupRow(texts.translated("Switcher Home Card Wallpaper")),
        toggle("Customize Appearance", "usesCustomSwitcherCardWallpaper")},
       shownIf(cardWallpaper,
               backdrop(texts, true, "switcherForegroundWallpaperStyle", "switcherForegroundBlurStrength",
                        "switcherForegroundSaturationAmount", "switcherForegroundDarkeningAmount"))});
}

Lines inEnglish(bool cards, bool wallpaper, bool cardWallpaper) {
  Texts english(false);
  return expected(english, cards, wallpaper, cardWallpaper);
}

constexpr auto kBackdropLabels = R"(["Blur style","Blur Strength","Saturation Amount","Darkening Amount"])";

TEST_F(AppSwitcherPage, ShowsItsRowsOnAFreshInstall) {
  expectRows([](Texts& texts) { return expected(texts, false, false, false); });
}

TEST_F(AppSwitcherPage, OpensWithTheBlocksWhoseSwitchesAreStoredOn) {
  expectRows([](Texts& texts) { return expected(texts, true, false, false); }, {{"userLimitsMaxSwitcherCards", true}});
  expectRows([](Texts& texts) { return expected(texts, false, true, false); }, {{"usesCustomSwitcherWallpaper", true}});
  expectRows([](Texts& texts) { return expected(texts, false, false, true); },
             {{"usesCustomSwitcherCardWallpaper", true}});
}

TEST_F(AppSwitcherPage, PostsTheSettingsForItsPlainSwitches) {
  expectPlainSwitches(
      {"disablePopFromSide", "playInitialHapticFeedback", "playCommitHapticFeedback", "userRequestsSwitcherIconBadges",
       "hideSwitcherIconAndLabel", "userRemovesInactiveAppsFromSwitcher", "userDisablesAppSwitcherBlur"},
      {darwinLine("settings")});
}

TEST_F(AppSwitcherPage, InsertsAndRemovesEachBlockUnderItsOwnSwitch) {
  struct Block {
    const char* key;
    int at;
    const char* labels;
  };
  for (const Block& each : {Block{"userLimitsMaxSwitcherCards", 9, R"(["Maximum Cards"])"},
                            Block{"usesCustomSwitcherWallpaper", 12, kBackdropLabels},
                            Block{"usesCustomSwitcherCardWallpaper", 14, kBackdropLabels}}) {
    panel.preferences.domains.clear();
    open();
    const std::string key = each.key;
    panel.set(key, true);
    EXPECT_THAT(panel.events(), ElementsAre(write(R"({")" + key + R"(":true})"), darwinLine("settings"),
                                            insertLine(key, each.at, each.labels)));
    EXPECT_EQ(wholeRows(page()), inEnglish(each.at == 9, each.at == 12, each.at == 14));
    panel.set(key, false);
    EXPECT_THAT(panel.events(), ElementsAre(write(R"({")" + key + R"(":false})"), darwinLine("settings"),
                                            removeLine(each.at, each.labels)));
    EXPECT_EQ(wholeRows(page()), inEnglish(false, false, false));
  }
}

TEST_F(AppSwitcherPage, RemovesOnlyTheRowsOfTheBackdropThatIsSwitchedOff) {
  open({{"usesCustomSwitcherWallpaper", true}, {"usesCustomSwitcherCardWallpaper", true}});
  panel.set("usesCustomSwitcherWallpaper", false);
  EXPECT_EQ(wholeRows(page()), inEnglish(false, false, true));
  panel.set("usesCustomSwitcherWallpaper", true);
  panel.set("usesCustomSwitcherCardWallpaper", false);
  EXPECT_EQ(wholeRows(page()), inEnglish(false, true, false));
}

TEST_F(AppSwitcherPage, StoresAPickedChoiceAsItIs) {
  open({{"usesCustomSwitcherWallpaper", true}});
  tap("Saturation Amount");
  auto& list = dynamic_cast<PSListItemsController&>(page());
  EXPECT_EQ(list.checkedIndex(), std::nullopt);
  tap("Desaturate Light");
  EXPECT_EQ(list.checkedIndex(), 2U);
  back();
  EXPECT_EQ(stored(), R"({"switcherBackgroundSaturationAmount":0.69999,"usesCustomSwitcherWallpaper":true})");
  // Two looks share a value; the first of them carries the mark when the list is opened again.
  tap("Blur style");
  tap("More Transparent White (No Blur)");
  EXPECT_EQ(dynamic_cast<PSListItemsController&>(page()).checkedIndex(), 6U);
  back();
  EXPECT_EQ(
      stored(),
      R"({"switcherBackgroundSaturationAmount":0.69999,"switcherBackgroundStyle":16,"usesCustomSwitcherWallpaper":true})");
  tap("Blur style");
  EXPECT_EQ(dynamic_cast<PSListItemsController&>(page()).checkedIndex(), 2U);
}

TEST_F(AppSwitcherPage, StoresADraggedDarkeningAsARealAndOffersNoTypedEntry) {
  open({{"usesCustomSwitcherCardWallpaper", true}});
  EXPECT_EQ(sliderValue("switcherForegroundDarkeningAmount"), 0);
  EXPECT_EQ(panel.row("switcherForegroundDarkeningAmount").cell()->control(), platform::Control::slider);
  page().userMovesSlider(panel.row("switcherForegroundDarkeningAmount"), 1);
  EXPECT_THAT(panel.events(),
              ElementsAre(write(R"({"switcherForegroundDarkeningAmount":1.0,"usesCustomSwitcherCardWallpaper":true})"),
                          darwinLine("settings")));
}

TEST_F(AppSwitcherPage, StoresTheCardsOnEveryStepWithTheSettingsPostAlone) {
  open({{"userLimitsMaxSwitcherCards", true}});
  EXPECT_EQ(stepperValue("switcherMaxCards"), 10);
  step("switcherMaxCards", -1);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"switcherMaxCards":9.0,"userLimitsMaxSwitcherCards":true})"),
                                          kSynchronizeLine, notifyPostLine("settings")));
  EXPECT_EQ(dynamic_cast<cells::KVQuellarStepperCell&>(*panel.row("switcherMaxCards").cell()).label().text, "9");
  for (int presses = 0; presses < 12; ++presses) step("switcherMaxCards", -1);
  EXPECT_EQ(stored(), R"({"switcherMaxCards":1.0,"userLimitsMaxSwitcherCards":true})");
  for (int presses = 0; presses < 120; ++presses) step("switcherMaxCards", 1);
  EXPECT_EQ(stored(), R"({"switcherMaxCards":100.0,"userLimitsMaxSwitcherCards":true})");
}

TEST_F(AppSwitcherPage, TakesTheCardsOverBeforeItsNextWriteAndNothingElse) {
  auto& opened = open({{"userLimitsMaxSwitcherCards", true}});
  step("switcherMaxCards", 1);
  EXPECT_EQ(opened.userDefaults(), (Dictionary{{"userLimitsMaxSwitcherCards", true}}));
  panel.store(
      "AppSwitcher_Defaults",
      Dictionary{{"userLimitsMaxSwitcherCards", false}, {"switcherMaxCards", 42.0}, {"switcherBackgroundStyle", 9}});
  panel.set("disablePopFromSide", true);
  EXPECT_EQ(stored(), R"({"disablePopFromSide":true,"switcherMaxCards":42.0,"userLimitsMaxSwitcherCards":true})");
}

TEST_F(AppSwitcherPage, PicksTheClockColorInTheLegacyDomain) {
  auto& opened = dynamic_cast<pages::KVQuellarAppSwitcherListController&>(open());
  panel.store("lockscreenClockCustomColor", "#102030");
  panel.preferences.setAppValue("lockscreenClockCustomColor", "#ff0000", "com.vantorick.quellar");
  opened.setLockScreenClockColor();
  EXPECT_EQ(dialogStart(), "#ff0000");
  panel.events();
  pick({1, 2, 3, 0.25});
  EXPECT_THAT(
      panel.events(),
      ElementsAre(
          kDismissLine,
          R"({"event":"write","domain":"com.vantorick.quellar","key":"lockscreenClockCustomColor","value":"#010203","t":0.0})",
          R"({"event":"post","centre":"darwin","name":"com.vantorick.quellar.settings","object":null,"userInfo":null,"immediately":true,"through":"notify_post","t":0.0})"));
  panel.advance(100ms);
  EXPECT_THAT(panel.events(), ElementsAre(R"({"event":"reload","what":"page","t":0.1})"));
  opened.setLockScreenClockColor();
  EXPECT_EQ(dialogStart(), "#010203");
}

TEST_F(AppSwitcherPage, StartsTheClockColorFromWhiteWhereTheLegacyDomainHasNone) {
  auto& opened = dynamic_cast<pages::KVQuellarAppSwitcherListController&>(open());
  panel.store("lockscreenClockCustomColor", "#102030");
  opened.setLockScreenClockColor();
  EXPECT_EQ(dialogStart(), "#ffffff");
}

}  // namespace app_switcher_page_test
}  // namespace quellar::tests

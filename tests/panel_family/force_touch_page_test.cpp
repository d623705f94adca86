// SPDX-License-Identifier: MIT
#include "panel_family/family_page.h"

namespace quellar::tests {
namespace force_touch_page_test {

using namespace std::chrono_literals;
using platform::Dictionary;
using platform::Value;
using testing::ElementsAre;
using testing::IsEmpty;

class ForceTouchPage : public FamilyPage {
 protected:
  ForceTouchPage() : FamilyPage("KVQuellarForceTouchListController", "ForceTouch_Defaults") {}
};

struct Shown {
  bool useCustomColor = false;
  bool customColor = false;
  bool alpha = false;
  bool labelColors = false;
};

Lines expected(Texts& texts, const Shown& shown) {
  const auto toggle = [&](const char* label, const char* key) { return switchRow(texts.translated(label), key); };
  const auto color = [&](const char* label, const char* key, const char* action) {
    return colorRow(texts.translated(label), key, "#000000", "ForceTouch_Defaults", action);
  };
  return joined(
      {{groupRow(texts.asWritten("Control Center Modules"), texts.translated("Customize Module Actions")),
        linkRow(texts.asWritten("Custom Timers"), "KVQuellarCustomCCTimersListController",
                "qlrAppForceTouchSettingsIcon.png"),
        groupRow(texts.translated("Shortcut Menu Appearance"),
                 texts.translated("By default 'Colorize Background Blur' will color the background based on the "
                                  "dominant color of the app icon.")),
        toggle("Colorize Background Blur", "shortcutsColorizeBlur")},
       shownIf(shown.useCustomColor, {toggle("Use Custom Color", "usesCustomColorForBackgroundBlur")}),
       shownIf(shown.customColor,
               {color("Background Blur Color", "shortcutMenuBackgroundBlurColor", "setBackgroundBlurColor")}),
       {toggle("Colorize Labels", "shortcutsColorizeLabels"),
        toggle("Hide Wallpaper Blur", "shortcutsHideBackgroundBlur"),
        toggle("Dim Icons Instead of Blur", "shortcutsDimIcons"),
        toggle("Remove Divider Lines", "shortcutsHideDividerLines")},
       shownIf(shown.alpha, {groupRow(texts.translated("Dimmed Icon Alpha")),
                             typedSliderRow(texts.translated("Dimmed Icon Alpha"), "shortcutsDimmedIconAlpha", "0.2",
                                            "0.0", "1.0")}),
       shownIf(shown.labelColors, {groupRow(texts.translated("Shortcut Menu Colors")),
                                   color("Title Text Color", "shortcutMenuTextColor", "setTitleColor"),
                                   color("Subtitle Text Color", "shortcutMenuSubtitleTextColor", "setSubtitleColor")}),
       {groupRow(texts.translated("Shortcuts")),
        toggle("Remove Beta Feedback", "userRequestsRemovingBetaFeedbackShortcut"),
        toggle("Remove Share App", "userRequestsRemovingShareShortcut"),
        toggle("Reverse Order", "userRequestsReversedShortcutOrder")}});
}

Lines inEnglish(const Shown& shown) {
  Texts english(false);
  return expected(english, shown);
}

constexpr auto kColorLabels = R"(["Shortcut Menu Colors","Title Text Color","Subtitle Text Color"])";
constexpr auto kAlphaLabels = R"(["Dimmed Icon Alpha","Dimmed Icon Alpha"])";

TEST_F(ForceTouchPage, ShowsItsRowsOnAFreshInstall) {
  expectRows([](Texts& texts) { return expected(texts, {}); });
}

TEST_F(ForceTouchPage, OpensWithTheBlocksWhoseSwitchesAreStoredOn) {
  expectRows([](Texts& texts) { return expected(texts, {.useCustomColor = true}); }, {{"shortcutsColorizeBlur", true}});
  expectRows([](Texts& texts) { return expected(texts, {.useCustomColor = true, .customColor = true}); },
             {{"shortcutsColorizeBlur", true}, {"usesCustomColorForBackgroundBlur", true}});
  expectRows([](Texts& texts) { return expected(texts, {.alpha = true}); }, {{"shortcutsDimIcons", true}});
  expectRows([](Texts& texts) { return expected(texts, {.labelColors = true}); }, {{"shortcutsColorizeLabels", true}});
  expectRows([](Texts& texts) { return expected(texts, {.alpha = true, .labelColors = true}); },
             {{"shortcutsDimIcons", true}, {"shortcutsColorizeLabels", true}});
}

TEST_F(ForceTouchPage, HidesTheBlurColorWhereTheOuterSwitchIsOffWhenItOpens) {
  expectRows([](Texts& texts) { return expected(texts, {}); }, {{"usesCustomColorForBackgroundBlur", true}});
}

TEST_F(ForceTouchPage, PostsTheSettingsForItsPlainSwitches) {
  expectPlainSwitches(
      {"shortcutsHideBackgroundBlur", "shortcutsHideDividerLines", "userRequestsRemovingBetaFeedbackShortcut",
       "userRequestsRemovingShareShortcut", "userRequestsReversedShortcutOrder"},
      {darwinLine("settings")});
}

TEST_F(ForceTouchPage, InsertsTheNestedSwitchAndColorOneUnderTheOther) {
  open();
  panel.set("shortcutsColorizeBlur", true);
  panel.set("usesCustomColorForBackgroundBlur", true);
  EXPECT_THAT(panel.events(),
              ElementsAre(write(R"({"shortcutsColorizeBlur":true})"), darwinLine("settings"),
                          insertLine("shortcutsColorizeBlur", 4, R"(["Use Custom Color"])"),
                          write(R"({"shortcutsColorizeBlur":true,"usesCustomColorForBackgroundBlur":true})"),
                          darwinLine("settings"),
                          insertLine("usesCustomColorForBackgroundBlur", 5, R"(["Background Blur Color"])")));
  EXPECT_EQ(wholeRows(page()), inEnglish({.useCustomColor = true, .customColor = true}));
  panel.set("usesCustomColorForBackgroundBlur", false);
  panel.set("shortcutsColorizeBlur", false);
  EXPECT_THAT(panel.events(),
              ElementsAre(write(R"({"shortcutsColorizeBlur":true,"usesCustomColorForBackgroundBlur":false})"),
                          darwinLine("settings"), removeLine(5, R"(["Background Blur Color"])"),
                          write(R"({"shortcutsColorizeBlur":false,"usesCustomColorForBackgroundBlur":false})"),
                          darwinLine("settings"), removeLine(4, R"(["Use Custom Color"])")));
  EXPECT_EQ(wholeRows(page()), inEnglish({}));
}

TEST_F(ForceTouchPage, LeavesTheBlurColorWhereItIsWhenTheOuterSwitchGoesOff) {
  open({{"shortcutsColorizeBlur", true}, {"usesCustomColorForBackgroundBlur", true}});
  panel.set("shortcutsColorizeBlur", false);
  EXPECT_THAT(panel.events(),
              ElementsAre(write(R"({"shortcutsColorizeBlur":false,"usesCustomColorForBackgroundBlur":true})"),
                          darwinLine("settings"), removeLine(4, R"(["Use Custom Color"])")));
  EXPECT_EQ(wholeRows(page()), inEnglish({.customColor = true}));
  // Back on, the switch comes back above the colour, which doesn't come a second time.
  panel.set("shortcutsColorizeBlur", true);
  EXPECT_EQ(wholeRows(page()), inEnglish({.useCustomColor = true, .customColor = true}));
  panel.set("usesCustomColorForBackgroundBlur", true);
  EXPECT_EQ(wholeRows(page()), inEnglish({.useCustomColor = true, .customColor = true}));
  // Built anew with the outer switch off, the page hides both.
  panel.set("shortcutsColorizeBlur", false);
  open();
  EXPECT_EQ(wholeRows(page()), inEnglish({}));
}

TEST_F(ForceTouchPage, BringsBackTheSwitchAloneWhereTheBlurColorIsNotShown) {
  open({{"usesCustomColorForBackgroundBlur", true}});
  panel.set("shortcutsColorizeBlur", true);
  EXPECT_EQ(wholeRows(page()), inEnglish({.useCustomColor = true}));
}

TEST_F(ForceTouchPage, InsertsTheAlphaAfterTheDividerLines) {
  open();
  panel.set("shortcutsDimIcons", true);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"shortcutsDimIcons":true})"), darwinLine("settings"),
                                          insertLine("shortcutsHideDividerLines", 8, kAlphaLabels)));
  EXPECT_EQ(wholeRows(page()), inEnglish({.alpha = true}));
  EXPECT_EQ(frame::shownValue(panel.row("shortcutsDimmedIconAlpha")), Value(0.2));
  panel.set("shortcutsDimIcons", false);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"shortcutsDimIcons":false})"), darwinLine("settings"),
                                          removeLine(8, kAlphaLabels)));
}

TEST_F(ForceTouchPage, InsertsTheLabelColorsAfterTheAlphaWhereThatIsShown) {
  open({{"shortcutsDimIcons", true}});
  panel.set("shortcutsColorizeLabels", true);
  EXPECT_THAT(panel.events(),
              ElementsAre(write(R"({"shortcutsColorizeLabels":true,"shortcutsDimIcons":true})"), darwinLine("settings"),
                          insertLine("shortcutsDimmedIconAlpha", 10, kColorLabels)));
  EXPECT_EQ(wholeRows(page()), inEnglish({.alpha = true, .labelColors = true}));
}

TEST_F(ForceTouchPage, InsertsTheLabelColorsAfterTheDividerLinesWhereNoAlphaIsShown) {
  open();
  panel.set("shortcutsColorizeLabels", true);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"shortcutsColorizeLabels":true})"), darwinLine("settings"),
                                          insertLine("shortcutsHideDividerLines", 8, kColorLabels)));
  // The alpha that comes later goes between.
  panel.set("shortcutsDimIcons", true);
  EXPECT_EQ(wholeRows(page()), inEnglish({.alpha = true, .labelColors = true}));
  panel.events();
  panel.set("shortcutsColorizeLabels", false);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"shortcutsColorizeLabels":false,"shortcutsDimIcons":true})"),
                                          darwinLine("settings"), removeLine(10, kColorLabels)));
}

TEST_F(ForceTouchPage, StoresADraggedAlphaWithoutARedraw) {
  open({{"shortcutsDimIcons", true}});
  page().userMovesSlider(panel.row("shortcutsDimmedIconAlpha"), 0.35);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"shortcutsDimIcons":true,"shortcutsDimmedIconAlpha":0.35})"),
                                          darwinLine("settings")));
  page().userMovesSlider(panel.row("shortcutsDimmedIconAlpha"), 7);
  EXPECT_EQ(stored(), R"({"shortcutsDimIcons":true,"shortcutsDimmedIconAlpha":1.0})");
  panel.events();
  panel.advance(1s);
  EXPECT_THAT(panel.events(), IsEmpty());
}

TEST_F(ForceTouchPage, StoresATypedAlphaAndRedrawsItsRowAFifthOfASecondLater) {
  open({{"shortcutsDimIcons", true}});
  enter("shortcutsDimmedIconAlpha", "0.5");
  EXPECT_THAT(panel.events(), ElementsAre(kDismissLine,
                                          processLine("sliderValueChanged", R"("shortcutsDimmedIconAlpha")",
                                                      R"({"newValue":0.5,"settingsKey":"shortcutsDimmedIconAlpha"})"),
                                          write(R"({"shortcutsDimIcons":true,"shortcutsDimmedIconAlpha":0.5})"),
                                          darwinLine("settings"), keyboardLine(false)));
  panel.advance(199'999'999ns);
  EXPECT_THAT(panel.events(), IsEmpty());
  EXPECT_EQ(sliderValue("shortcutsDimmedIconAlpha"), 0.2);
  panel.advance(1ns);
  EXPECT_THAT(panel.events(), ElementsAre(rowReloadedLine("shortcutsDimmedIconAlpha", "0.2")));
  EXPECT_EQ(sliderValue("shortcutsDimmedIconAlpha"), 0.5);
}

TEST_F(ForceTouchPage, RedrawsNoRowThatIsHiddenByThen) {
  open({{"shortcutsDimIcons", true}});
  enter("shortcutsDimmedIconAlpha", "0.5");
  panel.set("shortcutsDimIcons", false);
  panel.events();
  panel.advance(1s);
  EXPECT_THAT(panel.events(), IsEmpty());
}

TEST_F(ForceTouchPage, HasNoSaveButtonWhileTheKeyboardIsUp) {
  open({{"shortcutsDimIcons", true}});
  std::dynamic_pointer_cast<cells::KVQuellarSliderCell>(panel.row("shortcutsDimmedIconAlpha").cell())->presentPopup();
  EXPECT_TRUE(panel.host.navigation().keyboardVisible());
  EXPECT_EQ(panel.events().size(), 2U);
  EXPECT_FALSE(page().navigationItem().rightBarButtonItem());
}

TEST_F(ForceTouchPage, StoresEachPickedColorUnderItsKeyAndReloadsATenthOfASecondLater) {
  struct Color {
    const char* label;
    const char* key;
  };
  for (const Color& each : {Color{"Title Text Color", "shortcutMenuTextColor"},
                            Color{"Subtitle Text Color", "shortcutMenuSubtitleTextColor"},
                            Color{"Background Blur Color", "shortcutMenuBackgroundBlurColor"}}) {
    open({{"shortcutsColorizeBlur", true},
          {"shortcutsColorizeLabels", true},
          {"usesCustomColorForBackgroundBlur", true}});
    EXPECT_EQ(swatchOf(each.label), "#000000");
    tap(each.label);
    EXPECT_EQ(dialogStart(), "#000000");
    panel.events();
    pick({0xFE, 0xDC, 0xBA, 0.1});
    const std::string all = R"({")" + std::string(each.key) + R"(":"#fedcba","shortcutsColorizeBlur":true,)" +
                            R"("shortcutsColorizeLabels":true,"usesCustomColorForBackgroundBlur":true})";
    EXPECT_THAT(panel.events(), ElementsAre(testing::HasSubstr("dismiss"), testing::HasSubstr(all), testing::_))
        << each.label;
    EXPECT_EQ(stored(), all);
    EXPECT_EQ(swatchOf(each.label), "#000000");
    panel.advance(99'999'999ns);
    EXPECT_THAT(panel.events(), IsEmpty());
    panel.advance(1ns);
    EXPECT_EQ(panel.events().size(), 1U);
    EXPECT_EQ(swatchOf(each.label), "#fedcba");
    tap(each.label);
    EXPECT_EQ(dialogStart(), "#fedcba");
  }
}

TEST_F(ForceTouchPage, TellsAPickedColorWholeAndInOrder) {
  open({{"shortcutsColorizeLabels", true}});
  tap("Title Text Color");
  panel.events();
  pick({1, 2, 3, 1});
  panel.advance(1s);
  EXPECT_THAT(panel.events(),
              ElementsAre(kDismissLine, write(R"({"shortcutMenuTextColor":"#010203","shortcutsColorizeLabels":true})"),
                          notifyPostLine("settings"), R"({"event":"reload","what":"page","t":0.1})"));
}

TEST_F(ForceTouchPage, OpensTheTimersFromItsLinkAndReturns) {
  open();
  tap("Custom Timers");
  EXPECT_THAT(panel.events(),
              ElementsAre(R"({"event":"push","page":"KVQuellarCustomCCTimersListController","t":0.0})"));
  EXPECT_EQ(page().title(), "Custom Timers");
  back();
  EXPECT_EQ(page().className(), "KVQuellarForceTouchListController");
}

}  // namespace force_touch_page_test
}  // namespace quellar::tests

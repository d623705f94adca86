// SPDX-License-Identifier: MIT
#include "panel_family/family_page.h"

namespace quellar::tests {
namespace control_center_page_test {

using namespace std::chrono_literals;
using platform::Dictionary;
using platform::Value;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto kFlip = "/usr/lib/libflipcontrolcenter.dylib";
constexpr auto kTessaly = "/usr/lib/libtessaly.dylib";

class ControlCenterPage : public FamilyPage {
 protected:
  ControlCenterPage() : FamilyPage("KVQuellarControlCenterListController", "ControlCenter_Defaults") {}
};

struct Shown {
  bool flip = false;
  bool tessaly = false;
  bool blur = false;
  bool darkening = false;
  bool darkeningBlur = false;
  bool wallpaper = false;
  bool color = false;
};

Lines expected(Texts& texts, const Shown& shown) {
  const auto toggle = [&](const char* label, const char* key) { return switchRow(texts.translated(label), key); };
  const auto slider = [&](const char* label, const char* key, const char* byDefault) {
    return typedSliderRow(texts.translated(label), key, byDefault, "0.0", "1.0");
  };
  const auto link = [&](const char* opens) {
    return linkRow(texts.asWritten("Custom Toggle Colors"), opens, "qlrGlintSettingsIcon.png");
  };
  return joined(
      {{groupRow(shown.flip || shown.tessaly ? texts.asWritten("Stock Toggles") : ""),
        link("KVQuellarGlintListController")},
       shownIf(shown.flip, {groupRow(texts.asWritten("FlipControlCenter")), link("KVQuellarFCCGlintListController")}),
       shownIf(shown.tessaly, {groupRow(texts.asWritten("Tessaly")), link("KVQuellarFCCGlintListController")}),
       {groupRow(texts.translated("Appearance")), toggle("Custom Blur Strength", "usesCustomCCBlurStength"),
        toggle("Disable Button Text", "disableCCButtonText"), toggle("Disable Status Text", "disableCCStatusText"),
        toggle("Disable Toggle Coloring", "disableToggleColors"),
        toggle("Remove Page Dots", "userRequestsRemovingCCPageDots"),
        toggle("Remove White Overlay", "userRequestsRemovingWhiteView")},
       shownIf(shown.blur, {groupRow(texts.translated("Blur Strength")),
                            slider("Blur Strength", "controlCenterBlurStregth", "1.0")}),
       {groupRow(texts.translated("Behavior")), toggle("Disable on LockScreen", "disableCCOnLockScreen"),
        toggle("Show On First Swipe", "controlCenterFirstSwipe"), toggle("Use Old Bounce", "usingOldCCBounce"),
        groupRow(texts.translated("Darkening View"),
                 texts.translated("Custom opacity only affects the darkening view when not replacing the darkening "
                                  "view with blur. If you'd like to remove it entirely set custom opacity to 0")),
        toggle("Replace With Blur", "userRequestsLumenfold"), toggle("Use Custom Opacity", "useCustomDarkeningAlpha")},
       shownIf(shown.darkening, {slider("Darkening View Alpha", "controlCenterDarkeningAlpha", "0.6")}),
       shownIf(shown.darkeningBlur,
               {groupRow(texts.translated("Darkening Blur Style")),
                segmentRow(texts.translated("Blur Style"), "userStyleForLumenfold", 3,
                           "[\"" + texts.asWritten("Extra Light") + "\",\"" + texts.asWritten("Light") + "\",\"" +
                               texts.asWritten("Dark") + "\"]")}),
       {groupRow(texts.translated("Wallpaper Alpha"),
                 texts.translated("The Control Center blurs use a wallpaper image for color highlights, you can "
                                  "increase this to make colors more vibrant in the blur")),
        toggle("Use Custom Alpha", "useCustomWallpaperAlpha")},
       shownIf(shown.wallpaper, {slider("Wallpaper View Alpha", "controlCenterWallpaperAlpha", "0.6")}),
       {groupRow(texts.translated("Background Color")), toggle("Use Custom Color", "useCustomCCBackgroundColor")},
       shownIf(shown.color, {colorRow(texts.translated("Background Color"), "controlCenterBackgroundColor", "#ffffff",
                                      "ControlCenter_Defaults", "setControlCenterBackgroundColor")})});
}

Lines inEnglish(const Shown& shown) {
  Texts english(false);
  return expected(english, shown);
}

constexpr auto kStyleLabels = R"(["Darkening Blur Style","Blur Style"])";

TEST_F(ControlCenterPage, ShowsItsRowsOnAFreshInstall) {
  expectRows([](Texts& texts) { return expected(texts, {}); });
}

TEST_F(ControlCenterPage, OffersTheColorsOfTheOtherControlCentresThatAreInstalled) {
  panel.files.existing = {kFlip};
  expectRows([](Texts& texts) { return expected(texts, {.flip = true}); });
  panel.files.existing = {kTessaly};
  expectRows([](Texts& texts) { return expected(texts, {.tessaly = true}); });
  panel.files.existing = {kFlip, kTessaly};
  expectRows([](Texts& texts) { return expected(texts, {.flip = true, .tessaly = true}); });
}

TEST_F(ControlCenterPage, LooksForTheOtherControlCentresEachTimeThatItBuildsItsRows) {
  auto& opened = open();
  panel.files.existing = {kTessaly};
  EXPECT_EQ(wholeRows(opened), inEnglish({}));
  opened.reloadSpecifiers();
  EXPECT_EQ(wholeRows(opened), inEnglish({.tessaly = true}));
}

TEST_F(ControlCenterPage, OpensTheColorPagesFromItsLinksAndReturns) {
  panel.files.existing = {kFlip, kTessaly};
  open();
  for (const auto& [index, opens] :
       std::vector<std::pair<std::size_t, std::string>>{{1, "KVQuellarGlintListController"},
                                                        {3, "KVQuellarFCCGlintListController"},
                                                        {5, "KVQuellarFCCGlintListController"}}) {
    page().userTapsRow(index);
    EXPECT_EQ(page().className(), opens);
    back();
    EXPECT_EQ(page().className(), "KVQuellarControlCenterListController");
  }
}

TEST_F(ControlCenterPage, OpensWithTheBlocksWhoseSwitchesAreStoredOn) {
  expectRows([](Texts& texts) { return expected(texts, {.blur = true}); }, {{"usesCustomCCBlurStength", true}});
  expectRows([](Texts& texts) { return expected(texts, {.darkening = true}); }, {{"useCustomDarkeningAlpha", true}});
  expectRows([](Texts& texts) { return expected(texts, {.darkeningBlur = true}); }, {{"userRequestsLumenfold", true}});
  expectRows([](Texts& texts) { return expected(texts, {.wallpaper = true}); }, {{"useCustomWallpaperAlpha", true}});
  expectRows([](Texts& texts) { return expected(texts, {.color = true}); }, {{"useCustomCCBackgroundColor", true}});
  panel.files.existing = {kFlip, kTessaly};
  expectRows([](Texts& texts) { return expected(texts, {true, true, true, true, true, true, true}); },
             {{"usesCustomCCBlurStength", true},
              {"useCustomDarkeningAlpha", true},
              {"userRequestsLumenfold", true},
              {"useCustomWallpaperAlpha", true},
              {"useCustomCCBackgroundColor", true}});
}

TEST_F(ControlCenterPage, PostsTheSettingsForItsPlainSwitches) {
  expectPlainSwitches(
      {"disableCCButtonText", "disableCCStatusText", "disableToggleColors", "userRequestsRemovingCCPageDots",
       "userRequestsRemovingWhiteView", "disableCCOnLockScreen", "controlCenterFirstSwipe", "usingOldCCBounce"},
      {darwinLine("settings")});
}

TEST_F(ControlCenterPage, InsertsAndRemovesEachBlockAtItsPlace) {
  struct Block {
    const char* key;
    const char* after;
    int at;
    const char* labels;
    Shown shown;
  };
  for (const Block& each :
       {Block{"usesCustomCCBlurStength",
              "userRequestsRemovingWhiteView",
              9,
              R"(["Blur Strength","Blur Strength"])",
              {.blur = true}},
        Block{"useCustomDarkeningAlpha",
              "useCustomDarkeningAlpha",
              16,
              R"(["Darkening View Alpha"])",
              {.darkening = true}},
        Block{"userRequestsLumenfold", "useCustomDarkeningAlpha", 16, kStyleLabels, {.darkeningBlur = true}},
        Block{"useCustomWallpaperAlpha",
              "useCustomWallpaperAlpha",
              18,
              R"(["Wallpaper View Alpha"])",
              {.wallpaper = true}},
        Block{"useCustomCCBackgroundColor",
              "useCustomCCBackgroundColor",
              20,
              R"(["Background Color"])",
              {.color = true}}}) {
    panel.preferences.domains.clear();
    open();
    const std::string key = each.key;
    panel.set(key, true);
    EXPECT_THAT(panel.events(), ElementsAre(write(R"({")" + key + R"(":true})"), darwinLine("settings"),
                                            insertLine(each.after, each.at, each.labels)));
    EXPECT_EQ(wholeRows(page()), inEnglish(each.shown)) << key;
    panel.set(key, false);
    EXPECT_THAT(panel.events(), ElementsAre(write(R"({")" + key + R"(":false})"), darwinLine("settings"),
                                            removeLine(each.at, each.labels)));
    EXPECT_EQ(wholeRows(page()), inEnglish({})) << key;
  }
}

TEST_F(ControlCenterPage, PutsTheBlurStyleBelowTheDarkeningSliderWhereThatIsShown) {
  open({{"useCustomDarkeningAlpha", true}});
  panel.set("userRequestsLumenfold", true);
  EXPECT_THAT(panel.events(),
              ElementsAre(write(R"({"useCustomDarkeningAlpha":true,"userRequestsLumenfold":true})"),
                          darwinLine("settings"), insertLine("controlCenterDarkeningAlpha", 17, kStyleLabels)));
  EXPECT_EQ(wholeRows(page()), inEnglish({.darkening = true, .darkeningBlur = true}));
  EXPECT_EQ(frame::shownValue(panel.row("userStyleForLumenfold")), Value(3));
  // Without the slider the style stays where it was, and the slider comes back above it.
  panel.set("useCustomDarkeningAlpha", false);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"useCustomDarkeningAlpha":false,"userRequestsLumenfold":true})"),
                                          darwinLine("settings"), removeLine(16, R"(["Darkening View Alpha"])")));
  EXPECT_EQ(wholeRows(page()), inEnglish({.darkeningBlur = true}));
  panel.set("useCustomDarkeningAlpha", true);
  EXPECT_EQ(wholeRows(page()), inEnglish({.darkening = true, .darkeningBlur = true}));
}

TEST_F(ControlCenterPage, PutsTheBlurStyleBelowTheOpacitySwitchWhereThatWasSwitchedOffBefore) {
  open({{"useCustomDarkeningAlpha", true}});
  panel.set("useCustomDarkeningAlpha", false);
  panel.events();
  panel.set("userRequestsLumenfold", true);
  EXPECT_EQ(panel.events().back(), insertLine("useCustomDarkeningAlpha", 16, kStyleLabels));
}

TEST_F(ControlCenterPage, StoresWhatItsSlidersAndStyleAreSetToWithTheSettingsPostAlone) {
  const Dictionary all{{"usesCustomCCBlurStength", true},
                       {"useCustomDarkeningAlpha", true},
                       {"userRequestsLumenfold", true},
                       {"useCustomWallpaperAlpha", true}};
  for (const auto& [key, shown] : std::vector<std::pair<const char*, double>>{{"controlCenterBlurStregth", 1.0},
                                                                              {"controlCenterDarkeningAlpha", 0.6},
                                                                              {"controlCenterWallpaperAlpha", 0.6}}) {
    open(all);
    EXPECT_EQ(sliderValue(key), shown);
    page().userMovesSlider(panel.row(key), 0.25);
    Dictionary changed = all;
    changed.insert_or_assign(key, 0.25);
    EXPECT_THAT(panel.events(),
                ElementsAre(write(dump(host::headless::toJson(Value(changed)))), darwinLine("settings")));
    EXPECT_TRUE(panel.host.queue().empty());
  }
  open({{"userRequestsLumenfold", true}});
  panel.set("userStyleForLumenfold", 1);
  panel.advance(1s);
  EXPECT_EQ(panel.events().size(), 2U);
  EXPECT_EQ(stored(), R"({"userRequestsLumenfold":true,"userStyleForLumenfold":1})");
}

TEST_F(ControlCenterPage, StoresATypedStrengthAndRedrawsItsRowAFifthOfASecondLater) {
  open({{"usesCustomCCBlurStength", true}});
  enter("controlCenterBlurStregth", "0.25");
  EXPECT_THAT(panel.events(), ElementsAre(kDismissLine,
                                          processLine("sliderValueChanged", R"("controlCenterBlurStregth")",
                                                      R"({"newValue":0.25,"settingsKey":"controlCenterBlurStregth"})"),
                                          write(R"({"controlCenterBlurStregth":0.25,"usesCustomCCBlurStength":true})"),
                                          darwinLine("settings"), keyboardLine(false)));
  panel.advance(199'999'999ns);
  EXPECT_THAT(panel.events(), IsEmpty());
  panel.advance(1ns);
  EXPECT_THAT(panel.events(), ElementsAre(rowReloadedLine("controlCenterBlurStregth", "0.2")));
  EXPECT_EQ(sliderValue("controlCenterBlurStregth"), 0.25);
}

TEST_F(ControlCenterPage, HasNoSaveButtonWhileTheKeyboardIsUp) {
  open();
  panel.host.navigation().setKeyboardVisible(true);
  EXPECT_THAT(panel.events(), ElementsAre(keyboardLine(true)));
}

TEST_F(ControlCenterPage, StoresAPickedBackgroundAndReloadsATenthOfASecondLater) {
  open({{"useCustomCCBackgroundColor", true}});
  EXPECT_EQ(swatchOf("Background Color"), "#ffffff");
  page().userTapsRow(20);
  EXPECT_EQ(dialogStart(), "#ffffff");
  panel.events();
  pick({0x80, 0, 0xFF, 0.5});
  EXPECT_THAT(panel.events(),
              ElementsAre(kDismissLine,
                          write(R"({"controlCenterBackgroundColor":"#8000ff","useCustomCCBackgroundColor":true})"),
                          notifyPostLine("settings")));
  panel.advance(99'999'999ns);
  EXPECT_THAT(panel.events(), IsEmpty());
  panel.advance(1ns);
  EXPECT_THAT(panel.events(), ElementsAre(R"({"event":"reload","what":"page","t":0.1})"));
}

TEST_F(ControlCenterPage, StartsFromWhiteWhereTheStoredBackgroundIsNoColor) {
  open({{"useCustomCCBackgroundColor", true}, {"controlCenterBackgroundColor", "sky"}});
  page().userTapsRow(20);
  EXPECT_EQ(dialogStart(), "#ffffff");
}

}  // namespace control_center_page_test
}  // namespace quellar::tests

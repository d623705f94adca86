// SPDX-License-Identifier: MIT
#include "panel_family/family_page.h"

namespace quellar::tests {
namespace dock_page_test {

using platform::Dictionary;
using testing::ElementsAre;
using testing::IsEmpty;

class DockPage : public FamilyPage {
 protected:
  DockPage() : FamilyPage("KVQuellarDockListController", "Dock_Defaults") {}
};

const Lines kPosts = {darwinLine("settings"), darwinLine("dockupdate")};

std::string countRow(const std::string& label) {
  return R"(PSStaticTextCell {"cellClass":{"$class":"KVQuellarStepperCell"},"default":4,"defaultsKey":"Dock_Defaults",)"
         R"("enabled":true,"key":"dockMaxIcons","label":")" +
         label +
         R"(","maximumValue":10,"minimumValue":1,"requestsNotification":false,"updatesLabelValue":true} set get)";
}
std::string styleRow(const std::string& label) {
  return pickerRow(label, "dockBackgroundStyle", kLookValuesWithTransparent, kLookTitlesWithTransparent);
}

Lines expected(Texts& texts, bool blur, bool count) {
  texts.asWritten("Transparent");
  return joined({{groupRow(texts.translated("Appearance"),
                           texts.translated("To view a preview of the blur use the Quellar Quick Edit menu to change "
                                            "the blur style")),
                  switchRow(texts.translated("Disable Blur"), "userDisablesBackgroundBlur"),
                  switchRow(texts.translated("Use Custom Blur"), "usesCustomDockBlur")},
                 shownIf(blur, {styleRow(texts.translated("Blur style"))}),
                 {groupRow(texts.translated("Dock Icons")),
                  switchRow(texts.translated("Use Custom Count"), "customMaxDockIcons")},
                 shownIf(count, {countRow(texts.translated("Max Icons"))})});
}

TEST_F(DockPage, ShowsItsRowsOnAFreshInstall) {
  expectRows([](Texts& texts) { return expected(texts, false, false); });
}

TEST_F(DockPage, OpensWithEachRowUnderItsSwitchWhereThatIsStoredOn) {
  expectRows([](Texts& texts) { return expected(texts, true, false); }, {{"usesCustomDockBlur", true}});
  expectRows([](Texts& texts) { return expected(texts, false, true); }, {{"customMaxDockIcons", true}});
  expectRows([](Texts& texts) { return expected(texts, true, true); },
             {{"usesCustomDockBlur", true}, {"customMaxDockIcons", true}});
}

TEST_F(DockPage, PostsTheSettingsThenTheDockUpdateForEverySwitch) {
  expectPlainSwitches({"userDisablesBackgroundBlur"}, kPosts);
}

TEST_F(DockPage, InsertsAndRemovesTheBlurStyle) {
  open();
  panel.set("usesCustomDockBlur", true);
  EXPECT_EQ(panel.events(), joined({{write(R"({"usesCustomDockBlur":true})")},
                                    kPosts,
                                    {insertLine("usesCustomDockBlur", 3, R"(["Blur style"])")}}));
  // A picker without a default shows no choice until one is stored.
  EXPECT_EQ(frame::shownValue(panel.row("dockBackgroundStyle")), std::nullopt);
  panel.set("dockBackgroundStyle", 0);
  EXPECT_EQ(panel.events(), joined({{write(R"({"dockBackgroundStyle":0,"usesCustomDockBlur":true})")}, kPosts}));
  panel.set("usesCustomDockBlur", false);
  EXPECT_EQ(panel.events(), joined({{write(R"({"dockBackgroundStyle":0,"usesCustomDockBlur":false})")},
                                    kPosts,
                                    {removeLine(3, R"(["Blur style"])")}}));
  Texts english(false);
  EXPECT_EQ(wholeRows(page()), expected(english, false, false));
}

TEST_F(DockPage, InsertsAndRemovesTheCountWhichStartsAtFour) {
  open();
  panel.set("customMaxDockIcons", true);
  EXPECT_EQ(panel.events(), joined({{write(R"({"customMaxDockIcons":true})")},
                                    kPosts,
                                    {insertLine("customMaxDockIcons", 5, R"(["Max Icons"])")}}));
  EXPECT_EQ(stepperValue("dockMaxIcons"), 4);
  EXPECT_EQ(dynamic_cast<cells::KVQuellarStepperCell&>(*panel.row("dockMaxIcons").cell()).label().text, "4");
  panel.set("customMaxDockIcons", false);
  EXPECT_EQ(panel.events(),
            joined({{write(R"({"customMaxDockIcons":false})")}, kPosts, {removeLine(5, R"(["Max Icons"])")}}));
}

TEST_F(DockPage, StoresTheCountOnEveryStepWithTheSettingsPostAlone) {
  open({{"customMaxDockIcons", true}});
  step("dockMaxIcons", 1);
  EXPECT_THAT(panel.events(), ElementsAre(write(R"({"customMaxDockIcons":true,"dockMaxIcons":5.0})"), kSynchronizeLine,
                                          notifyPostLine("settings")));
}

TEST_F(DockPage, KeepsTheCountBetweenOneAndTen) {
  open({{"customMaxDockIcons", true}});
  for (int presses = 0; presses < 20; ++presses) step("dockMaxIcons", 1);
  EXPECT_EQ(stored(), R"({"customMaxDockIcons":true,"dockMaxIcons":10.0})");
  panel.events();
  step("dockMaxIcons", 1);
  EXPECT_THAT(panel.events(), IsEmpty());
  for (int presses = 0; presses < 20; ++presses) step("dockMaxIcons", -1);
  EXPECT_EQ(stored(), R"({"customMaxDockIcons":true,"dockMaxIcons":1.0})");
}

TEST_F(DockPage, TakesTheCountOverBeforeItsNextWriteAndNothingElse) {
  auto& opened = open({{"customMaxDockIcons", true}});
  step("dockMaxIcons", 1);
  // The page doesn't learn of the count by itself.
  EXPECT_EQ(opened.userDefaults(), (Dictionary{{"customMaxDockIcons", true}}));
  panel.store("Dock_Defaults",
              Dictionary{{"customMaxDockIcons", false}, {"dockMaxIcons", 7.0}, {"dockBackgroundStyle", 9}});
  panel.set("userDisablesBackgroundBlur", true);
  EXPECT_EQ(stored(), R"({"customMaxDockIcons":true,"dockMaxIcons":7.0,"userDisablesBackgroundBlur":true})");
}

TEST_F(DockPage, KeepsItsOwnCountWhereTheStoreHasNone) {
  open({{"customMaxDockIcons", true}, {"dockMaxIcons", 3.0}});
  panel.store("Dock_Defaults", Dictionary{});
  panel.set("userDisablesBackgroundBlur", true);
  EXPECT_EQ(stored(), R"({"customMaxDockIcons":true,"dockMaxIcons":3.0,"userDisablesBackgroundBlur":true})");
}

TEST_F(DockPage, LetsAStepWriteTheOlderCopyOfItsRow) {
  open({{"customMaxDockIcons", true}});
  panel.set("userDisablesBackgroundBlur", true);
  step("dockMaxIcons", 1);
  EXPECT_EQ(stored(), R"({"customMaxDockIcons":true,"dockMaxIcons":5.0})");
  // The page's own copy still has the switch, and comes back with the next write.
  panel.set("usesCustomDockBlur", false);
  EXPECT_EQ(
      stored(),
      R"({"customMaxDockIcons":true,"dockMaxIcons":5.0,"userDisablesBackgroundBlur":true,"usesCustomDockBlur":false})");
}

TEST_F(DockPage, ShowsAStoredCountWhenItIsOpenedAgain) {
  open({{"customMaxDockIcons", true}});
  step("dockMaxIcons", 1);
  back();
  open();
  EXPECT_EQ(stepperValue("dockMaxIcons"), 5);
}

}  // namespace dock_page_test
}  // namespace quellar::tests

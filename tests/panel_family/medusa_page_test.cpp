// SPDX-License-Identifier: MIT
#include "panel_family/family_page.h"

namespace quellar::tests {
namespace medusa_page_test {

using platform::Array;
using platform::Dictionary;
using platform::Value;

const std::string kStyle =
    segmentRow("Blur Style", "userStyleForSideSwitcherBlur", 3, R"(["Extra Light","Light","Dark"])");

class MedusaPage : public FamilyPage {
 protected:
  MedusaPage() : FamilyPage("KVQuellarMedusaListController", "Medusa_Defaults") {}
};

const Lines kPosts = {darwinLine("settings"), darwinLine("dockupdate")};

Lines expected(Texts& texts, bool blur) {
  return joined(
      {{untitledGroup(texts.translated("If your device already supports Medusa there is no need to enable this")),
        switchRow(texts.translated("Enable Medusa"), "userRequestsMedusaEnabled"),
        groupRow(texts.translated("Slide Over Appearance")),
        switchRow(texts.translated("Use Custom Blur"), "userRequestsCustomSlideOverBlur")},
       shownIf(blur, {groupRow(texts.translated("Slideover Background Blur Style")),
                      segmentRow(texts.translated("Blur Style"), "userStyleForSideSwitcherBlur", 3,
                                 "[\"" + texts.asWritten("Extra Light") + "\",\"" + texts.asWritten("Light") + "\",\"" +
                                     texts.asWritten("Dark") + "\"]")})});
}

TEST_F(MedusaPage, ShowsItsRowsWithoutARowFile) {
  expectRows([](Texts& texts) { return expected(texts, false); });
}

TEST_F(MedusaPage, OpensWithTheBlurStyleWhereItsSwitchIsStoredOn) {
  expectRows([](Texts& texts) { return expected(texts, true); }, {{"userRequestsCustomSlideOverBlur", true}});
}

TEST_F(MedusaPage, ShowsTheRowsOfItsRowFileFirstInTheOrderOfTheFileLocalised) {
  panel.bundles.rowFiles["QuellarMedusa"] =
      Array{Dictionary{{"cell", "PSGroupCell"}, {"label", "First"}, {"footerText", "Foot"}},
            Dictionary{{"cell", "PSSwitchCell"}, {"label", "Second"}, {"key", "second"}, {"default", true}}};
  expectRows([](Texts& texts) {
    const std::string first = texts.translated("First");
    const std::string second = texts.translated("Second");
    const std::string foot = texts.translated("Foot");
    // Of a row that a file describes the name is translated, its properties stay but for the footer.
    return joined({{R"(PSGroupCell {"footerText":")" + foot + R"(","label":"First"})" +
                        (first == "First" ? "" : " named " + first),
                    R"(PSSwitchCell {"default":true,"key":"second","label":"Second"} set get)" +
                        std::string(second == "Second" ? "" : " named " + second)},
                   expected(texts, false)});
  });
  panel.set("second", false);
  EXPECT_EQ(panel.events(), joined({{write(R"({"second":false})")}, kPosts}));
}

TEST_F(MedusaPage, PostsTheSettingsAndTheDockUpdateForEveryWrite) {
  expectPlainSwitches({"userRequestsMedusaEnabled"}, kPosts);
}

TEST_F(MedusaPage, InsertsAndRemovesTheBlurStyleUnderItsSwitch) {
  open();
  const Lines closed = wholeRows(page());
  panel.set("userRequestsCustomSlideOverBlur", true);
  EXPECT_EQ(panel.events(), joined({{write(R"({"userRequestsCustomSlideOverBlur":true})")},
                                    kPosts,
                                    {insertLine("userRequestsCustomSlideOverBlur", 4,
                                                R"(["Slideover Background Blur Style","Blur Style"])")}}));
  EXPECT_EQ(wholeRows(page()), joined({closed, {groupRow("Slideover Background Blur Style"), kStyle}}));
  EXPECT_EQ(frame::shownValue(panel.row("userStyleForSideSwitcherBlur")), Value(3));

  panel.set("userStyleForSideSwitcherBlur", 1);
  EXPECT_EQ(panel.events(),
            joined({{write(R"({"userRequestsCustomSlideOverBlur":true,"userStyleForSideSwitcherBlur":1})")}, kPosts}));

  panel.set("userRequestsCustomSlideOverBlur", false);
  EXPECT_EQ(panel.events(),
            joined({{write(R"({"userRequestsCustomSlideOverBlur":false,"userStyleForSideSwitcherBlur":1})")},
                    kPosts,
                    {removeLine(4, R"(["Slideover Background Blur Style","Blur Style"])")}}));
  EXPECT_EQ(wholeRows(page()), closed);
}

TEST_F(MedusaPage, ChangesNoRowsForTheCountOfTheDock) {
  open();
  const Lines closed = wholeRows(page());
  for (const bool on : {true, false}) {
    writeForeignKey("customMaxDockIcons", on);
    EXPECT_EQ(panel.events(),
              joined({{write(on ? R"({"customMaxDockIcons":true})" : R"({"customMaxDockIcons":false})")}, kPosts}));
    EXPECT_EQ(wholeRows(page()), closed);
  }
}

}  // namespace medusa_page_test
}  // namespace quellar::tests

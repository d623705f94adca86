// SPDX-License-Identifier: MIT
#include "panel_family/family_page.h"

namespace quellar::tests {
namespace folders_page_test {

class FoldersPage : public FamilyPage {
 protected:
  FoldersPage() : FamilyPage("KVQuellarFoldersListController", "Folders_Defaults") {}
};

const std::string kRelayout =
    R"({"event":"post","centre":"distributed","name":"com.vantorick.quellar2.relayouticons","object":null,)"
    R"("userInfo":{"optionType":"folder"},"immediately":true,"through":"centre","t":0.0})";

Lines expected(Texts& texts) {
  return {groupRow(texts.translated("Folder Appearance"),
                   texts.translated("If you hide the open folder BG Blur Quellar will automatically fade icons and "
                                    "dock mimicking the iOS 9 open folder look")),
          switchRow(texts.translated("Hide Icon Blur"), "foldersHideIconBlur"),
          switchRow(texts.translated("Hide Icon Grid"), "foldersHideIconGrid"),
          switchRow(texts.translated("Hide Open Folder BG Blur"), "foldersHideOpenBackgroundBlur"),
          switchRow(texts.translated("Hide Open Folder Shape"), "foldersHideOpenBlur"),
          switchRow(texts.translated("Hide Open Folder Title"), "foldersHideOpenTitle"),
          groupRow(texts.translated("Folder Behavior")),
          switchRow(texts.translated("Close on App Launch"), "foldersCloseOnAppLaunch")};
}

TEST_F(FoldersPage, ShowsItsRows) {
  expectRows(expected);
}

TEST_F(FoldersPage, AsksForARelayoutOfFoldersAfterEveryWrite) {
  expectPlainSwitches({"foldersHideIconBlur", "foldersHideIconGrid", "foldersHideOpenBackgroundBlur",
                       "foldersHideOpenBlur", "foldersHideOpenTitle", "foldersCloseOnAppLaunch"},
                      {darwinLine("settings"), kRelayout});
}

}  // namespace folders_page_test
}  // namespace quellar::tests

// SPDX-License-Identifier: MIT
#include "pages/homescreen_controlcentre/folders_page.h"

#include "frame/names.h"

namespace quellar::pages {

using namespace frame;

const Page& KVQuellarFoldersListController::page() {
  static const Page page{
      .className = "KVQuellarFoldersListController",
      .defaultsKey = "Folders_Defaults",
      .posts = {darwin(kSettings),
                {.centre = Centre::distributed,
                 .name = std::string(kRelayoutIcons),
                 .userInfo = {{"optionType", Value("folder")}}}},
      .rows = {
          Group{.title = "Folder Appearance",
                .footer =
                    "If you hide the open folder BG Blur Quellar will automatically fade icons and dock mimicking "
                    "the iOS 9 open folder look"},
          Switch{.label = "Hide Icon Blur", .key = "foldersHideIconBlur"},
          Switch{.label = "Hide Icon Grid", .key = "foldersHideIconGrid"},
          Switch{.label = "Hide Open Folder BG Blur", .key = "foldersHideOpenBackgroundBlur"},
          Switch{.label = "Hide Open Folder Shape", .key = "foldersHideOpenBlur"},
          Switch{.label = "Hide Open Folder Title", .key = "foldersHideOpenTitle"},
          Group{.title = "Folder Behavior"},
          Switch{.label = "Close on App Launch", .key = "foldersCloseOnAppLaunch"},
      }};
  return page;
}

}  // namespace quellar::pages

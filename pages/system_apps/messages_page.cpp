// SPDX-License-Identifier: MIT
#include "pages/system_apps/messages_page.h"

#include "frame/names.h"

namespace quellar::pages {

using namespace frame;

const Page& KVQuellarMessagesListController::page() {
  static const Page page{
      .className = "KVQuellarMessagesListController",
      .defaultsKey = "Messages_Defaults",
      .posts = {darwin(kSettingsMessages)},
      .rows = {
          Group{.title = "Behavior",
                .footer = "Disabling plugins will remove the iOS 10 digital touch and iMessage AppStore from the entry "
                          "view"},
          Switch{.label = "Disable Plugins", .key = "userSetSMSPluginsDisabled"},
      }};
  return page;
}

}  // namespace quellar::pages

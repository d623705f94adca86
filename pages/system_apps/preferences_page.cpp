// SPDX-License-Identifier: MIT
#include "pages/system_apps/preferences_page.h"

#include "frame/names.h"

namespace quellar::pages {

using namespace frame;

const Page& KVQuellarPreferencesListController::page() {
  static const Page page{
      .className = "KVQuellarPreferencesListController",
      .defaultsKey = "Preference_Defaults",
      .posts = {darwin(kUIKit)},
      .rows = {
          Group{.title = "Passcode Entry Field",
                .footer = "iOS 10.3 Style is to use empty dots instead of dashes in the passcode field"},
          Switch{.label = "Disable App Section", .key = "userRequestsDisablingAppSpecs"},
          Switch{.label = "Remove Update Badges", .key = "userRequestsRemovingSoftwareBadge"},
          Switch{.label = "Use iOS 10.3 Style", .key = "userRequests103PasscodeDash"},
      }};
  return page;
}

}  // namespace quellar::pages

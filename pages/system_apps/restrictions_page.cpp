// SPDX-License-Identifier: MIT
#include "pages/system_apps/restrictions_page.h"

#include "frame/names.h"

namespace quellar::pages {

using namespace frame;

const Page& KVQuellarRestrictionsListController::page() {
  static const Page page{
      .className = "KVQuellarRestrictionsListController",
      .defaultsKey = "Restriction_Defaults",
      .posts = {darwin(kSettings), {.centre = Centre::process, .name = std::string(kCapabilitiesChanged)}},
      .rows = {
          RowFile{.name = "QuellarRestrictions"},
          Switch{.label = "Enable Orientation Locks", .key = "userRequestsCustomOrientationLocking"},
          Group{},
          Switch{.label = "Disable CC Everywhere", .key = "userDisablesControlCenter"},
          Switch{.label = "Disable Homescreen Editing", .key = "userDisablesHomescreenEditing"},
          Switch{.label = "Disable Lift To Wake", .key = "userDisablesLiftToWake"},
          Switch{.label = "Disable NC Everywhere", .key = "userDisablesNotificationCenter"},
          Switch{.label = "Disable Screenshots", .key = "userDisableScreenshots"},
          Switch{.label = "Disable Spotlight", .key = "userDisablesSpotlight"},
          Switch{.label = "Disable Suggested App", .key = "userDisablesSuggestedApp"},
      }};
  return page;
}

}  // namespace quellar::pages

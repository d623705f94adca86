// SPDX-License-Identifier: MIT
#include "pages/system_apps/phone_page.h"

#include "frame/names.h"

namespace quellar::pages {

using namespace frame;

namespace {

constexpr const char* kPhone = "/Applications/MobilePhone.app";
constexpr const char* kArtwork = "/System/Library/Frameworks/UIKit.framework/Artwork.bundle";

Switch tab(const char* label, const char* key, const char* icon, const char* bundle) {
  return {.label = label, .key = key, .icon = {.name = icon, .bundlePath = bundle}};
}

}  // namespace

const Page& KVQuellarPhoneListController::page() {
  static const Page page{
      .className = "KVQuellarPhoneListController",
      .defaultsKey = "Phone_Defaults",
      .posts = {darwin(kSettingsPhone)},
      .rows = {
          Group{.title = localized("Hidden Tabs"), .footer = "Turn on to disable the tab from showing"},
          tab("Contacts Tab", "userDisablesContactsTab", "UITabBarContactsTemplate", kArtwork),
          tab("Dialer Tab", "userDisablesKeypadTab", "BarDialer", kPhone),
          tab("Favorites Tab", "userDisablesFavoritesTab", "UITabBarFavoritesTemplate", kArtwork),
          tab("Recents Tab", "userDisablesRecentsTab", "UITabBarHistoryTemplate", kArtwork),
          tab("Voicemail Tab", "userDisablesVoicemailTab", "BarVoicemail", kPhone),
          Group{.title = localized("Recents"),
                .footer = "Turning these options on will prevent those type of logs from showing in the recents tab"},
          Switch{.label = "Cellular Call Logs", .key = "userDisablesCellularLogs"},
          Switch{.label = "FaceTime Audio Logs", .key = "userDisablesFTAudioLogs"},
          Switch{.label = "FaceTime Video Logs", .key = "userDisablesFTVideoLogs"},
          Switch{.label = "Third Party Apps", .key = "userDisablesTPPartyLogs"},
      }};
  return page;
}

}  // namespace quellar::pages

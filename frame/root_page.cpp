// SPDX-License-Identifier: MIT
#include "frame/root_page.h"

#include "frame/names.h"
#include "platform/navigation_controller.h"

namespace quellar::frame {

using namespace std::chrono_literals;

const Page& QuellarListController::page() {
  static const Page page{
      .className = "QuellarListController",
      .respringButton = true,
      .rows = {
          Group{},
          Switch{.label = "Enable",
                 .key = "QLREnableKey",
                 .byDefault = std::nullopt,
                 .icon = {"enableIcon.png"},
                 .defaults = std::string(kSettingsDomain)},
          Link{"Quick Edit Menu", "KVQuellarQuickEditListController", {"qlrQuickEditSettingsIcon.png"}},
          Group{},
          Link{"Alerts", "KVQuellarAlertsListController", {"qlrAppAlertsSettingsIcon.png"}},
          Link{"Animations", "KVQuellarAnimationsListController", {"qlrAppAnimationsSettingsIcon.png"}},
          Link{"App Hide", "KVQuellarAppHideListController", {"qlrAppHideSettingsIcon.png"}},
          Link{"App Switcher", "KVQuellarAppSwitcherListController", {"qlrAppSwitcherSettingsIcon.png"}},
          Link{"Control Center", "KVQuellarControlCenterListController", {"qlrControlCenterSettingsIcon.png"}},
          Link{"Dock", "KVQuellarDockListController", {"qlrDockSettingsIcon.png"}},
          Link{"Folders", "KVQuellarFoldersListController", {"qlrFoldersSettingsIcon.png"}},
          Link{"Force Touch", "KVQuellarForceTouchListController", {"qlrAppForceTouchSettingsIcon.png"}},
          Link{"Home Screen", "KVQuellarHomeScreenListController", {"qlrHomeScreenSettingsIcon.png"}},
          Link{"Icons", "KVQuellarIconsListController", {"qlrIconsSettingsIcon.png"}},
          Link{"LockScreen", "KVQuellarLockScreenListController", {"qlrLockScreenSettingsIcon.png"}},
          Link{"Medusa", "KVQuellarMedusaListController", {"qlrMedusaSettingsIcon.png"}},
          Link{"Notification Center",
               "KVQuellarNotificationCenterListController",
               {"qlrNotificationsCenterSettingsIcon.png"}},
          Link{"Power Down", "KVQuellarPowerDownListController", {"qlrPowerDownSettingsIcon.png"}},
          Link{"Restrictions", "KVQuellarRestrictionsListController", {"qlrRestrictionsSettingsIcon.png"}},
          Link{"Status Bar", "KVQuellarStatusBarListController", {"qlrStatusBarSettingsIcon.png"}},
          Link{"System Wide", "KVQuellarSystemWideListController", {"qlrAdvancedSettingsIcon.png"}},
          Group{.title = asWritten("First Party Apps")},
          Link{"Camera", "KVQuellarCameraListController", {"qlrCameraSettingsIcon.png"}},
          Link{"Messages", "KVQuellarMessagesListController", {"qlrMessagesSettingsIcon.png"}},
          Link{"Phone", "KVQuellarPhoneListController", {"qlrPhoneSettingsIcon.png"}},
          Link{"Settings", "KVQuellarPreferencesListController", {"qlrPreferenesSettingsIcon.png"}},
          Link{"Weather", "KVQuellarWeatherListController", {"qlrWeatherSettingsIcon.png"}},
          Group{.title = asWritten("Reactions")},
          Link{"Music Changes", "KVQuellarMusicListController", {"qlrMusicChangesSettingsIcon.png"}},
      }};
  return page;
}

void QuellarListController::viewDidLoad() {
  const std::string path = std::string(kBundlePath) + "/images/headerLogo.png";
  if (auto image = platform().files.imageWithContentsOfFile(path)) {
    navigationItem().setTitleView(platform::TitleView{.image = std::move(*image), .isTemplate = true, .alpha = 0});
  }
  KVQuellarListController::viewDidLoad();
  // A page that is gone when the timer fires has no logo to show.
  platform().mainQueue.after(500ms, [this, alive = lifetime()] {
    if (!alive.expired()) increaseAlpha();
  });
}

void QuellarListController::increaseAlpha() {
  navigationItem().animateTitleViewAlpha(1.0, 500ms);
}

void QuellarListController::mailComposeControllerDidFinish() {
  platform().navigation.dismiss();
}

}  // namespace quellar::frame

// SPDX-License-Identifier: MIT
#include "pages/registry.h"

#include "cells/registry.h"
#include "frame/root_page.h"
#include "pages/homescreen_controlcentre/app_switcher_page.h"
#include "pages/homescreen_controlcentre/control_center_page.h"
#include "pages/homescreen_controlcentre/dock_page.h"
#include "pages/homescreen_controlcentre/folders_page.h"
#include "pages/homescreen_controlcentre/home_screen_page.h"
#include "pages/homescreen_controlcentre/icons_page.h"
#include "pages/homescreen_controlcentre/medusa_page.h"
#include "pages/homescreen_controlcentre/timers_page.h"
#include "pages/powerdown_colours/flip_toggle_colors_page.h"
#include "pages/powerdown_colours/power_down_page.h"
#include "pages/powerdown_colours/toggle_colors_page.h"
#include "pages/statusbar_lockscreen/alerts_page.h"
#include "pages/statusbar_lockscreen/carrier_page.h"
#include "pages/statusbar_lockscreen/force_touch_page.h"
#include "pages/statusbar_lockscreen/lock_screen_page.h"
#include "pages/statusbar_lockscreen/lock_screen_strings_page.h"
#include "pages/statusbar_lockscreen/notification_center_page.h"
#include "pages/statusbar_lockscreen/status_bar_page.h"
#include "pages/system_apps/animations_page.h"
#include "pages/system_apps/app_hide_page.h"
#include "pages/system_apps/app_orientation_page.h"
#include "pages/system_apps/camera_page.h"
#include "pages/system_apps/messages_page.h"
#include "pages/system_apps/music_page.h"
#include "pages/system_apps/phone_page.h"
#include "pages/system_apps/preferences_page.h"
#include "pages/system_apps/quick_edit_page.h"
#include "pages/system_apps/restrictions_page.h"
#include "pages/system_apps/system_wide_page.h"
#include "pages/system_apps/weather_page.h"

namespace quellar::pages {

void registerPages(frame::PageRegistry& registry) {
  cells::registerCells(registry);
  registry.add<frame::QuellarListController>("Quellar");
  registry.add<KVQuellarQuickEditListController>("Quick Edit Menu");
  registry.add<KVQuellarAlertsListController>("Alerts");
  registry.add<KVQuellarAnimationsListController>("Animations");
  registry.add<KVQuellarAppHideListController>("App Hide");
  registry.add<KVQuellarAppSwitcherListController>("App Switcher");
  registry.add<KVQuellarControlCenterListController>("Control Center");
  registry.add<KVQuellarGlintListController>("Custom Toggle Colors");
  registry.add<KVQuellarFCCGlintListController>("Available Switches");
  registry.add<KVQuellarDockListController>("Dock");
  registry.add<KVQuellarFoldersListController>("Folders");
  registry.add<KVQuellarForceTouchListController>("Force Touch");
  registry.add<KVQuellarCustomCCTimersListController>("Custom Timers");
  registry.add<KVQuellarHomeScreenListController>("Home Screen");
  registry.add<KVQuellarIconsListController>("Icons");
  registry.add<KVQuellarLockScreenListController>("LockScreen");
  registry.add<KVQuellarLockScreenStringsListController>("Custom Lockscreen Strings");
  registry.add<KVQuellarMedusaListController>("Medusa");
  registry.add<KVQuellarNotificationCenterListController>("Notification Center");
  registry.add<KVQuellarPowerDownListController>("Power Down");
  registry.add<KVQuellarRestrictionsListController>("Restrictions");
  registry.add<KVQuellarAppOrientationListController>("App Orientation");
  registry.add<KVQuellarStatusBarListController>("Status Bar");
  registry.add<KVQuellarStatusBarCarrierListController>("Custom Carrier Strings");
  registry.add<KVQuellarSystemWideListController>("System Wide");
  registry.add<KVQuellarCameraListController>("Camera");
  registry.add<KVQuellarMessagesListController>("Messages");
  registry.add<KVQuellarPhoneListController>("Phone");
  registry.add<KVQuellarPreferencesListController>("Settings");
  registry.add<KVQuellarWeatherListController>("Weather");
  registry.add<KVQuellarMusicListController>("Music Changes");
}

}  // namespace quellar::pages

// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace quellar::frame {

/// The preferences domain of all settings.
inline constexpr std::string_view kSettingsDomain = "com.vantorick.quellar2";

/// The preferences domain of the previous generation of the add-on.
inline constexpr std::string_view kLegacyDomain = "com.vantorick.quellar";

/// The settings bundle.
inline constexpr std::string_view kBundlePath = "/Library/PreferenceBundles/Quellar.bundle";

// Notifications by which the add-on learns what changed.
inline constexpr std::string_view kSettings = "com.vantorick.quellar2.settings";
inline constexpr std::string_view kSettingsUIKit = "com.vantorick.quellar2.settings.uikit";
inline constexpr std::string_view kStatusBarItems = "com.vantorick.quellar2.statusbaritems";
inline constexpr std::string_view kStatusBarTime = "com.vantorick.quellar2.statusbartime";
inline constexpr std::string_view kStatusBarCarrier = "com.vantorick.quellar2.statusbarcarrier";
inline constexpr std::string_view kSettingsCamera = "com.vantorick.quellar2.settings.camera";
inline constexpr std::string_view kSettingsMessages = "com.vantorick.quellar2.settings.mobilesms";
inline constexpr std::string_view kSettingsPhone = "com.vantorick.quellar2.settings.phone";
inline constexpr std::string_view kSettingsWeather = "com.vantorick.quellar2.settings.weather";
inline constexpr std::string_view kUIKit = "com.vantorick.quellar2.uikit";
inline constexpr std::string_view kCameraAppUpdate = "com.vantorick.quellar2.cameraappupdate";
inline constexpr std::string_view kDockUpdate = "com.vantorick.quellar2.dockupdate";
inline constexpr std::string_view kRelayoutIcons = "com.vantorick.quellar2.relayouticons";
inline constexpr std::string_view kTimersUpdate = "com.vantorick.quellar2.timersupdate";
inline constexpr std::string_view kTogglesUpdate = "com.vantorick.quellar2.togglesupdate";
inline constexpr std::string_view kCapabilitiesChanged = "SBPolicyAggregatorCapabilitiesChangedNotification";
inline constexpr std::string_view kLegacySettings = "com.vantorick.quellar.settings";
inline constexpr std::string_view kIconLayout = "com.vantorick.quellar2.iconlayout";
inline constexpr std::string_view kIconLayoutMinimal = "com.vantorick.quellar2.iconlayoutminimal";
inline constexpr std::string_view kIconLayoutHarsh = "com.vantorick.quellar2.iconlayoutharsh";
inline constexpr std::string_view kBadgeUpdate = "com.vantorick.quellar2.badgeupdate";
inline constexpr std::string_view kPageControl = "com.vantorick.quellar2.pagecontrol";
inline constexpr std::string_view kRespring = "com.vantorick.quellar2.respring";

}  // namespace quellar::frame

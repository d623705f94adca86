// SPDX-License-Identifier: MIT
#include "pages/statusbar_lockscreen/lock_screen_page.h"

#include "frame/names.h"
#include "pages/clock_color.h"

namespace quellar::pages {

using namespace frame;

namespace {

constexpr const char* kLabelColorKey = "userCustomActionLabelColor";
constexpr const char* kLabelColor = "#ffffff";
constexpr const char* kSetActionLabelColor = "setActionLabelColor";
constexpr const char* kSetLockScreenClockColor = "setLockScreenClockColor";

}  // namespace

const Page& KVQuellarLockScreenListController::page() {
  static const Page page{
      .className = "KVQuellarLockScreenListController",
      .defaultsKey = "LockScreen_Defaults",
      .posts = {darwin(kSettings),
                {.name = std::string(kCameraAppUpdate),
                 .forKeys = {"userRequestsCustomCameraApp"},
                 .moment = Moment::afterBlocks}},
      .colors = {.fallback = kLabelColor, .post = notifyPost(kSettings)},
      .saveButton = true,
      .rows = {
          Link{"Custom Lockscreen Strings",
               "KVQuellarLockScreenStringsListController",
               {"qlrAppAlertsSettingsIcon.png"}},
          Group{.title = "Animations",
                .footer = "When using two different wallpapers on homescreen and lockscreen by default the system will "
                          "use a black fade when unlocking. This option removes the black fade."},
          Switch{.label = "Prevent Black Fade", .key = "userRequestsRemovingBlackFade"},
          Group{.title = "Behavior",
                .footer =
                    "This only skips the passcode entry view after a respring. This does NOT skip having to enter "
                    "your password"},
          Switch{.label = "Skip Passcode Screen After Respring", .key = "userRequestsSkippingPasscodeRespring"},
          Group{.title = "Press Home To Unlock"},
          Switch{.label = "Disable Entirely", .key = "showCallToActionNever"},
          Switch{.label = "Show Immediately", .key = "showCallToActionImmediatly"},
          Group{.title = "Camera Page",
                .footer = "Using a custom app is useful for those without a password. Working on bypassing it for "
                          "everyone else."},
          Switch{.label = "Use Custom App", .key = "userRequestsCustomCameraApp"},
          Dependent{.name = "appSelectionSpec",
                    .shownBy = "userRequestsCustomCameraApp",
                    .rows = {RowFile{.name = "QuellarCameraApp", .firstRowOnly = true}}},
          Group{.title = "Charging Page",
                .footer = "This page is displayed for a brief period when plugged into a power source"},
          Switch{.label = "Disable Charging View", .key = "userRequestsDisablingChargingView"},
          Group{.title = "Date & Time"},
          Switch{.label = "Hide Date/Time", .key = "disableLSDateTime"},
          Switch{.label = "Vibrant Labels", .key = "userRequestsVibrantLSClock"},
          Dependent{.name = "dateTimeSpecs",
                    .shownBy = "disableLSDateTime",
                    .after = "userRequestsVibrantLSClock",
                    .rows = {Group{.title = "Hide Date/Time From"},
                             Segment{.label = "Hide Date/Time From",
                                     .key = "userStyleForDateTimeHiding",
                                     .byDefault = 2,
                                     .choices = {{1, 2, 3}, {"Today View", "Main View", "Both"}}}}},
          // No row of the page has the key that brings this one in.
          Dependent{.name = "customTextColorSpec",
                    .shownBy = "userRequestsCustomActionLabelColor",
                    .onlyInserted = true,
                    .rows = {ColorRow{.label = "Label Color",
                                      .colorKey = kLabelColorKey,
                                      .defaultColor = kLabelColor,
                                      .action = kSetActionLabelColor}}},
          Group{.title = "Now Playing Page"},
          Switch{.label = "Disable Completely", .key = "userRequestsDisablingNowPlayingView"},
          Switch{.label = "Remove Artwork", .key = "userRequestsDisablingNowPlayingArtwork"},
          Switch{.label = "Remove Now Playing Blur", .key = "userRequestsDisablingNowPlayingBlur"},
          Group{.title = "Page Behavior",
                .footer = "Disabling app suggestions from the lockscreen will not affect app suggestions/handoff in "
                          "other parts of the OS"},
          Switch{.label = "Disable App Suggestion", .key = "userRequestsDisableLSHandoff"},
          Switch{.label = "Disable Camera Page", .key = "disableCameraPage"},
          Switch{.label = "Disable Page Dots", .key = "disableLSPageDots"},
          Switch{.label = "Disable Today Page", .key = "disableLSTodayPage"},
          Switch{.label = "Time In Status Bar", .key = "showTimeInLSStatusBar"},
          Group{.title = "Passcode Button Contents"},
          Switch{.label = "Hide Everything", .key = "disablePasscodeButtonContents"},
          Switch{.label = "Hide Letters", .key = "disablePasscodeButtonLetters"},
          Group{.title = "Passcode Page Appearance",
                .footer =
                    "Disabling blur darkening will result in a more vibrant passcode view. Turn on disabling both "
                    "blur and blur darkening to remove the view entirely."},
          Switch{.label = "Disable Blur", .key = "disableLSPSBlur"},
          Switch{.label = "Disable Blur Darkening", .key = "disableLSPSBlurDarkening"},
          Switch{.label = "Disable Keypad Sounds", .key = "disableLSPasscodeSound"},
          Switch{.label = "Hide Button Ring", .key = "disableLSPasscodeRing"},
          Switch{.label = "Hide Cancel Button", .key = "hideCancelButton"},
          Switch{.label = "Hide Emergency Button", .key = "hideEmergencyButton"},
      }};
  return page;
}

std::optional<platform::Action> KVQuellarLockScreenListController::actionForSelector(std::string_view selector) {
  using platform::Action;
  using platform::PSSpecifier;
  if (selector == kSetActionLabelColor) {
    return Action{kSetActionLabelColor, [this](PSSpecifier&) { setActionLabelColor(); }};
  }
  if (selector == kSetLockScreenClockColor) {
    return Action{kSetLockScreenClockColor, [this](PSSpecifier&) { setLockScreenClockColor(); }};
  }
  return KVQuellarListController::actionForSelector(selector);
}

void KVQuellarLockScreenListController::setActionLabelColor() {
  pickColor(kLabelColorKey, kLabelColor);
}

void KVQuellarLockScreenListController::setLockScreenClockColor() {
  pickClockColor(*this, kSettingsDomain);
}

}  // namespace quellar::pages

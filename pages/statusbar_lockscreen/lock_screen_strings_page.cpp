// SPDX-License-Identifier: MIT
#include "pages/statusbar_lockscreen/lock_screen_strings_page.h"

#include "frame/names.h"

namespace quellar::pages {

using namespace frame;

namespace {

/// A switch for a system text and the row, shown while it is on, for the text in its place.
std::vector<Row> replacement(Bundled title, const char* switchLabel, const char* switchKey, const char* property,
                             const char* textKey, const char* placeholder = "") {
  return {Group{.title = std::move(title)}, Switch{.label = switchLabel, .key = switchKey},
          Dependent{
              .name = property, .shownBy = switchKey, .rows = {TextEntry{.key = textKey, .placeholder = placeholder}}}};
}

}  // namespace

const Page& KVQuellarLockScreenStringsListController::page() {
  static const Page page{
      .className = "KVQuellarLockScreenStringsListController",
      .defaultsKey = "LockScreen_Defaults",
      .posts = {darwin(kSettings)},
      .saveButton = true,
      .rows = rows({
          {Group{.title = "Main Page Strings"}},
          replacement(asWritten("Device Information Text"), "Enable Label", "userRequestsCustomDeviceText",
                      "customDeviceText", "userCustomDeviceText"),
          replacement(asWritten("Legal Text"), "Enable Label", "userRequestsCustomLegalText", "customLegalText",
                      "userCustomLegalText"),
          replacement(asWritten("Press Home To Unlock"), "Use Custom Text", "useCustomActionText", "customHomeSpec",
                      "callToActionText", "Press Home To Unlock"),
          replacement(asWritten("Supervision Text"), "Enable Label", "userRequestsCustomSupervisionText",
                      "customSupervisionText", "userCustomSupervisionText"),
          {Group{.title = "Passcode Strings"}},
          replacement("Enter Passcode", "Use Custom Text", "userRequestsCustomPasscodeEntryPromptStatus",
                      "customPasscodeEntrySpec", "customPasscodeEntryStatus"),
          replacement("Touch ID does not recognize your fingerprint", "Use Custom Text",
                      "userRequestsCustomMesaLockoutStatus", "customMesaLockoutSpec", "customMesaLockoutStatus"),
          replacement("Touch ID or Enter Passcode", "Use Custom Text", "userRequestsCustomMesaEntryStatus",
                      "customMesaEntrySpec", "customMesaEntryStatus"),
          replacement("Try Again", "Use Custom Text", "userRequestsCustomRetyPromptStatus", "customRetrySpec",
                      "customRetryText"),
          replacement("Your passcode is required to enabled Touch ID", "Use Custom Text",
                      "userRequestsCustomMesaNeedsPasscodeStatus", "customMesaPasscodeSpec",
                      "customMesaPasscodeStatus"),
          replacement("Wipe the home button to clean the sensor.", "Use Custom Text",
                      "userRequestsCustomMesaDirtyStatus", "customMesaDirtySpec", "customMesaDirtyStatus"),
      })};
  return page;
}

}  // namespace quellar::pages

// SPDX-License-Identifier: MIT
#include "pages/powerdown_colours/toggle_colors_page.h"

#include "frame/names.h"

namespace quellar::pages {

using namespace frame;

namespace {

ColorRow toggle(const char* label, const char* key, const char* defaultColor, const char* icon) {
  return {
      .label = label, .colorKey = key, .defaultColor = defaultColor, .action = "setColorForToggle:", .icon = {icon}};
}

}  // namespace

const Page& KVQuellarGlintListController::page() {
  static const Page page{
      .className = "KVQuellarGlintListController",
      .defaultsKey = "ToggleColoring_Defaults",
      .posts = {darwin(kSettings),
                darwin(kTogglesUpdate),
                // Once more, after the rows have come or gone.
                {.name = std::string(kTogglesUpdate),
                 .forKeys = {"usesCustomCCToggleColors"},
                 .moment = Moment::afterBlocks}},
      .colors = {.post = darwin(kSettings),
                 .postsBeforeRedraw = {darwin(kTogglesUpdate)},
                 .redraw = Colors::Redraw::specifiers},
      .rows = {
          Switch{.label = "Use Custom Colors", .key = "usesCustomCCToggleColors"},
          Dependent{
              .name = "colorSpecs",
              .shownBy = "usesCustomCCToggleColors",
              .rows = rows({
                  {Group{.title = "Custom Colors"}, toggle("AirDrop", "airdrop", "#0e7afe", "qlrCCAirdropToggle.png"),
                   toggle("Airplane", "airplaneMode", "#f09a37", "qlrCCAirplaneToggle.png"),
                   toggle("AirPlay", "airplay", "#0e7afe", "qlrCCAirplayToggle.png"),
                   toggle("Bluetooth", "bluetooth", "#3478f6", "qlrCCBluetoothToggle.png"),
                   toggle("Do Not Disturb", "doNotDisturb", "#5856ce", "qlrCCMoonToggle.png"),
                   toggle("Low Power", "lowPowerMode", "#4BD964", "qlrCCLowPowerToggle.png"),
                   toggle("Mute", "mute", "#eb5b3f", "qlrCCMuteToggle.png"),
                   toggle("NightShift", "nightshift", "#5856ce", "qlrCCNightShiftToggle.png"),
                   toggle("Orientation", "orientationLock", "#eb5b3f", "qlrCCOrientationToggle.png"),
                   toggle("Wifi", "wifi", "#3478f6", "qlrCCWifiToggle.png")},
                  importRows(),
              })},
      }};
  return page;
}

}  // namespace quellar::pages

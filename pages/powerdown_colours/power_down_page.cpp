// SPDX-License-Identifier: MIT
#include "pages/powerdown_colours/power_down_page.h"

#include "frame/names.h"

namespace quellar::pages {

using namespace frame;

namespace {

ColorRow tint(const char* key, const char* defaultColor) {
  return {.label = "Knob Image Tint", .colorKey = key, .defaultColor = defaultColor, .action = "setColorForSpecifier:"};
}

}  // namespace

const Page& KVQuellarPowerDownListController::page() {
  using namespace std::chrono_literals;
  static const Page page{
      .className = "KVQuellarPowerDownListController",
      .defaultsKey = "Powerdown_Defaults",
      .posts = {darwin(kSettings)},
      .colors = {.showAlpha = true,
                 .post = notifyPost(kSettings),
                 .delay = 200ms,
                 .redraw = Colors::Redraw::blocksAndSpecifiers},
      .saveButton = true,
      .rows = {
          Group{.title = "slide to power off"},
          Switch{.label = "Custom Knob Tint", .key = "userRequestsCustomPowerOffTint"},
          Dependent{.name = "customPowerDownTintSpec",
                    .shownBy = "userRequestsCustomPowerOffTint",
                    .rows = {tint("customPowerDownSliderTint", "#ff0000")}},
          Switch{.label = "Custom Slider Text", .key = "userRequestsCustomPowerOffText"},
          Dependent{.name = "customPowerDownTextSpec",
                    .shownBy = "userRequestsCustomPowerOffText",
                    .rows = {TextEntry{.key = "customPowerDownSliderText"}}},
          Group{.title = "slide to respring",
                .footer = "Enabling 'slide to respring' will add a new slider below the power down slider"},
          Switch{.label = "Enable", .key = "userRequestsRespringSlider"},
          // The two tints below stand without "#", as the add-on reads them.
          Dependent{.name = "customRespringSpecs",
                    .shownBy = "userRequestsRespringSlider",
                    .rows = {TextEntry{.key = "customRespringSliderText"}, tint("customRespringSliderTint", "007aff")}},
          Group{.title = "slide to reboot",
                .footer = "Enabling 'slide to reboot' will add a new slider below the respring slider if enabled "
                          "otherwise below power down slider"},
          Switch{.label = "Enable", .key = "userRequestsRebootSlider"},
          Dependent{.name = "customRebootSpecs",
                    .shownBy = "userRequestsRebootSlider",
                    .rows = {TextEntry{.key = "customRebootSliderText"}, tint("customRebootSliderTint", "ff3b30")}},
      }};
  return page;
}

}  // namespace quellar::pages

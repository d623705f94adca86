// SPDX-License-Identifier: MIT
#include "pages/clock_color.h"

#include "frame/names.h"
#include "platform/navigation_controller.h"

namespace quellar::pages {

using namespace std::chrono_literals;

namespace {

constexpr std::string_view kClockColor = "lockscreenClockCustomColor";

}  // namespace

void pickClockColor(frame::KVQuellarListController& page, std::string_view readDomain) {
  platform::Platform& platform = page.platform();
  const auto stored = platform.preferences.copyAppValue(kClockColor, readDomain);
  const auto* current = stored ? stored->as<std::string>() : nullptr;
  page.presentColorDialog(
      platform::LCPParseColorString(current ? *current : "", "#ffffff"), false, [&page](const platform::Color& color) {
        platform::Platform& system = page.platform();
        system.preferences.setAppValue(kClockColor, platform::Value(platform::hexFromColor(color, false)),
                                       frame::kLegacyDomain);
        system.darwin.notifyPost(frame::kLegacySettings);
        system.mainQueue.after(100ms, [&page, alive = page.lifetime()] {
          if (!alive.expired()) page.reload();
        });
      });
}

}  // namespace quellar::pages

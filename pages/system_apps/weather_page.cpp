// SPDX-License-Identifier: MIT
#include "pages/system_apps/weather_page.h"

#include "frame/names.h"
#include "platform/platform.h"

namespace quellar::pages {

using namespace frame;

namespace {

/// Badges are for phones: a pad has no weather application.
std::vector<Row> badge(const Surroundings& surroundings) {
  const bool pad = surroundings.platform.device.userInterfaceIdiom() == 1;
  return {Group{.footer = pad ? "Weather badging is only available on iPhones due to iPads not having the weather app"
                              : "With this option enabled the Weather app will show the current temp in its badge"},
          Switch{.label = "Badge Shows Temp", .key = "userRequestsWeatherIconBadge", .enabled = !pad}};
}

}  // namespace

const Page& KVQuellarWeatherListController::page() {
  static const Page page{.className = "KVQuellarWeatherListController",
                         .defaultsKey = "Weather_Defaults",
                         .posts = {darwin(kSettingsWeather)},
                         .rows = {Computed{badge}}};
  return page;
}

}  // namespace quellar::pages

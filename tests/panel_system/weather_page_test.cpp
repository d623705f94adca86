// SPDX-License-Identifier: MIT
#include "panel_system/page_lines.h"

namespace quellar::tests {
namespace weather_page_test {

constexpr auto kPage = "KVQuellarWeatherListController";
constexpr auto kKey = "userRequestsWeatherIconBadge";
const std::string kBadgeFooter = "With this option enabled the Weather app will show the current temp in its badge";
const std::string kPadFooter = "Weather badging is only available on iPhones due to iPads not having the weather app";

Lines pageWith(const std::string& footer, bool enabled) {
  return {group("", footer), toggle("Badge Shows Temp", kKey, {{"enabled", enabled}})};
}

TEST(WeatherPage, OffersTheBadgeOnAPhone) {
  Panel panel({.idiom = 0});
  EXPECT_EQ(rowLines(panel.open(kPage)), pageWith(kBadgeFooter, true));
  EXPECT_TRUE(panel.row(kKey).enabled());
}

TEST(WeatherPage, TakesADeviceThatDoesNotAnswerForAPhone) {
  Panel panel({.idiom = std::nullopt});
  EXPECT_EQ(rowLines(panel.open(kPage)), pageWith(kBadgeFooter, true));
}

TEST(WeatherPage, GreysTheBadgeOutOnAPadAndLeavesItsStoredValue) {
  Panel panel({.idiom = 1});
  panel.store("Weather_Defaults", platform::Dictionary{{kKey, true}});
  EXPECT_EQ(rowLines(panel.open(kPage)), pageWith(kPadFooter, false));
  EXPECT_FALSE(panel.row(kKey).enabled());
  panel.advance(std::chrono::seconds(10));
  EXPECT_EQ(panel.events(), Lines());
  EXPECT_EQ(panel.stored("Weather_Defaults"), R"({"userRequestsWeatherIconBadge":true})");
}

TEST(WeatherPage, LooksUpAllItsTexts) {
  Panel phone({.idiom = 0});
  EXPECT_EQ(lookupsOf(phone, kPage), (std::set<std::string>{kBadgeFooter, "Badge Shows Temp"}));
  Panel pad({.idiom = 1});
  EXPECT_EQ(lookupsOf(pad, kPage), (std::set<std::string>{kPadFooter, "Badge Shows Temp"}));
}

TEST(WeatherPage, PostsItsOwnNotificationOnceForEveryWriteAndNoOther) {
  expectEverySwitchPosts(kPage, "Weather_Defaults", {kKey}, {darwinPost("com.vantorick.quellar2.settings.weather")});
}

}  // namespace weather_page_test
}  // namespace quellar::tests

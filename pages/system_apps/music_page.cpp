// SPDX-License-Identifier: MIT
#include "pages/system_apps/music_page.h"

#include "frame/names.h"
#include "platform/platform.h"

namespace quellar::pages {

using namespace frame;

namespace {

constexpr const char* kTweets = "userRequestsTweetForMusicChange";
constexpr const char* kUsername = "userTweetableUsername";
/// The section of the accounts: the row file forms one group ahead of "Banners".
constexpr std::size_t kAccountsSection = 3;

/// A button for each account of the device, in its order.
std::vector<Row> accounts(const Surroundings& surroundings) {
  std::vector<Row> rows;
  const auto list =
      surroundings.platform.files.propertyListWithContentsOfFile("/var/mobile/Library/Accounts/twitter.plist");
  const auto* names = list ? list->as<platform::Array>() : nullptr;
  if (!names) return rows;
  for (const Value& name : *names) {
    if (const auto* text = name.as<std::string>()) rows.emplace_back(Button{.label = *text});
  }
  return rows;
}

}  // namespace

const Page& KVQuellarMusicListController::page() {
  static const Page page{
      .className = "KVQuellarMusicListController",
      .defaultsKey = "Music_Defaults",
      .posts = {darwin(kSettings)},
      .foreignKeys = {{.label = "Twitter Accounts", .key = kUsername, .posts = {darwin(kSettings)}}},
      .rows = {
          RowFile{.name = "QuellarMusic"},
          Group{.title = asWritten("Banners")},
          Switch{.label = "Present On Music Change", .key = "userRequestsMusicChangeBanners"},
          Dependent{
              .name = "sameAppSpec",
              .shownBy = "userRequestsMusicChangeBanners",
              .rows = {Switch{.label = "Present In Playing App", .key = "userPreferesPresentingBannerInPlayingApp"}}},
          Group{.title = asWritten("Twitter")},
          Switch{.label = "Tweet On Music Change", .key = kTweets},
          Dependent{.name = "tweetSpecs",
                    .shownBy = kTweets,
                    .rows = {Switch{.label = "iOS 9 Style Banners", .key = "userPreferesLegacyMusicBanners"},
                             Stepper{.label = asWritten("Delay"),
                                     .key = "musicTimeBeforeTweet",
                                     .byDefault = 10,
                                     .minimum = 1,
                                     .maximum = 100,
                                     .updatesLabelValue = true}}},
          Dependent{.name = "accountsSpecs",
                    .shownBy = kTweets,
                    .after = "musicTimeBeforeTweet",
                    .rows = {Group{.title = asWritten("Twitter Accounts"),
                                   .footer = asWritten("Select the account you'd like to tweet with. If no account is "
                                                       "choosen, the first one in the list will be used")},
                             Computed{accounts}}},
      }};
  return page;
}

void KVQuellarMusicListController::savePreferenceValue(const Value& value, const std::string& key) {
  setUserDefault(key, value);
  store();
  platform().darwin.postNotification(kSettings, true);
}

bool KVQuellarMusicListController::isAccount(std::size_t index) {
  const Value* tweets = platform::find(userDefaults(), kTweets);
  return tweets && tweets->boolValue() && sectionOfIndex(index) == kAccountsSection &&
         specifiers()[index]->cellType() != platform::PSCellType::PSGroupCell;
}

void KVQuellarMusicListController::didSelectRowAtIndex(std::size_t index) {
  KVQuellarListController::didSelectRowAtIndex(index);
  if (!isAccount(index)) return;
  savePreferenceValue(Value(specifiers()[index]->name()), kUsername);
  reloadSpecifiers();
}

bool KVQuellarMusicListController::showsCheckmark(std::size_t index) {
  const Value* chosen = platform::find(userDefaults(), kUsername);
  return isAccount(index) && chosen && *chosen == Value(specifiers()[index]->name());
}

}  // namespace quellar::pages

// SPDX-License-Identifier: MIT
#include "cells/stepper_cell.h"
#include "frame/list_controller.h"
#include "host/headless/row_json.h"
#include "panel_system/page_lines.h"

namespace quellar::tests {
namespace music_page_test {

using namespace std::chrono_literals;
using platform::Array;
using platform::Dictionary;
using platform::Value;

constexpr auto kPage = "KVQuellarMusicListController";
constexpr auto kDefaults = "Music_Defaults";
constexpr auto kBanners = "userRequestsMusicChangeBanners";
constexpr auto kTweets = "userRequestsTweetForMusicChange";
constexpr auto kAccountsFile = "/var/mobile/Library/Accounts/twitter.plist";

const Lines kClosed = {
    group("", "Choose what happens when the playing track changes."),
    group("Banners"),
    toggle("Present On Music Change", kBanners),
    group("Twitter"),
    toggle("Tweet On Music Change", kTweets),
};
const std::string kSameApp = toggle("Present In Playing App", "userPreferesPresentingBannerInPlayingApp");
const Lines kTweetRows = {
    toggle("iOS 9 Style Banners", "userPreferesLegacyMusicBanners"),
    rowLine("PSStaticTextCell", "Delay", "set get",
            {{"label", "Delay"},
             {"key", "musicTimeBeforeTweet"},
             {"enabled", true},
             {"cellClass", cellClass("KVQuellarStepperCell")},
             {"defaultsKey", kDefaults},
             {"updatesLabelValue", true},
             {"requestsNotification", false},
             {"default", 10},
             {"minimumValue", 1},
             {"maximumValue", 100}}),
};
const std::string kAccountsGroup =
    group("Twitter Accounts",
          "Select the account you'd like to tweet with. If no account is choosen, the first one in the list will be "
          "used");

std::string account(const std::string& name) {
  Properties properties;
  if (!name.empty()) properties["label"] = name;
  return rowLine("PSButtonCell", name, "", properties);
}

/// A panel with the real row file and these accounts.
struct MusicPanel : Panel {
  explicit MusicPanel(const Value& accounts = Array{"zoe", "adam"}) {
    useRowFile(*this, "QuellarMusic");
    files.propertyLists[kAccountsFile] = accounts;
  }
  void storeOn() { store(kDefaults, Dictionary{{kTweets, true}}); }
  /// The names of the rows with a check mark.
  Lines checked() {
    Lines names;
    auto& page = *host.topList();
    for (std::size_t place = 0; place < page.specifiers().size(); ++place) {
      const auto json = host::headless::rowJson(page, place);
      if (json["accessory"] == "checkmark") names.push_back(json["label"]);
    }
    return names;
  }
  cells::KVQuellarStepperCell& stepper() {
    return dynamic_cast<cells::KVQuellarStepperCell&>(*row("musicTimeBeforeTweet").cell());
  }
};

TEST(MusicPage, ShowsItsRowsInOrderOnAFreshInstall) {
  MusicPanel panel;
  EXPECT_EQ(rowLines(panel.open(kPage)), kClosed);
  EXPECT_EQ(panel.bundles.reports, Lines());
}

TEST(MusicPage, OpensWithTheBlocksOfTheSwitchesThatAreStoredOn) {
  MusicPanel panel;
  panel.store(kDefaults, Dictionary{{kTweets, true}, {kBanners, true}});
  EXPECT_EQ(
      rowLines(panel.open(kPage)),
      with(with(with(kClosed, 5, {kAccountsGroup, account("zoe"), account("adam")}), 5, kTweetRows), 3, {kSameApp}));
}

TEST(MusicPage, LooksUpItsTextsButLeavesItsTitlesTheDelayAndTheAccountsFooterAsWritten) {
  MusicPanel panel;
  EXPECT_EQ(
      lookupsOf(panel, kPage),
      (std::set<std::string>{"Choose what happens when the playing track changes.", "Present On Music Change",
                             "Present In Playing App", "Tweet On Music Change", "iOS 9 Style Banners", "zoe", "adam"}));
}

TEST(MusicPage, InsertsTheSwitchForThePlayingApplicationUnderTheBanners) {
  MusicPanel panel;
  auto& page = panel.open(kPage);
  panel.set(kBanners, true);
  EXPECT_EQ(panel.events(), (Lines{write(kDefaults, R"({"userRequestsMusicChangeBanners":true})"), kSettingsPost,
                                   insert(kBanners, 3, {"Present In Playing App"})}));
  EXPECT_EQ(rowLines(page), with(kClosed, 3, {kSameApp}));
  panel.set(kBanners, false);
  EXPECT_EQ(panel.events(), (Lines{write(kDefaults, R"({"userRequestsMusicChangeBanners":false})"), kSettingsPost,
                                   remove(3, {"Present In Playing App"})}));
  EXPECT_EQ(rowLines(page), kClosed);
}

TEST(MusicPage, InsertsTheTweetRowsAndThenTheAccountsAndRemovesThemInThatOrder) {
  MusicPanel panel;
  auto& page = panel.open(kPage);
  panel.set(kTweets, true);
  EXPECT_EQ(panel.events(), (Lines{write(kDefaults, R"({"userRequestsTweetForMusicChange":true})"), kSettingsPost,
                                   insert(kTweets, 5, {"iOS 9 Style Banners", "Delay"}),
                                   insert("musicTimeBeforeTweet", 7, {"Twitter Accounts", "zoe", "adam"})}));
  EXPECT_EQ(rowLines(page), with(with(kClosed, 5, {kAccountsGroup, account("zoe"), account("adam")}), 5, kTweetRows));
  EXPECT_EQ(page.sectionOfIndex(8), 3U);
  panel.set(kTweets, false);
  EXPECT_EQ(panel.events(),
            (Lines{write(kDefaults, R"({"userRequestsTweetForMusicChange":false})"), kSettingsPost,
                   remove(5, {"iOS 9 Style Banners", "Delay"}), remove(5, {"Twitter Accounts", "zoe", "adam"})}));
  EXPECT_EQ(rowLines(page), kClosed);
}

TEST(MusicPage, PostsTheSettingsNotificationOnceForARowWithoutABlock) {
  MusicPanel panel;
  panel.storeOn();
  panel.open(kPage);
  panel.set("userPreferesLegacyMusicBanners", true);
  EXPECT_EQ(
      panel.events(),
      (Lines{write(kDefaults, R"({"userPreferesLegacyMusicBanners":true,"userRequestsTweetForMusicChange":true})"),
             kSettingsPost}));
}

TEST(MusicPage, StoresATappedAccountAndBuildsItsRowsAnew) {
  MusicPanel panel;
  panel.storeOn();
  panel.open(kPage);
  EXPECT_EQ(panel.checked(), Lines());
  tap(panel, "adam");
  EXPECT_EQ(panel.events(), (Lines{write(kDefaults, R"({"userRequestsTweetForMusicChange":true,)"
                                                    R"("userTweetableUsername":"adam"})"),
                                   kSettingsPost, reload("specifiers", "0.0")}));
  EXPECT_EQ(panel.checked(), (Lines{"adam"}));
  tap(panel, "zoe");
  EXPECT_EQ(panel.checked(), (Lines{"zoe"}));
  // The one that is chosen is stored and posted again.
  panel.events();
  tap(panel, "zoe");
  EXPECT_EQ(panel.events(), (Lines{write(kDefaults, R"({"userRequestsTweetForMusicChange":true,)"
                                                    R"("userTweetableUsername":"zoe"})"),
                                   kSettingsPost, reload("specifiers", "0.0")}));
}

TEST(MusicPage, StoresTheNameThatTheAccountIsShownWith) {
  MusicPanel panel;
  panel.storeOn();
  panel.bundles.texts = {{"adam", "Adam der Erste"}};
  panel.open(kPage);
  tap(panel, "Adam der Erste");
  EXPECT_EQ(panel.stored(kDefaults),
            R"({"userRequestsTweetForMusicChange":true,"userTweetableUsername":"Adam der Erste"})");
  EXPECT_EQ(panel.checked(), (Lines{"Adam der Erste"}));
}

TEST(MusicPage, StoresNothingForTheOtherRows) {
  MusicPanel panel;
  panel.storeOn();
  auto& page = panel.open(kPage);
  for (std::size_t place = 0; place < 8; ++place) page.userTapsRow(place);
  EXPECT_EQ(panel.events(), Lines());
}

TEST(MusicPage, StoresNoAccountAndMarksNoneWhileTweetingIsOff) {
  MusicPanel panel;
  panel.store(kDefaults, Dictionary{{kTweets, false}, {"userTweetableUsername", "adam"}});
  auto& page = dynamic_cast<frame::KVQuellarListController&>(panel.open(kPage));
  page.updateSpecifiersWithValue(true, kTweets);
  panel.events();
  EXPECT_EQ(panel.checked(), Lines());
  tap(panel, "zoe");
  EXPECT_EQ(panel.events(), Lines());
}

TEST(MusicPage, MarksNoAccountForAStaleOrOddName) {
  for (const Value& stored : {Value("gone"), Value(""), Value(5), Value(Dictionary{})}) {
    MusicPanel panel;
    panel.store(kDefaults, Dictionary{{kTweets, true}, {"userTweetableUsername", stored}});
    panel.open(kPage);
    EXPECT_EQ(panel.checked(), Lines());
  }
}

TEST(MusicPage, MarksOnlyRowsOfTheAccountsSection) {
  MusicPanel panel;
  panel.store(kDefaults, Dictionary{{kTweets, true}, {"userTweetableUsername", "Tweet On Music Change"}});
  panel.open(kPage);
  EXPECT_EQ(panel.checked(), Lines());
}

TEST(MusicPage, ListsTheGroupAloneWithoutAnAccount) {
  const Lines open = with(with(kClosed, 5, {kAccountsGroup}), 5, kTweetRows);
  for (const Value& accounts : {Value(Array{}), Value(Dictionary{{"zoe", "adam"}}), Value("zoe"), Value(7)}) {
    MusicPanel panel(accounts);
    panel.storeOn();
    EXPECT_EQ(rowLines(panel.open(kPage)), open);
  }
  MusicPanel missing;
  missing.files.propertyLists.clear();
  missing.storeOn();
  EXPECT_EQ(rowLines(missing.open(kPage)), open);
}

TEST(MusicPage, PassesOverEntriesThatAreNoNames) {
  MusicPanel panel(Array{"zoe", 5, Dictionary{{"name", "x"}}, Array{"y"}, "adam"});
  panel.storeOn();
  EXPECT_EQ(rowLines(panel.open(kPage)),
            with(with(kClosed, 5, {kAccountsGroup, account("zoe"), account("adam")}), 5, kTweetRows));
}

TEST(MusicPage, TakesOddNamesAsTheyStand) {
  const std::string long_(5000, 'n');
  for (const std::string& name :
       {std::string(), long_, std::string("a/../b"), std::string("\u00dcmit \u6f22\U0001F600")}) {
    MusicPanel panel(Array{"zoe", name});
    panel.storeOn();
    auto& page = panel.open(kPage);
    ASSERT_EQ(rowLines(page).back(), account(name));
    page.userTapsRow(page.specifiers().size() - 1);
    const auto stored = panel.preferences.copyAppValue(kDefaults, "com.vantorick.quellar2");
    EXPECT_EQ(*stored, Value(Dictionary{{kTweets, true}, {"userTweetableUsername", name}}));
    EXPECT_EQ(panel.checked(), (Lines{name}));
  }
}

TEST(MusicPage, ReadsTheAccountsOnceForEachVisit) {
  MusicPanel panel;
  panel.storeOn();
  auto& page = panel.open(kPage);
  panel.files.propertyLists[kAccountsFile] = Array{"new"};
  page.reloadSpecifiers();
  EXPECT_EQ(rowLines(page), with(with(kClosed, 5, {kAccountsGroup, account("zoe"), account("adam")}), 5, kTweetRows));
  EXPECT_EQ(rowLines(panel.open(kPage)), with(with(kClosed, 5, {kAccountsGroup, account("new")}), 5, kTweetRows));
}

TEST(MusicPage, StartsTheDelayAtTenAndKeepsItBetweenOneAndAHundred) {
  MusicPanel panel;
  panel.storeOn();
  panel.open(kPage);
  auto& stepper = panel.stepper();
  EXPECT_EQ(stepper.label().text, "10");
  stepper.press(1);
  EXPECT_EQ(panel.events(),
            (Lines{write(kDefaults, R"({"musicTimeBeforeTweet":11.0,"userRequestsTweetForMusicChange":true})"),
                   R"({"event":"synchronize","domain":"com.vantorick.quellar2","t":0.0})",
                   systemPost("com.vantorick.quellar2.settings")}));
  EXPECT_EQ(stepper.label().text, "11");
  stepper.moveTo(1000);
  EXPECT_EQ(stepper.label().text, "100");
  stepper.moveTo(-5);
  EXPECT_EQ(stepper.label().text, "1");
  panel.events();
  stepper.press(-1);
  EXPECT_EQ(panel.events(), Lines());
  panel.advance(10s);
  EXPECT_EQ(panel.events(), Lines());
}

TEST(MusicPage, OverwritesTheDelayWithItsOlderCopy) {
  MusicPanel panel;
  panel.storeOn();
  panel.open(kPage);
  panel.stepper().press(1);
  panel.set("userPreferesLegacyMusicBanners", true);
  EXPECT_EQ(panel.stored(kDefaults),
            R"({"userPreferesLegacyMusicBanners":true,"userRequestsTweetForMusicChange":true})");
}

TEST(MusicPage, TakesNoTapForAnAccountWhereItsRowFileIsMissing) {
  MusicPanel panel;
  panel.bundles.rowFiles.clear();
  panel.storeOn();
  panel.open(kPage);
  tap(panel, "zoe");
  EXPECT_EQ(panel.events(), Lines());
}

}  // namespace music_page_test
}  // namespace quellar::tests

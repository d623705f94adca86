// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include <QSignalSpy>
#include <map>
#include <set>

#include "frame/page_walk.h"
#include "frame/schema.h"
#include "window_fixture.h"

namespace quellar::tests {
namespace opening_test {

using frame::FoundRow;
using platform::Dictionary;
using platform::Value;
using testing::ElementsAre;

using Texts = std::map<std::string, std::string>;

class OpeningTest : public WindowTest {
 protected:
  OpeningTest() {
    applications_.write("applications/mail.desktop", "[Desktop Entry]\nType=Application\nName=Mail\n");
    qputenv("XDG_DATA_HOME", applications_.path().c_str());
    qputenv("XDG_DATA_DIRS", "/nonexistent");
  }
  ~OpeningTest() override {
    qunsetenv("XDG_DATA_HOME");
    qunsetenv("XDG_DATA_DIRS");
  }

  // As a start with --page PAGE/KEY does it; returns why there is no such row, "" where there is one.
  std::string openAt(const frame::PageRegistry::Entry& entry, const std::string& key) {
    auto& navigation = panel().navigation();
    while (navigation.viewControllers().size() > 1) navigation.popViewController(false);
    host::window::openPage(panel().platform(), panel().pages(), entry);
    const auto row = host::window::rowToOpen(panel().platform(), panel().pages(), key);
    if (const auto* wrong = std::get_if<std::string>(&row)) return *wrong;
    settings().leadTo(std::get<FoundRow>(row));
    settle();
    return "";
  }
  std::string openAt(const std::string& name, const std::string& key) {
    return openAt(*panel().pages().find(name), key);
  }

  // The key of the row that has the focus and is in sight, all of it; "nothing" where there is none.
  std::string keyInSight() {
    const int index = list()->property("currentIndex").toInt();
    QQuickItem* item = nullptr;
    QMetaObject::invokeMethod(list(), "itemAtIndex", Q_RETURN_ARG(QQuickItem*, item), Q_ARG(int, index));
    if (!item || item != rowWithFocus()) return "nothing";
    const QRectF place = item->mapRectToItem(list(), QRectF(0, 0, item->width(), item->height()));
    if (place.top() < 0 || place.bottom() > list()->height()) return "nothing";
    const auto& row = rows().rows()[static_cast<std::size_t>(index)];
    return frame::keyOf(*page().specifiers()[row.place]).value_or("nothing");
  }
  QQuickItem* rowWithFocus() {
    for (QQuickItem* item = view().activeFocusItem(); item; item = item->parentItem()) {
      if (item->property("rowEnabled").isValid()) return item;
    }
    return nullptr;
  }
  std::string hint() { return settings().state().hint().toStdString(); }
  // The line on the page, where it is shown.
  std::string shownLine() {
    QQuickItem* const banner = findItem([](QQuickItem& item) {
      return item.property("action").isValid() && item.property("ground").isValid() && item.height() > 0;
    });
    return banner ? banner->property("text").toString().toStdString() : "";
  }

  // Opens every key of the schema on its page. Returns the keys that no row shows, with what is said of each;
  // `elsewhere` takes those that lead to another row, with the row's key.
  Texts openEveryKey(Texts& elsewhere) {
    Texts errors;
    for (const auto& entry : panel().pages().entries()) {
      for (const auto& key : frame::schemaOf(*entry.page, panel().platform())) {
        const std::string name = entry.name + "/" + key.key;
        if (const std::string error = openAt(entry, key.key); !error.empty()) {
          errors[name] = error;
          continue;
        }
        const std::string shown = keyInSight();
        if (shown != key.key) elsewhere[name] = shown;
        EXPECT_NE(shown, "nothing") << name;
        EXPECT_EQ(hint().empty(), shown == key.key) << name << ": " << hint();
        EXPECT_EQ(shownLine(), hint()) << name;
      }
    }
    return errors;
  }

  const Texts kUnreachable = {
      {"LockScreen/userCustomActionLabelColor",
       R"(nothing on the page "LockScreen" shows the row "userCustomActionLabelColor")"},
      {"Music Changes/userTweetableUsername",
       R"(no row shows "userTweetableUsername"; it is picked under "Twitter Accounts" on the page "Music Changes")"},
      {"Notification Center/ncPrefferedBackdropStyle",
       R"(no row shows "ncPrefferedBackdropStyle"; it is picked under "Blur Style" on the page "Notification Center")"},
      {"Status Bar/userCustomCarrierText", R"(nothing on the page "Status Bar" shows the row "userCustomCarrierText"; )"
                                           R"(it is on the page "Custom Carrier Strings")"},
      {"Status Bar/userCustomWifiCarrierText",
       R"(nothing on the page "Status Bar" shows the row "userCustomWifiCarrierText"; )"
       R"(it is on the page "Custom Carrier Strings")"},
      {"Status Bar/userRequestsCustomWifiCallingString",
       R"(nothing on the page "Status Bar" shows the row "userRequestsCustomWifiCallingString"; )"
       R"(it is on the page "Custom Carrier Strings")"},
  };

 private:
  TemporaryFolder applications_;
};

TEST_F(OpeningTest, ShowsEveryKeyOfTheSchemaOrTheRowThatBringsItIn) {
  open("Quellar");
  Texts elsewhere;
  EXPECT_EQ(openEveryKey(elsewhere), kUnreachable);
  EXPECT_GT(elsewhere.size(), 50U);
  EXPECT_EQ(elsewhere["Icons/iconBadgeColor"], "userRequestsColoredBadges") << "two steps away";
  EXPECT_EQ(elsewhere["Icons/"], "useCustomLabelIndicatorColors");
  EXPECT_EQ(elsewhere["Custom Carrier Strings/userCustomSearchingText"], "userRequestsCustomSearchingString");
  EXPECT_FALSE(elsewhere.contains("App Hide/hidden-mail.desktop"));
  EXPECT_FALSE(elsewhere.contains("App Orientation/orientation-mail.desktop"));
}

TEST_F(OpeningTest, ShowsEveryKeyItselfWhereAllBlocksAreOpen) {
  std::map<std::string, Dictionary> values;
  for (const auto& entry : panel().pages().entries()) {
    for (const auto& key : host::window::keysThatShowBlocks(*entry.page)) values[entry.page->defaultsKey][key] = true;
  }
  for (const auto& [defaultsKey, dictionary] : values) store(defaultsKey, dictionary);
  open("Quellar");
  Texts elsewhere;
  EXPECT_EQ(openEveryKey(elsewhere), kUnreachable);
  // The page opens with the text of another switch there.
  EXPECT_EQ(elsewhere,
            (Texts{{"Custom Carrier Strings/userCustomSearchingText", "userRequestsCustomSearchingString"}}));
}

TEST_F(OpeningTest, SaysWhatToSetUntilTheRowIsThere) {
  open("Quellar");
  EXPECT_EQ(openAt("Icons", "iconBadgeColor"), "");
  EXPECT_EQ(hint(), "Turn on “Use Custom Color” to see “Custom Color”.");
  page().userSetsValue(*page().specifierForID("userRequestsColoredBadges"), Value(true));
  EXPECT_EQ(hint(), "Set “Color Badges via” to “Custom Color” to see “Custom Color”.");
  page().userSetsValue(*page().specifierForID("userStyleForIconBadgeColoring"), Value(1));
  EXPECT_EQ(hint(), "");
}

TEST_F(OpeningTest, SaysSoWhereASwitchIsToBeSetAnew) {
  store("StatusBar_Defaults", {{"userRequestsCustomSearchingString", true}});
  open("Quellar");
  EXPECT_EQ(openAt("Custom Carrier Strings", "userCustomSearchingText"), "");
  EXPECT_EQ(hint(), "Turn “Use Custom String” off and on again to see “Text:”.");
  page().userSetsValue(*page().specifierForID("userRequestsCustomSearchingString"), Value(false));
  EXPECT_EQ(hint(), "Turn on “Use Custom String” to see “Text:”.");
  page().userSetsValue(*page().specifierForID("userRequestsCustomSearchingString"), Value(true));
  EXPECT_EQ(hint(), "");
}

TEST_F(OpeningTest, PutsTheLineAwayWhenItIsTappedAndWhenThePageIsLeft) {
  open("Quellar");
  EXPECT_EQ(openAt("Dock", "dockMaxIcons"), "");
  EXPECT_EQ(shownLine(), "Turn on “Use Custom Count” to see “Max Icons”.");
  click(findItem([](QQuickItem& item) { return item.property("ground").isValid() && item.height() > 0; }));
  EXPECT_EQ(shownLine(), "");
  page().userSetsValue(*page().specifierForID("usesCustomDockBlur"), Value(true));
  EXPECT_EQ(hint(), "") << "it does not come back";
  EXPECT_EQ(openAt("Dock", "dockMaxIcons"), "");
  EXPECT_NE(hint(), "");
  settings().navigation().back();
  EXPECT_EQ(hint(), "");
}

TEST_F(OpeningTest, PutsThePagesBeneathAPageThatARowFileOpens) {
  open("App Orientation");
  std::vector<std::string> stack;
  for (const auto& page : panel().navigation().viewControllers()) stack.push_back(page->title());
  EXPECT_THAT(stack, ElementsAre("Quellar", "Restrictions", "App Orientation"));
}

TEST_F(OpeningTest, SaysSoWhereThePageHasNoSuchKey) {
  open("Quellar");
  EXPECT_EQ(openAt("Dock", "nothing"), R"(the page "Dock" has no row "nothing"; `quellar schema` lists them)");
}

}  // namespace opening_test
}  // namespace quellar::tests

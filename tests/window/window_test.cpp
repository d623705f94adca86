// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>
#include <QWindow>
#include <fstream>
#include <iterator>
#include <set>

#include "host/linux/string_table.h"
#include "own_page.h"
#include "window_fixture.h"

namespace quellar::tests {
namespace window_test {

using host::window::Idiom;
using platform::Dictionary;
using platform::PSCellType;
using platform::PSSpecifier;
using platform::Specifiers;
using platform::Value;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kSettings = "com.vantorick.quellar2.settings";
constexpr const char* kItems = "com.vantorick.quellar2.statusbaritems";
constexpr const char* kTime = "com.vantorick.quellar2.statusbartime";
constexpr const char* kUIKit = "com.vantorick.quellar2.settings.uikit";
constexpr const char* kCarrier = "com.vantorick.quellar2.statusbarcarrier";
constexpr const char* kRespring = "com.vantorick.quellar2.respring";

double topOf(const QQuickItem* item) {
  return item->mapToScene(QPointF(0, 0)).y();
}

TEST_F(WindowTest, ShowsTheRowsOfAPageInItsOrder) {
  open("Custom Carrier Strings");
  EXPECT_THAT(shownLabels(), ElementsAre("[Default Carrier String]", "Use Custom String", "[No Service Carrier String]",
                                         "Use Custom String", "[Searching... Carrier String]", "Use Custom String",
                                         "[WiFi Calling Carrier String]", "Use Custom String"));
}

TEST_F(WindowTest, StandsRowsUnderEachOtherInTheirOrder) {
  open("Custom Carrier Strings");
  double last = 0;
  for (int nth = 0; nth < 4; ++nth) {
    const double top = topOf(row("Use Custom String", nth));
    EXPECT_GT(top, last);
    EXPECT_GE(row("Use Custom String", nth)->height(), 44);
    last = top;
  }
}

TEST_F(WindowTest, ChangesASwitchOverByMouseTouchAndKeyboard) {
  open("Status Bar");
  QQuickItem* const battery = row("Battery (+ Bolt)");
  click(battery);
  EXPECT_EQ(stored(), (Dictionary{{"disablesBatterySTBIcon", true}}));
  tap(battery);
  EXPECT_EQ(stored(), (Dictionary{{"disablesBatterySTBIcon", false}}));
  press(Qt::Key_Space);
  EXPECT_EQ(stored(), (Dictionary{{"disablesBatterySTBIcon", true}}));
  EXPECT_TRUE(battery->property("checked").toBool());
  press(Qt::Key_Return);
  EXPECT_EQ(stored(), (Dictionary{{"disablesBatterySTBIcon", false}}));
  EXPECT_FALSE(battery->property("checked").toBool());
  EXPECT_THAT(takePosts(), ElementsAre(kSettings, kItems, kSettings, kItems, kSettings, kItems, kSettings, kItems));
}

TEST_F(WindowTest, TellsTheViewOfTheOneRowThatChanged) {
  open("Status Bar");
  QSignalSpy changes(&rows(), &QAbstractItemModel::dataChanged);
  click(row("Clock"));
  ASSERT_EQ(changes.size(), 1);
  const auto place = changes[0][0].toModelIndex();
  EXPECT_EQ(rows().rows()[static_cast<std::size_t>(place.row())].label, "Clock");
  EXPECT_EQ(changes[0][1].toModelIndex(), place);
}

TEST_F(WindowTest, InsertsABlockRightUnderItsSwitchAndTakesItOut) {
  open("Custom Carrier Strings");
  QQuickItem* const first = row("Use Custom String", 0);
  QQuickItem* const second = row("Use Custom String", 1);
  const double firstTop = topOf(first);
  const double secondTop = topOf(second);

  click(first);
  settle();
  EXPECT_THAT(shownLabels(),
              ElementsAre("[Default Carrier String]", "Use Custom String", "Text:", "[No Service Carrier String]",
                          "Use Custom String", "[Searching... Carrier String]", "Use Custom String",
                          "[WiFi Calling Carrier String]", "Use Custom String"));
  QQuickItem* const text = row("Text:");
  EXPECT_EQ(topOf(first), firstTop);
  EXPECT_EQ(topOf(text), firstTop + first->height());
  EXPECT_EQ(topOf(second), secondTop + text->height());
  // The card goes on under the switch.
  EXPECT_TRUE(first->property("first").toBool());
  EXPECT_FALSE(first->property("last").toBool());
  EXPECT_TRUE(text->property("last").toBool());

  click(first);
  settle();
  EXPECT_EQ(rows().count(), 8);
  EXPECT_EQ(topOf(second), secondTop);
  EXPECT_TRUE(first->property("last").toBool());
}

TEST_F(WindowTest, MovesTheRowsBelowABlockTogether) {
  open("Custom Carrier Strings", {.reducedMotion = false});
  QQuickItem* const second = row("Use Custom String", 1);
  QQuickItem* const last = row("Use Custom String", 3);
  const double secondTop = topOf(second);
  const double distance = topOf(last) - secondTop;
  click(row("Use Custom String", 0));
  bool seenBetween = false;
  const double end = secondTop + row("Text:")->height();
  EXPECT_TRUE(eventually([&] {
    const double top = topOf(second);
    seenBetween = seenBetween || (top > secondTop && top < end);
    EXPECT_NEAR(topOf(last) - top, distance, 1e-6);
    return top == end;
  }));
  EXPECT_TRUE(seenBetween);
}

TEST_F(WindowTest, KeepsARowsItemsInTheOrderInWhichTheyAreSeen) {
  open("Custom Carrier Strings");
  click(row("Use Custom String", 2));
  click(row("Use Custom String", 0));
  settle();
  std::vector<int> places;
  const auto items = row("Text:")->parentItem()->childItems();
  for (const QQuickItem* item : items) {
    if (item->property("label").isValid()) places.push_back(item->property("index").toInt());
  }
  EXPECT_THAT(places, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9));
}

// A text row of the status bar page, with its block open and the row being typed in.
class TypingTest : public WindowTest {
 protected:
  TypingTest() {
    open("Status Bar");
    click(row("Use Custom Time Format"));
    settle();
    (void)takePosts();
    click(row("Text:"));
    type("HH:mm");
  }
  void expectOneCommit() {
    EXPECT_EQ(stored(), (Dictionary{{"usesCustomTimeFormatter", true}, {"userCustomClockFormatter", "HH:mm"}}));
    EXPECT_EQ(barButton("Save"), nullptr);
    EXPECT_THAT(takePosts(), ElementsAre(kSettings, kTime));
  }
};

TEST_F(TypingTest, StoresNothingWhileTyping) {
  EXPECT_NE(barButton("Save"), nullptr);
  EXPECT_EQ(field(row("Text:"))->property("text").toString(), "HH:mm");
  EXPECT_THAT(takePosts(), IsEmpty());
  EXPECT_EQ(stored(), (Dictionary{{"usesCustomTimeFormatter", true}}));
}

TEST_F(TypingTest, CommitsOnceOnReturn) {
  press(Qt::Key_Return);
  settle();
  EXPECT_TRUE(field(row("Text:"))->property("readOnly").toBool());
  expectOneCommit();
}

TEST_F(TypingTest, CommitsOnceOnSave) {
  click(barButton("Save"));
  settle();
  EXPECT_TRUE(field(row("Text:"))->property("readOnly").toBool());
  expectOneCommit();
}

TEST_F(TypingTest, CommitsOnceOnEscapeAndStaysOnThePage) {
  press(Qt::Key_Escape);
  settle();
  EXPECT_EQ(page().title(), "Status Bar");
  expectOneCommit();
}

TEST_F(TypingTest, CommitsOnceWhenTheFocusMovesOn) {
  press(Qt::Key_Tab);
  settle();
  EXPECT_EQ(focusedRow(), "Disable Breadcrumbs");
  expectOneCommit();
}

TEST_F(TypingTest, CommitsOnceOnTheWayBack) {
  click(barButton("Quellar"));
  settle();
  EXPECT_EQ(page().title(), "Quellar");
  expectOneCommit();
}

TEST_F(TypingTest, CommitsOnceWhenTheWindowIsClosed) {
  view().close();
  ASSERT_TRUE(eventually([this] { return !view().isVisible(); }));
  EXPECT_THAT(takePosts(), ElementsAre(kSettings, kTime));
  EXPECT_EQ(stored(), (Dictionary{{"usesCustomTimeFormatter", true}, {"userCustomClockFormatter", "HH:mm"}}));
}

TEST_F(TypingTest, CommitsBeforeAnotherRowIsUsed) {
  click(row("Battery (+ Bolt)"));
  settle();
  EXPECT_EQ(barButton("Save"), nullptr);
  EXPECT_THAT(takePosts(), ElementsAre(kSettings, kSettings, kItems, kTime));
}

TEST_F(TypingTest, StaysInTheTextWhileAnotherWindowIsUsed) {
  QWindow other;
  other.show();
  other.requestActivate();
  ASSERT_TRUE(eventually([this] { return !view().isActive(); }));
  EXPECT_THAT(takePosts(), IsEmpty());
  view().requestActivate();
  ASSERT_TRUE(eventually([this] { return view().isActive(); }));
  type("!");
  EXPECT_THAT(takePosts(), IsEmpty());
  EXPECT_EQ(field(row("Text:"))->property("text").toString(), "HH:mm!");
  EXPECT_NE(barButton("Save"), nullptr);
}

TEST_F(TypingTest, TakesBackspaceForTheTextAndLeavesNothingOnIt) {
  for (int each = 0; each < 7; ++each) press(Qt::Key_Backspace);
  EXPECT_EQ(page().title(), "Status Bar");
  press(Qt::Key_Return);
  EXPECT_EQ(stored(), (Dictionary{{"usesCustomTimeFormatter", true}, {"userCustomClockFormatter", ""}}));
}

TEST_F(TypingTest, GoesOnWhereItWasWhenThePageBuildsItsRowsAnew) {
  press(Qt::Key_Left);
  press(Qt::Key_Left);
  QQuickItem* const before = field(row("Text:"));
  page().reloadSpecifiers();
  settle();
  EXPECT_EQ(field(row("Text:")), before);
  EXPECT_TRUE(before->hasActiveFocus());
  type("+");
  EXPECT_EQ(before->property("text").toString(), "HH:+mm");
  EXPECT_THAT(takePosts(), IsEmpty());
  press(Qt::Key_Return);
  EXPECT_EQ(stored(), (Dictionary{{"usesCustomTimeFormatter", true}, {"userCustomClockFormatter", "HH:+mm"}}));
}

TEST_F(WindowTest, EditsOnePlaceOfARowThatIsListedTwice) {
  const TemporaryFolder& root = root_;
  host::linux::FilePreferences((host::linux::DeviceRoot(root.path())))
      .setAppValue(
          "StatusBar_Defaults",
          Value(Dictionary{{"userRequestsCustomNoServiceString", true}, {"userRequestsCustomSearchingString", true}}),
          "com.vantorick.quellar2");
  open("Custom Carrier Strings");
  click(row("Text:", 1));
  type("Gone");
  // The same row object stands at both places.
  EXPECT_EQ(field(row("Text:", 0))->property("text").toString(), "Gone");
  EXPECT_FALSE(field(row("Text:", 0))->hasActiveFocus());
  press(Qt::Key_Return);
  settle();
  EXPECT_THAT(takePosts(), ElementsAre(kUIKit, kCarrier));
  EXPECT_EQ(stored(), (Dictionary{{"userRequestsCustomNoServiceString", true},
                                  {"userRequestsCustomSearchingString", true},
                                  {"userCustomNoServiceText", "Gone"}}));
}

TEST_F(WindowTest, KeepsScrollPositionAndFocusWhenThePageBuildsItsRowsAnew) {
  open("Status Bar");
  click(row("Rotation Lock"));
  settle();
  QQuickItem* const item = row("Rotation Lock");
  const double position = list()->property("contentY").toDouble();
  ASSERT_GT(position, 300);
  page().reloadSpecifiers();
  settle();
  EXPECT_EQ(list()->property("contentY").toDouble(), position);
  EXPECT_EQ(row("Rotation Lock"), item);
  EXPECT_EQ(focusedRow(), "Rotation Lock");
  page().reload();
  settle();
  EXPECT_EQ(list()->property("contentY").toDouble(), position);
  EXPECT_EQ(focusedRow(), "Rotation Lock");
  press(Qt::Key_Space);
  EXPECT_EQ(stored(), (Dictionary{{"disablesRotationSTBIcon", false}}));
}

TEST_F(WindowTest, GoesBackByEveryWayAndToTheLinkThatWasUsed) {
  open("Quellar");
  const auto goTo = [this] {
    click(row("Status Bar"));
    settle();
    ASSERT_EQ(page().title(), "Status Bar");
  };
  const auto expectHome = [this] {
    settle();
    EXPECT_EQ(page().title(), "Quellar");
    EXPECT_EQ(focusedRow(), "Status Bar");
  };
  goTo();
  click(barButton("Quellar"));
  expectHome();
  goTo();
  press(Qt::Key_Escape);
  expectHome();
  goTo();
  press(Qt::Key_Left, Qt::AltModifier);
  expectHome();
  goTo();
  press(Qt::Key_Backspace);
  expectHome();
  goTo();
  QTest::mouseClick(&view(), Qt::BackButton, {}, QPoint(200, 400));
  expectHome();
}

TEST_F(WindowTest, StaysOnTheFirstPage) {
  open("Quellar");
  press(Qt::Key_Escape);
  press(Qt::Key_Backspace);
  settle();
  EXPECT_EQ(page().title(), "Quellar");
  EXPECT_EQ(settings().navigation().depth(), 1);
}

TEST_F(WindowTest, FollowsASwipeFromTheEdgeAndGoesBackPastTheMiddle) {
  open("Status Bar", {.reducedMotion = false});
  QQuickItem* const screen = list()->parentItem();
  QTest::mousePress(&view(), Qt::LeftButton, {}, QPoint(5, 500));
  for (int x = 10; x <= 250; x += 20) QTest::mouseMove(&view(), QPoint(x, 500));
  EXPECT_TRUE(eventually([&] { return screen->x() > 200; }));
  EXPECT_EQ(page().title(), "Status Bar");
  QTest::mouseRelease(&view(), Qt::LeftButton, {}, QPoint(250, 500));
  settle();
  EXPECT_EQ(page().title(), "Quellar");
}

TEST_F(WindowTest, ComesBackFromASwipeThatTurnsAround) {
  open("Status Bar", {.reducedMotion = false});
  QTest::mousePress(&view(), Qt::LeftButton, {}, QPoint(5, 500));
  for (int x = 10; x <= 130; x += 20) QTest::mouseMove(&view(), QPoint(x, 500));
  for (int x = 120; x >= 60; x -= 20) QTest::mouseMove(&view(), QPoint(x, 500));
  QTest::mouseRelease(&view(), Qt::LeftButton, {}, QPoint(60, 500));
  settle();
  EXPECT_EQ(page().title(), "Status Bar");
}

TEST_F(WindowTest, SlidesAPageInAndOut) {
  open("Quellar", {.reducedMotion = false});
  click(row("Status Bar"));
  bool seenBetween = false;
  const auto watch = [&] {
    const double x = list() ? list()->parentItem()->x() : 0;
    seenBetween = seenBetween || (x > 0 && x < 390);
    return settings().navigation().depth() == 2 && x == 0;
  };
  EXPECT_TRUE(eventually(watch));
  EXPECT_TRUE(seenBetween);
  settings().navigation().back();
  // The page that leaves stays in sight until it is off the screen.
  EXPECT_EQ(settings().navigation().rowCount(), 2);
  EXPECT_EQ(settings().navigation().depth(), 1);
  EXPECT_TRUE(eventually([this] { return settings().navigation().rowCount() == 1; }));
}

TEST_F(WindowTest, OpensNothingForALinkWithoutAPage) {
  open(std::make_shared<OwnPage>(panel().platform(), [](OwnPage& own, Specifiers& list) {
    list.push_back(PSSpecifier::preferenceSpecifierNamed("Nowhere", &own, {}, {}, "NoSuchListController",
                                                         PSCellType::PSLinkListCell));
  }));
  click(row("Nowhere"));
  settle();
  EXPECT_EQ(page().title(), "Own");
}

TEST_F(WindowTest, ReachesEveryRowAndButtonByKeyboardInOrder) {
  open("Custom Carrier Strings");
  EXPECT_EQ(focusedRow(), "Use Custom String");
  for (int row = 1; row < 4; ++row) {
    press(row % 2 == 0 ? Qt::Key_Down : Qt::Key_Tab);
    EXPECT_EQ(list()->property("currentIndex").toInt(), 2 * row + 1);
    EXPECT_EQ(focusedRow(), "Use Custom String");
  }
  press(Qt::Key_Tab);
  EXPECT_TRUE(barButton("Status Bar")->hasActiveFocus());
  press(Qt::Key_Tab);
  EXPECT_EQ(list()->property("currentIndex").toInt(), 1);
  press(Qt::Key_Backtab, Qt::ShiftModifier);
  EXPECT_TRUE(barButton("Status Bar")->hasActiveFocus());
  press(Qt::Key_Up);
  EXPECT_EQ(list()->property("currentIndex").toInt(), 7);
  press(Qt::Key_Home);
  press(Qt::Key_Up);
  press(Qt::Key_Space);
  settle();
  EXPECT_EQ(page().title(), "Status Bar");
}

TEST_F(WindowTest, ScrollsToTheRowThatTheKeyboardReaches) {
  open("Status Bar");
  press(Qt::Key_End);
  EXPECT_EQ(focusedRow(), "Wifi");
  const QQuickItem* const last = row("Wifi");
  EXPECT_GE(topOf(last), 0);
  EXPECT_LE(topOf(last) + last->height(), 844);
  press(Qt::Key_Home);
  EXPECT_EQ(focusedRow(), "Custom Carrier Strings");
  EXPECT_GE(topOf(row("Custom Carrier Strings")), 44);
}

TEST_F(WindowTest, AsksBeforeARespringAndPostsItOnceOnConfirmation) {
  open("Quellar");
  const auto ask = [this] {
    click(barButton("Respring"));
    ASSERT_TRUE(eventually([this] { return dialogButton("Respring") != nullptr; }));
  };
  ask();
  click(dialogButton("Not Right Now"));
  EXPECT_TRUE(eventually([this] { return dialogButton("Respring") == nullptr; }));
  ask();
  press(Qt::Key_Escape);
  EXPECT_TRUE(eventually([this] { return dialogButton("Respring") == nullptr; }));
  ask();
  QTest::mouseClick(&view(), Qt::LeftButton, {}, QPoint(195, 100));
  EXPECT_TRUE(eventually([this] { return dialogButton("Respring") == nullptr; }));
  EXPECT_THAT(takePosts(), IsEmpty());
  ask();
  click(dialogButton("Respring"));
  EXPECT_TRUE(eventually([this] { return dialogButton("Respring") == nullptr; }));
  EXPECT_THAT(takePosts(), ElementsAre(kRespring));
  // The keys work on the page again.
  EXPECT_EQ(focusedRow(), "Enable");
}

TEST_F(WindowTest, LeavesThePageAloneWhileADialogIsShown) {
  open("Status Bar");
  settings().navigation().back();
  settle();
  click(barButton("Respring"));
  settle();
  press(Qt::Key_Backspace);
  press(Qt::Key_Down);
  EXPECT_TRUE(dialogButton("Not Right Now")->hasActiveFocus() || dialogButton("Respring")->hasActiveFocus());
  QTest::mouseClick(&view(), Qt::LeftButton, {}, QPoint(340, 110));
  settle();
  EXPECT_EQ(stored(), Dictionary());
  EXPECT_EQ(page().title(), "Quellar");
}

TEST_F(WindowTest, RaisesTheSheetFromTheBottomOnAPhone) {
  open("Quellar");
  click(barButton("Respring"));
  settle();
  const QQuickItem* const cancel = dialogButton("Not Right Now");
  const QQuickItem* const confirm = dialogButton("Respring");
  EXPECT_GT(topOf(cancel) + cancel->height(), 800);
  EXPECT_GT(topOf(cancel), topOf(confirm));
}

TEST_F(WindowTest, PointsTheSheetAtItsButtonOnAPad) {
  open("Quellar", {.idiom = Idiom::pad, .size = {1180, 820}});
  QQuickItem* const button = barButton("Respring");
  click(button);
  settle();
  const QQuickItem* const confirm = dialogButton("Respring");
  const double middle = button->mapToScene(QPointF(button->width() / 2, 0)).x();
  EXPECT_LT(topOf(confirm), 300);
  EXPECT_LT(confirm->mapToScene(QPointF(0, 0)).x(), middle);
  EXPECT_GT(confirm->mapToScene(QPointF(confirm->width(), 0)).x(), middle);
}

TEST_F(WindowTest, ChangesNothingByTheWheel) {
  open("Status Bar");
  QQuickItem* const battery = row("Alarm");
  const QPointF at = battery->mapToScene(QPointF(battery->width() - 60, battery->height() / 2));
  const double position = list()->property("contentY").toDouble();
  QWheelEvent wheel(at, view().mapToGlobal(at), {}, {0, -120}, Qt::NoButton, {}, Qt::NoScrollPhase, false);
  QGuiApplication::sendEvent(&view(), &wheel);
  EXPECT_TRUE(eventually([&] { return list()->property("contentY").toDouble() > position; }));
  EXPECT_EQ(stored(), Dictionary());
  EXPECT_THAT(takePosts(), IsEmpty());
}

TEST_F(WindowTest, ChangesNothingByADragThatScrolls) {
  open("Status Bar");
  const QQuickItem* const alarm = row("Alarm");
  const QPoint start = alarm->mapToScene(QPointF(300, 20)).toPoint();
  const double position = list()->property("contentY").toDouble();
  QTest::mousePress(&view(), Qt::LeftButton, {}, start);
  for (int y = 10; y <= 200; y += 10) QTest::mouseMove(&view(), start - QPoint(0, y));
  QTest::mouseRelease(&view(), Qt::LeftButton, {}, start - QPoint(0, 200));
  EXPECT_GT(list()->property("contentY").toDouble(), position);
  EXPECT_EQ(stored(), Dictionary());
}

TEST_F(WindowTest, HasAViewForEveryKindOfRow) {
  open(std::make_shared<OwnPage>(panel().platform(), [](OwnPage& own, Specifiers& list) {
    for (const auto kind : {PSCellType::PSLinkListCell, PSCellType::PSListItemCell, PSCellType::PSSliderCell,
                            PSCellType::PSSwitchCell, PSCellType::PSStaticTextCell, PSCellType::PSEditTextCell,
                            PSCellType::PSSegmentCell, PSCellType::PSButtonCell}) {
      list.push_back(own.make(std::string(platform::cellTypeName(kind)), kind, ""));
    }
    list.push_back(PSSpecifier::preferenceSpecifierNamed("Link", &own, {}, {}, "", PSCellType::PSLinkListCell));
    for (const char* cell : {"KVQuellarSliderCell", "KVQuellarStepperCell"}) {
      list.push_back(own.make(cell, PSCellType::PSStaticTextCell, ""));
      list.back()->setProperty("cellClass", platform::Class{cell});
    }
  }));
  for (const std::string& label : shownLabels()) {
    // The placeholder tells its kind; no row of a kind that is known does.
    EXPECT_FALSE(row(label)->property("kind").isValid()) << label;
    EXPECT_GE(row(label)->height(), 44) << label;
  }
}

TEST_F(WindowTest, LeavesADisabledRowAlone) {
  auto own = std::make_shared<OwnPage>(panel().platform(), [](OwnPage& page, Specifiers& list) {
    list.push_back(page.make("Off limits", PSCellType::PSSwitchCell, "off"));
    list.back()->setProperty("enabled", Value(false));
    list.push_back(page.make("Free", PSCellType::PSSwitchCell, "free"));
  });
  open(own);
  click(row("Off limits"));
  rows().activate(0);
  EXPECT_EQ(own->written, Dictionary());
  press(Qt::Key_Home);
  EXPECT_EQ(focusedRow(), "Free");
  press(Qt::Key_Space);
  EXPECT_EQ(own->written, (Dictionary{{"free", true}}));
}

TEST_F(WindowTest, MakesRowsNearTheViewOnlyOnAVeryLongPage) {
  open(std::make_shared<OwnPage>(panel().platform(), [](OwnPage& own, Specifiers& list) {
    for (int each = 0; each < 10000; ++each) {
      list.push_back(own.make("Row " + std::to_string(each), PSCellType::PSSwitchCell, "key" + std::to_string(each)));
    }
  }));
  const auto made = [this] {
    const auto items = list()->property("contentItem").value<QQuickItem*>()->childItems();
    return std::ranges::count_if(items, [](const QQuickItem* item) { return item->property("label").isValid(); });
  };
  EXPECT_LT(made(), 200);
  press(Qt::Key_End);
  EXPECT_EQ(focusedRow(), "Row 9999");
  EXPECT_LT(made(), 200);
}

TEST_F(WindowTest, MakesAllRowsOfAPageOfTwoHundred) {
  open(std::make_shared<OwnPage>(panel().platform(), [](OwnPage& own, Specifiers& list) {
    for (int each = 0; each < 200; ++each) {
      list.push_back(own.make("Row " + std::to_string(each), PSCellType::PSSwitchCell, "key" + std::to_string(each)));
    }
  }));
  EXPECT_TRUE(eventually([this] {
    const auto items = list()->property("contentItem").value<QQuickItem*>()->childItems();
    return std::ranges::count_if(items, [](const QQuickItem* item) { return item->property("label").isValid(); }) ==
           200;
  }));
}

TEST_F(WindowTest, FadesThePictureOfTheTitleIn) {
  open("Quellar", {.reducedMotion = false});
  EXPECT_NE(settings().navigation().top()->property("titleImage").toString(), "");
  EXPECT_TRUE(eventually([this] { return settings().navigation().top()->property("titleAlpha").toDouble() == 1; }));
  EXPECT_EQ(settings().navigation().top()->property("titleFade").toInt(), 500);
}

TEST_F(WindowTest, TellsATroubleOfTheStoreUntilItIsPutAway) {
  open("Status Bar");
  const double before = topOf(row("Custom Carrier Strings"));
  settings().trouble().tell({host::linux::StoreTrouble::Kind::Write, "/somewhere/settings.plist", "the disk is full"});
  settle();
  const double below = topOf(row("Custom Carrier Strings"));
  EXPECT_GT(below, before + 40);
  settings().trouble().dismiss();
  settle();
  EXPECT_EQ(topOf(row("Custom Carrier Strings")), before);
}

TEST_F(WindowTest, HasATableOfTheTextsThatItLooksUpAndNoOther) {
  auto resources = panel().resources();
  std::set<std::string> texts;
  resources.text = [&texts, text = resources.text](std::string_view english) {
    texts.emplace(english);
    return text(english);
  };
  const host::window::SettingsWindow window(panel().navigation(), resources, 1, {});
  std::ifstream file(QUELLAR_RESOURCES "/en.lproj/Window.strings", std::ios::binary);
  const auto table = host::linux::parseStringTable(std::string{std::istreambuf_iterator<char>(file), {}});
  EXPECT_TRUE(table.problems.empty());
  std::set<std::string> entries;
  for (const auto& [key, text] : table.entries) entries.insert(key);
  EXPECT_EQ(texts, entries);
}

TEST_F(WindowTest, WorksWithoutASessionBus) {
  qunsetenv("DBUS_SESSION_BUS_ADDRESS");
  open("Status Bar");
  click(row("Battery (+ Bolt)"));
  EXPECT_EQ(stored(), (Dictionary{{"disablesBatterySTBIcon", true}}));
}

}  // namespace window_test
}  // namespace quellar::tests

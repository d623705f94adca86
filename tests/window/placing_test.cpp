// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTest>
#include <cctype>
#include <string>
#include <utility>
#include <vector>

#include "frame/page_registry.h"
#include "pages/registry.h"
#include "window_fixture.h"

// Where things stand in the window: at its start, while it is resized, and where it is small.
namespace quellar::tests::placing_test {
namespace {

using host::window::Idiom;
QRectF inScene(const QQuickItem* item) {
  return item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
}

class Placing : public WindowTest {
 protected:
  double position() { return list()->property("contentY").toDouble(); }
  double top() { return list()->property("originY").toDouble(); }
  void scrollBy(double distance) { QMetaObject::invokeMethod(list(), "scrollBy", Q_ARG(QVariant, distance)); }

  void resize(QSize size) {
    view().resize(size);
    ASSERT_TRUE(eventually([&] { return view().contentItem()->size() == QSizeF(size); }));
    // The rows find their place behind it.
    QCoreApplication::processEvents();
    settle();
  }
  // The first row that is wholly below the bar, and how far below.
  std::pair<std::string, double> firstRow() {
    int index = -1;
    const double below = position() + 1;
    QMetaObject::invokeMethod(list(), "indexAt", Q_RETURN_ARG(int, index), Q_ARG(double, list()->width() / 2),
                              Q_ARG(double, below));
    QQuickItem* item = nullptr;
    QMetaObject::invokeMethod(list(), "itemAtIndex", Q_RETURN_ARG(QQuickItem*, item), Q_ARG(int, index));
    return {std::to_string(index), item ? inScene(item).top() : 0};
  }
};

class EveryPage : public Placing, public testing::WithParamInterface<std::string> {};

std::vector<std::string> pageNames() {
  frame::PageRegistry pages;
  pages::registerPages(pages);
  std::vector<std::string> names;
  for (const auto& entry : pages.entries()) names.push_back(entry.name);
  return names;
}

TEST_P(EveryPage, StartsAtItsTop) {
  open(GetParam(), {.size = {390, 800}});
  QTest::qWait(50);
  settle();
  EXPECT_EQ(position(), top());
  QQuickItem* const bar =
      findItem([](QQuickItem& item) { return item.property("lifted").isValid(); }, list()->parentItem());
  ASSERT_NE(bar, nullptr);
  EXPECT_FALSE(bar->property("lifted").toBool());
}

TEST_P(EveryPage, StaysAtItsTopWhenTheWindowIsResized) {
  open(GetParam(), {.size = {390, 800}});
  for (const QSize size : {QSize(391, 800), QSize(640, 500), QSize(390, 700), QSize(390, 800)}) {
    resize(size);
    EXPECT_EQ(position(), top()) << size.width() << " x " << size.height();
  }
}

INSTANTIATE_TEST_SUITE_P(Of, EveryPage, testing::ValuesIn(pageNames()), [](const auto& each) {
  std::string name;
  for (const char letter : each.param) {
    if (std::isalnum(static_cast<unsigned char>(letter))) name += letter;
  }
  return name;
});

TEST_F(Placing, StaysAtTheSamePointOfTheSameRowThroughFortyResizesByOnePixel) {
  for (const double place : {60.0, 130.0, 250.0, 301.0}) {
    for (const QSize step : {QSize(1, 0), QSize(1, 1)}) {
      SCOPED_TRACE(std::to_string(place) + " " + std::to_string(step.height()));
      open("Alerts", {.size = {390, 500}});
      scrollBy(place);
      settle();
      const auto before = firstRow();
      QSize size(390, 500);
      for (int each = 0; each < 40; ++each) resize(size += step);
      EXPECT_EQ(firstRow().first, before.first);
      // To the next whole point, which is not to add up.
      EXPECT_NEAR(firstRow().second, before.second, 0.51);
      for (int each = 0; each < 40; ++each) resize(size -= step);
      EXPECT_EQ(firstRow().first, before.first);
      EXPECT_NEAR(firstRow().second, before.second, 0.51);
      closeWindow();
      while (!panel().navigation().viewControllers().empty()) panel().navigation().popViewController(false);
    }
  }
}

TEST_F(Placing, ComesBackToWhereItWasAfterAWindowThatShowedThePageToItsEnd) {
  open("Alerts", {.size = {390, 500}});
  scrollBy(130);
  settle();
  const auto before = firstRow();
  resize({390, 1400});
  EXPECT_EQ(position(), top());
  resize({390, 500});
  EXPECT_EQ(firstRow(), before);
}

// A landscape phone, and what a desktop leaves of half of it.
constexpr QSize kLandscape(720, 360);
constexpr QSize kLow(360, 294);

class Low : public Placing, public testing::WithParamInterface<QSize> {
 protected:
  bool inside(QQuickItem* item) {
    return QRectF(QPointF(0, 0), QSizeF(GetParam())).adjusted(-0.5, -0.5, 0.5, 0.5).contains(inScene(item));
  }
};

TEST_P(Low, WindowIsNoHigherThanItsScreen) {
  open("Icons", {.size = GetParam()});
  EXPECT_LE(view().minimumHeight(), GetParam().height());
  EXPECT_EQ(view().size(), GetParam());
}

TEST_P(Low, WindowShowsEveryRowThatTheKeyboardReaches) {
  open("Icons", {.size = GetParam()});
  press(Qt::Key_End);
  const std::string last = focusedRow();
  press(Qt::Key_Home);
  int rows = 0;
  std::string now;
  do {
    now = focusedRow();
    QQuickItem* item = view().activeFocusItem();
    while (item && !item->property("rowEnabled").isValid()) item = item->parentItem();
    ASSERT_NE(item, nullptr) << now;
    EXPECT_TRUE(inside(item)) << now;
    EXPECT_GE(inScene(item).top(), 52) << now;
    press(Qt::Key_Down);
    ++rows;
  } while (now != last && rows < 60);
  EXPECT_EQ(now, last);
}

TEST_P(Low, WindowShowsWhatHasTheFocusInEveryDialog) {
  store("Icon_Defaults", {{"usesCustomIconSize", true}, {"useCustomLabelIndicatorColors", true}});
  for (const Idiom idiom : {Idiom::phone, Idiom::pad}) {
    open("Icons", {.idiom = idiom, .size = GetParam()});
    const auto goThrough = [this](const char* what) {
      settle();
      ASSERT_TRUE(panel().navigation().dialog()) << what;
      std::vector<QQuickItem*> seen;
      for (int each = 0; each < 12; ++each) {
        QQuickItem* const item = view().activeFocusItem();
        ASSERT_NE(item, nullptr);
        EXPECT_TRUE(inside(item)) << what << ": " << item->metaObject()->className() << " " << inScene(item).top()
                                  << " to " << inScene(item).bottom();
        press(Qt::Key_Tab);
      }
      press(Qt::Key_Escape);
      settle();
      EXPECT_FALSE(panel().navigation().dialog()) << what;
    };
    rows().enterValue(rows().indexOf("customIconScaleSize"));
    goThrough("entry");
    settings().navigation().pressBar("right");
    goThrough("respring");
    int color = 0;
    while (rows().kindAt(color) != "color") ASSERT_LT(++color, rows().count());
    rows().activate(color);
    goThrough("color");
    closeWindow();
    while (!panel().navigation().viewControllers().empty()) panel().navigation().popViewController(false);
  }
}

INSTANTIATE_TEST_SUITE_P(Sizes, Low, testing::Values(kLandscape, kLow),
                         [](const auto& each) { return each.param == kLow ? "HalfLow" : "Landscape"; });

TEST_F(Placing, PointsAPopoverAtItsButtonWhateverTheWindowsSize) {
  open("Quellar", {.idiom = Idiom::pad, .size = {1180, 820}});
  click(barButton("Respring"));
  settle();
  for (const QSize size : {QSize(1180, 820), QSize(390, 820), QSize(1180, 820), QSize(720, 500)}) {
    resize(size);
    QQuickItem* const tip = findItem([](QQuickItem& item) { return item.rotation() == 45; });
    ASSERT_NE(tip, nullptr);
    const QRectF button = inScene(barButton("Respring"));
    const QPointF middle = tip->mapToScene(QPointF(tip->width() / 2, tip->height() / 2));
    EXPECT_NEAR(middle.x(), button.center().x(), 0.5) << size.width();
    EXPECT_NEAR(middle.y(), button.bottom() + 11, 12) << size.width();
    // Its panel lies under the tip and within the window.
    const QRectF confirm = inScene(dialogButton("Respring"));
    EXPECT_LT(confirm.left(), middle.x());
    EXPECT_GT(confirm.right(), middle.x());
    EXPECT_LE(confirm.right(), size.width());
  }
}

class Paging : public Placing {
 protected:
  bool inSight(const std::string& label) {
    const QRectF place = inScene(focusedItem());
    return !label.empty() && place.top() >= inScene(list()).top() - 0.5 && place.bottom() <= view().height() + 0.5;
  }
  QQuickItem* focusedItem() {
    QQuickItem* item = view().activeFocusItem();
    while (item && !item->property("rowEnabled").isValid()) item = item->parentItem();
    return item ? item : list();
  }
  int current() { return list()->property("currentIndex").toInt(); }
};

TEST_F(Paging, TakesTheFocusAlong) {
  open("Status Bar");
  const std::string first = focusedRow();
  std::vector<double> positions{position()};
  int last = current();
  for (int page = 0; page < 6; ++page) {
    press(Qt::Key_PageDown);
    settle();
    EXPECT_TRUE(inSight(focusedRow())) << focusedRow();
    EXPECT_GE(current(), last);
    last = current();
    positions.push_back(position());
  }
  EXPECT_GT(positions[1], positions[0] + 400);
  EXPECT_EQ(focusedRow(), "Wifi");
  // The arrow goes on from there.
  const double before = position();
  press(Qt::Key_Up);
  settle();
  EXPECT_EQ(current(), last - 1);
  EXPECT_NEAR(position(), before, 60);
  for (int page = 0; page < 6; ++page) {
    press(Qt::Key_PageUp);
    settle();
    EXPECT_TRUE(inSight(focusedRow())) << focusedRow();
    EXPECT_LE(current(), last);
    last = current();
  }
  EXPECT_EQ(focusedRow(), first);
  EXPECT_EQ(position(), top());
}

TEST_F(Paging, GoesOnFromTheRowThatIsShown) {
  open("Status Bar");
  press(Qt::Key_PageDown);
  settle();
  const int row = current();
  const double before = position();
  press(Qt::Key_Down);
  settle();
  EXPECT_GT(current(), row);
  EXPECT_LE(current(), row + 3);
  EXPECT_NEAR(position(), before, 120);
}

TEST_F(Paging, OpensNoTextOnItsWay) {
  store("StatusBar_Defaults", {{"usesCustomTimeFormatter", true}});
  open("Status Bar");
  for (int page = 0; page < 6; ++page) {
    press(Qt::Key_PageDown);
    settle();
    EXPECT_EQ(this->page().editedSpecifier(), nullptr);
  }
}

TEST_F(Paging, LeadsFromTheBarToTheRows) {
  open("Status Bar");
  press(Qt::Key_Backtab, Qt::ShiftModifier);
  EXPECT_EQ(focusedRow(), "");
  press(Qt::Key_PageDown);
  settle();
  EXPECT_TRUE(inSight(focusedRow()));
  EXPECT_GT(position(), top() + 400);
}

}  // namespace
}  // namespace quellar::tests::placing_test

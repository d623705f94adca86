// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTest>
#include <string>

#include "window_fixture.h"

// What moves, and what must not.
namespace quellar::tests::motion_test {
namespace {

using platform::Dictionary;
using platform::Value;

class Motion : public WindowTest {
 protected:
  QQuickItem* dialogLayer() {
    return findItem([](QQuickItem& item) { return item.property("presence").isValid(); });
  }
  double contentY() { return list()->property("contentY").toDouble(); }
};

TEST_F(Motion, LetsAFingerTakeAPageThatIsStillSlidingIn) {
  open("Quellar", {.reducedMotion = false});
  constexpr int kTries = 8;
  bool taken = false;
  for (int tries = 0; tries < kTries && !taken; ++tries) {
    click(row("Status Bar"));
    QQuickItem* const screen = list()->parentItem();
    ASSERT_TRUE(eventually([&] { return screen->x() < 300; }));
    const int start = static_cast<int>(screen->x()) + 8;
    QTest::mousePress(&view(), Qt::LeftButton, {}, QPoint(start, 500));
    constexpr int kWay = 40;
    for (int by = 4; by <= kWay; by += 4) QTest::mouseMove(&view(), QPoint(start + by, 500));
    const double held = screen->x();
    // Farther than the finger has moved: it goes on from where it was. On a machine that has other things to do it may
    // have come to rest before.
    taken = held > kWay + 8;
    QTest::qWait(60);
    EXPECT_EQ(screen->x(), held);
    constexpr int kEdge = 385;
    for (int x = start + 48; x <= kEdge; x += 16) QTest::mouseMove(&view(), QPoint(x, 500));
    QTest::mouseRelease(&view(), Qt::LeftButton, {}, QPoint(kEdge, 500));
    settle();
    EXPECT_EQ(page().title(), "Quellar");
  }
  EXPECT_TRUE(taken);
}

TEST_F(Motion, ShowsEverythingAtOnceWhereItIsToBeReduced) {
  open("Quellar", {.reducedMotion = true});
  click(row("Status Bar"));
  // No event has been handled since the tap.
  EXPECT_EQ(list()->parentItem()->x(), 0);
  settings().navigation().back();
  settle();
  click(barButton("Respring"));
  EXPECT_EQ(dialogLayer()->property("presence").toDouble(), 1);
  press(Qt::Key_Escape);
  settle();
  click(row("Status Bar"));
  settle();
  QQuickItem* const toggle = row("Use Custom Time Format");
  const double top = toggle->mapToScene(QPointF(0, 0)).y();
  click(toggle);
  (void)view().grabWindow();
  EXPECT_EQ(toggle->mapToScene(QPointF(0, 0)).y(), top);
  EXPECT_EQ(row("Text:")->opacity(), 1);
}

TEST_F(Motion, LoadsTheDialogsWithTheFirstOneWhichRisesAsTheOthersDo) {
  open("Quellar", {.reducedMotion = false});
  EXPECT_EQ(dialogLayer(), nullptr);
  for (int dialog = 0; dialog < 2; ++dialog) {
    SCOPED_TRACE(dialog);
    click(barButton("Respring"));
    // It is on its way, and has the focus.
    ASSERT_TRUE(eventually([this] { return dialogLayer() != nullptr; }));
    EXPECT_LT(dialogLayer()->property("presence").toDouble(), 1);
    EXPECT_FALSE(list()->isEnabled());
    EXPECT_TRUE(eventually([this] { return dialogLayer()->property("presence").toDouble() == 1; }));
    EXPECT_TRUE(dialogLayer()->hasActiveFocus());
    press(Qt::Key_Escape);
    EXPECT_TRUE(eventually([this] { return dialogLayer() == nullptr; }));
    EXPECT_TRUE(list()->isEnabled());
    EXPECT_TRUE(list()->hasActiveFocus());
  }
}

TEST_F(Motion, GivesWayPastTheTopAndComesBack) {
  open("Status Bar");
  const double top = contentY();
  QTest::mousePress(&view(), Qt::LeftButton, {}, QPoint(200, 300));
  for (int y = 310; y <= 500; y += 10) QTest::mouseMove(&view(), QPoint(200, y));
  EXPECT_LT(contentY(), top - 20);
  QTest::mouseRelease(&view(), Qt::LeftButton, {}, QPoint(200, 500));
  EXPECT_TRUE(eventually([&] { return contentY() == top; }));
  EXPECT_EQ(stored(), Dictionary());
}

TEST_F(Motion, KeepsTheRowAtTheTopWhenTheWindowIsTurned) {
  open("Notification Center");
  QMetaObject::invokeMethod(list(), "scrollBy", Q_ARG(QVariant, 420.0));
  settle();
  const auto topRow = [this] {
    int index = -1;
    QMetaObject::invokeMethod(list(), "indexAt", Q_RETURN_ARG(int, index), Q_ARG(double, list()->width() / 2),
                              Q_ARG(double, contentY() + 1));
    return index;
  };
  const int before = topRow();
  ASSERT_GT(before, 3);
  view().resize(640, 500);
  ASSERT_TRUE(eventually([this] { return list()->width() == 640; }));
  EXPECT_TRUE(eventually([&] { return topRow() == before; })) << topRow();
  QTest::qWait(50);
  EXPECT_EQ(topRow(), before);
  view().resize(390, 844);
  ASSERT_TRUE(eventually([this] { return list()->width() == 390; }));
  EXPECT_TRUE(eventually([&] { return topRow() == before; })) << topRow();
  QTest::qWait(50);
  EXPECT_EQ(topRow(), before);
}

TEST_F(Motion, KeepsWhatIsTypedInADialogWhenTheWindowIsTurned) {
  store("Icon_Defaults", {{"usesCustomIconSize", true}});
  open("Icons");
  const int slider = rows().indexOf("customIconScaleSize");
  rows().enterValue(slider);
  settle();
  type("1.25");
  view().resize(844, 390);
  ASSERT_TRUE(eventually([this] { return dialogLayer()->width() == 844; }));
  EXPECT_EQ(panel().navigation().dialog()->text, "1.25");
  EXPECT_TRUE(view().activeFocusItem()->inherits("QQuickTextInput"));
  press(Qt::Key_Return);
  settle();
  EXPECT_EQ(stored("Icon_Defaults").at("customIconScaleSize"), Value(1.25));
}

}  // namespace
}  // namespace quellar::tests::motion_test

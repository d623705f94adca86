// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QTest>
#include <string>
#include <utility>
#include <vector>

#include "window_fixture.h"

// What moves, what must not, and what is told of it.
namespace quellar::tests::motion_test {
namespace {

using platform::Dictionary;
using platform::Value;
using testing::Contains;
using testing::Pair;

class Motion : public WindowTest {
 protected:
  QQuickItem* dialogLayer() {
    return findItem([](QQuickItem& item) { return item.property("presence").isValid(); });
  }
  double contentY() { return list()->property("contentY").toDouble(); }
};

TEST_F(Motion, LetsAFingerTakeAPageThatIsStillSlidingIn) {
  open("Quellar", {.reducedMotion = false});
  click(row("Status Bar"));
  ASSERT_TRUE(eventually([this] { return settings().navigation().depth() == 2 && list(); }));
  QQuickItem* const screen = list()->parentItem();
  ASSERT_TRUE(eventually([&] { return screen->x() < 200; }));
  const int taken = static_cast<int>(screen->x());
  ASSERT_GT(taken, 0);
  QTest::mousePress(&view(), Qt::LeftButton, {}, QPoint(taken + 8, 500));
  // Past the distance at which a drag begins the page goes on from where it was.
  double before = screen->x();
  for (int by = 4; by <= 60; by += 4) {
    QTest::mouseMove(&view(), QPoint(taken + 8 + by, 500));
    EXPECT_GT(screen->x(), before - 30) << "it jumps";
    before = screen->x();
  }
  const double held = screen->x();
  QTest::qWait(100);
  EXPECT_EQ(screen->x(), held);
  for (int x = taken + 68; x <= 340; x += 16) QTest::mouseMove(&view(), QPoint(x, 500));
  QTest::mouseRelease(&view(), Qt::LeftButton, {}, QPoint(340, 500));
  settle();
  EXPECT_EQ(page().title(), "Quellar");
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
  settle();
  EXPECT_EQ(topRow(), before);
  view().resize(390, 844);
  ASSERT_TRUE(eventually([this] { return list()->width() == 390; }));
  settle();
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

// What a screen reader is told as it happens: the type of the event, and the name of its object.
std::vector<std::pair<QAccessible::Event, std::string>>& told() {
  static std::vector<std::pair<QAccessible::Event, std::string>> all;
  return all;
}

void hear(QAccessibleEvent* event) {
  QAccessibleInterface* object = event->accessibleInterface();
  told().emplace_back(event->type(), object ? object->text(QAccessible::Name).toStdString() : "");
}

class Telling : public Motion {
 protected:
  Telling() {
    QAccessible::setActive(true);
    before_ = QAccessible::installUpdateHandler(hear);
  }
  ~Telling() override {
    QAccessible::installUpdateHandler(before_);
    QAccessible::setActive(false);
  }

 private:
  QAccessible::UpdateHandler before_;
};

TEST_F(Telling, SaysWhichRowsOfABlockHaveCome) {
  open("Custom Carrier Strings");
  told().clear();
  click(row("Use Custom String"));
  settle();
  EXPECT_THAT(told(), Contains(Pair(testing::AnyOf(QAccessible::ObjectShow, QAccessible::ObjectCreated), "Text:")));
}

TEST_F(Telling, SaysWhyACodeIsRefused) {
  store("Icon_Defaults", {{"userRequestsColoredBadges", true}});
  open("Icons");
  click(row("Border Color"));
  settle();
  auto* const color = settings().navigation().dialog()->color();
  color->type("no colour");
  told().clear();
  EXPECT_FALSE(color->settle());
  EXPECT_THAT(told(), Contains(Pair(QAccessible::ObjectShow, color->refusal().toStdString())));
}

}  // namespace
}  // namespace quellar::tests::motion_test

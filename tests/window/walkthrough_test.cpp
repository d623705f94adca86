// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QPointingDevice>
#include <QTest>
#include <algorithm>
#include <cmath>
#include <functional>
#include <string>

#include "scene.h"
#include "window_fixture.h"

// Ten settings, found from the first page and changed as a newcomer would: by the labels alone, with fingers or with
// keys, and what is off the window is scrolled to. docs/walkthroughs.md tells of them; the accessibility bus has its
// walk in accessibility_walk_test.cpp.
namespace quellar::tests::walkthrough_test {
namespace {

using platform::Dictionary;
using platform::Value;

class Walkthrough : public WindowTest {
 protected:
  // Goes through a row: follows a link, turns a switch over, taps a button, picks a choice.
  virtual void use(const std::string& label, int nth = 0) = 0;
  virtual void enter(const std::string& label, const std::string& text) = 0;
  virtual void increase(const std::string& label) = 0;
  // Sets a slider to half of its range beyond the middle.
  virtual void raise(const std::string& label) = 0;
  virtual void choose(const std::string& label, const std::string& choice) = 0;
  // In the colour dialog: another shade than the one that it starts from.
  virtual void pickAnotherShade() = 0;
  // In the grid of previews.
  virtual void pickPreview(const std::string& label) = 0;
  virtual void goBack() = 0;

  void walk() {
    open("Quellar");
    visit({"Alerts"}, [this] { use("Use Dynamic Alerts"); });
    EXPECT_EQ(value("Alerts_Defaults", "userRequestsDynamicAlerts"), Value(true));
    visit({"Dock"}, [this] {
      use("Use Custom Count");
      increase("Max Icons");
      use("Use Custom Blur");
      use("Blur style");
      use("Normal");
    });
    EXPECT_EQ(value("Dock_Defaults", "dockMaxIcons"), Value(5.0));
    EXPECT_EQ(value("Dock_Defaults", "dockBackgroundStyle"), Value(12));
    visit({"Home Screen"}, [this] { use("Hide Page Dots"); });
    EXPECT_EQ(value("HomeScreen_Defaults", "hidePageDots"), Value(true));
    visit({"Icons"}, [this] {
      use("Use Custom Size");
      raise("Icon Scale");
      use("Use Custom Color");
      use("Border Color");
      pickAnotherShade();
    });
    EXPECT_NEAR(value("Icon_Defaults", "customIconScaleSize").doubleValue(), 1.5, 0.1);
    EXPECT_NE(value("Icon_Defaults", "iconBadgeBorderColor"), Value(""));
    EXPECT_NE(value("Icon_Defaults", "iconBadgeBorderColor"), Value("#ffffff"));
    visit({"Medusa"}, [this] {
      use("Use Custom Blur");
      choose("Blur Style", "Light");
    });
    EXPECT_EQ(value("Medusa_Defaults", "userStyleForSideSwitcherBlur"), Value(2));
    visit({"Notification Center"}, [this] {
      use("Blur Style");
      pickPreview("2040");
    });
    EXPECT_EQ(value("NotificationCenter_Defaults", "ncPrefferedBackdropStyle").integerValue(), 2040);
    visit({"Status Bar", "Custom Carrier Strings"}, [this] {
      use("Use Custom String");
      enter("Text:", "Mine");
    });
    EXPECT_EQ(value("StatusBar_Defaults", "userCustomCarrierText"), Value("Mine"));
    visit({"Weather"}, [this] { use("Badge Shows Temp"); });
    EXPECT_EQ(value("Weather_Defaults", "userRequestsWeatherIconBadge"), Value(true));
  }

  // The place of a row among those that are shown.
  int placeOf(const std::string& label, int nth) {
    int place = -1;
    for (const auto& each : rows().rows()) {
      ++place;
      if (each.kind != "group" && each.kind != "footer" && each.label.toStdString() == label && nth-- == 0)
        return place;
    }
    ADD_FAILURE() << page().title() << " has no row " << label;
    return -1;
  }
  Value value(const std::string& defaultsKey, const std::string& key) {
    const Dictionary values = stored(defaultsKey);
    const auto found = values.find(key);
    return found == values.end() ? Value("") : found->second;
  }

 private:
  void visit(const std::vector<std::string>& links, const std::function<void()>& change) {
    for (const std::string& link : links) use(link);
    change();
    settle();
    while (settings().navigation().depth() > 1) goBack();
  }
};

class WalkthroughByTouch : public Walkthrough {
 protected:
  void use(const std::string& label, int nth) override {
    touch(find(label, nth));
    settle();
  }
  void enter(const std::string& label, const std::string& text) override {
    use(label, 0);
    type(QString::fromStdString(text));
    touch(barButton("Save"));
    settle();
  }
  void increase(const std::string& label) override {
    QQuickItem* const row = find(label, 0);
    touch(findItem([](QQuickItem& item) { return item.property("plus").toBool(); }, row));
    settle();
  }
  void raise(const std::string& label) override {
    QQuickItem* const row = find(label, 0);
    QQuickItem* const track = findItem([](QQuickItem& item) { return item.property("draggedTo").isValid(); }, row);
    const QPoint from = middle(track);
    drag(from, QPoint(static_cast<int>(std::lround(track->width() / 4)), 0));
    settle();
  }
  void choose(const std::string& label, const std::string& choice) override {
    touch(accessibleItems(find(label, 0), QAccessible::RadioButton, QString::fromStdString(choice)).at(0));
    settle();
  }
  void pickAnotherShade() override {
    QQuickItem* const field = findItem([](QQuickItem& item) {
      return item.inherits("QQuickFocusScope") && item.property("model").isValid() && item.height() >= 100 &&
             item.height() <= 240;
    });
    touch(field);
    touch(accessibleItems(view().contentItem(), QAccessible::Button, "Choose").at(0));
    settle();
  }
  void pickPreview(const std::string& label) override {
    touch(accessibleItems(view().contentItem(), QAccessible::RadioButton, QString::fromStdString(label)).at(0));
    settle();
  }
  void goBack() override {
    QQuickItem* const button =
        findItem([](QQuickItem& item) { return item.property("back").toBool() && item.property("compact").isValid(); },
                 list()->parentItem());
    touch(button);
    settle();
  }

 private:
  static QPoint middle(const QQuickItem* item) {
    return item->mapToScene(QPointF(item->width() / 2, item->height() / 2)).toPoint();
  }
  static QPointingDevice* screen() {
    static QPointingDevice* const device = QTest::createTouchDevice();
    return device;
  }
  void touch(QQuickItem* item) {
    ASSERT_NE(item, nullptr);
    QTest::touchEvent(&view(), screen()).press(0, middle(item), &view());
    QTest::touchEvent(&view(), screen()).release(0, middle(item), &view());
  }
  void drag(QPoint from, QPoint by) {
    constexpr int kSteps = 12;
    QTest::touchEvent(&view(), screen()).press(0, from, &view());
    for (int step = 1; step <= kSteps; ++step) {
      QTest::touchEvent(&view(), screen()).move(0, from + by * step / kSteps, &view());
      QTest::qWait(1);
    }
    // A finger that rests before it lets go does not flick.
    QTest::qWait(60);
    QTest::touchEvent(&view(), screen()).move(0, from + by, &view());
    QTest::touchEvent(&view(), screen()).release(0, from + by, &view());
  }
  // Scrolls until the row can be seen whole.
  QQuickItem* find(const std::string& label, int nth) {
    const int place = placeOf(label, nth);
    for (int turn = 0; turn < 60; ++turn) {
      QQuickItem* item = nullptr;
      QMetaObject::invokeMethod(list(), "itemAtIndex", Q_RETURN_ARG(QQuickItem*, item), Q_ARG(int, place));
      const double top = item ? item->mapToItem(list(), QPointF(0, 0)).y() : list()->height();
      if (item && top >= 0 && top + item->height() <= list()->height()) return item;
      drag(QPoint(300, 450), QPoint(0, top < 0 ? 260 : -260));
      if (!eventually([this] { return !list()->property("moving").toBool(); })) break;
    }
    ADD_FAILURE() << "no swipe leads to " << label;
    return nullptr;
  }
};

TEST_F(WalkthroughByTouch, ChangesTenSettings) {
  walk();
}

class WalkthroughByKeys : public Walkthrough {
 protected:
  void use(const std::string& label, int nth) override {
    reach(label, nth);
    press(Qt::Key_Space);
    settle();
  }
  void enter(const std::string& label, const std::string& text) override {
    reach(label, 0);
    type(QString::fromStdString(text));
    press(Qt::Key_Return);
    settle();
  }
  void increase(const std::string& label) override {
    reach(label, 0);
    press(Qt::Key_Right);
    settle();
  }
  void raise(const std::string& label) override {
    reach(label, 0);
    type("1.5");
    press(Qt::Key_Return);
    settle();
  }
  void choose(const std::string& label, const std::string& choice) override {
    reach(label, 0);
    for (int turn = 0; turn < 5 && chosen(label) != choice; ++turn) press(Qt::Key_Left);
    settle();
  }
  void pickAnotherShade() override {
    for (int each = 0; each < 20; ++each) press(Qt::Key_Right);
    press(Qt::Key_Return);
    settle();
  }
  void pickPreview(const std::string& label) override {
    const auto at = [this] {
      QAccessibleInterface* focus = QAccessible::queryAccessibleInterface(view().activeFocusItem());
      return focus ? focus->text(QAccessible::Name).toStdString() : "";
    };
    for (int turn = 0; turn < 31 && at() != label; ++turn) press(Qt::Key_Right);
    press(Qt::Key_Return);
    settle();
  }
  void goBack() override {
    press(Qt::Key_Left, Qt::AltModifier);
    settle();
  }

 private:
  // Where the focus is when the page has opened or been come back to, and from there downwards.
  void reach(const std::string& label, int nth) {
    const int place = placeOf(label, nth);
    for (int turn = 0; turn < 200; ++turn) {
      if (list()->property("currentIndex").toInt() == place && focusedRow() == label) return;
      press(Qt::Key_Down);
    }
    ADD_FAILURE() << "no key leads to " << label;
  }
  std::string chosen(const std::string& label) {
    const auto& row = rows().rows().at(static_cast<std::size_t>(placeOf(label, 0)));
    return row.chosen < 0 ? "" : row.titles.at(row.chosen).toStdString();
  }
};

TEST_F(WalkthroughByKeys, ChangesTenSettings) {
  walk();
}

}  // namespace
}  // namespace quellar::tests::walkthrough_test

// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QPointingDevice>
#include <QTest>
#include <algorithm>
#include <cmath>
#include <string>

#include "scene.h"
#include "ten_settings.h"
#include "window_fixture.h"

// By the labels alone, with fingers or with keys; what is off the window is scrolled to.
namespace quellar::tests::walkthrough_test {
namespace {

using platform::Dictionary;
using platform::Value;

class Walkthrough : public WindowTest, protected TenSettings {
 protected:
  void walk() {
    open("Quellar");
    change();
  }
  bool isAtStart() override {
    settle();
    return settings().navigation().depth() == 1;
  }
  Value value(const std::string& defaultsKey, const std::string& key) override {
    const Dictionary values = stored(defaultsKey);
    const auto found = values.find(key);
    return found == values.end() ? Value("") : found->second;
  }

  // The place of a row among those that are shown.
  int placeOf(const std::string& label) {
    int place = -1;
    for (const auto& each : rows().rows()) {
      ++place;
      if (each.kind != "group" && each.kind != "footer" && each.label.toStdString() == label) return place;
    }
    ADD_FAILURE() << page().title() << " has no row " << label;
    return -1;
  }
};

class WalkthroughByTouch : public Walkthrough {
 protected:
  void use(const std::string& label) override {
    touch(find(label));
    settle();
  }
  void enter(const std::string& label, const std::string& text) override {
    use(label);
    type(QString::fromStdString(text));
    touch(barButton("Save"));
    settle();
  }
  void increase(const std::string& label) override {
    QQuickItem* const row = find(label);
    touch(findItem([](QQuickItem& item) { return item.property("plus").toBool(); }, row));
    settle();
  }
  void raise(const std::string& label) override {
    QQuickItem* const row = find(label);
    QQuickItem* const track = findItem([](QQuickItem& item) { return item.property("draggedTo").isValid(); }, row);
    const QPoint from = middle(track);
    drag(from, QPoint(static_cast<int>(std::lround(track->width() / 4)), 0));
    settle();
  }
  void choose(const std::string& label, const std::string& choice) override {
    touch(accessibleItems(find(label), QAccessible::RadioButton, QString::fromStdString(choice)).at(0));
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
  QQuickItem* find(const std::string& label) {
    const int place = placeOf(label);
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
  void use(const std::string& label) override {
    reach(label);
    press(Qt::Key_Space);
    settle();
  }
  void enter(const std::string& label, const std::string& text) override {
    reach(label);
    type(QString::fromStdString(text));
    press(Qt::Key_Return);
    settle();
  }
  void increase(const std::string& label) override {
    reach(label);
    press(Qt::Key_Right);
    settle();
  }
  void raise(const std::string& label) override {
    reach(label);
    type("1.5");
    press(Qt::Key_Return);
    settle();
  }
  void choose(const std::string& label, const std::string& choice) override {
    reach(label);
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
  void reach(const std::string& label) {
    const int place = placeOf(label);
    for (int turn = 0; turn < 200; ++turn) {
      if (list()->property("currentIndex").toInt() == place && focusedRow() == label) return;
      press(Qt::Key_Down);
    }
    ADD_FAILURE() << "no key leads to " << label;
  }
  std::string chosen(const std::string& label) {
    const auto& row = rows().rows().at(static_cast<std::size_t>(placeOf(label)));
    return row.chosen < 0 ? "" : row.titles.at(row.chosen).toStdString();
  }
};

TEST_F(WalkthroughByKeys, ChangesTenSettings) {
  walk();
}

}  // namespace
}  // namespace quellar::tests::walkthrough_test

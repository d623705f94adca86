// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include <QTest>
#include <filesystem>
#include <utility>

#include "host/linux/background_preferences.h"
#include "host/window/elsewhere_watch.h"
#include "window_fixture.h"

namespace quellar::tests {

using platform::Dictionary;

namespace elsewhere_test {

constexpr const char* kNotice = "Changed elsewhere. Reopen to see it.";

/// Another program that writes to the same store.
class ElsewhereTest : public WindowTest {
 protected:
  QQuickItem* notice() {
    return findItem([](QQuickItem& item) {
      return item.property("actionItem").isValid() && item.property("text").toString() == kNotice;
    });
  }
  QQuickItem* reopen() {
    QQuickItem* const shown = notice();
    return shown ? shown->property("actionItem").value<QQuickItem*>() : nullptr;
  }
  bool appears() {
    return eventually([this] { return notice() != nullptr; });
  }
  bool goes() {
    return eventually([this] { return notice() == nullptr; });
  }
  /// Lets everything that may still come come.
  void wait() {
    settle();
    QTest::qWait(300);
  }
};

TEST_F(ElsewhereTest, TellsThatAnotherProgramHasChangedThePage) {
  open("Status Bar");
  store("StatusBar_Defaults", {{"usesLowercaseAMPM", true}});
  EXPECT_TRUE(appears());
  // The page keeps its copy.
  EXPECT_FALSE(row("Lowercase AM/PM")->property("checked").toBool());
}

TEST_F(ElsewhereTest, TellsWhereNothingHadBeenStoredBefore) {
  ASSERT_FALSE(std::filesystem::exists(root_.path() / "var"));
  open("Dock");
  store("Dock_Defaults", {{"userDisablesBackgroundBlur", true}});
  EXPECT_TRUE(appears());
}

TEST_F(ElsewhereTest, MissesNothingThatIsStoredWhileItComesToWatch) {
  open("Dock");
  host::linux::BackgroundPreferences seen(host::linux::DeviceRoot(root_.path()), {}, {});
  (void)seen.copyAppValue("Dock_Defaults", "com.vantorick.quellar2");
  bool isStored = false;
  const auto deepest = [&]() -> QStringList {
    std::filesystem::path folder = root_.path();
    for (const char* name : {"var", "mobile", "Library", "Preferences"}) {
      if (std::filesystem::exists(folder / name)) folder /= name;
    }
    // Right after the answer, and before anything is watched.
    if (!std::exchange(isStored, true)) store("Dock_Defaults", {{"userDisablesBackgroundBlur", true}});
    return {QString::fromStdString(folder.string())};
  };
  const host::window::ElsewhereWatch watch(seen, deepest, panel().navigation());
  EXPECT_TRUE(eventually([&] { return row("Disable Blur")->property("checked").toBool(); }));
}

TEST_F(ElsewhereTest, SaysNothingOfItsOwnWritesAndOfOtherPages) {
  open("Status Bar");
  click(row("Lowercase AM/PM"));
  store("Dock_Defaults", {{"userDisablesBackgroundBlur", true}});
  wait();
  EXPECT_EQ(notice(), nullptr);
}

TEST_F(ElsewhereTest, SaysNothingOfAValueThatCameBack) {
  open("Status Bar");
  click(row("Lowercase AM/PM"));
  settle();
  store("StatusBar_Defaults", {});
  ASSERT_TRUE(appears());
  store("StatusBar_Defaults", {{"usesLowercaseAMPM", true}});
  EXPECT_TRUE(goes());
}

TEST_F(ElsewhereTest, ShowsTheNewValuesOnceThePageIsReopened) {
  open("Status Bar");
  store("StatusBar_Defaults", {{"usesLowercaseAMPM", true}});
  ASSERT_TRUE(appears());
  click(reopen());
  EXPECT_TRUE(goes());
  EXPECT_TRUE(row("Lowercase AM/PM")->property("checked").toBool());
  EXPECT_EQ(panel().navigation().viewControllers().size(), 2U);
  EXPECT_EQ(stored(), (Dictionary{{"usesLowercaseAMPM", true}}));
}

TEST_F(ElsewhereTest, StaysAtTheSameRowAndPlaceWithoutAnyMovement) {
  open("Status Bar", {.reducedMotion = false});
  QMetaObject::invokeMethod(&view(), "revealRow", Q_ARG(QVariant, rows().indexOf("disablesBatterySTBIcon")));
  settle();
  ASSERT_EQ(focusedRow(), "Battery (+ Bolt)");
  const double position = list()->property("contentY").toDouble() - list()->property("originY").toDouble();
  ASSERT_GT(position, 100);
  store("StatusBar_Defaults", {{"usesLowercaseAMPM", true}});
  ASSERT_TRUE(appears());
  click(reopen());
  EXPECT_EQ(list()->parentItem()->property("shift").toReal(), 0);
  settle();
  EXPECT_EQ(focusedRow(), "Battery (+ Bolt)");
  EXPECT_NEAR(list()->property("contentY").toDouble() - list()->property("originY").toDouble(), position, 1);
}

TEST_F(ElsewhereTest, GoesWithThePagesNextWrite) {
  open("Status Bar");
  store("StatusBar_Defaults", {{"usesLowercaseAMPM", true}});
  ASSERT_TRUE(appears());
  click(row("No Bold Text"));
  EXPECT_TRUE(goes());
  EXPECT_EQ(stored(), (Dictionary{{"userRequestsUnboldStatusBar", true}}));
}

TEST_F(ElsewhereTest, BelongsToThePageOnTop) {
  open("Status Bar");
  store("StatusBar_Defaults", {{"usesLowercaseAMPM", true}});
  ASSERT_TRUE(appears());
  press(Qt::Key_Escape);
  settle();
  EXPECT_TRUE(goes());
}

TEST_F(ElsewhereTest, IsReachedByTheKeyboard) {
  open("Status Bar");
  store("StatusBar_Defaults", {{"usesLowercaseAMPM", true}});
  ASSERT_TRUE(appears());
  QMetaObject::invokeMethod(list()->parentItem(), "enter", Q_ARG(QVariant, 1));
  for (int tabs = 0; tabs < 3 && !reopen()->hasActiveFocus(); ++tabs) press(Qt::Key_Tab);
  ASSERT_TRUE(reopen()->hasActiveFocus());
  press(Qt::Key_Return);
  EXPECT_TRUE(goes());
}

}  // namespace elsewhere_test

}  // namespace quellar::tests

// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include <QTest>
#include <filesystem>
#include <utility>

#include "frame/list_controller.h"
#include "host/linux/background_preferences.h"
#include "host/window/elsewhere_watch.h"
#include "window_fixture.h"

namespace quellar::tests {

using platform::Dictionary;

namespace elsewhere_test {

/// Another program that writes to the same store.
class ElsewhereTest : public WindowTest {
 protected:
  QQuickItem* notice() {
    return findItem([](QQuickItem& item) {
      return item.property("passive").toBool() && item.property("text").toString() == "Changed elsewhere";
    });
  }
  bool isOn(const std::string& label) { return row(label)->property("checked").toBool(); }
  bool turnsOn(const std::string& label) {
    return eventually([&] { return isOn(label); });
  }
  static QPoint centre(const QQuickItem* item) {
    return item->mapToScene(QPointF(item->width() / 2, item->height() / 2)).toPoint();
  }
};

TEST_F(ElsewhereTest, ShowsWhatAnotherProgramHasSet) {
  open("Status Bar");
  store("StatusBar_Defaults", {{"usesLowercaseAMPM", true}});
  EXPECT_TRUE(turnsOn("Lowercase AM/PM"));
  EXPECT_EQ(notice(), nullptr);
}

TEST_F(ElsewhereTest, ShowsWithinASecondWhatIsSetOnAFirstRun) {
  std::filesystem::remove(root_.path());
  open("Dock");
  ASSERT_FALSE(std::filesystem::exists(root_.path()));
  store("Dock_Defaults", {{"userDisablesBackgroundBlur", true}});
  EXPECT_TRUE(QTest::qWaitFor([&] { return isOn("Disable Blur"); }, 1000));
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
  EXPECT_TRUE(turnsOn("Disable Blur"));
}

TEST_F(ElsewhereTest, ShowsTheSwitchOfTheFirstPage) {
  open("Quellar");
  const bool before = isOn("Enable");
  host::linux::FilePreferences((host::linux::DeviceRoot(root_.path())))
      .setAppValue("QLREnableKey", platform::Value(!before), "com.vantorick.quellar2");
  EXPECT_TRUE(eventually([&] { return isOn("Enable") != before; }));
}

TEST_F(ElsewhereTest, RebuildsThePageOfSwitchesForTheirColors) {
  open("Available Switches");
  int rebuilds = 0;
  QObject::connect(panel().resources().elsewhere, &host::window::ElsewhereWatch::rebuilt, &view(), [&] { ++rebuilds; });
  const QPoint place = centre(row("Use Custom Colors"));
  QTest::mousePress(&view(), Qt::LeftButton, {}, place);
  store("ToggleColoring_Defaults", {{"com.example.wifi", "#ff0000"}});
  EXPECT_TRUE(eventually([this] { return notice() != nullptr; }));
  EXPECT_EQ(rebuilds, 0);
  QTest::mouseRelease(&view(), Qt::LeftButton, {}, QPoint(-10, place.y()));
  EXPECT_TRUE(eventually([&] { return rebuilds == 1 && notice() == nullptr; }));
}

TEST_F(ElsewhereTest, SaysAndRebuildsNothingForItsOwnWrites) {
  open("Status Bar");
  int rebuilds = 0;
  QObject::connect(panel().resources().elsewhere, &host::window::ElsewhereWatch::rebuilt, &view(), [&] { ++rebuilds; });
  click(row("Lowercase AM/PM"));
  settle();
  EXPECT_EQ(stored(), (Dictionary{{"usesLowercaseAMPM", true}}));
  EXPECT_EQ(rebuilds, 0);
  EXPECT_EQ(notice(), nullptr);
}

TEST_F(ElsewhereTest, KeepsTheFocusAndThePlaceAndMovesNothing) {
  open("Status Bar", {.reducedMotion = false});
  QMetaObject::invokeMethod(&view(), "revealRow", Q_ARG(QVariant, rows().indexOf("disablesBatterySTBIcon")));
  settle();
  ASSERT_EQ(focusedRow(), "Battery (+ Bolt)");
  const double position = list()->property("contentY").toDouble();
  ASSERT_GT(position, 100);
  QQuickItem* const battery = row("Battery (+ Bolt)");
  store("StatusBar_Defaults", {{"disablesBatterySTBIcon", true}});
  double over = -1;
  QObject::connect(panel().resources().elsewhere, &host::window::ElsewhereWatch::rebuilt, &view(), [&] {
    const auto* toggle = findItem([](QQuickItem& item) { return item.property("over").isValid(); }, battery);
    over = toggle ? toggle->property("over").toDouble() : -2;
  });
  ASSERT_TRUE(eventually([&] { return over != -1; }));
  EXPECT_TRUE(eventually([&] {
    const auto* toggle = findItem([](QQuickItem& item) { return item.property("over").isValid(); }, battery);
    return toggle && toggle->property("over").toDouble() == 1;
  }));
  settle();
  EXPECT_EQ(row("Battery (+ Bolt)"), battery);
  EXPECT_EQ(focusedRow(), "Battery (+ Bolt)");
  EXPECT_NEAR(list()->property("contentY").toDouble(), position, 1);
}

TEST_F(ElsewhereTest, WaitsWhileAPointerIsDownAndMovesNoRow) {
  open("Status Bar");
  QQuickItem* const held = row("No Bold Text");
  const QPoint place = centre(held);
  QTest::mousePress(&view(), Qt::LeftButton, {}, place);
  store("StatusBar_Defaults", {{"usesLowercaseAMPM", true}});
  ASSERT_TRUE(eventually([this] { return notice() != nullptr; }));
  EXPECT_FALSE(isOn("Lowercase AM/PM"));
  EXPECT_EQ(centre(held), place);
  QTest::mouseRelease(&view(), Qt::LeftButton, {}, place);
  EXPECT_TRUE(turnsOn("Lowercase AM/PM"));
  EXPECT_TRUE(eventually([this] { return notice() == nullptr; }));
  // The tap was made on the old values; it erases nothing.
  EXPECT_EQ(stored(), (Dictionary{{"userRequestsUnboldStatusBar", true}, {"usesLowercaseAMPM", true}}));
}

TEST_F(ElsewhereTest, WaitsWhileADialogIsShown) {
  open("Status Bar");
  platform::Dialog dialog;
  dialog.title = "Sure?";
  dialog.buttons.emplace_back().title = "OK";
  panel().navigation().present(dialog);
  settle();
  store("StatusBar_Defaults", {{"usesLowercaseAMPM", true}});
  ASSERT_TRUE(eventually([this] { return notice() != nullptr; }));
  EXPECT_FALSE(isOn("Lowercase AM/PM"));
  panel().navigation().dismiss();
  EXPECT_TRUE(turnsOn("Lowercase AM/PM"));
  EXPECT_TRUE(eventually([this] { return notice() == nullptr; }));
}

TEST_F(ElsewhereTest, WaitsWhileATextIsEdited) {
  open("Custom Carrier Strings");
  click(row("Use Custom String"));
  settle();
  click(row("Use Custom String", 1));
  settle();
  QQuickItem* const text = findItem([](QQuickItem& item) { return item.inherits("QQuickTextInput"); });
  ASSERT_NE(text, nullptr);
  click(text);
  ASSERT_TRUE(eventually([this] { return panel().navigation().keyboardVisible(); }));
  int rebuilds = 0;
  QObject::connect(panel().resources().elsewhere, &host::window::ElsewhereWatch::rebuilt, &view(), [&] { ++rebuilds; });
  const auto* shown = dynamic_cast<frame::KVQuellarListController*>(&page());
  ASSERT_NE(shown, nullptr);
  store(shown->page().defaultsKey, {});
  EXPECT_TRUE(eventually([this] { return notice() != nullptr; }));
  EXPECT_EQ(rebuilds, 0);
  press(Qt::Key_Escape);
  EXPECT_TRUE(eventually([&] { return rebuilds > 0 && notice() == nullptr; }));
}

}  // namespace elsewhere_test

}  // namespace quellar::tests

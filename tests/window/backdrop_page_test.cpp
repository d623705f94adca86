// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTest>

#include "host/window/backdrop_looks.h"
#include "host/window/backdrop_preview.h"
#include "host/window/wallpaper.h"
#include "scene.h"
#include "wallpaper_files.h"
#include "window_fixture.h"

namespace quellar::tests {
namespace backdrop_page_test {

using platform::Dictionary;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kSettings = "com.vantorick.quellar2.settings";
constexpr const char* kPicker = "KVQuellarBackdropPickerViewController";

class BackdropPage : public WindowTest {
 protected:
  void openPicker(const Setup& setup) {
    open("Notification Center", setup);
    click(row("Blur Style"));
    settle();
    ASSERT_EQ(topClass(), kPicker);
  }
  void openPicker() { openPicker(Setup{}); }
  std::string topClass() { return panel().navigation().topViewController()->className(); }

  std::vector<QQuickItem*> previews() { return accessibleItems(view().contentItem(), QAccessible::RadioButton); }
  static QQuickItem* image(QQuickItem* preview) {
    for (QQuickItem* child : preview->childItems()) {
      if (child->inherits("QQuickImage")) return child;
    }
    throw std::runtime_error("the preview has no image");
  }
  // The one that is drawn, above what was drawn before.
  static QQuickItem* drawnAnew(QQuickItem* preview) {
    QQuickItem* last = nullptr;
    for (QQuickItem* child : preview->childItems()) {
      if (child->inherits("QQuickImage")) last = child;
    }
    return last;
  }
  // Waits for the threads that draw.
  void waitUntilDrawn() {
    constexpr int kReady = 1;
    ASSERT_TRUE(eventually([this] {
      const auto all = previews();
      return std::ranges::all_of(all,
                                 [](QQuickItem* each) { return image(each)->property("status").toInt() == kReady; });
    }));
  }
  QImage picture(QQuickItem* preview) {
    const QRect place = preview->mapRectToScene(preview->boundingRect()).toRect();
    return view().grabWindow().copy(place);
  }
  Dictionary values() {
    host::linux::FilePreferences store((host::linux::DeviceRoot(root_.path())));
    const auto value = store.copyAppValue("NotificationCenter_Defaults", "com.vantorick.quellar2");
    const auto* dictionary = value ? value->as<Dictionary>() : nullptr;
    return dictionary ? *dictionary : Dictionary();
  }
  std::string focused() {
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(view().activeFocusItem());
    return interface ? interface->text(QAccessible::Name).toStdString() : "";
  }
};

TEST_F(BackdropPage, ShowsThirtyOneLabelledPreviewsTwoInALine) {
  openPicker({.size = QSize(320, 568)});
  const auto all = previews();
  ASSERT_EQ(all.size(), 31U);
  std::vector<std::string> labels;
  for (QQuickItem* each : all) {
    EXPECT_EQ(each->size(), QSizeF(140, 90));
    labels.push_back(QAccessible::queryAccessibleInterface(each)->text(QAccessible::Name).toStdString());
  }
  EXPECT_EQ(labels[0], "2060");
  EXPECT_EQ(labels[1], "2000");
  EXPECT_EQ(labels[30], "4003");
  EXPECT_EQ(all[0]->position(), QPointF(10, 10));
  EXPECT_EQ(all[1]->position(), QPointF(320 - 10 - 140, 10));
  EXPECT_EQ(all[2]->position(), QPointF(10, 110));
  EXPECT_EQ(all[30]->position(), QPointF(10, 10 + 15 * 100));
  EXPECT_EQ(settings().navigation().top()->title(), "Pick A Style");
}

TEST_F(BackdropPage, HasTheItemSizesOfItsPickerAtEveryWidth) {
  // Beside the list of pages there is less room.
  openPicker({.size = QSize(1180, 600)});
  EXPECT_EQ(previews().front()->size(), QSizeF((1180 - 400) / 2.0 - 20, 90));
  view().resize(600, 600);
  ASSERT_TRUE(eventually([this] { return previews().front()->width() == 280; }));
  view().resize(500, 600);
  ASSERT_TRUE(eventually([this] { return previews().front()->width() == 230; }));
  ASSERT_TRUE(
      eventually([this] { return image(previews().front())->property("sourceSize").toSize() == QSize(230, 90); }));
}

TEST_F(BackdropPage, DrawsEachStyleOverTheWallpaper) {
  root_.write(std::string(kWallpaper) + ".cpbitmap", bitmapBytes(390, 844, colorfulPixel));
  openPicker();
  waitUntilDrawn();
  const host::linux::DeviceRoot root(root_.path());
  const QImage ground = host::window::wallpaperFilling(root, QSize(175, 90), {});
  for (const std::size_t place : {0U, 3U, 6U}) {
    QQuickItem* preview = previews()[place];
    const auto style = QAccessible::queryAccessibleInterface(preview)->text(QAccessible::Name).toLongLong();
    const QImage shown = picture(preview);
    const QImage drawn = host::window::drawBackdrop(ground, *host::window::backdropLook(style), 1);
    for (const QPoint at : {QPoint(20, 20), QPoint(150, 20), QPoint(20, 70), QPoint(150, 70)}) {
      EXPECT_EQ(QColor(shown.pixel(at)), QColor(drawn.pixel(at))) << style;
    }
    // Rounded off.
    EXPECT_GT(qGray(shown.pixel(0, 0)), 250);
  }
}

TEST_F(BackdropPage, ShowsAllPreviewsWithoutAWallpaper) {
  openPicker();
  waitUntilDrawn();
  EXPECT_EQ(previews().size(), 31U);
  QImage grey(175, 90, QImage::Format_RGB32);
  grey.fill(host::window::kNoWallpaper);
  const QImage drawn = host::window::drawBackdrop(grey, *host::window::backdropLook(2060), 1);
  EXPECT_EQ(QColor(picture(previews().front()).pixel(20, 20)), QColor(drawn.pixel(20, 20)));
}

TEST_F(BackdropPage, StoresTheTappedStylePostsAndGoesBack) {
  openPicker();
  tap(previews().front());
  EXPECT_EQ(topClass(), "KVQuellarNotificationCenterListController");
  EXPECT_EQ(values(), (Dictionary{{"ncPrefferedBackdropStyle", 2060}}));
  EXPECT_THAT(takePosts(), ElementsAre(kSettings));
  settle();
  // The page's next write keeps it.
  click(row("Hide Page Dots"));
  EXPECT_EQ(values(), (Dictionary{{"ncDisablePageControl", true}, {"ncPrefferedBackdropStyle", 2060}}));
  EXPECT_EQ(focusedRow(), "Hide Page Dots");
}

TEST_F(BackdropPage, PicksByTheKeyboard) {
  openPicker();
  EXPECT_EQ(focused(), "2060");
  press(Qt::Key_Right);
  EXPECT_EQ(focused(), "2000");
  press(Qt::Key_Down);
  EXPECT_EQ(focused(), "2030");
  press(Qt::Key_Left);
  EXPECT_EQ(focused(), "2040");
  press(Qt::Key_Up);
  press(Qt::Key_Up);
  EXPECT_EQ(focused(), "2060");
  press(Qt::Key_End);
  EXPECT_EQ(focused(), "4003");
  const QQuickItem* last = previews().back();
  EXPECT_LE(last->mapToScene(QPointF(0, last->height())).y(), view().height());
  press(Qt::Key_Right);
  EXPECT_EQ(focused(), "4003");
  press(Qt::Key_Tab);
  EXPECT_EQ(focused(), "Back");
  press(Qt::Key_Tab);
  EXPECT_EQ(focused(), "4003");
  press(Qt::Key_Return);
  EXPECT_EQ(values(), (Dictionary{{"ncPrefferedBackdropStyle", 4003}}));
  EXPECT_THAT(takePosts(), ElementsAre(kSettings));
}

TEST_F(BackdropPage, BeginsAtTheRightWhereTheTextRunsFromRightToLeft) {
  openPicker({.size = QSize(320, 568), .rightToLeft = true});
  EXPECT_EQ(previews()[0]->position(), QPointF(170, 10));
  EXPECT_EQ(previews()[1]->position(), QPointF(10, 10));
  press(Qt::Key_Left);
  EXPECT_EQ(focused(), "2000");
}

TEST_F(BackdropPage, GoesBackWithoutAPick) {
  openPicker();
  press(Qt::Key_Escape);
  EXPECT_EQ(topClass(), "KVQuellarNotificationCenterListController");
  EXPECT_THAT(values(), IsEmpty());
  EXPECT_THAT(takePosts(), IsEmpty());
}

TEST_F(BackdropPage, ReadsTheWallpaperAnewWheneverItOpens) {
  const std::string file = std::string(kWallpaper) + ".cpbitmap";
  root_.write(file, bitmapBytes(8, 8, [](int, int) { return qRgb(0, 0, 0); }));
  openPicker();
  waitUntilDrawn();
  const QColor dark = picture(previews()[1]).pixelColor(20, 20);
  press(Qt::Key_Escape);
  settle();
  root_.write(file, bitmapBytes(8, 8, [](int, int) { return qRgb(255, 255, 255); }));
  click(row("Blur Style"));
  settle();
  waitUntilDrawn();
  EXPECT_EQ(dark, QColor("#000000"));
  EXPECT_EQ(picture(previews()[1]).pixelColor(20, 20), QColor("#ffffff"));
}

TEST_F(BackdropPage, KeepsWhatWasDrawnWhileItIsDrawnAnewForAnotherWidth) {
  // Large, so that it takes its time.
  root_.write(std::string(kWallpaper) + ".cpbitmap", bitmapBytes(1290, 2796, [](int, int) { return qRgb(0, 160, 0); }));
  openPicker();
  waitUntilDrawn();
  // The last one that is in sight, for which the threads come late.
  QQuickItem* const preview = previews()[12];
  const QColor drawn = picture(preview).pixelColor(20, 20);
  ASSERT_NE(drawn, QColor("#808080"));
  view().resize(500, 844);
  ASSERT_TRUE(eventually([&] { return preview->width() == 230; }));
  EXPECT_EQ(picture(preview).pixelColor(20, 20), drawn);
  EXPECT_EQ(picture(preview).pixelColor(210, 70), drawn);

  constexpr int kLoading = 2;
  ASSERT_TRUE(eventually([&] { return drawnAnew(preview)->property("status").toInt() == kLoading; }));
  EXPECT_EQ(picture(preview).pixelColor(20, 20), drawn);
  EXPECT_EQ(picture(preview).pixelColor(210, 70), drawn);
}

TEST_F(BackdropPage, MayBeLeftWhileItIsStillDrawing) {
  root_.write(std::string(kWallpaper) + ".cpbitmap", bitmapBytes(1290, 2796, colorfulPixel));
  openPicker();
  press(Qt::Key_Escape);
  settle();
  click(row("Blur Style"));
  closeWindow();
}

}  // namespace backdrop_page_test
}  // namespace quellar::tests

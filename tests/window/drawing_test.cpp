// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <QImage>
#include <QTest>
#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "cells/backdrop_picker.h"
#include "cells/color_preview_cell.h"
#include "cells/slider_cell.h"
#include "cells/stepper_cell.h"
#include "frame/page_registry.h"
#include "host/window/opening.h"
#include "host/window/sample_page.h"
#include "own_page.h"
#include "window_fixture.h"

// What is drawn, by its pixels.
namespace quellar::tests::drawing_test {
namespace {

using host::window::Idiom;
using host::window::Sample;
using platform::Dictionary;
using platform::Value;

QRectF inScene(const QQuickItem* item) {
  return item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
}

class Drawing : public WindowTest {
 protected:
  QImage drawn() { return view().grabWindow().convertToFormat(QImage::Format_RGB32); }
  // The same with nothing kept of what was drawn before.
  QImage drawnAfresh() {
    view().contentItem()->setOpacity(0);
    (void)view().grabWindow();
    view().contentItem()->setOpacity(1);
    return drawn();
  }
  // Where what is drawn differs from what is drawn afresh; "" where it does not.
  std::string stale() {
    const QImage kept = drawn();
    const QImage fresh = drawnAfresh();
    if (kept == fresh) return "";
    QRect where;
    for (int y = 0; y < fresh.height(); ++y) {
      for (int x = 0; x < fresh.width(); ++x) {
        if (kept.pixel(x, y) != fresh.pixel(x, y)) where |= QRect(x, y, 1, 1);
      }
    }
    if (const QByteArray folder = qgetenv("QUELLAR_STALE"); !folder.isEmpty()) {
      kept.save(folder + "/kept.png");
      fresh.save(folder + "/fresh.png");
    }
    return QString("%1 x %2 at %3, %4")
        .arg(where.width())
        .arg(where.height())
        .arg(where.x())
        .arg(where.y())
        .toStdString();
  }
  double position() { return list()->property("contentY").toDouble(); }
  void scrollBy(double distance) { QMetaObject::invokeMethod(list(), "scrollBy", Q_ARG(QVariant, distance)); }
  void scrollTo(double place) { scrollBy(place - position()); }

  // Scrolls to and fro in single steps, and looks at each.
  void jumpAbout() {
    for (const double step : {60.0, 35.0, -60.0, 140.0, 60.0, -33.0, 60.0, 200.0, -90.0, 60.0, 60.0, -300.0}) {
      scrollBy(step);
      EXPECT_EQ(stale(), "") << "after a step by " << step << " to " << position();
    }
  }
  void popAll() {
    while (!panel().navigation().viewControllers().empty()) panel().navigation().popViewController(false);
  }
};

TEST_F(Drawing, LeavesNothingOfAFooterThatGoesUnderTheBarInOneStep) {
  store("StatusBar_Defaults", {{"usesCustomTimeFormatter", true}});
  open("Status Bar");
  int footers = 0;
  for (int index = 0; index < rows().count(); ++index) {
    const QString kind = rows().kindAt(index);
    if (kind != "footer" && kind != "group") continue;
    QQuickItem* item = nullptr;
    QMetaObject::invokeMethod(list(), "itemAtIndex", Q_RETURN_ARG(QQuickItem*, item), Q_ARG(int, index));
    ASSERT_NE(item, nullptr);
    scrollTo(item->y() - 4);
    (void)drawn();
    // It stood at the bar's edge, and is under the bar.
    scrollBy(item->height() + 2);
    EXPECT_EQ(stale(), "") << rows().rows()[static_cast<std::size_t>(index)].label.toStdString();
    ++footers;
  }
  EXPECT_GT(footers, 5);
}

TEST_F(Drawing, LeavesNothingBehindAfterAJump) {
  for (const char* page : {"Status Bar", "Notification Center", "Icons", "Quellar"}) {
    SCOPED_TRACE(page);
    open(page, {.size = {390, 600}});
    jumpAbout();
    closeWindow();
    popAll();
  }
}

TEST_F(Drawing, LeavesNothingBehindAfterAJumpInTwoColumns) {
  open("Status Bar", {.idiom = Idiom::pad, .size = {1180, 500}});
  jumpAbout();
}

TEST_F(Drawing, LeavesNothingBehindAfterAJumpBeneathANotice) {
  open("Status Bar", {.size = {390, 600}});
  settings().trouble().tell({host::linux::StoreTrouble::Kind::Write, "/somewhere/settings.plist", "the disk is full"});
  settle();
  jumpAbout();
}

TEST_F(Drawing, LeavesNothingBehindWhereBlocksComeAndGo) {
  open("Icons", {.size = {390, 700}});
  for (const char* key : {"usesCustomIconSize", "userRequestsColoredBadges", "useCustomLabelIndicatorColors",
                          "usesCustomIconSize", "userRequestsColoredBadges"}) {
    rows().activate(rows().indexOf(key));
    settle();
    EXPECT_EQ(stale(), "") << key;
    scrollBy(60);
    EXPECT_EQ(stale(), "") << key;
  }
}

// A dialog whose texts scroll between its edge and its buttons.
class LowDialog : public Drawing {
 protected:
  // Scrolls what the dialog says to and fro.
  void scrollAbout() {
    QQuickItem* const scroller = findItem([](QQuickItem& item) {
      return item.inherits("QQuickFlickable") && item.clip() && item.property("contentHeight").toReal() > item.height();
    });
    ASSERT_NE(scroller, nullptr);
    const double lowest = scroller->property("contentHeight").toReal() - scroller->height();
    for (const double share : {0.3, 1.0, 0.6, 0.0, 1.0, 0.5, 0.0}) {
      scroller->setProperty("contentY", lowest * share);
      EXPECT_EQ(stale(), "") << share;
    }
  }
};

TEST_F(LowDialog, LeavesNothingBehindWhenItScrolls) {
  store("Icon_Defaults", {{"usesCustomIconSize", true}, {"useCustomLabelIndicatorColors", true}});
  open("Icons", {.size = {360, 294}, .textScale = 2});
  rows().enterValue(rows().indexOf("customIconScaleSize"));
  settle();
  scrollAbout();
  panel().navigation().dismiss();
  settings().navigation().pressBar("right");
  settle();
  scrollAbout();
  panel().navigation().dismiss();
  int color = 0;
  while (rows().kindAt(color) != "color") ASSERT_LT(++color, rows().count());
  rows().activate(color);
  settle();
  scrollAbout();
}

TEST_F(Drawing, LeavesNothingBehindAmongThePreviews) {
  open("Notification Center", {.size = {390, 600}});
  panel().navigation().pushViewController(
      std::make_shared<cells::KVQuellarBackdropPickerViewController>(panel().platform(), "style", "Picture_Defaults"));
  settle();
  QTest::qWait(300);
  QQuickItem* const scroller = list()->parentItem()->property("scroller").value<QQuickItem*>();
  for (const double place : {60.0, 300.0, 130.0, 900.0, 700.0, 0.0}) {
    scroller->setProperty("contentY", place);
    QTest::qWait(30);
    EXPECT_EQ(stale(), "") << place;
  }
}

TEST_F(Drawing, HasNoSlitsBetweenTheButtonsOfADialogInAnyWindow) {
  store("Icon_Defaults", {{"usesCustomIconSize", true}});
  open("Icons", {.size = {390, 844}});
  rows().enterValue(rows().indexOf("customIconScaleSize"));
  settle();
  const auto look = [this](const char* what) {
    for (const QSize size :
         {QSize(390, 844), QSize(1180, 820), QSize(320, 480), QSize(391, 601), QSize(700, 333), QSize(390, 845)}) {
      view().resize(size);
      ASSERT_TRUE(eventually([&] { return view().contentItem()->size() == QSizeF(size); }));
      settle();
      std::vector<QRectF> buttons;
      const std::function<void(QQuickItem*)> collect = [&](QQuickItem* item) {
        if (!item->isVisible()) return;
        if (item->property("apart").isValid()) buttons.push_back(inScene(item));
        for (QQuickItem* child : item->childItems()) collect(child);
      };
      collect(view().contentItem());
      ASSERT_FALSE(buttons.empty());
      const QImage image = drawn();
      const double scale = view().devicePixelRatio();
      for (const QRectF& button : buttons) {
        EXPECT_EQ(button.top(), std::round(button.top())) << what;
        EXPECT_EQ(button.bottom(), std::round(button.bottom())) << what;
        // Around its upper edge, where no letter is: card and hairline alone.
        for (int y = static_cast<int>((button.top() - 4) * scale); y < static_cast<int>((button.top() + 4) * scale);
             ++y) {
          for (int x = static_cast<int>((button.left() + 1) * scale);
               x < static_cast<int>((button.right() - 1) * scale); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            ASSERT_GE(pixel.red(), 0xdf) << what << ": " << pixel.name().toStdString() << " at " << x << ", " << y
                                         << " by " << button.top() << ", " << size.width() << " x " << size.height();
          }
        }
      }
      EXPECT_EQ(stale(), "") << what << ", " << size.width() << " x " << size.height();
    }
  };
  look("entry");
  settings().navigation().dialog()->typeText("1000000");
  settings().navigation().dialog()->accept();
  settle();
  look("refusal");
}

// Every colour that a cell reports, and the pixels of the row.
class ToldColors : public Drawing {
 protected:
  static QColor color(const platform::Color& told) { return {told.red, told.green, told.blue}; }
  static int distance(const QColor& one, const QColor& other) {
    return std::abs(one.red() - other.red()) + std::abs(one.green() - other.green()) +
           std::abs(one.blue() - other.blue());
  }
  // The colour of a text or a glyph: the one farthest from the ground that it stands on, whose colour is at its corner.
  QColor ink(const QImage& image, const QQuickItem* item) {
    const QRect place = inScene(item).toAlignedRect() & image.rect();
    QColor found = image.pixelColor(place.topLeft());
    const QColor ground = found;
    for (int y = place.top(); y <= place.bottom(); ++y) {
      for (int x = place.left(); x <= place.right(); ++x) {
        const QColor pixel = image.pixelColor(x, y);
        if (distance(pixel, ground) > distance(found, ground)) found = pixel;
      }
    }
    return found;
  }
  QQuickItem* textOf(QQuickItem* row, const std::string& text) {
    return findItem(
        [&](QQuickItem& item) {
          return (item.inherits("QQuickText") || item.property("textFormat").isValid()) &&
                 item.property("text").toString().toStdString() == text;
        },
        row);
  }
  QQuickItem* rowAt(int index) {
    QQuickItem* found = nullptr;
    EXPECT_TRUE(eventually([&] {
      QMetaObject::invokeMethod(list(), "itemAtIndex", Q_RETURN_ARG(QQuickItem*, found), Q_ARG(int, index));
      return found != nullptr;
    }));
    return found;
  }
  void expectInk(const QImage& image, QQuickItem* row, const std::string& text, const platform::Color& told,
                 const std::string& what) {
    if (text.empty()) return;
    QQuickItem* const item = textOf(row, text);
    ASSERT_NE(item, nullptr) << what << ": \"" << text << "\" is not shown";
    EXPECT_EQ(ink(image, item).name().toStdString(), color(told).name().toStdString()) << what << " \"" << text << "\"";
    ++compared_;
  }
  void expectPixel(const QImage& image, QPointF at, const platform::Color& told, const std::string& what) {
    EXPECT_EQ(image.pixelColor(at.toPoint()).name().toStdString(), color(told).name().toStdString()) << what;
    ++compared_;
  }

  // The whole page on one picture.
  void compare(const std::string& page) {
    const double height = list()->property("contentHeight").toDouble() + 400;
    view().resize(390, static_cast<int>(height));
    ASSERT_TRUE(eventually([&] { return view().contentItem()->height() == static_cast<int>(height); }));
    settle();
    const QImage image = drawn();
    const auto& specifiers = this->page().specifiers();
    for (int index = 0; index < rows().count(); ++index) {
      const auto& shown = rows().rows()[static_cast<std::size_t>(index)];
      if (shown.kind == "group" || shown.kind == "footer" || !shown.enabled) continue;
      const auto& cell = specifiers[shown.place]->cell();
      ASSERT_NE(cell, nullptr);
      QQuickItem* const row = rowAt(index);
      const std::string what = page + ", " + shown.label.toStdString();
      compare(image, row, *cell, shown, what);
    }
  }
  void compare(const QImage& image, QQuickItem* row, const platform::PSTableCell& cell,
               const host::window::ShownRow& shown, const std::string& what) {
    expectInk(image, row, shown.label.toStdString(), cell.titleColor, what + ": title");
    if (const auto* slider = dynamic_cast<const cells::KVQuellarSliderCell*>(&cell)) {
      expectInk(image, row, slider->labelText().text, slider->labelText().color, what + ": label");
      if (const auto& footnote = slider->footerText()) {
        expectInk(image, row, footnote->text, footnote->color, what + ": footnote");
      }
      QQuickItem* const track = findItem([](QQuickItem& item) { return item.property("draggedTo").isValid(); }, row);
      ASSERT_NE(track, nullptr);
      const QRectF place = inScene(track);
      const double knob = place.left() + 13 + track->property("share").toDouble() * (place.width() - 26);
      if (knob - 20 > place.left()) {
        expectPixel(image, {knob - 18, place.center().y() - 0.5}, slider->minimumTrackTint, what + ": track");
      }
      if (knob + 20 < place.right()) {
        expectPixel(image, {knob + 18, place.center().y() - 0.5}, slider->maximumTrackTint,
                    what + ": rest of the track");
      }
    }
    if (const auto* stepper = dynamic_cast<const cells::KVQuellarStepperCell*>(&cell)) {
      expectInk(image, row, stepper->label().text, stepper->label().color, what + ": number");
    }
    if (const auto* swatch = dynamic_cast<const cells::KVQuellarColorPreviewTableCell*>(&cell)) {
      QQuickItem* const picture = findItem(
          [](QQuickItem& item) { return item.property("source").toUrl().toString().startsWith("image://swatch/"); },
          row);
      ASSERT_NE(picture, nullptr);
      const auto& told = swatch->swatch();
      expectPixel(image, inScene(picture).center(), told.colorAt(told.pixelWidth / 2, told.pixelHeight / 2),
                  what + ": swatch");
    }
    if (cell.onTint && shown.checked) {
      QQuickItem* const toggle = findItem([](QQuickItem& item) { return item.property("over").isValid(); }, row);
      ASSERT_NE(toggle, nullptr);
      expectPixel(image, inScene(toggle).topLeft() + QPointF(12, 15), *cell.onTint, what + ": switch");
    }
  }
  int compared_ = 0;
};

TEST_F(ToldColors, AreThoseOfEveryKindOfRow) {
  open(host::window::makeSamplePage(panel().platform(), Sample::plain), {.textScale = 2});
  compare("Rows");
  EXPECT_GE(compared_, 17);
}

TEST_F(ToldColors, AreThoseOfEveryRowOfEveryPage) {
  open("Quellar", {.textScale = 2});
  for (const auto& entry : panel().pages().entries()) {
    host::window::openPage(panel().platform(), panel().pages(), entry);
    settle();
    host::window::showBlocks(page(), true);
    settle();
    compare(entry.name);
    panel().navigation().popViewController(false);
  }
  EXPECT_GT(compared_, 400);
}

TEST_F(ToldColors, AreThoseOfTheChoicesOfAPicker) {
  open(host::window::makeSamplePage(panel().platform(), Sample::plain), {.textScale = 2});
  click(row("Picker"));
  settle();
  compare("Picker");
  EXPECT_EQ(compared_, 3);
}

TEST_F(ToldColors, HaveTheLogoInTheTintOfTheBar) {
  open("Quellar", {.idiom = Idiom::pad, .size = {1180, 820}});
  ASSERT_TRUE(eventually([this] { return settings().navigation().top()->property("titleAlpha").toDouble() == 1; }));
  const QString logo = settings().navigation().top()->property("titleImage").toString();
  const auto isLogo = [&](QQuickItem& item) {
    return item.property("source").toUrl().toString().startsWith(logo) && item.property("status").toInt() == 1;
  };
  ASSERT_TRUE(eventually([&] { return findItem(isLogo) != nullptr; }));
  QQuickItem* const button = barButton("Respring");
  QQuickItem* const title = textOf(button, "Respring");
  ASSERT_NE(title, nullptr);
  const QImage image = drawn();
  EXPECT_EQ(ink(image, findItem(isLogo, list()->parentItem())).name(), title->property("color").value<QColor>().name());
}

// What the pictures of the program are made by.
class Blocks : public WindowTest {};

TEST_F(Blocks, AreShownByTheValuesThatTheirRowsCanHave) {
  open("Quellar");
  int blocks = 0;
  for (const auto& entry : panel().pages().entries()) {
    host::window::openPage(panel().platform(), panel().pages(), entry);
    settle();
    host::window::showBlocks(page(), true);
    settle();
    const Dictionary values = stored(entry.page->defaultsKey);
    for (const std::string& key : host::window::keysThatShowBlocks(*entry.page)) {
      const auto row = page().specifierForID(key);
      ASSERT_NE(row, nullptr) << entry.name << ": " << key;
      ASSERT_TRUE(values.contains(key)) << entry.name << ": " << key;
      ++blocks;
      if (row->values().empty()) {
        EXPECT_EQ(values.at(key), Value(true)) << entry.name << ": " << key;
        EXPECT_TRUE(values.at(key).is<bool>()) << entry.name << ": " << key;
      } else {
        const auto choice = row->indexOfValue(values.at(key));
        ASSERT_TRUE(choice) << entry.name << ": " << key;
        EXPECT_FALSE(values.at(key).is<bool>()) << entry.name << ": " << key;
        // The window shows the choice that the block belongs to.
        const auto& shown = rows().rows()[static_cast<std::size_t>(rows().indexOf(QString::fromStdString(key)))];
        EXPECT_EQ(shown.chosen, static_cast<int>(*choice)) << entry.name << ": " << key;
      }
    }
    panel().navigation().popViewController(false);
  }
  EXPECT_GT(blocks, 20);
}

TEST_F(Blocks, ShowTheColorOfTheIconsUnderTheChoiceThatUsesIt) {
  open("Icons");
  host::window::showBlocks(page(), true);
  settle();
  const int choice = rows().indexOf("userStyleForIconBadgeColoring");
  ASSERT_GE(choice, 0);
  const auto& segment = rows().rows()[static_cast<std::size_t>(choice)];
  ASSERT_GE(segment.chosen, 0);
  EXPECT_EQ(segment.titles[segment.chosen], "Custom Color");
  EXPECT_NE(row("Custom Color"), nullptr);
}

}  // namespace
}  // namespace quellar::tests::drawing_test

// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QTest>
#include <QWheelEvent>
#include <cmath>
#include <functional>

#include "cells/color_preview_cell.h"
#include "host/window/color_model.h"
#include "host/window/image_provider.h"
#include "scene.h"
#include "window_fixture.h"

namespace quellar::tests {
namespace color_dialog_test {

using host::window::ColorModel;
using host::window::SwatchProvider;
using platform::Color;
using platform::Dictionary;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kDomain = "com.vantorick.quellar2";
constexpr const char* kSettings = "com.vantorick.quellar2.settings";
constexpr const char* kToggles = "com.vantorick.quellar2.togglesupdate";

QString english(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

// The colours of the control centre's toggles: no alpha is picked there.
class ColorRows : public WindowTest {
 protected:
  void openToggles(const Dictionary& colors = {}) {
    Dictionary values = colors;
    values.insert_or_assign("usesCustomCCToggleColors", true);
    open("Custom Toggle Colors", "ToggleColoring_Defaults", values, {});
  }
  // The colours of the icons' dots, with an alpha each.
  void openDots(const Dictionary& colors, const Setup& setup) {
    Dictionary values = colors;
    values.insert_or_assign("useCustomLabelIndicatorColors", true);
    open("Icons", "Icon_Defaults", values, setup);
  }
  void open(const std::string& name, const char* key, const Dictionary& values, const Setup& setup) {
    panel().platform().preferences.setAppValue(key, platform::Value(values), kDomain);
    WindowTest::open(name, setup);
    EXPECT_THAT(takePosts(), IsEmpty());
  }

  std::string storedColor(const char* key, const char* colorKey) {
    const platform::Dictionary dictionary = stored(key);
    const auto found = dictionary.find(colorKey);
    return found == dictionary.end() ? "" : *found->second.as<std::string>();
  }
  std::string airDrop() { return storedColor("ToggleColoring_Defaults", "airdrop"); }

  ColorModel& model() { return *settings().navigation().dialog()->color(); }
  bool dialogIsShown() { return panel().navigation().dialog().has_value(); }
  void openDialog(const std::string& label) {
    click(row(label));
    ASSERT_TRUE(dialogIsShown());
    settleView();
  }
  void settleView() {
    EXPECT_TRUE(eventually([this] { return items(QAccessible::Dialog).size() == 1; }));
    (void)view().grabWindow();
  }

  std::vector<QQuickItem*> items(QAccessible::Role role, const QString& name = {}) {
    return accessibleItems(view().contentItem(), role, name);
  }
  QQuickItem* item(QAccessible::Role role, const QString& name) {
    const auto found = items(role, name);
    if (found.size() != 1) throw std::runtime_error(name.toStdString() + ": " + std::to_string(found.size()));
    return found.front();
  }
  QQuickItem* code() { return item(QAccessible::EditableText, "Color Code"); }
  void retype(const QString& text) {
    click(code());
    press(Qt::Key_A, Qt::ControlModifier);
    type(text);
  }
  std::string focusedName() {
    for (QQuickItem* each = view().activeFocusItem(); each; each = each->parentItem()) {
      QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(each);
      if (interface && !interface->text(QAccessible::Name).isEmpty()) {
        return interface->text(QAccessible::Name).toStdString();
      }
    }
    return "";
  }
  void clickAt(QQuickItem* target, double x, double y) {
    const QPointF at = target->mapToScene(QPointF(x * target->width(), y * target->height()));
    QTest::mouseClick(&view(), Qt::LeftButton, {}, at.toPoint());
  }
  QColor pixel(QQuickItem* target, double x = 0.5, double y = 0.5) {
    const QPointF at = target->mapToScene(QPointF(x * target->width(), y * target->height()));
    return view().grabWindow().pixelColor(at.toPoint());
  }
  QQuickItem* swatch(const std::string& label) {
    QQuickItem* found = nullptr;
    const std::function<void(QQuickItem*)> look = [&](QQuickItem* each) {
      const QString source = each->property("source").toUrl().toString();
      if (source.startsWith("image://swatch/")) found = each;
      for (QQuickItem* child : each->childItems()) look(child);
    };
    look(row(label));
    if (!found) throw std::runtime_error("no swatch: " + label);
    return found;
  }
};

TEST_F(ColorRows, DrawTheSwatchOfTheirCellAtTheirRightEdge) {
  openToggles({{"airdrop", "#ff0000:0.25"}, {"airplay", "ff3b30"}, {"mute", "no color"}});
  EXPECT_EQ(pixel(swatch("AirDrop")), QColor("#ff0000"));
  EXPECT_EQ(pixel(swatch("AirPlay")), QColor(15, 59, 48));
  EXPECT_EQ(pixel(swatch("Mute")), QColor("#000000"));
  EXPECT_EQ(pixel(swatch("Airplane")), QColor("#f09a37"));

  const QQuickItem* drawn = swatch("AirDrop");
  EXPECT_EQ(drawn->size(), QSizeF(30, 30));
  EXPECT_EQ(drawn->property("sourceSize").toSize(), QSize(30, 30));
  const QRectF place = drawn->mapRectToScene(QRectF(QPointF(), drawn->size()));
  EXPECT_EQ(place.right(), 390 - 2 * 16);
  EXPECT_EQ(place.center().y(), row("AirDrop")->mapToScene(QPointF(0, row("AirDrop")->height() / 2)).y());
  EXPECT_EQ(pixel(swatch("AirDrop"), 0.01, 0.01), QColor("#ffffff"));
}

TEST_F(ColorRows, AreButtonsThatTellTheirColor) {
  openToggles({{"airdrop", "#ff0000:0.25"}});
  QAccessibleInterface* told = QAccessible::queryAccessibleInterface(item(QAccessible::Button, "AirDrop"));
  EXPECT_EQ(told->text(QAccessible::Description), "#ff0000");
  EXPECT_TRUE(told->actionInterface()->actionNames().contains(QAccessibleActionInterface::pressAction()));
  told->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  EXPECT_TRUE(dialogIsShown());
}

TEST(Swatches, ArePixelForPixelThoseOfTheCellAtEveryScale) {
  SwatchProvider provider;
  for (const double scale : {1.0, 1.5, 2.0, 3.0}) {
    const int side = static_cast<int>(30 * scale);
    QSize told;
    const QImage image = provider.requestImage("0e7afe", &told, QSize(side, side));
    const auto picture = cells::_accessoryImageForColor("#0e7afe", scale);
    ASSERT_EQ(image.size(), QSize(side, side)) << scale;
    EXPECT_EQ(told, image.size());
    ASSERT_EQ(image.format(), QImage::Format_RGBA8888_Premultiplied);
    for (int y = 0; y < side; ++y) {
      const auto* line = image.constScanLine(y);
      const std::vector<std::uint8_t> drawn(line, line + std::ptrdiff_t{4} * side);
      const auto begin = picture.pixels.begin() + static_cast<std::ptrdiff_t>(y) * 4 * side;
      ASSERT_EQ(drawn, std::vector<std::uint8_t>(begin, begin + 4 * static_cast<std::ptrdiff_t>(side))) << scale;
    }
  }
}

TEST_F(ColorRows, ShowTheNewColorAfterTheDelayedReloadOnly) {
  openToggles({{"airdrop", "#102030"}});
  openDialog("AirDrop");
  retype("#41a9d6");
  press(Qt::Key_Return);
  EXPECT_FALSE(dialogIsShown());
  EXPECT_EQ(airDrop(), "#41a9d6");
  EXPECT_EQ(pixel(swatch("AirDrop")), QColor("#102030"));
  EXPECT_THAT(takePosts(), ElementsAre(kSettings, kToggles));
  settle();
  EXPECT_EQ(pixel(swatch("AirDrop")), QColor("#41a9d6"));
}

TEST_F(ColorRows, OpenADialogThatStartsFromTheirColor) {
  openToggles({{"airdrop", "#41A9D6"}});
  openDialog("AirDrop");
  EXPECT_EQ(model().start(), QColor("#41a9d6"));
  EXPECT_EQ(code()->property("text").toString(), "#41a9d6");
  EXPECT_EQ(pixel(item(QAccessible::Button, "Before"), 0.5, 0.5), QColor("#41a9d6"));
  EXPECT_EQ(pixel(item(QAccessible::StaticText, "Now"), 0.5, 0.5), QColor("#41a9d6"));
  EXPECT_EQ(items(QAccessible::Slider, "Opacity").size(), 0U);
  press(Qt::Key_Escape);
  EXPECT_FALSE(dialogIsShown());
  EXPECT_EQ(airDrop(), "#41A9D6");
  EXPECT_THAT(takePosts(), IsEmpty());
}

TEST_F(ColorRows, StoreAColorThatNobodyMovedAsItWas) {
  openToggles({{"airdrop", "#0e7afd"}});
  openDialog("AirDrop");
  click(item(QAccessible::Button, "Choose"));
  EXPECT_EQ(airDrop(), "#0e7afd");
  EXPECT_THAT(takePosts(), ElementsAre(kSettings, kToggles));
}

TEST_F(ColorRows, PickBySaturationAndBrightnessInTheField) {
  openToggles({{"airdrop", "#ff0000"}});
  openDialog("AirDrop");
  QQuickItem* field = item(QAccessible::Slider, "Saturation")->parentItem();
  clickAt(field, 0.5, 0.5);
  EXPECT_NEAR(model().saturation(), 0.5, 0.01);
  EXPECT_NEAR(model().brightness(), 0.5, 0.01);
  EXPECT_EQ(model().hue(), 0);
  // A finger that leaves the field goes on along its edge.
  const QPoint start = field->mapToScene(QPointF(20, 20)).toPoint();
  QTest::mousePress(&view(), Qt::LeftButton, {}, start);
  QTest::mouseMove(&view(), start + QPoint(-200, -200));
  QTest::mouseRelease(&view(), Qt::LeftButton, {}, start + QPoint(-200, -200));
  EXPECT_EQ(model().color(), QColor("#ffffff"));
  EXPECT_EQ(code()->property("text").toString(), "#ffffff");
  EXPECT_TRUE(dialogIsShown());
  EXPECT_EQ(airDrop(), "#ff0000");
}

TEST_F(ColorRows, MoveByTheKeyboardAlone) {
  openToggles({{"airdrop", "#800000"}});
  row("AirDrop")->forceActiveFocus(Qt::TabFocusReason);
  press(Qt::Key_Return);
  ASSERT_TRUE(dialogIsShown());
  settleView();
  press(Qt::Key_Left);
  EXPECT_NEAR(model().saturation(), 0.99, 1e-9);
  press(Qt::Key_Up, Qt::ShiftModifier);
  EXPECT_NEAR(model().brightness(), 128 / 255.0 + 0.1, 1e-9);
  press(Qt::Key_Tab);
  EXPECT_EQ(focusedName(), "Hue");
  press(Qt::Key_Right, Qt::ShiftModifier);
  press(Qt::Key_Right);
  press(Qt::Key_Down);
  EXPECT_EQ(model().hue(), 10);
  press(Qt::Key_End);
  EXPECT_EQ(model().hue(), 360);
  std::vector<std::string> stops;
  for (int each = 0; each < 5; ++each) {
    press(Qt::Key_Tab);
    stops.push_back(focusedName());
  }
  EXPECT_THAT(stops, ElementsAre("Before", "Color Code", "Cancel", "Choose", "Saturation, Brightness"));
  press(Qt::Key_Backtab);
  EXPECT_EQ(focusedName(), "Choose");
  press(Qt::Key_Backtab);
  press(Qt::Key_Space);
  EXPECT_FALSE(dialogIsShown());
  EXPECT_EQ(airDrop(), "#800000");
  EXPECT_THAT(takePosts(), IsEmpty());
}

TEST_F(ColorRows, TakeAPastedColorInEveryForm) {
  openToggles({{"airdrop", "#000000"}});
  for (const char* pasted : {"#41a9d6", "41a9d6", "  #41A9D6\n", "#41a9d6:0.5", "41A9D6:1"}) {
    openDialog("AirDrop");
    click(code());
    QGuiApplication::clipboard()->setText(pasted);
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(model().color(), QColor("#41a9d6")) << pasted;
    press(Qt::Key_Return);
    EXPECT_FALSE(dialogIsShown()) << pasted;
    EXPECT_EQ(airDrop(), "#41a9d6") << pasted;
    settle();
  }
}

TEST_F(ColorRows, RefuseATextThatIsNoColorAndLoseNothing) {
  openToggles({{"airdrop", "#123456"}});
  openDialog("AirDrop");
  for (const char* wrong : {"#12345", "#12345g", "red", "#1234567", "#123456:2", "#123456:", ""}) {
    retype("x");
    press(Qt::Key_Backspace);
    type(wrong);
    EXPECT_THAT(items(QAccessible::AlertMessage), IsEmpty()) << wrong;
    press(Qt::Key_Return);
    ASSERT_TRUE(dialogIsShown()) << wrong;
    EXPECT_EQ(items(QAccessible::AlertMessage).size(), 1U) << wrong;
    click(item(QAccessible::Button, "Choose"));
    ASSERT_TRUE(dialogIsShown()) << wrong;
    EXPECT_EQ(code()->property("text").toString(), wrong);
    EXPECT_EQ(airDrop(), "#123456");
  }
  EXPECT_THAT(takePosts(), IsEmpty());
  retype("#abcdef");
  EXPECT_THAT(items(QAccessible::AlertMessage), IsEmpty());
  press(Qt::Key_Return);
  EXPECT_EQ(airDrop(), "#abcdef");
}

TEST_F(ColorRows, GoBackToTheColorBefore) {
  openToggles({{"airdrop", "#123456"}});
  openDialog("AirDrop");
  retype("#abcdef");
  EXPECT_EQ(pixel(item(QAccessible::StaticText, "Now")), QColor("#abcdef"));
  EXPECT_EQ(pixel(item(QAccessible::Button, "Before")), QColor("#123456"));
  click(item(QAccessible::Button, "Before"));
  EXPECT_EQ(code()->property("text").toString(), "#123456");
  EXPECT_EQ(pixel(item(QAccessible::StaticText, "Now")), QColor("#123456"));
}

TEST_F(ColorRows, PickAnAlphaWhereThePageAsksForOne) {
  openDots({{"userIconBetaDotColor", "#ff0000:0.50"}}, {});
  openDialog("Beta Dot");
  EXPECT_EQ(code()->property("text").toString(), "#ff0000:0.50");
  QQuickItem* opacity = item(QAccessible::Slider, "Opacity");
  clickAt(opacity, 0.99, 0.5);
  EXPECT_EQ(model().alpha(), 1);
  EXPECT_EQ(code()->property("text").toString(), "#ff0000");
  opacity->forceActiveFocus(Qt::TabFocusReason);
  press(Qt::Key_PageDown);
  press(Qt::Key_Left);
  EXPECT_EQ(code()->property("text").toString(), "#ff0000:0.89");
  press(Qt::Key_Return);
  EXPECT_EQ(storedColor("Icon_Defaults", "userIconBetaDotColor"), "#ff0000:0.89");
}

TEST_F(ColorRows, TellAScreenReaderTheValuesOfTheSlidersAndTakeOthersFromIt) {
  openDots({{"userIconBetaDotColor", "#ff0000"}}, {});
  openDialog("Beta Dot");
  const auto values = [&](const char* name) {
    return QAccessible::queryAccessibleInterface(item(QAccessible::Slider, name))->valueInterface();
  };
  EXPECT_EQ(values("Hue")->maximumValue().toDouble(), 360);
  EXPECT_EQ(values("Saturation")->currentValue().toDouble(), 1);
  values("Hue")->setCurrentValue(240.0);
  EXPECT_EQ(model().color(), QColor("#0000ff"));
  values("Saturation")->setCurrentValue(0.0);
  EXPECT_EQ(model().color(), QColor("#ffffff"));
  values("Brightness")->setCurrentValue(0.2);
  values("Opacity")->setCurrentValue(0.25);
  EXPECT_EQ(code()->property("text").toString(), "#333333:0.25");
  // What it has set is followed on.
  item(QAccessible::Slider, "Hue")->forceActiveFocus(Qt::TabFocusReason);
  press(Qt::Key_Left);
  EXPECT_EQ(values("Hue")->currentValue().toDouble(), 239);
}

TEST_F(ColorRows, FitASmallPhone) {
  openDots({}, {.size = QSize(320, 480)});
  openDialog("Beta Dot");
  const auto inside = [&](QQuickItem* each) {
    return QRectF(0, 0, view().width(), view().height()).contains(each->mapRectToScene(each->boundingRect()));
  };
  EXPECT_TRUE(inside(item(QAccessible::Dialog, "Color")));
  for (const char* name : {"Hue", "Opacity", "Saturation"}) EXPECT_TRUE(inside(item(QAccessible::Slider, name)));
  EXPECT_TRUE(inside(code()));
  EXPECT_TRUE(inside(item(QAccessible::Button, "Choose")));
}

TEST_F(ColorRows, ScrollWithLargeTextsAndShowWhatHasTheFocusAndWhatWasRefused) {
  openDots({}, {.size = QSize(320, 480), .textScale = 2});
  openDialog("Beta Dot");
  const auto inside = [&](QQuickItem* each) {
    const QRectF room = item(QAccessible::Dialog, "Color")->mapRectToScene(QRectF(0, 0, 300, 460));
    return room.contains(each->mapRectToScene(each->boundingRect())) &&
           each->mapRectToScene(each->boundingRect()).bottom() <=
               item(QAccessible::Button, "Choose")->mapToScene(QPointF(0, 0)).y();
  };
  EXPECT_FALSE(inside(code()));
  for (int each = 0; each < 4; ++each) press(Qt::Key_Tab);
  EXPECT_EQ(focusedName(), "Color Code");
  EXPECT_TRUE(eventually([&] { return inside(code()); }));
  type("x");
  press(Qt::Key_Return);
  EXPECT_TRUE(eventually([&] {
    // What is new has its place when a picture has been drawn.
    (void)view().grabWindow();
    const auto refusals = items(QAccessible::AlertMessage);
    return refusals.size() == 1 && inside(refusals.front());
  }));
  // A wheel scrolls and changes nothing.
  press(Qt::Key_Backtab);
  press(Qt::Key_Backtab);
  QQuickItem* opacity = item(QAccessible::Slider, "Opacity");
  EXPECT_TRUE(inside(opacity));
  const double top = opacity->mapToScene(QPointF()).y();
  const QPointF at = opacity->mapToScene(QPointF(opacity->width() / 3, opacity->height() / 2));
  // One notch alone may be too short for the view to begin to move.
  EXPECT_TRUE(eventually([&] {
    QWheelEvent turn(at, view().mapToGlobal(at), {}, {0, 120}, Qt::NoButton, {}, Qt::NoScrollPhase, false);
    QGuiApplication::sendEvent(&view(), &turn);
    return opacity->mapToScene(QPointF()).y() > top;
  }));
  EXPECT_EQ(model().colorCode(), "#000000");
}

TEST_F(ColorRows, TurnTheirSlidersAroundWhereTheTextRunsFromRightToLeft) {
  openDots({{"userIconBetaDotColor", "#ff0000:0.50"}}, {.rightToLeft = true});
  openDialog("Beta Dot");
  QQuickItem* opacity = item(QAccessible::Slider, "Opacity");
  clickAt(opacity, 0.01, 0.5);
  EXPECT_EQ(model().alpha(), 1);
  press(Qt::Key_Right);
  EXPECT_EQ(model().alpha(), 0.99);
  press(Qt::Key_Left);
  EXPECT_EQ(model().alpha(), 1);
  // The field is a map, and stays.
  clickAt(item(QAccessible::Slider, "Saturation")->parentItem(), 0.25, 0.5);
  EXPECT_NEAR(model().saturation(), 0.25, 0.01);
  EXPECT_LT(code()->mapToScene(QPointF()).x(), item(QAccessible::Button, "Before")->mapToScene(QPointF()).x());
}

// The model alone.
class Colors : public testing::Test {
 protected:
  ColorModel model{english, nullptr};
  void begin(const Color& start, bool showAlpha = true) { model.begin({start, showAlpha, {}}); }
};

TEST_F(Colors, ComeBackFromHueSaturationAndBrightnessAsTheyWere) {
  for (int red = 0; red < 256; red += 15) {
    for (int green = 0; green < 256; green += 17) {
      for (int blue = 0; blue < 256; blue += 51) {
        const auto byte = [](int value) { return static_cast<std::uint8_t>(value); };
        const Color color{byte(red), byte(green), byte(blue), 1};
        begin(color);
        // A step away and back: the colour is mixed anew.
        const double brightness = model.brightness();
        model.setBrightness(brightness > 0.5 ? 0 : 1);
        model.setBrightness(brightness);
        ASSERT_EQ(model.value(), color);
      }
    }
  }
}

TEST_F(Colors, KeepTheHueOfAGreyAndTheSaturationOfBlack) {
  begin({0, 0, 255, 1});
  model.setSaturation(0);
  EXPECT_EQ(model.colorCode(), "#ffffff");
  EXPECT_EQ(model.hue(), 240);
  model.type("#000000");
  EXPECT_EQ(model.hue(), 240);
  model.setShade(1, 1);
  EXPECT_EQ(model.colorCode(), "#0000ff");
  model.type("#000000");
  EXPECT_EQ(model.saturation(), 1);
}

TEST_F(Colors, HoldWhatIsOutOfBoundsAtTheNearestBoundAndLeaveOutWhatIsNoNumber) {
  begin({255, 0, 0, 1});
  model.setHue(-5);
  EXPECT_EQ(model.hue(), 0);
  model.setHue(1e9);
  EXPECT_EQ(model.hue(), 360);
  model.setAlpha(-3);
  EXPECT_EQ(model.alpha(), 0);
  model.setAlpha(0.506);
  EXPECT_EQ(model.alpha(), 0.51);
  const QString code = model.code();
  model.setHue(std::nan(""));
  model.setShade(std::nan(""), 0);
  model.setAlpha(std::nan(""));
  EXPECT_EQ(model.code(), code);
  EXPECT_EQ(model.colorCode(), "#ff0000:0.51");
}

TEST_F(Colors, HaveNoAlphaWhereItIsNotShown) {
  begin({1, 2, 3, 0.5}, false);
  EXPECT_EQ(model.value(), (Color{1, 2, 3, 1}));
  model.setAlpha(0.2);
  model.type("#040506:0.3");
  EXPECT_TRUE(model.settle());
  EXPECT_EQ(model.value(), (Color{4, 5, 6, 1}));
  EXPECT_EQ(model.code(), "#040506");
}

TEST_F(Colors, ForgetARefusalWhenSomethingElseIsPicked) {
  begin({255, 0, 0, 1});
  model.type("no color");
  EXPECT_TRUE(model.refusal().isEmpty());
  EXPECT_FALSE(model.settle());
  EXPECT_FALSE(model.refusal().isEmpty());
  EXPECT_EQ(model.colorCode(), "#ff0000");
  model.setHue(120);
  EXPECT_TRUE(model.refusal().isEmpty());
  EXPECT_EQ(model.code(), "#00ff00");
  EXPECT_TRUE(model.settle());
}

}  // namespace color_dialog_test
}  // namespace quellar::tests

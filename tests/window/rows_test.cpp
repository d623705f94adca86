// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QGuiApplication>
#include <QTest>
#include <QWheelEvent>
#include <cmath>

#include "own_page.h"
#include "window_fixture.h"

namespace quellar::tests {
namespace rows_test {

using platform::Dictionary;
using platform::PSCellType;
using platform::Specifiers;
using platform::Value;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kSettings = "com.vantorick.quellar2.settings";
constexpr const char* kIconLayout = "com.vantorick.quellar2.iconlayout";
constexpr const char* kBadgeUpdate = "com.vantorick.quellar2.badgeupdate";
constexpr const char* kDockUpdate = "com.vantorick.quellar2.dockupdate";

constexpr double kKnob = 26;

// Rows with controls of their own, driven as a user does.
class ControlTest : public WindowTest {
 protected:
  QQuickItem* track(QQuickItem* row) {
    return findItem([](QQuickItem& item) { return item.property("draggedTo").isValid(); }, row);
  }
  // Where a slider's knob is for a share of its range, in the window.
  QPoint placeAt(QQuickItem* row, double share) {
    const QQuickItem* const item = track(row);
    const double x = kKnob / 2 + share * (item->width() - kKnob);
    return item->mapToScene(QPointF(x, item->height() / 2)).toPoint();
  }
  QPoint knob(QQuickItem* row) { return placeAt(row, track(row)->property("share").toDouble()); }
  void press(const QPoint& at) { QTest::mousePress(&view(), Qt::LeftButton, {}, at); }
  void release(const QPoint& at) { QTest::mouseRelease(&view(), Qt::LeftButton, {}, at); }
  void moveTo(const QPoint& from, const QPoint& to) {
    for (int step = 1; step <= 12; ++step) QTest::mouseMove(&view(), from + (to - from) * step / 12);
  }
  using WindowTest::press;

  QQuickItem* text(QQuickItem* row, const std::string& shown) {
    return findItem(
        [&](QQuickItem& item) {
          return item.inherits("QQuickText") && item.property("text").toString().toStdString() == shown;
        },
        row);
  }
  // A row takes the focus where its label is tapped, beside its control.
  void clickLabel(const std::string& label) { click(text(row(label), label)); }
  QQuickItem* stepperButton(QQuickItem* row, bool plus) {
    return findItem([&](QQuickItem& item) { return item.property("plus") == QVariant(plus); }, row);
  }
  QQuickItem* choice(QQuickItem* row, const std::string& title) {
    return findItem([&](QQuickItem& item) { return item.property("modelData").toString().toStdString() == title; },
                    row);
  }
  std::vector<std::string> marked() {
    std::vector<std::string> labels;
    for (const auto& each : rows().rows()) {
      if (each.checked) labels.push_back(each.label.toStdString());
    }
    return labels;
  }
  double position() { return list()->property("contentY").toDouble(); }
};

class SliderRowTest : public ControlTest {
 protected:
  void openIcons(const Setup& setup = {}) {
    store("Icon_Defaults", {{"usesCustomIconSize", true}});
    open("Icons", setup);
  }
  Dictionary icons(double scale) { return {{"usesCustomIconSize", true}, {"customIconScaleSize", scale}}; }
  Dictionary untouched() { return {{"usesCustomIconSize", true}}; }
};

TEST_F(SliderRowTest, ShowsTitleAndValueBesideEachOtherOverTheSlider) {
  openIcons();
  QQuickItem* const slider = row("Icon Scale");
  const QQuickItem* const title = text(slider, "Icon Scale");
  const QQuickItem* const value = text(slider, "1.00");
  ASSERT_TRUE(title && value);
  const auto right = title->mapToScene(QPointF(title->width(), 0)).x();
  EXPECT_LE(right, value->mapToScene(QPointF(0, 0)).x());
  EXPECT_GE(track(slider)->mapToScene(QPointF(0, 0)).y(), title->mapToScene(QPointF(0, title->height())).y());
  EXPECT_LE(placeAt(slider, 0).y(), slider->mapToScene(QPointF(0, slider->height())).y() - kKnob / 2);
}

TEST_F(SliderRowTest, WritesOnceWhenTheKnobIsLetGo) {
  openIcons();
  QQuickItem* const slider = row("Icon Scale");
  const QPoint start = knob(slider);
  press(start);
  moveTo(start, start + QPoint(80, 0));
  const double span = track(slider)->width() - kKnob;
  const double expected = std::round((1.0 + 80 / span * 1.9) * 100) / 100;
  EXPECT_NEAR(slider->property("value").toDouble(), expected, 0.011);
  EXPECT_EQ(text(slider, "1.00"), nullptr);
  EXPECT_EQ(stored("Icon_Defaults"), untouched());
  EXPECT_THAT(takePosts(), IsEmpty());
  const double shown = slider->property("value").toDouble();
  release(start + QPoint(80, 0));
  EXPECT_EQ(stored("Icon_Defaults"), icons(shown));
  EXPECT_TRUE(stored("Icon_Defaults").at("customIconScaleSize").is<double>());
  EXPECT_THAT(takePosts(), ElementsAre(kSettings, kIconLayout));
  EXPECT_EQ(slider->property("value").toDouble(), shown);
}

TEST_F(SliderRowTest, StoresAWholeNumberAsAReal) {
  openIcons();
  QQuickItem* const slider = row("Icon Scale");
  const QPoint start = knob(slider);
  press(start);
  moveTo(start, QPoint(388, start.y()));
  release(QPoint(388, start.y()));
  EXPECT_EQ(stored("Icon_Defaults"), icons(2.0));
  EXPECT_TRUE(stored("Icon_Defaults").at("customIconScaleSize").is<double>());
}

TEST_F(SliderRowTest, GoesToAPlaceOfTheTrackThatIsTappedAndStaysUnderAFingerOnTheKnob) {
  openIcons();
  QQuickItem* const slider = row("Icon Scale");
  QTest::mouseClick(&view(), Qt::LeftButton, {}, knob(slider) + QPoint(9, 0));
  EXPECT_EQ(stored("Icon_Defaults"), untouched());
  QTest::mouseClick(&view(), Qt::LeftButton, {}, placeAt(slider, 0));
  EXPECT_EQ(stored("Icon_Defaults"), icons(0.1));
  EXPECT_THAT(takePosts(), ElementsAre(kSettings, kIconLayout));
}

TEST_F(SliderRowTest, ChangesNothingByTheWheelWhichScrolls) {
  openIcons();
  QQuickItem* const slider = row("Icon Scale");
  const QPointF at = knob(slider);
  QWheelEvent wheel(at, view().mapToGlobal(at), {}, {0, -120}, Qt::NoButton, {}, Qt::NoScrollPhase, false);
  QGuiApplication::sendEvent(&view(), &wheel);
  EXPECT_TRUE(eventually([this] { return position() > 0; }));
  EXPECT_EQ(stored("Icon_Defaults"), untouched());
  EXPECT_EQ(slider->property("value").toDouble(), 1);
}

TEST_F(SliderRowTest, ChangesNothingByADragThatScrolls) {
  openIcons();
  QQuickItem* const slider = row("Icon Scale");
  const QPoint start = placeAt(slider, 0.2);
  press(start);
  moveTo(start, start + QPoint(25, -120));
  release(start + QPoint(25, -120));
  EXPECT_GT(position(), 0);
  EXPECT_EQ(stored("Icon_Defaults"), untouched());
  EXPECT_EQ(slider->property("value").toDouble(), 1);
  EXPECT_THAT(takePosts(), IsEmpty());
}

TEST_F(SliderRowTest, KeepsTheKnobThatIsDraggedAlongWhenTheFingerLeavesTheRow) {
  openIcons();
  QQuickItem* const slider = row("Icon Scale");
  const QPoint start = knob(slider);
  const double before = position();
  press(start);
  moveTo(start, start + QPoint(-60, 0));
  moveTo(start + QPoint(-60, 0), start + QPoint(-60, 200));
  EXPECT_EQ(position(), before);
  release(start + QPoint(-60, 200));
  EXPECT_EQ(stored("Icon_Defaults").count("customIconScaleSize"), 1U);
}

TEST_F(SliderRowTest, GoesOnDraggingWhenThePageBuildsItsRowsAnew) {
  openIcons();
  QQuickItem* const slider = row("Icon Scale");
  const QPoint start = knob(slider);
  press(start);
  moveTo(start, start + QPoint(40, 0));
  page().reloadSpecifiers();
  settle();
  EXPECT_EQ(row("Icon Scale"), slider);
  moveTo(start + QPoint(40, 0), start + QPoint(90, 0));
  EXPECT_EQ(stored("Icon_Defaults"), untouched());
  const double shown = slider->property("value").toDouble();
  EXPECT_GT(shown, 1.3);
  release(start + QPoint(90, 0));
  EXPECT_EQ(stored("Icon_Defaults"), icons(shown));
}

TEST_F(SliderRowTest, MovesByFineStepsWithTheArrowKeys) {
  openIcons();
  clickLabel("Icon Scale");
  press(Qt::Key_Right);
  EXPECT_EQ(stored("Icon_Defaults"), icons(1.01));
  press(Qt::Key_Left);
  press(Qt::Key_Left);
  EXPECT_EQ(stored("Icon_Defaults"), icons(0.99));
  press(Qt::Key_Right, Qt::ShiftModifier);
  EXPECT_EQ(stored("Icon_Defaults"), icons(1.09));
  EXPECT_NE(text(row("Icon Scale"), "1.09"), nullptr);
}

TEST_F(SliderRowTest, WritesNothingForAKeyAtTheEndOfTheRange) {
  store("Icon_Defaults", icons(2.0));
  open("Icons");
  clickLabel("Icon Scale");
  press(Qt::Key_Right);
  EXPECT_THAT(takePosts(), IsEmpty());
  press(Qt::Key_Left);
  EXPECT_EQ(stored("Icon_Defaults"), icons(1.99));
}

TEST_F(SliderRowTest, LeavesTheKeysAloneWhileItIsDragged) {
  openIcons();
  const QPoint start = knob(row("Icon Scale"));
  press(start);
  moveTo(start, start + QPoint(40, 0));
  press(Qt::Key_Right);
  press(Qt::Key_Return);
  press(Qt::Key_5);
  EXPECT_EQ(stored("Icon_Defaults"), untouched());
  EXPECT_FALSE(panel().navigation().dialog());
  release(start + QPoint(40, 0));
  EXPECT_THAT(takePosts(), ElementsAre(kSettings, kIconLayout));
}

TEST_F(SliderRowTest, RunsFromRightToLeftWhereTheTextDoes) {
  openIcons({.rightToLeft = true});
  QQuickItem* const slider = row("Icon Scale");
  QTest::mouseClick(&view(), Qt::LeftButton, {}, placeAt(slider, 0));
  EXPECT_EQ(stored("Icon_Defaults"), icons(2.0));
  press(Qt::Key_Right);
  EXPECT_EQ(stored("Icon_Defaults"), icons(1.99));
  // The value stands at the other side.
  EXPECT_LT(text(slider, "1.99")->mapToScene(QPointF(0, 0)).x(),
            text(slider, "Icon Scale")->mapToScene(QPointF(0, 0)).x());
}

TEST_F(SliderRowTest, IsSetByAssistiveTechnology) {
  openIcons();
  QQuickItem* const slider = row("Icon Scale");
  EXPECT_EQ(slider->property("minimumValue").toDouble(), 0.1);
  EXPECT_EQ(slider->property("maximumValue").toDouble(), 2.0);
  slider->setProperty("value", 1.5);
  EXPECT_EQ(stored("Icon_Defaults"), icons(1.5));
  slider->setProperty("value", 7);
  EXPECT_EQ(stored("Icon_Defaults"), icons(2.0));
  EXPECT_EQ(slider->property("value").toDouble(), 2.0);
  // It goes on following the row.
  clickLabel("Icon Scale");
  press(Qt::Key_Left);
  EXPECT_EQ(slider->property("value").toDouble(), 1.99);
}

class PlainSliderTest : public ControlTest {
 protected:
  std::shared_ptr<OwnPage> openSlider(double least, double most, bool enabled = true) {
    auto own = std::make_shared<OwnPage>(panel().platform(), [=](OwnPage& page, Specifiers& list) {
      list.push_back(page.make("Amount", PSCellType::PSSliderCell, "amount"));
      list.back()->setProperty("min", Value(least));
      list.back()->setProperty("max", Value(most));
      list.back()->setProperty("default", Value(least));
      list.back()->setProperty("showValue", Value(true));
      list.back()->setProperty("enabled", Value(enabled));
    });
    open(own);
    return own;
  }
};

TEST_F(PlainSliderTest, ShowsAsManyDecimalsAsTheRangeNeedsAndStepsByThem) {
  struct Case {
    double least;
    double most;
    const char* start;
    double next;
  };
  for (const Case& each : {Case{0, 2, "0.00", 0.01}, Case{-1, 49, "-1.0", -0.9}, Case{1, 350, "1", 2}}) {
    const auto own = openSlider(each.least, each.most);
    EXPECT_NE(text(row("Amount"), each.start), nullptr) << each.start;
    clickLabel("Amount");
    press(Qt::Key_Right);
    EXPECT_EQ(own->written, (Dictionary{{"amount", each.next}}));
    closeWindow();
    (void)panel().navigation().popViewController(false);
  }
}

TEST_F(SliderRowTest, IsDraggedByTouchTwiceInARow) {
  openIcons();
  QQuickItem* const slider = row("Icon Scale");
  QPointingDevice* const screen = QTest::createTouchDevice();
  for (const int distance : {30, 40}) {
    const QPoint start = knob(slider);
    QTest::touchEvent(&view(), screen).press(0, start, &view());
    for (int x = 4; x <= distance; x += 2) QTest::touchEvent(&view(), screen).move(0, start + QPoint(x, 0), &view());
    // Moves arrive with the next picture.
    (void)view().grabWindow();
    QTest::qWait(50);
    const double shown = slider->property("value").toDouble();
    QTest::touchEvent(&view(), screen).release(0, start + QPoint(distance, 0), &view());
    EXPECT_EQ(stored("Icon_Defaults"), icons(shown));
    EXPECT_GT(shown, 1.1);
  }
  EXPECT_THAT(takePosts(), ElementsAre(kSettings, kIconLayout, kSettings, kIconLayout));
}

TEST_F(PlainSliderTest, HasNoEntryForItsValue) {
  openSlider(0, 1);
  click(text(row("Amount"), "0.00"));
  press(Qt::Key_Return);
  press(Qt::Key_5);
  type("5");
  EXPECT_FALSE(panel().navigation().dialog());
}

TEST_F(PlainSliderTest, LeavesADisabledOneAlone) {
  const auto own = openSlider(0, 1, false);
  QQuickItem* const slider = row("Amount");
  press(placeAt(slider, 0));
  moveTo(placeAt(slider, 0), placeAt(slider, 0.7));
  release(placeAt(slider, 0.7));
  QTest::mouseClick(&view(), Qt::LeftButton, {}, placeAt(slider, 0.9));
  slider->setProperty("value", 0.5);
  EXPECT_EQ(own->writes, 0);
  EXPECT_EQ(slider->property("value").toDouble(), 0);
}

TEST_F(PlainSliderTest, StandsStillWhereItsBoundsAreTheSame) {
  openSlider(1, 1);
  QTest::mouseClick(&view(), Qt::LeftButton, {}, placeAt(row("Amount"), 0.8));
  EXPECT_EQ(row("Amount")->property("value").toDouble(), 1);
}

class StepperRowTest : public ControlTest {
 protected:
  Dictionary dock(const Value& icons) { return {{"customMaxDockIcons", true}, {"dockMaxIcons", icons}}; }
  void openDock(const Value& icons) {
    store("Dock_Defaults", dock(icons));
    open("Dock");
  }
};

TEST_F(StepperRowTest, StepsByAPressOfEitherButton) {
  openDock(4);
  QQuickItem* const stepper = row("Max Icons");
  EXPECT_NE(text(stepper, "4"), nullptr);
  click(stepperButton(stepper, true));
  EXPECT_EQ(stored("Dock_Defaults"), dock(5.0));
  EXPECT_NE(text(stepper, "5"), nullptr);
  tap(stepperButton(stepper, false));
  tap(stepperButton(stepper, false));
  EXPECT_EQ(stored("Dock_Defaults"), dock(3.0));
  EXPECT_NE(text(stepper, "3"), nullptr);
  EXPECT_THAT(takePosts(), ElementsAre(kSettings, kSettings, kSettings));
}

TEST_F(StepperRowTest, StepsByTheKeys) {
  openDock(4);
  clickLabel("Max Icons");
  press(Qt::Key_Right);
  type("+");
  EXPECT_EQ(stored("Dock_Defaults"), dock(6.0));
  press(Qt::Key_Left);
  type("--");
  EXPECT_EQ(stored("Dock_Defaults"), dock(3.0));
  press(Qt::Key_Space);
  EXPECT_EQ(stored("Dock_Defaults"), dock(3.0));
}

TEST_F(StepperRowTest, StopsAtItsBounds) {
  openDock(9);
  QQuickItem* const stepper = row("Max Icons");
  click(stepperButton(stepper, true));
  click(stepperButton(stepper, true));
  press(Qt::Key_Right);
  EXPECT_EQ(stored("Dock_Defaults"), dock(10.0));
  EXPECT_THAT(takePosts(), ElementsAre(kSettings));
  EXPECT_FALSE(stepperButton(stepper, true)->property("usable").toBool());
  EXPECT_TRUE(stepperButton(stepper, false)->property("usable").toBool());
}

TEST_F(StepperRowTest, GoesOnSteppingWhileItIsHeldAndStopsWhenItIsLetGo) {
  openDock(1);
  const QPoint at = stepperButton(row("Max Icons"), true)->mapToScene(QPointF(20, 16)).toPoint();
  press(at);
  EXPECT_EQ(stored("Dock_Defaults"), dock(1));
  EXPECT_TRUE(eventually([this] { return text(row("Max Icons"), "4") != nullptr; }));
  const Dictionary last = stored("Dock_Defaults");
  release(at);
  QTest::qWait(300);
  EXPECT_EQ(stored("Dock_Defaults"), last);
}

TEST_F(StepperRowTest, GoesOnSteppingThoughThePageBuildsItsRowsAnewAtEachStep) {
  store("HomeScreen_Defaults", {{"userRequestsCustomIconLayout", true}, {"userIconCountRowsPortrait", 2}});
  open("Home Screen");
  QQuickItem* const stepper = row("2 Rows");
  const auto before = page().specifierForID("userIconCountRowsPortrait");
  const QPoint at = stepperButton(stepper, true)->mapToScene(QPointF(20, 16)).toPoint();
  press(at);
  EXPECT_TRUE(
      eventually([this] { return stored("HomeScreen_Defaults").at("userIconCountRowsPortrait").doubleValue() >= 6; }));
  release(at);
  EXPECT_NE(page().specifierForID("userIconCountRowsPortrait"), before);
  const double count = stored("HomeScreen_Defaults").at("userIconCountRowsPortrait").doubleValue();
  settle();
  EXPECT_EQ(stepper->property("label").toString(), QString::number(count) + " Rows");
}

TEST_F(StepperRowTest, ChangesNothingByADragThatScrollsOrAPressThatIsLedAway) {
  store("HomeScreen_Defaults", {{"userRequestsCustomIconLayout", true}});
  open("Home Screen");
  const auto before = stored("HomeScreen_Defaults");
  const QPoint at = stepperButton(row("0 Rows"), true)->mapToScene(QPointF(20, 16)).toPoint();
  press(at);
  moveTo(at, at - QPoint(0, 120));
  release(at - QPoint(0, 120));
  EXPECT_GT(position(), 0);
  const QPoint now = stepperButton(row("0 Rows"), true)->mapToScene(QPointF(20, 16)).toPoint();
  press(now);
  moveTo(now, now - QPoint(150, 0));
  release(now - QPoint(150, 0));
  EXPECT_EQ(stored("HomeScreen_Defaults"), before);
}

TEST_F(StepperRowTest, IsSetByAssistiveTechnologyInOneWrite) {
  openDock(4);
  QQuickItem* const stepper = row("Max Icons");
  stepper->setProperty("value", 7);
  EXPECT_EQ(stored("Dock_Defaults"), dock(7.0));
  EXPECT_EQ(stepper->property("value").toDouble(), 7);
  EXPECT_THAT(takePosts(), ElementsAre(kSettings));
  for (const double value : {4.9e-324, 6.5, 7.0000000001}) {
    stepper->setProperty("value", value);
    EXPECT_EQ(stepper->property("value").toDouble(), 7) << "only steps lead to a value";
  }
  EXPECT_EQ(stored("Dock_Defaults"), dock(7.0));
  EXPECT_THAT(takePosts(), IsEmpty());
}

TEST_F(StepperRowTest, PutsPlusAtTheLeftWhereTheTextRunsThatWay) {
  store("Dock_Defaults", dock(4));
  open("Dock", {.rightToLeft = true});
  QQuickItem* const stepper = row("Max Icons");
  EXPECT_LT(stepperButton(stepper, true)->mapToScene(QPointF(0, 0)).x(),
            stepperButton(stepper, false)->mapToScene(QPointF(0, 0)).x());
  click(stepperButton(stepper, true));
  press(Qt::Key_Left);
  EXPECT_EQ(stored("Dock_Defaults"), dock(6.0));
}

class SegmentRowTest : public ControlTest {
 protected:
  void openBadges(const Setup& setup = {}) {
    store("Icon_Defaults", {{"userRequestsColoredBadges", true}});
    open("Icons", setup);
  }
  Dictionary badges(int style) {
    return {{"userRequestsColoredBadges", true}, {"userStyleForIconBadgeColoring", style}};
  }
};

TEST_F(SegmentRowTest, StoresTheChoiceThatIsTappedOnce) {
  openBadges();
  QQuickItem* const segment = row("Color Badges via");
  EXPECT_EQ(segment->property("chosen").toInt(), 1);
  click(choice(segment, "Dominant App Color"));
  EXPECT_EQ(stored("Icon_Defaults"), (Dictionary{{"userRequestsColoredBadges", true}}));
  click(choice(segment, "Custom Color"));
  EXPECT_EQ(stored("Icon_Defaults"), badges(1));
  tap(choice(segment, "Custom Color"));
  EXPECT_EQ(segment->property("chosen").toInt(), 0);
  EXPECT_THAT(takePosts(), ElementsAre(kSettings, kIconLayout, kBadgeUpdate));
}

TEST_F(SegmentRowTest, ChoosesByTheArrowKeysAndStopsAtTheEnds) {
  openBadges();
  clickLabel("Color Badges via");
  press(Qt::Key_Right);
  EXPECT_THAT(takePosts(), IsEmpty());
  press(Qt::Key_Left);
  EXPECT_EQ(stored("Icon_Defaults"), badges(1));
  press(Qt::Key_Left);
  EXPECT_THAT(takePosts(), ElementsAre(kSettings, kIconLayout, kBadgeUpdate));
}

TEST_F(SegmentRowTest, RunsFromRightToLeftWhereTheTextDoes) {
  openBadges({.rightToLeft = true});
  QQuickItem* const segment = row("Color Badges via");
  EXPECT_GT(choice(segment, "Custom Color")->mapToScene(QPointF(0, 0)).x(),
            choice(segment, "Dominant App Color")->mapToScene(QPointF(0, 0)).x());
  clickLabel("Color Badges via");
  press(Qt::Key_Right);
  EXPECT_EQ(stored("Icon_Defaults"), badges(1));
}

TEST_F(SegmentRowTest, ChoosesNothingForAValueThatIsNoneOfItsOwn) {
  store("Icon_Defaults", badges(9));
  open("Icons");
  EXPECT_EQ(row("Color Badges via")->property("chosen").toInt(), -1);
  EXPECT_EQ(stored("Icon_Defaults"), badges(9));
  click(choice(row("Color Badges via"), "Dominant App Color"));
  EXPECT_EQ(stored("Icon_Defaults"), badges(2));
}

TEST_F(SegmentRowTest, StandsTitlesUnderEachOtherThatDoNotFitBesideEachOther) {
  auto own = std::make_shared<OwnPage>(panel().platform(), [](OwnPage& page, Specifiers& list) {
    list.push_back(page.make("Size", PSCellType::PSSegmentCell, "size"));
    list.back()->setValues({1, 2, 3}, {"A title that is long", "Another one of that kind", "The last of the titles"},
                           {});
  });
  open(own);
  QQuickItem* const segment = row("Size");
  const QQuickItem* const last = choice(segment, "The last of the titles");
  const QQuickItem* const first = choice(segment, "A title that is long");
  EXPECT_GE(last->mapToScene(QPointF(0, 0)).y(), first->mapToScene(QPointF(0, 2 * first->height())).y());
  EXPECT_LT(last->mapToScene(QPointF(0, last->height())).y(), segment->mapToScene(QPointF(0, segment->height())).y());
  click(choice(segment, "Another one of that kind"));
  EXPECT_EQ(own->written, (Dictionary{{"size", 2}}));
}

TEST_F(SegmentRowTest, LeavesADisabledOneAlone) {
  auto own = std::make_shared<OwnPage>(panel().platform(), [](OwnPage& page, Specifiers& list) {
    list.push_back(page.make("Size", PSCellType::PSSegmentCell, "size"));
    list.back()->setValues({1, 2}, {"Small", "Large"}, {});
    list.back()->setProperty("enabled", Value(false));
  });
  open(own);
  click(choice(row("Size"), "Large"));
  EXPECT_EQ(own->writes, 0);
}

class PickerRowTest : public ControlTest {
 protected:
  Dictionary dock(int style) { return {{"usesCustomDockBlur", true}, {"dockBackgroundStyle", style}}; }
  void openDock(int style) {
    store("Dock_Defaults", dock(style));
    open("Dock");
  }
  void openList() {
    click(row("Blur style"));
    settle();
    ASSERT_EQ(page().title(), "Blur style");
  }
};

TEST_F(PickerRowTest, ShowsTheChoiceAndOpensTheListOfThem) {
  openDock(5);
  EXPECT_NE(text(row("Blur style"), "Saturated Blur"), nullptr);
  openList();
  EXPECT_EQ(rows().count(), 13);
  EXPECT_THAT(marked(), ElementsAre("Saturated Blur"));
  click(row("Normal"));
  EXPECT_THAT(marked(), ElementsAre("Normal"));
  EXPECT_EQ(stored("Dock_Defaults"), dock(12));
  EXPECT_THAT(takePosts(), ElementsAre(kSettings, kDockUpdate));
  EXPECT_EQ(page().title(), "Blur style");
  press(Qt::Key_Escape);
  settle();
  EXPECT_NE(text(row("Blur style"), "Normal"), nullptr);
  EXPECT_EQ(focusedRow(), "Blur style");
}

TEST_F(PickerRowTest, MarksTheFirstOfTwoChoicesWithAValueAndTheTappedOneWhileItIsOpen) {
  openDock(16);
  EXPECT_NE(text(row("Blur style"), "Less White Blur"), nullptr);
  openList();
  EXPECT_THAT(marked(), ElementsAre("Less White Blur"));
  click(row("More Transparent White (No Blur)"));
  EXPECT_THAT(marked(), ElementsAre("More Transparent White (No Blur)"));
  EXPECT_EQ(stored("Dock_Defaults"), dock(16));
  click(barButton("Dock"));
  settle();
  EXPECT_NE(text(row("Blur style"), "Less White Blur"), nullptr);
  openList();
  EXPECT_THAT(marked(), ElementsAre("Less White Blur"));
}

TEST_F(PickerRowTest, ShowsNothingForAValueThatIsNoChoiceAndKeepsIt) {
  openDock(99);
  EXPECT_EQ(row("Blur style")->property("text").toString(), "");
  openList();
  EXPECT_THAT(marked(), IsEmpty());
  press(Qt::Key_Escape);
  settle();
  EXPECT_EQ(stored("Dock_Defaults"), dock(99));
  EXPECT_THAT(takePosts(), IsEmpty());
}

TEST_F(PickerRowTest, PicksByTheKeys) {
  openDock(9);
  click(row("Use Custom Blur"));
  click(row("Use Custom Blur"));
  press(Qt::Key_Down);
  EXPECT_EQ(focusedRow(), "Blur style");
  press(Qt::Key_Return);
  settle();
  EXPECT_EQ(focusedRow(), "Transparent");
  press(Qt::Key_Down);
  press(Qt::Key_Down);
  press(Qt::Key_Space);
  EXPECT_EQ(stored("Dock_Defaults"), dock(16));
}

TEST_F(ControlTest, TakesQuickTapsForTapsOfTheirOwn) {
  store("Dock_Defaults", {{"userDisablesBackgroundBlur", false}});
  open("Dock");
  for (const bool on : {true, false, true, false}) {
    tap(row("Disable Blur"));
    EXPECT_EQ(stored("Dock_Defaults").at("userDisablesBackgroundBlur"), Value(on));
  }
}

TEST_F(ControlTest, MarksTheAccountThatIsChosen) {
  root_.write("private/var/mobile/Library/Accounts/twitter.plist",
              "<?xml version=\"1.0\"?><plist version=\"1.0\"><array><string>ada</string><string>grace</string>"
              "</array></plist>");
  store("Music_Defaults", {{"userRequestsTweetForMusicChange", true}});
  open("Music Changes");
  EXPECT_THAT(marked(), testing::Not(testing::Contains("grace")));
  click(row("grace"));
  settle();
  EXPECT_THAT(marked(), testing::Contains("grace"));
  EXPECT_TRUE(row("grace")->property("checked").toBool());
  EXPECT_FALSE(row("ada")->property("checked").toBool());
}

// What a screen reader finds of a row.
class AccessibleRowTest : public ControlTest {
 protected:
  static QAccessibleInterface& seen(QQuickItem* item) {
    QAccessibleInterface* const found = item ? QAccessible::queryAccessibleInterface(item) : nullptr;
    if (!found) throw std::runtime_error("a screen reader does not find the item");
    return *found;
  }
  static std::string name(QAccessibleInterface& seen) { return seen.text(QAccessible::Name).toStdString(); }
  static void act(QAccessibleInterface& seen, const QString& action) {
    ASSERT_TRUE(seen.actionInterface() && seen.actionInterface()->actionNames().contains(action));
    seen.actionInterface()->doAction(action);
  }
  // The items below one that a screen reader finds with a role: their names.
  static void collect(QAccessibleInterface& among, QAccessible::Role role, std::vector<QAccessibleInterface*>& found) {
    for (int place = 0; place < among.childCount(); ++place) {
      QAccessibleInterface* const child = among.child(place);
      if (!child) continue;
      if (child->role() == role) found.push_back(child);
      collect(*child, role, found);
    }
  }
  static std::vector<QAccessibleInterface*> below(QAccessibleInterface& among, QAccessible::Role role) {
    std::vector<QAccessibleInterface*> found;
    collect(among, role, found);
    return found;
  }
};

TEST_F(AccessibleRowTest, SliderHasValueBoundsStepsAndAButtonForItsEntry) {
  store("Icon_Defaults", {{"usesCustomIconSize", true}});
  open("Icons");
  QAccessibleInterface& slider = seen(row("Icon Scale"));
  EXPECT_EQ(slider.role(), QAccessible::Slider);
  EXPECT_EQ(name(slider), "Icon Scale");
  QAccessibleValueInterface* const value = slider.valueInterface();
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(value->currentValue().toDouble(), 1.0);
  EXPECT_EQ(value->minimumValue().toDouble(), 0.1);
  EXPECT_EQ(value->maximumValue().toDouble(), 2.0);
  EXPECT_EQ(value->minimumStepSize().toDouble(), 0.01);
  act(slider, QAccessibleActionInterface::increaseAction());
  EXPECT_EQ(value->currentValue().toDouble(), 1.01);
  act(slider, QAccessibleActionInterface::decreaseAction());
  act(slider, QAccessibleActionInterface::decreaseAction());
  EXPECT_EQ(stored("Icon_Defaults").at("customIconScaleSize"), Value(0.99));
  value->setCurrentValue(1.234);
  EXPECT_EQ(stored("Icon_Defaults").at("customIconScaleSize"), Value(1.234));
  const auto buttons = below(slider, QAccessible::Button);
  ASSERT_EQ(buttons.size(), 1U);
  EXPECT_EQ(name(*buttons[0]), "1.23");
  act(*buttons[0], QAccessibleActionInterface::pressAction());
  settle();
  QAccessibleInterface* const window = QAccessible::queryAccessibleInterface(&view());
  const auto dialogs = below(*window, QAccessible::Dialog);
  ASSERT_EQ(dialogs.size(), 1U);
  EXPECT_EQ(name(*dialogs[0]), "Icon Scale");
  const auto entries = below(*dialogs[0], QAccessible::EditableText);
  ASSERT_EQ(entries.size(), 1U);
  EXPECT_TRUE(entries[0]->state().focused);
}

TEST_F(AccessibleRowTest, StepperIsASpinButton) {
  store("Dock_Defaults", {{"customMaxDockIcons", true}, {"dockMaxIcons", 9}});
  open("Dock");
  QAccessibleInterface& stepper = seen(row("Max Icons"));
  EXPECT_EQ(stepper.role(), QAccessible::SpinBox);
  EXPECT_EQ(name(stepper), "Max Icons");
  ASSERT_NE(stepper.valueInterface(), nullptr);
  EXPECT_EQ(stepper.valueInterface()->minimumValue().toDouble(), 1);
  EXPECT_EQ(stepper.valueInterface()->maximumValue().toDouble(), 10);
  act(stepper, QAccessibleActionInterface::increaseAction());
  act(stepper, QAccessibleActionInterface::increaseAction());
  EXPECT_EQ(stepper.valueInterface()->currentValue().toDouble(), 10);
  EXPECT_EQ(stored("Dock_Defaults").at("dockMaxIcons"), Value(10.0));
  EXPECT_THAT(takePosts(), ElementsAre(kSettings));
}

TEST_F(AccessibleRowTest, SegmentIsAGroupOfRadioButtons) {
  store("Icon_Defaults", {{"userRequestsColoredBadges", true}});
  open("Icons");
  QAccessibleInterface& segment = seen(row("Color Badges via"));
  EXPECT_EQ(name(segment), "Color Badges via");
  const auto choices = below(segment, QAccessible::RadioButton);
  ASSERT_EQ(choices.size(), 2U);
  EXPECT_EQ(name(*choices[0]), "Custom Color");
  EXPECT_EQ(name(*choices[1]), "Dominant App Color");
  EXPECT_TRUE(choices[1]->state().checked);
  act(*choices[0], QAccessibleActionInterface::pressAction());
  EXPECT_TRUE(choices[0]->state().checked);
  EXPECT_FALSE(choices[1]->state().checked);
  EXPECT_EQ(stored("Icon_Defaults").at("userStyleForIconBadgeColoring"), Value(1));
}

TEST_F(AccessibleRowTest, PickerIsAButtonAndItsChoicesAreRadioButtons) {
  store("Dock_Defaults", {{"usesCustomDockBlur", true}, {"dockBackgroundStyle", 9}});
  open("Dock");
  QAccessibleInterface& picker = seen(row("Blur style"));
  EXPECT_EQ(picker.role(), QAccessible::Button);
  EXPECT_EQ(picker.text(QAccessible::Description).toStdString(), "Very White Blur");
  act(picker, QAccessibleActionInterface::pressAction());
  settle();
  const QAccessibleInterface& white = seen(row("Very White Blur"));
  QAccessibleInterface& normal = seen(row("Normal"));
  EXPECT_EQ(white.role(), QAccessible::RadioButton);
  EXPECT_TRUE(white.state().checked);
  EXPECT_FALSE(normal.state().checked);
  act(normal, QAccessibleActionInterface::toggleAction());
  EXPECT_TRUE(normal.state().checked);
  EXPECT_EQ(stored("Dock_Defaults").at("dockBackgroundStyle"), Value(12));
}

}  // namespace rows_test
}  // namespace quellar::tests

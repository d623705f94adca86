// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTest>

#include "own_page.h"
#include "window_fixture.h"

namespace quellar::tests {
namespace entry_test {

using platform::Dictionary;
using platform::PSCellType;
using platform::Specifiers;
using platform::Value;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kSettings = "com.vantorick.quellar2.settings";
constexpr const char* kIconLayout = "com.vantorick.quellar2.iconlayout";

// The dialog in which the exact value of a slider is typed.
class EntryTest : public WindowTest {
 protected:
  EntryTest() { store("Icon_Defaults", {{"usesCustomIconSize", true}}); }

  Dictionary icons(double scale) { return {{"usesCustomIconSize", true}, {"customIconScaleSize", scale}}; }
  Dictionary untouched() { return {{"usesCustomIconSize", true}}; }
  void openEntry() {
    open("Icons");
    click(valueOf(row("Icon Scale"), "1.00"));
    settle();
    ASSERT_EQ(title(), "Icon Scale");
  }
  QQuickItem* valueOf(QQuickItem* row, const std::string& shown) {
    return findItem(
        [&](QQuickItem& item) {
          return item.inherits("QQuickText") && item.property("text").toString().toStdString() == shown;
        },
        row);
  }
  // The title of the dialog that is shown, "" where none is.
  std::string title() {
    const auto& dialog = panel().navigation().dialog();
    return dialog ? dialog->title : "";
  }
  QQuickItem* entry() {
    return findItem([](QQuickItem& item) {
      const QObject* const dialog = item.parentItem() ? item.parentItem()->parentItem() : nullptr;
      return item.inherits("QQuickTextInput") && dialog && dialog->property("dialog").isValid();
    });
  }
  QQuickItem* helper(const std::string& name) {
    return findItem([&](QQuickItem& item) {
      return item.property("modelData").toString().toStdString() == name && item.property("compact").isValid();
    });
  }
  std::string typed() { return entry()->property("text").toString().toStdString(); }
  std::optional<std::string> asked() { return panel().navigation().dialog()->text; }
};

TEST_F(EntryTest, StoresTheTypedNumberOnEnterAndShowsItSoonAfter) {
  openEntry();
  ASSERT_NE(entry(), nullptr);
  EXPECT_TRUE(entry()->hasActiveFocus());
  type("1.7");
  EXPECT_EQ(asked(), "1.7");
  EXPECT_EQ(stored("Icon_Defaults"), untouched());
  press(Qt::Key_Return);
  EXPECT_EQ(title(), "");
  EXPECT_EQ(stored("Icon_Defaults"), icons(static_cast<double>(1.7F)));
  EXPECT_THAT(takePosts(), ElementsAre(kSettings, kIconLayout));
  EXPECT_TRUE(eventually([this] { return valueOf(row("Icon Scale"), "1.70") != nullptr; }));
  EXPECT_EQ(focusedRow(), "Icon Scale");
}

TEST_F(EntryTest, StoresItOnThePressOfTheButton) {
  openEntry();
  type("0.1");
  click(dialogButton("Enter"));
  EXPECT_EQ(stored("Icon_Defaults"), icons(static_cast<double>(0.1F)));
}

TEST_F(EntryTest, StoresNothingThatIsGivenUp) {
  openEntry();
  type("1.7");
  press(Qt::Key_Escape);
  EXPECT_EQ(title(), "");
  click(valueOf(row("Icon Scale"), "1.00"));
  settle();
  EXPECT_EQ(typed(), "");
  type("1.7");
  click(dialogButton("Cancel"));
  settle();
  EXPECT_EQ(stored("Icon_Defaults"), untouched());
  EXPECT_THAT(takePosts(), IsEmpty());
}

TEST_F(EntryTest, TellsOfANumberOutOfRangeAndAsksAgain) {
  openEntry();
  type("12");
  press(Qt::Key_Return);
  settle();
  EXPECT_EQ(title(), "Error");
  EXPECT_EQ(entry(), nullptr);
  EXPECT_TRUE(dialogButton("OK")->hasActiveFocus());
  press(Qt::Key_Return);
  settle();
  EXPECT_EQ(title(), "Icon Scale");
  EXPECT_EQ(typed(), "");
  EXPECT_TRUE(entry()->hasActiveFocus());
  type("abc");
  press(Qt::Key_Return);
  settle();
  EXPECT_EQ(title(), "Error");
  click(dialogButton("OK"));
  settle();
  type("1,9");
  press(Qt::Key_Return);
  EXPECT_EQ(title(), "");
  EXPECT_EQ(stored("Icon_Defaults"), icons(1));
}

TEST_F(EntryTest, HelpsToTypeAPoint) {
  openEntry();
  EXPECT_EQ(helper("Negate"), nullptr);
  type("1");
  click(helper("Point"));
  EXPECT_EQ(typed(), "1.");
  type("5");
  EXPECT_EQ(typed(), "1.5");
  EXPECT_EQ(asked(), "1.5");
  press(Qt::Key_Return);
  EXPECT_EQ(stored("Icon_Defaults"), icons(1.5));
}

TEST_F(EntryTest, HelpsToTypeAMinusAndTakesItBack) {
  auto own = std::make_shared<OwnPage>(panel().platform(), [](OwnPage& page, Specifiers& list) {
    list.push_back(page.make("Shift", PSCellType::PSSliderCell, "shift"));
    list.back()->setProperty("cellClass", platform::Class{"KVQuellarSliderCell"});
    list.back()->setProperty("min", Value(-100));
    list.back()->setProperty("max", Value(100));
    list.back()->setProperty("default", Value(3));
    list.back()->setProperty("showValue", Value(true));
    list.back()->setProperty("subtitle", Value("Moves the picture"));
  });
  open(own);
  EXPECT_NE(valueOf(row("Shift"), "Moves the picture"), nullptr);
  tap(valueOf(row("Shift"), "3"));
  settle();
  EXPECT_EQ(helper("Point"), nullptr);
  type("7");
  click(helper("Negate"));
  EXPECT_EQ(typed(), "-7");
  click(helper("Negate"));
  EXPECT_EQ(typed(), "7");
  press(Qt::Key_Escape);
  EXPECT_EQ(own->writes, 0);
}

TEST_F(EntryTest, OpensByEnterAndByTheFirstDigit) {
  open("Icons");
  click(valueOf(row("Icon Scale"), "Icon Scale"));
  EXPECT_EQ(title(), "");
  press(Qt::Key_Return);
  settle();
  EXPECT_EQ(title(), "Icon Scale");
  press(Qt::Key_Escape);
  settle();
  EXPECT_EQ(focusedRow(), "Icon Scale");
  type("0");
  settle();
  EXPECT_EQ(typed(), "0");
  type(".5");
  press(Qt::Key_Enter);
  EXPECT_EQ(stored("Icon_Defaults"), icons(0.5));
}

TEST_F(EntryTest, GoesThroughFieldAndButtonsByTheKeys) {
  openEntry();
  const QQuickItem* const field = entry();
  press(Qt::Key_Tab);
  EXPECT_TRUE(helper("Point")->hasActiveFocus());
  press(Qt::Key_Tab);
  EXPECT_TRUE(dialogButton("Enter")->hasActiveFocus());
  press(Qt::Key_Tab);
  EXPECT_TRUE(dialogButton("Cancel")->hasActiveFocus());
  press(Qt::Key_Tab);
  EXPECT_TRUE(field->hasActiveFocus());
  press(Qt::Key_Backtab);
  EXPECT_TRUE(dialogButton("Cancel")->hasActiveFocus());
}

TEST_F(EntryTest, KeepsTheBackspaceForTheField) {
  openEntry();
  type("12");
  press(Qt::Key_Backspace);
  press(Qt::Key_Backspace);
  press(Qt::Key_Backspace);
  EXPECT_EQ(page().title(), "Icons");
  EXPECT_EQ(title(), "Icon Scale");
  EXPECT_EQ(asked(), "");
}

}  // namespace entry_test
}  // namespace quellar::tests

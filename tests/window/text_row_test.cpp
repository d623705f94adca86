// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>
#include <QPointingDevice>
#include <QStyleHints>
#include <QTest>
#include <string>
#include <vector>

#include "scene.h"
#include "window_fixture.h"

// What is typed into the text rows, and how it gets there.
namespace quellar::tests::text_row_test {
namespace {

using platform::Dictionary;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kLong = "EEEE, d. MMMM yyyy, HH:mm:ss zzzz and more than any phone has room for";

class TextRow : public WindowTest {
 protected:
  void openWith(const std::string& text, const Setup& setup = {}) {
    store("StatusBar_Defaults", {{"usesCustomTimeFormatter", true}, {"userCustomClockFormatter", text}});
    open("Status Bar", setup);
  }
  QQuickItem* input() { return field(row("Text:")); }
  std::string storedText() { return *stored().at("userCustomClockFormatter").as<std::string>(); }
  std::string typed() { return input()->property("text").toString().toStdString(); }
  bool isEdited() { return page().editedSpecifier() != nullptr; }
  // The text that is seen in place of the field's own.
  QQuickItem* shown(const std::string& text) {
    return findItem(
        [&](QQuickItem& item) {
          return item.property("elide").isValid() && item.property("text").toString().toStdString() == text;
        },
        input()->parentItem());
  }
  void put(const QString& text) { QGuiApplication::clipboard()->setText(text); }
  static QString kept() { return QGuiApplication::clipboard()->text(); }

  QPoint middle(QQuickItem* item) { return item->mapToScene(QPointF(item->width() / 2, item->height() / 2)).toPoint(); }
  void rightClick(QQuickItem* item) { QTest::mouseClick(&view(), Qt::RightButton, {}, middle(item)); }
  void press(QQuickItem* item) {
    static QPointingDevice* const screen = QTest::createTouchDevice();
    QTest::touchEvent(&view(), screen).press(0, middle(item), &view());
    ASSERT_TRUE(eventually([this] { return !entries().empty(); }));
    QTest::touchEvent(&view(), screen).release(0, middle(item), &view());
  }
  using WindowTest::press;
  // What the menu offers; nothing where none is shown.
  std::vector<std::string> entries() {
    std::vector<std::string> names;
    for (QQuickItem* item : accessibleItems(view().contentItem(), QAccessible::MenuItem)) {
      names.push_back(QAccessible::queryAccessibleInterface(item)->text(QAccessible::Name).toStdString());
    }
    return names;
  }
  QQuickItem* entry(const char* name) {
    const auto found = accessibleItems(view().contentItem(), QAccessible::MenuItem, name);
    if (found.size() != 1) throw std::runtime_error(std::string("no entry ") + name);
    // The entries take their places before the next picture is drawn.
    (void)view().grabWindow();
    return found.front();
  }
};

TEST_F(TextRow, ShowsTheBeginningOfALongTextOnceItIsCommitted) {
  openWith(kLong);
  ASSERT_NE(shown(kLong), nullptr);
  EXPECT_TRUE(shown(kLong)->property("truncated").toBool());
  click(input());
  EXPECT_EQ(shown(kLong), nullptr);
  press(Qt::Key_End);
  type("!");
  press(Qt::Key_Return);
  settle();
  EXPECT_EQ(storedText(), std::string(kLong) + "!");
  ASSERT_NE(shown(std::string(kLong) + "!"), nullptr);
  EXPECT_TRUE(shown(std::string(kLong) + "!")->property("truncated").toBool());
}

TEST_F(TextRow, KeepsTheFocusAfterReturnAndOpensAgainByIt) {
  openWith("HH:mm");
  click(input());
  press(Qt::Key_Return);
  settle();
  EXPECT_FALSE(isEdited());
  EXPECT_EQ(focusedRow(), "Text:");
  // Nothing is typed into a text that is not open.
  type("x");
  EXPECT_EQ(typed(), "HH:mm");
  EXPECT_EQ(storedText(), "HH:mm");
  press(Qt::Key_Return);
  EXPECT_TRUE(isEdited());
  press(Qt::Key_End);
  type("!");
  press(Qt::Key_Escape);
  settle();
  EXPECT_FALSE(isEdited());
  EXPECT_EQ(storedText(), "HH:mm!");
  EXPECT_EQ(focusedRow(), "Text:");
  press(Qt::Key_Space);
  EXPECT_TRUE(isEdited());
  press(Qt::Key_Return);
  press(Qt::Key_Down);
  settle();
  EXPECT_EQ(focusedRow(), "Disable Breadcrumbs");
  press(Qt::Key_Up);
  EXPECT_TRUE(isEdited());
}

TEST_F(TextRow, KeepsTheFocusAfterSave) {
  openWith("HH:mm");
  click(input());
  click(barButton("Save"));
  settle();
  EXPECT_FALSE(isEdited());
  EXPECT_EQ(focusedRow(), "Text:");
  click(input());
  EXPECT_TRUE(isEdited());
}

TEST_F(TextRow, GoesBackByASecondEscapeOrBackspace) {
  openWith("HH:mm");
  for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Backspace}) {
    click(input());
    press(Qt::Key_Return);
    settle();
    press(key);
    settle();
    EXPECT_EQ(page().title(), "Quellar");
    click(row("Status Bar"));
    settle();
  }
}

TEST_F(TextRow, PutsTheCursorWhereItIsClicked) {
  openWith("HH:mm");
  const QPointF left = input()->mapToScene(QPointF(1, input()->height() / 2));
  QTest::mouseClick(&view(), Qt::LeftButton, {}, left.toPoint());
  EXPECT_TRUE(isEdited());
  type("!");
  EXPECT_EQ(typed(), "!HH:mm");
}

TEST_F(TextRow, TakesLineEndsForSpacesAndNoControlCharacters) {
  openWith("");
  const struct {
    const char16_t* pasted;
    const char16_t* taken;
  } texts[] = {{u"a\nb", u"a b"},
               {u"a\r\nb\rc", u"a b c"},
               {u"a\u2028b\u2029c\u0085d\u000be\u000cf", u"a b c d e f"},
               {u"\u0001a\u001b[1mb\u007f\u009fc\u0000", u"a[1mbc"},
               {u"plain \u00e9 \u4e2d \U0001f600", u"plain \u00e9 \u4e2d \U0001f600"}};
  for (const auto& each : texts) {
    const QString expected = QString::fromUtf16(each.taken);
    click(input());
    press(Qt::Key_A, Qt::ControlModifier);
    put(QString::fromUtf16(each.pasted));
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(input()->property("text").toString(), expected);
    press(Qt::Key_Return);
    settle();
    EXPECT_EQ(QString::fromStdString(storedText()), expected);
  }
}

TEST_F(TextRow, KeepsTheCursorBehindWhatWasPasted) {
  openWith("ab");
  click(input());
  press(Qt::Key_Home);
  press(Qt::Key_Right);
  put("1\n2\x01");
  press(Qt::Key_V, Qt::ControlModifier);
  type("x");
  EXPECT_EQ(typed(), "a1 2xb");
}

TEST_F(TextRow, CutsCopiesAndPastesByARightClick) {
  openWith("HH:mm");
  put("ss");
  click(input());
  press(Qt::Key_A, Qt::ControlModifier);
  rightClick(input());
  EXPECT_THAT(entries(), ElementsAre("Cut", "Copy", "Paste"));
  EXPECT_TRUE(isEdited());
  click(entry("Copy"));
  settle();
  EXPECT_THAT(entries(), IsEmpty());
  EXPECT_EQ(kept(), "HH:mm");
  EXPECT_TRUE(isEdited());
  EXPECT_EQ(input()->property("selectedText").toString(), "HH:mm");
  rightClick(input());
  click(entry("Cut"));
  EXPECT_EQ(typed(), "");
  EXPECT_EQ(kept(), "HH:mm");
  put("ss\n");
  rightClick(input());
  EXPECT_THAT(entries(), ElementsAre("Paste"));
  click(entry("Paste"));
  EXPECT_EQ(typed(), "ss ");
  EXPECT_TRUE(input()->hasActiveFocus());
  rightClick(input());
  EXPECT_THAT(entries(), ElementsAre("Paste", "Select All"));
  click(entry("Select All"));
  EXPECT_EQ(input()->property("selectedText").toString(), "ss ");
  EXPECT_EQ(storedText(), "HH:mm");
  press(Qt::Key_Return);
  settle();
  EXPECT_EQ(storedText(), "ss ");
}

TEST_F(TextRow, PastesByALongPress) {
  openWith("HH:mm");
  put("ss");
  press(input());
  EXPECT_TRUE(isEdited());
  // The word under the finger is what is cut or copied.
  EXPECT_THAT(entries(), testing::Contains("Paste"));
  tap(entry("Select All"));
  // The menu stays: to reach it again a finger would have to give the selection up.
  EXPECT_THAT(entries(), ElementsAre("Cut", "Copy", "Paste"));
  EXPECT_EQ(input()->property("selectedText").toString(), "HH:mm");
  tap(entry("Paste"));
  EXPECT_THAT(entries(), IsEmpty());
  EXPECT_EQ(typed(), "ss");
  EXPECT_TRUE(isEdited());
}

TEST_F(TextRow, HasAMenuForTheKeyboard) {
  openWith("HH:mm");
  put("ss");
  click(input());
  press(Qt::Key_A, Qt::ControlModifier);
  press(Qt::Key_F10, Qt::ShiftModifier);
  EXPECT_THAT(entries(), ElementsAre("Cut", "Copy", "Paste"));
  EXPECT_TRUE(entry("Cut")->hasActiveFocus());
  press(Qt::Key_Down);
  press(Qt::Key_Down);
  EXPECT_TRUE(entry("Paste")->hasActiveFocus());
  press(Qt::Key_Down);
  EXPECT_TRUE(entry("Cut")->hasActiveFocus());
  press(Qt::Key_Up);
  press(Qt::Key_Return);
  EXPECT_EQ(typed(), "ss");
  EXPECT_THAT(entries(), IsEmpty());
  EXPECT_TRUE(input()->hasActiveFocus());
  EXPECT_TRUE(isEdited());
  press(Qt::Key_Menu);
  EXPECT_FALSE(entries().empty());
  press(Qt::Key_Escape);
  EXPECT_THAT(entries(), IsEmpty());
  EXPECT_TRUE(isEdited());
  EXPECT_EQ(page().title(), "Status Bar");
}

TEST_F(TextRow, PutsItsMenuAwayByAClickBesideIt) {
  openWith("HH:mm");
  rightClick(input());
  EXPECT_FALSE(entries().empty());
  QTest::mouseClick(&view(), Qt::LeftButton, {}, QPoint(195, 800));
  EXPECT_THAT(entries(), IsEmpty());
  EXPECT_EQ(stored().size(), 2U);
  EXPECT_TRUE(isEdited());
}

TEST_F(TextRow, HasAMenuThatAScreenReaderPresses) {
  openWith("HH:mm");
  put("");
  click(input());
  press(Qt::Key_Menu);
  auto* interface = QAccessible::queryAccessibleInterface(entry("Select All"));
  ASSERT_NE(interface->actionInterface(), nullptr);
  EXPECT_TRUE(interface->state().focusable);
  interface->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  EXPECT_EQ(input()->property("selectedText").toString(), "HH:mm");
  EXPECT_EQ(accessibleItems(view().contentItem(), QAccessible::PopupMenu).size(), 0U);
}

TEST_F(TextRow, KeepsItsMenuWithinTheWindow) {
  openWith(kLong, {.size = {360, 294}, .textScale = 2});
  click(input());
  press(Qt::Key_A, Qt::ControlModifier);
  rightClick(input());
  for (const char* name : {"Cut", "Copy"}) {
    QQuickItem* const item = entry(name);
    const QRectF place = item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
    EXPECT_TRUE(QRectF(0, 0, 360, 294).contains(place)) << name << " " << place.top() << " " << place.bottom();
    EXPECT_GE(place.height(), 44);
  }
}

class OtherFields : public TextRow {};

TEST_F(OtherFields, OfADialogHaveTheMenuToo) {
  store("Icon_Defaults", {{"usesCustomIconSize", true}});
  open("Icons");
  rows().enterValue(rows().indexOf("customIconScaleSize"));
  settle();
  put("1.5");
  QQuickItem* const dialogField = view().activeFocusItem();
  rightClick(dialogField);
  click(entry("Paste"));
  EXPECT_EQ(panel().navigation().dialog()->text, "1.5");
  press(Qt::Key_Return);
  settle();
  EXPECT_EQ(stored("Icon_Defaults").at("customIconScaleSize"), platform::Value(1.5));
}

}  // namespace
}  // namespace quellar::tests::text_row_test

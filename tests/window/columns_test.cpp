// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include <stdexcept>

#include "window_fixture.h"

namespace quellar::tests {

using host::window::Idiom;
using testing::ElementsAre;

namespace columns_test {

/// A window that is wide enough for the list of pages and a page beside it.
class ColumnsTest : public WindowTest {
 protected:
  static constexpr QSize kWide{1180, 820};

  void openWide(const std::string& page) { open(page, {.idiom = Idiom::pad, .size = kWide}); }

  /// The page of a place of the stack, as the window shows it; nullptr where it does not.
  QQuickItem* column(int place) { return search(*view().contentItem(), place); }

  /// Where an item lies in the window.
  static QRectF place(const QQuickItem* item) {
    return {item->mapToScene({0, 0}), QSizeF(item->width(), item->height())};
  }

  /// A row of the list of pages.
  QQuickItem* link(const std::string& label) {
    auto* const list = column(0)->property("list").value<QQuickItem*>();
    QQuickItem* const found = searchRow(*list, QString::fromStdString(label));
    if (!found) throw std::runtime_error("no link \"" + label + "\"");
    return found;
  }

  std::vector<std::string> stack() {
    std::vector<std::string> names;
    for (const auto& each : panel().navigation().viewControllers()) names.push_back(each->title());
    return names;
  }

 private:
  static QQuickItem* search(QQuickItem& among, int place) {
    if (among.property("leads").isValid() && among.property("list").isValid() && among.isVisible() &&
        among.property("index").toInt() == place) {
      return &among;
    }
    const auto children = among.childItems();
    for (QQuickItem* child : children) {
      if (QQuickItem* found = search(*child, place)) return found;
    }
    return nullptr;
  }

  static QQuickItem* searchRow(QQuickItem& among, const QString& label) {
    if (among.property("rowEnabled").isValid() && among.property("label").toString() == label) return &among;
    const auto children = among.childItems();
    for (QQuickItem* child : children) {
      if (QQuickItem* found = searchRow(*child, label)) return found;
    }
    return nullptr;
  }
};

TEST_F(ColumnsTest, StandsTheListOfPagesBesideThePage) {
  openWide("Status Bar");
  ASSERT_NE(column(0), nullptr);
  ASSERT_NE(column(1), nullptr);
  const QRectF list = place(column(0));
  const QRectF page = place(column(1));
  EXPECT_EQ(list.left(), 0);
  EXPECT_EQ(page.left(), list.right());
  EXPECT_EQ(page.right(), kWide.width());
  EXPECT_EQ(list.height(), kWide.height());
}

TEST_F(ColumnsTest, KeepsOneColumnBelowSevenHundredPoints) {
  open("Status Bar", {.idiom = Idiom::pad, .size = {699, 820}});
  EXPECT_EQ(column(0), nullptr);
  EXPECT_EQ(place(column(1)), QRectF(0, 0, 699, 820));
}

TEST_F(ColumnsTest, MarksThePageThatIsShown) {
  openWide("Status Bar");
  EXPECT_TRUE(link("Status Bar")->property("selected").toBool());
  EXPECT_FALSE(link("LockScreen")->property("selected").toBool());
}

TEST_F(ColumnsTest, ShowsTheRowOfThePageThatIsShown) {
  openWide("Weather");
  const QRectF list = place(column(0));
  EXPECT_TRUE(eventually([&] { return list.contains(place(link("Weather"))); }));
}

TEST_F(ColumnsTest, KeepsADistanceBetweenTheRowOfThePageThatIsShownAndTheEdge) {
  // Low enough for the row to be below the window at first, and above its end when all is scrolled.
  open("Restrictions", {.idiom = Idiom::pad, .size = {1180, 700}});
  const auto* const scrolled = column(0)->property("list").value<QQuickItem*>();
  constexpr double kGap = 12;
  const auto below = [&] { return place(scrolled).bottom() - place(link("Restrictions")).bottom(); };
  EXPECT_TRUE(eventually([&] { return below() >= kGap; })) << below();
  EXPECT_GT(scrolled->property("contentY").toDouble(), scrolled->property("originY").toDouble());
}

TEST_F(ColumnsTest, OpensAPageThatAComputedLinkLeadsToThroughThatLink) {
  root_.write("usr/lib/libflipcontrolcenter.dylib", "");
  openWide("Custom Toggle Colors");
  EXPECT_THAT(stack(), ElementsAre("Quellar", "Control Center", "Custom Toggle Colors"));
  ASSERT_NE(barButton("Control Center"), nullptr);
  EXPECT_TRUE(link("Control Center")->property("selected").toBool());
  // The control centre is there, as if it had been walked through.
  click(barButton("Control Center"));
  settle();
  EXPECT_THAT(stack(), ElementsAre("Quellar", "Control Center"));
  EXPECT_EQ(focusedRow(), "Custom Toggle Colors");
}

TEST_F(ColumnsTest, OpensAPageWhoseLinkTheDeviceDoesNotHaveRightOnTheFirstOne) {
  openWide("Available Switches");
  EXPECT_EQ(stack().size(), 2U);
}

TEST_F(ColumnsTest, ChangesASwitchOfTheListAndKeepsThePage) {
  openWide("Status Bar");
  click(link("Enable"));
  settle();
  EXPECT_THAT(stack(), ElementsAre("Quellar", "Status Bar"));
}

TEST_F(ColumnsTest, PutsThePageThatIsChosenInThePlaceOfTheOther) {
  openWide("Status Bar");
  click(link("LockScreen"));
  settle();
  EXPECT_THAT(stack(), ElementsAre("Quellar", "LockScreen"));
  EXPECT_FALSE(link("Status Bar")->property("selected").toBool());
  EXPECT_TRUE(link("LockScreen")->property("selected").toBool());
}

TEST_F(ColumnsTest, CommitsWhatIsTypedWhenAnotherPageIsChosen) {
  openWide("Status Bar");
  click(row("Use Custom Time Format"));
  settle();
  click(row("Text:"));
  type("HH");
  click(link("LockScreen"));
  settle();
  EXPECT_EQ(stored().at("userCustomClockFormatter"), platform::Value("HH"));
}

TEST_F(ColumnsTest, OffersAWayBackOnlyToAPageThatIsOutOfSight) {
  openWide("Status Bar");
  EXPECT_EQ(barButton("Quellar"), nullptr);
  click(row("Custom Carrier Strings"));
  settle();
  ASSERT_NE(barButton("Status Bar"), nullptr);
  click(barButton("Status Bar"));
  settle();
  EXPECT_THAT(stack(), ElementsAre("Quellar", "Status Bar"));
}

TEST_F(ColumnsTest, KeepsPageRowsAndTextWhenTheWindowIsResized) {
  openWide("Status Bar");
  click(row("Use Custom Time Format"));
  settle();
  click(row("Text:"));
  type("HH:mm");
  view().resize(390, 844);
  ASSERT_TRUE(eventually([this] { return column(0) == nullptr; }));
  EXPECT_EQ(place(column(1)), QRectF(0, 0, 390, 844));
  EXPECT_EQ(field(row("Text:"))->property("text").toString(), "HH:mm");
  EXPECT_TRUE(field(row("Text:"))->hasActiveFocus());
  EXPECT_FALSE(stored().contains("userCustomClockFormatter"));
  view().resize(kWide);
  ASSERT_TRUE(eventually([this] { return column(0) != nullptr; }));
  EXPECT_TRUE(field(row("Text:"))->hasActiveFocus());
}

TEST_F(ColumnsTest, KeepsADialogWhenTheWindowIsResized) {
  openWide("Quellar");
  click(barButton("Respring"));
  settle();
  ASSERT_NE(dialogButton("Not Right Now"), nullptr);
  view().resize(390, 844);
  ASSERT_TRUE(eventually([this] { return column(0)->width() == 390; }));
  EXPECT_NE(dialogButton("Not Right Now"), nullptr);
}

TEST_F(ColumnsTest, LeadsTheFocusThroughBothColumns) {
  openWide("Custom Carrier Strings");
  auto* const pageView = column(2);
  ASSERT_NE(pageView, nullptr);
  QMetaObject::invokeMethod(pageView, "enter", Q_ARG(QVariant, -1));
  press(Qt::Key_Tab);
  EXPECT_TRUE(place(column(0)).contains(place(view().activeFocusItem()).center()));
  press(Qt::Key_Backtab);
  EXPECT_TRUE(place(column(2)).contains(place(view().activeFocusItem()).center()));
}

TEST_F(ColumnsTest, GoesFromThePageToTheListByEscape) {
  openWide("Status Bar");
  press(Qt::Key_Escape);
  EXPECT_THAT(stack(), ElementsAre("Quellar", "Status Bar"));
  EXPECT_EQ(focusedRow(), "Status Bar");
}

}  // namespace columns_test

}  // namespace quellar::tests

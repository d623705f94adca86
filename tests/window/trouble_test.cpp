// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>

#include <QTest>
#include <QUrl>
#include <filesystem>
#include <fstream>

#include "host/linux/file_descriptor.h"
#include "window_fixture.h"

namespace quellar::tests::trouble_test {

using platform::Dictionary;
using testing::HasSubstr;

constexpr const char* kUnsaved = "Your change is not saved.";

class TroubleTest : public WindowTest {
 protected:
  std::filesystem::path folder() { return root_.path() / "var/mobile/Library/Preferences"; }
  std::filesystem::path file() { return folder() / "com.vantorick.quellar2.plist"; }
  /// Holds the store's lock, as a program that hangs does.
  void block() {
    std::filesystem::create_directories(folder());
    lock_ =
        host::linux::FileDescriptor(::open((file().string() + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644));
    ASSERT_EQ(::flock(lock_.get(), LOCK_EX), 0);
  }
  void unblock() { lock_ = host::linux::FileDescriptor(); }
  QQuickItem* banner() {
    return findItem([](QQuickItem& item) {
      return item.property("closeItem").isValid() && !item.property("closing").toString().isEmpty();
    });
  }
  QString told() { return banner() ? banner()->property("text").toString() : QString(); }
  bool tells(const QString& text) {
    return eventually([&] { return told() == text; });
  }
  QQuickItem* part(const char* name) { return banner() ? banner()->property(name).value<QQuickItem*>() : nullptr; }
  /// The window with a change that can't be saved.
  void fail() {
    block();
    open("Status Bar");
    click(row("No Bold Text"));
    ASSERT_TRUE(tells(kUnsaved));
    settle();
  }
  void picture(const QString& name) {
    const QString to = qEnvironmentVariable("QUELLAR_TEST_PICTURES");
    if (!to.isEmpty()) view().grabWindow().save(to + "/" + name + ".png");
  }

 private:
  host::linux::FileDescriptor lock_;
};

TEST_F(TroubleTest, SaysThatAChangeIsNotSavedUntilItIs) {
  fail();
  EXPECT_THAT(banner()->property("detail").toString().toStdString(), HasSubstr(file().string()));
  picture("unsaved-phone");
  unblock();
  EXPECT_TRUE(tells(""));
  EXPECT_EQ(stored(), (Dictionary{{"userRequestsUnboldStatusBar", true}}));
}

TEST_F(TroubleTest, WritesAtOnceWhatIsTriedAgain) {
  retryPause_ = std::chrono::minutes(10);
  fail();
  unblock();
  click(part("actionItem"));
  EXPECT_TRUE(tells(""));
  EXPECT_EQ(stored(), (Dictionary{{"userRequestsUnboldStatusBar", true}}));
}

TEST_F(TroubleTest, IsReachedByTabAndDismissedByEscape) {
  fail();
  QMetaObject::invokeMethod(list()->parentItem(), "enter", Q_ARG(QVariant, 1));
  for (int tabs = 0; tabs < 3 && !part("actionItem")->hasActiveFocus(); ++tabs) press(Qt::Key_Tab);
  ASSERT_TRUE(part("actionItem")->hasActiveFocus());
  press(Qt::Key_Tab);
  EXPECT_TRUE(part("closeItem")->hasActiveFocus());
  press(Qt::Key_Escape);
  EXPECT_EQ(told(), "");
  EXPECT_EQ(panel().navigation().viewControllers().size(), 2U);
  EXPECT_TRUE(list()->hasActiveFocus() || focusedRow() != "");
}

TEST_F(TroubleTest, MovesNoRowThatIsHeld) {
  block();
  open("Status Bar");
  click(row("No Bold Text"));
  QQuickItem* const held = row("Lowercase AM/PM");
  const QPoint place = held->mapToScene(QPointF(20, 20)).toPoint();
  QTest::mousePress(&view(), Qt::LeftButton, {}, place);
  // The trouble is there, and told once nothing is held.
  QTest::qWait(600);
  EXPECT_EQ(told(), "");
  EXPECT_EQ(held->mapToScene(QPointF(20, 20)).toPoint(), place);
  QTest::mouseRelease(&view(), Qt::LeftButton, {}, QPoint(-10, place.y()));
  EXPECT_TRUE(tells(kUnsaved));
}

TEST_F(TroubleTest, SaysThatADamagedFileWasKeptAndShowsItsFolder) {
  std::filesystem::create_directories(folder());
  std::ofstream(file()) << "no property list";
  open("Status Bar", {.size = {1180, 820}});
  EXPECT_TRUE(tells("The file of your settings is damaged. It is kept aside when you change something."));
  click(row("No Bold Text"));
  ASSERT_TRUE(tells("The file of your settings was damaged. The damaged one was kept."));
  picture("kept-wide");
  EXPECT_THAT(banner()->property("detail").toString().toStdString(), HasSubstr(file().string() + ".corrupt"));
  QUrl opened;
  settings().trouble().setOpener([&](const QUrl& url) { opened = url; });
  click(part("actionItem"));
  EXPECT_EQ(opened, QUrl::fromLocalFile(QString::fromStdString(folder().string())));
  click(part("closeItem"));
  EXPECT_EQ(told(), "");
}

}  // namespace quellar::tests::trouble_test

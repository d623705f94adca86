// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <QQuickItem>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "bus/private_bus.h"
#include "host/window/opening.h"
#include "host/window/settings_window.h"
#include "host/window/window_platform.h"
#include "platform/list_controller.h"
#include "support/temporary_folder.h"

namespace quellar::tests {

/// The real window on the real panel, with a device root and a session bus of its own, without a display.
class WindowTest : public testing::Test {
 public:
  ~WindowTest() override;

 protected:
  WindowTest();

  struct Setup {
    host::window::Idiom idiom = host::window::Idiom::phone;
    QSize size{390, 844};
    bool reducedMotion = true;
    bool rightToLeft = false;
    double textScale = 1;
  };
  /// Opens the window at a page ("Status Bar"), as the program does: the pages are there before the window is shown.
  void open(const std::string& name, const Setup& setup);
  void open(const std::string& name) { open(name, Setup{}); }
  /// Opens the window at a page made by the test.
  void open(std::shared_ptr<platform::PSListController> page, const Setup& setup);
  void open(std::shared_ptr<platform::PSListController> page) { open(std::move(page), Setup{}); }
  /// Makes the panel, for tests that need it before the window is there.
  host::window::WindowPlatform& panel();
  void closeWindow();

  [[nodiscard]] host::window::SettingsWindow& settings() { return *window_; }
  [[nodiscard]] QQuickWindow& view() { return window_->window(); }
  [[nodiscard]] host::window::RowModel& rows() { return *window_->navigation().top()->rows(); }
  [[nodiscard]] platform::PSListController& page();

  /// Runs the event loop until it holds; false where ten seconds were not enough.
  static bool eventually(const std::function<bool()>& holds);
  /// Runs the event loop until nothing moves and no work of the panel waits.
  void settle();

  /// The list of the page on top, and its rows' labels as they are shown; a group's title and footer in brackets.
  [[nodiscard]] QQuickItem* list();
  [[nodiscard]] std::vector<std::string> shownLabels();
  /// The item of a row on the page on top; fails the test where there is none.
  [[nodiscard]] QQuickItem* row(const std::string& label, int nth = 0);
  /// The field that is typed in, of a text row.
  [[nodiscard]] QQuickItem* field(QQuickItem* row);
  /// A button of the bar on the page on top, or of the dialog; nullptr where it is not shown.
  [[nodiscard]] QQuickItem* barButton(const std::string& title);
  [[nodiscard]] QQuickItem* dialogButton(const std::string& title);

  void click(QQuickItem* item);
  void tap(QQuickItem* item);
  void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
  void type(const QString& text);
  /// The label of the row that has the focus; "" where none has it.
  [[nodiscard]] std::string focusedRow();

  /// What the store holds under a page's defaults key, and a way to put it there.
  [[nodiscard]] platform::Dictionary stored(const std::string& defaultsKey = "StatusBar_Defaults");
  void store(const std::string& defaultsKey, const platform::Dictionary& values);
  /// Everything that has come over the bus since the last call, once the panel has nothing more to post: names, as they
  /// arrived.
  [[nodiscard]] std::vector<std::string> takePosts();

  /// The first item that is shown, at or below `among`, for which it holds; nullptr where there is none.
  [[nodiscard]] QQuickItem* findItem(const std::function<bool(QQuickItem&)>& matches, QQuickItem* among = nullptr);

  TemporaryFolder root_;
  /// How long a write that failed waits to be tried again by itself.
  std::chrono::milliseconds retryPause_{250};

 private:
  void make(const Setup& setup);
  void start();

  PrivateBus bus_;
  std::unique_ptr<host::linux::Bus> listener_;
  std::vector<std::string> posts_;
  std::vector<host::linux::StoreTrouble> early_;
  host::window::Idiom idiom_ = host::window::Idiom::phone;
  std::unique_ptr<host::window::WindowPlatform> panel_;
  std::unique_ptr<host::window::SettingsWindow> window_;
};

}  // namespace quellar::tests

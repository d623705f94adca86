// SPDX-License-Identifier: MIT
#pragma once

#include <QQuickItem>
#include <memory>
#include <string>

#include "host/window/settings_window.h"
#include "host/window/window_platform.h"
#include "suite.h"
#include "support/temporary_folder.h"

namespace quellar::benches {

/// What a frame's cost is measured at.
inline constexpr QSize kPhone(390, 844);
inline constexpr double kPhoneScale = 2;
/// The entry of a frame in which nothing has changed.
inline constexpr const char* kStillFrame = "window: draw 390 x 844 at scale 2, nothing changed";

/// The panel's window as on a phone, with values of its own, drawn by the software renderer where nobody sees it. Time
/// passes for its animations by the frames that are asked for.
class PhoneWindow {
 public:
  explicit PhoneWindow(const host::window::Appearance& appearance = {});

  [[nodiscard]] host::window::WindowPlatform& panel() { return panel_; }
  [[nodiscard]] host::window::SettingsWindow& window() { return window_; }

  /// Opens a page of the panel through the links that lead to it, or one of the benchmark's own on top.
  void open(const std::string& name);
  void push(std::shared_ptr<platform::ViewController> page);
  /// Until nothing moves, nothing waits and all rows are made.
  void rest();
  /// One frame of sixty a second: what has come up, the animations, the picture as a whole.
  void frame();
  /// The picture alone.
  void draw();
  /// The list of the page on top.
  [[nodiscard]] QQuickItem& list();

 private:
  tests::TemporaryFolder folder_;
  host::window::WindowPlatform panel_;
  host::window::SettingsWindow window_;
};

}  // namespace quellar::benches

// SPDX-License-Identifier: MIT
#pragma once

#include <QQmlEngine>
#include <QQuickWindow>
#include <QSize>
#include <memory>

#include "host/window/navigation_model.h"
#include "host/window/row_order.h"
#include "host/window/window_resources.h"
#include "host/window/window_state.h"
#include "platform/navigation_controller.h"

namespace quellar::host::window {

/// To be called once before the QGuiApplication is made: the renderer that works on every machine, unless the
/// environment asks for another one.
void chooseRenderer();
/// To be called once after the QGuiApplication is made: typeface, names, and numbers as the C locale writes them, which
/// other libraries of the process count on.
void prepareApplication();

/// The window: models of a navigation controller's stack, and the view on them.
class SettingsWindow {
 public:
  /// Takes the controller and observes it; pages are pushed later. Throws std::runtime_error where the view can't be
  /// loaded.
  SettingsWindow(platform::NavigationController& controller, const WindowResources& resources, double scale,
                 const Appearance& appearance);

  [[nodiscard]] QQuickWindow& window() { return *window_; }
  [[nodiscard]] NavigationModel& navigation() { return navigation_; }
  [[nodiscard]] WindowState& state() { return state_; }

  /// Gives the window its size, before its first page comes: a list that is made in a window without height is moved
  /// from its top by the toolkit.
  void resize(QSize size);
  /// Shows the window with the pages that are there by now, and asks for the keyboard, which nobody gives it where
  /// there is no window manager.
  void start();
  /// Gives the focus to a row of the page on top, and scrolls to it; false where the page does not show it.
  bool revealRow(const QString& identifier);

 private:
  NavigationModel navigation_;
  WindowState state_;
  RowOrder order_;
  // Last, so that the view goes before what it shows.
  QQmlEngine engine_;
  std::unique_ptr<QQuickWindow> window_;
};

}  // namespace quellar::host::window

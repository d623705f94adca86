// SPDX-License-Identifier: MIT
#pragma once

#include <QQuickWindow>
#include <QSize>
#include <array>
#include <memory>

#include "frame/hidden_row.h"
#include "host/window/confined_engine.h"
#include "host/window/navigation_model.h"
#include "host/window/row_order.h"
#include "host/window/trouble_model.h"
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
  ~SettingsWindow();
  SettingsWindow(const SettingsWindow&) = delete;
  SettingsWindow& operator=(const SettingsWindow&) = delete;

  [[nodiscard]] QQuickWindow& window() { return *window_; }
  [[nodiscard]] NavigationModel& navigation() { return navigation_; }
  [[nodiscard]] WindowState& state() { return state_; }
  [[nodiscard]] TroubleModel& trouble() { return trouble_; }

  /// Gives the window its size, before its first page comes: a list that is made in a window without height is moved
  /// from its top by the toolkit.
  void resize(QSize size);
  /// Shows the window with the pages that are there by now, and asks for the keyboard, which nobody gives it where
  /// there is no window manager.
  void start();
  /// Gives the focus to a row of the page on top, and scrolls to it; false where the page does not show it.
  bool revealRow(const QString& identifier);
  /// Leads the user to a row of the page on top: to the row itself, or to the one that is to be set first, with a line
  /// that says so until the row has come or the page is left.
  void leadTo(const frame::FoundRow& row);

 private:
  void tellStep(frame::KVQuellarListController& page, const std::string& key);
  void reveal(int index);

  NavigationModel navigation_;
  WindowState state_;
  TroubleModel trouble_;
  ElsewhereWatch& elsewhere_;
  /// What is said of a row that is to be set first.
  struct StepTexts {
    QString turnOn;
    QString turnOnAgain;
    QString set;
  };
  const StepTexts stepTexts_;
  /// To the rows of the page with a row that is yet to come.
  std::array<QMetaObject::Connection, 2> leading_;
  RowOrder order_;
  // Last, so that the view goes before what it shows.
  ConfinedEngine engine_;
  std::unique_ptr<QQuickWindow> window_;
};

}  // namespace quellar::host::window

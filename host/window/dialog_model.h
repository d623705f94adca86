// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QString>
#include <QVariantList>

#include "host/window/color_model.h"
#include "platform/dialog.h"
#include "platform/navigation_controller.h"

namespace quellar::host::window {

/// The dialog that lies over the pages. When it goes, its texts stay until the next one, so that it can leave with
/// them on it.
class DialogModel final : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool shown READ shown NOTIFY shownChanged)
  Q_PROPERTY(QString kind MEMBER kind_ NOTIFY contentChanged)
  Q_PROPERTY(QString title MEMBER title_ NOTIFY contentChanged)
  Q_PROPERTY(QString message MEMBER message_ NOTIFY contentChanged)
  /// A list of {title, style}; style is "default", "cancel" or "destructive".
  Q_PROPERTY(QVariantList buttons MEMBER buttons_ NOTIFY contentChanged)
  /// It points at the bar button at the right.
  Q_PROPERTY(bool anchored MEMBER anchored_ NOTIFY contentChanged)
  /// What a colour dialog picks.
  Q_PROPERTY(QObject* color READ color CONSTANT)

 public:
  DialogModel(platform::NavigationController& navigation, const TextFinder& text, QObject* parent);

  [[nodiscard]] bool shown() const { return shown_; }
  [[nodiscard]] ColorModel* color() { return &color_; }

  void show(const platform::Dialog& dialog);
  void hide();

  /// Presses the button at a place.
  Q_INVOKABLE void press(int index);
  /// Leaves the dialog as its cancel button would; where it has none, without an answer.
  Q_INVOKABLE void cancel();
  /// Ends a colour dialog with the colour that is picked; a typed code that is no colour keeps it open and is refused.
  Q_INVOKABLE void choose();

 signals:
  void shownChanged();
  void contentChanged();

 private:
  platform::NavigationController& navigation_;
  bool shown_ = false;
  QString kind_;
  QString title_;
  QString message_;
  QVariantList buttons_;
  bool anchored_ = false;
  ColorModel color_;
};

}  // namespace quellar::host::window

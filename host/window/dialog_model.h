// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <string>

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
  Q_PROPERTY(bool hasField MEMBER hasField_ NOTIFY contentChanged)
  /// What its field holds.
  Q_PROPERTY(QString text MEMBER text_ NOTIFY textChanged)
  /// The field is for numbers.
  Q_PROPERTY(bool numeric MEMBER numeric_ NOTIFY contentChanged)
  /// The titles of the buttons that help to type.
  Q_PROPERTY(QStringList accessory MEMBER accessory_ NOTIFY contentChanged)
  /// What a colour dialog picks.
  Q_PROPERTY(QObject* color READ color CONSTANT)

 public:
  DialogModel(platform::NavigationController& navigation, const TextFinder& text, QObject* parent);

  [[nodiscard]] bool shown() const { return shown_; }
  [[nodiscard]] ColorModel* color() { return &color_; }

  void show(const platform::Dialog& dialog);
  void hide();
  void showText(const std::string& text);

  /// Presses the button at a place.
  Q_INVOKABLE void press(int index);
  /// Leaves the dialog as its cancel button would; where it has none, without an answer.
  Q_INVOKABLE void cancel();
  /// Presses the button that takes what was typed; does nothing where the dialog has none.
  Q_INVOKABLE void accept();
  /// The user typed in the field.
  Q_INVOKABLE void typeText(const QString& text);
  Q_INVOKABLE void pressAccessory(int index);
  /// Ends a colour dialog with the colour that is picked; a typed code that is no colour keeps it open and is refused.
  Q_INVOKABLE void choose();

 signals:
  void shownChanged();
  void contentChanged();
  void textChanged();

 private:
  /// The place of the dialog's first button of a style; -1 where none is shown.
  [[nodiscard]] int placeOf(platform::ButtonStyle style) const;

  platform::NavigationController& navigation_;
  bool shown_ = false;
  QString kind_;
  QString title_;
  QString message_;
  QVariantList buttons_;
  bool anchored_ = false;
  bool hasField_ = false;
  QString text_;
  bool numeric_ = false;
  QStringList accessory_;
  ColorModel color_;
};

}  // namespace quellar::host::window

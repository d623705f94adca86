// SPDX-License-Identifier: MIT
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>

#include "host/window/live_changes.h"

namespace quellar::host::window {

/// How the window is to look, as the user asked for it.
struct Appearance {
  /// 1 is the usual size of texts.
  double textScale = 1;
  bool reducedMotion = false;
  bool rightToLeft = false;
};

/// What the view needs to know beside the pages: the appearance, how the user works, what went wrong.
class WindowState final : public QObject {
  Q_OBJECT
  Q_PROPERTY(double textScale READ textScale CONSTANT)
  Q_PROPERTY(bool reducedMotion READ reducedMotion CONSTANT)
  Q_PROPERTY(bool rightToLeft READ rightToLeft CONSTANT)
  /// The latest input came from the keyboard, so that the focus is to be seen.
  Q_PROPERTY(bool keyboardInUse READ keyboardInUse NOTIFY keyboardInUseChanged)
  /// What is to be set first so that the row that was asked for shows; "" for nothing.
  Q_PROPERTY(QString hint READ hint NOTIFY hintChanged)

 public:
  explicit WindowState(const Appearance& appearance) : appearance_(appearance) {}

  [[nodiscard]] double textScale() const { return appearance_.textScale; }
  [[nodiscard]] bool reducedMotion() const { return appearance_.reducedMotion; }
  [[nodiscard]] bool rightToLeft() const { return appearance_.rightToLeft; }
  [[nodiscard]] bool keyboardInUse() const { return keyboardInUse_; }
  /// A mouse button or a finger is down.
  [[nodiscard]] bool isPointerDown() const { return mouseDown_ || touchDown_; }
  /// A pointer is down, or was so lately that the next tap may be on its way.
  [[nodiscard]] bool isTouched() const;
  [[nodiscard]] const QString& hint() const { return hint_; }

  void setHint(const QString& hint);
  Q_INVOKABLE void dismissHint() { setHint({}); }
  /// The view has brought an item into sight, or out of it, as a screen reader is to know.
  Q_INVOKABLE void tellShown(QObject* item, bool shown) const { window::tellShown(item, shown); }
  /// The rows have other values now, which a screen reader may say when it has time.
  Q_INVOKABLE void tellQuietly(QObject* item, const QString& text) const { window::tellQuietly(item, text); }

  /// Watches the input and the size of a window.
  bool eventFilter(QObject* watched, QEvent* event) override;

 signals:
  void keyboardInUseChanged();
  void hintChanged();
  /// The window is about to take another size; nothing has changed its place yet.
  void resizing();

 private:
  void setKeyboardInUse(bool inUse);
  void notePointer(QEvent& event);

  const Appearance appearance_;
  bool keyboardInUse_ = false;
  bool mouseDown_ = false;
  bool touchDown_ = false;
  /// Since a pointer was last seen down.
  QElapsedTimer sinceTouch_;
  QString hint_;
};

}  // namespace quellar::host::window

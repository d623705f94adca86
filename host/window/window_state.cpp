// SPDX-License-Identifier: MIT
#include "host/window/window_state.h"

#include <QEvent>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QStyleHints>
#include <utility>

namespace quellar::host::window {

void WindowState::setHint(const QString& hint) {
  if (hint == hint_) return;
  hint_ = hint;
  emit hintChanged();
}

void WindowState::setKeyboardInUse(bool inUse) {
  if (inUse == keyboardInUse_) return;
  keyboardInUse_ = inUse;
  emit keyboardInUseChanged();
}

bool WindowState::isTouched() const {
  constexpr int kBetweenTaps = 300;
  return isPointerDown() || (sinceTouch_.isValid() && sinceTouch_.elapsed() < kBetweenTaps);
}

void WindowState::notePointer(QEvent& event) {
  switch (event.type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseMove:
      // A release that went to another window shows with the next movement.
      if (!std::exchange(mouseDown_, static_cast<QMouseEvent&>(event).buttons() != Qt::NoButton) && !mouseDown_) return;
      break;
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
      touchDown_ = true;
      break;
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
      touchDown_ = false;
      break;
    default:
      return;
  }
  sinceTouch_.start();
}

bool WindowState::eventFilter(QObject* watched, QEvent* event) {
  notePointer(*event);
  switch (event->type()) {
    case QEvent::KeyPress:
      setKeyboardInUse(true);
      break;
    case QEvent::MouseButtonPress:
      QGuiApplication::styleHints()->setMouseDoubleClickInterval(-1);
      setKeyboardInUse(false);
      break;
    case QEvent::TouchBegin:
      // Two taps in a row are two taps: of one that the toolkit takes for the second half of a double click, the
      // release never arrives.
      QGuiApplication::styleHints()->setMouseDoubleClickInterval(0);
      setKeyboardInUse(false);
      break;
    case QEvent::Resize:
      emit resizing();
      break;
    default:
      break;
  }
  return QObject::eventFilter(watched, event);
}

}  // namespace quellar::host::window

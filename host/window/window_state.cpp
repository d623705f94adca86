// SPDX-License-Identifier: MIT
#include "host/window/window_state.h"

#include <QEvent>
#include <QGuiApplication>
#include <QStyleHints>

namespace quellar::host::window {

void WindowState::setTrouble(const QString& trouble) {
  if (trouble == trouble_) return;
  trouble_ = trouble;
  emit troubleChanged();
}

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

bool WindowState::eventFilter(QObject* watched, QEvent* event) {
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

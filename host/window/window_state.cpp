// SPDX-License-Identifier: MIT
#include "host/window/window_state.h"

#include <QEvent>

namespace quellar::host::window {

void WindowState::setTrouble(const QString& trouble) {
  if (trouble == trouble_) return;
  trouble_ = trouble;
  emit troubleChanged();
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
    case QEvent::TouchBegin:
      setKeyboardInUse(false);
      break;
    default:
      break;
  }
  return QObject::eventFilter(watched, event);
}

}  // namespace quellar::host::window

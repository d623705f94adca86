// SPDX-License-Identifier: MIT
#include "host/window/dialog_model.h"

#include <QVariantMap>
#include <algorithm>
#include <cstddef>

namespace quellar::host::window {

using platform::ButtonStyle;
using platform::DialogKind;

namespace {

QString kindName(DialogKind kind) {
  switch (kind) {
    case DialogKind::alert:
      return "alert";
    case DialogKind::sheet:
      return "sheet";
    case DialogKind::color:
      return "color";
  }
  return {};
}

QString styleName(ButtonStyle style) {
  switch (style) {
    case ButtonStyle::plain:
      return "default";
    case ButtonStyle::cancel:
      return "cancel";
    case ButtonStyle::destructive:
      return "destructive";
  }
  return {};
}

}  // namespace

DialogModel::DialogModel(platform::NavigationController& navigation, const TextFinder& text, QObject* parent)
    : QObject(parent), navigation_(navigation), color_(text, this) {}

void DialogModel::show(const platform::Dialog& dialog) {
  kind_ = kindName(dialog.kind);
  title_ = QString::fromStdString(dialog.title);
  message_ = QString::fromStdString(dialog.message);
  anchored_ = dialog.anchoredToRightBar;
  buttons_.clear();
  for (const auto& button : dialog.buttons) {
    buttons_.append(QVariantMap{{"title", QString::fromStdString(button.title)}, {"style", styleName(button.style)}});
  }
  if (dialog.color) color_.begin(*dialog.color);
  emit contentChanged();
  shown_ = true;
  emit shownChanged();
}

void DialogModel::hide() {
  shown_ = false;
  emit shownChanged();
}

void DialogModel::press(int index) {
  if (index >= 0) navigation_.pressDialogButton(static_cast<std::size_t>(index));
}

void DialogModel::cancel() {
  const auto& dialog = navigation_.dialog();
  if (!dialog) return;
  const auto cancel = std::ranges::find(dialog->buttons, ButtonStyle::cancel, &platform::DialogButton::style);
  if (cancel == dialog->buttons.end()) {
    navigation_.dismiss();
  } else {
    navigation_.pressDialogButton(static_cast<std::size_t>(cancel - dialog->buttons.begin()));
  }
}

void DialogModel::choose() {
  const auto& dialog = navigation_.dialog();
  if (!dialog || !dialog->color || !color_.settle()) return;
  navigation_.completeColorDialog(color_.value());
}

}  // namespace quellar::host::window

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
  hasField_ = dialog.text.has_value();
  numeric_ = dialog.keyboardType == platform::KeyboardType::numberPad;
  accessory_.clear();
  for (const auto& button : dialog.accessory) accessory_.append(QString::fromStdString(button.title));
  if (dialog.color) color_.begin(*dialog.color);
  emit contentChanged();
  showText(dialog.text.value_or(""));
  shown_ = true;
  emit shownChanged();
}

void DialogModel::hide() {
  shown_ = false;
  emit shownChanged();
}

void DialogModel::showText(const std::string& text) {
  text_ = QString::fromStdString(text);
  emit textChanged();
}

void DialogModel::press(int index) {
  if (index >= 0) navigation_.pressDialogButton(static_cast<std::size_t>(index));
}

int DialogModel::placeOf(ButtonStyle style) const {
  const auto& dialog = navigation_.dialog();
  if (!dialog) return -1;
  const auto found = std::ranges::find(dialog->buttons, style, &platform::DialogButton::style);
  return found == dialog->buttons.end() ? -1 : static_cast<int>(found - dialog->buttons.begin());
}

void DialogModel::cancel() {
  const int place = placeOf(ButtonStyle::cancel);
  if (place < 0) {
    navigation_.dismiss();
  } else {
    press(place);
  }
}

void DialogModel::accept() {
  press(placeOf(ButtonStyle::plain));
}

void DialogModel::typeText(const QString& text) {
  navigation_.setDialogText(text.toStdString());
}

void DialogModel::pressAccessory(int index) {
  if (index >= 0) navigation_.pressAccessoryButton(static_cast<std::size_t>(index));
}

void DialogModel::choose() {
  const auto& dialog = navigation_.dialog();
  if (!dialog || !dialog->color || !color_.settle()) return;
  navigation_.completeColorDialog(color_.value());
}

}  // namespace quellar::host::window

// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/color.h"

namespace quellar::platform {

enum class ButtonStyle { plain, cancel, destructive };

struct DialogButton {
  std::string title;
  ButtonStyle style = ButtonStyle::plain;
  /// Runs when the button is pressed, with the text of the dialog's field ("" where it has none).
  std::function<void(const std::string& text)> handler;
};

/// A button of the bar above the keyboard.
struct AccessoryButton {
  std::string title;
  std::function<void()> handler;
};

enum class DialogKind { alert, sheet, color };
enum class KeyboardType { standard, numberPad };

/// What a colour dialog is for: the colour that it starts from, and what runs with the colour that was picked.
struct ColorChoice {
  Color start;
  bool showAlpha = false;
  std::function<void(const Color&)> completion;
};

/// A dialog that a page presents: an alert, an action sheet or the colour chooser.
struct Dialog {
  DialogKind kind = DialogKind::alert;
  std::string title;
  std::string message;
  std::vector<DialogButton> buttons;
  /// The text of its text field; nothing where it has none.
  std::optional<std::string> text;
  KeyboardType keyboardType = KeyboardType::standard;
  std::vector<AccessoryButton> accessory;
  /// On a pad: points at the navigation item's right bar button.
  bool anchoredToRightBar = false;
  /// For a colour dialog.
  std::optional<ColorChoice> color;
};

}  // namespace quellar::platform

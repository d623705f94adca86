// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/cell.h"
#include "platform/platform.h"

namespace quellar::cells {

/// A label of a cell.
struct Label {
  std::string text;
  platform::Rect frame;
  platform::Color color;
};

/// Tags that tell the dialogs of a slider row apart.
inline constexpr int kValueEntryTag = 342879;
inline constexpr int kErrorTag = 85230234;

/// A slider with a title line above it, an optional footnote below it and a tap area over its value, which opens a
/// dialog for typing an exact value. A typed value within the bounds is handed to the page through the notification
/// "sliderValueChanged" in the process.
class KVQuellarSliderCell : public platform::PSSliderTableCell,
                            public std::enable_shared_from_this<KVQuellarSliderCell> {
 public:
  KVQuellarSliderCell(platform::Platform& platform, platform::PSSpecifier& specifier, platform::Rect frame);

  [[nodiscard]] std::string className() const override { return "KVQuellarSliderCell"; }
  [[nodiscard]] platform::Control control() const override { return platform::Control::typedSlider; }

  [[nodiscard]] const Label& labelText() const { return labelText_; }
  void setLabelText(Label label) { labelText_ = std::move(label); }
  /// The footnote; nothing where the row has none.
  [[nodiscard]] const std::optional<Label>& footerText() const { return footerText_; }
  void setFooterText(std::optional<Label> label) { footerText_ = std::move(label); }
  /// The area over the value whose tap opens the dialog.
  [[nodiscard]] const platform::Rect& tapArea() const { return tapArea_; }
  platform::Color minimumTrackTint{65, 169, 214, 1};
  platform::Color maximumTrackTint{22, 36, 51, 1};

  /// Shows a fresh, empty entry dialog.
  void presentPopup();
  /// Puts "-" before the typed text, or takes it away where it stands there.
  void typeMinus();
  /// Appends "." to the typed text.
  void typePoint();
  /// A button of a dialog was pressed: `tag` tells which dialog, `text` is what its field held. "Enter" posts a value
  /// within the bounds, both included, and answers another one with the error dialog; the error dialog's button shows a
  /// fresh entry dialog.
  void alertViewClickedButtonAtIndex(int tag, int buttonIndex, const std::string& text);

 private:
  platform::Platform& platform_;
  Label labelText_;
  std::optional<Label> footerText_;
  platform::Rect tapArea_;
};

/// The longest decimal number that a text begins with, with or without a sign and an exponent, as a 32-bit float; 0
/// where there is none. Leading blanks are passed over; a number too large for the type is infinite, one too small is
/// 0.
[[nodiscard]] float floatValue(std::string_view text);

}  // namespace quellar::cells

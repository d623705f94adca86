// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>

#include "platform/color.h"
#include "platform/specifier.h"

namespace quellar::platform {

/// A frame in points.
struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
  bool operator==(const Rect&) const = default;
};

/// What a row offers the user. A closed set: a host has one way to draw and to drive each.
enum class Control {
  group,
  link,
  picker,
  pickerItem,
  toggle,
  slider,
  typedSlider,
  stepper,
  text,
  segment,
  button,
  color,
  staticText,
};

/// The cell of a row: what the host draws it from. A cell belongs to its row object and is made when the row is first
/// shown.
class PSTableCell {
 public:
  /// Takes the row, which must outlive the cell's use, and the cell's size in points.
  PSTableCell(PSSpecifier& specifier, Rect frame) : specifier_(specifier), frame_(frame) {}
  virtual ~PSTableCell() = default;
  PSTableCell(const PSTableCell&) = delete;
  PSTableCell& operator=(const PSTableCell&) = delete;

  [[nodiscard]] virtual std::string className() const;
  [[nodiscard]] virtual Control control() const;
  /// Called once the cell is in its page and whenever its row was reloaded.
  virtual void layoutSubviews() {}

  [[nodiscard]] PSSpecifier& specifier() const { return specifier_; }
  [[nodiscard]] const Rect& frame() const { return frame_; }

  /// Colour of the title label.
  Color titleColor;
  /// On-tint of a switch, where the page's appearance sets one.
  std::optional<Color> onTint;

 private:
  PSSpecifier& specifier_;
  Rect frame_;
};

/// The cell of a slider row: its bounds are the row's, its value is where the knob stands.
class PSSliderTableCell : public PSTableCell {
 public:
  using PSTableCell::PSTableCell;

  [[nodiscard]] std::string className() const override { return "PSSliderTableCell"; }
  [[nodiscard]] Control control() const override { return Control::slider; }
  /// Moves the knob to the row's value: the stored number, else the default, held within the bounds.
  void layoutSubviews() override;

  [[nodiscard]] double minimum() const;
  [[nodiscard]] double maximum() const;
  [[nodiscard]] double value() const { return value_; }
  /// Moves the knob; the value is held within the bounds.
  void setValue(double value);
  /// Whether the row shows the value beside the slider.
  [[nodiscard]] bool showValue() const;
  /// The value beside the slider, with as many decimals as the range needs: two up to a range of 2, one up to 50, none
  /// above.
  [[nodiscard]] std::string valueText() const;

 private:
  double value_ = 0;
};

/// Height of a cell in points.
inline constexpr double kCellHeight = 44;

}  // namespace quellar::platform

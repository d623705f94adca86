// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/cell.h"
#include "platform/platform.h"

namespace quellar::cells {

/// A drawn picture: rows of 8-bit red, green, blue and alpha, premultiplied.
struct Picture {
  /// Points.
  double width = 0;
  double height = 0;
  /// Pixels a point.
  double scale = 1;
  int pixelWidth = 0;
  int pixelHeight = 0;
  std::vector<std::uint8_t> pixels = {};

  /// The colour of a pixel.
  [[nodiscard]] platform::Color colorAt(int x, int y) const;
};

/// Draws the round swatch of a colour string, 30 x 30 points at a scale, anti-aliased and opaque. What follows a ":" is
/// left out and the first character is always skipped, so a string without "#" loses its first digit; what does not
/// scan as hexadecimal is black.
[[nodiscard]] Picture _accessoryImageForColor(std::string_view color, double scale);

/// A colour row: the swatch of the stored colour at its right edge. It reads the store, not the page's dictionary.
class KVQuellarColorPreviewTableCell : public platform::PSTableCell {
 public:
  KVQuellarColorPreviewTableCell(platform::Platform& platform, platform::PSSpecifier& specifier, platform::Rect frame);

  [[nodiscard]] std::string className() const override { return "KVQuellarColorPreviewTableCell"; }
  [[nodiscard]] platform::Control control() const override { return platform::Control::color; }
  [[nodiscard]] const Picture& swatch() const { return swatch_; }

 private:
  Picture swatch_;
};

}  // namespace quellar::cells

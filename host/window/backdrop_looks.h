// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <cstdint>
#include <span>

namespace quellar::host::window {

/// How a backdrop style changes what lies beneath it, in this order.
struct BackdropLook {
  std::int64_t style;
  /// Points, as the standard deviation of the blur.
  double blur;
  /// 1 keeps the colours, 0 is grey.
  double saturation;
  /// A factor; 1 keeps the light.
  double brightness;
  /// Laid over all, as opaque as its alpha.
  QRgb tint;
};

/// The looks of all styles, ordered by number. No two are alike.
[[nodiscard]] std::span<const BackdropLook> backdropLooks();

/// The look of a style; nullptr where there is no such style.
[[nodiscard]] const BackdropLook* backdropLook(std::int64_t style);

}  // namespace quellar::host::window

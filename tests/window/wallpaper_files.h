// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QImage>
#include <cstdint>
#include <functional>
#include <string>

namespace quellar::tests {

/// Where the wallpaper lies in a device root, without its extension.
inline constexpr const char* kWallpaper = "var/mobile/Library/SpringBoard/LockBackground";

/// The bytes of a platform bitmap: the pixels row by row, each row padded to a multiple of eight, and the trailer.
inline std::string bitmapBytes(int width, int height, const std::function<QRgb(int x, int y)>& pixel) {
  const int row = (width + 7) / 8 * 8;
  std::string bytes(static_cast<std::size_t>(row) * static_cast<std::size_t>(height) * 4, '\xcd');
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const QRgb color = pixel(x, y);
      char* at =
          &bytes[(static_cast<std::size_t>(y) * static_cast<std::size_t>(row) + static_cast<std::size_t>(x)) * 4];
      at[0] = static_cast<char>(qBlue(color));
      at[1] = static_cast<char>(qGreen(color));
      at[2] = static_cast<char>(qRed(color));
      at[3] = static_cast<char>(qAlpha(color));
    }
  }
  for (const int number : {width, height, 0, 0, 0}) {
    for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(number >> shift & 0xFF);
  }
  return bytes;
}

/// A picture with edges, hues and lights: what any backdrop style changes in some way.
inline QRgb colorfulPixel(int x, int y) {
  const QColor color = QColor::fromHsv(x * 7 % 360, 120 + y % 120, (x / 24 + y / 24) % 2 == 0 ? 220 : 90);
  return color.rgb();
}

}  // namespace quellar::tests

// SPDX-License-Identifier: MIT
#include "cells/color_preview_cell.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "frame/row_value.h"

namespace quellar::cells {

using platform::Color;
using platform::PSSpecifier;

namespace {

constexpr double kSwatchPoints = 30;

// The platform's hexadecimal scanner: leading blanks and an "0x" are passed over, it stops at the first character that
// is no digit, and a number too large for 32 bits is the largest one.
std::uint32_t scanHex(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\r"), text.size()));
  if (text.starts_with("0x") || text.starts_with("0X")) text.remove_prefix(2);
  std::uint32_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value, 16);
  return result.ec == std::errc::result_out_of_range ? std::numeric_limits<std::uint32_t>::max() : value;
}

Color swatchColor(std::string_view text) {
  const std::string_view hex = text.substr(0, text.find(':'));
  // The first character goes whole, with the bytes that continue it.
  std::size_t digits = 1;
  while (digits < hex.size() && (static_cast<unsigned char>(hex[digits]) & 0xC0U) == 0x80U) ++digits;
  const std::uint32_t value = hex.empty() ? 0 : scanHex(hex.substr(digits));
  return {static_cast<std::uint8_t>(value >> 16U & 0xFFU), static_cast<std::uint8_t>(value >> 8U & 0xFFU),
          static_cast<std::uint8_t>(value & 0xFFU), 1};
}

// How much of a pixel lies in the disc, by a grid of samples.
double coverage(double x, double y, double center, double radius) {
  constexpr int kGrid = 8;
  const double reach = std::hypot(x + 0.5 - center, y + 0.5 - center);
  if (reach <= radius - 1) return 1;
  if (reach >= radius + 1) return 0;
  int inside = 0;
  for (int row = 0; row < kGrid; ++row) {
    for (int column = 0; column < kGrid; ++column) {
      const double dx = x + (column + 0.5) / kGrid - center;
      const double dy = y + (row + 0.5) / kGrid - center;
      if (dx * dx + dy * dy <= radius * radius) ++inside;
    }
  }
  return static_cast<double>(inside) / (kGrid * kGrid);
}

}  // namespace

Color Picture::colorAt(int x, int y) const {
  const std::size_t at =
      4 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(pixelWidth) + static_cast<std::size_t>(x));
  const std::uint8_t alpha = pixels.at(at + 3);
  const auto straight = [&](std::size_t component) {
    if (alpha == 0) return std::uint8_t{0};
    return static_cast<std::uint8_t>(std::min(255L, std::lround(pixels[at + component] * 255.0 / alpha)));
  };
  return {straight(0), straight(1), straight(2), alpha / 255.0};
}

Picture _accessoryImageForColor(std::string_view color, double scale) {
  const Color fill = swatchColor(color);
  Picture picture{.width = kSwatchPoints, .height = kSwatchPoints, .scale = scale};
  const int side = std::max(1, static_cast<int>(std::ceil(kSwatchPoints * scale)));
  picture.pixelWidth = side;
  picture.pixelHeight = side;
  picture.pixels.reserve(4 * static_cast<std::size_t>(side) * static_cast<std::size_t>(side));
  const double radius = kSwatchPoints * scale / 2;
  for (int y = 0; y < side; ++y) {
    for (int x = 0; x < side; ++x) {
      const double part = coverage(x, y, radius, radius);
      for (const std::uint8_t component : {fill.red, fill.green, fill.blue, std::uint8_t{255}}) {
        picture.pixels.push_back(static_cast<std::uint8_t>(std::lround(component * part)));
      }
    }
  }
  return picture;
}

KVQuellarColorPreviewTableCell::KVQuellarColorPreviewTableCell(platform::Platform& platform, PSSpecifier& specifier,
                                                               platform::Rect frame)
    : PSTableCell(specifier, frame) {
  const auto shown = frame::shownValue(specifier);
  const auto* text = shown ? shown->as<std::string>() : nullptr;
  swatch_ = _accessoryImageForColor(text ? *text : std::string_view(), platform.device.screenScale());
}

}  // namespace quellar::cells

// SPDX-License-Identifier: MIT
#include "platform/color.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace quellar::platform {

std::optional<Color> colorFromString(std::string_view text) {
  if (text.starts_with('#')) text.remove_prefix(1);
  double alpha = 1;
  if (const auto colon = text.find(':'); colon != std::string_view::npos) {
    const std::string_view tail = text.substr(colon + 1);
    const auto [end, error] = std::from_chars(tail.data(), tail.data() + tail.size(), alpha, std::chars_format::fixed);
    if (error != std::errc() || end != tail.data() + tail.size() || !(alpha >= 0 && alpha <= 1)) return std::nullopt;
    text = text.substr(0, colon);
  }
  std::uint32_t digits = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), digits, 16);
  if (text.size() != 6 || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return Color{static_cast<std::uint8_t>(digits >> 16U), static_cast<std::uint8_t>(digits >> 8U & 0xFFU),
               static_cast<std::uint8_t>(digits & 0xFFU), alpha};
}

std::string hexString(const Color& color) {
  static constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text = "#";
  for (const std::uint8_t component : std::array{color.red, color.green, color.blue}) {
    text += kDigits[component >> 4U];
    text += kDigits[component & 0x0FU];
  }
  return text;
}

std::string hexFromColor(const Color& color, bool alphaShown) {
  std::string text = hexString(color);
  if (alphaShown && color.alpha < 1) {
    const int hundredths = static_cast<int>(std::lround(std::max(color.alpha, 0.0) * 100));
    std::array<char, 16> suffix{};
    std::snprintf(suffix.data(), suffix.size(), ":%d.%02d", hundredths / 100, hundredths % 100);
    text += suffix.data();
  }
  return text;
}

Color LCPParseColorString(std::string_view text, std::string_view fallback) {
  if (const auto color = colorFromString(text)) return *color;
  return colorFromString(fallback).value_or(Color{});
}

}  // namespace quellar::platform

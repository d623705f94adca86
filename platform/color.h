// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quellar::platform {

/// A colour of the screen: components from 0 to 255, alpha from 0 to 1.
struct Color {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  double alpha = 1;
  bool operator==(const Color&) const = default;
};

/// "#rrggbb" in lower case; alpha is left out.
[[nodiscard]] std::string hexString(const Color& color);

/// "#rrggbb" in lower case; where the alpha slider was shown and alpha is below 1, ":" and alpha with two decimals
/// follow ("#ff0000:0.50").
[[nodiscard]] std::string hexFromColor(const Color& color, bool alphaShown);

/// Reads six hexadecimal digits, with or without "#" before them and ":" and an alpha from 0 to 1 after them; nothing
/// for anything else.
[[nodiscard]] std::optional<Color> colorFromString(std::string_view text);

/// The same; what is no colour gives the fallback, and a fallback that is no colour gives black.
[[nodiscard]] Color LCPParseColorString(std::string_view text, std::string_view fallback);

}  // namespace quellar::platform

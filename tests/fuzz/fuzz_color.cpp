// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <vector>

#include "cells/color_preview_cell.h"
#include "cells/slider_cell.h"
#include "platform/color.h"
#include "targets.h"

namespace quellar::tests::fuzz {

using platform::Color;

namespace {

bool isSixDigits(std::string_view text) {
  return text.size() == 6 && text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

bool isDecimals(std::string_view text) {
  const std::size_t point = std::min(text.find('.'), text.size());
  return point > 0 && text.find_first_not_of("0123456789") >= point &&
         text.find_first_not_of("0123456789", point + 1) == std::string_view::npos;
}

void readColor(std::string_view text) {
  const auto read = platform::colorFromString(text);
  const std::string_view digits = text.substr(text.starts_with('#') ? 1 : 0);
  if (!read) {
    demand(!isSixDigits(digits), "six digits are a colour");
    return;
  }
  demand(isSixDigits(digits.substr(0, digits.find(':'))), "a colour is six digits");
  const auto number = std::strtoul(std::string(digits.substr(0, 6)).c_str(), nullptr, 16);
  demand(read->red == number >> 16U && read->green == (number >> 8U & 0xFFU) && read->blue == (number & 0xFFU),
         "the components are those of the digits");
  demand(read->alpha >= 0 && read->alpha <= 1, "alpha is from 0 to 1");

  const std::string written = platform::hexFromColor(*read, true);
  const auto again = platform::colorFromString(written);
  demand(again.has_value(), "what is written is a colour");
  demand(platform::hexString(*again) == platform::hexString(*read), "the components read back equal");
  // Two decimals are written.
  demand(std::abs(again->alpha - read->alpha) <= 0.005 + 1e-9, "alpha reads back equal");

  // The swatch leaves the first character out, whatever it is.
  const auto swatch = cells::_accessoryImageForColor("#" + std::string(digits), 0.2);
  const Color middle = swatch.colorAt(swatch.pixelWidth / 2, swatch.pixelHeight / 2);
  demand(platform::hexString(middle) == platform::hexString(*read), "the swatch shows the colour");
}

void readNumber(std::string_view text) {
  const float number = cells::floatValue(text);
  demand(!std::isnan(number), "what is typed is a number");
  // Written plainly it is what the C library takes it for.
  if (isDecimals(text)) demand(number == std::strtof(std::string(text).c_str(), nullptr), "a plain number is exact");
}

}  // namespace

void color(std::string_view bytes) {
  const std::string_view text = bytes.substr(0, bytes.find('\n'));
  const std::string_view fallback = bytes.substr(std::min(text.size() + 1, bytes.size()));
  readColor(text);
  readColor(fallback);
  readNumber(text);
  const auto read = platform::colorFromString(text);
  const auto second = platform::colorFromString(fallback);
  demand(platform::LCPParseColorString(text, fallback) == (read ? *read : second.value_or(Color{})),
         "a text that is no colour gives the fallback, and one that is none black");

  // A swatch is drawn from any text.
  const auto swatch = cells::_accessoryImageForColor(text, 0.2);
  demand(swatch.pixels.size() == std::size_t{4} * static_cast<std::size_t>(swatch.pixelWidth * swatch.pixelHeight),
         "a swatch has all its pixels");
}

}  // namespace quellar::tests::fuzz

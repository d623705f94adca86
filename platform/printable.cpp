// SPDX-License-Identifier: MIT
#include "platform/printable.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace quellar::platform {

namespace {

struct Decoded {
  std::uint32_t codePoint;
  /// In bytes; 0 for what is no well-formed character.
  std::size_t length;
};

Decoded decoded(std::string_view text) {
  const auto byte = [&](std::size_t at) { return static_cast<std::uint8_t>(text[at]); };
  const std::uint8_t first = byte(0);
  if (first < 0x80) return {first, 1};
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || text.size() < length) return {0, 0};
  std::uint32_t codePoint = first & (0x7FU >> length);
  for (std::size_t at = 1; at < length; ++at) {
    if ((byte(at) & 0xC0U) != 0x80) return {0, 0};
    codePoint = codePoint << 6U | (byte(at) & 0x3FU);
  }
  const bool tooLong = (length == 3 && codePoint < 0x800) || (length == 4 && codePoint < 0x10000);
  const bool surrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
  return tooLong || surrogate || codePoint > 0x10FFFF ? Decoded{0, 0} : Decoded{codePoint, length};
}

bool isActedOn(std::uint32_t codePoint) {
  const auto within = [codePoint](std::uint32_t first, std::uint32_t last) {
    return codePoint >= first && codePoint <= last;
  };
  return codePoint < 0x20 || within(0x7F, 0x9F) || codePoint == 0x061C || within(0x200E, 0x200F) ||
         within(0x202A, 0x202E) || within(0x2066, 0x2069);
}

void append(std::string& text, const char* format, std::uint32_t number) {
  std::array<char, 16> escape{};
  std::snprintf(escape.data(), escape.size(), format, static_cast<unsigned>(number));
  text += escape.data();
}

}  // namespace

std::string printable(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const Decoded character = decoded(text);
    if (character.length == 0) {
      append(result, "\\x%02x", static_cast<std::uint8_t>(text.front()));
    } else if (isActedOn(character.codePoint)) {
      append(result, "\\u%04x", character.codePoint);
    } else {
      result += text.substr(0, character.length);
    }
    text.remove_prefix(character.length == 0 ? 1 : character.length);
  }
  return result;
}

}  // namespace quellar::platform

// SPDX-License-Identifier: MIT
#include "host/linux/utf8.h"

#include <cstdint>

namespace quellar::host::linux {

namespace {

constexpr bool isSurrogate(char32_t codePoint) {
  return codePoint >= 0xD800 && codePoint <= 0xDFFF;
}
constexpr char32_t kLastCodePoint = 0x10FFFF;

}  // namespace

Utf8Character firstCharacter(std::string_view text) {
  constexpr Utf8Character kBroken{kReplacementCharacter, 1, false};
  const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
  const std::uint8_t first = byte(0);
  if (first < 0x80) return {first, 1, true};

  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || text.size() < length) return kBroken;
  char32_t codePoint = first & (0x7Fu >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return kBroken;
    codePoint = codePoint << 6 | (byte(i) & 0x3Fu);
  }
  const bool tooLong = (length == 3 && codePoint < 0x800) || (length == 4 && codePoint < 0x10000);
  if (tooLong || isSurrogate(codePoint) || codePoint > kLastCodePoint) return kBroken;
  return {codePoint, length, true};
}

bool isUtf8(std::string_view text) {
  while (!text.empty()) {
    const Utf8Character character = firstCharacter(text);
    if (!character.wellFormed) return false;
    text.remove_prefix(character.length);
  }
  return true;
}

void appendUtf8(std::string& text, char32_t codePoint) {
  if (isSurrogate(codePoint) || codePoint > kLastCodePoint) codePoint = kReplacementCharacter;
  const auto add = [&](char32_t byte) { text.push_back(static_cast<char>(static_cast<std::uint8_t>(byte))); };
  if (codePoint < 0x80) {
    add(codePoint);
  } else if (codePoint < 0x800) {
    add(0xC0 | codePoint >> 6);
    add(0x80 | (codePoint & 0x3F));
  } else if (codePoint < 0x10000) {
    add(0xE0 | codePoint >> 12);
    add(0x80 | (codePoint >> 6 & 0x3F));
    add(0x80 | (codePoint & 0x3F));
  } else {
    add(0xF0 | codePoint >> 18);
    add(0x80 | (codePoint >> 12 & 0x3F));
    add(0x80 | (codePoint >> 6 & 0x3F));
    add(0x80 | (codePoint & 0x3F));
  }
}

}  // namespace quellar::host::linux

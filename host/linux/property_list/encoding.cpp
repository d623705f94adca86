// SPDX-License-Identifier: MIT
#include "host/linux/property_list/encoding.h"

#include <array>
#include <bit>

#include "host/linux/utf8.h"

namespace quellar::host::linux {

bool isAscii(std::string_view text) {
  // Without a branch the compiler looks at many bytes at once.
  unsigned char bits = 0;
  for (const char character : text) bits |= static_cast<unsigned char>(character);
  return bits < 0x80;
}

std::size_t widthOf(std::uint64_t number) {
  if (number <= 0xFF) return 1;
  if (number <= 0xFFFF) return 2;
  return number <= 0xFFFFFFFF ? 4 : 8;
}

std::uint64_t numberOf(std::string_view bytes) {
  std::uint64_t number = 0;
  for (const char byte : bytes) number = number << 8 | static_cast<std::uint8_t>(byte);
  return number;
}

void appendNumber(std::string& bytes, std::uint64_t number, std::size_t width) {
  std::array<char, 8> ordered{};
  for (std::size_t place = 0; place < width; ++place) {
    ordered[place] = static_cast<char>(number >> (8 * (width - 1 - place)) & 0xFF);
  }
  bytes.append(ordered.data(), width);
}

void appendMarker(std::string& bytes, ObjectType type, std::size_t low) {
  bytes += static_cast<char>(static_cast<std::size_t>(type) << 4 | low);
}

void appendInteger(std::string& bytes, std::uint64_t number) {
  const std::size_t width = widthOf(number);
  // The low half is the power of two that the width is.
  appendMarker(bytes, ObjectType::Integer, static_cast<std::size_t>(std::countr_zero(width)));
  appendNumber(bytes, number, width);
}

void appendCounted(std::string& bytes, ObjectType type, std::size_t count) {
  if (count < kCountFollows) {
    appendMarker(bytes, type, count);
  } else {
    appendMarker(bytes, type, kCountFollows);
    appendInteger(bytes, count);
  }
}

void appendText(std::string& bytes, std::string_view text) {
  if (isAscii(text)) {
    appendCounted(bytes, ObjectType::NarrowText, text.size());
    bytes += text;
    return;
  }
  std::string units;
  while (!text.empty()) {
    const Utf8Character character = firstCharacter(text);
    text.remove_prefix(character.length);
    if (character.codePoint < 0x10000) {
      appendNumber(units, character.codePoint, 2);
    } else {
      const std::uint32_t above = character.codePoint - 0x10000;
      appendNumber(units, 0xD800 + (above >> 10), 2);
      appendNumber(units, 0xDC00 + (above & 0x3FF), 2);
    }
  }
  appendCounted(bytes, ObjectType::WideText, units.size() / 2);
  bytes += units;
}

std::string_view contentOf(std::string_view object) {
  if (lowHalf(object[0]) != kCountFollows) return object.substr(1);
  return object.substr(2 + (std::size_t{1} << lowHalf(object[1])));
}

std::string textOfUtf16(std::string_view units) {
  std::string text;
  text.reserve(units.size());
  for (std::size_t at = 0; at < units.size(); at += 2) {
    auto codePoint = static_cast<char32_t>(numberOf(units.substr(at, 2)));
    if (codePoint >= 0xD800 && codePoint <= 0xDBFF) {
      at += 2;
      const auto low = static_cast<char32_t>(numberOf(units.substr(at, 2)));
      codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (low - 0xDC00);
    }
    appendUtf8(text, codePoint);
  }
  return text;
}

}  // namespace quellar::host::linux

// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <cstdio>

#include "host/linux/string_table.h"
#include "host/linux/utf8.h"
#include "targets.h"

namespace quellar::tests::fuzz {

using host::linux::StringTable;

namespace {

std::string inQuotes(std::string_view text) {
  std::string result = "\"";
  for (const char each : text) {
    if (each == '"' || each == '\\') {
      result += '\\';
      result += each;
    } else if (static_cast<unsigned char>(each) < 0x20) {
      std::array<char, 8> escape{};
      std::snprintf(escape.data(), escape.size(), "\\%03o", static_cast<unsigned>(each));
      result += escape.data();
    } else {
      result += each;
    }
  }
  return result + '"';
}

/// UTF-8 as UTF-16 with its byte order mark.
std::string asUtf16(std::string_view text, bool bigEndian) {
  std::string bytes;
  const auto append = [&](char32_t unit) {
    const char high = static_cast<char>(unit >> 8U);
    const char low = static_cast<char>(unit & 0xFFU);
    bytes += bigEndian ? high : low;
    bytes += bigEndian ? low : high;
  };
  append(0xFEFF);
  while (!text.empty()) {
    const auto character = host::linux::firstCharacter(text);
    text.remove_prefix(character.length);
    if (character.codePoint >= 0x10000) {
      append(0xD800 + ((character.codePoint - 0x10000) >> 10U));
      append(0xDC00 + ((character.codePoint - 0x10000) & 0x3FFU));
    } else {
      append(character.codePoint);
    }
  }
  return bytes;
}

}  // namespace

void stringTable(std::string_view bytes) {
  const StringTable table = host::linux::parseStringTable(bytes);
  demand(table.problems.size() <= 100, "no more than a hundred problems are told");
  const auto lines = static_cast<std::size_t>(std::ranges::count(bytes, '\n') + std::ranges::count(bytes, '\r')) + 1;
  for (const auto& problem : table.problems) {
    demand(problem.line >= 1 && problem.line <= lines, "a problem lies in the file");
    demand(host::linux::isUtf8(problem.what), "a problem can be printed");
  }

  std::string written;
  for (const auto& [key, value] : table.entries) {
    demand(host::linux::isUtf8(key) && host::linux::isUtf8(value), "texts are well-formed");
    written += inQuotes(key) + " = " + inQuotes(value) + ";\n";
  }
  for (const std::string& form : {written, asUtf16(written, false), asUtf16(written, true)}) {
    const StringTable again = host::linux::parseStringTable(form);
    demand(again.entries == table.entries, "what was read, written plainly, reads back equal");
    demand(again.problems.empty(), "what was written plainly has no problems");
  }
}

}  // namespace quellar::tests::fuzz

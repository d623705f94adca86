// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quellar::host::linux {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

/// One character of UTF-8 text: its code point and the number of its bytes.
struct Utf8Character {
  char32_t codePoint;
  std::size_t length;
  /// False for a byte that begins no well-formed character; it then stands alone as U+FFFD.
  bool wellFormed;
};

/// The character at the start of a text that is not empty, as RFC 3629 has it: no surrogates, no longer forms than
/// needed, nothing above U+10FFFF.
[[nodiscard]] Utf8Character firstCharacter(std::string_view text);

/// True where all of the text is well-formed UTF-8.
[[nodiscard]] bool isUtf8(std::string_view text);

/// Appends a code point; a surrogate or a number above U+10FFFF as U+FFFD.
void appendUtf8(std::string& text, char32_t codePoint);

}  // namespace quellar::host::linux

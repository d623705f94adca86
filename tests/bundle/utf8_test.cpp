// SPDX-License-Identifier: MIT
#include "host/linux/utf8.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quellar::host::linux {
namespace utf8_test {

TEST(Utf8, TellsWellFormedTextFromOther) {
  for (const std::string text : {"", "plain", "ü", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80",
                                 "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
    EXPECT_TRUE(isUtf8(text)) << text;
  }
  const std::vector<std::string> broken = {
      "\x80",              // no first byte
      "\xC3",              // cut off
      "\xE2\x82",          // cut off
      "\xF0\x9F\x98",      // cut off
      "\xC3(",             // no following byte
      "\xC1\xBF",          // longer than needed
      "\xE0\x9F\xBF",      // longer than needed
      "\xF0\x8F\xBF\xBF",  // longer than needed
      "\xED\xA0\x80",      // a surrogate
      "\xED\xBF\xBF",      // a surrogate
      "\xF4\x90\x80\x80",  // above U+10FFFF
      "\xF8\x88\x80\x80\x80",
      "\xFF",
  };
  for (const std::string& text : broken) EXPECT_FALSE(isUtf8("ok" + text + "ok")) << text;
}

TEST(Utf8, ReadsBackTheCodePointsThatItWrites) {
  for (char32_t codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
    const bool isSurrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
    std::string text;
    appendUtf8(text, codePoint);
    const Utf8Character character = firstCharacter(text);
    ASSERT_EQ(character.codePoint, isSurrogate ? kReplacementCharacter : codePoint);
    ASSERT_EQ(character.length, text.size());
    ASSERT_TRUE(character.wellFormed);
  }
  std::string above;
  appendUtf8(above, 0x110000);
  EXPECT_EQ(above, "\uFFFD");
}

}  // namespace utf8_test
}  // namespace quellar::host::linux

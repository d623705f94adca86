// SPDX-License-Identifier: MIT
#include "platform/printable.h"

#include <gtest/gtest.h>

namespace quellar::tests {
namespace printable_test {

using platform::printable;

TEST(Printable, LeavesATextAsItIs) {
  EXPECT_EQ(printable(""), "");
  EXPECT_EQ(printable("a \"b\" \\ c~"), "a \"b\" \\ c~");
  EXPECT_EQ(printable("\xc2\xa0\xc3\xa9 \xd8\xa7 \xe2\x80\x8d\xe2\x81\xaa \xf0\x9f\x98\x80"),
            "\xc2\xa0\xc3\xa9 \xd8\xa7 \xe2\x80\x8d\xe2\x81\xaa \xf0\x9f\x98\x80");
}

TEST(Printable, WritesWhatATerminalOrAReaderActsOnAsItsNumber) {
  EXPECT_EQ(printable(std::string_view("\0\t\n\r\x1b\x1f\x7f", 7)), R"(\u0000\u0009\u000a\u000d\u001b\u001f\u007f)");
  EXPECT_EQ(printable("\xc2\x80\xc2\x85\xc2\x9b\xc2\x9f"), R"(\u0080\u0085\u009b\u009f)");
  EXPECT_EQ(printable("\xd8\x9c\xe2\x80\x8e\xe2\x80\x8f"), R"(\u061c\u200e\u200f)");
  EXPECT_EQ(printable("\xe2\x80\xa8\xe2\x80\xa9\xe2\x80\xaa\xe2\x80\xae"), "\xe2\x80\xa8\xe2\x80\xa9\\u202a\\u202e");
  EXPECT_EQ(printable("\xe2\x81\xa6\xe2\x81\xa9"), R"(\u2066\u2069)");
}

TEST(Printable, WritesBytesThatAreNoUtf8AsTheirNumbers) {
  EXPECT_EQ(printable("a\x9b\xff"), R"(a\x9b\xff)");
  EXPECT_EQ(printable("\xc2"), R"(\xc2)");
  EXPECT_EQ(printable("\xc0\xaf\xe0\x80\x80"), R"(\xc0\xaf\xe0\x80\x80)") << "longer forms than needed";
  EXPECT_EQ(printable("\xed\xa0\x80"), R"(\xed\xa0\x80)") << "a surrogate";
  EXPECT_EQ(printable("\xf4\x90\x80\x80"), R"(\xf4\x90\x80\x80)");
}

}  // namespace printable_test
}  // namespace quellar::tests

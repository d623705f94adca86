// SPDX-License-Identifier: MIT
#include "host/linux/string_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <ostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "host/linux/utf8.h"

namespace quellar::host::linux {

void PrintTo(const StringTable::Problem& problem, std::ostream* stream) {
  *stream << problem.line << ": " << problem.what;
}

namespace string_table_test {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::Pair;

using Problem = StringTable::Problem;

// UTF-16 of text in the basic plane, written as UTF-32.
std::string utf16(std::u32string_view text, bool bigEndian) {
  std::string bytes;
  for (const char32_t unit : text) {
    const char high = static_cast<char>(unit >> 8);
    const char low = static_cast<char>(unit & 0xFF);
    bytes += bigEndian ? high : low;
    bytes += bigEndian ? low : high;
  }
  return bytes;
}

TEST(StringTable, ReadsStatementsOfQuotedTexts) {
  const StringTable table = parseStringTable("\"Status Bar\" = \"Statusleiste\";\n\"Dock\"=\"Dock\" ;\"a\"\n=\n\"b\";");
  EXPECT_THAT(table.entries, ElementsAre(Pair("Dock", "Dock"), Pair("Status Bar", "Statusleiste"), Pair("a", "b")));
  EXPECT_THAT(table.problems, ElementsAre());
}

TEST(StringTable, ReadsWordsWithoutQuotesSingleQuotesAndKeysAlone) {
  const StringTable table =
      parseStringTable("key_1 = com.vantorick/a-b:$2;\n'it' = 'he said \"no\"';\nalone;\n\"me too\";");
  EXPECT_THAT(table.entries, ElementsAre(Pair("alone", "alone"), Pair("it", "he said \"no\""),
                                         Pair("key_1", "com.vantorick/a-b:$2"), Pair("me too", "me too")));
  EXPECT_THAT(table.problems, ElementsAre());
}

TEST(StringTable, SkipsCommentsWhereverTheyStand) {
  const StringTable table = parseStringTable(
      "/* one\n \"no\" = \"no\"; */ // two \"no\" = \"no\";\n"
      "a/* three */=// four ; \r\n\"/* five */ // six\"/**/;//seven\r b = c; /***/");
  EXPECT_THAT(table.entries, ElementsAre(Pair("a", "/* five */ // six"), Pair("b", "c")));
  EXPECT_THAT(table.problems, ElementsAre());
}

TEST(StringTable, ResolvesEscapes) {
  const StringTable table = parseStringTable(R"("a" = "\n\t\r\a\b\f\v";)"
                                             R"("b" = "\"\\\'\/\q";)"
                                             R"("c" = "\101\7\0618\351";)"
                                             R"("d" = "\u00e9\U2192\uD83D\uDE00";)"
                                             "\"e\" = \"one\\\ntwo\nthree\";"
                                             "\"\\u0066\" = '\\'';");
  EXPECT_THAT(table.entries, ElementsAre(Pair("a", "\n\t\r\a\b\f\v"), Pair("b", "\"\\'/q"), Pair("c", "A\a18é"),
                                         Pair("d", "é→😀"), Pair("e", "one\ntwo\nthree"), Pair("f", "'")));
  EXPECT_THAT(table.problems, ElementsAre());
}

TEST(StringTable, MendsEscapesThatMeanNoCharacter) {
  const StringTable table = parseStringTable(
      "a = \"\\uD83D!\";\nb = \"\\uDE00\";\nc = \"\\u12g4\";\nd = \"\\777\";\ne = \"x\\0y\";\nf = \"\\uD83D\\u0041\";\n"
      "g = \"\\u00");
  EXPECT_THAT(table.entries, ElementsAre(Pair("a", "\uFFFD!"), Pair("b", "\uFFFD"), Pair("c", "u12g4"),
                                         Pair("d", "\uFFFD"), Pair("e", "x\uFFFDy"), Pair("f", "\uFFFDA")));
  EXPECT_THAT(table.problems, ElementsAre(Problem{1, "half a surrogate pair"}, Problem{2, "half a surrogate pair"},
                                          Problem{3, "a Unicode escape without four hexadecimal digits"},
                                          Problem{4, "an octal escape above 377"}, Problem{5, "a zero character"},
                                          Problem{6, "half a surrogate pair"},
                                          Problem{7, "a Unicode escape without four hexadecimal digits"},
                                          Problem{7, "a text without its closing quote"}));
}

TEST(StringTable, ReadsUtf8WithAndWithoutAMark) {
  for (const std::string mark : {"", "\xEF\xBB\xBF"}) {
    const StringTable table = parseStringTable(mark + "\"Größe →\" = \"尺寸 😀\";");
    EXPECT_THAT(table.entries, ElementsAre(Pair("Größe →", "尺寸 😀")));
    EXPECT_THAT(table.problems, ElementsAre());
  }
}

TEST(StringTable, ReadsUtf16OfEitherByteOrderWithAndWithoutAMark) {
  for (const bool bigEndian : {true, false}) {
    for (const std::u32string mark : {U"", U"\uFEFF"}) {
      const StringTable table =
          parseStringTable(utf16(mark + U"/* ü */\n\"Größe\" = \"尺\xD83D\xDE00\"; // é\n", bigEndian));
      EXPECT_THAT(table.entries, ElementsAre(Pair("Größe", "尺😀")));
      EXPECT_THAT(table.problems, ElementsAre());
    }
  }
}

TEST(StringTable, MendsUtf16ThatIsNotWellFormed) {
  const StringTable table =
      parseStringTable(utf16(U"\uFEFFa = \"\xD83D!\";\nb = \"\xDE00\";\nc = d;\xD83D", true) + "x");
  EXPECT_THAT(table.entries, ElementsAre(Pair("a", "\uFFFD!"), Pair("b", "\uFFFD"), Pair("c", "d")));
  EXPECT_THAT(
      table.problems,
      ElementsAre(Problem{1, "text that is not well-formed UTF-16"}, Problem{2, "text that is not well-formed UTF-16"},
                  Problem{3, "text that is not well-formed UTF-16"}, Problem{3, "half a UTF-16 unit at the end"},
                  Problem{3, "a text is missing"}));
}

TEST(StringTable, MendsUtf8ThatIsNotWellFormed) {
  const StringTable table = parseStringTable(
      "a = \"x\xC3(\";\nb = \"\xED\xA0\x80\";\nc = \"\xC0\x80\";\nd = \"\xF4\x90\x80\x80\";\ne = f;\n");
  EXPECT_EQ(table.entries, (std::map<std::string, std::string, std::less<>>{{"a", "x\uFFFD("},
                                                                            {"b", "\uFFFD\uFFFD\uFFFD"},
                                                                            {"c", "\uFFFD\uFFFD"},
                                                                            {"d", "\uFFFD\uFFFD\uFFFD\uFFFD"},
                                                                            {"e", "f"}}));
  EXPECT_EQ(table.problems.front(), (Problem{1, "text that is not well-formed UTF-8"}));
  EXPECT_EQ(table.problems.back(), (Problem{4, "text that is not well-formed UTF-8"}));
  EXPECT_EQ(table.problems.size(), 10u);
}

TEST(StringTable, ASyntaxErrorLosesItsStatementAlone) {
  const std::string before = "\"first\" = \"1\";\n";
  const std::string after = "\n\"last\" = \"9\";\n";
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"\"no semicolon\" = \"x\"", "a statement without its semicolon"},
      {"\"no quote = \"x\";", "a statement without its semicolon"},
      {"\"no closing quote\" = \"x;", "a statement without its semicolon"},
      {"\"no value\" = ;", "a text is missing"},
      {"= \"no key\";", "a text is missing"},
      {"\"no equals sign\" \"x\";", "a statement without its semicolon"},
      {"\"two\" = \"x\" \"y\";", "a statement without its semicolon"},
      {"free text, as it comes", "a statement without its semicolon"},
      {"<html>", "a text is missing"},
      {"{", "a text is missing"},
      {";", "a text is missing"},
      {"\\", "a text is missing"},
      {"\x01\x02", "a text is missing"},
      {"/* a comment that never ends", "a comment without an end"},
  };
  for (const auto& [wrong, problem] : cases) {
    SCOPED_TRACE(wrong);
    const StringTable table = parseStringTable(std::string(before).append(wrong).append(after));
    EXPECT_THAT(table.entries, ElementsAre(Pair("first", "1"), Pair("last", "9")));
    EXPECT_THAT(table.problems, ElementsAre(Problem{2, problem}));
  }
}

TEST(StringTable, AfterASyntaxErrorTheNextStatementOfTheSameLineServes) {
  const StringTable table = parseStringTable("\"a\" = ; \"b\" = \"2\"; = ; c = d;");
  EXPECT_THAT(table.entries, ElementsAre(Pair("b", "2"), Pair("c", "d")));
  EXPECT_THAT(table.problems, ElementsAre(Problem{1, "a text is missing"}, Problem{1, "a text is missing"}));
}

TEST(StringTable, OfTwoEntriesOfAKeyTheLastOneServesAndThisIsTold) {
  const StringTable table = parseStringTable("a = one;\nb = x;\na = two;\n");
  EXPECT_THAT(table.entries, ElementsAre(Pair("a", "two"), Pair("b", "x")));
  EXPECT_THAT(table.problems, ElementsAre(Problem{3, "a key that stands twice"}));
}

TEST(StringTable, IsEmptyForNoBytesAndForMarksAlone) {
  for (const std::string& bytes : {""s, "\xEF\xBB\xBF"s, "\xFE\xFF"s, "\xFF\xFE"s, " \n/* nothing */"s}) {
    const StringTable table = parseStringTable(bytes);
    EXPECT_THAT(table.entries, ElementsAre());
    EXPECT_THAT(table.problems, ElementsAre());
  }
}

TEST(StringTable, RefusesATableThatIsTooLarge) {
  std::string bytes = "a = b;";
  bytes.resize(kStringTableSizeLimit, ' ');
  EXPECT_THAT(parseStringTable(bytes).entries, ElementsAre(Pair("a", "b")));
  bytes += ' ';
  const StringTable table = parseStringTable(bytes);
  EXPECT_THAT(table.entries, ElementsAre());
  EXPECT_THAT(table.problems, ElementsAre(Problem{1, "the table is larger than 4 MiB"}));
}

TEST(StringTable, ReportsAHundredProblemsAtMost) {
  std::string bytes;
  for (int i = 0; i < 1000; ++i) bytes += "?\n";
  bytes += "a = b;";
  const StringTable table = parseStringTable(bytes);
  EXPECT_THAT(table.entries, ElementsAre(Pair("a", "b")));
  ASSERT_EQ(table.problems.size(), 100u);
  EXPECT_EQ(table.problems.back(), (Problem{100, "a text is missing"}));
}

TEST(StringTable, TakesNoLongerThanItsLengthWhateverItHolds) {
  for (const std::string& piece :
       {"\""s,    "'\""s,      "\\\""s,  "/*"s,   "a /*\n"s,    "a\n"s,    "a = \"\\\n"s, "//\n"s,
        "\n"s,    "a = /*\n"s, "\"'\n"s, "\xFF"s, "a=\"\xFF"s,  "?;"s,     "?"s,          "a=b;a"s,
        "\"\\u"s, "a;"s,       "?\n"s,   "= \""s, "a /* */\n"s, "'\n\"\n"s}) {
    SCOPED_TRACE(piece);
    std::string bytes;
    while (bytes.size() < 256 * 1024) bytes += piece;
    // Some need an end that is far away from each beginning.
    for (const std::string& end : {""s, "*/"s, "\";"s}) {
      const auto began = std::chrono::steady_clock::now();
      const StringTable table = parseStringTable(bytes + end);
      EXPECT_LE(table.problems.size(), 100u);
      EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(3));
    }
  }
}

TEST(StringTable, TakesAnyBytesAndGivesWellFormedTexts) {
  std::mt19937 random(20240);
  const std::string alphabet = "\"\"\"'\\;;==/*/* \n\r\tabuU0127.\xC3\xA9\xFF"s + '\0';
  std::size_t entries = 0;
  for (int round = 0; round < 20000; ++round) {
    std::string bytes;
    for (std::size_t i = random() % 60; i > 0; --i) bytes += alphabet[random() % alphabet.size()];
    for (const auto& [key, value] : parseStringTable(bytes).entries) {
      ++entries;
      EXPECT_TRUE(isUtf8(key)) << bytes;
      EXPECT_TRUE(isUtf8(value)) << bytes;
      EXPECT_EQ(key.find('\0'), std::string::npos);
      EXPECT_EQ(value.find('\0'), std::string::npos);
    }
  }
  EXPECT_GT(entries, 1000u);
}

}  // namespace string_table_test
}  // namespace quellar::host::linux

// SPDX-License-Identifier: MIT
#include "host/linux/string_table.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

#include "host/linux/utf8.h"

namespace quellar::host::linux {

namespace {

constexpr std::size_t kProblemLimit = 100;

void note(StringTable& table, std::size_t line, std::string what) {
  if (table.problems.size() < kProblemLimit) table.problems.push_back({line, std::move(what)});
}

std::optional<unsigned> hexDigit(char character) {
  if (character >= '0' && character <= '9') return static_cast<unsigned>(character - '0');
  if (character >= 'a' && character <= 'f') return static_cast<unsigned>(character - 'a' + 10);
  if (character >= 'A' && character <= 'F') return static_cast<unsigned>(character - 'A' + 10);
  return std::nullopt;
}

bool isSpace(char character) {
  return character == ' ' || character == '\t' || character == '\n' || character == '\r' || character == '\f' ||
         character == '\v';
}

bool isLeadSurrogate(char32_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}
bool isTrailSurrogate(char32_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}
char32_t codePointOf(char32_t lead, char32_t trail) {
  return 0x10000 + ((lead - 0xD800) << 10) + (trail - 0xDC00);
}

// UTF-16 as UTF-8. Units that form no character become U+FFFD.
std::string fromUtf16(std::string_view bytes, bool bigEndian, StringTable& table) {
  const auto unitAt = [&](std::size_t i) {
    const auto first = static_cast<std::uint8_t>(bytes[i]);
    const auto second = static_cast<std::uint8_t>(bytes[i + 1]);
    return static_cast<char32_t>(bigEndian ? first << 8 | second : second << 8 | first);
  };
  std::string text;
  text.reserve(bytes.size());
  std::size_t line = 1;
  std::size_t i = 0;
  for (; i + 1 < bytes.size(); i += 2) {
    char32_t codePoint = unitAt(i);
    if (isLeadSurrogate(codePoint) && i + 3 < bytes.size() && isTrailSurrogate(unitAt(i + 2))) {
      codePoint = codePointOf(codePoint, unitAt(i + 2));
      i += 2;
    } else if (isLeadSurrogate(codePoint) || isTrailSurrogate(codePoint)) {
      note(table, line, "text that is not well-formed UTF-16");
    }
    if (codePoint == '\n') ++line;
    appendUtf8(text, codePoint);
  }
  if (i < bytes.size()) note(table, line, "half a UTF-16 unit at the end");
  return text;
}

// The first of some places in a text from a position on. The last search is kept: a table may hold many beginnings
// before one end, or none, and a search for each would take the square of its length.
class KeptSearch {
 public:
  template <typename Find>
  std::size_t operator()(std::size_t from, Find find) {
    if (from < from_ || from > found_) {
      from_ = from;
      found_ = find(from);
    }
    return found_;
  }

 private:
  // At first nothing is kept.
  std::size_t from_ = std::string_view::npos;
  std::size_t found_ = 0;
};

class Parser {
 public:
  Parser(std::string_view text, StringTable& table) : text_(text), table_(table) {}

  void parse() {
    for (;;) {
      skipSpaceAndComments();
      if (atEnd()) return;
      statement_ = position_;
      if (!parseStatement()) recover();
    }
  }

 private:
  [[nodiscard]] bool atEnd() const { return position_ >= text_.size(); }
  [[nodiscard]] char current() const { return text_[position_]; }
  [[nodiscard]] std::size_t endOfLine(std::size_t from) {
    return lineEnds_(from, [&](std::size_t at) { return std::min(text_.find_first_of("\r\n", at), text_.size()); });
  }

  void problemAt(std::size_t position, std::string_view what) {
    if (table_.problems.size() >= kProblemLimit) return;
    const auto lineFeeds = std::ranges::count(text_.substr(0, position), '\n');
    note(table_, static_cast<std::size_t>(lineFeeds) + 1, std::string(what));
  }

  // Told at the line where the statement begins: where a quote is missing, that is the culprit.
  void problem(std::string_view what) { problemAt(statement_, what); }

  bool fail(std::string_view what) {
    problem(what);
    return false;
  }

  bool accept(char character) {
    if (atEnd() || current() != character) return false;
    ++position_;
    return true;
  }

  void skipSpaceAndComments() {
    while (!atEnd()) {
      if (isSpace(current())) {
        ++position_;
      } else if (text_.substr(position_, 2) == "//") {
        position_ = endOfLine(position_);
      } else if (text_.substr(position_, 2) == "/*") {
        const std::size_t end = commentEnds_(position_ + 2, [&](std::size_t at) { return text_.find("*/", at); });
        if (end == std::string_view::npos) problemAt(position_, "a comment without an end");
        position_ = end == std::string_view::npos ? endOfLine(position_) : end + 2;
      } else {
        return;
      }
    }
  }

  bool parseStatement() {
    std::optional<std::string> key = parseText();
    if (!key) return false;
    skipSpaceAndComments();
    std::optional<std::string> value = key;
    if (accept('=')) {
      skipSpaceAndComments();
      value = parseText();
      if (!value) return false;
      skipSpaceAndComments();
    }
    if (!accept(';')) return fail("a statement without its semicolon");
    if (table_.entries.contains(*key)) problem("a key that stands twice");
    table_.entries.insert_or_assign(std::move(*key), std::move(*value));
    return true;
  }

  // Goes on after the next semicolon of the line on which the statement began, when the error was found there, or else
  // on the next line: where a quote or a semicolon is missing, the following statements are whole.
  void recover() {
    const std::size_t end = endOfLine(statement_);
    const std::size_t semicolon = position_ <= end ? text_.substr(0, end).find(';', position_) : std::string_view::npos;
    position_ = semicolon == std::string_view::npos ? end + 1 : semicolon + 1;
  }

  [[nodiscard]] bool atWord() const {
    const char character = current();
    if (character == '/') {
      const char next = position_ + 1 < text_.size() ? text_[position_ + 1] : '\0';
      return next != '/' && next != '*';
    }
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') ||
           std::string_view("_-.:$").find(character) != std::string_view::npos;
  }

  std::optional<std::string> parseText() {
    if (!atEnd() && (current() == '"' || current() == '\'')) return parseQuoted();
    const std::size_t begin = position_;
    while (!atEnd() && atWord()) ++position_;
    if (position_ == begin) {
      fail("a text is missing");
      return std::nullopt;
    }
    return std::string(text_.substr(begin, position_ - begin));
  }

  std::optional<std::string> parseQuoted() {
    const char quote = current();
    ++position_;
    std::string content;
    while (!atEnd() && current() != quote) {
      if (current() == '\\') {
        ++position_;
        if (!atEnd()) parseEscape(content);
        continue;
      }
      parseCharacter(content);
    }
    if (!accept(quote)) {
      fail("a text without its closing quote");
      return std::nullopt;
    }
    return content;
  }

  void parseCharacter(std::string& content) {
    const Utf8Character character = firstCharacter(text_.substr(position_));
    if (!character.wellFormed) problem("text that is not well-formed UTF-8");
    append(content, character.codePoint);
    position_ += character.length;
  }

  // What follows a backslash.
  void parseEscape(std::string& content) {
    const char character = current();
    switch (character) {
      case 'n':
        content += '\n';
        break;
      case 't':
        content += '\t';
        break;
      case 'r':
        content += '\r';
        break;
      case 'a':
        content += '\a';
        break;
      case 'b':
        content += '\b';
        break;
      case 'f':
        content += '\f';
        break;
      case 'v':
        content += '\v';
        break;
      case 'u':
      case 'U':
        parseUnicodeEscape(content);
        return;
      default:
        if (character >= '0' && character <= '7') {
          parseOctalEscape(content);
        } else {
          parseCharacter(content);
        }
        return;
    }
    ++position_;
  }

  void parseOctalEscape(std::string& content) {
    char32_t codePoint = 0;
    for (int i = 0; i < 3 && !atEnd() && current() >= '0' && current() <= '7'; ++i, ++position_) {
      codePoint = codePoint * 8 + static_cast<char32_t>(current() - '0');
    }
    if (codePoint > 0377) {
      problem("an octal escape above 377");
      codePoint = kReplacementCharacter;
    }
    append(content, codePoint);
  }

  // Four hexadecimal digits after the letter at `at`.
  [[nodiscard]] std::optional<char32_t> unicodeUnit(std::size_t at) const {
    if (at + 4 >= text_.size()) return std::nullopt;
    char32_t unit = 0;
    for (std::size_t i = at + 1; i <= at + 4; ++i) {
      const std::optional<unsigned> digit = hexDigit(text_[i]);
      if (!digit) return std::nullopt;
      unit = unit << 4 | *digit;
    }
    return unit;
  }

  void parseUnicodeEscape(std::string& content) {
    const std::optional<char32_t> unit = unicodeUnit(position_);
    if (!unit) {
      problem("a Unicode escape without four hexadecimal digits");
      content += current();
      ++position_;
      return;
    }
    position_ += 5;
    char32_t codePoint = *unit;
    const std::string_view next = text_.substr(position_, 2);
    if (isLeadSurrogate(codePoint) && (next == "\\u" || next == "\\U")) {
      const std::optional<char32_t> trail = unicodeUnit(position_ + 1);
      if (trail && isTrailSurrogate(*trail)) {
        codePoint = codePointOf(codePoint, *trail);
        position_ += 6;
      }
    }
    if (isLeadSurrogate(codePoint) || isTrailSurrogate(codePoint)) problem("half a surrogate pair");
    append(content, codePoint);
  }

  // A zero would end the text early for everybody who takes it as a C string.
  void append(std::string& content, char32_t codePoint) {
    if (codePoint == 0) problem("a zero character");
    appendUtf8(content, codePoint == 0 ? kReplacementCharacter : codePoint);
  }

  std::string_view text_;
  StringTable& table_;
  std::size_t position_ = 0;
  std::size_t statement_ = 0;
  KeptSearch lineEnds_;
  KeptSearch commentEnds_;
};

}  // namespace

StringTable parseStringTable(std::string_view bytes) {
  StringTable table;
  if (bytes.size() > kStringTableSizeLimit) {
    note(table, 1, "the table is larger than 4 MiB");
    return table;
  }
  std::string decoded;
  std::string_view text = bytes;
  const auto decode = [&](std::size_t markLength, bool bigEndian) {
    decoded = fromUtf16(bytes.substr(markLength), bigEndian, table);
    text = decoded;
  };
  const auto byteIsZero = [&](std::size_t i) { return bytes[i] == '\0'; };
  if (bytes.starts_with("\xFE\xFF")) {
    decode(2, true);
  } else if (bytes.starts_with("\xFF\xFE")) {
    decode(2, false);
  } else if (bytes.size() >= 2 && byteIsZero(0) != byteIsZero(1)) {
    decode(0, byteIsZero(0));
  } else if (bytes.starts_with("\xEF\xBB\xBF")) {
    text.remove_prefix(3);
  }
  Parser(text, table).parse();
  return table;
}

}  // namespace quellar::host::linux

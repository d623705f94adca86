// SPDX-License-Identifier: MIT
#include "host/linux/property_list_xml.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

#include "host/linux/property_list_rules.h"
#include "host/linux/utf8.h"

namespace quellar::host::linux {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kSpace = " \t\r\n";

bool isNameCharacter(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         (character >= '0' && character <= '9') || character == '-' || character == '_' || character == '.' ||
         character == ':';
}

}  // namespace

XmlReader::XmlReader(std::string_view document) : document_(document) {
  checkPropertyListText(document_);
  skipProlog();
}

void XmlReader::fail(const std::string& what) const {
  const auto line = 1 + std::count(document_.begin(), document_.begin() + static_cast<std::ptrdiff_t>(at_), '\n');
  throw PropertyListError("damaged XML property list: line " + std::to_string(line) + ": " + what);
}

bool XmlReader::take(std::string_view token) {
  if (!document_.substr(at_).starts_with(token)) return false;
  at_ += token.size();
  return true;
}

void XmlReader::skipPast(std::string_view end, const char* what) {
  const std::size_t found = document_.find(end, at_);
  if (found == std::string_view::npos) fail(std::string(what) + " has no end");
  at_ = found + end.size();
}

void XmlReader::skipMisc() {
  while (true) {
    at_ = std::min(document_.find_first_not_of(kSpace, at_), document_.size());
    if (take("<!--")) {
      skipPast("-->", "a comment");
    } else if (take("<?")) {
      skipPast("?>", "a processing instruction");
    } else {
      return;
    }
  }
}

void XmlReader::skipProlog() {
  take(kByteOrderMark);
  skipMisc();
  if (!take("<!DOCTYPE")) return;
  // The document type may hold declarations in brackets; what they declare is not known here, and its use an error.
  const std::size_t end = document_.find_first_of("[>", at_);
  if (end != std::string_view::npos && document_[end] == '[') skipPast("]", "the document type");
  skipPast(">", "the document type");
  skipMisc();
}

XmlReader::Tag XmlReader::nextTag() {
  skipMisc();
  if (at_ == document_.size()) fail("it is cut off");
  if (!take("<")) fail("text stands where none may be");
  Tag tag;
  if (take("/")) tag.kind = TagKind::Close;
  const std::size_t start = at_;
  while (at_ < document_.size() && isNameCharacter(document_[at_])) ++at_;
  tag.name = document_.substr(start, at_ - start);
  if (tag.name.empty()) fail("a tag has no name");

  // Attributes mean nothing in a property list; their quoted values may hold any character but "<".
  while (at_ < document_.size() && document_[at_] != '>' && document_[at_] != '<') {
    const char character = document_[at_];
    if (character == '"' || character == '\'') {
      ++at_;
      skipPast({&character, 1}, "an attribute");
    } else if (character == '/' && document_.substr(at_).starts_with("/>") && tag.kind == TagKind::Open) {
      tag.kind = TagKind::Empty;
      ++at_;
    } else if (character == '/') {
      fail("a tag is not closed");
    } else {
      ++at_;
    }
  }
  if (!take(">")) fail("a tag is not closed");
  return tag;
}

std::string XmlReader::reference() {
  const std::size_t end = document_.find(';', at_);
  if (end == std::string_view::npos) fail("a character reference has no end");
  std::string_view name = document_.substr(at_, end - at_);
  at_ = end + 1;
  if (name == "amp") return "&";
  if (name == "lt") return "<";
  if (name == "gt") return ">";
  if (name == "quot") return "\"";
  if (name == "apos") return "'";
  if (!name.starts_with('#')) fail("an entity is not known");
  name.remove_prefix(1);
  const int base = name.starts_with('x') ? 16 : 10;
  if (base == 16) name.remove_prefix(1);
  std::uint32_t codePoint = 0;
  const auto [rest, error] = std::from_chars(name.data(), name.data() + name.size(), codePoint, base);
  const bool isCharacter = codePoint != 0 && codePoint <= 0x10FFFF && (codePoint < 0xD800 || codePoint > 0xDFFF);
  if (error != std::errc() || rest != name.data() + name.size() || !isCharacter) {
    fail("a character reference is wrong");
  }
  std::string character;
  appendUtf8(character, codePoint);
  return character;
}

std::string XmlReader::text(std::string_view name) {
  std::string result;
  while (at_ < document_.size()) {
    const char character = document_[at_];
    if (character == '&') {
      ++at_;
      result += reference();
    } else if (take("<![CDATA[")) {
      const std::size_t start = at_;
      skipPast("]]>", "a CDATA section");
      result += document_.substr(start, at_ - start - 3);
    } else if (take("<!--")) {
      skipPast("-->", "a comment");
    } else if (character == '<') {
      const Tag tag = nextTag();
      if (tag.kind != TagKind::Close || tag.name != name) fail("<" + std::string(name) + "> is not closed");
      return result;
    } else if (take("\r\n") || take("\r")) {
      // XML 1.0, 2.11: every line ends with one line feed.
      result += '\n';
    } else {
      const std::size_t end = std::min(document_.find_first_of("&<\r", at_), document_.size());
      result += document_.substr(at_, end - at_);
      at_ = end;
    }
  }
  fail("<" + std::string(name) + "> is not closed");
}

void XmlReader::finish() {
  skipMisc();
  if (at_ != document_.size()) fail("something follows its end");
}

}  // namespace quellar::host::linux

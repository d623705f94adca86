// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quellar::host::linux {

/// Reads the XML of a property list piece by piece, strictly: what it lets through is well-formed, balanced UTF-8
/// text. It knows the five named entities and character references only, so that a file can't unfold or include
/// anything. Every operation throws PropertyListError.
class XmlReader {
 public:
  enum class TagKind { Open, Close, Empty };
  struct Tag {
    TagKind kind = TagKind::Open;
    std::string_view name;
  };

  /// Takes the whole document, which must outlive the reader, and reads up to its first tag.
  explicit XmlReader(std::string_view document);

  /// The next tag; only white space, comments and processing instructions may stand before it.
  Tag nextTag();
  /// The text up to the closing tag of the element `name`, which was just opened, with its references resolved.
  std::string text(std::string_view name);
  /// Checks that nothing more follows.
  void finish();

 private:
  void skipProlog();
  void skipMisc();
  void skipPast(std::string_view end, const char* what);
  bool take(std::string_view token);
  std::string reference();
  [[noreturn]] void fail(const std::string& what) const;

  std::string_view document_;
  std::size_t at_ = 0;
};

}  // namespace quellar::host::linux

// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace quellar::host::linux {

/// A string table: the texts of one language by their keys.
struct StringTable {
  /// Something in the file that was skipped or mended.
  struct Problem {
    /// Counted from 1.
    std::size_t line;
    std::string what;
    bool operator==(const Problem&) const = default;
  };

  std::map<std::string, std::string, std::less<>> entries;
  /// In the order of the file; the first hundred at most.
  std::vector<Problem> problems;
};

/// Larger files are refused, with a problem and no entries.
inline constexpr std::size_t kStringTableSizeLimit = std::size_t{4} * 1024 * 1024;

/// Reads the bytes of a string table:
///
///     /* comment */ "key" = "value";   // comment
///     key = value;                     a word of letters, digits and _ - . / : $ needs no quotes
///     "key";                           its value is the key
///
/// Quotes are double or single. In quotes stand the escapes \n \t \r \a \b \f \v, \ooo (octal, a code point up to
/// 0377),
/// \uXXXX and \UXXXX (a UTF-16 unit; two that form a pair are one character) and a backslash before any other
/// character for that character. The bytes are UTF-8, or UTF-16 of either byte order; a byte order mark decides, and
/// without one the zero bytes of the first character do.
///
/// Of two entries of the same key the last one serves. What is no statement is skipped, to the next semicolon of its
/// line or else to the next line, and reported; text that is not well-formed gets U+FFFD in its place. Any bytes are
/// accepted, in time that grows with their number alone.
[[nodiscard]] StringTable parseStringTable(std::string_view bytes);

}  // namespace quellar::host::linux

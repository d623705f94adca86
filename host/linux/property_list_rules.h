// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string_view>

namespace quellar::host::linux {

/// Why bytes are no property list that the store takes, or why a value can't be stored as one.
class PropertyListError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Most bytes that a property-list file may have.
inline constexpr std::size_t kMaxPropertyListBytes = std::size_t{16} * 1024 * 1024;
/// Most arrays and dictionaries that may stand in one another, the outermost one counted.
inline constexpr int kMaxPropertyListDepth = 128;
/// Most values that a file may unfold to. A binary file may name one object from many places, and so unfold to far
/// more than its size; a plain file of the largest size holds fewer than this.
inline constexpr std::size_t kMaxPropertyListValues = 2'000'000;

/// Throws PropertyListError where a file of that many bytes is too large.
void checkPropertyListSize(std::size_t bytes);

/// Throws PropertyListError where the text is not UTF-8 or holds U+0000, at which libplist would cut it.
void checkPropertyListText(std::string_view text);

/// Throws PropertyListError where the number is an infinity or a NaN.
void checkPropertyListNumber(double number);

/// Throws PropertyListError where `depth`, counted from 1, is deeper than a property list may be.
void checkPropertyListDepth(int depth);

}  // namespace quellar::host::linux

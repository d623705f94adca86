// SPDX-License-Identifier: MIT
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
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
/// Most values, keys counted, that a file may unfold to. A binary file may name one object from many places, and so
/// unfold to far more than its size; a file of the largest size without such sharing holds fewer than this.
inline constexpr std::size_t kMaxPropertyListValues = 2'600'000;
/// Most bytes of text and data that a file may unfold to, as the binary form stores them.
inline constexpr std::size_t kMaxPropertyListContent = std::size_t{64} * 1024 * 1024;

/// What a value and all that it holds unfold to.
struct PropertyListExtent {
  std::uint64_t values = 0;
  /// The bytes of text and data.
  std::uint64_t content = 0;

  PropertyListExtent& operator+=(const PropertyListExtent& other) {
    values += other.values;
    content += other.content;
    return *this;
  }
};

/// Throws PropertyListError where a file of that many bytes is too large.
void checkPropertyListSize(std::size_t bytes);

/// Throws PropertyListError where the text is not UTF-8 or holds U+0000, at which many readers would cut it.
void checkPropertyListText(std::string_view text);

/// Throws PropertyListError where the units of UTF-16 text hold half of a surrogate pair, or U+0000.
void checkPropertyListUtf16(std::string_view units, std::endian order);

/// Throws PropertyListError where the number is an infinity or a NaN.
void checkPropertyListNumber(double number);

/// Throws PropertyListError where `depth`, counted from 1, is deeper than a property list may be.
void checkPropertyListDepth(int depth);

/// Throws PropertyListError where a property list would unfold to more than it may.
void checkPropertyListExtent(const PropertyListExtent& extent);

}  // namespace quellar::host::linux

// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

// How the binary form encodes single objects. An object is a marker byte, with its type in the high half and a size or
// a count in the low half, and its bytes; numbers are big-endian.

namespace quellar::host::linux {

/// The types of objects: the high half of the marker.
enum class ObjectType : std::uint8_t {
  Boolean = 0x0,
  Integer = 0x1,
  Real = 0x2,
  Date = 0x3,
  Data = 0x4,
  /// Meant for ASCII. Writers exist that put UTF-8 here.
  NarrowText = 0x5,
  /// UTF-16.
  WideText = 0x6,
  Uid = 0x8,
  Array = 0xA,
  Dictionary = 0xD,
};

/// The greatest integer that is not a wide one.
inline constexpr std::uint64_t kLastSigned = std::numeric_limits<std::int64_t>::max();

inline constexpr char kFalseMarker = 0x08;
inline constexpr char kTrueMarker = 0x09;
/// The low half of an integer's marker where it has 16 bytes. The store takes such an integer where 64 bits hold it.
inline constexpr unsigned kWideIntegerSize = 4;
/// The low half of a marker whose count follows as an integer.
inline constexpr unsigned kCountFollows = 0x0F;

[[nodiscard]] inline unsigned highHalf(char marker) {
  return static_cast<std::uint8_t>(marker) >> 4;
}
[[nodiscard]] inline unsigned lowHalf(char marker) {
  return static_cast<std::uint8_t>(marker) & 0x0FU;
}

[[nodiscard]] bool isAscii(std::string_view text);

/// The fewest bytes that hold a number: 1, 2, 4 or 8.
[[nodiscard]] std::size_t widthOf(std::uint64_t number);
/// The number that the bytes are; of more than eight bytes, that of the last eight.
[[nodiscard]] std::uint64_t numberOf(std::string_view bytes);

void appendNumber(std::string& bytes, std::uint64_t number, std::size_t width);
void appendMarker(std::string& bytes, ObjectType type, std::size_t low);
void appendInteger(std::string& bytes, std::uint64_t number);
/// Appends a marker and a count, which follows as an integer where the marker can't hold it.
void appendCounted(std::string& bytes, ObjectType type, std::size_t count);
/// Appends a text object: ASCII where the text is that, else UTF-16.
void appendText(std::string& bytes, std::string_view text);

/// What follows the count of a text or data object.
[[nodiscard]] std::string_view contentOf(std::string_view object);
/// UTF-8 of well-formed big-endian UTF-16.
[[nodiscard]] std::string textOfUtf16(std::string_view units);

}  // namespace quellar::host::linux

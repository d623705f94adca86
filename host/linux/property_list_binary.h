// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quellar::host::linux {

/// Whether bytes begin as a binary property list does.
[[nodiscard]] bool isBinaryPropertyList(std::string_view bytes);

/// Checks a binary property list ("bplist00") before libplist reads it, which recurses as deep as a file tells it to,
/// unfolds shared objects without bound and takes text and numbers as they come. Throws PropertyListError.
///
/// The format: an 8-byte magic; objects, each a marker byte (type in the high half, size or count in the low half)
/// and its bytes; a table with each object's offset; a 32-byte trailer that says how wide offsets and references are,
/// how many objects there are, which is the top one and where the table begins. All numbers are big-endian.
void checkBinaryPropertyList(std::string_view bytes);

/// A value and all that it holds, in the binary form but for the numbers of its objects, so that it can be written
/// again and again among others.
struct BinaryPropertyListPart {
  /// Within the part.
  using Object = std::uint32_t;
  struct Entry {
    /// Where in `bytes` the object ends: all of a scalar, the marker and the size of a container.
    std::uint32_t end;
    /// How many of `references` are of this object.
    std::uint32_t references;
  };

  std::string bytes;
  std::vector<Entry> entries;
  std::vector<Object> references;
  Object top = 0;
};

/// Makes a part in a time that grows with what it holds. An object is added after those that it holds; scalars that are
/// equal become one object.
class BinaryPropertyListWriter {
 public:
  using Object = BinaryPropertyListPart::Object;

  Object addBoolean(bool boolean);
  Object addInteger(std::int64_t integer);
  /// An integer from 2^63 on.
  Object addWideUnsigned(std::uint64_t integer);
  Object addReal(double real);
  /// Seconds since 2001-01-01T00:00:00Z.
  Object addDate(double seconds);
  /// Text is UTF-8.
  Object addText(std::string_view text);
  Object addData(std::string_view data);
  Object addUid(std::uint64_t uid);
  Object addArray(const std::vector<Object>& items);
  /// Keys, which are texts, and values by place.
  Object addDictionary(const std::vector<Object>& keys, const std::vector<Object>& values);

  /// The part with `top` as its value; the writer is empty then.
  [[nodiscard]] BinaryPropertyListPart finish(Object top);

 private:
  Object addScalar(std::string bytes);
  Object addObject(std::string_view bytes, std::size_t references);

  BinaryPropertyListPart part_;
  std::unordered_map<std::string, Object> scalars_;
};

/// The file with a part as its top.
[[nodiscard]] std::string binaryPropertyList(const BinaryPropertyListPart& part);

/// The file with a dictionary of parts at its top, in their order.
[[nodiscard]] std::string binaryPropertyList(
    const std::vector<std::pair<std::string_view, const BinaryPropertyListPart*>>& entries);

}  // namespace quellar::host::linux

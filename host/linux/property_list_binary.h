// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
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

/// Writes a binary property list in a time that grows with what it holds; libplist's own writer takes the square of it
/// for large files. An object is added after those that it holds; scalars that are equal are written once.
class BinaryPropertyListWriter {
 public:
  using Object = std::uint32_t;

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

  /// The file with `top` as its top object.
  [[nodiscard]] std::string finish(Object top) const;

 private:
  struct Entry {
    /// The marker and the size of the object, and all of a scalar.
    const std::string* bytes;
    /// Where in `references_` what a container holds begins, and how much it is.
    std::size_t first;
    std::size_t count;
  };

  Object addScalar(std::string bytes);
  Object addContainer(std::uint8_t marker, std::size_t size, const std::vector<Object>& held,
                      const std::vector<Object>& more);

  std::unordered_map<std::string, Object> scalars_;
  /// The starts of containers, of which most are alike.
  std::unordered_set<std::string> starts_;
  std::vector<Entry> entries_;
  std::vector<Object> references_;
};

}  // namespace quellar::host::linux

// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/linux/property_list/rules.h"
#include "platform/value.h"

// The door to property-list files. What comes in is held to the rules; what goes out is too, so that what is written
// can be read. Where memory runs out an operation throws std::bad_alloc and has changed nothing.
//
// A file may hold integers that platform::Value does not: those from 2^63 on read as the nearest real, and UIDs as the
// dictionary {"CF$UID": number} that they are in XML. They are kept as they are in a dictionary that is edited, unless
// the value that stands in their place is another one.

namespace quellar::host::linux {

class PropertyListObjects;

/// A property list in its binary form.
class EncodedPropertyList {
 public:
  explicit EncodedPropertyList(std::string bytes) : bytes_(std::move(bytes)) {}
  [[nodiscard]] std::string_view bytes() const { return bytes_; }

 private:
  std::string bytes_;
};

/// Reads a whole property list, binary or XML, with any value at its top. Throws PropertyListError.
[[nodiscard]] platform::Value parsePropertyList(std::string_view bytes);

/// Writes a property list in the binary form. Throws PropertyListError where the value can't be read back: text that is
/// not UTF-8, a number that is not finite, too deep or too large.
[[nodiscard]] EncodedPropertyList encodePropertyList(const platform::Value& value);

/// A property list with a dictionary at its top, as a domain file is. Entries that are not touched are written as they
/// were read.
///
/// A copy shares what both hold, which never changes, and costs little more than its keys. Each may be used on a thread
/// of its own.
class PropertyListDictionary {
 public:
  /// An empty dictionary.
  PropertyListDictionary() = default;
  /// Reads a file's bytes, binary or XML. Throws PropertyListError where they are no property list, where its top is no
  /// dictionary, or where it breaks one of the limits.
  explicit PropertyListDictionary(std::string_view bytes);

  /// The keys of all entries, in byte order.
  [[nodiscard]] std::vector<std::string> keys() const;
  /// The value of an entry, or nothing.
  [[nodiscard]] std::optional<platform::Value> value(std::string_view key) const;
  /// Sets an entry. Throws PropertyListError, and changes nothing, where key or value can't be stored.
  void set(std::string_view key, const platform::Value& value);
  /// Removes an entry if it is there.
  void remove(std::string_view key);

  /// The binary form. Throws PropertyListError where it is larger than a file may be. What was not changed since the
  /// last call is not encoded anew.
  [[nodiscard]] EncodedPropertyList encode() const;

 private:
  /// One of the objects of a file that was read; or, once it was set or encoded, the top of objects of its own.
  struct Entry {
    std::shared_ptr<const PropertyListObjects> objects;
    std::uint32_t object = 0;
  };

  mutable std::map<std::string, Entry, std::less<>> entries_;
};

}  // namespace quellar::host::linux

// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/linux/property_list/encoding.h"
#include "host/linux/property_list/rules.h"
#include "platform/value.h"

namespace quellar::host::linux {

/// A property list as the objects of its binary form, which keeps also what no platform::Value tells: integers from
/// 2^63 on, and UIDs. All objects are valid and within the limits, and come after those that they hold.
class PropertyListObjects {
 public:
  /// An object's number.
  using Object = std::uint32_t;

  [[nodiscard]] std::size_t size() const { return entries_.size(); }
  [[nodiscard]] Object top() const { return top_; }
  [[nodiscard]] const PropertyListExtent& extent() const { return extent_; }

  /// A scalar as it is encoded; the marker and the count of a container.
  [[nodiscard]] std::string_view bytes(Object object) const;
  [[nodiscard]] ObjectType type(Object object) const;
  /// What an array holds, or the keys of a dictionary and then its values in the same order; a key may be there twice,
  /// and its last value counts.
  [[nodiscard]] std::span<const Object> references(Object object) const;

  /// The text of a text object.
  [[nodiscard]] std::string text(Object object) const;
  [[nodiscard]] platform::Value value(Object object) const;
  /// Whether the object is one that no platform::Value tells exactly.
  [[nodiscard]] bool isInexact(Object object) const;
  /// Whether there is any such object.
  [[nodiscard]] bool holdsInexact() const { return holdsInexact_; }

 private:
  friend class PropertyListBuilder;
  struct Entry {
    /// Where the object ends in `bytes_` and in `references_`; it begins where the one before it ends.
    std::uint32_t bytesEnd;
    std::uint32_t referencesEnd;
  };

  std::string bytes_;
  std::vector<Entry> entries_;
  std::vector<Object> references_;
  Object top_ = 0;
  PropertyListExtent extent_;
  bool holdsInexact_ = false;
};

/// Puts the objects of a property list together in a time that grows with what is added. Scalars that are equal become
/// one object, unless very many are much alike. Every operation throws PropertyListError where a limit would be
/// exceeded.
class PropertyListBuilder {
 public:
  using Object = PropertyListObjects::Object;

  Object addBoolean(bool boolean);
  Object addInteger(std::int64_t integer);
  /// An integer from 2^63 on.
  Object addWideInteger(std::uint64_t integer);
  Object addReal(double real);
  /// Seconds since 2001-01-01T00:00:00Z.
  Object addDate(double seconds);
  /// Text is UTF-8.
  Object addText(std::string_view text);
  Object addData(std::string_view data);
  Object addArray(std::span<const Object> items);
  /// Keys, which are texts, and then the values in the same order.
  Object addDictionary(std::span<const Object> keysAndValues);
  /// A scalar as it is encoded, or the marker and the count of a container with what it holds. It becomes an object of
  /// its own.
  Object addEncoded(std::string_view bytes, std::span<const Object> references);

  /// The objects with `top` as the value; the builder is empty then.
  [[nodiscard]] PropertyListObjects finish(Object top);

 private:
  /// What an object brings with all that it holds.
  struct Measure {
    std::uint32_t values;
    std::uint32_t content;
    int levels;
  };

  Object closeScalar();
  Object close(std::span<const Object> references);
  [[nodiscard]] Object& slotOf(std::string_view scalar);
  void growSlots();

  PropertyListObjects objects_;
  std::vector<Measure> measures_;
  /// A hash table of scalars.
  std::vector<Object> slots_;
  std::size_t sharedScalars_ = 0;
};

/// The objects of a value that stands `depth` containers deep. Where it is to replace `former`, which may be null, what
/// `former` has in its place and no platform::Value tells exactly is kept if it reads as the same. Throws
/// PropertyListError where the value can't be stored.
[[nodiscard]] PropertyListObjects propertyListObjects(const platform::Value& value, int depth,
                                                      const PropertyListObjects* former,
                                                      PropertyListObjects::Object formerTop);

/// Copies single values out of a property list.
class PropertyListExtractor {
 public:
  using Object = PropertyListObjects::Object;

  /// The object with all that it holds. Faster for many objects of the same list one after another.
  [[nodiscard]] PropertyListObjects extract(const PropertyListObjects& list, Object object);

 private:
  Object copy(const PropertyListObjects& list, Object object);

  PropertyListBuilder builder_;
  /// The numbers of the list's objects in the copy, and which of them are set.
  std::vector<Object> numbers_;
  std::vector<Object> copied_;
  std::vector<Object> references_;
};

}  // namespace quellar::host::linux

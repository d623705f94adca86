// SPDX-License-Identifier: MIT
#include "host/linux/property_list/objects.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <utility>

namespace quellar::host::linux {

using platform::Array;
using platform::Data;
using platform::Date;
using platform::Dictionary;
using platform::Value;

namespace {

using Object = PropertyListObjects::Object;

constexpr Object kNone = std::numeric_limits<Object>::max();
/// The key of the dictionary that a UID is in XML.
constexpr const char* kUidKey = "CF$UID";
/// Most bytes that the objects of one property list may have: more than any file's, also where a text of the largest
/// XML file becomes UTF-16.
constexpr std::size_t kMaxObjectBytes = 4 * kMaxPropertyListBytes;
/// How many equally hashed scalars are looked at before an equal one is stored again. It bounds the time where somebody
/// made the hashes equal on purpose.
constexpr std::size_t kMostProbes = 32;

double realOf(std::string_view bytes) {
  const std::uint64_t bits = numberOf(bytes.substr(1));
  if (bytes.size() == 1 + sizeof(float)) {
    return static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
  }
  return std::bit_cast<double>(bits);
}

/// An integer that may be greater than a signed one; such a one reads as the nearest real.
Value unsignedValue(std::uint64_t number) {
  if (number <= kLastSigned) return static_cast<std::int64_t>(number);
  return static_cast<double>(number);
}

bool isWideInteger(std::string_view bytes) {
  return lowHalf(bytes[0]) == kWideIntegerSize && numberOf(bytes.substr(1)) > kLastSigned;
}

Value integerOf(std::string_view bytes) {
  const std::uint64_t bits = numberOf(bytes.substr(1));
  if (isWideInteger(bytes)) return unsignedValue(bits);
  return static_cast<std::int64_t>(bits);
}

}  // namespace

std::string_view PropertyListObjects::bytes(Object object) const {
  const std::size_t begin = object == 0 ? 0 : entries_[object - 1].bytesEnd;
  return std::string_view(bytes_).substr(begin, entries_[object].bytesEnd - begin);
}

ObjectType PropertyListObjects::type(Object object) const {
  return static_cast<ObjectType>(highHalf(bytes(object)[0]));
}

std::span<const Object> PropertyListObjects::references(Object object) const {
  const std::size_t begin = object == 0 ? 0 : entries_[object - 1].referencesEnd;
  return std::span(references_).subspan(begin, entries_[object].referencesEnd - begin);
}

std::string PropertyListObjects::text(Object object) const {
  const std::string_view content = contentOf(bytes(object));
  return type(object) == ObjectType::WideText ? textOfUtf16(content) : std::string(content);
}

Value PropertyListObjects::value(Object object) const {
  const std::string_view encoded = bytes(object);
  switch (type(object)) {
    case ObjectType::Boolean:
      return encoded[0] == kTrueMarker;
    case ObjectType::Integer:
      return integerOf(encoded);
    case ObjectType::Real:
      return realOf(encoded);
    case ObjectType::Date:
      return Date{realOf(encoded)};
    case ObjectType::Data: {
      const std::string_view content = contentOf(encoded);
      return Data{{content.begin(), content.end()}};
    }
    case ObjectType::NarrowText:
    case ObjectType::WideText:
      return text(object);
    case ObjectType::Uid:
      return Dictionary{{kUidKey, unsignedValue(numberOf(encoded.substr(1)))}};
    case ObjectType::Array: {
      const std::span<const Object> items = references(object);
      Array array;
      array.reserve(items.size());
      for (const Object item : items) array.push_back(value(item));
      return array;
    }
    case ObjectType::Dictionary: {
      const std::span<const Object> both = references(object);
      const std::size_t count = both.size() / 2;
      Dictionary dictionary;
      // Keys are mostly in order.
      for (std::size_t entry = 0; entry < count; ++entry) {
        dictionary.insert_or_assign(dictionary.end(), text(both[entry]), value(both[count + entry]));
      }
      return dictionary;
    }
  }
  throw PropertyListError("an object is of an unknown type");
}

bool PropertyListObjects::isInexact(Object object) const {
  const ObjectType kind = type(object);
  return kind == ObjectType::Uid || (kind == ObjectType::Integer && isWideInteger(bytes(object)));
}

Object PropertyListBuilder::addBoolean(bool boolean) {
  objects_.bytes_ += boolean ? kTrueMarker : kFalseMarker;
  return closeScalar();
}

Object PropertyListBuilder::addInteger(std::int64_t integer) {
  // A negative one has all eight bytes, whose highest bit tells it.
  appendInteger(objects_.bytes_, static_cast<std::uint64_t>(integer));
  return closeScalar();
}

Object PropertyListBuilder::addWideInteger(std::uint64_t integer) {
  appendMarker(objects_.bytes_, ObjectType::Integer, kWideIntegerSize);
  appendNumber(objects_.bytes_, 0, 8);
  appendNumber(objects_.bytes_, integer, 8);
  return closeScalar();
}

Object PropertyListBuilder::addReal(double real) {
  appendMarker(objects_.bytes_, ObjectType::Real, 3);
  appendNumber(objects_.bytes_, std::bit_cast<std::uint64_t>(real), 8);
  return closeScalar();
}

Object PropertyListBuilder::addDate(double seconds) {
  appendMarker(objects_.bytes_, ObjectType::Date, 3);
  appendNumber(objects_.bytes_, std::bit_cast<std::uint64_t>(seconds), 8);
  return closeScalar();
}

Object PropertyListBuilder::addText(std::string_view text) {
  appendText(objects_.bytes_, text);
  return closeScalar();
}

Object PropertyListBuilder::addData(std::string_view data) {
  appendCounted(objects_.bytes_, ObjectType::Data, data.size());
  objects_.bytes_ += data;
  return closeScalar();
}

Object PropertyListBuilder::addArray(std::span<const Object> items) {
  appendCounted(objects_.bytes_, ObjectType::Array, items.size());
  return close(items);
}

Object PropertyListBuilder::addDictionary(std::span<const Object> keysAndValues) {
  appendCounted(objects_.bytes_, ObjectType::Dictionary, keysAndValues.size() / 2);
  return close(keysAndValues);
}

Object PropertyListBuilder::addEncoded(std::string_view bytes, std::span<const Object> references) {
  objects_.bytes_ += bytes;
  return close(references);
}

/// Makes the bytes that were added last a scalar, or takes them back where an equal one is there.
Object PropertyListBuilder::closeScalar() {
  const std::size_t begin = objects_.entries_.empty() ? 0 : objects_.entries_.back().bytesEnd;
  if (slots_.size() <= 2 * sharedScalars_) growSlots();
  Object& slot = slotOf(std::string_view(objects_.bytes_).substr(begin));
  if (slot == kNone) {
    slot = close({});
    ++sharedScalars_;
    return slot;
  }
  if (objects_.bytes(slot) != std::string_view(objects_.bytes_).substr(begin)) return close({});
  objects_.bytes_.resize(begin);
  return slot;
}

/// The slot of an equal scalar, or a free one; one of another scalar where the search was given up.
Object& PropertyListBuilder::slotOf(std::string_view scalar) {
  const std::size_t mask = slots_.size() - 1;
  std::size_t place = std::hash<std::string_view>()(scalar) & mask;
  for (std::size_t probe = 0; probe < kMostProbes; ++probe, place = (place + 1) & mask) {
    if (slots_[place] == kNone || objects_.bytes(slots_[place]) == scalar) return slots_[place];
  }
  return slots_[place];
}

void PropertyListBuilder::growSlots() {
  constexpr std::size_t kFirstSlots = 64;
  const std::vector<Object> former =
      std::exchange(slots_, std::vector<Object>(std::max(2 * slots_.size(), kFirstSlots), kNone));
  for (const Object scalar : former) {
    if (scalar != kNone) slotOf(objects_.bytes(scalar)) = scalar;
  }
}

/// Makes the bytes that were added last an object.
Object PropertyListBuilder::close(std::span<const Object> references) {
  if (objects_.bytes_.size() > kMaxObjectBytes) checkPropertyListSize(objects_.bytes_.size());
  const auto object = static_cast<Object>(objects_.entries_.size());
  objects_.references_.insert(objects_.references_.end(), references.begin(), references.end());
  objects_.entries_.push_back(
      {static_cast<std::uint32_t>(objects_.bytes_.size()), static_cast<std::uint32_t>(objects_.references_.size())});

  const ObjectType type = objects_.type(object);
  const bool isContainer = type == ObjectType::Array || type == ObjectType::Dictionary;
  const bool isContent = type == ObjectType::Data || type == ObjectType::NarrowText || type == ObjectType::WideText;
  PropertyListExtent extent{1, isContent ? objects_.bytes(object).size() : 0};
  int levels = 0;
  for (const Object held : references) {
    extent += {measures_[held].values, measures_[held].content};
    levels = std::max(levels, measures_[held].levels);
  }
  if (isContainer) ++levels;
  checkPropertyListExtent(extent);
  checkPropertyListDepth(levels);
  measures_.push_back({static_cast<std::uint32_t>(extent.values), static_cast<std::uint32_t>(extent.content), levels});
  objects_.holdsInexact_ = objects_.holdsInexact_ || objects_.isInexact(object);
  return object;
}

PropertyListObjects PropertyListBuilder::finish(Object top) {
  objects_.top_ = top;
  objects_.extent_ = {measures_[top].values, measures_[top].content};
  measures_.clear();
  std::ranges::fill(slots_, kNone);
  sharedScalars_ = 0;
  return std::exchange(objects_, {});
}

namespace {

/// The value of each key of a dictionary that is to be replaced.
class FormerEntries {
 public:
  FormerEntries(const PropertyListObjects& list, Object dictionary) {
    const std::span<const Object> both = list.references(dictionary);
    const std::size_t count = both.size() / 2;
    for (std::size_t entry = 0; entry < count; ++entry) {
      byKey_.insert_or_assign(byKey_.end(), list.text(both[entry]), both[count + entry]);
    }
  }

  [[nodiscard]] Object find(const std::string& key) const {
    const auto entry = byKey_.find(key);
    return entry == byKey_.end() ? kNone : entry->second;
  }

 private:
  std::map<std::string, Object> byKey_;
};

/// Adds a value with all that it holds to a builder.
class ValueEncoder {
 public:
  explicit ValueEncoder(const PropertyListObjects* former) : former_(former) {}

  /// The value stands `depth` containers deep, in the place of `former`.
  Object add(const Value& value, int depth, Object former) {
    if (former != kNone && former_->isInexact(former) && former_->value(former) == value) {
      return builder_.addEncoded(former_->bytes(former), {});
    }
    if (const bool* boolean = value.as<bool>()) return builder_.addBoolean(*boolean);
    if (const auto* integer = value.as<std::int64_t>()) return builder_.addInteger(*integer);
    if (const double* real = value.as<double>()) {
      checkPropertyListNumber(*real);
      return builder_.addReal(*real);
    }
    if (const auto* text = value.as<std::string>()) return addText(*text);
    if (const auto* date = value.as<Date>()) {
      checkPropertyListNumber(date->seconds);
      return builder_.addDate(date->seconds);
    }
    if (const auto* data = value.as<Data>()) {
      const auto* bytes = reinterpret_cast<const char*>(data->bytes.data());
      return builder_.addData({bytes, data->bytes.size()});
    }
    checkPropertyListDepth(depth + 1);
    if (const auto* array = value.as<Array>()) return addArray(*array, depth + 1, former);
    return addDictionary(*value.as<Dictionary>(), depth + 1, former);
  }

  PropertyListObjects finish(Object top) { return builder_.finish(top); }

 private:
  Object addText(const std::string& text) {
    checkPropertyListText(text);
    return builder_.addText(text);
  }

  Object addArray(const Array& array, int depth, Object former) {
    std::span<const Object> formerItems;
    if (former != kNone && former_->type(former) == ObjectType::Array) formerItems = former_->references(former);
    std::vector<Object> items;
    items.reserve(array.size());
    for (const Value& item : array) {
      items.push_back(add(item, depth, items.size() < formerItems.size() ? formerItems[items.size()] : kNone));
    }
    return builder_.addArray(items);
  }

  Object addDictionary(const Dictionary& dictionary, int depth, Object former) {
    std::optional<FormerEntries> formerEntries;
    if (former != kNone && former_->type(former) == ObjectType::Dictionary) formerEntries.emplace(*former_, former);
    std::vector<Object> keysAndValues(2 * dictionary.size());
    std::size_t entry = 0;
    for (const auto& [key, value] : dictionary) {
      keysAndValues[entry] = addText(key);
      keysAndValues[dictionary.size() + entry] = add(value, depth, formerEntries ? formerEntries->find(key) : kNone);
      ++entry;
    }
    return builder_.addDictionary(keysAndValues);
  }

  PropertyListBuilder builder_;
  const PropertyListObjects* former_;
};

}  // namespace

PropertyListObjects propertyListObjects(const Value& value, int depth, const PropertyListObjects* former,
                                        Object formerTop) {
  const bool isFormerUsed = former != nullptr && former->holdsInexact();
  ValueEncoder encoder(former);
  const Object top = encoder.add(value, depth, isFormerUsed ? formerTop : kNone);
  return encoder.finish(top);
}

PropertyListObjects PropertyListExtractor::extract(const PropertyListObjects& list, Object object) {
  if (numbers_.size() < list.size()) numbers_.resize(list.size(), kNone);
  const Object top = copy(list, object);
  for (const Object each : copied_) numbers_[each] = kNone;
  copied_.clear();
  return builder_.finish(top);
}

Object PropertyListExtractor::copy(const PropertyListObjects& list, Object object) {
  if (numbers_[object] != kNone) return numbers_[object];
  const std::size_t begin = references_.size();
  for (const Object held : list.references(object)) {
    const Object number = copy(list, held);
    references_.push_back(number);
  }
  // Remembered first: a number that could not be forgotten again would be taken for one of the next copy.
  copied_.push_back(object);
  numbers_[object] = builder_.addEncoded(list.bytes(object), std::span(references_).subspan(begin));
  references_.resize(begin);
  return numbers_[object];
}

}  // namespace quellar::host::linux

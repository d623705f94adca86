// SPDX-License-Identifier: MIT
#include "host/linux/property_list/binary.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace quellar::host::linux {

namespace {

constexpr std::string_view kMagic = "bplist00";
constexpr std::size_t kTrailerSize = 32;

[[noreturn]] void damaged(const std::string& what) {
  throw PropertyListError("damaged binary property list: " + what);
}

/// Takes the objects out of a file, those that are held first. Each is looked at once, however often it is named.
class BinaryReader {
 public:
  explicit BinaryReader(std::string_view bytes) : bytes_(bytes) {
    if (bytes_.size() < kMagic.size() + 1 + kTrailerSize) damaged("it is cut off");
    const std::size_t trailer = bytes_.size() - kTrailerSize;
    offsetSize_ = number(trailer + 6, 1);
    referenceSize_ = number(trailer + 7, 1);
    const std::uint64_t objects = number(trailer + 8, 8);
    top_ = number(trailer + 16, 8);
    const std::uint64_t table = number(trailer + 24, 8);
    if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8) damaged("its trailer is wrong");
    if (table < kMagic.size() || table > trailer) damaged("its offset table lies outside of it");
    tableStart_ = table;
    // Each object has a byte at least, and an entry in the table.
    if (objects > tableStart_ - kMagic.size() || objects > (trailer - tableStart_) / offsetSize_) {
      damaged("it has fewer objects than it says");
    }
    numbers_.resize(objects, kUnseen);
    if (top_ >= objects) damaged("it has no top object");
  }

  PropertyListObjects read() {
    const Object top = object(top_, 0);
    return builder_.finish(top);
  }

 private:
  using Object = PropertyListObjects::Object;
  static constexpr Object kUnseen = std::numeric_limits<Object>::max();
  /// The object is being read: whoever names it now is within it.
  static constexpr Object kOpen = kUnseen - 1;

  [[nodiscard]] std::uint64_t number(std::size_t at, std::size_t size) const {
    return numberOf(bytes_.substr(at, size));
  }

  /// The bytes of an object's body, which must end before the offset table.
  [[nodiscard]] std::string_view body(std::size_t at, std::uint64_t count, std::uint64_t width) const {
    if (at > tableStart_ || count > (tableStart_ - at) / width) damaged("an object is cut off");
    return bytes_.substr(at, count * width);
  }

  /// The place of an object's marker byte.
  [[nodiscard]] std::size_t placeOf(std::uint64_t index) const {
    const std::uint64_t place = number(tableStart_ + index * offsetSize_, offsetSize_);
    if (place < kMagic.size() || place >= tableStart_) damaged("an object lies outside of it");
    return place;
  }

  /// The count of a marker at `at`; moves `at` to the first byte after the count.
  [[nodiscard]] std::uint64_t count(std::size_t& at) const {
    const unsigned low = lowHalf(bytes_[at++]);
    if (low != kCountFollows) return low;
    const std::uint64_t marker = number(at, 1);
    if (marker < 0x10 || marker > 0x13) damaged("a count is wrong");
    const std::size_t size = std::size_t{1} << (marker & 0x0F);
    const std::uint64_t result = numberOf(body(at + 1, size, 1));
    at += 1 + size;
    return result;
  }

  /// Adds the object from its marker to the end of its body.
  Object addScalar(std::size_t place, std::string_view body) {
    const std::size_t end = static_cast<std::size_t>(body.data() - bytes_.data()) + body.size();
    return builder_.addEncoded(bytes_.substr(place, end - place), {});
  }

  Object integer(std::size_t place) {
    const unsigned size = lowHalf(bytes_[place]);
    if (size > kWideIntegerSize) damaged("an integer has a wrong size");
    const std::string_view digits = body(place + 1, std::size_t{1} << size, 1);
    if (size == kWideIntegerSize && numberOf(digits.substr(0, 8)) != 0) {
      throw PropertyListError("an integer has more than 64 bits");
    }
    return addScalar(place, digits);
  }

  Object real(std::size_t place) {
    const unsigned size = lowHalf(bytes_[place]);
    if (size != 2 && size != 3) damaged("a real has a wrong size");
    const std::string_view bits = body(place + 1, std::size_t{1} << size, 1);
    checkPropertyListNumber(size == 2
                                ? static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(numberOf(bits))))
                                : std::bit_cast<double>(numberOf(bits)));
    return addScalar(place, bits);
  }

  Object date(std::size_t place) {
    if (lowHalf(bytes_[place]) != 3) damaged("a date has a wrong size");
    const std::string_view bits = body(place + 1, 8, 1);
    checkPropertyListNumber(std::bit_cast<double>(numberOf(bits)));
    return addScalar(place, bits);
  }

  Object uid(std::size_t place) {
    const std::size_t size = lowHalf(bytes_[place]) + 1;
    if (size > 8 || !std::has_single_bit(size)) damaged("a UID has a wrong size");
    return addScalar(place, body(place + 1, size, 1));
  }

  Object data(std::size_t place) {
    std::size_t at = place;
    const std::uint64_t size = count(at);
    return addScalar(place, body(at, size, 1));
  }

  Object narrowText(std::size_t place) {
    std::size_t at = place;
    const std::uint64_t size = count(at);
    const std::string_view text = body(at, size, 1);
    checkPropertyListText(text);
    return isAscii(text) ? addScalar(place, text) : builder_.addText(text);
  }

  Object wideText(std::size_t place) {
    std::size_t at = place;
    const std::uint64_t size = count(at);
    const std::string_view units = body(at, size, 2);
    checkPropertyListUtf16(units, std::endian::big);
    return addScalar(place, units);
  }

  void checkKey(std::uint64_t index) const {
    const auto type = static_cast<ObjectType>(highHalf(bytes_[placeOf(index)]));
    if (type != ObjectType::NarrowText && type != ObjectType::WideText) damaged("a key is no text");
  }

  Object container(std::size_t place, int depth) {
    checkPropertyListDepth(depth);
    const bool isDictionary = static_cast<ObjectType>(highHalf(bytes_[place])) == ObjectType::Dictionary;
    std::size_t at = place;
    const std::uint64_t entries = count(at);
    const std::string_view references = body(at, entries, referenceSize_ * (isDictionary ? 2 : 1));
    const std::size_t begin = held_.size();
    for (std::size_t offset = 0; offset < references.size(); offset += referenceSize_) {
      const std::uint64_t index = numberOf(references.substr(offset, referenceSize_));
      if (index >= numbers_.size()) damaged("an object is missing");
      if (isDictionary && offset / referenceSize_ < entries) checkKey(index);
      const Object held = object(index, depth);
      held_.push_back(held);
    }
    const Object result = builder_.addEncoded(bytes_.substr(place, at - place), std::span(held_).subspan(begin));
    held_.resize(begin);
    return result;
  }

  Object newObject(std::size_t place, int outer) {
    switch (static_cast<ObjectType>(highHalf(bytes_[place]))) {
      case ObjectType::Boolean:
        if (bytes_[place] != kFalseMarker && bytes_[place] != kTrueMarker) break;
        return builder_.addEncoded(bytes_.substr(place, 1), {});
      case ObjectType::Integer:
        return integer(place);
      case ObjectType::Real:
        return real(place);
      case ObjectType::Date:
        return date(place);
      case ObjectType::Data:
        return data(place);
      case ObjectType::NarrowText:
        return narrowText(place);
      case ObjectType::WideText:
        return wideText(place);
      case ObjectType::Uid:
        return uid(place);
      case ObjectType::Array:
      case ObjectType::Dictionary:
        return container(place, outer + 1);
    }
    damaged("an object is of an unknown type");
  }

  /// The number of an object that stands `outer` containers deep.
  Object object(std::uint64_t index, int outer) {
    if (numbers_[index] == kOpen) damaged("an array or dictionary holds itself");
    if (numbers_[index] == kUnseen) {
      numbers_[index] = kOpen;
      numbers_[index] = newObject(placeOf(index), outer);
    }
    return numbers_[index];
  }

  std::string_view bytes_;
  std::uint64_t offsetSize_ = 0;
  std::uint64_t referenceSize_ = 0;
  std::uint64_t top_ = 0;
  std::uint64_t tableStart_ = 0;
  PropertyListBuilder builder_;
  /// The file's objects as the builder numbers them.
  std::vector<Object> numbers_;
  /// What the containers that are being read hold so far.
  std::vector<Object> held_;
};

/// A file as it is put together.
class BinaryFile {
 public:
  explicit BinaryFile(std::size_t objects) : referenceWidth_(widthOf(objects)), bytes_(kMagic) {
    places_.reserve(objects);
  }

  [[nodiscard]] std::size_t size() const { return bytes_.size(); }

  /// Returns the number of the list's top in the file.
  std::size_t append(const PropertyListObjects& list) {
    const std::size_t first = places_.size();
    for (PropertyListObjects::Object object = 0; object < list.size(); ++object) {
      places_.push_back(bytes_.size());
      bytes_ += list.bytes(object);
      for (const auto held : list.references(object)) appendReference(first + held);
    }
    return first + list.top();
  }
  std::size_t appendText(std::string_view text) {
    places_.push_back(bytes_.size());
    linux::appendText(bytes_, text);
    return places_.size() - 1;
  }
  std::size_t appendDictionary(std::span<const std::size_t> keys, std::span<const std::size_t> values) {
    places_.push_back(bytes_.size());
    appendCounted(bytes_, ObjectType::Dictionary, keys.size());
    for (const std::size_t key : keys) appendReference(key);
    for (const std::size_t value : values) appendReference(value);
    return places_.size() - 1;
  }

  std::string finish(std::size_t top) {
    const std::size_t table = bytes_.size();
    const std::size_t offsetWidth = widthOf(table);
    for (const std::size_t place : places_) appendNumber(bytes_, place, offsetWidth);
    bytes_.append(6, '\0');
    appendNumber(bytes_, offsetWidth, 1);
    appendNumber(bytes_, referenceWidth_, 1);
    appendNumber(bytes_, places_.size(), 8);
    appendNumber(bytes_, top, 8);
    appendNumber(bytes_, table, 8);
    return std::move(bytes_);
  }

 private:
  void appendReference(std::size_t object) { appendNumber(bytes_, object, referenceWidth_); }

  std::size_t referenceWidth_;
  std::string bytes_;
  std::vector<std::size_t> places_;
};

}  // namespace

bool isBinaryPropertyList(std::string_view bytes) {
  return bytes.starts_with(kMagic);
}

PropertyListObjects readBinaryPropertyList(std::string_view bytes) {
  return BinaryReader(bytes).read();
}

std::string binaryPropertyList(const PropertyListObjects& list) {
  BinaryFile file(list.size());
  const std::size_t top = file.append(list);
  return file.finish(top);
}

std::string binaryPropertyList(const std::vector<std::pair<std::string_view, const PropertyListObjects*>>& entries) {
  // The keys and the dictionary itself.
  std::size_t objects = entries.size() + 1;
  for (const auto& [key, list] : entries) objects += list->size();
  BinaryFile file(objects);
  std::vector<std::size_t> keys;
  std::vector<std::size_t> values;
  PropertyListExtent extent{1, 0};
  for (const auto& [key, list] : entries) {
    const std::size_t begin = file.size();
    keys.push_back(file.appendText(key));
    extent += {1, file.size() - begin};
    extent += list->extent();
    checkPropertyListExtent(extent);
    values.push_back(file.append(*list));
  }
  const std::size_t top = file.appendDictionary(keys, values);
  return file.finish(top);
}

}  // namespace quellar::host::linux

// SPDX-License-Identifier: MIT
#include "host/linux/property_list_binary.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "host/linux/property_list_rules.h"
#include "host/linux/utf8.h"

namespace quellar::host::linux {

namespace {

constexpr std::string_view kMagic = "bplist00";
constexpr std::size_t kTrailerSize = 32;

[[noreturn]] void damaged(const std::string& what) {
  throw PropertyListError("damaged binary property list: " + what);
}

class BinaryCheck {
 public:
  explicit BinaryCheck(std::string_view bytes) : bytes_(bytes) {
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
    objects_.resize(objects);
    if (top_ >= objects) damaged("it has no top object");
  }

  void run() { visit(top_, 0); }

 private:
  enum class State : std::uint8_t { Unseen, Open, Done };
  /// What is known of an object: how many levels of containers it brings, and how many values it unfolds to.
  struct Object {
    State state = State::Unseen;
    std::uint8_t levels = 0;
    std::uint32_t values = 0;
  };

  [[nodiscard]] std::uint64_t number(std::size_t at, std::size_t size) const {
    std::uint64_t result = 0;
    for (const char byte : bytes_.substr(at, size)) result = result << 8 | static_cast<std::uint8_t>(byte);
    return result;
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

  /// The count of a marker at `at`; moves `at` to the first byte after the count. A low half of 15 says that the count
  /// follows as an integer object.
  [[nodiscard]] std::uint64_t count(std::size_t& at) const {
    const std::uint64_t low = number(at++, 1) & 0x0F;
    if (low != 0x0F) return low;
    const std::uint64_t marker = number(at, 1);
    if (marker < 0x10 || marker > 0x13) damaged("a count is wrong");
    const std::size_t size = std::size_t{1} << (marker & 0x0F);
    static_cast<void>(body(at + 1, size, 1));
    const std::uint64_t result = number(at + 1, size);
    at += 1 + size;
    return result;
  }

  void checkText16(std::string_view text) const {
    bool highBefore = false;
    for (std::size_t index = 0; index + 1 < text.size(); index += 2) {
      const unsigned unit = static_cast<unsigned>(static_cast<std::uint8_t>(text[index])) << 8 |
                            static_cast<std::uint8_t>(text[index + 1]);
      const bool isLow = unit >= 0xDC00 && unit <= 0xDFFF;
      if (isLow != highBefore) throw PropertyListError("text holds half of a surrogate pair");
      if (unit == 0) throw PropertyListError("text holds a null character");
      highBefore = unit >= 0xD800 && unit <= 0xDBFF;
    }
    if (highBefore) throw PropertyListError("text holds half of a surrogate pair");
  }

  void checkInteger(std::size_t at, std::uint64_t size) const {
    static_cast<void>(body(at, size, 1));
    // libplist keeps the low 64 bits of a 128-bit integer, as an unsigned one; whatever does not fit would be lost.
    if (size == 16 && number(at, 8) != 0) throw PropertyListError("an integer has more than 64 bits");
  }

  void checkReal(std::size_t at, std::size_t size) const {
    static_cast<void>(body(at, size, 1));
    if (size == 4) {
      checkPropertyListNumber(static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(number(at, 4)))));
    } else {
      checkPropertyListNumber(std::bit_cast<double>(number(at, 8)));
    }
  }

  void checkKey(std::uint64_t index) const {
    const std::uint64_t type = number(placeOf(index), 1) >> 4;
    if (type != 0x5 && type != 0x6) damaged("a key is no text");
  }

  /// Checks an object that stands `outer` containers deep, and all below it.
  void visit(std::uint64_t index, int outer) {
    Object& object = objects_[index];
    if (object.state == State::Open) damaged("an array or dictionary holds itself");
    if (object.state == State::Done) {
      checkPropertyListDepth(outer + object.levels);
      return;
    }
    object.state = State::Open;
    std::uint64_t values = 1;
    int levels = 0;

    std::size_t at = placeOf(index);
    const std::uint64_t marker = number(at, 1);
    switch (marker >> 4) {
      case 0x0:
        if (marker != 0x08 && marker != 0x09) damaged("an object is of an unknown type");
        break;
      case 0x1:
        if (marker > 0x14) damaged("an integer has a wrong size");
        checkInteger(at + 1, std::uint64_t{1} << (marker & 0x0F));
        break;
      case 0x2:
        if (marker != 0x22 && marker != 0x23) damaged("a real has a wrong size");
        checkReal(at + 1, marker == 0x22 ? 4 : 8);
        break;
      case 0x3:
        if (marker != 0x33) damaged("a date has a wrong size");
        checkReal(at + 1, 8);
        break;
      case 0x4: {
        const std::uint64_t size = count(at);
        static_cast<void>(body(at, size, 1));
        break;
      }
      case 0x5: {
        // Meant for ASCII; writers exist that put UTF-8 here.
        const std::uint64_t size = count(at);
        checkPropertyListText(body(at, size, 1));
        break;
      }
      case 0x6: {
        const std::uint64_t units = count(at);
        checkText16(body(at, units, 2));
        break;
      }
      case 0x8: {
        const std::uint64_t size = (marker & 0x0F) + 1;
        if (size > 8 || !std::has_single_bit(size)) damaged("a UID has a wrong size");
        static_cast<void>(body(at + 1, size, 1));
        break;
      }
      case 0xA:
      case 0xD: {
        checkPropertyListDepth(outer + 1);
        const bool isDictionary = marker >> 4 == 0xD;
        const std::uint64_t entries = count(at);
        const std::string_view references = body(at, entries, referenceSize_ * (isDictionary ? 2 : 1));
        const std::uint64_t references_count = references.size() / referenceSize_;
        for (std::uint64_t entry = 0; entry < references_count; ++entry) {
          const std::uint64_t child = number(at + entry * referenceSize_, referenceSize_);
          if (child >= objects_.size()) damaged("an object is missing");
          if (isDictionary && entry < entries) checkKey(child);
          visit(child, outer + 1);
          levels = std::max(levels, int{objects_[child].levels});
          values += objects_[child].values;
          if (values > kMaxPropertyListValues) throw PropertyListError("holds too many values");
        }
        ++levels;
        break;
      }
      default:
        damaged("an object is of an unknown type");
    }

    object.state = State::Done;
    object.levels = static_cast<std::uint8_t>(levels);
    object.values = static_cast<std::uint32_t>(values);
  }

  std::string_view bytes_;
  std::uint64_t offsetSize_ = 0;
  std::uint64_t referenceSize_ = 0;
  std::uint64_t top_ = 0;
  std::uint64_t tableStart_ = 0;
  std::vector<Object> objects_;
};

/// The bytes that a number needs: 1, 2, 4 or 8.
std::size_t widthOf(std::uint64_t number) {
  if (number <= 0xFF) return 1;
  if (number <= 0xFFFF) return 2;
  return number <= 0xFFFFFFFF ? 4 : 8;
}

void appendNumber(std::string& bytes, std::uint64_t number, std::size_t width) {
  std::array<char, 8> ordered{};
  for (std::size_t place = 0; place < width; ++place) {
    ordered[place] = static_cast<char>(number >> (8 * (width - 1 - place)) & 0xFF);
  }
  bytes.append(ordered.data(), width);
}

/// Appends a marker with its type in the high half; the low half of an integer is the power of two of its width.
void appendMarker(std::string& bytes, std::uint8_t type, std::size_t low) {
  bytes += static_cast<char>(type | low);
}

std::string integerBytes(std::uint64_t number) {
  const std::size_t width = widthOf(number);
  std::string bytes;
  appendMarker(bytes, 0x10, static_cast<std::size_t>(std::countr_zero(width)));
  appendNumber(bytes, number, width);
  return bytes;
}

/// A marker with a count, which follows as an integer object where the low half can't hold it.
std::string countedMarker(std::uint8_t type, std::size_t count) {
  constexpr std::size_t kFollows = 0x0F;
  std::string bytes;
  appendMarker(bytes, type, std::min(count, kFollows));
  if (count >= kFollows) bytes += integerBytes(count);
  return bytes;
}

/// The units of UTF-16, big-endian.
std::string utf16(std::string_view text) {
  std::string units;
  while (!text.empty()) {
    const Utf8Character character = firstCharacter(text);
    text.remove_prefix(character.length);
    if (character.codePoint < 0x10000) {
      appendNumber(units, character.codePoint, 2);
    } else {
      const std::uint32_t above = character.codePoint - 0x10000;
      appendNumber(units, 0xD800 + (above >> 10), 2);
      appendNumber(units, 0xDC00 + (above & 0x3FF), 2);
    }
  }
  return units;
}

/// A text as ASCII where it is that, else as UTF-16.
std::string textBytes(std::string_view text) {
  const bool isAscii = std::ranges::all_of(text, [](char each) { return static_cast<unsigned char>(each) < 0x80; });
  if (isAscii) return countedMarker(0x50, text.size()).append(text);
  const std::string units = utf16(text);
  return countedMarker(0x60, units.size() / 2) + units;
}

}  // namespace

bool isBinaryPropertyList(std::string_view bytes) {
  return bytes.starts_with(kMagic);
}

void checkBinaryPropertyList(std::string_view bytes) {
  BinaryCheck(bytes).run();
}

BinaryPropertyListWriter::Object BinaryPropertyListWriter::addBoolean(bool boolean) {
  return addScalar(boolean ? "\x09" : "\x08");
}

BinaryPropertyListWriter::Object BinaryPropertyListWriter::addInteger(std::int64_t integer) {
  // A negative one has all eight bytes, whose highest bit tells it.
  return addScalar(integerBytes(static_cast<std::uint64_t>(integer)));
}

BinaryPropertyListWriter::Object BinaryPropertyListWriter::addWideUnsigned(std::uint64_t integer) {
  std::string bytes = "\x14";
  appendNumber(bytes, 0, 8);
  appendNumber(bytes, integer, 8);
  return addScalar(std::move(bytes));
}

BinaryPropertyListWriter::Object BinaryPropertyListWriter::addReal(double real) {
  std::string bytes = "\x23";
  appendNumber(bytes, std::bit_cast<std::uint64_t>(real), 8);
  return addScalar(std::move(bytes));
}

BinaryPropertyListWriter::Object BinaryPropertyListWriter::addDate(double seconds) {
  std::string bytes = "\x33";
  appendNumber(bytes, std::bit_cast<std::uint64_t>(seconds), 8);
  return addScalar(std::move(bytes));
}

BinaryPropertyListWriter::Object BinaryPropertyListWriter::addText(std::string_view text) {
  return addScalar(textBytes(text));
}

BinaryPropertyListWriter::Object BinaryPropertyListWriter::addData(std::string_view data) {
  return addScalar(countedMarker(0x40, data.size()).append(data));
}

BinaryPropertyListWriter::Object BinaryPropertyListWriter::addUid(std::uint64_t uid) {
  const std::size_t width = widthOf(uid);
  std::string bytes;
  appendMarker(bytes, 0x80, width - 1);
  appendNumber(bytes, uid, width);
  return addScalar(std::move(bytes));
}

BinaryPropertyListWriter::Object BinaryPropertyListWriter::addArray(const std::vector<Object>& items) {
  part_.references.insert(part_.references.end(), items.begin(), items.end());
  return addObject(countedMarker(0xA0, items.size()), items.size());
}

BinaryPropertyListWriter::Object BinaryPropertyListWriter::addDictionary(const std::vector<Object>& keys,
                                                                         const std::vector<Object>& values) {
  part_.references.insert(part_.references.end(), keys.begin(), keys.end());
  part_.references.insert(part_.references.end(), values.begin(), values.end());
  return addObject(countedMarker(0xD0, keys.size()), keys.size() + values.size());
}

BinaryPropertyListWriter::Object BinaryPropertyListWriter::addScalar(std::string bytes) {
  const auto known = scalars_.find(bytes);
  if (known != scalars_.end()) return known->second;
  const Object added = addObject(bytes, 0);
  scalars_.emplace(std::move(bytes), added);
  return added;
}

BinaryPropertyListWriter::Object BinaryPropertyListWriter::addObject(std::string_view bytes, std::size_t references) {
  part_.bytes += bytes;
  // Checked before it is kept; a file is never that large.
  checkPropertyListSize(part_.bytes.size());
  part_.entries.push_back({static_cast<std::uint32_t>(part_.bytes.size()), static_cast<std::uint32_t>(references)});
  return static_cast<Object>(part_.entries.size() - 1);
}

BinaryPropertyListPart BinaryPropertyListWriter::finish(Object top) {
  part_.top = top;
  scalars_.clear();
  return std::exchange(part_, {});
}

namespace {

/// A file as it is put together.
class BinaryFile {
 public:
  explicit BinaryFile(std::size_t objects) : referenceWidth_(widthOf(objects)), bytes_(kMagic) {
    places_.reserve(objects);
  }

  /// Returns the number of the part's value in the file.
  std::size_t append(const BinaryPropertyListPart& part) {
    const std::size_t first = places_.size();
    std::size_t begin = 0;
    const auto* reference = part.references.data();
    for (const auto& entry : part.entries) {
      places_.push_back(bytes_.size());
      bytes_.append(part.bytes, begin, entry.end - begin);
      begin = entry.end;
      for (std::uint32_t count = 0; count < entry.references; ++count) appendReference(first + *reference++);
    }
    return first + part.top;
  }
  /// The same for an object without references.
  std::size_t append(std::string_view object) {
    places_.push_back(bytes_.size());
    bytes_ += object;
    return places_.size() - 1;
  }
  /// Appends a reference of the object that was appended last.
  void appendReference(std::size_t object) { appendNumber(bytes_, object, referenceWidth_); }

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
  std::size_t referenceWidth_;
  std::string bytes_;
  std::vector<std::size_t> places_;
};

}  // namespace

std::string binaryPropertyList(const BinaryPropertyListPart& part) {
  BinaryFile file(part.entries.size());
  const std::size_t top = file.append(part);
  return file.finish(top);
}

std::string binaryPropertyList(const std::vector<std::pair<std::string_view, const BinaryPropertyListPart*>>& entries) {
  // The keys and the dictionary itself.
  std::size_t objects = entries.size() + 1;
  for (const auto& [key, part] : entries) objects += part->entries.size();
  BinaryFile file(objects);
  std::vector<std::size_t> keys;
  std::vector<std::size_t> values;
  for (const auto& [key, part] : entries) {
    keys.push_back(file.append(textBytes(key)));
    values.push_back(file.append(*part));
  }
  const std::size_t top = file.append(countedMarker(0xD0, entries.size()));
  for (const std::size_t key : keys) file.appendReference(key);
  for (const std::size_t value : values) file.appendReference(value);
  return file.finish(top);
}

}  // namespace quellar::host::linux

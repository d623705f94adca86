// SPDX-License-Identifier: MIT
#include "host/linux/property_list_binary.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/linux/property_list_rules.h"

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

}  // namespace

bool isBinaryPropertyList(std::string_view bytes) {
  return bytes.starts_with(kMagic);
}

void checkBinaryPropertyList(std::string_view bytes) {
  BinaryCheck(bytes).run();
}

}  // namespace quellar::host::linux

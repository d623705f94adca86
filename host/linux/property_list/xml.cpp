// SPDX-License-Identifier: MIT
#include "host/linux/property_list/xml.h"

#include <expat.h>
#include <locale.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quellar::host::linux {

namespace {

using Object = PropertyListObjects::Object;

constexpr std::string_view kXmlSpace = " \t\r\n";

std::string_view trimmed(std::string_view text) {
  const std::size_t start = text.find_first_not_of(kXmlSpace);
  if (start == std::string_view::npos) return {};
  return text.substr(start, text.find_last_not_of(kXmlSpace) - start + 1);
}

bool isBlank(std::string_view text) {
  return text.find_first_not_of(kXmlSpace) == std::string_view::npos;
}

Object addInteger(PropertyListBuilder& builder, std::string_view text) {
  std::string_view digits = trimmed(text);
  const bool isNegative = digits.starts_with('-');
  if (isNegative || digits.starts_with('+')) digits.remove_prefix(1);
  const int base = digits.starts_with("0x") || digits.starts_with("0X") ? 16 : 10;
  if (base == 16) digits.remove_prefix(2);
  std::uint64_t magnitude = 0;
  const auto [rest, error] = std::from_chars(digits.data(), digits.data() + digits.size(), magnitude, base);
  if (error == std::errc::result_out_of_range || (isNegative && magnitude > kLastSigned + 1)) {
    throw PropertyListError("an integer has more than 64 bits");
  }
  if (error != std::errc() || rest != digits.data() + digits.size()) throw PropertyListError("an integer is no number");
  if (isNegative) return builder.addInteger(static_cast<std::int64_t>(std::uint64_t{0} - magnitude));
  if (magnitude > kLastSigned) return builder.addWideInteger(magnitude);
  return builder.addInteger(static_cast<std::int64_t>(magnitude));
}

Object addReal(PropertyListBuilder& builder, std::string_view text) {
  const std::string number(trimmed(text));
  // A point whatever the user's locale: the numbers of a file are the same everywhere.
  static const locale_t kPlainLocale = newlocale(LC_ALL_MASK, "C", nullptr);
  if (kPlainLocale == nullptr) throw std::bad_alloc();
  char* rest = nullptr;
  const double real = strtod_l(number.c_str(), &rest, kPlainLocale);
  const bool isHexadecimal = number.find_first_of("xX") != std::string::npos;
  if (number.empty() || isHexadecimal || rest != number.c_str() + number.size()) {
    throw PropertyListError("a real is no number");
  }
  checkPropertyListNumber(real);
  return builder.addReal(real);
}

/// Adds "2024-02-29T12:30:00Z", the one form of a date in XML.
Object addDate(PropertyListBuilder& builder, std::string_view text) {
  const std::string_view date = trimmed(text);
  constexpr std::string_view kShape = "dddd-dd-ddTdd:dd:ddZ";
  bool fits = date.size() == kShape.size();
  for (std::size_t index = 0; fits && index < kShape.size(); ++index) {
    fits = kShape[index] == 'd' ? date[index] >= '0' && date[index] <= '9' : date[index] == kShape[index];
  }
  if (!fits) throw PropertyListError("a date is not of the form YYYY-MM-DDThh:mm:ssZ");
  const auto field = [&](std::size_t start, std::size_t size) {
    int number = 0;
    std::from_chars(date.data() + start, date.data() + start + size, number);
    return number;
  };
  using namespace std::chrono;
  const year_month_day day{year{field(0, 4)}, month{static_cast<unsigned>(field(5, 2))},
                           std::chrono::day{static_cast<unsigned>(field(8, 2))}};
  const int hour = field(11, 2);
  const int minute = field(14, 2);
  const int second = field(17, 2);
  if (!day.ok() || hour > 23 || minute > 59 || second > 60) throw PropertyListError("a date is none of the calendar");
  constexpr sys_days kEpoch = year{2001} / January / 1;
  const auto time = sys_days{day} - kEpoch + hours{hour} + minutes{minute} + seconds{second};
  return builder.addDate(static_cast<double>(duration_cast<seconds>(time).count()));
}

Object addData(PropertyListBuilder& builder, std::string_view text) {
  std::string bytes;
  std::uint32_t bits = 0;
  int bitCount = 0;
  std::size_t digits = 0;
  std::size_t padding = 0;
  for (const char character : text) {
    if (kXmlSpace.find(character) != std::string_view::npos) continue;
    ++digits;
    if (character == '=') {
      ++padding;
      continue;
    }
    constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::size_t digit = kDigits.find(character);
    if (digit == std::string_view::npos || padding > 0) throw PropertyListError("data is not base64");
    bits = bits << 6 | static_cast<std::uint32_t>(digit);
    bitCount += 6;
    if (bitCount >= 8) {
      bitCount -= 8;
      bytes += static_cast<char>(static_cast<std::uint8_t>(bits >> bitCount));
    }
  }
  if (digits % 4 != 0 || padding > 2) throw PropertyListError("data is not base64");
  return builder.addData(bytes);
}

/// Puts the objects together from the elements of a document, one after another.
class XmlPropertyList {
 public:
  void open(std::string_view name) {
    if (!isIn_) {
      if (name != "plist") throw PropertyListError("not a property list");
      isIn_ = true;
      return;
    }
    if (!scalar_.empty()) throw PropertyListError("<" + scalar_ + "> holds an element");
    if (isKeyNext()) {
      if (name != "key") throw PropertyListError("a dictionary entry has no key");
    } else if (containers_.empty() && top_) {
      throw PropertyListError("holds more than one value");
    } else if (name == "dict" || name == "array") {
      containers_.push_back({.isDictionary = name == "dict", .keys = {}, .items = {}});
      checkPropertyListDepth(static_cast<int>(containers_.size()));
      return;
    }
    scalar_ = name;
    text_.clear();
  }

  void text(std::string_view text) {
    if (!scalar_.empty()) {
      text_ += text;
    } else if (!isBlank(text)) {
      throw PropertyListError("text stands where none may be");
    }
  }

  void close() {
    if (!scalar_.empty()) {
      const std::string name = std::exchange(scalar_, {});
      if (isKeyNext()) {
        containers_.back().keys.push_back(addText());
      } else {
        hold(scalar(name));
      }
    } else if (!containers_.empty()) {
      Container& container = containers_.back();
      if (container.keys.size() > container.items.size()) throw PropertyListError("</dict> stands for a value");
      const Object object = container.isDictionary ? addDictionary(container) : builder_.addArray(container.items);
      containers_.pop_back();
      hold(object);
    } else if (!top_) {
      throw PropertyListError("</plist> stands for a value");
    }
  }

  PropertyListObjects finish() { return builder_.finish(*top_); }

 private:
  struct Container {
    bool isDictionary;
    /// A dictionary's; as many as there are items, or one more.
    std::vector<Object> keys;
    std::vector<Object> items;
  };

  [[nodiscard]] bool isKeyNext() const {
    return !containers_.empty() && containers_.back().isDictionary &&
           containers_.back().keys.size() == containers_.back().items.size();
  }

  void hold(Object object) {
    if (containers_.empty()) {
      top_ = object;
    } else {
      containers_.back().items.push_back(object);
    }
  }

  Object addDictionary(Container& container) {
    std::vector<Object>& both = container.keys;
    both.insert(both.end(), container.items.begin(), container.items.end());
    return builder_.addDictionary(both);
  }

  Object addText() {
    checkPropertyListText(text_);
    return builder_.addText(text_);
  }

  Object scalar(const std::string& name) {
    if (name == "string") return addText();
    if (name == "integer") return addInteger(builder_, text_);
    if (name == "real") return addReal(builder_, text_);
    if (name == "date") return addDate(builder_, text_);
    if (name == "data") return addData(builder_, text_);
    if ((name == "true" || name == "false") && isBlank(text_)) return builder_.addBoolean(name == "true");
    throw PropertyListError("<" + name + "> is no property-list element");
  }

  PropertyListBuilder builder_;
  bool isIn_ = false;
  std::vector<Container> containers_;
  std::optional<Object> top_;
  /// The name of the element that is neither an array nor a dictionary, while it is open, and its text.
  std::string scalar_;
  std::string text_;
};

// Memory for expat from where all other comes from, so that there is one place at which it can run out. expat wants to
// enlarge blocks, which operator new can't: the size stands before each.

constexpr std::size_t kSizeSpace = alignof(std::max_align_t);

void* allocate(std::size_t size) {
  if (size > std::numeric_limits<std::size_t>::max() - kSizeSpace) return nullptr;
  auto* block = static_cast<char*>(::operator new(kSizeSpace + size, std::nothrow));
  if (block == nullptr) return nullptr;
  std::memcpy(block, &size, sizeof size);
  return block + kSizeSpace;
}

void release(void* memory) {
  if (memory != nullptr) ::operator delete(static_cast<char*>(memory) - kSizeSpace);
}

void* reallocate(void* memory, std::size_t size) {
  void* larger = allocate(size);
  if (larger == nullptr || memory == nullptr) return larger;
  std::size_t former = 0;
  std::memcpy(&former, static_cast<char*>(memory) - kSizeSpace, sizeof former);
  std::memcpy(larger, memory, std::min(former, size));
  release(memory);
  return larger;
}

/// Reads a document through expat, which must not see an exception: the first one ends the reading and is thrown again
/// afterwards.
class XmlReader {
 public:
  XmlReader() {
    constexpr XML_Memory_Handling_Suite kMemory = {allocate, reallocate, release};
    parser_.reset(XML_ParserCreate_MM(nullptr, &kMemory, nullptr));
    if (!parser_) throw std::bad_alloc();
    XML_SetUserData(parser_.get(), this);
    XML_SetElementHandler(
        parser_.get(),
        [](void* self, const char* name, const char**) { on(self, [&](auto& list) { list.open(name); }); },
        [](void* self, const char*) { on(self, [](auto& list) { list.close(); }); });
    XML_SetCharacterDataHandler(parser_.get(), [](void* self, const char* text, int size) {
      on(self, [&](auto& list) { list.text({text, static_cast<std::size_t>(size)}); });
    });
    XML_SetStartDoctypeDeclHandler(parser_.get(),
                                   [](void* self, const char*, const char*, const char*, int hasDeclarations) {
                                     if (hasDeclarations != 0) refuse(self, "its document type declares something");
                                   });
    // Where the document type names a file, expat takes it that unknown entities are declared there.
    XML_SetSkippedEntityHandler(parser_.get(),
                                [](void* self, const char*, int) { refuse(self, "an entity is not known"); });
  }

  PropertyListObjects read(std::string_view document) {
    checkPropertyListSize(document.size());
    const auto size = static_cast<int>(document.size());
    const bool isRead = XML_Parse(parser_.get(), document.data(), size, XML_TRUE) == XML_STATUS_OK;
    if (failure_) std::rethrow_exception(failure_);
    if (!isRead) fail();
    return list_.finish();
  }

 private:
  struct Free {
    void operator()(XML_ParserStruct* parser) const { XML_ParserFree(parser); }
  };

  template <typename Action>
  static void on(void* reader, Action action) noexcept {
    auto& self = *static_cast<XmlReader*>(reader);
    // expat may have more to tell of what it was in when it was stopped.
    if (self.failure_) return;
    try {
      action(self.list_);
    } catch (...) {
      self.failure_ = std::current_exception();
      XML_StopParser(self.parser_.get(), XML_FALSE);
    }
  }

  static void refuse(void* reader, const char* why) noexcept {
    on(reader, [&](auto&) { static_cast<XmlReader*>(reader)->damaged(why); });
  }

  [[noreturn]] void fail() const {
    const XML_Error error = XML_GetErrorCode(parser_.get());
    switch (error) {
      case XML_ERROR_NO_MEMORY:
        throw std::bad_alloc();
      case XML_ERROR_NO_ELEMENTS:
      case XML_ERROR_UNCLOSED_TOKEN:
      case XML_ERROR_PARTIAL_CHAR:
      case XML_ERROR_UNCLOSED_CDATA_SECTION:
        damaged("it is cut off");
      default:
        damaged(XML_ErrorString(error));
    }
  }

  [[noreturn]] void damaged(const char* why) const {
    throw PropertyListError("damaged XML property list: line " +
                            std::to_string(XML_GetCurrentLineNumber(parser_.get())) + ": " + why);
  }

  std::unique_ptr<XML_ParserStruct, Free> parser_;
  XmlPropertyList list_;
  std::exception_ptr failure_;
};

/// The order of the bytes where expat takes a document for UTF-16.
std::optional<std::endian> utf16Order(std::string_view document) {
  using namespace std::string_view_literals;
  if (document.starts_with("\xFE\xFF") || document.starts_with("\0<"sv)) return std::endian::big;
  if (document.starts_with("\xFF\xFE") || document.starts_with("<\0"sv)) return std::endian::little;
  return std::nullopt;
}

}  // namespace

bool looksLikeXml(std::string_view bytes) {
  if (bytes.starts_with("\xEF\xBB\xBF<") || utf16Order(bytes)) return true;
  constexpr std::size_t kMostSpace = 64;
  return trimmed(bytes.substr(0, kMostSpace)).starts_with('<');
}

PropertyListObjects readXmlPropertyList(std::string_view document) {
  // expat takes any two units for a surrogate pair whose first one is the first half of one.
  if (const auto order = utf16Order(document)) checkPropertyListUtf16(document, *order);
  return XmlReader().read(document);
}

}  // namespace quellar::host::linux

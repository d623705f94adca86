// SPDX-License-Identifier: MIT
#include "host/linux/property_list_file.h"

#include <locale.h>
#include <plist/plist.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <new>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "host/linux/property_list_binary.h"
#include "host/linux/property_list_xml.h"

namespace quellar::host::linux {

using platform::Array;
using platform::Data;
using platform::Date;
using platform::Dictionary;
using platform::Value;

void PropertyListNodeFree::operator()(void* node) const {
  plist_free(node);
}

namespace {

using Node = PropertyListNode;

constexpr std::uint64_t kLastSigned = std::numeric_limits<std::int64_t>::max();
constexpr std::uint8_t kDateMarker = 0x33;
constexpr std::uint8_t kWideIntegerMarker = 0x14;
/// The key of the dictionary that a UID is in XML.
constexpr const char* kUidKey = "CF$UID";

Node owned(plist_t node) {
  if (node == nullptr) throw std::bad_alloc();
  return Node(node);
}

// Two kinds of scalars don't fit through the library's calls: dates, which these cut to 32-bit seconds, and unsigned
// integers of 64 bits, which they take for negative ones. They travel as a binary property list of one object.

Node scalarNode(std::uint8_t marker, std::uint64_t bits) {
  std::string bytes = "bplist00";
  bytes += static_cast<char>(marker);
  const auto append = [&](std::uint64_t number) {
    for (int shift = 56; shift >= 0; shift -= 8) bytes += static_cast<char>(static_cast<std::uint8_t>(number >> shift));
  };
  if (marker == kWideIntegerMarker) append(0);
  append(bits);
  const std::size_t table = bytes.size();
  bytes += '\x08';
  bytes.append(6, '\0');
  bytes += "\x01\x01";
  append(1);
  append(0);
  append(table);
  plist_t node = nullptr;
  plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &node);
  return owned(node);
}

Node dateNode(double seconds) {
  return scalarNode(kDateMarker, std::bit_cast<std::uint64_t>(seconds));
}

double dateSeconds(plist_t node) {
  struct Free {
    void operator()(char* bytes) const { plist_to_bin_free(bytes); }
  };
  // The library writes nothing unless the pointer that it is to set is null.
  char* bytes = nullptr;
  std::uint32_t size = 0;
  plist_to_bin(node, &bytes, &size);
  const std::unique_ptr<char, Free> owner(bytes);
  if (bytes == nullptr) throw std::bad_alloc();
  std::uint64_t bits = 0;
  for (const char byte : std::string_view(bytes, size).substr(9, 8)) bits = bits << 8 | static_cast<std::uint8_t>(byte);
  return std::bit_cast<double>(bits);
}

Node unsignedNode(std::uint64_t number) {
  return number <= kLastSigned ? owned(plist_new_uint(number)) : scalarNode(kWideIntegerMarker, number);
}

/// Whether an integer node is an unsigned one that no std::int64_t holds. The library gives both kinds as the same 64
/// bits, but compares them as unequal.
bool isWideUnsigned(plist_t node, std::uint64_t bits) {
  if (bits <= kLastSigned) return false;
  const Node asSigned = owned(plist_new_uint(bits));
  return plist_compare_node_value(node, asSigned.get()) == 0;
}

// Nodes to values.

std::string textOf(plist_t node) {
  std::uint64_t size = 0;
  const char* text = plist_get_string_ptr(node, &size);
  return text == nullptr ? std::string() : std::string(text, size);
}

std::uint64_t uidOf(plist_t node) {
  std::uint64_t uid = 0;
  plist_get_uid_val(node, &uid);
  return uid;
}

/// Calls `visit(key, child)` for each entry of a dictionary node.
template <typename Visit>
void forEachEntry(plist_t node, Visit visit) {
  struct Free {
    void operator()(void* memory) const { std::free(memory); }
  };
  plist_dict_iter place = nullptr;
  plist_dict_new_iter(node, &place);
  const std::unique_ptr<void, Free> placeOwner(place);
  while (true) {
    char* key = nullptr;
    plist_t child = nullptr;
    plist_dict_next_item(node, place, &key, &child);
    const std::unique_ptr<char, Free> keyOwner(key);
    if (child == nullptr) return;
    visit(key, child);
  }
}

/// The items of an array node, one after another; of any other node, or null, there are none.
class Items {
 public:
  explicit Items(plist_t node) : node_(node) {
    if (node == nullptr || plist_get_node_type(node) != PLIST_ARRAY) return;
    plist_array_iter place = nullptr;
    plist_array_new_iter(node, &place);
    place_.reset(place);
  }

  /// The next item, or null at the end.
  plist_t next() {
    plist_t item = nullptr;
    if (place_) plist_array_next_item(node_, place_.get(), &item);
    return item;
  }

 private:
  struct Free {
    void operator()(void* memory) const { std::free(memory); }
  };
  plist_t node_;
  std::unique_ptr<void, Free> place_;
};

Value integerValue(plist_t node) {
  std::uint64_t bits = 0;
  plist_get_uint_val(node, &bits);
  if (isWideUnsigned(node, bits)) return static_cast<double>(bits);
  return static_cast<std::int64_t>(bits);
}

Value uidValue(plist_t node) {
  const std::uint64_t uid = uidOf(node);
  const Value number = uid <= kLastSigned ? Value(static_cast<std::int64_t>(uid)) : Value(static_cast<double>(uid));
  return Dictionary{{kUidKey, number}};
}

Value valueOf(plist_t node) {
  switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
      std::uint8_t boolean = 0;
      plist_get_bool_val(node, &boolean);
      return boolean != 0;
    }
    case PLIST_UINT:
      return integerValue(node);
    case PLIST_REAL: {
      double real = 0;
      plist_get_real_val(node, &real);
      return real;
    }
    case PLIST_STRING:
      return textOf(node);
    case PLIST_DATA: {
      std::uint64_t size = 0;
      const char* bytes = plist_get_data_ptr(node, &size);
      Data data;
      if (bytes != nullptr) data.bytes.assign(bytes, bytes + size);
      return data;
    }
    case PLIST_DATE:
      return Date{dateSeconds(node)};
    case PLIST_ARRAY: {
      Array array;
      array.reserve(plist_array_get_size(node));
      Items items(node);
      while (const plist_t item = items.next()) array.push_back(valueOf(item));
      return array;
    }
    case PLIST_DICT: {
      Dictionary dictionary;
      forEachEntry(node, [&](const char* key, plist_t child) { dictionary.insert_or_assign(key, valueOf(child)); });
      return dictionary;
    }
    case PLIST_UID:
      return uidValue(node);
    case PLIST_KEY:
    case PLIST_NONE:
      break;
  }
  throw PropertyListError("an object is of an unknown type");
}

// Nodes to bytes.

using Writer = BinaryPropertyListWriter;

/// Adds a node with all below it.
Writer::Object add(Writer& writer, plist_t node) {
  switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
      std::uint8_t boolean = 0;
      plist_get_bool_val(node, &boolean);
      return writer.addBoolean(boolean != 0);
    }
    case PLIST_UINT: {
      std::uint64_t bits = 0;
      plist_get_uint_val(node, &bits);
      return isWideUnsigned(node, bits) ? writer.addWideUnsigned(bits)
                                        : writer.addInteger(static_cast<std::int64_t>(bits));
    }
    case PLIST_REAL: {
      double real = 0;
      plist_get_real_val(node, &real);
      return writer.addReal(real);
    }
    case PLIST_STRING:
      return writer.addText(textOf(node));
    case PLIST_DATA: {
      std::uint64_t size = 0;
      const char* bytes = plist_get_data_ptr(node, &size);
      return writer.addData(bytes == nullptr ? std::string_view() : std::string_view(bytes, size));
    }
    case PLIST_DATE:
      return writer.addDate(dateSeconds(node));
    case PLIST_ARRAY: {
      std::vector<Writer::Object> items;
      Items children(node);
      while (const plist_t child = children.next()) items.push_back(add(writer, child));
      return writer.addArray(items);
    }
    case PLIST_DICT: {
      std::vector<Writer::Object> keys;
      std::vector<Writer::Object> values;
      forEachEntry(node, [&](const char* key, plist_t child) {
        keys.push_back(writer.addText(key));
        values.push_back(add(writer, child));
      });
      return writer.addDictionary(keys, values);
    }
    case PLIST_UID:
      return writer.addUid(uidOf(node));
    case PLIST_KEY:
    case PLIST_NONE:
      break;
  }
  throw PropertyListError("can't be written as a binary property list");
}

BinaryPropertyListPart partOf(plist_t node) {
  Writer writer;
  const Writer::Object top = add(writer, node);
  return writer.finish(top);
}

EncodedPropertyList encoded(std::string bytes) {
  checkPropertyListSize(bytes.size());
  return EncodedPropertyList(std::move(bytes));
}

// Values to nodes.

/// Throws PropertyListError unless the value can be stored `depth` containers deep.
void checkStorable(const Value& value, int depth) {
  if (const auto* text = value.as<std::string>()) {
    checkPropertyListText(*text);
  } else if (const double* real = value.as<double>()) {
    checkPropertyListNumber(*real);
  } else if (const auto* date = value.as<Date>()) {
    checkPropertyListNumber(date->seconds);
  } else if (const auto* array = value.as<Array>()) {
    checkPropertyListDepth(depth + 1);
    for (const Value& item : *array) checkStorable(item, depth + 1);
  } else if (const auto* dictionary = value.as<Dictionary>()) {
    checkPropertyListDepth(depth + 1);
    for (const auto& [key, item] : *dictionary) {
      checkPropertyListText(key);
      checkStorable(item, depth + 1);
    }
  }
}

/// Whether a node is one that no Value tells exactly, and `value` is how it reads.
bool standsFor(const Value& value, plist_t node) {
  if (node == nullptr) return false;
  const plist_type type = plist_get_node_type(node);
  if (type == PLIST_UID) return value == uidValue(node);
  return type == PLIST_UINT && value.is<double>() && value == integerValue(node);
}

/// The entries of the dictionary that stood in a new one's place, if it was one. The library looks for each entry among
/// all; a file may hold so many in one dictionary that this would never end.
class FormerEntries {
 public:
  explicit FormerEntries(plist_t former)
      : former_(former != nullptr && plist_get_node_type(former) == PLIST_DICT ? former : nullptr) {
    constexpr std::uint32_t kMany = 100;
    if (former_ == nullptr || plist_dict_get_size(former_) <= kMany) return;
    forEachEntry(former_, [&](const char* key, plist_t child) { byKey_.insert_or_assign(key, child); });
  }

  /// The node of a key, or null.
  [[nodiscard]] plist_t find(const std::string& key) const {
    if (former_ == nullptr) return nullptr;
    if (byKey_.empty()) return plist_dict_get_item(former_, key.c_str());
    const auto entry = byKey_.find(key);
    return entry == byKey_.end() ? nullptr : entry->second;
  }

 private:
  plist_t former_;
  std::unordered_map<std::string, plist_t> byKey_;
};

/// Makes the node of a value that is to stand where `former` (or nothing) stood.
Node nodeOf(const Value& value, plist_t former) {
  if (standsFor(value, former)) return owned(plist_copy(former));
  if (const bool* boolean = value.as<bool>()) return owned(plist_new_bool(*boolean ? 1 : 0));
  if (const auto* integer = value.as<std::int64_t>())
    return owned(plist_new_uint(static_cast<std::uint64_t>(*integer)));
  if (const double* real = value.as<double>()) return owned(plist_new_real(*real));
  if (const auto* text = value.as<std::string>()) return owned(plist_new_string(text->c_str()));
  if (const auto* date = value.as<Date>()) return dateNode(date->seconds);
  if (const auto* data = value.as<Data>()) {
    // The library copies from the pointer even where there is nothing to copy.
    const std::string bytes(data->bytes.begin(), data->bytes.end());
    return owned(plist_new_data(bytes.data(), bytes.size()));
  }
  if (const auto* array = value.as<Array>()) {
    Node node = owned(plist_new_array());
    Items formerItems(former);
    for (const Value& item : *array) {
      plist_array_append_item(node.get(), nodeOf(item, formerItems.next()).release());
    }
    return node;
  }
  Node node = owned(plist_new_dict());
  const FormerEntries formerEntries(former);
  for (const auto& [key, item] : *value.as<Dictionary>()) {
    plist_dict_set_item(node.get(), key.c_str(), nodeOf(item, formerEntries.find(key)).release());
  }
  return node;
}

// XML. It is read here and not by the library, which takes broken documents and reads reals by the process's locale.

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kSpace = " \t\r\n";
  const std::size_t start = text.find_first_not_of(kSpace);
  if (start == std::string_view::npos) return {};
  return text.substr(start, text.find_last_not_of(kSpace) - start + 1);
}

Node xmlInteger(std::string_view text) {
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
  return isNegative ? owned(plist_new_uint(std::uint64_t{0} - magnitude)) : unsignedNode(magnitude);
}

Node xmlReal(std::string_view text) {
  const std::string number(trimmed(text));
  // A point whatever the user's locale: the numbers of a file are the same everywhere.
  static const locale_t kPlainLocale = newlocale(LC_ALL_MASK, "C", nullptr);
  char* rest = nullptr;
  const double real = strtod_l(number.c_str(), &rest, kPlainLocale);
  const bool isHexadecimal = number.find_first_of("xX") != std::string::npos;
  if (number.empty() || isHexadecimal || rest != number.c_str() + number.size()) {
    throw PropertyListError("a real is no number");
  }
  checkPropertyListNumber(real);
  return owned(plist_new_real(real));
}

/// Reads "2024-02-29T12:30:00Z", the one form of a date in XML.
Node xmlDate(std::string_view text) {
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
  return dateNode(static_cast<double>(duration_cast<seconds>(time).count()));
}

Node xmlData(std::string_view text) {
  std::string bytes;
  std::uint32_t bits = 0;
  int bitCount = 0;
  std::size_t digits = 0;
  std::size_t padding = 0;
  for (const char character : text) {
    if (character == ' ' || character == '\t' || character == '\r' || character == '\n') continue;
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
  return owned(plist_new_data(bytes.data(), bytes.size()));
}

class XmlPropertyList {
 public:
  explicit XmlPropertyList(std::string_view document) : reader_(document) {}

  Node read() {
    if (!isOpening(reader_.nextTag(), "plist")) throw PropertyListError("not a property list");
    Node node = element(reader_.nextTag(), 0);
    if (!isClosing(reader_.nextTag(), "plist")) throw PropertyListError("holds more than one value");
    reader_.finish();
    return node;
  }

 private:
  using Tag = XmlReader::Tag;
  using TagKind = XmlReader::TagKind;

  static bool isOpening(const Tag& tag, std::string_view name) { return tag.kind == TagKind::Open && tag.name == name; }
  static bool isClosing(const Tag& tag, std::string_view name) {
    return tag.kind == TagKind::Close && tag.name == name;
  }

  std::string text(const Tag& tag) { return tag.kind == TagKind::Empty ? std::string() : reader_.text(tag.name); }

  /// Reads the element that `tag` opens, which stands `outer` containers deep.
  Node element(const Tag& tag, int outer) {
    if (tag.kind == TagKind::Close) throw PropertyListError("</" + std::string(tag.name) + "> stands for a value");
    if (tag.name == "dict") return dictionary(tag, outer + 1);
    if (tag.name == "array") return array(tag, outer + 1);
    const std::string content = text(tag);
    if (tag.name == "string") return owned(plist_new_string(content.c_str()));
    if (tag.name == "integer") return xmlInteger(content);
    if (tag.name == "real") return xmlReal(content);
    if (tag.name == "date") return xmlDate(content);
    if (tag.name == "data") return xmlData(content);
    if ((tag.name == "true" || tag.name == "false") && trimmed(content).empty()) {
      return owned(plist_new_bool(tag.name == "true" ? 1 : 0));
    }
    throw PropertyListError("<" + std::string(tag.name) + "> is no property-list element");
  }

  Node dictionary(const Tag& tag, int depth) {
    checkPropertyListDepth(depth);
    Node node = owned(plist_new_dict());
    if (tag.kind == TagKind::Empty) return node;
    for (Tag next = reader_.nextTag(); !isClosing(next, "dict"); next = reader_.nextTag()) {
      if (next.kind == TagKind::Close || next.name != "key") throw PropertyListError("a dictionary entry has no key");
      const std::string key = text(next);
      plist_dict_set_item(node.get(), key.c_str(), element(reader_.nextTag(), depth).release());
    }
    return node;
  }

  Node array(const Tag& tag, int depth) {
    checkPropertyListDepth(depth);
    Node node = owned(plist_new_array());
    if (tag.kind == TagKind::Empty) return node;
    for (Tag next = reader_.nextTag(); !isClosing(next, "array"); next = reader_.nextTag()) {
      plist_array_append_item(node.get(), element(next, depth).release());
    }
    return node;
  }

  XmlReader reader_;
};

Node parse(std::string_view bytes) {
  checkPropertyListSize(bytes.size());
  if (isBinaryPropertyList(bytes)) {
    checkBinaryPropertyList(bytes);
    plist_t node = nullptr;
    plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &node);
    if (node == nullptr) throw PropertyListError("not a property list");
    return Node(node);
  }
  const std::string_view start = trimmed(bytes.substr(0, 64));
  if (!start.starts_with('<') && !start.starts_with("\xEF\xBB\xBF<")) throw PropertyListError("not a property list");
  return XmlPropertyList(bytes).read();
}

/// A binary file may hold a key twice. Which one the library finds depends on the number of entries, and what it
/// removes uncovers the other: as in XML, the last one alone is kept.
void keepLastOfRepeatedKeys(Node& dictionary) {
  std::unordered_set<std::string> keys;
  bool repeated = false;
  forEachEntry(dictionary.get(), [&](const char* key, plist_t) { repeated |= !keys.insert(key).second; });
  if (!repeated) return;
  Node kept = owned(plist_new_dict());
  forEachEntry(dictionary.get(), [&](const char* key, plist_t child) {
    plist_dict_set_item(kept.get(), key, owned(plist_copy(child)).release());
  });
  dictionary = std::move(kept);
}

/// The entry of a dictionary node, or null; null too for a key that holds U+0000, which no entry has.
plist_t entry(plist_t dictionary, std::string_view key) {
  if (key.find('\0') != std::string_view::npos) return nullptr;
  return plist_dict_get_item(dictionary, std::string(key).c_str());
}

}  // namespace

Value parsePropertyList(std::string_view bytes) {
  return valueOf(parse(bytes).get());
}

EncodedPropertyList encodePropertyList(const Value& value) {
  checkStorable(value, 0);
  return encoded(binaryPropertyList(partOf(nodeOf(value, nullptr).get())));
}

PropertyListDictionary::PropertyListDictionary() : root_(owned(plist_new_dict())) {}

PropertyListDictionary::PropertyListDictionary(std::string_view bytes) : root_(parse(bytes)) {
  if (plist_get_node_type(root_.get()) != PLIST_DICT) throw PropertyListError("its top is not a dictionary");
  if (isBinaryPropertyList(bytes)) keepLastOfRepeatedKeys(root_);
}

std::optional<Value> PropertyListDictionary::value(std::string_view key) const {
  const plist_t node = entry(root_.get(), key);
  if (node == nullptr) return std::nullopt;
  return valueOf(node);
}

void PropertyListDictionary::set(std::string_view key, const Value& value) {
  checkPropertyListText(key);
  checkStorable(value, 1);
  Node node = nodeOf(value, entry(root_.get(), key));
  plist_dict_set_item(root_.get(), std::string(key).c_str(), node.release());
  forget(key);
}

void PropertyListDictionary::remove(std::string_view key) {
  forget(key);
  if (entry(root_.get(), key) != nullptr) plist_dict_remove_item(root_.get(), std::string(key).c_str());
}

void PropertyListDictionary::forget(std::string_view key) {
  const auto part = parts_.find(key);
  if (part != parts_.end()) parts_.erase(part);
}

EncodedPropertyList PropertyListDictionary::encode() const {
  std::vector<std::string> keys;
  forEachEntry(root_.get(), [&](const char* key, plist_t child) {
    keys.emplace_back(key);
    if (!parts_.contains(keys.back())) parts_.emplace(keys.back(), partOf(child));
  });
  std::vector<std::pair<std::string_view, const BinaryPropertyListPart*>> entries;
  entries.reserve(keys.size());
  for (const std::string& key : keys) entries.emplace_back(key, &parts_.find(key)->second);
  return encoded(binaryPropertyList(entries));
}

}  // namespace quellar::host::linux

// SPDX-License-Identifier: MIT
#include "libplist.h"

#include <plist/plist.h>

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>

namespace quellar::tests::fuzz {

using platform::Array;
using platform::Data;
using platform::Date;
using platform::Dictionary;
using platform::Value;

namespace {

constexpr std::uint64_t kLastSigned = std::numeric_limits<std::int64_t>::max();

struct NodeFree {
  void operator()(void* node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, NodeFree>;

struct MemoryFree {
  void operator()(void* memory) const { std::free(memory); }
};

/// The library's calls cut dates to 32-bit seconds; its binary form has the whole number.
double dateSeconds(plist_t node) {
  char* bytes = nullptr;
  std::uint32_t size = 0;
  plist_to_bin(node, &bytes, &size);
  const std::unique_ptr<char, MemoryFree> owner(bytes);
  std::uint64_t bits = 0;
  for (const char byte : std::string_view(bytes, size).substr(9, 8)) bits = bits << 8 | static_cast<std::uint8_t>(byte);
  return std::bit_cast<double>(bits);
}

Value integerOf(plist_t node) {
  std::uint64_t bits = 0;
  plist_get_uint_val(node, &bits);
  // The library gives integers from 2^63 on and negative ones as the same 64 bits, but compares them as unequal.
  const Node asSigned(plist_new_uint(bits));
  if (bits > kLastSigned && plist_compare_node_value(node, asSigned.get()) == 0) return static_cast<double>(bits);
  return static_cast<std::int64_t>(bits);
}

Value valueOf(plist_t node) {
  switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
      std::uint8_t boolean = 0;
      plist_get_bool_val(node, &boolean);
      return boolean != 0;
    }
    case PLIST_UINT:
      return integerOf(node);
    case PLIST_REAL: {
      double real = 0;
      plist_get_real_val(node, &real);
      return real;
    }
    case PLIST_STRING: {
      std::uint64_t size = 0;
      const char* text = plist_get_string_ptr(node, &size);
      return text == nullptr ? std::string() : std::string(text, size);
    }
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
      plist_array_iter place = nullptr;
      plist_array_new_iter(node, &place);
      const std::unique_ptr<void, MemoryFree> owner(place);
      while (true) {
        plist_t item = nullptr;
        plist_array_next_item(node, place, &item);
        if (item == nullptr) return array;
        array.push_back(valueOf(item));
      }
    }
    case PLIST_DICT: {
      Dictionary dictionary;
      plist_dict_iter place = nullptr;
      plist_dict_new_iter(node, &place);
      const std::unique_ptr<void, MemoryFree> owner(place);
      while (true) {
        char* key = nullptr;
        plist_t child = nullptr;
        plist_dict_next_item(node, place, &key, &child);
        const std::unique_ptr<char, MemoryFree> keyOwner(key);
        if (child == nullptr) return dictionary;
        dictionary.insert_or_assign(key, valueOf(child));
      }
    }
    case PLIST_UID: {
      std::uint64_t uid = 0;
      plist_get_uid_val(node, &uid);
      const Value number = uid <= kLastSigned ? Value(static_cast<std::int64_t>(uid)) : Value(static_cast<double>(uid));
      return Dictionary{{"CF$UID", number}};
    }
    case PLIST_KEY:
    case PLIST_NONE:
      break;
  }
  return false;
}

}  // namespace

std::optional<Value> readWithLibplist(std::string_view bytes) {
  plist_t node = nullptr;
  const auto size = static_cast<std::uint32_t>(bytes.size());
  if (bytes.starts_with("bplist00")) {
    plist_from_bin(bytes.data(), size, &node);
  } else {
    plist_from_xml(bytes.data(), size, &node);
  }
  const Node owner(node);
  if (node == nullptr) return std::nullopt;
  return valueOf(node);
}

}  // namespace quellar::tests::fuzz

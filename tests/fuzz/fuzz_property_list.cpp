// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstddef>
#include <optional>

#include "host/linux/property_list/property_list.h"
#include "libplist.h"
#include "targets.h"

namespace quellar::tests::fuzz {

using host::linux::parsePropertyList;
using host::linux::PropertyListDictionary;
using host::linux::PropertyListError;
using platform::Array;
using platform::Dictionary;
using platform::Value;

namespace {

std::optional<Value> read(std::string_view bytes) {
  try {
    return parsePropertyList(bytes);
  } catch (const PropertyListError&) {
    return std::nullopt;
  }
}

bool opens(std::string_view bytes) {
  try {
    const PropertyListDictionary file(bytes);
    return true;
  } catch (const PropertyListError&) {
    return false;
  }
}

/// Reads the bytes as a domain file, edits it and puts it back as it was.
void edit(std::string_view bytes, const Dictionary& entries) {
  PropertyListDictionary file(bytes);
  demand(parsePropertyList(file.encode().bytes()) == Value(entries), "a domain file is written as it was read");
  for (const auto& [key, value] : entries) {
    demand(file.value(key) == value, "an entry is the one that the whole file has");
    file.set(key, value);
  }
  // The keys of a dictionary within may stand in another order now.
  const auto stored = [&] { return parsePropertyList(file.encode().bytes()); };
  demand(stored() == Value(entries), "entries that are set to what they are stay as they are");

  std::string key = "a key that is new";
  while (entries.contains(key)) key += '!';
  file.set(key, Value(true));
  Dictionary larger = entries;
  larger.insert_or_assign(key, Value(true));
  demand(stored() == Value(larger), "an entry was added");
  file.remove(key);
  demand(stored() == Value(entries), "the entry was removed");
}

std::size_t valuesIn(const Value& value) {
  std::size_t values = 1;
  if (const auto* array = value.as<Array>()) {
    for (const Value& item : *array) values += valuesIn(item);
  } else if (const auto* dictionary = value.as<Dictionary>()) {
    for (const auto& [key, item] : *dictionary) values += valuesIn(item);
  }
  return values;
}

/// Where libplist reads the file too, it reads the same.
void compareWithLibplist(std::string_view bytes, const Value& value) {
  // The library takes the square of the time for large dictionaries.
  constexpr std::size_t kMostBytes = 65536;
  constexpr std::size_t kMostValues = 20000;
  if (bytes.size() > kMostBytes || valuesIn(value) > kMostValues) return;
  const std::optional<Value> other = readWithLibplist(bytes);
  demand(!other || *other == value, "libplist reads the same");
}

}  // namespace

void propertyList(std::string_view bytes) {
  const std::optional<Value> value = read(bytes);
  const bool isDomain = opens(bytes);
  demand(value || !isDomain, "what is no property list is no domain file");
  if (!value) return;
  compareWithLibplist(bytes, *value);
  const auto* entries = value->as<Dictionary>();
  demand(entries || !isDomain, "a domain file has a dictionary at its top");
  // A UID reads as a dictionary too, and is none.
  demand(isDomain || !entries || (entries->size() == 1 && entries->contains("CF$UID")),
         "what has a dictionary at its top is a domain file");
  const auto encoded = host::linux::encodePropertyList(*value);
  demand(parsePropertyList(encoded.bytes()) == *value, "what was read writes and reads back equal");
  if (isDomain) edit(bytes, *entries);
}

}  // namespace quellar::tests::fuzz

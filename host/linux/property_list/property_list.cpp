// SPDX-License-Identifier: MIT
#include "host/linux/property_list/property_list.h"

#include <span>

#include "host/linux/property_list/binary.h"
#include "host/linux/property_list/objects.h"
#include "host/linux/property_list/xml.h"

namespace quellar::host::linux {

using platform::Value;

namespace {

PropertyListObjects readPropertyList(std::string_view bytes) {
  checkPropertyListSize(bytes.size());
  if (isBinaryPropertyList(bytes)) return readBinaryPropertyList(bytes);
  if (!looksLikeXml(bytes)) throw PropertyListError("not a property list");
  return readXmlPropertyList(bytes);
}

EncodedPropertyList encoded(std::string bytes) {
  checkPropertyListSize(bytes.size());
  return EncodedPropertyList(std::move(bytes));
}

}  // namespace

Value parsePropertyList(std::string_view bytes) {
  const PropertyListObjects list = readPropertyList(bytes);
  return list.value(list.top());
}

EncodedPropertyList encodePropertyList(const Value& value) {
  return encoded(binaryPropertyList(propertyListObjects(value, 0, nullptr, 0)));
}

PropertyListDictionary::PropertyListDictionary(std::string_view bytes) {
  const auto list = std::make_shared<const PropertyListObjects>(readPropertyList(bytes));
  if (list->type(list->top()) != ObjectType::Dictionary) throw PropertyListError("its top is not a dictionary");
  const auto both = list->references(list->top());
  const std::size_t count = both.size() / 2;
  for (std::size_t entry = 0; entry < count; ++entry) {
    entries_.insert_or_assign(entries_.end(), list->text(both[entry]), Entry{list, both[count + entry]});
  }
}

std::vector<std::string> PropertyListDictionary::keys() const {
  std::vector<std::string> keys;
  keys.reserve(entries_.size());
  for (const auto& [key, entry] : entries_) keys.push_back(key);
  return keys;
}

std::optional<Value> PropertyListDictionary::value(std::string_view key) const {
  const auto entry = entries_.find(key);
  if (entry == entries_.end()) return std::nullopt;
  return entry->second.objects->value(entry->second.object);
}

void PropertyListDictionary::set(std::string_view key, const Value& value) {
  checkPropertyListText(key);
  const auto former = entries_.find(key);
  const bool isThere = former != entries_.end();
  auto objects = std::make_shared<const PropertyListObjects>(propertyListObjects(
      value, 1, isThere ? former->second.objects.get() : nullptr, isThere ? former->second.object : 0));
  Entry entry{std::move(objects), 0};
  entry.object = entry.objects->top();
  if (isThere) {
    former->second = std::move(entry);
  } else {
    entries_.emplace(key, std::move(entry));
  }
}

void PropertyListDictionary::remove(std::string_view key) {
  if (const auto entry = entries_.find(key); entry != entries_.end()) entries_.erase(entry);
}

EncodedPropertyList PropertyListDictionary::encode() const {
  PropertyListExtractor extractor;
  std::vector<std::pair<std::string_view, const PropertyListObjects*>> lists;
  lists.reserve(entries_.size());
  for (auto& [key, entry] : entries_) {
    if (entry.object != entry.objects->top()) {
      auto own = std::make_shared<const PropertyListObjects>(extractor.extract(*entry.objects, entry.object));
      entry = Entry{own, own->top()};
    }
    lists.emplace_back(key, entry.objects.get());
  }
  return encoded(binaryPropertyList(lists));
}

}  // namespace quellar::host::linux

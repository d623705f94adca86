// SPDX-License-Identifier: MIT
#include "stranger.h"

#include <fcntl.h>
#include <plist/plist.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>

#include "host/linux/file_descriptor.h"

namespace quellar::tests {

using host::linux::FileDescriptor;
using platform::Array;
using platform::Dictionary;
using platform::Value;
namespace fs = std::filesystem;

namespace {

using Node = std::unique_ptr<void, decltype(&plist_free)>;

Value valueOf(plist_t node);

Dictionary entriesOf(plist_t node) {
  Dictionary entries;
  plist_dict_iter iterator = nullptr;
  plist_dict_new_iter(node, &iterator);
  while (true) {
    char* key = nullptr;
    plist_t value = nullptr;
    plist_dict_next_item(node, iterator, &key, &value);
    if (value != nullptr && key != nullptr) entries.insert_or_assign(key, valueOf(value));
    std::free(key);
    if (value == nullptr) break;
  }
  std::free(iterator);
  return entries;
}

Value valueOf(plist_t node) {
  switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
      std::uint8_t value = 0;
      plist_get_bool_val(node, &value);
      return value != 0;
    }
    case PLIST_UINT: {
      std::uint64_t value = 0;
      plist_get_uint_val(node, &value);
      return static_cast<std::int64_t>(value);
    }
    case PLIST_REAL: {
      double value = 0;
      plist_get_real_val(node, &value);
      return value;
    }
    case PLIST_STRING: {
      char* text = nullptr;
      plist_get_string_val(node, &text);
      Value value = std::string(text != nullptr ? text : "");
      std::free(text);
      return value;
    }
    case PLIST_ARRAY: {
      Array all;
      for (std::uint32_t index = 0; index < plist_array_get_size(node); ++index) {
        all.push_back(valueOf(plist_array_get_item(node, index)));
      }
      return all;
    }
    case PLIST_DICT:
      return entriesOf(node);
    default:
      return "a value of a type that these proofs do not use";
  }
}

plist_t nodeOf(const Value& value) {
  if (const auto* boolean = value.as<bool>()) return plist_new_bool(*boolean ? 1 : 0);
  if (const auto* integer = value.as<std::int64_t>()) return plist_new_uint(static_cast<std::uint64_t>(*integer));
  if (const auto* real = value.as<double>()) return plist_new_real(*real);
  if (const auto* text = value.as<std::string>()) return plist_new_string(text->c_str());
  plist_t node = plist_new_dict();
  if (const auto* entries = value.as<Dictionary>()) {
    for (const auto& [key, entry] : *entries) plist_dict_set_item(node, key.c_str(), nodeOf(entry));
  }
  return node;
}

void demand(bool isDone, const char* doing) {
  if (isDone) return;
  std::cerr << "the other program can't " << doing << '\n';
  ::_exit(9);
}

}  // namespace

std::optional<Dictionary> parseAsStranger(const std::string& bytes) {
  plist_t parsed = nullptr;
  const auto size = static_cast<std::uint32_t>(bytes.size());
  if (bytes.starts_with("bplist")) {
    plist_from_bin(bytes.data(), size, &parsed);
  } else if (bytes.starts_with("<?xml") && bytes.find("</plist>") != std::string::npos) {
    plist_from_xml(bytes.data(), size, &parsed);
  }
  const Node node(parsed, &plist_free);
  if (parsed == nullptr || plist_get_node_type(parsed) != PLIST_DICT) return std::nullopt;
  return entriesOf(parsed);
}

std::optional<Dictionary> readAsStranger(const fs::path& file) {
  const std::ifstream stream(file, std::ios::binary);
  if (!stream) return std::nullopt;
  std::ostringstream bytes;
  bytes << stream.rdbuf();
  return parseAsStranger(bytes.str());
}

std::string encodeAsStranger(const Dictionary& entries) {
  const Node node(nodeOf(entries), &plist_free);
  char* bytes = nullptr;
  std::uint32_t size = 0;
  plist_to_bin(node.get(), &bytes, &size);
  std::string encoded(bytes, size);
  std::free(bytes);
  return encoded;
}

void replaceAsStranger(const fs::path& file, const Dictionary& entries, Care care) {
  const fs::path beside = file.string() + ".other-program";
  const std::string bytes = encodeAsStranger(entries);
  ::unlinkat(AT_FDCWD, beside.c_str(), 0);
  {
    const FileDescriptor written(::openat(AT_FDCWD, beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    demand(static_cast<bool>(written), "make a file");
    demand(::write(written.get(), bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()), "write");
    demand(care == Care::FlushesNothing || ::fsync(written.get()) == 0, "flush its file");
  }
  demand(::renameat(AT_FDCWD, beside.c_str(), AT_FDCWD, file.c_str()) == 0, "rename its file");
  if (care == Care::FlushesNothing) return;
  const FileDescriptor folder(::openat(AT_FDCWD, file.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  demand(folder && ::fsync(folder.get()) == 0, "flush the folder");
}

std::optional<Value> pageEntry(const std::optional<Dictionary>& domain, std::string_view page, std::string_view key) {
  if (!domain) return std::nullopt;
  const Value* whole = platform::find(*domain, page);
  const Dictionary* entries = whole != nullptr ? whole->as<Dictionary>() : nullptr;
  const Value* entry = entries != nullptr ? platform::find(*entries, key) : nullptr;
  return entry != nullptr ? std::optional(*entry) : std::nullopt;
}

}  // namespace quellar::tests

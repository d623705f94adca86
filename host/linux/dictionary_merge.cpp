// SPDX-License-Identifier: MIT
#include "host/linux/dictionary_merge.h"

namespace quellar::host::linux {

using platform::Dictionary;
using platform::Value;

namespace {

std::optional<Value> entryOf(const Dictionary& dictionary, const std::string& key) {
  const Value* value = platform::find(dictionary, key);
  return value ? std::optional(*value) : std::nullopt;
}

/// The dictionary in a value; an empty one where it is none.
const Dictionary& dictionaryIn(const std::optional<Value>& value) {
  static const Dictionary kEmpty;
  const auto* dictionary = value ? value->as<Dictionary>() : nullptr;
  return dictionary ? *dictionary : kEmpty;
}

}  // namespace

std::optional<Value> mergedValue(const std::optional<Value>& base, const std::optional<Value>& ours,
                                 const std::optional<Value>& stored, Precedence precedence) {
  if (stored == base || stored == ours) return ours;
  const bool areDictionaries = ours && ours->is<Dictionary>() && (!stored || stored->is<Dictionary>());
  if (!areDictionaries) return precedence == Precedence::Ours ? ours : stored;

  const Dictionary& former = dictionaryIn(base);
  const Dictionary& latter = dictionaryIn(ours);
  Dictionary merged = dictionaryIn(stored);
  const auto take = [&](const std::string& key) {
    const std::optional<Value> before = entryOf(former, key);
    const std::optional<Value> after = entryOf(latter, key);
    if (before == after) return;
    if (precedence == Precedence::Theirs && entryOf(merged, key) != before) return;
    if (after) {
      merged.insert_or_assign(key, *after);
    } else {
      merged.erase(key);
    }
  };
  for (const auto& [key, value] : latter) take(key);
  for (const auto& [key, value] : former) {
    if (!latter.contains(key)) take(key);
  }
  return Value(std::move(merged));
}

}  // namespace quellar::host::linux

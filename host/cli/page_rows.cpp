// SPDX-License-Identifier: MIT
#include "host/cli/page_rows.h"

#include <algorithm>

#include "frame/list_controller.h"
#include "host/cli/command_line.h"

namespace quellar::host::cli {

using frame::Dependent;
using frame::KVQuellarListController;
using platform::PSListController;
using platform::PSSpecifier;

namespace {

std::string keyOf(const PSSpecifier& row) {
  const std::string key = row.stringForKey("key");
  return key.empty() ? row.stringForKey("colorKey") : key;
}

bool hasKey(const std::vector<KeyedRow>& rows, std::string_view key) {
  return std::ranges::find(rows, key, &KeyedRow::key) != rows.end();
}

std::string waysToShow(const Dependent& block, PSListController& page) {
  const auto controlling = page.specifierForID(block.shownBy);
  const std::string name =
      controlling ? "\"" + controlling->name() + "\" (" + block.shownBy + ")" : "\"" + block.shownBy + "\"";
  return block.shownAt ? "set " + name + " to " + std::to_string(*block.shownAt) : "turn on " + name;
}

void addHidden(const std::vector<frame::Row>& rows, KVQuellarListController& page, std::vector<KeyedRow>& found) {
  for (const frame::Row& row : rows) {
    if (const auto* computed = std::get_if<frame::Computed>(&row.row)) {
      addHidden(computed->rows({page.platform(), page.userDefaults()}), page, found);
    }
    const auto* block = std::get_if<Dependent>(&row.row);
    if (!block) continue;
    for (const auto& specifier : page.dynamicSpecs(block->name)) {
      const std::string key = keyOf(*specifier);
      if (!key.empty() && !hasKey(found, key)) found.push_back({specifier, key, waysToShow(*block, page)});
    }
    addHidden(block->rows, page, found);
  }
}

}  // namespace

std::vector<KeyedRow> keyedRows(PSListController& page) {
  std::vector<KeyedRow> found;
  for (const auto& specifier : page.specifiers()) {
    const std::string key = keyOf(*specifier);
    if (!key.empty() && !hasKey(found, key)) found.push_back({specifier, key, {}});
  }
  if (auto* described = dynamic_cast<KVQuellarListController*>(&page)) {
    addHidden(described->page().rows, *described, found);
  }
  return found;
}

const frame::ForeignKey* foreignKey(const frame::Page& page, std::string_view key) {
  const auto found = std::ranges::find(page.foreignKeys, key, &frame::ForeignKey::key);
  return found == page.foreignKeys.end() ? nullptr : &*found;
}

KeyedRow rowOfKey(PSListController& page, std::string_view key) {
  for (const auto& specifier : page.specifiers()) {
    if (!key.empty() && keyOf(*specifier) == key) return {specifier, std::string(key), {}};
  }
  const auto rows = keyedRows(page);
  const auto found = std::ranges::find(rows, key, &KeyedRow::key);
  if (found != rows.end()) return *found;
  const auto* described = dynamic_cast<const KVQuellarListController*>(&page);
  if (const auto* foreign = described ? foreignKey(described->page(), key) : nullptr) {
    throw UsageError("no row has the key " + foreign->key + "; what it holds is picked in the window or in a session");
  }
  std::string keys;
  for (const auto& row : rows) keys += (keys.empty() ? "" : ", ") + row.key;
  throw UsageError("no key \"" + std::string(key) + "\" on the page \"" + page.title() + "\"; " +
                   (keys.empty() ? "it has none" : "its keys are " + keys));
}

}  // namespace quellar::host::cli

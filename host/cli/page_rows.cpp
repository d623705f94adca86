// SPDX-License-Identifier: MIT
#include "host/cli/page_rows.h"

#include <algorithm>
#include <vector>

#include "frame/list_controller.h"
#include "frame/page_walk.h"
#include "host/cli/command_line.h"

namespace quellar::host::cli {

using frame::FoundRow;
using frame::KVQuellarListController;
using frame::StepToRow;
using platform::PSListController;

namespace {

std::vector<std::string> keysOf(KVQuellarListController& page) {
  std::vector<std::string> keys;
  frame::walkRows(page.page(), {page.platform(), page.userDefaults()}, [&](const frame::RowPlace& place) {
    const auto key = place.key();
    if (key && std::ranges::find(keys, *key) == keys.end()) keys.push_back(*key);
  });
  return keys;
}

std::string nameOf(const StepToRow& step) {
  return "\"" + step.row->name() + "\" (" + step.block->shownBy + ")";
}

std::string wayToShow(const std::vector<StepToRow>& steps) {
  std::string way;
  for (const StepToRow& step : steps) {
    way += way.empty() ? "" : ", then ";
    way += step.block->shownAt ? "set " + nameOf(step) + " to " + std::to_string(*step.block->shownAt)
                               : "turn on " + nameOf(step);
  }
  return way + " to show it";
}

}  // namespace

const frame::ForeignKey* foreignKey(const frame::Page& page, std::string_view key) {
  const auto found = std::ranges::find(page.foreignKeys, key, &frame::ForeignKey::key);
  return found == page.foreignKeys.end() ? nullptr : &*found;
}

FoundRow rowOfKey(PSListController& page, std::string_view key) {
  auto& described = dynamic_cast<KVQuellarListController&>(page);
  if (auto found = frame::findRow(described, key)) return *found;
  if (const auto* foreign = foreignKey(described.page(), key)) {
    throw UsageError("no row has the key " + foreign->key + "; what it holds is picked in the window or in a session");
  }
  std::string keys;
  for (const auto& each : keysOf(described)) keys += (keys.empty() ? "" : ", ") + shownKey(each);
  throw UsageError("no key \"" + std::string(key) + "\" on the page \"" + page.title() + "\"; " +
                   (keys.empty() ? "it has none" : "its keys are " + keys));
}

std::string whyHidden(const FoundRow& row, const KVQuellarListController& page, const PanelHost& host) {
  const std::string key = frame::keyOf(*row.row).value_or("");
  if (row.isUnreachable) {
    const std::string other = frame::otherPageThatShows(host.registry(), page, key);
    return "nothing on the page \"" + page.title() + "\" shows the row of " + shownKey(key) +
           (other.empty() ? "" : "; it is on the page \"" + other + "\"");
  }
  const auto open = std::ranges::find_if(row.steps, &StepToRow::needsOpenPage);
  if (open != row.steps.end()) {
    return "the row of " + shownKey(key) + " shows only when " + nameOf(*open) +
           " is turned on while the page is open; set it in the window or in a session";
  }
  return "the row of " + shownKey(key) + " is hidden now; " + wayToShow(row.steps);
}

std::string shownKey(std::string_view key) {
  return key.empty() ? "\"\"" : std::string(key);
}

}  // namespace quellar::host::cli

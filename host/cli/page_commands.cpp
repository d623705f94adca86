// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdint>

#include "frame/list_controller.h"
#include "frame/page_walk.h"
#include "frame/row_value.h"
#include "host/cli/commands.h"
#include "host/cli/output.h"
#include "host/cli/page_rows.h"
#include "host/headless/row_json.h"
#include "platform/printable.h"

namespace quellar::host::cli {

using headless::Json;
using platform::PSCellType;
using platform::PSSpecifier;
using platform::Value;

namespace {

/// What a row shows, as the user sees it.
std::string shownText(PSSpecifier& row) {
  const auto shown = frame::shownValue(row);
  if (!shown) return "";
  if (row.cellType() == PSCellType::PSSwitchCell) return shown->boolValue() ? "on" : "off";
  if (const auto choice = row.indexOfValue(*shown); choice && *choice < row.titles().size()) {
    return row.titles()[*choice];
  }
  if (const auto* text = shown->as<std::string>()) return *text;
  return headless::dump(headless::toJson(*shown));
}

/// What names the row for the other commands: its key, or the page that it opens.
std::string nameForCommands(const PSSpecifier& row, const PanelHost& host) {
  if (const auto id = row.identifier()) return *id;
  if (const auto key = frame::keyOf(row)) return shownKey(*key);
  const auto* page = host.registry().find(row.detailControllerClass());
  return page ? "-> " + page->name : "";
}

/// What is stored under a key that no row has, where it is of the key's type.
std::optional<Value> chosenValue(const frame::ForeignKey& foreign, const frame::KVQuellarListController& page) {
  const Value* stored = platform::find(page.userDefaults(), foreign.key);
  const auto& choices = foreign.choices.values;
  const bool isOfType =
      stored && (choices.empty() ? stored->is<std::string>() : std::ranges::count(choices, *stored) > 0);
  return isOfType ? std::optional(*stored) : std::nullopt;
}

}  // namespace

void printPages(const PagesCommand& command, PanelHost& host) {
  Json pages = Json::array();
  Table table;
  table.add({"PAGE", "CLASS", "DEFAULTS KEY", "ROWS"});
  for (const auto& entry : host.registry().entries()) {
    const auto page = host.makePage(entry);
    const std::string& defaultsKey = entry.page->defaultsKey;
    const std::size_t count = page->specifiers().size();
    pages.push_back({{"class", page->className()},
                     {"title", page->title()},
                     {"defaultsKey", defaultsKey.empty() ? Json(nullptr) : Json(defaultsKey)},
                     {"rowCount", count}});
    table.add({page->title(), page->className(), defaultsKey.empty() ? "-" : defaultsKey, std::to_string(count)});
  }
  if (command.json) {
    printArray(pages);
  } else {
    print(table.text());
  }
}

void printRows(const RowsCommand& command, PanelHost& host) {
  const auto page = host.makePage(host.entryNamed(command.page));
  if (command.json) {
    printArray(headless::rowsJson(*page));
    return;
  }
  // One table for the page, so that its columns stand in line; the groups' titles are put between its lines.
  Table table;
  std::vector<std::string> headings;
  std::string heading;
  for (const auto& row : page->specifiers()) {
    if (row->cellType() == PSCellType::PSGroupCell) {
      heading += "\n" + (row->name().empty() ? "" : platform::printable(row->name()) + "\n");
      continue;
    }
    headings.push_back(std::exchange(heading, ""));
    table.add({row->name(), shownText(*row), nameForCommands(*row, host)});
  }
  std::string lines = table.text(2);
  std::string text = platform::printable(page->title()) + "\n";
  for (const auto& each : headings) {
    const std::size_t end = lines.find('\n') + 1;
    text += each + lines.substr(0, end);
    lines.erase(0, end);
  }
  print(text + heading);
}

void printValue(const GetCommand& command, PanelHost& host) {
  const auto& entry = host.entryNamed(command.page);
  const auto page = host.makePage(entry);
  std::optional<Value> shown;
  if (const auto* foreign = foreignKey(*entry.page, command.key)) {
    shown = chosenValue(*foreign, dynamic_cast<frame::KVQuellarListController&>(*page));
  } else {
    shown = frame::shownValue(*rowOfKey(*page, command.key).row);
  }
  print(headless::dump(headless::toJson(shown)) + "\n");
}

}  // namespace quellar::host::cli

// SPDX-License-Identifier: MIT
#include "frame/schema.h"
#include "host/cli/commands.h"
#include "host/cli/output.h"
#include "host/cli/page_rows.h"
#include "host/headless/json.h"
#include "platform/printable.h"

namespace quellar::host::cli {

using frame::SchemaKey;
using headless::dump;
using headless::Json;
using headless::toJson;

namespace {

constexpr auto kIntroduction =
    "# Preference keys\n"
    "\n"
    "Page by page what is stored, in the domain com.vantorick.quellar2 under the defaults key in brackets, and the\n"
    "notifications that a write posts. `quellar schema --markdown` prints this; each installed application adds keys\n"
    "and values of its own.\n";

Json keyJson(const SchemaKey& key) {
  Json values = nullptr;
  for (const auto& value : key.values) values.push_back(toJson(value));
  Json json = Json::object();
  json["page"] = key.page;
  json["defaultsKey"] = key.defaultsKey.empty() ? Json(nullptr) : Json(key.defaultsKey);
  json["key"] = key.key;
  json["type"] = key.type;
  json["default"] = toJson(key.byDefault);
  json["minimum"] = toJson(key.minimum);
  json["maximum"] = toJson(key.maximum);
  json["values"] = std::move(values);
  json["titles"] = key.titles.empty() ? Json(nullptr) : Json(key.titles);
  json["label"] = key.label;
  json["posts"] = key.posts;
  return json;
}

/// What a key takes besides its type: bounds or choices.
std::string limits(const SchemaKey& key) {
  std::string text;
  if (key.minimum || key.maximum) return dump(toJson(key.minimum)) + " to " + dump(toJson(key.maximum));
  for (std::size_t place = 0; place < key.values.size(); ++place) {
    const std::string value = dump(toJson(key.values[place]));
    text += (text.empty() ? "" : ", ") + value;
    if (place < key.titles.size() && key.titles[place] != value) text += " " + key.titles[place];
  }
  return text;
}

std::string joined(const std::vector<std::string>& names) {
  std::string text;
  for (const auto& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

std::vector<std::string> cells(const SchemaKey& key) {
  return {shownKey(key.key), key.type,  key.byDefault ? dump(toJson(*key.byDefault)) : "",
          limits(key),       key.label, joined(key.posts)};
}

std::string escaped(const std::string& text) {
  std::string result;
  for (const char each : text) {
    if (each == '|' || each == '\\') result += '\\';
    result += each;
  }
  return platform::printable(result);
}

std::string titleOf(const frame::PageRegistry::Entry& entry) {
  return entry.name + (entry.page->defaultsKey.empty() ? "" : " (" + entry.page->defaultsKey + ")");
}

}  // namespace

void printSchema(const SchemaCommand& command, PanelHost& host) {
  using Form = SchemaCommand::Form;
  Json all = Json::array();
  if (command.form == Form::Markdown) print(kIntroduction);
  for (const auto& entry : host.registry().entries()) {
    const auto keys = frame::schemaOf(*entry.page, host.platform());
    if (command.form == Form::Json) {
      for (const auto& key : keys) all.push_back(keyJson(key));
      continue;
    }
    if (keys.empty()) continue;
    if (command.form == Form::Markdown) {
      print("\n## " + escaped(titleOf(entry)) +
            "\n\n| Key | Type | Default | Takes | Label | Posts |\n"
            "|---|---|---|---|---|---|\n");
      for (const auto& key : keys) {
        std::string line = "|";
        for (const auto& cell : cells(key)) line += " " + escaped(cell) + " |";
        print(line + "\n");
      }
    } else {
      Table table;
      for (const auto& key : keys) table.add(cells(key));
      print(platform::printable(titleOf(entry)) + "\n" + table.text(2) + "\n");
    }
  }
  if (command.form == Form::Json) printArray(all);
}

}  // namespace quellar::host::cli

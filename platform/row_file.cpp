// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include "platform/list_controller.h"
#include "platform/platform.h"

namespace quellar::platform {

namespace {

// Item keys that become row properties of the same name.
constexpr std::array<std::string_view, 10> kProperties = {"key", "id",  "default",   "footerText",  "iconImage",
                                                          "min", "max", "showValue", "placeholder", "defaults"};

// What an item's entries hold; other entries are passed over.
enum class Holds { text, texts, list, number, scalar };
constexpr std::array<std::pair<std::string_view, Holds>, 18> kEntries = {{
    {"cell", Holds::text},
    {"label", Holds::text},
    {"key", Holds::text},
    {"id", Holds::text},
    {"default", Holds::scalar},
    {"validValues", Holds::list},
    {"validTitles", Holds::texts},
    {"shortTitles", Holds::texts},
    {"footerText", Holds::text},
    {"iconImage", Holds::text},
    {"detail", Holds::text},
    {"action", Holds::text},
    {"min", Holds::number},
    {"max", Holds::number},
    {"showValue", Holds::number},
    {"placeholder", Holds::text},
    {"defaults", Holds::text},
    {"applications", Holds::number},
}};

bool holds(const Value& value, Holds what) {
  switch (what) {
    case Holds::text:
      return value.is<std::string>();
    case Holds::texts: {
      const auto* array = value.as<Array>();
      return array && std::ranges::all_of(*array, [](const Value& entry) { return entry.is<std::string>(); });
    }
    case Holds::list:
      return value.is<Array>();
    case Holds::number:
      return value.isNumber();
    case Holds::scalar:
      return value.isNumber() || value.is<std::string>();
  }
  return false;
}

/// The name of the first entry of an item that holds what it can't; "" where there is none.
std::string_view misfit(const Dictionary& item) {
  for (const auto& [name, what] : kEntries) {
    const Value* value = find(item, name);
    if (value && !holds(*value, what)) return name;
  }
  return {};
}

std::string text(const Dictionary& item, std::string_view key) {
  const Value* value = find(item, key);
  const auto* string = value ? value->as<std::string>() : nullptr;
  return string ? *string : std::string();
}

std::vector<std::string> texts(const Dictionary& item, std::string_view key) {
  std::vector<std::string> result;
  const Value* value = find(item, key);
  const auto* array = value ? value->as<Array>() : nullptr;
  if (!array) return result;
  for (const Value& entry : *array) {
    if (const auto* string = entry.as<std::string>()) result.push_back(*string);
  }
  return result;
}

bool leavesFolder(std::string_view path) {
  return path.starts_with("/") || path == ".." || path.starts_with("../") || path.ends_with("/..") ||
         path.find("/../") != std::string_view::npos;
}

/// The text with each "%@" replaced.
std::string filledIn(std::string_view text, std::string_view with) {
  std::string filled;
  for (std::size_t at = text.find("%@"); at != std::string_view::npos; at = text.find("%@")) {
    filled.append(text.substr(0, at)).append(with);
    text.remove_prefix(at + 2);
  }
  return filled.append(text);
}

/// What of a row's texts is given by the installed applications.
PSSpecifier::SystemTexts applicationTexts(const Dictionary& item) {
  const Value* asks = find(item, "applications");
  if (!asks || !asks->boolValue()) return {};
  const bool isRowForEach = text(item, "key").find("%@") != std::string::npos;
  return {.name = isRowForEach, .titles = !isRowForEach};
}

/// An item for each application, where its key has a place for the application's identifier; else the item itself,
/// with the applications as its choices. An item that does not ask for applications stays as it is.
std::vector<Dictionary> expanded(const Dictionary& item, Platform& platform) {
  const Value* asks = find(item, "applications");
  if (!asks || !asks->boolValue()) return {item};
  const auto applications = platform.applications.installedApplications();
  const std::string key = text(item, "key");
  if (key.find("%@") == std::string::npos) {
    Array values;
    Array titles;
    for (const Application& application : applications) {
      values.emplace_back(application.identifier);
      titles.emplace_back(application.name);
    }
    Dictionary picker = item;
    picker.insert_or_assign("validValues", Value(std::move(values)));
    picker.insert_or_assign("validTitles", Value(std::move(titles)));
    return {picker};
  }
  std::vector<Dictionary> items;
  for (const Application& application : applications) {
    Dictionary& each = items.emplace_back(item);
    each.insert_or_assign("key", Value(filledIn(key, application.identifier)));
    each.insert_or_assign("label", Value(application.name));
  }
  return items;
}

}  // namespace

/// Makes the row of one item; nothing, with the reason reported, where it can't be used.
PSSpecifier::Pointer PSListController::makeRowOfItem(const Dictionary& item, std::string_view bundlePath,
                                                     const std::function<void(const std::string&)>& report) {
  const auto skip = [&](const std::string& why) {
    report(" is skipped: " + why);
    return nullptr;
  };
  const auto kind = cellTypeNamed(text(item, "cell"));
  if (!kind) return skip("\"" + text(item, "cell") + "\" is no row kind");
  const std::string key = text(item, "key");
  const auto titles = texts(item, "validTitles");
  const Value* valuesEntry = find(item, "validValues");
  const Array values = valuesEntry && valuesEntry->is<Array>() ? *valuesEntry->as<Array>() : Array{};
  if (values.size() != titles.size()) {
    return skip("it has " + std::to_string(values.size()) + " values and " + std::to_string(titles.size()) + " titles");
  }
  const auto shortTitles = texts(item, "shortTitles");
  if (!shortTitles.empty() && shortTitles.size() != titles.size()) {
    return skip("it has " + std::to_string(titles.size()) + " titles and " + std::to_string(shortTitles.size()) +
                " short ones");
  }

  PSSpecifier::Setter set;
  PSSpecifier::Getter get;
  if (!key.empty() && !text(item, "defaults").empty()) {
    set = [this](const auto& value, auto& row) { PSListController::setPreferenceValue(value, row); };
    get = [this](auto& row) { return PSListController::readPreferenceValue(row); };
  } else if (!key.empty()) {
    set = [this](const auto& value, auto& row) { setPreferenceValue(value, row); };
    get = [this](auto& row) { return readPreferenceValue(row); };
  }
  auto row = PSSpecifier::preferenceSpecifierNamed(text(item, "label"), this, std::move(set), std::move(get),
                                                   text(item, "detail"), *kind);
  for (const std::string_view property : kProperties) {
    const Value* value = find(item, property);
    if (!value) continue;
    if (property != "iconImage") {
      row->setProperty(property, *value);
      continue;
    }
    const std::string path = text(item, property);
    if (leavesFolder(path)) {
      report(": its image \"" + path + "\" is outside the bundle");
    } else if (auto image = platform().files.imageWithContentsOfFile(std::string(bundlePath) + "/" + path)) {
      row->setProperty(property, std::move(*image));
    }
  }
  row->setValues(values, titles, shortTitles);
  if (const std::string selector = text(item, "action"); !selector.empty()) {
    row->setAction({selector, [this, selector](PSSpecifier& tapped) {
                      if (const auto action = actionForSelector(selector)) action->run(tapped);
                    }});
  }
  return row;
}

Specifiers PSListController::loadSpecifiersFromPlistName(std::string_view name, std::string_view bundlePath) {
  Specifiers rows;
  const auto items = platform().bundles.rowFileItems(bundlePath, name);
  if (!items) return rows;
  std::set<std::string> keys;
  for (std::size_t place = 0; place < items->size(); ++place) {
    const auto report = [&](const std::string& what) {
      platform().bundles.reportRowFile(name, "item " + std::to_string(place) + what);
    };
    const auto* item = (*items)[place].as<Dictionary>();
    if (!item) {
      report(" is skipped: it is no dictionary");
      continue;
    }
    if (const std::string_view odd = misfit(*item); !odd.empty()) {
      report(" is skipped: its \"" + std::string(odd) + "\" is of the wrong type");
      continue;
    }
    for (const Dictionary& each : expanded(*item, platform())) {
      const std::string key = text(each, "key");
      if (keys.contains(key)) {
        report(" is skipped: the key \"" + key + "\" stands twice");
      } else if (auto row = makeRowOfItem(each, bundlePath, report)) {
        if (!key.empty()) keys.insert(key);
        row->setSystemTexts(applicationTexts(*item));
        rows.push_back(std::move(row));
      }
    }
  }
  return rows;
}

}  // namespace quellar::platform

// SPDX-License-Identifier: MIT
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <initializer_list>
#include <iterator>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/linux/property_list/property_list.h"
#include "support/memory_services.h"

// Rows and events as lines of text, for tests that compare a page whole.

namespace quellar::tests {

using Lines = std::vector<std::string>;
using Properties = std::map<std::string, host::headless::Json>;

inline const std::string kImages = "/Library/PreferenceBundles/Quellar.bundle/images/";

/// The properties of a row as a line.
inline std::string propertiesLine(const Properties& properties) {
  host::headless::Json json = host::headless::Json::object();
  for (const auto& [key, value] : properties) json[key] = value;
  return dump(json);
}

/// A row: its kind, its name, what it has of "set", "get", "opens CLASS" and "does SELECTOR", its properties.
inline std::string rowLine(const std::string& kind, const std::string& name, const std::string& abilities,
                           const Properties& properties) {
  return kind + " '" + name + "' [" + abilities + "] " + propertiesLine(properties);
}

inline std::string rowLine(const platform::PSSpecifier& row) {
  std::string abilities;
  const auto add = [&](const std::string& ability) { abilities += (abilities.empty() ? "" : " ") + ability; };
  if (row.setter()) add("set");
  if (row.getter()) add("get");
  if (!row.detailControllerClass().empty()) add("opens " + row.detailControllerClass());
  if (row.action()) add("does " + row.action()->selector);
  Properties properties;
  for (const auto& [key, property] : row.properties()) properties[key] = host::headless::toJson(property);
  return rowLine(std::string(cellTypeName(row.cellType())), row.name(), abilities, properties);
}

inline Lines rowLines(platform::PSListController& page) {
  Lines lines;
  for (const auto& row : page.specifiers()) lines.push_back(rowLine(*row));
  return lines;
}

// The lines of the usual rows.

inline host::headless::Json image(const std::string& path) {
  return host::headless::Json::object({{"$image", path}});
}
inline host::headless::Json cellClass(const std::string& name) {
  return host::headless::Json::object({{"$class", name}});
}
inline std::string group(const std::string& title = "", const std::string& footer = "") {
  Properties properties;
  if (!title.empty()) properties["label"] = title;
  if (!footer.empty()) properties["footerText"] = footer;
  return rowLine("PSGroupCell", title, "", properties);
}
inline std::string toggle(const std::string& label, const std::string& key, const Properties& further = {}) {
  Properties properties{{"label", label}, {"key", key}, {"default", 0}};
  for (const auto& [name, value] : further) properties[name] = value;
  return rowLine("PSSwitchCell", label, "set get", properties);
}
inline std::string slider(const std::string& label, const std::string& key, double byDefault, double minimum,
                          double maximum) {
  return rowLine("PSSliderCell", label, "set get",
                 {{"label", label},
                  {"key", key},
                  {"default", byDefault},
                  {"min", minimum},
                  {"max", maximum},
                  {"showValue", true},
                  {"cellClass", cellClass("KVQuellarSliderCell")}});
}
inline std::string colorRow(const std::string& label, const std::string& colorKey, const std::string& defaultColor,
                            const std::string& defaultsKey, const std::string& action, const std::string& icon = "") {
  Properties properties{{"label", label},
                        {"colorKey", colorKey},
                        {"defaultColor", defaultColor},
                        {"defaultsKey", defaultsKey},
                        {"cellClass", cellClass("KVQuellarColorPreviewTableCell")}};
  if (!icon.empty()) properties["iconImage"] = image(icon);
  return rowLine("PSButtonCell", label, "does " + action, properties);
}

// The lines of the usual events.

inline std::string write(const std::string& defaultsKey, const std::string& dictionary, const std::string& t = "0.0") {
  return R"({"event":"write","domain":"com.vantorick.quellar2","key":")" + defaultsKey + R"(","value":)" + dictionary +
         R"(,"t":)" + t + "}";
}
inline std::string post(const std::string& centre, const std::string& name, const std::string& t,
                        const std::string& through = "centre") {
  return R"({"event":"post","centre":")" + centre + R"(","name":")" + name +
         R"(","object":null,"userInfo":null,"immediately":true,"through":")" + through + R"(","t":)" + t + "}";
}
inline std::string darwinPost(const std::string& name, const std::string& t = "0.0") {
  return post("darwin", name, t);
}
inline std::string systemPost(const std::string& name, const std::string& t = "0.0") {
  return post("darwin", name, t, "notify_post");
}
inline std::string reload(const std::string& what, const std::string& t) {
  return R"({"event":"reload","what":")" + what + R"(","t":)" + t + "}";
}
inline std::string labels(const Lines& names) {
  return dump(host::headless::Json(names));
}
inline std::string insert(const std::string& after, std::size_t at, const Lines& names) {
  return R"({"event":"insert","after":")" + after + R"(","at":)" + std::to_string(at) + R"(,"labels":)" +
         labels(names) + R"(,"animated":true,"t":0.0})";
}
inline std::string remove(std::size_t at, const Lines& names) {
  return R"({"event":"remove","at":)" + std::to_string(at) + R"(,"labels":)" + labels(names) +
         R"(,"animated":true,"t":0.0})";
}
inline std::string keyboard(bool visible) {
  return std::string(R"({"event":"keyboard","visible":)") + (visible ? "true" : "false") + R"(,"t":0.0})";
}
/// The right bar button has that title; "" for none.
inline std::string rightBar(const std::string& title) {
  return title.empty() ? R"({"event":"bar","side":"right","title":null,"style":null,"t":0.0})"
                       : R"({"event":"bar","side":"right","title":")" + title + R"(","style":"done","t":0.0})";
}
inline std::string colorDialog(const std::string& start, bool showAlpha, const std::string& startAlpha = "1.0") {
  return R"({"event":"dialog","kind":"color","title":"","message":"","buttons":[{"title":"Cancel","style":"cancel"}],)"
         R"("text":null,"keyboardType":"default","accessory":[],"anchor":null,"start":")" +
         start + R"(","startAlpha":)" + startAlpha + R"(,"showAlpha":)" + (showAlpha ? "true" : "false") +
         R"(,"t":0.0})";
}
inline const std::string kDismiss = R"({"event":"dismiss","t":0.0})";
inline const std::string kSettingsPost = darwinPost("com.vantorick.quellar2.settings");

/// A run of lines with others put in at a place.
inline Lines with(Lines lines, std::size_t at, const Lines& others) {
  lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(at), others.begin(), others.end());
  return lines;
}

/// The place of the row with a name on the top page.
inline std::size_t placeOf(Panel& panel, std::string_view name) {
  const auto& rows = panel.host.topList()->specifiers();
  for (std::size_t place = 0; place < rows.size(); ++place) {
    if (rows[place]->name() == name && rows[place]->cellType() != platform::PSCellType::PSGroupCell) return place;
  }
  throw std::out_of_range("no row is named " + std::string(name));
}
inline void tap(Panel& panel, std::string_view name) {
  panel.host.topList()->userTapsRow(placeOf(panel, name));
}

/// Gives the panel a row file as the settings bundle has it.
inline void useRowFile(Panel& panel, const std::string& name) {
  std::ifstream file(std::string(QUELLAR_RESOURCES) + "/" + name + ".plist", std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  const platform::Value list = host::linux::parsePropertyList(bytes);
  panel.bundles.rowFiles[name] = *platform::find(*list.as<platform::Dictionary>(), "items")->as<platform::Array>();
}

/// What a page looked up when it was opened.
inline std::set<std::string> lookupsOf(Panel& panel, std::string_view page) {
  panel.bundles.lookups.clear();
  panel.open(page);
  return {panel.bundles.lookups.begin(), panel.bundles.lookups.end()};
}

/// Each switch, alone on a fresh install, is written with its key alone and posts exactly these lines, on, off, and
/// once more with the value that it has; nothing comes later.
inline void expectEverySwitchPosts(std::string_view page, const std::string& defaultsKey, const Lines& keys,
                                   const Lines& posts, const Lines& rowFiles = {}) {
  for (const std::string& key : keys) {
    SCOPED_TRACE(key);
    Panel panel;
    for (const std::string& file : rowFiles) useRowFile(panel, file);
    panel.open(page);
    for (const bool value : {true, false, false}) {
      panel.set(key, value);
      Lines expected = {write(defaultsKey, "{\"" + key + (value ? "\":true}" : "\":false}"))};
      expected.insert(expected.end(), posts.begin(), posts.end());
      EXPECT_EQ(panel.events(), expected);
    }
    panel.advance(std::chrono::seconds(10));
    EXPECT_EQ(panel.events(), Lines());
  }
}

}  // namespace quellar::tests

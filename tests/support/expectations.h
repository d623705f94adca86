// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "host/headless/json.h"
#include "platform/list_controller.h"

// Lines that tests of pages and cells expect: the events that a host tells, and rows whole.

namespace quellar::tests {

inline std::string writeLine(const std::string& defaultsKey, const std::string& dictionary,
                             const std::string& time = "0.0") {
  return R"({"event":"write","domain":"com.vantorick.quellar2","key":")" + defaultsKey + R"(","value":)" + dictionary +
         R"(,"t":)" + time + "}";
}

/// A post of a name of this system ("settings") on the Darwin centre.
inline std::string darwinLine(const std::string& name, const std::string& time = "0.0",
                              const std::string& through = "centre") {
  return R"({"event":"post","centre":"darwin","name":"com.vantorick.quellar2.)" + name +
         R"(","object":null,"userInfo":null,"immediately":true,"through":")" + through + R"(","t":)" + time + "}";
}
inline std::string notifyPostLine(const std::string& name, const std::string& time = "0.0") {
  return darwinLine(name, time, "notify_post");
}
/// A post in the process; the object and the user info as JSON.
inline std::string processLine(const std::string& name, const std::string& object, const std::string& userInfo) {
  return R"({"event":"post","centre":"process","name":")" + name + R"(","object":)" + object + R"(,"userInfo":)" +
         userInfo + R"(,"immediately":true,"through":"centre","t":0.0})";
}

/// Labels as a JSON array.
inline std::string insertLine(const std::string& after, int at, const std::string& labels) {
  return R"({"event":"insert","after":")" + after + R"(","at":)" + std::to_string(at) + R"(,"labels":)" + labels +
         R"(,"animated":true,"t":0.0})";
}
inline std::string removeLine(int at, const std::string& labels) {
  return R"({"event":"remove","at":)" + std::to_string(at) + R"(,"labels":)" + labels + R"(,"animated":true,"t":0.0})";
}
inline std::string rowsReloadedLine(const std::string& time = "0.0") {
  return R"({"event":"reload","what":"specifiers","t":)" + time + "}";
}
inline std::string rowReloadedLine(const std::string& identifier, const std::string& time) {
  return R"({"event":"reload","what":"row","row":")" + identifier + R"(","t":)" + time + "}";
}
inline std::string keyboardLine(bool visible) {
  return std::string(R"({"event":"keyboard","visible":)") + (visible ? "true" : "false") + R"(,"t":0.0})";
}
inline std::string barLine(const std::string& title) {
  return R"({"event":"bar","side":"right","title":")" + title + R"(","style":"done","t":0.0})";
}
inline const std::string kBarClearedLine = R"({"event":"bar","side":"right","title":null,"style":null,"t":0.0})";
inline const std::string kDismissLine = R"({"event":"dismiss","t":0.0})";

/// The rows of a page, each with all that it has: kind, properties, handlers, class that it opens, action, choices.
inline std::vector<std::string> wholeRows(platform::PSListController& page) {
  using host::headless::dump;
  using host::headless::Json;
  using host::headless::toJson;
  std::vector<std::string> lines;
  for (const auto& row : page.specifiers()) {
    Json properties = Json::object();
    for (const auto& [key, property] : row->properties()) properties[key] = toJson(property);
    std::string line = std::string(cellTypeName(row->cellType())) + " " + dump(properties);
    if (row->setter()) line += " set";
    if (row->getter()) line += " get";
    if (!row->detailControllerClass().empty()) line += " opens " + row->detailControllerClass();
    if (row->action()) line += " action " + row->action()->selector;
    if (!row->values().empty()) {
      line += " values " + dump(toJson(platform::Value(row->values()))) + " titles " + dump(Json(row->titles()));
    }
    if (!row->shortTitles().empty()) line += " short " + dump(Json(row->shortTitles()));
    // A row's name is its label, and only a page's own rows are aimed at it.
    if (row->name() != row->stringForKey("label")) line += " named " + row->name();
    if (row->cellType() != platform::PSCellType::PSGroupCell && row->target() != &page) line += " without target";
    lines.push_back(std::move(line));
  }
  return lines;
}

inline std::string groupRow(const std::string& title) {
  return title.empty() ? "PSGroupCell {}" : R"(PSGroupCell {"label":")" + title + R"("})";
}
inline std::string groupRow(const std::string& title, const std::string& footer) {
  return R"(PSGroupCell {"footerText":)" + host::headless::dump(host::headless::Json(footer)) + R"(,"label":")" +
         title + R"("})";
}
inline std::string switchRow(const std::string& label, const std::string& key) {
  return R"(PSSwitchCell {"default":0,"key":")" + key + R"(","label":")" + label + R"("} set get)";
}
inline std::string typedSliderRow(const std::string& label, const std::string& key, const std::string& byDefault,
                                  const std::string& minimum, const std::string& maximum) {
  return R"(PSSliderCell {"cellClass":{"$class":"KVQuellarSliderCell"},"default":)" + byDefault + R"(,"key":")" + key +
         R"(","label":")" + label + R"(","max":)" + maximum + R"(,"min":)" + minimum + R"(,"showValue":true} set get)";
}
inline std::string colorRow(const std::string& label, const std::string& key, const std::string& byDefault,
                            const std::string& defaultsKey, const std::string& action) {
  return R"(PSButtonCell {"cellClass":{"$class":"KVQuellarColorPreviewTableCell"},"colorKey":")" + key +
         R"(","defaultColor":")" + byDefault + R"(","defaultsKey":")" + defaultsKey + R"(","label":")" + label +
         R"("} action )" + action;
}

}  // namespace quellar::tests

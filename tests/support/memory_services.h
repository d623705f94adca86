// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "host/headless/headless_host.h"
#include "host/headless/json.h"
#include "platform/ports.h"

// Services that live in memory, for tests of the panel; what they hold is set and read by the test.

namespace quellar::tests {

using host::headless::dump;

class MemoryPreferences : public platform::Preferences {
 public:
  std::map<std::string, platform::Dictionary, std::less<>> domains;

  std::optional<platform::Value> copyAppValue(std::string_view key, std::string_view domain) override {
    const auto found = domains.find(domain);
    const platform::Value* value = found == domains.end() ? nullptr : platform::find(found->second, key);
    return value ? std::optional(*value) : std::nullopt;
  }
  void setAppValue(std::string_view key, const std::optional<platform::Value>& value,
                   std::string_view domain) override {
    platform::Dictionary& dictionary = domains[std::string(domain)];
    if (value) {
      dictionary.insert_or_assign(std::string(key), *value);
    } else {
      dictionary.erase(std::string(key));
    }
  }
  [[nodiscard]] bool wasRead(std::string_view /*domain*/) const override { return true; }
  void appSynchronize(std::string_view /*domain*/) override {}
};

class MemoryFiles : public platform::Files {
 public:
  std::set<std::string, std::less<>> existing;
  std::set<std::string, std::less<>> missingImages;
  std::map<std::string, platform::Value, std::less<>> propertyLists;

  bool fileExists(std::string_view path) override { return existing.contains(path); }
  std::optional<platform::Image> imageWithContentsOfFile(std::string_view path) override {
    if (missingImages.contains(path)) return std::nullopt;
    return platform::Image{.path = std::string(path), .flatColor = std::nullopt};
  }
  std::optional<platform::Image> imageNamed(std::string_view name, std::string_view bundlePath) override {
    const std::string path = std::string(bundlePath) + "/" + std::string(name) + ".png";
    if (!existing.contains(path)) return std::nullopt;
    return platform::Image{.path = path, .flatColor = std::nullopt};
  }
  std::optional<platform::Value> propertyListWithContentsOfFile(std::string_view path) override {
    const auto found = propertyLists.find(path);
    return found == propertyLists.end() ? std::nullopt : std::optional(found->second);
  }
};

class MemoryBundles : public platform::Bundles {
 public:
  /// Texts by key; a text that is not here comes back as it is.
  std::map<std::string, std::string, std::less<>> texts;
  std::map<std::string, platform::Array, std::less<>> rowFiles;
  /// Every lookup, in order: "key" or "table/key".
  std::vector<std::string> lookups;
  std::vector<std::string> reports;

  std::string localizedString(std::string_view bundlePath, std::string_view key, std::string_view value,
                              const std::optional<std::string>& table) override {
    bundles.emplace(bundlePath);
    const std::string place = table ? *table + "/" + std::string(key) : std::string(key);
    lookups.push_back(place);
    const auto found = texts.find(place);
    if (found != texts.end()) return found->second;
    return std::string(value.empty() ? key : value);
  }
  std::optional<platform::Array> rowFileItems(std::string_view /*bundlePath*/, std::string_view name) override {
    const auto found = rowFiles.find(name);
    return found == rowFiles.end() ? std::nullopt : std::optional(found->second);
  }
  void reportRowFile(std::string_view name, std::string_view problem) override {
    reports.push_back(std::string(name) + ": " + std::string(problem));
  }

  /// The bundles that were asked.
  std::set<std::string, std::less<>> bundles;
};

class MemoryApplications : public platform::Applications {
 public:
  std::vector<platform::Application> installed;
  std::vector<platform::Application> installedApplications() override { return installed; }
};

/// A headless host on services in memory, with the events that it gives as lines of text.
class Panel {
 public:
  explicit Panel(const host::headless::DeviceOptions& options = {})
      : host(options, {.preferences = preferences, .files = files, .bundles = bundles, .applications = applications},
             [this](const host::headless::Json& event) { events_.push_back(dump(event)); }) {}

  MemoryPreferences preferences;
  MemoryFiles files;
  MemoryBundles bundles;
  MemoryApplications applications;

 private:
  std::vector<std::string> events_;

 public:
  host::headless::HeadlessHost host;

  /// The events since the last call.
  std::vector<std::string> events() { return std::exchange(events_, {}); }

  /// What the settings domain holds under a key, as JSON; "null" for nothing.
  std::string stored(std::string_view key, std::string_view domain = "com.vantorick.quellar2") {
    return dump(host::headless::toJson(preferences.copyAppValue(key, domain)));
  }
  void store(std::string_view key, const platform::Value& value) {
    preferences.setAppValue(key, value, "com.vantorick.quellar2");
  }

  /// Opens a page; returns it without the events of its opening.
  platform::PSListController& open(std::string_view className) {
    host.open(className);
    events();
    return *host.topList();
  }

  /// The rows of the top page as lines "kind label | key".
  std::vector<std::string> rows() {
    std::vector<std::string> lines;
    for (const auto& row : host.topList()->specifiers()) {
      std::string line = std::string(cellTypeName(row->cellType())) + " " + row->name();
      if (const auto key = row->stringForKey("key"); !key.empty()) line += " | " + key;
      lines.push_back(std::move(line));
    }
    return lines;
  }
  platform::PSSpecifier& row(std::string_view identifier) { return *host.topList()->specifierForID(identifier); }
  void set(std::string_view identifier, const platform::Value& value) {
    host.topList()->userSetsValue(row(identifier), value);
  }
  void type(std::string_view identifier, std::string text) {
    host.topList()->beginEditing(row(identifier));
    host.topList()->setEditingText(std::move(text));
  }
  void advance(std::chrono::nanoseconds time) { host.queue().advance(time); }
};

}  // namespace quellar::tests

// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "platform/list_controller.h"

namespace quellar::tests {

/// A page of rows that a test makes.
class OwnPage : public platform::PSListController {
 public:
  OwnPage(platform::Platform& platform, std::function<void(OwnPage&, platform::Specifiers&)> make)
      : PSListController(platform, "OwnPage"), make_(std::move(make)) {
    setTitle("Own");
  }
  platform::Specifiers makeSpecifiers() override {
    platform::Specifiers rows;
    make_(*this, rows);
    return rows;
  }
  /// A row that holds a value, kept in `written`.
  platform::PSSpecifier::Pointer make(const std::string& label, platform::PSCellType kind, const std::string& key) {
    auto made = platform::PSSpecifier::preferenceSpecifierNamed(
        label, this,
        [this](const auto& value, auto& row) {
          written[row.stringForKey("key")] = *value;
          ++writes;
        },
        [this](auto& row) {
          const auto found = written.find(row.stringForKey("key"));
          return found == written.end() ? std::nullopt : std::optional(found->second);
        },
        "", kind);
    made->setProperty("key", platform::Value(key));
    return made;
  }
  platform::Dictionary written;
  int writes = 0;

 private:
  std::function<void(OwnPage&, platform::Specifiers&)> make_;
};

}  // namespace quellar::tests

// SPDX-License-Identifier: MIT
#pragma once

#include "frame/list_controller.h"

namespace quellar::pages {

/// What happens when the playing track changes. One of the accounts in its list can be picked, by its name.
class KVQuellarMusicListController : public frame::KVQuellarListController {
 public:
  explicit KVQuellarMusicListController(platform::Platform& platform) : KVQuellarListController(platform, page()) {}

  static const frame::Page& page();

  void savePreferenceValue(const frame::Value& value, const std::string& key);
  void didSelectRowAtIndex(std::size_t index) override;
  [[nodiscard]] bool showsCheckmark(std::size_t index) override;

 private:
  [[nodiscard]] bool isAccount(std::size_t index);
};

}  // namespace quellar::pages

// SPDX-License-Identifier: MIT
#include "host/window/seen_preferences.h"

namespace quellar::host::window {

using platform::Value;

std::optional<Value> SeenPreferences::copyAppValue(std::string_view key, std::string_view domain) {
  auto value = beneath_.copyAppValue(key, domain);
  note(key, domain, value);
  return value;
}

void SeenPreferences::setAppValue(std::string_view key, const std::optional<Value>& value, std::string_view domain) {
  beneath_.setAppValue(key, value, domain);
  note(key, domain, value);
}

bool SeenPreferences::changedElsewhere(std::string_view key, std::string_view domain) const {
  const auto seen = seen_.find({std::string(domain), std::string(key)});
  return seen != seen_.end() && beneath_.copyAppValue(key, domain) != seen->second;
}

void SeenPreferences::note(std::string_view key, std::string_view domain, const std::optional<Value>& value) {
  seen_.insert_or_assign({std::string(domain), std::string(key)}, value);
  if (listener_) listener_();
}

}  // namespace quellar::host::window

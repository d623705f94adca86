// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "frame/page.h"
#include "platform/platform.h"

namespace quellar::frame {

/// What is known of a preference key before anything is stored.
struct SchemaKey {
  /// Class of the page.
  std::string page;
  /// The dictionary that holds the key; "" for a key that stands in a domain by itself.
  std::string defaultsKey;
  std::string key;
  /// "boolean", "integer", "real", "string" or "color".
  std::string type;
  /// Of that type, as are the bounds.
  std::optional<platform::Value> byDefault;
  std::optional<platform::Value> minimum;
  std::optional<platform::Value> maximum;
  /// The choices, matched by place; none where any value of the type will do.
  std::vector<platform::Value> values;
  std::vector<std::string> titles;
  /// In English.
  std::string label;
  /// The notifications that a write of the key posts, each once.
  std::vector<std::string> posts;
};

/// The keys of a page's description in display order, those of all dependent blocks among them, each key once.
[[nodiscard]] std::vector<SchemaKey> schemaOf(const Page& page, platform::Platform& platform);

}  // namespace quellar::frame

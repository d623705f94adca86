// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "platform/specifier.h"
#include "platform/value.h"

namespace quellar::host::headless {

/// JSON whose fields keep the order in which they were set.
using Json = nlohmann::ordered_json;

/// Deeper JSON is not read.
inline constexpr std::size_t kDeepestJson = 128;

/// Why a text is not read as JSON.
enum class NoJson { malformed, tooDeep };

/// Reads a text in time that grows with its length alone. Of two fields of one name the last value serves, at the
/// place of the first.
[[nodiscard]] std::variant<Json, NoJson> parseJson(std::string_view text);

/// One line of text without the line end, in which a terminal acts on no character. A real is printed with a point or
/// an exponent, in the shortest form that reads back to the same double.
[[nodiscard]] std::string dump(const Json& json);

/// A time or duration in seconds, the unit of all times in JSON.
[[nodiscard]] double seconds(std::chrono::nanoseconds time);

/// A property-list value: data as {"$data":"<base64>"}, a date as {"$date":"<ISO 8601>"}.
[[nodiscard]] Json toJson(const platform::Value& value);
/// The value, or null for none.
[[nodiscard]] Json toJson(const std::optional<platform::Value>& value);
/// A row property: an image as {"$image":"<path>"}, a class as {"$class":"<name>"}.
[[nodiscard]] Json toJson(const platform::Property& property);

/// The property-list value of a boolean, number, string, array or object; nothing for null, for a number that no
/// 64-bit integer holds and for what contains one of these. An object is a dictionary, whatever its keys.
[[nodiscard]] std::optional<platform::Value> toValue(const Json& json);

}  // namespace quellar::host::headless

// SPDX-License-Identifier: MIT
#include "platform/value.h"

#include <array>
#include <cmath>
#include <limits>

namespace quellar::platform {

bool Value::boolValue() const {
  if (const bool* boolean = as<bool>()) return *boolean;
  if (const auto* integer = as<std::int64_t>()) return *integer != 0;
  if (const double* real = as<double>()) return *real != 0.0;
  return false;
}

std::int64_t Value::integerValue() const {
  if (const bool* boolean = as<bool>()) return *boolean ? 1 : 0;
  if (const auto* integer = as<std::int64_t>()) return *integer;
  if (const double* real = as<double>()) {
    if (std::isnan(*real)) return 0;
    // 2^63 is the first double above the type's range; casting it would be undefined.
    constexpr double kLimit = 9223372036854775808.0;
    if (*real >= kLimit) return std::numeric_limits<std::int64_t>::max();
    if (*real < -kLimit) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(*real);
  }
  return 0;
}

double Value::doubleValue() const {
  if (const bool* boolean = as<bool>()) return *boolean ? 1.0 : 0.0;
  if (const auto* integer = as<std::int64_t>()) return static_cast<double>(*integer);
  if (const double* real = as<double>()) return *real;
  return 0.0;
}

std::string_view typeName(const Value& value) {
  static constexpr std::array<std::string_view, 8> kNames = {"boolean", "integer", "real",  "string",
                                                             "data",    "date",    "array", "dictionary"};
  return kNames.at(value.variant().index());
}

const Value* find(const Dictionary& dictionary, std::string_view key) {
  const auto entry = dictionary.find(key);
  return entry == dictionary.end() ? nullptr : &entry->second;
}

}  // namespace quellar::platform

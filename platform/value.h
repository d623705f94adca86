// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace quellar::platform {

class Value;

using Array = std::vector<Value>;
/// A property-list dictionary; its keys stand in byte order, so that two equal dictionaries print alike.
using Dictionary = std::map<std::string, Value, std::less<>>;

/// Bytes of a property list's `data` element.
struct Data {
  std::vector<std::uint8_t> bytes;
  bool operator==(const Data&) const = default;
};

/// A property-list date: seconds since 2001-01-01T00:00:00Z, the epoch of the binary property-list format.
struct Date {
  double seconds = 0;
  bool operator==(const Date&) const = default;
};

/// One property-list value. Boolean, integer and real are three types: true, 1 and 1.0 are unequal, because the
/// store keeps the type and a reader of the file sees it.
class Value {
 public:
  using Variant = std::variant<bool, std::int64_t, double, std::string, Data, Date, Array, Dictionary>;

  Value() : variant_(false) {}
  Value(bool value) : variant_(value) {}
  Value(int value) : variant_(std::int64_t{value}) {}
  Value(std::int64_t value) : variant_(value) {}
  Value(double value) : variant_(value) {}
  Value(const char* value) : variant_(std::string(value)) {}
  Value(std::string value) : variant_(std::move(value)) {}
  Value(std::string_view value) : variant_(std::string(value)) {}
  Value(Data value) : variant_(std::move(value)) {}
  Value(Date value) : variant_(value) {}
  Value(Array value) : variant_(std::move(value)) {}
  Value(Dictionary value) : variant_(std::move(value)) {}
  template <typename T>
  Value(T*) = delete;

  [[nodiscard]] const Variant& variant() const { return variant_; }

  template <typename T>
  [[nodiscard]] bool is() const {
    return std::holds_alternative<T>(variant_);
  }
  /// The value as a T, or nullptr where it is of another type.
  template <typename T>
  [[nodiscard]] const T* as() const {
    return std::get_if<T>(&variant_);
  }
  template <typename T>
  [[nodiscard]] T* as() {
    return std::get_if<T>(&variant_);
  }

  /// True for a boolean, an integer and a real.
  [[nodiscard]] bool isNumber() const { return is<bool>() || is<std::int64_t>() || is<double>(); }
  /// The number as a truth value, non-zero being true; false for what is no number.
  [[nodiscard]] bool boolValue() const;
  /// The number as an integer, a real cut towards zero and held at the bounds of the type; 0 for what is no number.
  [[nodiscard]] std::int64_t integerValue() const;
  /// The number as a real; 0.0 for what is no number.
  [[nodiscard]] double doubleValue() const;

  bool operator==(const Value&) const = default;

 private:
  Variant variant_;
};

/// The value of a type for messages: "boolean", "integer", "real", "string", "data", "date", "array", "dictionary".
[[nodiscard]] std::string_view typeName(const Value& value);

/// The entry of a dictionary, or nullptr.
[[nodiscard]] const Value* find(const Dictionary& dictionary, std::string_view key);

}  // namespace quellar::platform

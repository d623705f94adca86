// SPDX-License-Identifier: MIT
#include "host/headless/json.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/printable.h"

namespace quellar::host::headless {

using platform::Array;
using platform::Class;
using platform::Data;
using platform::Date;
using platform::Dictionary;
using platform::Image;
using platform::Property;
using platform::Value;

namespace {

std::string formatted(double real) {
  std::array<char, 32> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), real).ptr;
  std::string text(buffer.data(), end);
  if (text.find_first_of(".e") == std::string::npos) text += ".0";
  return text;
}

void append(std::string& text, const Json& json) {
  if (json.is_object()) {
    text += '{';
    bool first = true;
    for (const auto& [key, value] : json.items()) {
      if (!first) text += ',';
      first = false;
      append(text, Json(key));
      text += ':';
      append(text, value);
    }
    text += '}';
  } else if (json.is_array()) {
    text += '[';
    bool first = true;
    for (const auto& value : json) {
      if (!first) text += ',';
      first = false;
      append(text, value);
    }
    text += ']';
  } else if (json.is_number_float()) {
    text += formatted(json.get<double>());
  } else {
    text += platform::printable(json.dump(-1, ' ', false, Json::error_handler_t::replace));
  }
}

std::string base64(const std::vector<std::uint8_t>& bytes) {
  static constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - at);
    std::uint32_t group = 0;
    for (std::size_t each = 0; each < 3; ++each) {
      group = group << 8U | (each < count ? bytes[at + each] : 0U);
    }
    for (std::size_t digit = 0; digit < 4; ++digit) {
      text += digit <= count ? kDigits[group >> (18U - 6U * digit) & 0x3FU] : '=';
    }
  }
  return text;
}

// ISO 8601 in UTC, with as many decimals of a second as the date has, up to three.
std::string iso8601(double secondsSince2001) {
  using namespace std::chrono;
  constexpr double kLimit = 1.0e11;  // About the year 5000; beyond it the calendar's arithmetic would overflow.
  const double held = std::isfinite(secondsSince2001) ? std::clamp(secondsSince2001, -kLimit, kLimit) : 0.0;
  const sys_time<milliseconds> epoch = sys_days(year(2001) / 1 / 1);
  const auto time = epoch + milliseconds(std::llround(held * 1000));
  const auto day = floor<days>(time);
  const year_month_day date(day);
  const hh_mm_ss clock(time - day);
  std::array<char, 64> buffer{};
  std::snprintf(buffer.data(), buffer.size(), "%04d-%02u-%02uT%02d:%02d:%02d", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  std::string text = buffer.data();
  if (clock.subseconds().count() != 0) {
    std::snprintf(buffer.data(), buffer.size(), ".%03d", static_cast<int>(clock.subseconds().count()));
    text += buffer.data();
  }
  return text + "Z";
}

/// Builds JSON from what its reader finds. The library's own way looks for each key among all before it, copies what is
/// nested whenever an object grows, and knows no bound of the depth.
class Builder final : public nlohmann::json_sax<Json> {
 public:
  bool null() override { return add(nullptr); }
  bool boolean(bool value) override { return add(value); }
  bool number_integer(number_integer_t value) override { return add(value); }
  bool number_unsigned(number_unsigned_t value) override { return add(value); }
  bool number_float(number_float_t value, const string_t& /*written*/) override { return add(value); }
  bool string(string_t& value) override { return add(std::move(value)); }
  bool binary(binary_t& /*value*/) override { return false; }
  bool start_object(std::size_t /*elements*/) override { return open(true); }
  bool start_array(std::size_t /*elements*/) override { return open(false); }
  bool key(string_t& name) override {
    Level& level = levels_.back();
    const auto [entry, isNew] = level.places.try_emplace(name, level.keys.size());
    level.place = entry->second;
    if (!isNew) return true;
    level.keys.push_back(std::move(name));
    level.values.emplace_back();
    return true;
  }
  bool end_object() override {
    Level level = close();
    Json::object_t object;
    // A key is constant, so that an object that outgrew its room would copy all that it holds.
    object.reserve(level.keys.size());
    for (std::size_t place = 0; place < level.keys.size(); ++place) {
      object.emplace_back(std::move(level.keys[place]), std::move(level.values[place]));
    }
    return add(std::move(object));
  }
  bool end_array() override { return add(Json::array_t(close().values)); }
  bool parse_error(std::size_t /*position*/, const std::string& /*last*/,
                   const nlohmann::detail::exception& /*error*/) override {
    return false;
  }

  [[nodiscard]] bool tooDeep() const { return tooDeep_; }
  [[nodiscard]] Json take() { return std::move(result_); }

 private:
  /// An object or array that is not closed yet.
  struct Level {
    bool isObject = false;
    std::vector<Json> values;
    /// Of an object.
    std::vector<std::string> keys;
    std::unordered_map<std::string, std::size_t> places;
    /// Of the key that was read last.
    std::size_t place = 0;
  };

  bool open(bool isObject) {
    tooDeep_ = levels_.size() == kDeepestJson;
    if (!tooDeep_) levels_.emplace_back().isObject = isObject;
    return !tooDeep_;
  }
  Level close() {
    Level level = std::move(levels_.back());
    levels_.pop_back();
    return level;
  }
  bool add(Json value) {
    if (levels_.empty()) {
      result_ = std::move(value);
    } else if (Level& level = levels_.back(); level.isObject) {
      level.values[level.place] = std::move(value);
    } else {
      level.values.push_back(std::move(value));
    }
    return true;
  }

  std::vector<Level> levels_;
  Json result_;
  bool tooDeep_ = false;
};

}  // namespace

std::variant<Json, NoJson> parseJson(std::string_view text) {
  Builder builder;
  if (Json::sax_parse(text, &builder)) return builder.take();
  return builder.tooDeep() ? NoJson::tooDeep : NoJson::malformed;
}

std::string dump(const Json& json) {
  std::string text;
  append(text, json);
  return text;
}

Json toJson(const Value& value) {
  struct {
    Json operator()(bool boolean) const { return boolean; }
    Json operator()(std::int64_t integer) const { return integer; }
    Json operator()(double real) const { return real; }
    Json operator()(const std::string& text) const { return text; }
    Json operator()(const Data& data) const { return Json::object({{"$data", base64(data.bytes)}}); }
    Json operator()(const Date& date) const { return Json::object({{"$date", iso8601(date.seconds)}}); }
    Json operator()(const Array& array) const {
      Json json = Json::array();
      for (const Value& each : array) json.push_back(toJson(each));
      return json;
    }
    Json operator()(const Dictionary& dictionary) const {
      // Its keys are unique; setting them one by one would look for each among all that stand before it.
      Json::object_t object;
      object.reserve(dictionary.size());
      for (const auto& [key, each] : dictionary) object.emplace_back(key, toJson(each));
      return object;
    }
  } const convert;
  return std::visit(convert, value.variant());
}

Json toJson(const std::optional<Value>& value) {
  return value ? toJson(*value) : Json(nullptr);
}

Json toJson(const Property& property) {
  if (const auto* image = std::get_if<Image>(&property)) return Json::object({{"$image", image->path}});
  if (const auto* named = std::get_if<Class>(&property)) return Json::object({{"$class", named->name}});
  return toJson(std::get<Value>(property));
}

std::optional<Value> toValue(const Json& json) {
  if (json.is_boolean()) return Value(json.get<bool>());
  if (json.is_number_float()) return Value(json.get<double>());
  if (json.is_number_unsigned() && json.get<std::uint64_t>() > std::numeric_limits<std::int64_t>::max()) {
    return std::nullopt;
  }
  if (json.is_number_integer()) return Value(json.get<std::int64_t>());
  if (json.is_string()) return Value(json.get<std::string>());
  if (json.is_array()) {
    Array array;
    for (const auto& each : json) {
      auto value = toValue(each);
      if (!value) return std::nullopt;
      array.push_back(std::move(*value));
    }
    return Value(std::move(array));
  }
  if (json.is_object()) {
    Dictionary dictionary;
    for (const auto& [key, each] : json.items()) {
      auto value = toValue(each);
      if (!value) return std::nullopt;
      dictionary.insert_or_assign(key, std::move(*value));
    }
    return Value(std::move(dictionary));
  }
  return std::nullopt;
}

double seconds(std::chrono::nanoseconds time) {
  return std::chrono::duration<double>(time).count();
}

}  // namespace quellar::host::headless

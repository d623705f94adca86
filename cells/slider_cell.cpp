// SPDX-License-Identifier: MIT
#include "cells/slider_cell.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <limits>

#include "platform/list_controller.h"
#include "platform/navigation_controller.h"

namespace quellar::cells {

using platform::ButtonStyle;
using platform::Color;
using platform::Dialog;
using platform::Dictionary;
using platform::PSSpecifier;
using platform::Value;

namespace {

constexpr Color kTitleColor{22, 36, 51, 1};
constexpr Color kLightGray{170, 170, 170, 1};

float bound(const PSSpecifier& row, std::string_view key) {
  const Value* value = row.valueForKey(key);
  return value ? static_cast<float>(value->doubleValue()) : 0.0F;
}

// Whether an unsigned decimal number that a float can't hold is too large for it, rather than too small: whether its
// first digit other than 0 stands before the point, once the exponent has moved it.
bool isTooLarge(std::string_view number) {
  const std::size_t mark = std::min(number.find_first_of("eE"), number.size());
  const std::string_view digits = number.substr(0, mark);
  const std::size_t point = std::min(digits.find('.'), digits.size());
  const std::size_t first = std::min(digits.find_first_of("123456789"), digits.size());
  const std::int64_t place = static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first);
  std::string_view exponent = number.substr(std::min(mark + 1, number.size()));
  if (exponent.starts_with('+')) exponent.remove_prefix(1);
  std::int64_t shift = 0;
  const auto result = std::from_chars(exponent.data(), exponent.data() + exponent.size(), shift);
  if (result.ec == std::errc::result_out_of_range) return !exponent.starts_with('-');
  return shift > -place;
}

}  // namespace

float floatValue(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\r"), text.size()));
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  // The scanner would take "inf", "nan" and a second sign as well.
  if (text.find_first_of("0123456789.") != 0) return 0;
  float value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error == std::errc::result_out_of_range) {
    const auto length = static_cast<std::size_t>(end - text.data());
    value = isTooLarge(text.substr(0, length)) ? std::numeric_limits<float>::infinity() : 0.0F;
  }
  return negative ? -value : value;
}

KVQuellarSliderCell::KVQuellarSliderCell(platform::Platform& platform, PSSpecifier& specifier, platform::Rect frame)
    : PSSliderTableCell(specifier, frame),
      platform_(platform),
      labelText_{specifier.stringForKey("label"), {16, 5, 250, 20}, kTitleColor},
      tapArea_{frame.width - 50, 0, 50, frame.height} {
  if (const auto* subtitle = specifier.property<std::string>("subtitle")) {
    footerText_ = Label{*subtitle, {}, kLightGray};
  }
}

void KVQuellarSliderCell::presentPopup() {
  const float min = bound(specifier(), "min");
  const float max = bound(specifier(), "max");
  const float range = max - min;
  std::array<char, 160> message{};
  std::snprintf(message.data(), message.size(), "Please enter a value between %.01f and %.01f.",
                static_cast<double>(min), static_cast<double>(max));

  // A dialog lasts longer than a cell whose row is reloaded beneath it: it holds the row and the cell.
  const auto clicked = [row = specifier().shared_from_this(), cell = shared_from_this()](int index) {
    return [row, cell, index](const std::string& text) {
      cell->alertViewClickedButtonAtIndex(kValueEntryTag, index, text);
    };
  };
  Dialog dialog;
  dialog.title = specifier().name();
  dialog.message = message.data();
  dialog.buttons = {{"Cancel", ButtonStyle::cancel, clicked(0)}, {"Enter", ButtonStyle::plain, clicked(1)}};
  dialog.text = "";
  dialog.keyboardType = platform::KeyboardType::numberPad;
  // Wide ranges of numbers that are not negative are typed as whole numbers; a pad's keyboard has all keys.
  const bool pad = platform_.device.userInterfaceIdiom() == 1;
  if (!pad && (range <= 10 || min < 0)) {
    if (min < 0) dialog.accessory.push_back({"Negate", [cell = shared_from_this()] { cell->typeMinus(); }});
    if (range <= 10) dialog.accessory.push_back({"Point", [cell = shared_from_this()] { cell->typePoint(); }});
  }
  platform_.navigation.present(std::move(dialog));
}

void KVQuellarSliderCell::typeMinus() {
  const auto& dialog = platform_.navigation.dialog();
  if (!dialog || !dialog->text) return;
  const std::string text = *dialog->text;
  platform_.navigation.setDialogText(text.starts_with('-') ? text.substr(1) : "-" + text);
}

void KVQuellarSliderCell::typePoint() {
  const auto& dialog = platform_.navigation.dialog();
  if (!dialog || !dialog->text) return;
  platform_.navigation.setDialogText(*dialog->text + ".");
}

void KVQuellarSliderCell::alertViewClickedButtonAtIndex(int tag, int buttonIndex, const std::string& text) {
  if (tag == kErrorTag) {
    presentPopup();
    return;
  }
  if (tag != kValueEntryTag || buttonIndex != 1) return;
  const float value = floatValue(text);
  if (value > bound(specifier(), "max") || value < bound(specifier(), "min")) {
    Dialog error;
    error.title = "Error";
    error.message = "Ensure you enter a valid value.";
    error.buttons = {{"OK", ButtonStyle::cancel,
                      [row = specifier().shared_from_this(), cell = shared_from_this()](const std::string& typed) {
                        cell->alertViewClickedButtonAtIndex(kErrorTag, 0, typed);
                      }}};
    platform_.navigation.present(std::move(error));
    return;
  }
  Dictionary userInfo{{"newValue", static_cast<double>(value)}};
  if (const Value* key = specifier().valueForKey("key")) userInfo.insert_or_assign("settingsKey", *key);
  platform_.notifications.postNotification({"sliderValueChanged", specifier().shared_from_this(), std::move(userInfo)});
}

}  // namespace quellar::cells

// SPDX-License-Identifier: MIT
#include "cells/stepper_cell.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "frame/names.h"

namespace quellar::cells {

using platform::Dictionary;
using platform::PSSpecifier;
using platform::Value;

namespace {

void take(const PSSpecifier& row, std::string_view property, double& number) {
  if (const Value* value = row.valueForKey(property)) number = value->doubleValue();
}

void take(const PSSpecifier& row, std::string_view property, bool& flag) {
  if (const Value* value = row.valueForKey(property)) flag = value->boolValue();
}

bool isSet(const PSSpecifier& row, std::string_view property) {
  const Value* value = row.valueForKey(property);
  return value && value->boolValue();
}

}  // namespace

KVQuellarStepperCell::KVQuellarStepperCell(platform::Platform& platform, PSSpecifier& specifier, platform::Rect frame)
    : PSTableCell(specifier, frame), platform_(platform) {
  const double width = frame.width;
  const double height = frame.height - 16;
  stepper_.frame = {width - 3 * height - 16, 8, 3 * height, height};
  label_ = {"", {width - 6 * height - 16 + 5, 0, 2 * (frame.height - 8), frame.height}, {0, 0, 0, 1}};
}

void KVQuellarStepperCell::layoutSubviews() {
  PSTableCell::layoutSubviews();
  const PSSpecifier& row = specifier();
  if (!userDefaults_) loadUserDefaults();
  if (row.propertyForKey("cellClass")) {
    take(row, "continuous", stepper_.continuous);
    take(row, "autorepeat", stepper_.autorepeat);
    take(row, "wraps", stepper_.wraps);
    take(row, "minimumValue", stepper_.minimum);
    take(row, "maximumValue", stepper_.maximum);
    take(row, "stepValue", stepper_.step);

    const std::string key = row.stringForKey("key");
    const Value* stored = platform::find(*userDefaults_, key);
    const Value* fallback = row.valueForKey("default");
    if (stored && stored->isNumber() && !stored->is<bool>()) {
      stepper_.value = stored->doubleValue();
    } else if (fallback) {
      stepper_.value = static_cast<double>(fallback->integerValue());
    }
    stepper_.value = held(stepper_.value);
    // A value of another type stays where it is until the user steps.
    if (!stored) {
      userDefaults_->insert_or_assign(key, fallback ? Value(fallback->integerValue()) : Value(stepper_.value));
    }
  }
  updateLabel();
}

void KVQuellarStepperCell::loadUserDefaults() {
  userDefaults_.emplace();
  const auto* defaultsKey = specifier().property<std::string>("defaultsKey");
  if (!defaultsKey) return;
  const auto stored = platform_.preferences.copyAppValue(*defaultsKey, frame::kSettingsDomain);
  if (const auto* dictionary = stored ? stored->as<Dictionary>() : nullptr) userDefaults_ = *dictionary;
  wasRead_ = platform_.preferences.wasRead(frame::kSettingsDomain);
}

double KVQuellarStepperCell::held(double value) const {
  // Bounds that are upside down hold the value at the lower one.
  return std::max(stepper_.minimum, std::min(value, stepper_.maximum));
}

void KVQuellarStepperCell::press(int direction) {
  double value = stepper_.value + (direction > 0 ? stepper_.step : -stepper_.step);
  if (stepper_.wraps && value > stepper_.maximum) value = stepper_.minimum;
  if (stepper_.wraps && value < stepper_.minimum) value = stepper_.maximum;
  settleAt(value);
}

bool KVQuellarStepperCell::reaches(double value) const {
  const double steps = std::round((value - stepper_.minimum) / stepper_.step);
  return std::isfinite(steps) && value == stepper_.minimum + steps * stepper_.step;
}

void KVQuellarStepperCell::moveTo(double value) {
  if (reaches(value)) settleAt(value);
}

void KVQuellarStepperCell::settleAt(double value) {
  if (held(value) == stepper_.value) return;
  // A zero without a sign.
  stepper_.value = held(value) + 0.0;
  stepperPressed();
}

void KVQuellarStepperCell::stepperPressed() {
  const PSSpecifier& row = specifier();
  // An observer of the notification may build the page's rows anew; row and cell must last until the end.
  const auto lastingRow = specifier().shared_from_this();
  const auto lastingCell = shared_from_this();
  const std::string key = row.stringForKey("key");
  if (!wasRead_) loadUserDefaults();
  if (!userDefaults_) userDefaults_.emplace();
  userDefaults_->insert_or_assign(key, Value(stepper_.value));
  if (const auto* defaultsKey = row.property<std::string>("defaultsKey")) {
    platform_.preferences.setAppValue(*defaultsKey, Value(*userDefaults_), frame::kSettingsDomain);
  }
  platform_.preferences.appSynchronize(frame::kSettingsDomain);
  platform_.darwin.notifyPost(frame::kSettings);
  if (isSet(row, "requestsNotification")) {
    platform_.notifications.postNotification({"stepperValueChanged", key, std::nullopt});
  }
  updateLabel();
}

void KVQuellarStepperCell::updateLabel() {
  if (!isSet(specifier(), "updatesLabelValue")) return;
  std::array<char, 400> text{};
  std::snprintf(text.data(), text.size(), "%.f", stepper_.value);
  label_.text = text.data();
}

}  // namespace quellar::cells

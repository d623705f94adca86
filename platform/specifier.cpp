// SPDX-License-Identifier: MIT
#include "platform/specifier.h"

#include <algorithm>
#include <array>
#include <utility>

namespace quellar::platform {

namespace {

constexpr std::array kCellTypes = {
    std::pair{PSCellType::PSGroupCell, std::string_view("PSGroupCell")},
    std::pair{PSCellType::PSLinkListCell, std::string_view("PSLinkListCell")},
    std::pair{PSCellType::PSListItemCell, std::string_view("PSListItemCell")},
    std::pair{PSCellType::PSSliderCell, std::string_view("PSSliderCell")},
    std::pair{PSCellType::PSSwitchCell, std::string_view("PSSwitchCell")},
    std::pair{PSCellType::PSStaticTextCell, std::string_view("PSStaticTextCell")},
    std::pair{PSCellType::PSEditTextCell, std::string_view("PSEditTextCell")},
    std::pair{PSCellType::PSSegmentCell, std::string_view("PSSegmentCell")},
    std::pair{PSCellType::PSButtonCell, std::string_view("PSButtonCell")},
};

bool equalAsChoice(const Value& left, const Value& right) {
  if (left.is<bool>() != right.is<bool>()) return false;
  if (left.isNumber() && right.isNumber()) return left.doubleValue() == right.doubleValue();
  return left == right;
}

}  // namespace

std::string_view cellTypeName(PSCellType kind) {
  return std::ranges::find(kCellTypes, kind, &decltype(kCellTypes)::value_type::first)->second;
}

std::optional<PSCellType> cellTypeNamed(std::string_view name) {
  const auto* const entry = std::ranges::find(kCellTypes, name, &decltype(kCellTypes)::value_type::second);
  if (entry == kCellTypes.end()) return std::nullopt;
  return entry->first;
}

PSSpecifier::Pointer PSSpecifier::preferenceSpecifierNamed(std::string name, PSListController* target, Setter set,
                                                           Getter get, std::string detail, PSCellType cell) {
  Pointer specifier(new PSSpecifier);
  if (!name.empty()) specifier->setProperty("label", Value(name));
  specifier->name_ = std::move(name);
  specifier->cellType_ = cell;
  specifier->target_ = target;
  specifier->setter_ = std::move(set);
  specifier->getter_ = std::move(get);
  specifier->detailControllerClass_ = std::move(detail);
  return specifier;
}

PSSpecifier::Pointer PSSpecifier::emptyGroupSpecifier() {
  return groupSpecifierWithName("");
}

PSSpecifier::Pointer PSSpecifier::groupSpecifierWithName(std::string name) {
  return preferenceSpecifierNamed(std::move(name), nullptr, {}, {}, "", PSCellType::PSGroupCell);
}

const Property* PSSpecifier::propertyForKey(std::string_view key) const {
  const auto entry = properties_.find(key);
  return entry == properties_.end() ? nullptr : &entry->second;
}

void PSSpecifier::setProperty(std::string_view key, Property property) {
  properties_.insert_or_assign(std::string(key), std::move(property));
}

const Value* PSSpecifier::valueForKey(std::string_view key) const {
  const Property* found = propertyForKey(key);
  return found ? std::get_if<Value>(found) : nullptr;
}

std::string PSSpecifier::stringForKey(std::string_view key) const {
  const auto* text = property<std::string>(key);
  return text ? *text : std::string();
}

void PSSpecifier::setValues(std::vector<Value> values, std::vector<std::string> titles,
                            std::vector<std::string> shortTitles) {
  values_ = std::move(values);
  titles_ = std::move(titles);
  shortTitles_ = std::move(shortTitles);
}

std::optional<std::size_t> PSSpecifier::indexOfValue(const Value& value) const {
  const auto found = std::ranges::find_if(values_, [&](const Value& choice) { return equalAsChoice(choice, value); });
  if (found == values_.end()) return std::nullopt;
  return static_cast<std::size_t>(found - values_.begin());
}

std::optional<std::string> PSSpecifier::identifier() const {
  if (const auto* identifier = property<std::string>("id")) return *identifier;
  if (const auto* key = property<std::string>("key")) return *key;
  return std::nullopt;
}

bool PSSpecifier::enabled() const {
  const Value* enabled = valueForKey("enabled");
  return !enabled || !enabled->isNumber() || enabled->boolValue();
}

}  // namespace quellar::platform

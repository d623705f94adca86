// SPDX-License-Identifier: MIT
#include "platform/cell.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace quellar::platform {

std::string PSTableCell::className() const {
  switch (specifier_.cellType()) {
    case PSCellType::PSSwitchCell:
      return "PSSwitchTableCell";
    case PSCellType::PSEditTextCell:
      return "PSEditableTableCell";
    case PSCellType::PSSegmentCell:
      return "PSSegmentTableCell";
    case PSCellType::PSGroupCell:
    case PSCellType::PSLinkListCell:
    case PSCellType::PSListItemCell:
    case PSCellType::PSSliderCell:
    case PSCellType::PSStaticTextCell:
    case PSCellType::PSButtonCell:
      return "PSTableCell";
  }
  return "PSTableCell";
}

Control PSTableCell::control() const {
  switch (specifier_.cellType()) {
    case PSCellType::PSGroupCell:
      return Control::group;
    case PSCellType::PSLinkListCell:
      // Only a row that holds a value is a picker; a picker without choices is one all the same.
      return specifier_.getter() ? Control::picker : Control::link;
    case PSCellType::PSListItemCell:
      return Control::pickerItem;
    case PSCellType::PSSliderCell:
      return Control::slider;
    case PSCellType::PSSwitchCell:
      return Control::toggle;
    case PSCellType::PSStaticTextCell:
      return Control::staticText;
    case PSCellType::PSEditTextCell:
      return Control::text;
    case PSCellType::PSSegmentCell:
      return Control::segment;
    case PSCellType::PSButtonCell:
      return Control::button;
  }
  return Control::staticText;
}

namespace {

// A row without a bound has the platform slider's own.
double number(const PSSpecifier& row, std::string_view key, double fallback) {
  const Value* value = row.valueForKey(key);
  return value && value->isNumber() ? value->doubleValue() : fallback;
}

}  // namespace

double PSSliderTableCell::minimum() const {
  return number(specifier(), "min", 0);
}

double PSSliderTableCell::maximum() const {
  return number(specifier(), "max", 1);
}

void PSSliderTableCell::layoutSubviews() {
  PSTableCell::layoutSubviews();
  PSSpecifier& row = specifier();
  const auto stored = row.getter() ? row.getter()(row) : std::nullopt;
  const bool usable = stored && stored->isNumber() && !stored->is<bool>();
  setValue(usable ? stored->doubleValue() : number(row, "default", minimum()));
}

void PSSliderTableCell::setValue(double value) {
  // A range that is empty or upside down holds the knob at its lower end.
  value_ = std::max(minimum(), std::min(value, maximum()));
}

bool PSSliderTableCell::showValue() const {
  const Value* shows = specifier().valueForKey("showValue");
  return shows && shows->boolValue();
}

std::string PSSliderTableCell::valueText() const {
  const double range = maximum() - minimum();
  int decimals = 0;
  if (range <= 2) {
    decimals = 2;
  } else if (range <= 50) {
    decimals = 1;
  }
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%.*f", decimals, value_);
  return text.data();
}

}  // namespace quellar::platform

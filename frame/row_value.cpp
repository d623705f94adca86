// SPDX-License-Identifier: MIT
#include "frame/row_value.h"

#include <algorithm>

#include "frame/names.h"
#include "platform/list_controller.h"
#include "platform/platform.h"

namespace quellar::frame {

using platform::Dictionary;
using platform::PSCellType;
using platform::PSSpecifier;
using platform::Value;

bool isOfRowType(const PSSpecifier& row, const Value& stored) {
  if (row.propertyForKey("colorKey")) return stored.is<std::string>();
  switch (row.cellType()) {
    case PSCellType::PSSwitchCell:
      return stored.isNumber();
    case PSCellType::PSSliderCell:
    case PSCellType::PSStaticTextCell:
      return stored.isNumber() && !stored.is<bool>();
    case PSCellType::PSEditTextCell:
      return stored.is<std::string>();
    case PSCellType::PSLinkListCell:
    case PSCellType::PSSegmentCell:
      return std::ranges::any_of(row.values(), [&](const Value& choice) {
        if (choice.is<bool>() || stored.is<bool>()) return choice.is<bool>() && stored.is<bool>();
        return choice.isNumber() ? stored.isNumber() : choice.variant().index() == stored.variant().index();
      });
    case PSCellType::PSGroupCell:
    case PSCellType::PSListItemCell:
    case PSCellType::PSButtonCell:
      return false;
  }
  return false;
}

std::optional<Value> storedValue(PSSpecifier& row) {
  if (row.getter()) return row.getter()(row);
  const auto* colorKey = row.property<std::string>("colorKey");
  if (!colorKey || !row.target()) return std::nullopt;
  const auto stored =
      row.target()->platform().preferences.copyAppValue(row.stringForKey("defaultsKey"), kSettingsDomain);
  const auto* dictionary = stored ? stored->as<Dictionary>() : nullptr;
  const Value* color = dictionary ? find(*dictionary, *colorKey) : nullptr;
  return color ? std::optional(*color) : std::nullopt;
}

std::optional<Value> shownValue(PSSpecifier& row) {
  if (auto stored = storedValue(row); stored && isOfRowType(row, *stored)) return stored;
  for (const auto* key : {"default", "defaultColor"}) {
    if (const Value* value = row.valueForKey(key)) return *value;
  }
  return std::nullopt;
}

}  // namespace quellar::frame

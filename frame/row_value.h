// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

#include "platform/specifier.h"
#include "platform/value.h"

namespace quellar::frame {

/// True where a stored value is of the row's type: a number for a switch, slider and stepper, a string for a text and a
/// colour row, a number or a string as its choices are for a picker or segment.
[[nodiscard]] bool isOfRowType(const platform::PSSpecifier& row, const platform::Value& stored);

/// What the row's read handler returns; for a colour row what the store holds under its colorKey.
[[nodiscard]] std::optional<platform::Value> storedValue(platform::PSSpecifier& row);

/// What the row shows: the stored value where it is of the row's type, else the row's default or default colour, else
/// nothing.
[[nodiscard]] std::optional<platform::Value> shownValue(platform::PSSpecifier& row);

}  // namespace quellar::frame

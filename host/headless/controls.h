// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "platform/cell.h"
#include "platform/specifier.h"

namespace quellar::host::headless {

/// True where a picker or segment row shows the choice of that place now.
[[nodiscard]] bool showsChoice(platform::PSSpecifier& row, std::size_t choice);

/// The cell of a slider row that has been laid out.
[[nodiscard]] const platform::PSSliderTableCell& sliderCell(const platform::PSSpecifier& row);

}  // namespace quellar::host::headless

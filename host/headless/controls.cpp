// SPDX-License-Identifier: MIT
#include "host/headless/controls.h"

#include "frame/row_value.h"

namespace quellar::host::headless {

bool showsChoice(platform::PSSpecifier& row, std::size_t choice) {
  const auto shown = frame::shownValue(row);
  return shown && row.indexOfValue(*shown) == choice;
}

const platform::PSSliderTableCell& sliderCell(const platform::PSSpecifier& row) {
  return dynamic_cast<const platform::PSSliderTableCell&>(*row.cell());
}

}  // namespace quellar::host::headless

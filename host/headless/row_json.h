// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "host/headless/json.h"
#include "platform/list_controller.h"

namespace quellar::host::headless {

/// The row at a place of a page, which must have one there: all that it is made of and all that it shows, in the fields
/// and the order of the row objects of the scripted session.
[[nodiscard]] Json rowJson(platform::PSListController& page, std::size_t index);

/// All rows of a page in display order.
[[nodiscard]] Json rowsJson(platform::PSListController& page);

/// What the row's cell is drawn from; null where the row has not been laid out.
[[nodiscard]] Json cellJson(const platform::PSSpecifier& row);

}  // namespace quellar::host::headless

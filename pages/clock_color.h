// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

#include "frame/list_controller.h"

namespace quellar::pages {

/// Shows the colour dialog for the lock-screen clock, started from the value that `readDomain` holds, and stores the
/// colour in the legacy domain, which alone the previous generation of the add-on reads.
void pickClockColor(frame::KVQuellarListController& page, std::string_view readDomain);

}  // namespace quellar::pages

// SPDX-License-Identifier: MIT
#pragma once

#include "frame/page_registry.h"

namespace quellar::pages {

/// Adds every page of the panel, under the English name of the link that opens it.
void registerPages(frame::PageRegistry& registry);

}  // namespace quellar::pages

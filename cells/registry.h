// SPDX-License-Identifier: MIT
#pragma once

#include "frame/page_registry.h"

namespace quellar::cells {

/// Adds the cell classes, and the class of the list that picker rows open.
void registerCells(frame::PageRegistry& registry);

}  // namespace quellar::cells

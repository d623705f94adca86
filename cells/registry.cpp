// SPDX-License-Identifier: MIT
#include "cells/registry.h"

#include "cells/color_preview_cell.h"
#include "cells/slider_cell.h"
#include "cells/stepper_cell.h"

namespace quellar::cells {

namespace {

template <typename Cell>
frame::PageRegistry::MakeCell maker() {
  return [](platform::Platform& platform, platform::PSSpecifier& specifier, const platform::Rect& frame) {
    return std::make_shared<Cell>(platform, specifier, frame);
  };
}

}  // namespace

void registerCells(frame::PageRegistry& registry) {
  registry.addCell("KVQuellarSliderCell", maker<KVQuellarSliderCell>());
  registry.addCell("KVQuellarStepperCell", maker<KVQuellarStepperCell>());
  registry.addCell("KVQuellarColorPreviewTableCell", maker<KVQuellarColorPreviewTableCell>());
  // A plain subclass of the platform's list, by its own name.
  registry.addClass("KVQuellarListItemsController", [](platform::Platform& platform) {
    return std::make_shared<platform::PSListItemsController>(platform, "KVQuellarListItemsController");
  });
}

}  // namespace quellar::cells

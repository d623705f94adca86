// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "platform/list_controller.h"

namespace quellar::host::window {

/// What a sample page is to show of each row.
enum class Sample {
  /// As it is used.
  plain,
  /// As it can't be used.
  disabled,
  /// With more text than fits on a line.
  lengthy,
};

/// A page with a row of each kind, in each state that it has, for pictures and for those who look at the layout: the
/// panel's own pages have no row that is disabled on every device, say. It stores nothing.
[[nodiscard]] std::shared_ptr<platform::PSListController> makeSamplePage(platform::Platform& platform, Sample sample);

}  // namespace quellar::host::window

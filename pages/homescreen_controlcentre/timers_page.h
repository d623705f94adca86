// SPDX-License-Identifier: MIT
#pragma once

#include "frame/list_controller.h"

namespace quellar::pages {

/// The quick timers of the control centre. It listens for stepper changes only while it is shown.
class KVQuellarCustomCCTimersListController : public frame::KVQuellarListController {
 public:
  explicit KVQuellarCustomCCTimersListController(platform::Platform& platform)
      : KVQuellarListController(platform, page()) {}

  static const frame::Page& page();

  void viewWillAppear() override;
  void viewWillDisappear() override;

 private:
  bool listening_ = true;
};

}  // namespace quellar::pages

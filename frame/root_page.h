// SPDX-License-Identifier: MIT
#pragma once

#include "frame/list_controller.h"

namespace quellar::frame {

/// The first page: the master switch, a link to every page, the respring button and the logo that fades in.
class QuellarListController : public KVQuellarListController {
 public:
  explicit QuellarListController(platform::Platform& platform) : KVQuellarListController(platform, page()) {}

  static const Page& page();

  void viewDidLoad() override;
  /// Fades the logo in.
  void increaseAlpha();
  /// An action that no row uses.
  void emailKV() {}
  /// Dismisses the composer that is shown.
  void mailComposeControllerDidFinish();
};

}  // namespace quellar::frame

// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "frame/page_registry.h"
#include "host/cli/bare_resources.h"
#include "host/headless/headless_device.h"
#include "host/linux/event_loop.h"
#include "host/linux/services.h"
#include "platform/list_controller.h"
#include "platform/navigation_controller.h"
#include "platform/platform.h"

namespace quellar::host::cli {

/// Hosts pages on the real store, the real bus and real time, without a screen.
class PanelHost {
 public:
  /// What pages are built with: translated texts and images, or neither.
  enum class Detail { Full, Bare };

  /// The services outlive the host.
  PanelHost(linux::Services& services, Detail detail);
  PanelHost(const PanelHost&) = delete;
  PanelHost& operator=(const PanelHost&) = delete;

  [[nodiscard]] platform::Platform& platform() { return platform_; }
  [[nodiscard]] platform::NavigationController& navigation() { return navigation_; }
  [[nodiscard]] const frame::PageRegistry& registry() const { return registry_; }
  [[nodiscard]] linux::EventLoop& loop() { return loop_; }

  /// The entry of a page's class or name. Throws a UsageError where there is none.
  [[nodiscard]] const frame::PageRegistry::Entry& entryNamed(std::string_view classOrName) const;
  /// A new page.
  [[nodiscard]] std::shared_ptr<platform::PSListController> makePage(const frame::PageRegistry::Entry& entry);

 private:
  BareResources bareResources_;
  linux::EventLoop loop_;
  platform::NotificationCenter notifications_;
  headless::HeadlessDevice device_{{}};
  frame::PageRegistry registry_;
  platform::NavigationController navigation_{notifications_};
  platform::SharedInstances shared_;
  platform::Platform platform_;
};

}  // namespace quellar::host::cli

// SPDX-License-Identifier: MIT
#pragma once

#include "frame/page_registry.h"
#include "host/headless/headless_device.h"
#include "host/headless/recorder.h"
#include "host/headless/virtual_queue.h"
#include "platform/navigation_controller.h"
#include "platform/platform.h"

namespace quellar::host::headless {

/// What a headless host takes from outside; the centres may be null, posts then reach only the recorder.
struct Services {
  platform::Preferences& preferences;
  platform::Files& files;
  platform::Bundles& bundles;
  platform::Applications& applications;
  platform::DarwinCenter* darwin = nullptr;
  platform::DistributedCenter* distributed = nullptr;
};

/// Hosts the real pages without drawing them, on a virtual clock, and records all that happens.
class HeadlessHost {
 public:
  HeadlessHost(const DeviceOptions& options, Services services, Recorder::Sink sink);
  ~HeadlessHost();
  HeadlessHost(const HeadlessHost&) = delete;
  HeadlessHost& operator=(const HeadlessHost&) = delete;

  [[nodiscard]] platform::Platform& platform() { return platform_; }
  [[nodiscard]] platform::NavigationController& navigation() { return navigation_; }
  [[nodiscard]] const frame::PageRegistry& registry() const { return registry_; }
  [[nodiscard]] VirtualQueue& queue() { return queue_; }

  /// The list page on top, or nullptr.
  [[nodiscard]] platform::PSListController* topList() const;
  /// Makes a page and pushes it; returns it, or nullptr where there is no such class.
  platform::ViewController* open(std::string_view className);

 private:
  VirtualQueue queue_;
  Recorder recorder_;
  RecordingPreferences preferences_;
  RecordingDarwinCenter darwin_;
  RecordingDistributedCenter distributed_;
  platform::NotificationCenter notifications_;
  HeadlessDevice device_;
  frame::PageRegistry registry_;
  platform::NavigationController navigation_{notifications_};
  platform::SharedInstances shared_;
  platform::Platform platform_;
};

}  // namespace quellar::host::headless

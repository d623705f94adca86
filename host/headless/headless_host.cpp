// SPDX-License-Identifier: MIT
#include "host/headless/headless_host.h"

#include "pages/registry.h"

namespace quellar::host::headless {

HeadlessHost::HeadlessHost(const DeviceOptions& options, Services services, Recorder::Sink sink)
    : recorder_(queue_, std::move(sink)),
      preferences_(services.preferences, recorder_),
      darwin_(services.darwin, recorder_),
      distributed_(services.distributed, recorder_),
      device_(options),
      platform_{preferences_,   darwin_,          distributed_,          notifications_, queue_,      device_,
                services.files, services.bundles, services.applications, registry_,      navigation_, shared_} {
  registry_.setPlatform(platform_);
  pages::registerPages(registry_);
  notifications_.setTap([this](const auto& notification) { recorder_.postedInProcess(notification); });
  navigation_.setObserver(&recorder_);
}

HeadlessHost::~HeadlessHost() {
  // What the pages still do when they go is nobody's business any more.
  navigation_.setObserver(nullptr);
}

platform::PSListController* HeadlessHost::topList() const {
  return dynamic_cast<platform::PSListController*>(navigation_.topViewController().get());
}

platform::ViewController* HeadlessHost::open(std::string_view className) {
  auto controller = registry_.makeViewController(className);
  if (!controller) return nullptr;
  navigation_.pushViewController(controller);
  return controller.get();
}

}  // namespace quellar::host::headless

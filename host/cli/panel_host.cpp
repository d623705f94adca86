// SPDX-License-Identifier: MIT
#include "host/cli/panel_host.h"

#include "host/cli/command_line.h"
#include "pages/registry.h"

namespace quellar::host::cli {

namespace {

template <typename Port>
Port& chosen(PanelHost::Detail detail, Port& full, Port& bare) {
  return detail == PanelHost::Detail::Full ? full : bare;
}

}  // namespace

PanelHost::PanelHost(linux::Services& services, Detail detail)
    : bareResources_(services.bundles),
      platform_{services.preferences,
                services.darwin,
                services.distributed,
                notifications_,
                loop_,
                device_,
                chosen<platform::Files>(detail, services.bundles, bareResources_),
                chosen<platform::Bundles>(detail, services.bundles, bareResources_),
                services.applications,
                registry_,
                navigation_,
                shared_} {
  registry_.setPlatform(platform_);
  pages::registerPages(registry_);
}

const frame::PageRegistry::Entry& PanelHost::entryNamed(std::string_view classOrName) const {
  if (const auto* entry = registry_.find(classOrName)) return *entry;
  std::string names;
  for (const auto& entry : registry_.entries()) names += (names.empty() ? "\"" : ", \"") + entry.name + "\"";
  throw UsageError("no page \"" + std::string(classOrName) + "\"; the pages are " + names);
}

std::shared_ptr<platform::PSListController> PanelHost::makePage(const frame::PageRegistry::Entry& entry) {
  return std::dynamic_pointer_cast<platform::PSListController>(registry_.makeViewController(entry));
}

}  // namespace quellar::host::cli

// SPDX-License-Identifier: MIT
#include "panel_on_file.h"

#include <chrono>
#include <cstdlib>
#include <stdexcept>

#include "frame/names.h"

namespace quellar::benches {

namespace {

constexpr const char* kPage = "KVQuellarStatusBarListController";
constexpr const char* kBusVariable = "DBUS_SESSION_BUS_ADDRESS";

/// The services of a device root, on a bus of an address.
std::unique_ptr<host::linux::Services> makeServices(const std::filesystem::path& deviceRoot,
                                                    const std::string& busAddress) {
  // They take the bus of the environment.
  ::setenv(kBusVariable, busAddress.c_str(), 1);
  auto services = std::make_unique<host::linux::Services>(
      host::linux::ServiceOptions{.deviceRoot = deviceRoot.string(), .language = "en"});
  ::unsetenv(kBusVariable);
  if (!busAddress.empty() && !services->bus.waitUntilConnected(std::chrono::seconds(10))) {
    throw std::runtime_error("the message bus does not answer");
  }
  return services;
}

/// What a page stores once all of its switches were used.
platform::Dictionary settingsOf(platform::PSListController& page) {
  platform::Dictionary settings;
  for (const auto& row : page.specifiers()) {
    if (row->cellType() == platform::PSCellType::PSSwitchCell) settings[row->stringForKey("key")] = false;
  }
  return settings;
}

}  // namespace

PanelOnFile::PanelOnFile(const Place& place, int pagesStored, const std::string& busAddress)
    : folder_(place.folder),
      services_(makeServices(folder_.path(), busAddress)),
      host_(std::make_unique<host::cli::PanelHost>(*services_, host::cli::PanelHost::Detail::Full)) {
  const platform::Dictionary settings = settingsOf(*makePage());
  for (int page = 0; page < pagesStored; ++page) {
    const std::string key = page == 0 ? "StatusBar_Defaults" : "Page" + std::to_string(page) + "_Defaults";
    services_->preferences.setAppValue(key, settings, frame::kSettingsDomain);
  }
}

std::filesystem::path PanelOnFile::domainFile() const {
  return services_->deviceRoot.hostPath("/var/mobile/Library/Preferences/" + std::string(frame::kSettingsDomain) +
                                        ".plist");
}

std::shared_ptr<platform::PSListController> PanelOnFile::makePage() {
  return host_->makePage(host_->entryNamed(kPage));
}

void PanelOnFile::flip(platform::PSListController& page, platform::PSSpecifier& row) {
  const auto stored = row.getter()(row);
  page.userSetsValue(row, !(stored && stored->boolValue()));
}

}  // namespace quellar::benches

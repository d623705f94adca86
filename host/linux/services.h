// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/linux/applications.h"
#include "host/linux/bundles.h"
#include "host/linux/bus.h"
#include "host/linux/device_root.h"
#include "host/linux/file_preferences.h"

namespace quellar::host::linux {

/// The folders that hold files of the settings bundle besides the device root, as they lie beside the program: where it
/// is installed, and where it is built.
[[nodiscard]] std::vector<std::filesystem::path> bundleFolders();

/// Tells the system log what of a bundle could not be used; the user has no part in it.
void reportToSystemLog(const std::string& message);

struct ServiceOptions {
  /// The folder that stands for the device; nothing for the user's own.
  std::optional<std::string> deviceRoot = std::nullopt;
  /// A locale name; nothing for the languages of the environment.
  std::optional<std::string> language = std::nullopt;
  /// Is told of troubles of the store, those of flushing on another thread; may outlive nothing that it uses.
  FilePreferences::TroubleListener onTrouble = {};
  /// Without the session bus what is posted goes nowhere.
  bool useBus = true;
};

/// What the panel takes from this machine. Making it opens no file and no connection; each part does that when it is
/// first used.
struct Services {
  explicit Services(const ServiceOptions& options);

  const DeviceRoot deviceRoot;
  const std::vector<std::string> languages;
  BundleResources bundles;
  DesktopApplications applications;
  FilePreferences preferences;
  Bus bus;
  BusDarwinCenter darwin{bus};
  BusDistributedCenter distributed{bus};
};

}  // namespace quellar::host::linux

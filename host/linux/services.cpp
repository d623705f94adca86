// SPDX-License-Identifier: MIT
#include "host/linux/services.h"

#include <syslog.h>

#include <system_error>

namespace quellar::host::linux {

std::vector<std::filesystem::path> bundleFolders() {
  std::error_code ignored;
  const std::filesystem::path folder = std::filesystem::read_symlink("/proc/self/exe", ignored).parent_path();
  if (folder.empty()) return {};
  return {folder.parent_path() / "share/quellar/Quellar.bundle", folder.parent_path() / "Quellar.bundle"};
}

void reportToSystemLog(const std::string& message) {
  ::syslog(LOG_USER | LOG_WARNING, "%s", message.c_str());
}

Services::Services(const ServiceOptions& options)
    : deviceRoot(DeviceRoot::chooseFolder(options.deviceRoot), bundleFolders()),
      languages(userLanguages(options.language)),
      bundles(deviceRoot, languages, reportToSystemLog),
      applications(dataFolders(), languages),
      preferences(deviceRoot, options.onTrouble),
      bus(options.useBus ? sessionBusAddress() : std::string()) {}

}  // namespace quellar::host::linux

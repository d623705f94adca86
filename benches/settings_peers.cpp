// SPDX-License-Identifier: MIT
#include "settings_peers.h"

#include <unistd.h>

#include <exception>
#include <filesystem>

namespace quellar::benches {

namespace {

constexpr const char* kSchema = R"(<schemalist>
  <schema id="com.vantorick.quellar.bench" path="/com/vantorick/quellar/bench/">
    <key name="flag" type="b"><default>false</default></key>
  </schema>
</schemalist>
)";

}  // namespace

PeerHome::PeerHome(const Place& place, Service service) : folder_(place.folder) {
  const std::string root = folder_.path().string();
  for (const char* name : {"config", "runtime", "cache", "home", "schemas", "device"}) {
    std::filesystem::create_directory(folder_.path() / name);
    std::filesystem::permissions(folder_.path() / name, std::filesystem::perms::owner_all);
  }
  folder_.write("schemas/bench.gschema.xml", kSchema);
  static_cast<void>(timeOf({"glib-compile-schemas", root + "/schemas"}));
  variables_ = {"DBUS_SESSION_BUS_ADDRESS=" + bus_.address(),
                "XDG_CONFIG_HOME=" + root + "/config",
                "XDG_RUNTIME_DIR=" + root + "/runtime",
                "XDG_CACHE_HOME=" + root + "/cache",
                "HOME=" + root + "/home",
                "GSETTINGS_SCHEMA_DIR=" + root + "/schemas",
                "GSETTINGS_BACKEND=dconf",
                "QUELLAR_DEVICE_ROOT=" + root + "/device"};
  if (service == Service::None) return;
  dconf_ = std::make_unique<Program>(std::vector<std::string>{"/usr/libexec/dconf-service"}, variables_);
  // It serves once it has its name; the first write waits for that.
  for (int tries = 0;; ++tries) {
    try {
      static_cast<void>(timeOf({"dconf", "write", "/com/vantorick/quellar/bench/flag", "false"}, variables_));
      break;
    } catch (const std::exception&) {
      if (tries == 20) throw;
      ::usleep(100000);
    }
  }
}

const std::vector<std::string>& settingsPackages() {
  static const std::vector<std::string> packages = {"libglib2.0-0", "dconf-service", "libqt6core6", "libkf5configcore5",
                                                    "libexpat1"};
  return packages;
}

}  // namespace quellar::benches

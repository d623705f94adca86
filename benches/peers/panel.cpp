// SPDX-License-Identifier: MIT

// A switch of the panel: the write handler of its page, the real store and the real bus; and the process that it
// notifies, which reads the value again through a store of its own.
//
// usage: quellar-bench-panel write|read DEVICE_ROOT KEY POSTS
//        KEY is a switch of the status bar page, whose write makes so many posts

#include <poll.h>

#include <chrono>
#include <cstdio>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "frame/names.h"
#include "host/cli/panel_host.h"
#include "host/linux/services.h"
#include "peer.h"

namespace {

using namespace quellar;

constexpr const char* kPage = "KVQuellarStatusBarListController";

bool storedValue(host::linux::Services& services, const std::string& key) {
  const auto page = services.preferences.copyAppValue("StatusBar_Defaults", frame::kSettingsDomain);
  const auto* settings = page ? page->as<platform::Dictionary>() : nullptr;
  const platform::Value* value = settings ? platform::find(*settings, key) : nullptr;
  return value && value->boolValue();
}

int read(host::linux::Services& services, const std::string& key, int posts) {
  int received = 0;
  services.bus.listen([&](const host::linux::BusNotification&) {
    if (++received % posts == 0) benches::tellRead(storedValue(services, key));
  });
  if (!services.bus.waitUntilConnected(std::chrono::seconds(10))) return 1;
  benches::printLine("ready");
  while (services.bus.state() == host::linux::Bus::State::Connected) {
    pollfd polled = {.fd = services.bus.descriptor(), .events = POLLIN, .revents = 0};
    ::poll(&polled, 1, -1);
    services.bus.process();
  }
  return 0;
}

int write(host::linux::Services& services, const std::string& key) {
  if (!services.bus.waitUntilConnected(std::chrono::seconds(10))) return 1;
  host::cli::PanelHost host(services, host::cli::PanelHost::Detail::Full);
  const auto page = host.makePage(host.entryNamed(kPage));
  const auto row = page->specifierForID(key);
  if (!row) return 2;
  return benches::serveWrites([&](bool value) { page->userSetsValue(*row, value); },
                              [&] { services.preferences.appSynchronize(frame::kSettingsDomain); });
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) return 2;
  try {
    host::linux::Services services({.deviceRoot = argv[2], .language = "en", .onTrouble = {}});
    return std::string_view(argv[1]) == "read" ? read(services, argv[3], std::stoi(argv[4])) : write(services, argv[3]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "quellar-bench-panel: %s\n", error.what());
    return 1;
  }
}

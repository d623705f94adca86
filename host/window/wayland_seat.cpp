// SPDX-License-Identifier: MIT
#include "host/window/wayland_seat.h"

#include <wayland-client.h>

#include <QByteArray>
#include <memory>
#include <string_view>

namespace quellar::host::window {

namespace {

void noteSeat(void* found, wl_registry* /*registry*/, std::uint32_t /*name*/, const char* interface,
              std::uint32_t /*version*/) {
  if (std::string_view(interface) == wl_seat_interface.name) *static_cast<bool*>(found) = true;
}
void noteRemoval(void* /*found*/, wl_registry* /*registry*/, std::uint32_t /*name*/) {}

constexpr wl_registry_listener kSeatListener{.global = noteSeat, .global_remove = noteRemoval};

// Whether the compositor that the toolkit will connect to says that it has no seat.
bool lacksSeat() {
  const std::unique_ptr<wl_display, decltype(&wl_display_disconnect)> display(wl_display_connect(nullptr),
                                                                              wl_display_disconnect);
  if (!display) return false;
  const std::unique_ptr<wl_registry, decltype(&wl_registry_destroy)> registry(wl_display_get_registry(display.get()),
                                                                              wl_registry_destroy);
  bool found = false;
  wl_registry_add_listener(registry.get(), &kSeatListener, &found);
  return wl_display_roundtrip(display.get()) >= 0 && !found;
}

}  // namespace

void chooseInputMethod() {
  const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
  const bool mayUseWayland =
      platform.isEmpty() ? qEnvironmentVariableIsSet("WAYLAND_DISPLAY") || qgetenv("XDG_SESSION_TYPE") == "wayland"
                         : platform.startsWith("wayland");
  if (!mayUseWayland || !qEnvironmentVariableIsEmpty("QT_IM_MODULE")) return;
  // A connection that was handed to this process can be used once.
  if (qEnvironmentVariableIsSet("WAYLAND_SOCKET")) return;
  if (lacksSeat()) qputenv("QT_IM_MODULE", "compose");
}

}  // namespace quellar::host::window

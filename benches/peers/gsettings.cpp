// SPDX-License-Identifier: MIT

// A boolean in GSettings, which dconf keeps.
//
// usage: quellar-bench-gsettings write|write-sync|read

#include <gio/gio.h>

#include <string_view>

#include "peer.h"

namespace {

constexpr const char* kSchema = "com.vantorick.quellar.bench";
constexpr const char* kKey = "flag";

void tellChanged(GSettings* settings, const char* key, void* /*data*/) {
  quellar::benches::tellRead(g_settings_get_boolean(settings, key) != FALSE);
}

}  // namespace

int main(int argc, char** argv) {
  using quellar::benches::printLine;
  if (argc != 2) return 2;
  const std::string_view role = argv[1];
  GSettings* settings = g_settings_new(kSchema);
  if (role == "read") {
    g_signal_connect(settings, "changed::flag", G_CALLBACK(tellChanged), nullptr);
    // Only what was read once is watched.
    g_settings_get_boolean(settings, kKey);
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    // Until the bus has answered the subscription a change would be missed.
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
    g_usleep(200000);
    printLine("ready");
    g_main_loop_run(loop);
    return 0;
  }
  const bool waits = role == "write-sync";
  const auto write = [&](bool value) {
    g_settings_set_boolean(settings, kKey, value ? TRUE : FALSE);
    if (waits) g_settings_sync();
  };
  return quellar::benches::serveWrites(write, [] { g_settings_sync(); });
}

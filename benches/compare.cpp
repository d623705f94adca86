// SPDX-License-Identifier: MIT
#include <array>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string_view>

#include "comparison.h"

int main(int argc, char** argv) {
  using namespace quellar::benches;
  // Nothing here reaches the user's own bus or display; what needs one starts it.
  for (const char* variable : {"DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR", "DISPLAY", "WAYLAND_DISPLAY"}) {
    ::unsetenv(variable);
  }
  ::setenv("LC_ALL", "C.UTF-8", 1);
  try {
    const std::string_view part = argc > 1 ? argv[1] : "";
    if (part == "notified" && argc == 2) {
      compareNotified();
    } else if (part == "commands" && argc == 2) {
      compareCommands();
    } else if (part == "windows" && argc == 2) {
      compareWindows();
    } else if (part == "growth" && argc == 3) {
      measureGrowth(argv[2]);
    } else {
      std::fputs("usage: quellar-compare notified | commands | windows | growth FOLDER_FOR_PICTURES\n", stderr);
      return 2;
    }
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "quellar-compare: %s\n", error.what());
    return 1;
  }
}

// SPDX-License-Identifier: MIT

// The other process: prints "ready" once it listens, then for every notification on the bus the time at which it had
// it, in nanoseconds of the system's monotonic clock.
//
// usage: quellar-bench-listener BUS_ADDRESS

#include <sdbus-c++/sdbus-c++.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

namespace {

void printLine(const std::string& text) {
  const std::string line = text + "\n";
  // Nobody is left to listen for where the line can't be written.
  if (::write(STDOUT_FILENO, line.data(), line.size()) < 0) std::_Exit(1);
}

void tellWhenReceived(sdbus::Message& message) {
  std::string name;
  message >> name;
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  printLine(std::to_string(std::chrono::nanoseconds(now).count()));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: quellar-bench-listener BUS_ADDRESS\n", stderr);
    return 2;
  }
  try {
    const auto connection = sdbus::createSessionBusConnectionWithAddress(argv[1]);
    const auto match = connection->addMatch(
        "type='signal',path='/com/vantorick/Notifications',interface='com.vantorick.Notifications1'", tellWhenReceived);
    printLine("ready");
    connection->enterEventLoop();
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "quellar-bench-listener: %s\n", error.what());
    return 1;
  }
}

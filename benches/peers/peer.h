// SPDX-License-Identifier: MIT
#pragma once

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <string_view>

// How the programs of the comparison talk to the benchmark. Both ends of a notification are processes of their own: one
// writes a boolean when it is told to, the other tells when it has the notification and has read the boolean again.
//
//   to a writer, on its standard input:   '0', '1'   write false, write true
//                                         't'        print when the last write was called
//                                         'f'        flush what was written, then print how long that took
//   from either, on its standard output:  "ready"    once it may be used
//                                         a time     in nanoseconds, of a reader followed by the boolean that it read
//
// A writer prints nothing while the other process is at work, since on one processor that would be counted too.

namespace quellar::benches {

inline std::string nanoseconds(std::chrono::nanoseconds time) {
  return std::to_string(time.count());
}

/// The time of the system's monotonic clock, which all processes share.
inline std::chrono::nanoseconds now() {
  return std::chrono::steady_clock::now().time_since_epoch();
}

inline void printLine(const std::string& text) {
  const std::string line = text + "\n";
  // Nobody is left to tell where the line can't be written.
  if (::write(STDOUT_FILENO, line.data(), line.size()) < 0) std::_Exit(1);
}

inline void tellRead(bool value) {
  printLine(nanoseconds(now()) + (value ? " 1" : " 0"));
}

/// Serves a writer's standard input until it ends. `write` takes the boolean; `flush` nothing.
template <typename Write, typename Flush>
int serveWrites(Write write, Flush flush) {
  printLine("ready");
  std::chrono::nanoseconds called{0};
  for (char command = 0; ::read(STDIN_FILENO, &command, 1) == 1;) {
    const std::chrono::nanoseconds start = now();
    switch (command) {
      case '0':
      case '1':
        called = start;
        write(command == '1');
        break;
      case 't':
        printLine(nanoseconds(called));
        break;
      case 'f':
        flush();
        printLine(nanoseconds(now() - start));
        break;
      default:
        return 2;
    }
  }
  return 0;
}

}  // namespace quellar::benches

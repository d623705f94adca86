// SPDX-License-Identifier: MIT
#include "host/linux/process_start.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "host/linux/posix_call.h"

namespace quellar::host::linux {

void prepareProcess() {
  std::signal(SIGXFSZ, SIG_IGN);
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    if (::fcntl(descriptor, F_GETFD) >= 0 || errno != EBADF) continue;
    // The lowest number that is free is this one. Opened for reading, it keeps the error of a write.
    static_cast<void>(retried([] { return ::open("/dev/null", O_RDONLY); }));
  }
}

}  // namespace quellar::host::linux

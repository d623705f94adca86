// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "host/linux/file_descriptor.h"
#include "support/temporary_folder.h"

namespace quellar::tests {

/// A program that runs beside the test, and is killed at the end of it at the latest.
class Process {
 public:
  /// Takes a program with its arguments, and the file that its standard error goes to.
  explicit Process(const std::vector<std::string>& command, const std::string& errors = "/dev/null");
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process();

  /// The next line of its standard output without the line feed; throws where none comes within ten seconds.
  std::string readLine();
  [[nodiscard]] pid_t id() const { return process_; }
  /// Sends a signal.
  void signal(int number) const;
  /// Kills it and waits until it is gone.
  void kill();

 private:
  pid_t process_ = -1;
  host::linux::FileDescriptor output_;
  std::string buffer_;
};

/// A message bus of the test's own, at a socket in a temporary folder.
class PrivateBus {
 public:
  PrivateBus();

  [[nodiscard]] const std::string& address() const { return address_; }
  [[nodiscard]] Process& daemon() { return *daemon_; }
  /// Ends the daemon and starts another at the same address.
  void restart();

 private:
  TemporaryFolder folder_;
  std::unique_ptr<Process> daemon_;
  std::string address_;
};

}  // namespace quellar::tests

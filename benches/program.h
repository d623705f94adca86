// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

#include "host/linux/file_descriptor.h"

namespace quellar::benches {

/// A program that is measured or that helps to, with pipes to its standard input and from one of its outputs. It is
/// killed at the end.
class Program {
 public:
  enum class Output { Standard, Errors };

  /// Takes the program with its arguments, and variables ("NAME=value") that are added to this process's environment.
  explicit Program(const std::vector<std::string>& command, const std::vector<std::string>& variables = {},
                   Output output = Output::Standard);
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;
  ~Program();

  [[nodiscard]] pid_t process() const { return process_; }
  /// Writes one character to its standard input.
  void tell(char command);
  /// Its next line of output without the line feed; throws where none comes within twenty seconds.
  std::string readLine();
  /// Waits until its output contains a text; throws as `readLine` does.
  void waitForOutput(std::string_view text);
  /// All output until it ends.
  std::string readAll();
  /// Waits until it ends; throws where it did not end with 0.
  void waitForSuccess();

 private:
  /// Adds what it has written meanwhile to the buffer; false at the end of it.
  bool receive();

  pid_t process_ = -1;
  host::linux::FileDescriptor input_;
  host::linux::FileDescriptor output_;
  std::string name_;
  std::string buffer_;
};

/// The processor time that all threads of a process have had so far, by /proc/PID/task/*/schedstat. Throws where the
/// system does not tell it.
std::chrono::nanoseconds processorTime(pid_t process);

/// Runs a program to its end, its outputs thrown away; returns how long it took from its start to its end. Throws where
/// it did not end with 0.
std::chrono::nanoseconds timeOf(const std::vector<std::string>& command,
                                const std::vector<std::string>& variables = {});

}  // namespace quellar::benches

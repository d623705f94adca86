// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/linux/file_descriptor.h"
#include "support/temporary_folder.h"

namespace quellar::tests {

/// What a program left when it ended.
struct Ended {
  int code = -1;
  std::string output;
  std::string errors;
  bool operator==(const Ended&) const = default;
};
void PrintTo(const Ended& ended, std::ostream* stream);

/// A run of the command-line program.
class Running {
 public:
  /// Takes its arguments and its whole environment; standard output goes to a file where one is named.
  Running(const std::vector<std::string>& arguments, const std::map<std::string, std::string>& environment,
          const std::string& outputFile = {}, const std::string& program = QUELLAR_PROGRAM);
  ~Running();
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;

  [[nodiscard]] pid_t process() const { return process_; }
  /// Writes to its standard input.
  void write(std::string_view text);
  void closeInput() { input_ = host::linux::FileDescriptor(); }
  /// Whether a line of its standard output has come, or comes in time.
  bool hasLine(std::chrono::milliseconds limit);
  /// The next line of its standard output; throws where none comes within twenty seconds.
  std::string readLine();
  /// Whether it has closed its standard output and its standard errors, or does so in time.
  bool hasEnded(std::chrono::milliseconds limit);
  void signal(int number) const;
  /// Closes its standard input, waits for its end and returns what it printed since the last line that was read.
  Ended wait();

 private:
  bool readSome(std::chrono::milliseconds limit);

  pid_t process_ = -1;
  host::linux::FileDescriptor input_;
  host::linux::FileDescriptor output_;
  host::linux::FileDescriptor errors_;
  std::string outputText_;
  std::string errorText_;
};

/// A device root of its own, a user without a bus unless one is given, and the program that works on it.
class Device {
 public:
  Device();

  [[nodiscard]] std::filesystem::path root() const { return folder_.path() / "device"; }
  /// The file of the settings domain.
  [[nodiscard]] std::filesystem::path store() const;
  /// Writes a property list into the settings domain's file: what stands between <dict> and </dict>.
  void writeStore(const std::string& entries) const;
  /// The environment of the program.
  std::map<std::string, std::string> environment;

  /// Runs the program to its end.
  [[nodiscard]] Ended run(std::vector<std::string> arguments, std::string_view input = {}) const;
  /// Starts it.
  [[nodiscard]] std::unique_ptr<Running> start(std::vector<std::string> arguments) const;
  /// Runs, or starts, a line of the shell in which "$0" is the program.
  [[nodiscard]] Ended shell(const std::string& line) const { return startShell(line)->wait(); }
  [[nodiscard]] std::unique_ptr<Running> startShell(const std::string& line) const;

  [[nodiscard]] const TemporaryFolder& folder() const { return folder_; }

 private:
  TemporaryFolder folder_;
};

/// The contents of a file.
[[nodiscard]] std::string contents(const std::filesystem::path& file);
/// The names in a folder, sorted.
[[nodiscard]] std::vector<std::string> namesIn(const std::filesystem::path& folder);

inline Ended succeeded(const std::string& output) {
  return {0, output, ""};
}
/// Ended as a wrong call: one line.
inline Ended refused(const std::string& line) {
  return {2, "", "quellar: " + line + "\n"};
}

}  // namespace quellar::tests

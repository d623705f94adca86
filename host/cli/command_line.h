// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include "host/headless/headless_device.h"

namespace quellar::host::cli {

/// A call that can't be carried out because it is wrong. what() says what was wrong and what would be right.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A text that was asked for instead of a command: help or version.
struct PrintText {
  std::string text;
};
struct PagesCommand {
  bool json = false;
};
struct RowsCommand {
  std::string page;
  bool json = false;
};
struct GetCommand {
  std::string page;
  std::string key;
};
struct SetCommand {
  std::string page;
  std::string key;
  std::string value;
};
/// A shell command that runs when a notification of a name arrives.
struct Hook {
  std::string name;
  std::string command;
};
struct WatchCommand {
  bool json = false;
  std::vector<Hook> hooks;
};
struct SchemaCommand {
  enum class Form { Text, Json, Markdown };
  Form form = Form::Text;
};
struct SessionCommand {
  headless::DeviceOptions device;
  std::optional<std::string> language;
  /// Posts also go to the session bus.
  bool bus = false;
};

struct CommandLine {
  std::optional<std::string> deviceRoot;
  std::variant<PrintText, PagesCommand, RowsCommand, GetCommand, SetCommand, WatchCommand, SchemaCommand,
               SessionCommand>
      command;
};

/// Reads the arguments of the program, without its own name. Throws a UsageError.
[[nodiscard]] CommandLine parseCommandLine(std::vector<std::string> arguments);

}  // namespace quellar::host::cli

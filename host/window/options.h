// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <variant>

#include "host/window/window_platform.h"

namespace quellar::host::window {

/// What the command line asks for.
struct Options {
  std::optional<std::string> deviceRoot;
  /// Name or class of a page, and a row's key on it.
  std::optional<std::string> page;
  std::optional<std::string> key;
  std::optional<Idiom> idiom;
  std::optional<std::string> language;
  /// Folder for pictures of all pages.
  std::optional<std::string> pictures;
  std::optional<double> scale;
  int textSize = 100;
  bool reducedMotion = false;
};

/// Takes the program's arguments. Returns the options, or, where the program is to end at once, its exit code: 0 after
/// help and version, 2 after wrong options, which are told on standard error in one line.
[[nodiscard]] std::variant<Options, int> parseOptions(int argc, char** argv);

}  // namespace quellar::host::window

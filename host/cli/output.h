// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/headless/json.h"

namespace quellar::host::cli {

/// What ends a command with exit code 1: the text names the file or service and says why.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Writes text to standard output. It is written at the end of the program or with `flush`.
void print(std::string_view text);
/// Writes out what was printed. Throws a Failure where that fails.
void flush();
/// Prints a line and writes it out.
void printLine(std::string_view line);

/// Prints a JSON array, one element a line.
void printArray(const headless::Json& array);

/// Rows of text in columns: each column is as wide as its widest cell.
class Table {
 public:
  /// Takes any texts; each is printable.
  void add(std::vector<std::string> cells);
  /// The lines, each indented by so many blanks.
  [[nodiscard]] std::string text(std::size_t indent = 0) const;

 private:
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace quellar::host::cli

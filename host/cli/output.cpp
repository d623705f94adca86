// SPDX-License-Identifier: MIT
#include "host/cli/output.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

#include "platform/printable.h"

namespace quellar::host::cli {

namespace {

/// Characters of UTF-8 text: all bytes but continuation bytes.
std::size_t width(std::string_view text) {
  return static_cast<std::size_t>(
      std::ranges::count_if(text, [](char each) { return (static_cast<unsigned char>(each) & 0xC0U) != 0x80U; }));
}

}  // namespace

void print(std::string_view text) {
  // A failure is kept by the stream and told by `flush`.
  std::fwrite(text.data(), 1, text.size(), stdout);
}

void flush() {
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return;
  throw Failure("standard output: " + std::generic_category().message(errno));
}

void printLine(std::string_view line) {
  print(line);
  print("\n");
  flush();
}

void printArray(const headless::Json& array) {
  print("[");
  const char* separator = "\n";
  for (const auto& element : array) {
    print(separator + headless::dump(element));
    separator = ",\n";
  }
  print(array.empty() ? "]\n" : "\n]\n");
}

void Table::add(std::vector<std::string> cells) {
  for (std::string& cell : cells) cell = platform::printable(cell);
  rows_.push_back(std::move(cells));
}

std::string Table::text(std::size_t indent) const {
  std::vector<std::size_t> widths;
  for (const auto& row : rows_) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t column = 0; column < row.size(); ++column) {
      widths[column] = std::max(widths[column], width(row[column]));
    }
  }
  std::string text;
  for (const auto& row : rows_) {
    std::string line(indent, ' ');
    for (std::size_t column = 0; column < row.size(); ++column) {
      line += row[column] + std::string(widths[column] - width(row[column]) + 2, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + "\n";
  }
  return text;
}

}  // namespace quellar::host::cli

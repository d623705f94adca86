// SPDX-License-Identifier: MIT
#include "host/window/row_matching.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace quellar::host::window {

namespace {

constexpr std::size_t kLargestTable = 1'000'000;

}  // namespace

Matching matchKeys(const std::vector<std::string_view>& before, const std::vector<std::string_view>& after) {
  Matching matching{std::vector<bool>(before.size(), false), std::vector<bool>(after.size(), false)};
  const auto match = [&](std::size_t old, std::size_t fresh) {
    matching.before[old] = true;
    matching.after[fresh] = true;
  };

  std::size_t start = 0;
  const std::size_t shorter = std::min(before.size(), after.size());
  while (start < shorter && before[start] == after[start]) {
    match(start, start);
    ++start;
  }
  std::size_t tail = 0;
  while (tail < shorter - start && before[before.size() - 1 - tail] == after[after.size() - 1 - tail]) {
    match(before.size() - 1 - tail, after.size() - 1 - tail);
    ++tail;
  }

  const std::size_t height = before.size() - tail - start;
  const std::size_t width = after.size() - tail - start;
  if (height == 0 || width == 0 || height > kLargestTable / width) return matching;

  // Length of the longest common subsequence of what follows each pair of places.
  std::vector<std::uint32_t> length((height + 1) * (width + 1), 0);
  const auto at = [&](std::size_t row, std::size_t column) -> std::uint32_t& {
    return length[row * (width + 1) + column];
  };
  for (std::size_t row = height; row-- > 0;) {
    for (std::size_t column = width; column-- > 0;) {
      const bool same = before[start + row] == after[start + column];
      at(row, column) = same ? at(row + 1, column + 1) + 1 : std::max(at(row + 1, column), at(row, column + 1));
    }
  }
  for (std::size_t row = 0, column = 0; row < height && column < width;) {
    if (before[start + row] == after[start + column]) {
      match(start + row++, start + column++);
    } else if (at(row + 1, column) >= at(row, column + 1)) {
      ++row;
    } else {
      ++column;
    }
  }
  return matching;
}

}  // namespace quellar::host::window

// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quellar::host::window {

/// Which places of two lists stand for each other: the longest run of keys, in order, that both have.
struct Matching {
  /// For each place of the old list, and of the new one, whether it has a counterpart.
  std::vector<bool> before;
  std::vector<bool> after;
};

/// Takes the keys of a list before and after a change. Keys may stand more than once. Beyond about a thousand places
/// between the common start and the common end nothing is matched there, so that the cost stays small.
[[nodiscard]] Matching matchKeys(const std::vector<std::string_view>& before,
                                 const std::vector<std::string_view>& after);

}  // namespace quellar::host::window

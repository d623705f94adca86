// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace quellar::tests {

/// Collects the toolkit's warnings from now on, instead of printing them.
void collectToolkitMessages();
/// The warnings since the last call, each with the file and line of the view that it came from.
std::vector<std::string> takeToolkitMessages();

}  // namespace quellar::tests

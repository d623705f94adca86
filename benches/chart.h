// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace quellar::benches {

/// Times, in nanoseconds, at sizes.
struct Curve {
  std::string name;
  std::vector<std::pair<double, double>> points;
};

/// Both axes grow by factors: what grows in step with its size rises one field for each field to the right.
struct Chart {
  std::string title;
  std::string sizes;
  std::vector<Curve> curves;
};

/// Draws charts side by side into a file (SVG). Throws where it can't be written.
void drawCharts(const std::vector<Chart>& charts, const std::filesystem::path& file);

}  // namespace quellar::benches

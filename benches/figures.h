// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <ostream>
#include <string>
#include <vector>

namespace quellar::benches {

/// A time in nanoseconds with its unit, three digits of it.
[[nodiscard]] std::string shownTime(double nanoseconds);
/// A number with two places.
[[nodiscard]] std::string shownRatio(double ratio);

/// Times of one operation, done many times.
class Sample {
 public:
  void add(std::chrono::nanoseconds time) { times_.push_back(static_cast<double>(time.count())); }

  [[nodiscard]] std::size_t size() const { return times_.size(); }
  /// The time, in nanoseconds, that a share of the operations did not exceed; needs one operation at least.
  [[nodiscard]] double quantile(double share) const;
  [[nodiscard]] double median() const { return quantile(0.5); }

 private:
  std::vector<double> times_;
};

/// Prints what the figures are taken on: machine, system, versions of what takes part, load. Names of packages add what
/// the package manager knows of their versions.
void describeMachine(std::ostream& out, const std::vector<std::string>& packages);

/// Prints a table in Markdown; the first row is its head, and all columns but the first stand to the right.
void printTable(std::ostream& out, const std::vector<std::vector<std::string>>& rows);

}  // namespace quellar::benches

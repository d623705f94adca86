// SPDX-License-Identifier: MIT
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

#include "suite.h"

namespace quellar::benches {

/// Prints what the figures were taken on, and when all are there a table of them: for each benchmark the median of its
/// repetitions, the lowest and the highest, and beneath it its floors with the ratio of the medians.
class Report final : public benchmark::BenchmarkReporter {
 public:
  /// The suite outlives the report.
  explicit Report(const Suite& suite) : suite_(suite) {}

  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

  /// Whether a benchmark ended with an error.
  [[nodiscard]] bool hasErrors() const { return !errors_.empty(); }

 private:
  /// Times in nanoseconds, by the name of the statistic.
  using Figures = std::map<std::string, double>;

  void printLine(const std::string& name, const Figures& figures, const std::string& ratio);

  const Suite& suite_;
  std::map<std::string, Figures> figures_;
  std::map<std::string, std::string> errors_;
};

}  // namespace quellar::benches

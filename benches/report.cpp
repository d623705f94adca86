// SPDX-License-Identifier: MIT
#include "report.h"

#include <iomanip>
#include <ostream>

#include "figures.h"

namespace quellar::benches {

bool Report::ReportContext(const Context& /*context*/) {
  describeMachine(GetOutputStream(), {});
  return true;
}

void Report::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    const std::string& name = run.run_name.function_name;
    if (run.error_occurred) errors_[name] = run.error_message;
    if (run.run_type == Run::RT_Aggregate && run.aggregate_unit == benchmark::kTime) {
      figures_[name][run.aggregate_name] =
          run.GetAdjustedRealTime() * 1e9 / benchmark::GetTimeUnitMultiplier(run.time_unit);
    }
  }
}

void Report::printLine(const std::string& name, const Figures& figures, const std::string& ratio) {
  std::ostream& out = GetOutputStream();
  out << "| " << std::left << std::setw(66) << name << std::right;
  for (const char* statistic : {"median", "lowest", "highest"}) {
    const auto found = figures.find(statistic);
    out << " | " << std::setw(8) << (found == figures.end() ? "" : shownTime(found->second));
  }
  out << " | " << std::setw(6) << ratio << " |\n";
}

void Report::Finalize() {
  std::ostream& out = GetOutputStream();
  out << "| " << std::left << std::setw(66) << "operation, and its floors" << std::right
      << " |   median |   lowest |  highest |  ratio |\n| " << std::string(66, '-')
      << " | -------: | -------: | -------: | -----: |\n";
  for (const Entry& entry : suite_.entries()) {
    const auto measured = figures_.find(entry.name);
    // What is nothing but a floor of others is printed with them.
    if (measured == figures_.end() || entry.floors.empty()) continue;
    printLine(entry.name, measured->second, "");
    for (const std::string& floor : entry.floors) {
      const auto found = figures_.find(floor);
      if (found == figures_.end()) continue;
      printLine("- " + floor, found->second, shownRatio(measured->second.at("median") / found->second.at("median")));
    }
  }
  out.flush();
  for (const auto& [name, message] : errors_) GetErrorStream() << "error: " << name << ": " << message << std::endl;
}

}  // namespace quellar::benches

// SPDX-License-Identifier: MIT
#include "report.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <string_view>

#include "bus/private_bus.h"

namespace quellar::benches {

namespace {

/// The value of a line "name<separator>value" of a system file; "unknown" where there is none.
std::string lineOf(const char* file, std::string_view name, char separator) {
  std::ifstream stream(file);
  std::string line;
  while (std::getline(stream, line)) {
    const std::size_t at = line.find(separator);
    if (!line.starts_with(name) || at == std::string::npos) continue;
    std::string value = line.substr(at + 1);
    std::erase(value, '"');
    return value.substr(std::min(value.find_first_not_of(" \t"), value.size()));
  }
  return "unknown";
}

std::string kernel() {
  utsname system = {};
  return ::uname(&system) == 0 ? std::string(system.sysname) + " " + system.release : "unknown kernel";
}

std::string messageBus() {
  try {
    return tests::Process({"dbus-daemon", "--version"}).readLine();
  } catch (const std::exception&) {
    return "no message bus daemon";
  }
}

std::string load() {
  double minute = 0;
  if (::getloadavg(&minute, 1) != 1) return "unknown";
  std::ostringstream text;
  text << std::fixed << std::setprecision(2) << minute;
  return text.str();
}

/// A time with its unit, four digits at most.
std::string shown(double nanoseconds) {
  struct Unit {
    double nanoseconds;
    const char* name;
  };
  constexpr std::array kUnits = {Unit{1e9, "s"}, Unit{1e6, "ms"}, Unit{1e3, "us"}, Unit{1, "ns"}};
  const auto* unit = std::find_if(kUnits.begin(), kUnits.end() - 1,
                                  [&](const Unit& candidate) { return nanoseconds >= candidate.nanoseconds; });
  const double count = nanoseconds / unit->nanoseconds;
  std::ostringstream text;
  text << std::fixed << std::setprecision(count < 10 ? 2 : count < 100 ? 1 : 0) << count << ' ' << unit->name;
  return text.str();
}

std::string shownRatio(double ratio) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(2) << ratio;
  return text.str();
}

}  // namespace

bool Report::ReportContext(const Context& /*context*/) {
  std::ostream& out = GetOutputStream();
  out << "machine:   " << ::sysconf(_SC_NPROCESSORS_ONLN) << " cores of " << lineOf("/proc/cpuinfo", "model name", ':')
      << ", load " << load() << "\n"
      << "system:    " << lineOf("/etc/os-release", "PRETTY_NAME", '=') << ", " << kernel() << ", " << messageBus()
      << "\n"
      << "build:     " QUELLAR_BUILD_TYPE ", g++ " __VERSION__ ", " QUELLAR_LIBRARIES "\n"
      << "files on:  ";
  const char* separator = "";
  for (const Place& place : places()) {
    out << separator << place.folder.string() << " (" << place.fileSystem << ")";
    separator = ", ";
  }
  out << "\n" << std::endl;
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
    out << " | " << std::setw(8) << (found == figures.end() ? "" : shown(found->second));
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

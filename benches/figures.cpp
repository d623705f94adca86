// SPDX-License-Identifier: MIT
#include "figures.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <string_view>

#include "program.h"
#include "suite.h"

namespace quellar::benches {

namespace {

std::string fixed(double number, int places) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(places) << number;
  return text.str();
}

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
    return Program({"dbus-daemon", "--version"}).readLine();
  } catch (const std::exception&) {
    return "no message bus daemon";
  }
}

std::string load() {
  double minute = 0;
  return ::getloadavg(&minute, 1) == 1 ? fixed(minute, 2) : "unknown";
}

/// "name version, name version": what is not installed, or not known to a package manager, is left out.
std::string versionsOf(const std::vector<std::string>& packages) {
  std::vector<std::string> command = {"dpkg-query", "-W", "-f", "${Package} ${Version}, "};
  command.insert(command.end(), packages.begin(), packages.end());
  try {
    const std::string versions = Program(command).readAll();
    return versions.substr(0, versions.find_last_not_of(", ") + 1);
  } catch (const std::exception&) {
    return {};
  }
}

}  // namespace

std::string shownTime(double nanoseconds) {
  struct Unit {
    double nanoseconds;
    const char* name;
  };
  constexpr std::array kUnits = {Unit{1e9, "s"}, Unit{1e6, "ms"}, Unit{1e3, "us"}, Unit{1, "ns"}};
  const auto* unit = std::find_if(kUnits.begin(), kUnits.end() - 1,
                                  [&](const Unit& candidate) { return nanoseconds >= candidate.nanoseconds; });
  const double count = nanoseconds / unit->nanoseconds;
  return fixed(count, count < 10 ? 2 : count < 100 ? 1 : 0) + " " + unit->name;
}

std::string shownRatio(double ratio) {
  return fixed(ratio, 2);
}

double Sample::quantile(double share) const {
  std::vector<double> sorted = times_;
  const auto place = static_cast<std::ptrdiff_t>(std::ceil(share * static_cast<double>(sorted.size()))) - 1;
  const auto at = sorted.begin() + std::clamp<std::ptrdiff_t>(place, 0, static_cast<std::ptrdiff_t>(sorted.size()) - 1);
  std::nth_element(sorted.begin(), at, sorted.end());
  return *at;
}

void describeMachine(std::ostream& out, const std::vector<std::string>& packages) {
  out << "machine:   " << ::sysconf(_SC_NPROCESSORS_ONLN) << " cores of " << lineOf("/proc/cpuinfo", "model name", ':')
      << ", load " << load() << "\n"
      << "system:    " << lineOf("/etc/os-release", "PRETTY_NAME", '=') << ", " << kernel() << ", " << messageBus()
      << "\n"
      << "build:     " QUELLAR_BUILD_TYPE ", g++ " __VERSION__ ", " QUELLAR_LIBRARIES "\n";
  if (const std::string versions = packages.empty() ? "" : versionsOf(packages); !versions.empty()) {
    out << "peers:     " << versions << "\n";
  }
  out << "files on:  ";
  const char* separator = "";
  for (const Place& place : places()) {
    out << separator << place.folder.string() << " (" << place.fileSystem << ")";
    separator = ", ";
  }
  out << "\n" << std::endl;
}

void printTable(std::ostream& out, const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths(rows.front().size(), 1);
  for (const auto& row : rows) {
    for (std::size_t column = 0; column < row.size(); ++column) {
      widths[column] = std::max(widths[column], row[column].size());
    }
  }
  for (std::size_t number = 0; number < rows.size(); ++number) {
    for (std::size_t column = 0; column < widths.size(); ++column) {
      const std::string cell = column < rows[number].size() ? rows[number][column] : "";
      const std::string gap(widths[column] - cell.size(), ' ');
      out << "| " << (column == 0 ? cell + gap : gap + cell) << ' ';
    }
    out << "|\n";
    if (number > 0) continue;
    for (std::size_t column = 0; column < widths.size(); ++column) {
      out << "| " << (column == 0 ? std::string(widths[column], '-') : std::string(widths[column] - 1, '-') + ":")
          << ' ';
    }
    out << "|\n";
  }
  out << std::endl;
}

}  // namespace quellar::benches

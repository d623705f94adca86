// SPDX-License-Identifier: MIT
#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace quellar::benches {

/// One benchmark, and those that tell how fast it could be at most.
struct Entry {
  std::string name;
  /// Names of other entries.
  std::vector<std::string> floors;
};

/// The benchmarks of this program, in the order of the report.
class Suite {
 public:
  /// The operation that is measured; returns how long it took. What it does before and after the part that it times is
  /// not counted.
  using Operation = std::function<std::chrono::nanoseconds()>;
  /// Makes what the operation needs, which lives as long as the operation that it returns. It is called for every
  /// repetition.
  using Setup = std::function<Operation()>;

  struct Effort {
    benchmark::TimeUnit unit = benchmark::kMicrosecond;
    int repetitions = 11;
    /// Operations a repetition; 0 for as many as fill a tenth of a second.
    int operations = 0;
  };

  /// Adds a benchmark. An exception from its setup or operation ends that benchmark and is reported.
  void add(Entry entry, Effort effort, Setup setup);

  [[nodiscard]] const std::vector<Entry>& entries() const { return entries_; }

 private:
  std::vector<Entry> entries_;
};

/// A moment, for how long something took.
class Stopwatch {
 public:
  using Clock = std::chrono::steady_clock;

  [[nodiscard]] std::chrono::nanoseconds elapsed() const { return Clock::now() - start_; }
  /// Until another moment, which may have been taken by another process: the clock is the system's.
  [[nodiscard]] std::chrono::nanoseconds until(Clock::time_point moment) const { return moment - start_; }

 private:
  Clock::time_point start_ = Clock::now();
};

/// A folder for temporary files, and the kind of its file system ("ext4").
struct Place {
  std::filesystem::path folder;
  std::string fileSystem;
};

/// The folder for temporary files, and one in memory where the machine has it and the first is not.
[[nodiscard]] std::vector<Place> places();

/// The folder that holds this program and those that it starts.
[[nodiscard]] std::filesystem::path programFolder();

// The parts of the suite, each in the file of its name.
void addPageRows(Suite& suite);
void addSwitchWrite(Suite& suite);
void addSwatch(Suite& suite);
void addBackdrops(Suite& suite);
void addDragFrames(Suite& suite);
void addListFrames(Suite& suite);

}  // namespace quellar::benches

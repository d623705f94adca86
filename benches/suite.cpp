// SPDX-License-Identifier: MIT
#include "suite.h"

#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <utility>

namespace quellar::benches {

namespace {

// From <linux/magic.h> of later kernels.
constexpr auto kXfs = 0x58465342;

std::string fileSystemOf(const std::filesystem::path& folder) {
  struct statfs status = {};
  if (::statfs(folder.c_str(), &status) != 0) return "an unknown file system";
  switch (status.f_type) {
    case EXT4_SUPER_MAGIC:
      return "ext4";
    case TMPFS_MAGIC:
      return "tmpfs";
    case BTRFS_SUPER_MAGIC:
      return "btrfs";
    case OVERLAYFS_SUPER_MAGIC:
      return "overlay";
    case kXfs:
      return "xfs";
    default:
      return "an unknown file system";
  }
}

double smallest(const std::vector<double>& times) {
  return *std::min_element(times.begin(), times.end());
}

double largest(const std::vector<double>& times) {
  return *std::max_element(times.begin(), times.end());
}

}  // namespace

void Suite::add(Entry entry, Effort effort, Setup setup) {
  auto* const registered =
      benchmark::RegisterBenchmark(entry.name.c_str(), [setup = std::move(setup)](benchmark::State& state) {
        try {
          const Operation operation = setup();
          for ([[maybe_unused]] const auto turn : state) {
            state.SetIterationTime(std::chrono::duration<double>(operation()).count());
          }
        } catch (const std::exception& error) {
          state.SkipWithError(error.what());
        }
      });
  registered->UseManualTime()->Unit(effort.unit)->Repetitions(effort.repetitions);
  registered->ComputeStatistics("lowest", smallest)->ComputeStatistics("highest", largest);
  if (effort.operations > 0) {
    registered->Iterations(effort.operations);
  } else {
    registered->MinTime(0.1);
  }
  entries_.push_back(std::move(entry));
}

std::vector<Place> places() {
  const std::filesystem::path usual = std::filesystem::temp_directory_path();
  std::vector<Place> found = {{usual, fileSystemOf(usual)}};
  const std::filesystem::path inMemory = "/dev/shm";
  if (fileSystemOf(usual) != "tmpfs" && fileSystemOf(inMemory) == "tmpfs" && ::access(inMemory.c_str(), W_OK) == 0) {
    found.push_back({inMemory, "tmpfs"});
  }
  return found;
}

std::filesystem::path programFolder() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

}  // namespace quellar::benches

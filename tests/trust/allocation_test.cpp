// SPDX-License-Identifier: MIT

// Allocations that fail, one at a time.
//
// The promise: whatever allocation of a command fails, the domain file keeps all entries; the command ends, and with 0
// just when its value is stored.

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <iostream>

#include "black_box.h"
#include "stranger.h"
#include "writing.h"

namespace quellar::tests {
namespace allocation_test {

using platform::Value;
namespace fs = std::filesystem;

void prepare(const Device& device) {
  fs::create_directories(device.store().parent_path());
  for (const auto& entry : fs::directory_iterator(device.store().parent_path())) fs::remove(entry);
  replaceAsStranger(device.store(), domainOfOthers());
}

TEST(Allocations, ThatFailLoseNoEntryAndAreToldWhereTheValueIsNotStored) {
  if (!fs::exists(QUELLAR_PROGRAM)) GTEST_SKIP() << "quellar is not built";
  Device device;
  preload(device.environment);
  // A library of others that leaks where it gets no memory does no harm to a program that ends.
  device.environment["ASAN_OPTIONS"] += ":detect_leaks=0";
  const std::vector<std::string> command = {"set", kProofPage, kProofSwitch, "on"};
  prepare(device);
  const fs::path countFile = device.folder().path() / "count";
  device.environment["QUELLAR_ALLOCATIONS"] = countFile.string();
  ASSERT_EQ(device.run(command), succeeded(""));
  ASSERT_EQ(storedSwitch(device), Value(true));
  const int allocations = std::stoi(contents(countFile));
  ASSERT_GT(allocations, 100);

  const int step = isLongForm() ? 1 : std::max(1, allocations / 40);
  int failures = 0;
  int refused = 0;
  int lost = 0;
  int wrongEnds = 0;
  std::string first;
  for (int number = 0; number < allocations; number += step) {
    prepare(device);
    device.environment["QUELLAR_FAILING_ALLOCATION"] = std::to_string(number);
    Ended ended;
    try {
      ended = device.run(command);
    } catch (const std::exception& error) {
      ended = {128 + SIGALRM, "", error.what()};
    }
    ++failures;
    std::string faults = faultsOfOthers(device);
    lost += faults.empty() ? 0 : 1;
    const bool isStored = storedSwitch(device) == Value(true);
    // A failure where no exception may pass ends a program by abort(); that is a clean end.
    const bool isTold = (ended.code > 0 && ended.code < 128 && !ended.errors.empty()) || ended.code == 128 + SIGABRT;
    const bool isSanitizers = ended.errors.find("Sanitizer") != std::string::npos;
    std::string wrong;
    if (ended.code == 0 && !isStored) wrong = "exit 0, and nothing is stored; ";
    if (ended.code != 0 && (!isTold || isSanitizers)) wrong = "it broke down; ";
    wrongEnds += wrong.empty() ? 0 : 1;
    refused += ended.code != 0 ? 1 : 0;
    faults += wrong;
    if (!faults.empty() && first.empty()) {
      first = "allocation " + std::to_string(number) + ": " + faults + "exit " + std::to_string(ended.code) + "\n" +
              ended.errors;
    }
  }
  EXPECT_EQ(lost, 0) << first;
  EXPECT_EQ(wrongEnds, 0) << first;
  EXPECT_GT(refused, 0) << "no allocation failed";
  std::cout << "quellar set: " << failures << " failures of " << allocations << " allocations, " << refused
            << " refused; " << lost << " lost entries, " << wrongEnds << " ended wrongly.\n";
}

}  // namespace allocation_test
}  // namespace quellar::tests

// SPDX-License-Identifier: MIT

// A short walk of the monkey with every test run, and a long one of 100,000 actions (QUELLAR_TRUST=long). Each prints
// its seed; QUELLAR_SEED repeats it.

#include "monkey.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "host/linux/bundles.h"

namespace quellar::tests::monkey_test {

bool isLong() {
  const char* form = std::getenv("QUELLAR_TRUST");
  return form != nullptr && std::string(form) == "long";
}

std::uint64_t seed() {
  const char* given = std::getenv("QUELLAR_SEED");
  // Each long run goes other ways. A test that may fail one day in a hundred helps nobody in the short one.
  return given ? std::stoull(given) : isLong() ? std::random_device()() : 1;
}

TEST(LongLife, HoldsWhateverTheUserDoes) {
  const std::uint64_t start = seed();
  const std::uint64_t actions = isLong() ? 100'000 : 3'000;
  std::printf("%llu actions of the seed QUELLAR_SEED=%llu\n", static_cast<unsigned long long>(actions),
              static_cast<unsigned long long>(start));
  std::fflush(stdout);
  Monkey monkey(start);
  const auto begin = std::chrono::steady_clock::now();
  while (monkey.actions() < actions) ASSERT_NO_THROW(monkey.act());
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
  std::printf("%llu writes and posts, in %.0f seconds; each page was shown:\n",
              static_cast<unsigned long long>(monkey.events()), took.count());
  for (const auto& [page, times] : monkey.pages()) {
    std::printf("  %s %llu\n", page.c_str(), static_cast<unsigned long long>(times));
  }
  for (const auto& [command, times] : monkey.commands()) {
    std::printf("  %s %llu\n", command.c_str(), static_cast<unsigned long long>(times));
  }
  // It has been everywhere: all pages, the lists of choices and the backdrop picker.
  EXPECT_EQ(monkey.pages().size(), 33U);
}

}  // namespace quellar::tests::monkey_test

// SPDX-License-Identifier: MIT

// A short walk of the monkey with every test run, and one of 100,000 actions (QUELLAR_TRUST=long). Each prints its
// seed; with QUELLAR_SEED it goes that way again.

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

TEST(LongLife, HoldsWhateverTheUserDoes) {
  const char* given = std::getenv("QUELLAR_SEED");
  // Each long run goes its own way. A test that fails one day in a hundred would help nobody in the short one.
  std::uint64_t seed = 2;
  if (given) {
    seed = std::stoull(given);
  } else if (isLong()) {
    seed = std::random_device()();
  }
  const std::uint64_t actions = isLong() ? 100'000 : 3'000;
  std::printf("%llu actions, QUELLAR_SEED=%llu\n", static_cast<unsigned long long>(actions),
              static_cast<unsigned long long>(seed));
  std::fflush(stdout);
  Monkey monkey(seed);
  const auto begin = std::chrono::steady_clock::now();
  while (monkey.actions() < actions) ASSERT_NO_THROW(monkey.act());
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
  std::printf("%llu writes and posts, in %.0f seconds\n", static_cast<unsigned long long>(monkey.events()),
              took.count());
  if (isLong()) {
    for (const auto& counts : {monkey.commands(), monkey.pages()}) {
      for (const auto& [what, times] : counts) {
        std::printf("  %8llu %s\n", static_cast<unsigned long long>(times), what.c_str());
      }
    }
  }
  // It has been on all pages, on lists of choices and in the backdrop picker.
  if (!given) {
    EXPECT_EQ(monkey.pages().size(), 33U);
  }
}

}  // namespace quellar::tests::monkey_test

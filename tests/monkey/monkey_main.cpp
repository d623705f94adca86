// SPDX-License-Identifier: MIT

// usage: quellar_monkey ACTIONS [SEED]
//
// The monkey without sanitizers, for the memory that the panel takes in a long life: once it has seen everything (after
// the first tenth), the memory in use stays within 2 MiB of what it was. Ends with 1 where it does not, or where a
// check of the monkey's fails.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <random>
#include <string>

#include "monkey.h"
#include "support/memory_in_use.h"

int main(int count, char** arguments) {
  constexpr std::int64_t kAllowed = std::int64_t{2} * 1024 * 1024;
  if (count < 2) {
    std::fputs("usage: quellar_monkey ACTIONS [SEED]\n", stderr);
    return 2;
  }
  try {
    const std::uint64_t actions = std::stoull(arguments[1]);
    const std::uint64_t seed = count > 2 ? std::stoull(arguments[2]) : std::random_device()();
    std::printf("%llu actions of the seed %llu\n", static_cast<unsigned long long>(actions),
                static_cast<unsigned long long>(seed));
    std::fflush(stdout);
    quellar::tests::Monkey monkey(seed);
    std::int64_t warm = 0;
    std::int64_t most = 0;
    while (monkey.actions() < actions) {
      monkey.act();
      if (monkey.actions() == actions / 10) warm = quellar::tests::memoryInUse();
      if (monkey.actions() > actions / 10 && monkey.actions() % 1000 == 0) {
        most = std::max(most, quellar::tests::memoryInUse());
      }
    }
    std::printf("%llu writes and posts; %lld KiB in use after a tenth, then %lld KiB at most\n",
                static_cast<unsigned long long>(monkey.events()), static_cast<long long>(warm / 1024),
                static_cast<long long>(most / 1024));
    if (most - warm <= kAllowed) return 0;
    std::fputs("the memory in use grows\n", stderr);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
  }
  return 1;
}

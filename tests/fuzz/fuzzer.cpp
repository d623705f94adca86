// SPDX-License-Identifier: MIT

// The program that libFuzzer drives; it is built once for each function of targets.h.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "targets.h"

/// What libFuzzer calls for each input.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  quellar::tests::fuzz::QUELLAR_FUZZED({reinterpret_cast<const char*>(bytes), size});
  return 0;
}

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* bytes, std::size_t size, std::size_t mostSize);

/// What libFuzzer calls to change an input. Its own ways let one grow by little; what is repeated as often as there is
/// room finds what takes the square of the time and what has no bound of its depth.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* bytes, std::size_t size, std::size_t mostSize,
                                               unsigned seed) {
  constexpr unsigned kOneIn = 32;
  constexpr std::size_t kLongestPart = 64;
  std::minstd_rand random(seed);
  if (size == 0 || mostSize <= size || random() % kOneIn != 0) return LLVMFuzzerMutate(bytes, size, mostSize);
  const std::size_t begin = random() % size;
  const std::size_t length = 1 + random() % std::min(kLongestPart, size - begin);
  const std::vector<std::uint8_t> part(bytes + begin, bytes + begin + length);
  const std::size_t times = 1 + random() % ((mostSize - size) / length + 1);
  const std::size_t added = std::min(times * length, mostSize - size);
  std::copy_backward(bytes + begin, bytes + size, bytes + size + added);
  for (std::size_t at = 0; at < added; ++at) bytes[begin + at] = part[at % length];
  return size + added;
}

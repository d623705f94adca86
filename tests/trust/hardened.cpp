// SPDX-License-Identifier: MIT

// A program with something for each of the hardening flags to take hold of.

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

int main(int argc, char** argv) {
  char name[64];  // NOLINT(modernize-avoid-c-arrays): what the stack protector looks for
  std::strcpy(name, argv[argc - 1]);
  // A size that is known when the program runs alone, which the highest level of checked functions has.
  const auto size = static_cast<std::size_t>(argc) * 16;
  char* const copy = static_cast<char*>(std::malloc(size));
  if (copy == nullptr) return 1;
  std::memcpy(copy, argv[0], std::strlen(argv[0]) + 1);
  // A place that may be none of the container.
  const std::vector<char> letters(copy, copy + size);
  std::free(copy);
  return std::puts(name) < 0 || letters[std::strlen(name)] == 0 ? 1 : 0;
}

// SPDX-License-Identifier: MIT

// A program with something for each of the hardening flags to take hold of.

#include <cstdio>
#include <cstring>

int main(int argc, char** argv) {
  char name[64];  // NOLINT(modernize-avoid-c-arrays): what the stack protector looks for
  std::strcpy(name, argv[argc - 1]);
  return std::puts(name) < 0 ? 1 : 0;
}

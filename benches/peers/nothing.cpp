// SPDX-License-Identifier: MIT

// The floor of every command: a program that does nothing.

int main() {
  return 0;
}

// SPDX-License-Identifier: MIT

// A program that writes a value again and again and says so, to be killed at any moment.
//
// usage: trust_writer DEVICE_ROOT KEY FIRST COUNT [--synchronize]

#include <cstdlib>
#include <iostream>
#include <span>
#include <string_view>

#include "writing.h"

int main(int argc, char** argv) {
  const std::span<char*> arguments(argv, static_cast<std::size_t>(argc));
  if (arguments.size() < 5) {
    std::cerr << "usage: trust_writer DEVICE_ROOT KEY FIRST COUNT [--synchronize]\n";
    return 2;
  }
  quellar::tests::WritingTask task;
  task.root = arguments[1];
  task.key = arguments[2];
  task.first = std::atoi(arguments[3]);
  task.count = std::atoi(arguments[4]);
  for (const std::string_view option : arguments.subspan(5)) {
    if (option == "--synchronize") task.synchronizes = true;
  }
  return quellar::tests::runWriting(task);
}

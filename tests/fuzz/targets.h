// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

// What is fuzzed: each function takes any bytes from outside, hands them to a reader, and checks what comes of it. It
// throws where something does not hold. The fuzzers of `./test --trust` feed them for minutes; corpus_test feeds them
// the corpus with every test run.

namespace quellar::tests::fuzz {

/// A property-list file. What was read writes, and reads back equal.
void propertyList(std::string_view bytes);
/// A string table. What was read, written plainly, reads back equal, in UTF-8 and in UTF-16.
void stringTable(std::string_view bytes);
/// A row file of the bundle, on a page whose rows are then all used.
void rowFile(std::string_view bytes);
/// Lines of the scripted session. A line that fails changes nothing, and the same line written anew does the same.
void session(std::string_view bytes);
/// A colour, the colour to fall back to (the second line), and a number that is typed for a slider.
void color(std::string_view bytes);
/// The size of a picture in pixels (a byte each, 0 for the bitmap's own), then the platform's wallpaper bitmap.
void wallpaper(std::string_view bytes);

/// Throws where the condition does not hold.
inline void demand(bool holds, const std::string& what) {
  if (!holds) throw std::logic_error("does not hold: " + what);
}

}  // namespace quellar::tests::fuzz

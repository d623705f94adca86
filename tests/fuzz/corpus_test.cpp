// SPDX-License-Identifier: MIT

// The corpora of the fuzzers, and with them every input that once broke something, with each test run.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <string>
#include <vector>

#include "targets.h"

namespace quellar::tests::corpus_test {

namespace fs = std::filesystem;

struct Fuzzed {
  const char* name;
  void (*feed)(std::string_view bytes);
};

void PrintTo(const Fuzzed& fuzzed, std::ostream* stream) {
  *stream << fuzzed.name;
}

class Corpus : public testing::TestWithParam<Fuzzed> {};

TEST_P(Corpus, HoldsNothingThatBreaksItsReader) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(fs::path(QUELLAR_CORPORA) / GetParam().name)) {
    files.push_back(entry.path());
  }
  std::ranges::sort(files);
  ASSERT_GE(files.size(), 5U);
  for (const fs::path& file : files) {
    SCOPED_TRACE(file.filename());
    std::ifstream stream(file, std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(stream), {});
    EXPECT_NO_THROW(GetParam().feed(bytes));
  }
}

INSTANTIATE_TEST_SUITE_P(Fuzz, Corpus,
                         testing::Values(Fuzzed{"property_list", fuzz::propertyList},
                                         Fuzzed{"string_table", fuzz::stringTable}, Fuzzed{"row_file", fuzz::rowFile},
                                         Fuzzed{"session", fuzz::session}, Fuzzed{"color", fuzz::color},
                                         Fuzzed{"wallpaper", fuzz::wallpaper}),
                         [](const auto& fuzzed) { return std::string(fuzzed.param.name); });

}  // namespace quellar::tests::corpus_test

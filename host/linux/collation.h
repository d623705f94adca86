// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace quellar::host::linux {

/// The order of words in a language. It comes from ICU, which is loaded with the first Collation: most commands list no
/// applications, and loading it takes longer than they run. Where it can't be loaded the order is that of the bytes.
class Collation {
 public:
  /// Takes a locale name ("pt_BR", "sr@latin"); "" for the order that all languages share.
  explicit Collation(const std::string& locale);
  Collation(const Collation&) = delete;
  Collation& operator=(const Collation&) = delete;
  ~Collation();

  /// Negative where the first UTF-8 text comes before the second one, 0 where they are equal without regard to case.
  [[nodiscard]] int compare(std::string_view left, std::string_view right) const;

 private:
  struct Library;
  std::unique_ptr<Library> library_;
};

}  // namespace quellar::host::linux

// SPDX-License-Identifier: MIT
#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "platform/value.h"

namespace quellar::tests {

/// A folder of the test's own, removed with all that is in it.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

/// Sets an environment variable, and sets it back.
class ScopedVariable {
 public:
  ScopedVariable(const char* name, const char* value);
  ~ScopedVariable();
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;

 private:
  std::string name_;
  std::string former_;
  bool wasSet_;
};

/// Writes a file in place, and makes the folders that it needs.
void writeFile(const std::filesystem::path& file, std::string_view bytes);
/// Writes a file beside it and renames it over.
void replaceFile(const std::filesystem::path& file, std::string_view bytes);
[[nodiscard]] std::string readFile(const std::filesystem::path& file);
/// The names in a folder, sorted; none where it does not exist.
[[nodiscard]] std::vector<std::string> namesIn(const std::filesystem::path& folder);
/// The permission bits of a file, of a link itself.
[[nodiscard]] mode_t modeOf(const std::filesystem::path& file);
[[nodiscard]] ino_t inodeOf(const std::filesystem::path& file);

/// The binary form of a dictionary.
[[nodiscard]] std::string plist(const platform::Dictionary& dictionary);

/// Puts a binary property list together by hand: objects with their marker bytes, the first one at the top; references
/// have two bytes.
[[nodiscard]] std::string binaryPlist(const std::vector<std::string>& objects);
/// A two-byte reference to an object.
[[nodiscard]] std::string reference(std::size_t object);

}  // namespace quellar::tests

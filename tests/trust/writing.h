// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/linux/file_preferences.h"
#include "platform/value.h"

namespace quellar::tests {

inline constexpr const char* kTrustDomain = "com.vantorick.quellar2";
inline constexpr const char* kTrustFile = "com.vantorick.quellar2.plist";

/// What a writer is to do.
struct WritingTask {
  std::filesystem::path root;
  std::string key = "Written_Defaults";
  /// The value is set to numberedValue() of this number and the ones after it.
  int first = 1;
  int count = 1;
  /// It ends then, where that is before it has written all.
  std::chrono::steady_clock::time_point until = std::chrono::steady_clock::time_point::max();
  /// After each value.
  bool synchronizes = false;
  host::linux::FilePreferencesOptions options;
  /// Where its lines go: "set N", "synchronized N", "trouble FILE: CAUSE", each once it has happened.
  int output = 1;
};

/// Does a task; gives the exit code of a writer: 0, or 1 where there was trouble with writing.
int runWriting(const WritingTask& task);

/// A value that tells its number, of a size that differs from number to number.
[[nodiscard]] platform::Value numberedValue(int number);
/// The number of such a value, if it is one of them as a whole.
[[nodiscard]] std::optional<int> numberOf(const std::optional<platform::Value>& value);

/// Keys of others, which no writer touches.
[[nodiscard]] const platform::Dictionary& otherKeys();

/// What a line "WORD N" says last in the output of a writer; nothing where there is none that is complete.
[[nodiscard]] std::optional<int> lastOf(std::string_view output, std::string_view word);

/// A device root for writers.
struct WrittenRoot {
  std::filesystem::path root;

  [[nodiscard]] std::filesystem::path preferences() const { return root / "var/mobile/Library/Preferences"; }
  [[nodiscard]] std::filesystem::path file() const { return preferences() / kTrustFile; }
  [[nodiscard]] std::filesystem::path beside(std::string_view extension) const {
    return file().string() + std::string(extension);
  }
  /// Makes it anew, with a domain file that holds the other keys and value `number`.
  void makeWith(int number) const;
  void clear() const;
  /// Whether a writer's temporary file lies beside it.
  [[nodiscard]] bool hasTemporaryFile() const;

  /// Looks at it as the next program that starts does, one that reads and then writes; returns what is wrong with it,
  /// or "". The value must be one of `first` to `last`, the other keys be there, no lock be held, and nothing temporary
  /// be left.
  [[nodiscard]] std::string faultsAfterDeath(int first, int last) const;
};

/// A folder in memory where the machine has one, for what is done many thousand times.
[[nodiscard]] std::filesystem::path quickFolder();

/// True for the long form of these proofs (QUELLAR_TRUST=long).
[[nodiscard]] bool isLongForm();

/// The whole of a file, and the names in a folder in order.
[[nodiscard]] std::string bytesOf(const std::filesystem::path& file);
[[nodiscard]] std::vector<std::string> filesIn(const std::filesystem::path& folder);

}  // namespace quellar::tests

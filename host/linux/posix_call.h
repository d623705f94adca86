// SPDX-License-Identifier: MIT
#pragma once

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace quellar::host::linux {

/// A file that can't be used: which one, and why. what() is "<file>: <cause>".
class FileError : public std::runtime_error {
 public:
  FileError(const std::filesystem::path& file, const std::string& cause)
      : std::runtime_error(file.string() + ": " + cause), file_(file.string()), cause_(cause) {}

  [[nodiscard]] const std::string& file() const { return file_; }
  [[nodiscard]] const std::string& cause() const { return cause_; }

 private:
  std::string file_;
  std::string cause_;
};

/// Calls `call` again as long as a signal interrupts it (-1 with EINTR), and returns what it returned.
template <typename Call>
auto retried(Call call) {
  while (true) {
    const auto result = call();
    if (result != -1 || errno != EINTR) return result;
  }
}

/// The text of an error number of the system.
[[nodiscard]] std::string errorText(int error);

/// Throws a FileError about `file` for the error in errno; `doing`, where given, tells what was tried
/// ("can't create it").
[[noreturn]] void throwErrno(const std::filesystem::path& file, std::string_view doing = {});

/// The bytes from the start of an open file to its end, or nothing where there are more than `limit`. Throws a
/// FileError about `file`.
[[nodiscard]] std::optional<std::string> readWhole(int descriptor, std::size_t limit,
                                                   const std::filesystem::path& file);

/// Writes all the bytes at the descriptor's place. Throws a FileError about `file`.
void writeWhole(int descriptor, std::string_view bytes, const std::filesystem::path& file);

}  // namespace quellar::host::linux

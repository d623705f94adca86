// SPDX-License-Identifier: MIT
#include "host/linux/posix_call.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <system_error>

namespace quellar::host::linux {

std::string errorText(int error) {
  return std::generic_category().message(error);
}

void throwErrno(const std::filesystem::path& file, std::string_view doing) {
  const int error = errno;
  throw FileError(file, doing.empty() ? errorText(error) : std::string(doing) + ": " + errorText(error));
}

std::optional<std::string> readWhole(int descriptor, std::size_t limit, const std::filesystem::path& file) {
  struct stat status{};
  if (retried([&] { return ::fstat(descriptor, &status); }) != 0) throwErrno(file);
  // One byte more than the file has, so that its end shows in the same round.
  const auto expected = static_cast<std::size_t>(std::max<off_t>(status.st_size, 0)) + 1;
  std::string bytes;
  std::size_t size = 0;
  while (true) {
    if (size > limit) return std::nullopt;
    if (size == bytes.size()) bytes.resize(std::min(std::max(expected, 2 * size), limit + 1));
    const ssize_t got = retried(
        [&] { return ::pread(descriptor, bytes.data() + size, bytes.size() - size, static_cast<off_t>(size)); });
    if (got < 0) throwErrno(file);
    if (got == 0) break;
    size += static_cast<std::size_t>(got);
  }
  bytes.resize(size);
  return bytes;
}

void writeWhole(int descriptor, std::string_view bytes, const std::filesystem::path& file) {
  while (!bytes.empty()) {
    const ssize_t put = retried([&] { return ::write(descriptor, bytes.data(), bytes.size()); });
    if (put < 0) throwErrno(file);
    bytes.remove_prefix(static_cast<std::size_t>(put));
  }
}

}  // namespace quellar::host::linux

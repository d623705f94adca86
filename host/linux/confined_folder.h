// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "host/linux/file_descriptor.h"
#include "host/linux/posix_call.h"

namespace quellar::host::linux {

/// A folder that no path leads out of. Paths are relative to it; leading slashes count for nothing. A path that would
/// leave it by ".." or by a symbolic link is refused with a FileError, wherever it leads. A link means what it means to
/// every other program: an absolute one is within only where it names a place below this very folder.
class ConfinedFolder {
 public:
  /// Who follows a path: the kernel (openat2(2)) where it can, or this class, name by name, where it can't. Both refuse
  /// the same paths.
  enum class Resolution { Kernel, Walk };

  explicit ConfinedFolder(const std::filesystem::path& folder, Resolution resolution = Resolution::Kernel);

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  /// Opens a file or folder with open(2)'s flags (not for creating); nothing where there is none. Throws a FileError
  /// where it can't be opened.
  [[nodiscard]] std::optional<FileDescriptor> open(std::string_view relative, int flags) const;

  /// A name in an open folder.
  struct Place {
    FileDescriptor folder;
    std::string name;
  };
  /// The folder and name that a path leads to when all links are followed, the last one too; the name itself need not
  /// exist. Nothing where its folder does not exist.
  [[nodiscard]] std::optional<Place> locate(std::string_view relative) const;

  /// The absolute path, free of links, of what a path leads to; nothing where there is none.
  [[nodiscard]] std::optional<std::filesystem::path> realPath(std::string_view relative) const;

  /// Makes the folder of that path, and all above it that are missing, this one too; for their owner alone (0700),
  /// whatever the umask.
  void makeFolder(std::string_view relative) const;

 private:
  struct Walked;

  [[nodiscard]] FileDescriptor openSelf() const;
  [[nodiscard]] std::optional<Walked> walk(std::string_view relative) const;
  [[nodiscard]] std::filesystem::path hostPath(std::string_view relative) const;
  /// The part of an absolute link's target that lies below this folder, or nothing.
  [[nodiscard]] std::optional<std::string> below(const std::string& target) const;

  std::filesystem::path path_;
  Resolution resolution_;
};

}  // namespace quellar::host::linux

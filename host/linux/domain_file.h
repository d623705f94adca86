// SPDX-License-Identifier: MIT
#pragma once

#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "host/linux/confined_folder.h"
#include "host/linux/file_descriptor.h"

// The steps by which a domain file is replaced, so that whoever reads it, after any crash or power cut, finds a whole
// version: the next version is written and flushed under a name of its own, then takes the file's name, then the folder
// is flushed.
//
// Beside `<file>` there may be:
//   <file>.lock      held (flock(2)) by whoever replaces the file. It is never removed; a writer that finds it removed
//   or
//                    replaced takes the new one. It holds a byte once the folders above it are on the device.
//   <file>.tmp-N     the next version while it is written. N is the inode of the lock, so that no two holders share a
//                    name, even where the lock was removed under one of them. It is locked (flock(2)) while it is
//                    written; one that is not was left by a writer that died.
//   <file>.flushed   a whole version that a former release kept. It is read where the file is torn, and removed by the
//                    next write.
//
// All operations throw a FileError that names the domain file.

namespace quellar::host::linux {

/// What tells a version of a file from every other. While the file is held open its inode can't be given to another
/// one; and the change time, unlike the modification time, can't be set by a program.
struct FileVersion {
  dev_t device = 0;
  ino_t inode = 0;
  std::int64_t changedSeconds = 0;
  std::int64_t changedNanoseconds = 0;
  std::int64_t modifiedSeconds = 0;
  std::int64_t modifiedNanoseconds = 0;
  off_t size = 0;

  FileVersion() = default;
  explicit FileVersion(const struct stat& status)
      : device(status.st_dev),
        inode(status.st_ino),
        changedSeconds(status.st_ctim.tv_sec),
        changedNanoseconds(status.st_ctim.tv_nsec),
        modifiedSeconds(status.st_mtim.tv_sec),
        modifiedNanoseconds(status.st_mtim.tv_nsec),
        size(status.st_size) {}

  [[nodiscard]] bool isSameFile(const FileVersion& other) const {
    return device == other.device && inode == other.inode;
  }
  /// Whether nobody wrote to the file since; a change of its name alone does not count.
  [[nodiscard]] bool hasSameContents(const FileVersion& other) const {
    return isSameFile(other) && size == other.size && modifiedSeconds == other.modifiedSeconds &&
           modifiedNanoseconds == other.modifiedNanoseconds;
  }
  /// How long ago it came to be, by the clock of the system.
  [[nodiscard]] std::chrono::nanoseconds age() const;
  bool operator==(const FileVersion&) const = default;
};

/// The version of an open file, and of a name in a folder (a link itself, not what it leads to; nothing where there is
/// none).
[[nodiscard]] FileVersion versionOf(int descriptor, const std::filesystem::path& file);
[[nodiscard]] std::optional<FileVersion> versionAt(int folder, const std::string& name,
                                                   const std::filesystem::path& file);

/// A domain file where it really lies, and the path by which messages name it.
struct DomainPlace {
  ConfinedFolder::Place place;
  std::filesystem::path file;

  [[nodiscard]] int folder() const { return place.folder.get(); }
  [[nodiscard]] const std::string& name() const { return place.name; }
  [[nodiscard]] std::string lockName() const { return place.name + ".lock"; }
  [[nodiscard]] std::string temporaryStem() const { return place.name + ".tmp"; }
  [[nodiscard]] std::string flushedName() const { return place.name + ".flushed"; }
  [[nodiscard]] std::optional<FileVersion> version() const { return versionAt(folder(), name(), file); }
};

/// Holds a domain's lock. The lock of a process that died is free.
class DomainLock {
 public:
  /// Waits for the lock. Callers are served in the order in which they came. Throws where nobody ahead has got on for
  /// longer than `limit`.
  DomainLock(const DomainPlace& place, std::chrono::milliseconds limit);
  ~DomainLock() { release(); }
  DomainLock(DomainLock&&) noexcept = default;
  DomainLock& operator=(DomainLock&&) = delete;

  /// Whether other writers still find this lock under its name.
  [[nodiscard]] bool isCurrent(const DomainPlace& place) const;
  /// The name of the next version while it is written by the holder of this lock.
  [[nodiscard]] std::string temporaryName(const DomainPlace& place) const;
  void release();

  /// Flushes the domain's folder, and once the folders above it, so that what was replaced in it lasts. Needs no lock.
  void flushFolders(const DomainPlace& place) const;

 private:
  FileDescriptor lock_;
};

/// The next version of a domain file, written beside it and flushed; removed again unless it is committed. Needs the
/// lock.
class NextVersion {
 public:
  NextVersion(const DomainPlace& place, const DomainLock& lock, std::string_view bytes);
  ~NextVersion();
  NextVersion(const NextVersion&) = delete;
  NextVersion& operator=(const NextVersion&) = delete;

  /// Puts it in the place of the version that is expected there (nothing: of no file). From here on everybody reads it.
  /// Returns false, and leaves the file as it is, where a program that takes no lock has put another version there.
  [[nodiscard]] bool commit(const std::optional<FileVersion>& expected);

  /// Holds the file open, for its version (no reading).
  [[nodiscard]] FileDescriptor takeHandle() { return std::move(handle_); }

 private:
  [[nodiscard]] bool move(unsigned flags) const;
  [[nodiscard]] bool putBack();

  const DomainPlace& place_;
  const std::string temporaryName_;
  FileDescriptor handle_;
  /// Whether the temporary name is still to be removed.
  bool isLeft_ = true;
};

/// A copy of a file as `<stem>-N`, N one higher than that of any other copy; removed again unless it is kept. It is on
/// the storage device when it is made. Needs the lock.
class SafetyCopy {
 public:
  /// Copies the file `source` into the place's folder: by a second link to `name` where that is given and is that file,
  /// else by its bytes.
  SafetyCopy(const DomainPlace& place, const std::string& stem, const FileDescriptor& source, const std::string& name);
  ~SafetyCopy();
  SafetyCopy(const SafetyCopy&) = delete;
  SafetyCopy& operator=(const SafetyCopy&) = delete;

  /// Keeps it, and of the older copies the newest nine.
  void keep();
  [[nodiscard]] std::filesystem::path file() const { return place_.file.parent_path() / copyName_; }

 private:
  const DomainPlace& place_;
  const std::string stem_;
  std::string copyName_;
  bool isKept_ = false;
};

/// Removes what a writer that died left beside the domain file, if the lock is free and it can be removed.
void removeLeftovers(const DomainPlace& place);

/// Removes the version that a former release kept, if there is one. Needs the lock.
void removeFlushedVersion(const DomainPlace& place);

}  // namespace quellar::host::linux

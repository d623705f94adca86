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

// The steps by which a domain file is replaced and brought to the storage device, so that at every moment, also after
// a crash or a power cut, a whole version can be found.
//
// Beside `<file>` there may be:
//   <file>.lock      held (flock(2)) by whoever replaces the file or one of the names below; never removed
//   <file>.tmp       the next version while it is written, and the former one once the two have exchanged their names;
//                    only the holder of the lock has one, so one that is found under the lock was left by a writer
//                    that died
//   <file>.flushed   a second link to the last version that is known to be on the device. The file itself is replaced
//                    without waiting for the device, so a power cut can leave it torn.
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
  off_t size = 0;

  FileVersion() = default;
  explicit FileVersion(const struct stat& status)
      : device(status.st_dev),
        inode(status.st_ino),
        changedSeconds(status.st_ctim.tv_sec),
        changedNanoseconds(status.st_ctim.tv_nsec),
        size(status.st_size) {}

  [[nodiscard]] bool isSameFile(const FileVersion& other) const {
    return device == other.device && inode == other.inode;
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
  [[nodiscard]] std::string temporaryName() const { return place.name + ".tmp"; }
  [[nodiscard]] std::string flushedName() const { return place.name + ".flushed"; }
  [[nodiscard]] std::optional<FileVersion> version() const { return versionAt(folder(), name(), file); }
};

/// Holds a domain's lock. The lock of a process that died is free.
class DomainLock {
 public:
  /// Waits for the lock; throws where another holds it for longer than `limit`.
  DomainLock(const DomainPlace& place, std::chrono::milliseconds limit);
  ~DomainLock();
  DomainLock(const DomainLock&) = delete;
  DomainLock& operator=(const DomainLock&) = delete;

 private:
  FileDescriptor lock_;
};

/// The next version of a domain file, written beside it; removed again unless it is committed. Needs the lock.
class NextVersion {
 public:
  NextVersion(const DomainPlace& place, std::string_view bytes);
  ~NextVersion();
  NextVersion(const NextVersion&) = delete;
  NextVersion& operator=(const NextVersion&) = delete;

  /// Puts it in the file's place. From here on everybody reads it.
  void commit();

  /// Holds the file open, for its version (no reading).
  [[nodiscard]] FileDescriptor takeHandle() { return std::move(handle_); }

 private:
  const DomainPlace& place_;
  FileDescriptor handle_;
  /// Whether the temporary name is still to be removed.
  bool isLeft_ = true;
};

/// A copy of a file under the first free of the names `<stem>-1`, `<stem>-2`, ...; removed again unless it is kept.
/// It is on the storage device when it is made. Needs the lock.
class SafetyCopy {
 public:
  /// Copies the file `source` into the place's folder: by a second link to `name` where that is given and is that file,
  /// else by its bytes.
  SafetyCopy(const DomainPlace& place, const std::string& stem, const FileDescriptor& source, const std::string& name);
  ~SafetyCopy();
  SafetyCopy(const SafetyCopy&) = delete;
  SafetyCopy& operator=(const SafetyCopy&) = delete;

  void keep() { isKept_ = true; }

 private:
  const DomainPlace& place_;
  std::string copyName_;
  bool isKept_ = false;
};

/// A version that was flushed, as it was before and after it got its second name (which changes the change time).
struct FlushedVersion {
  FileVersion before;
  FileVersion after;
};

/// What came of a flush: the version, none where there is no file; or that the file was replaced meanwhile, and the
/// version that it has now may not be on the device.
struct Flush {
  std::optional<FlushedVersion> version;
  bool wasReplaced = false;
};

/// Brings the domain file to the storage device and makes it the kept version; a file that is no whole domain is not
/// kept. Doesn't hold the lock while it waits for the device, so that no writer waits with it.
Flush tryToFlushDomainFile(const DomainPlace& place, std::chrono::milliseconds lockLimit);

/// The same until it is done: where the file is replaced again and again, it is flushed with the lock held. Returns
/// nothing where there is no file.
std::optional<FlushedVersion> flushDomainFile(const DomainPlace& place, std::chrono::milliseconds lockLimit);

/// The same for a caller that holds the lock.
std::optional<FlushedVersion> flushLockedDomainFile(const DomainPlace& place);

/// Removes what a writer that died left beside the domain file, if the lock is free and it can be removed.
void removeLeftovers(const DomainPlace& place);

}  // namespace quellar::host::linux

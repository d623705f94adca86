// SPDX-License-Identifier: MIT
#include "host/linux/domain_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <thread>
#include <utility>

#include "host/linux/posix_call.h"
#include "host/linux/property_list_file.h"

namespace quellar::host::linux {

namespace {

constexpr mode_t kFileMode = 0600;

/// Creates a file that must not be there yet; none with EEXIST in errno where it is.
FileDescriptor createNew(int folder, const std::string& name, const std::filesystem::path& file) {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  FileDescriptor created(retried([&] { return ::openat(folder, name.c_str(), kFlags, kFileMode); }));
  if (!created) {
    if (errno == EEXIST) return created;
    throwErrno(file, "can't create " + name);
  }
  return created;
}

/// Gives a file that was just created its mode, from which the umask may have taken bits.
void setMode(const FileDescriptor& created, const std::string& name, const std::filesystem::path& file) {
  if (retried([&] { return ::fchmod(created.get(), kFileMode); }) != 0) throwErrno(file, "can't create " + name);
}

void removeName(int folder, const std::string& name, const std::filesystem::path& file) {
  if (retried([&] { return ::unlinkat(folder, name.c_str(), 0); }) != 0 && errno != ENOENT) {
    throwErrno(file, "can't remove " + name);
  }
}

/// Removes a name where nothing can be done about a failure; whether it is gone.
bool tryToRemoveName(int folder, const std::string& name) {
  return retried([&] { return ::unlinkat(folder, name.c_str(), 0); }) == 0;
}

/// Closes a file that was written; some file systems tell only now that they could not take it.
void closeWritten(FileDescriptor written, const std::filesystem::path& file) {
  // Linux closes the descriptor even where a signal interrupts it.
  if (::close(written.release()) != 0 && errno != EINTR) throwErrno(file);
}

bool cannotLink(int error) {
  return error == EPERM || error == EOPNOTSUPP || error == ENOSYS || error == EMLINK || error == EXDEV;
}

/// Whether two names could not be exchanged for a reason that does not stand in the way of renaming the one over the
/// other: there is no second name yet, or the file system, the kernel or a sandbox knows no exchange.
bool cannotExchange(int error) {
  return error == ENOENT || error == EINVAL || error == EOPNOTSUPP || error == ENOSYS || error == EPERM;
}

FileDescriptor openLock(const DomainPlace& place) {
  const std::string name = place.lockName();
  while (true) {
    constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    FileDescriptor lock(retried([&] { return ::openat(place.folder(), name.c_str(), kFlags); }));
    if (lock) return lock;
    if (errno != ENOENT) throwErrno(place.file, "can't open " + name);
    lock = createNew(place.folder(), name, place.file);
    if (!lock) continue;
    // Where that fails the lock stays: another writer may hold it by now.
    setMode(lock, name, place.file);
    return lock;
  }
}

bool tryLock(const FileDescriptor& lock, const DomainPlace& place) {
  if (retried([&] { return ::flock(lock.get(), LOCK_EX | LOCK_NB); }) == 0) return true;
  if (errno != EWOULDBLOCK) throwErrno(place.file, "can't lock " + place.lockName());
  return false;
}

void unlock(const FileDescriptor& lock) {
  retried([&] { return ::flock(lock.get(), LOCK_UN); });
}

void sync(int descriptor, const std::filesystem::path& file) {
  if (retried([&] { return ::fsync(descriptor); }) != 0) throwErrno(file, "can't flush it");
}

/// Flushes the folders above the domain's, as far as their file system goes: one that was just made lasts only once the
/// one above it is flushed.
void syncFoldersAbove(const DomainPlace& place) {
  const auto statusOf = [&](int folder) {
    struct stat status{};
    if (retried([&] { return ::fstat(folder, &status); }) != 0) throwErrno(place.file);
    return status;
  };
  struct stat below = statusOf(place.folder());
  FileDescriptor folder;
  while (true) {
    const int from = folder ? folder.get() : place.folder();
    FileDescriptor above(retried([&] { return ::openat(from, "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    // What the user may not read was not made by the user's programs.
    if (!above && errno == EACCES) return;
    if (!above) throwErrno(place.file, "can't open a folder above it");
    const struct stat status = statusOf(above.get());
    if (status.st_dev != below.st_dev || status.st_ino == below.st_ino) return;
    // Some file systems have nothing to flush for a folder, and say so with EINVAL.
    if (retried([&] { return ::fsync(above.get()); }) != 0 && errno != EINVAL) throwErrno(place.file, "can't flush it");
    below = status;
    folder = std::move(above);
  }
}

/// Opens the domain file itself, or nothing.
FileDescriptor openDomainFile(const DomainPlace& place) {
  constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  FileDescriptor opened(retried([&] { return ::openat(place.folder(), place.name().c_str(), kFlags); }));
  if (!opened && errno != ENOENT) throwErrno(place.file);
  return opened;
}

bool isWholeDomain(const FileDescriptor& opened, const std::filesystem::path& file) {
  try {
    const std::optional<std::string> bytes = readWhole(opened.get(), kMaxPropertyListBytes, file);
    if (!bytes) return false;
    static_cast<void>(PropertyListDictionary(*bytes));
    return true;
  } catch (const PropertyListError&) {
    return false;
  }
}

/// Gives the domain file, which was just flushed, its second name. Needs the lock. Returns a hold on the version that
/// was kept until now: with the last hold on a file its blocks are freed, which takes as long as a flush and is not to
/// be waited for with the lock.
FileDescriptor keepFlushed(const DomainPlace& place, const FileVersion& flushed) {
  const std::optional<FileVersion> kept = versionAt(place.folder(), place.flushedName(), place.file);
  // Renaming a link over another one of the same file would do nothing and leave both.
  if (kept && kept->isSameFile(flushed)) return {};
  const std::string temporary = place.temporaryName();
  removeName(place.folder(), temporary, place.file);
  if (retried([&] { return ::linkat(place.folder(), place.name().c_str(), place.folder(), temporary.c_str(), 0); }) !=
      0) {
    // Without second names a power cut between a write and its flush can cost the domain.
    if (cannotLink(errno)) return {};
    throwErrno(place.file, "can't link " + temporary);
  }
  FileDescriptor former(
      retried([&] { return ::openat(place.folder(), place.flushedName().c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC); }));
  if (retried([&] {
        return ::renameat(place.folder(), temporary.c_str(), place.folder(), place.flushedName().c_str());
      }) != 0) {
    const int error = errno;
    tryToRemoveName(place.folder(), temporary);
    errno = error;
    throwErrno(place.file, "can't rename " + temporary);
  }
  return former;
}

/// Flushes the file with what is needed for it to be found; the lock is held by the caller or taken in between.
Flush flushOnce(const DomainPlace& place, const std::chrono::milliseconds* lockLimit) {
  const FileDescriptor opened = openDomainFile(place);
  if (!opened) return {};
  sync(opened.get(), place.file);
  // At the first flush the folders may be as new as the file.
  if (!versionAt(place.folder(), place.flushedName(), place.file)) syncFoldersAbove(place);
  const bool isWhole = isWholeDomain(opened, place.file);
  FlushedVersion flushed;
  FileDescriptor former;
  {
    std::optional<DomainLock> lock;
    if (lockLimit != nullptr) lock.emplace(place, *lockLimit);
    flushed.before = versionOf(opened.get(), place.file);
    const std::optional<FileVersion> current = place.version();
    if (!current || !current->isSameFile(flushed.before)) return {.version = std::nullopt, .wasReplaced = true};
    if (isWhole) former = keepFlushed(place, flushed.before);
    flushed.after = versionOf(opened.get(), place.file);
  }
  sync(place.folder(), place.file);
  return {.version = flushed, .wasReplaced = false};
}

}  // namespace

std::chrono::nanoseconds FileVersion::age() const {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  return std::chrono::seconds(now.tv_sec - changedSeconds) + std::chrono::nanoseconds(now.tv_nsec - changedNanoseconds);
}

FileVersion versionOf(int descriptor, const std::filesystem::path& file) {
  struct stat status{};
  if (retried([&] { return ::fstat(descriptor, &status); }) != 0) throwErrno(file);
  return FileVersion(status);
}

std::optional<FileVersion> versionAt(int folder, const std::string& name, const std::filesystem::path& file) {
  struct stat status{};
  if (retried([&] { return ::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW); }) == 0) {
    return FileVersion(status);
  }
  if (errno != ENOENT) throwErrno(file);
  return std::nullopt;
}

DomainLock::DomainLock(const DomainPlace& place, std::chrono::milliseconds limit) : lock_(openLock(place)) {
  using Clock = std::chrono::steady_clock;
  // Most have done with the lock by then, and the shortest sleep is longer.
  constexpr std::chrono::microseconds kAwake{50};
  constexpr std::chrono::microseconds kLongestPause{2000};
  std::chrono::microseconds pause{50};
  const Clock::time_point start = Clock::now();
  // flock(2) can't wait for a time, and another kind of lock would not be given up by each kind of death.
  while (!tryLock(lock_, place)) {
    const auto waited = Clock::now() - start;
    if (waited < std::min<Clock::duration>(kAwake, limit)) {
      std::this_thread::yield();
      continue;
    }
    if (waited >= limit) {
      throw FileError(place.file, "another program has kept " + place.lockName() + " locked for " +
                                      std::to_string(limit.count()) + " ms");
    }
    std::this_thread::sleep_for(pause);
    pause = std::min(2 * pause, kLongestPause);
  }
}

DomainLock::~DomainLock() {
  unlock(lock_);
}

NextVersion::NextVersion(const DomainPlace& place, std::string_view bytes) : place_(place) {
  const std::string name = place.temporaryName();
  FileDescriptor written = createNew(place.folder(), name, place.file);
  if (!written) {
    removeName(place.folder(), name, place.file);
    written = createNew(place.folder(), name, place.file);
    if (!written) throwErrno(place.file, "can't create " + name);
  }
  try {
    setMode(written, name, place.file);
    writeWhole(written.get(), bytes, place.file);
    handle_ = FileDescriptor(
        retried([&] { return ::openat(place.folder(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC); }));
    if (!handle_) throwErrno(place.file, "can't open " + name);
    closeWritten(std::move(written), place.file);
  } catch (...) {
    tryToRemoveName(place.folder(), name);
    throw;
  }
}

NextVersion::~NextVersion() {
  if (isLeft_) tryToRemoveName(place_.folder(), place_.temporaryName());
}

void NextVersion::commit() {
  const std::string name = place_.temporaryName();
  const auto moved = [&](unsigned flags) {
    return retried([&] {
             return ::renameat2(place_.folder(), name.c_str(), place_.folder(), place_.name().c_str(), flags);
           }) == 0;
  };
  // A file system that cares for programs that never flush (ext4, btrfs) sends a new file to the device before it
  // replaces another, and the writer waits for it. The kept version is there for what that is to prevent, and of an
  // exchange of two names nobody takes it that it replaces anything.
  if (moved(RENAME_EXCHANGE)) {
    // The temporary name is the former file's now. Where it can't be removed at once, it is tried again at the end.
    isLeft_ = !tryToRemoveName(place_.folder(), name);
    return;
  }
  if (!cannotExchange(errno) || !moved(0)) throwErrno(place_.file, "can't replace it");
  isLeft_ = false;
}

SafetyCopy::SafetyCopy(const DomainPlace& place, const std::string& stem, const FileDescriptor& source,
                       const std::string& name)
    : place_(place) {
  const FileVersion version = versionOf(source.get(), place.file);
  const std::optional<FileVersion> named = name.empty() ? std::nullopt : versionAt(place.folder(), name, place.file);
  bool byLink = named && named->isSameFile(version);
  for (int number = 1;; ++number) {
    copyName_ = stem + "-" + std::to_string(number);
    if (byLink) {
      if (retried([&] { return ::linkat(place.folder(), name.c_str(), place.folder(), copyName_.c_str(), 0); }) == 0) {
        break;
      }
      if (cannotLink(errno)) {
        byLink = false;
      } else if (errno != EEXIST) {
        throwErrno(place.file, "can't copy it to " + copyName_);
      }
    }
    if (const std::optional<FileVersion> there = versionAt(place.folder(), copyName_, place.file)) {
      if (!there->isSameFile(version)) continue;
      // A writer that died had just made it.
      isKept_ = true;
      break;
    }
    FileDescriptor copy = createNew(place.folder(), copyName_, place.file);
    if (!copy) continue;
    try {
      setMode(copy, copyName_, place.file);
      std::array<char, 65536> block{};
      off_t at = 0;
      while (true) {
        const ssize_t got = retried([&] { return ::pread(source.get(), block.data(), block.size(), at); });
        if (got < 0) throwErrno(place.file);
        if (got == 0) break;
        writeWhole(copy.get(), {block.data(), static_cast<std::size_t>(got)}, place.file);
        at += got;
      }
      sync(copy.get(), place.file);
      closeWritten(std::move(copy), place.file);
    } catch (...) {
      tryToRemoveName(place.folder(), copyName_);
      throw;
    }
    break;
  }
  try {
    // The copy is to outlast a power cut that what it is a copy of does not.
    if (byLink) sync(source.get(), place.file);
    sync(place.folder(), place.file);
  } catch (...) {
    if (!isKept_) tryToRemoveName(place.folder(), copyName_);
    throw;
  }
}

SafetyCopy::~SafetyCopy() {
  if (!isKept_) tryToRemoveName(place_.folder(), copyName_);
}

Flush tryToFlushDomainFile(const DomainPlace& place, std::chrono::milliseconds lockLimit) {
  return flushOnce(place, &lockLimit);
}

std::optional<FlushedVersion> flushDomainFile(const DomainPlace& place, std::chrono::milliseconds lockLimit) {
  constexpr int kTriesWithoutLock = 3;
  for (int tries = 0; tries < kTriesWithoutLock; ++tries) {
    const Flush flush = tryToFlushDomainFile(place, lockLimit);
    if (!flush.wasReplaced) return flush.version;
  }
  const DomainLock lock(place, lockLimit);
  return flushLockedDomainFile(place);
}

std::optional<FlushedVersion> flushLockedDomainFile(const DomainPlace& place) {
  return flushOnce(place, nullptr).version;
}

void removeLeftovers(const DomainPlace& place) {
  if (!versionAt(place.folder(), place.temporaryName(), place.file)) return;
  try {
    const FileDescriptor lock = openLock(place);
    if (!tryLock(lock, place)) return;
    tryToRemoveName(place.folder(), place.temporaryName());
    unlock(lock);
  } catch (const FileError&) {
    // No reason not to read the domain: the next write removes it, or says why it can't.
  }
}

}  // namespace quellar::host::linux

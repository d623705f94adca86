// SPDX-License-Identifier: MIT
#include "host/linux/domain_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <ctime>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include "host/linux/posix_call.h"

namespace quellar::host::linux {

namespace {

constexpr mode_t kFileMode = 0600;

/// Creates a file that must not be there yet; none with EEXIST in errno where it is.
FileDescriptor createNew(int folder, const std::string& name, const std::filesystem::path& file,
                         int access = O_WRONLY) {
  const int flags = access | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  FileDescriptor created(retried([&] { return ::openat(folder, name.c_str(), flags, kFileMode); }));
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
/// other: the file system, the kernel or a sandbox knows no exchange.
bool cannotExchange(int error) {
  return error == EINVAL || error == EOPNOTSUPP || error == ENOSYS || error == EPERM;
}

FileDescriptor openLock(const DomainPlace& place) {
  const std::string name = place.lockName();
  while (true) {
    const auto opened = [&](int access) {
      constexpr int kFlags = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
      return FileDescriptor(retried([&] { return ::openat(place.folder(), name.c_str(), access | kFlags); }));
    };
    FileDescriptor lock = opened(O_RDWR);
    // One that can't be written to locks all the same.
    if (!lock && (errno == EACCES || errno == EROFS)) lock = opened(O_RDONLY);
    if (lock) return lock;
    if (errno != ENOENT) throwErrno(place.file, "can't open " + name);
    lock = createNew(place.folder(), name, place.file, O_RDWR);
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

/// The same as retried() for a call that returns nullptr where it fails; errno is 0 where it did not.
template <typename Call>
auto retriedPointer(Call call) {
  while (true) {
    errno = 0;
    const auto result = call();
    if (result != nullptr || errno != EINTR) return result;
  }
}

/// The names in the domain's folder that begin like this.
std::vector<std::string> namesWithPrefix(const DomainPlace& place, const std::string& prefix) {
  FileDescriptor listed(retried([&] { return ::openat(place.folder(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
  if (!listed) throwErrno(place.file, "can't list its folder");
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(retriedPointer([&] { return ::fdopendir(listed.get()); }),
                                                   ::closedir);
  if (!folder) throwErrno(place.file, "can't list its folder");
  static_cast<void>(listed.release());
  std::vector<std::string> names;
  while (const dirent* entry = retriedPointer([&] { return ::readdir(folder.get()); })) {
    if (std::string_view(entry->d_name).starts_with(prefix)) names.emplace_back(entry->d_name);
  }
  if (errno != 0) throwErrno(place.file, "can't list its folder");
  return names;
}

/// The numbers of the copies `<stem>-N` in the domain's folder, in order.
std::vector<int> copies(const DomainPlace& place, const std::string& stem) {
  std::vector<int> numbers;
  for (const std::string& name : namesWithPrefix(place, stem + "-")) {
    const char* const last = name.data() + name.size();
    int number = 0;
    const auto [end, error] = std::from_chars(name.data() + stem.size() + 1, last, number);
    if (error == std::errc() && end == last && number > 0) numbers.push_back(number);
  }
  std::ranges::sort(numbers);
  return numbers;
}

/// The queue for a lock. Each caller locks one byte of the lock file, one behind the last that is taken, and holds it
/// as long as it waits for the lock or has it. The locks are those of open file descriptions (F_OFD_SETLK in fcntl(2)),
/// which the kernel frees at each kind of death; they are none of the file itself's (flock(2)).
class LockQueue {
 public:
  explicit LockQueue(const FileDescriptor& lock) : lock_(lock) {
    off_t place = 1;
    while (true) {
      while (const off_t taken = takenFrom(place, 0)) place = taken + 1;
      if (!isUsable_) return;
      struct flock byte = range(place, 1);
      if (retried([&] { return ::fcntl(lock_.get(), F_OFD_SETLK, &byte); }) == 0) break;
      if (errno != EAGAIN && errno != EACCES) return;
      ++place;
    }
    place_ = place;
  }

  /// The first caller ahead of this one, by its place; 0 where there is none.
  [[nodiscard]] off_t first() {
    off_t first = 0;
    for (off_t end = place_; end > 1;) {
      const off_t taken = takenFrom(1, end - 1);
      if (taken == 0) break;
      first = end = taken;
    }
    return first;
  }

 private:
  static struct flock range(off_t start, off_t length) {
    struct flock lock{};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = start;
    lock.l_len = length;
    return lock;
  }

  /// A place in the range (of no end where the length is 0) that another one holds; 0 for none.
  off_t takenFrom(off_t start, off_t length) {
    struct flock lock = range(start, length);
    if (retried([&] { return ::fcntl(lock_.get(), F_OFD_GETLK, &lock); }) != 0) {
      // A file system without such locks serves its callers in any order.
      isUsable_ = false;
      return 0;
    }
    return lock.l_type == F_UNLCK ? 0 : std::max<off_t>(lock.l_start, start);
  }

  const FileDescriptor& lock_;
  off_t place_ = 0;
  bool isUsable_ = true;
};

void waitForLock(const FileDescriptor& lock, const DomainPlace& place, std::chrono::milliseconds limit) {
  using SteadyClock = std::chrono::steady_clock;
  // Most have done with the lock by then, and the shortest sleep is longer.
  constexpr std::chrono::microseconds kAwake{50};
  constexpr std::chrono::microseconds kLongestPause{2000};
  // A caller that was stopped while it waited does not take the lock that is free; it loses its turn.
  constexpr std::chrono::milliseconds kTurnLimit{100};
  constexpr int kFreeSightings = 3;
  LockQueue queue(lock);
  const SteadyClock::time_point start = SteadyClock::now();
  SteadyClock::time_point gotOn = start;
  off_t ahead = queue.first();
  int freeSightings = 0;
  std::chrono::microseconds pause{50};
  while (true) {
    const SteadyClock::duration waited = SteadyClock::now() - gotOn;
    if (ahead == 0 && tryLock(lock, place)) return;
    if (ahead != 0 && waited > kTurnLimit && tryLock(lock, place)) {
      if (++freeSightings == kFreeSightings) return;
      unlock(lock);
      std::this_thread::sleep_for(2 * kLongestPause);
    }
    if (waited >= limit) {
      throw FileError(place.file, "another program has kept " + place.lockName() + " locked for " +
                                      std::to_string(limit.count()) + " ms");
    }
    if (SteadyClock::now() - start < kAwake) {
      std::this_thread::yield();
    } else {
      std::this_thread::sleep_for(pause);
      pause = std::min(2 * pause, kLongestPause);
    }
    if (const off_t now = queue.first(); now != ahead) {
      ahead = now;
      gotOn = SteadyClock::now();
      freeSightings = 0;
    }
  }
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

/// Holds the lock of the domain's folder (flock(2)), for as long as names are exchanged: it is there also where the
/// domain's own lock was removed under a writer, so that the writers of two locks exchange nothing at once.
class FolderLock {
 public:
  explicit FolderLock(const DomainPlace& place) : place_(place) {
    constexpr std::chrono::seconds kLimit{5};
    constexpr std::chrono::milliseconds kPause{1};
    const auto end = std::chrono::steady_clock::now() + kLimit;
    while (!tryToLock()) {
      if (std::chrono::steady_clock::now() > end)
        throw FileError(place.file, "another program keeps its folder locked");
      std::this_thread::sleep_for(kPause);
    }
  }
  ~FolderLock() {
    retried([&] { return ::flock(place_.folder(), LOCK_UN); });
  }
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  [[nodiscard]] bool tryToLock() const {
    if (retried([&] { return ::flock(place_.folder(), LOCK_EX | LOCK_NB); }) == 0) return true;
    // A file system that has no locks for folders.
    if (errno == EBADF || errno == EINVAL || errno == EOPNOTSUPP || errno == ENOLCK) return true;
    if (errno != EWOULDBLOCK) throwErrno(place_.file, "can't lock its folder");
    return false;
  }

  const DomainPlace& place_;
};

DomainLock::DomainLock(const DomainPlace& place, std::chrono::milliseconds limit) {
  do {
    lock_ = openLock(place);
    waitForLock(lock_, place, limit);
  } while (!isCurrent(place));
}

bool DomainLock::isCurrent(const DomainPlace& place) const {
  const std::optional<FileVersion> named = versionAt(place.folder(), place.lockName(), place.file);
  return named && named->isSameFile(versionOf(lock_.get(), place.file));
}

std::string DomainLock::temporaryName(const DomainPlace& place) const {
  return place.temporaryStem() + "-" + std::to_string(versionOf(lock_.get(), place.file).inode);
}

void DomainLock::release() {
  if (!lock_) return;
  unlock(lock_);
  struct flock all{};
  all.l_type = F_UNLCK;
  all.l_whence = SEEK_SET;
  retried([&] { return ::fcntl(lock_.get(), F_OFD_SETLK, &all); });
}

void DomainLock::flushFolders(const DomainPlace& place) const {
  sync(place.folder(), place.file);
  if (versionOf(lock_.get(), place.file).size != 0) return;
  syncFoldersAbove(place);
  // Where the mark can't be made they are flushed again the next time.
  static_cast<void>(retried([&] { return ::pwrite(lock_.get(), "1", 1, 0); }));
}

NextVersion::NextVersion(const DomainPlace& place, const DomainLock& lock, std::string_view bytes)
    : place_(place), temporaryName_(lock.temporaryName(place)) {
  const std::string& name = temporaryName_;
  handle_ = createNew(place.folder(), name, place.file);
  if (!handle_) {
    removeName(place.folder(), name, place.file);
    handle_ = createNew(place.folder(), name, place.file);
    if (!handle_) throwErrno(place.file, "can't create " + name);
  }
  try {
    // Locked, it is not taken for a dead writer's.
    if (retried([&] { return ::flock(handle_.get(), LOCK_EX | LOCK_NB); }) != 0 && errno != EWOULDBLOCK) {
      throwErrno(place.file, "can't lock " + name);
    }
    setMode(handle_, name, place.file);
    writeWhole(handle_.get(), bytes, place.file);
    sync(handle_.get(), place.file);
  } catch (...) {
    tryToRemoveName(place.folder(), name);
    throw;
  }
}

NextVersion::~NextVersion() {
  if (isLeft_) tryToRemoveName(place_.folder(), temporaryName_);
}

bool NextVersion::move(unsigned flags) const {
  return retried([&] {
           return ::renameat2(place_.folder(), temporaryName_.c_str(), place_.folder(), place_.name().c_str(), flags);
         }) == 0;
}

bool NextVersion::commit(const std::optional<FileVersion>& expected) {
  const FolderLock folder(place_);
  const std::optional<FileVersion> there = place_.version();
  if (there.has_value() != expected.has_value()) return false;
  if (there && !there->hasSameContents(*expected)) return false;

  // The two names are exchanged rather than one file renamed over the other, so that what was replaced can be looked
  // at.
  if (move(expected ? RENAME_EXCHANGE : RENAME_NOREPLACE)) {
    isLeft_ = false;
    unlock(handle_);
    if (!expected) return true;
    std::optional<FileVersion> replaced;
    try {
      replaced = versionAt(place_.folder(), temporaryName_, place_.file);
    } catch (const FileError&) {
      static_cast<void>(putBack());
      throw;
    }
    if (replaced && !replaced->hasSameContents(*expected)) return putBack();
    // Where it can't be removed at once, it is tried again at the end.
    isLeft_ = !tryToRemoveName(place_.folder(), temporaryName_);
    return true;
  }
  if (errno == ENOENT || errno == EEXIST) return false;
  if (!cannotExchange(errno) || !move(0)) throwErrno(place_.file, "can't replace it");
  isLeft_ = false;
  unlock(handle_);
  return true;
}

/// Gives the file back its name after the exchange, and returns false. A version that yet another rename has put in
/// place meanwhile is newer, and gets the name.
bool NextVersion::putBack() {
  const FileVersion ours = versionOf(handle_.get(), place_.file);
  for (int times = 0; times < 2; ++times) {
    if (!move(RENAME_EXCHANGE)) throwErrno(place_.file, "can't put back what another program wrote");
    const std::optional<FileVersion> other = versionAt(place_.folder(), temporaryName_, place_.file);
    if (!other || other->isSameFile(ours)) break;
  }
  isLeft_ = true;
  return false;
}

SafetyCopy::SafetyCopy(const DomainPlace& place, const std::string& stem, const FileDescriptor& source,
                       const std::string& name)
    : place_(place), stem_(stem) {
  const FileVersion version = versionOf(source.get(), place.file);
  const std::optional<FileVersion> named = name.empty() ? std::nullopt : versionAt(place.folder(), name, place.file);
  bool byLink = named && named->isSameFile(version);
  const std::vector<int> earlier = copies(place, stem);
  const int last = earlier.empty() ? 0 : earlier.back();
  // A writer that died may just have made it.
  const auto isThere = [&](int number) {
    copyName_ = stem + "-" + std::to_string(number);
    const std::optional<FileVersion> there = versionAt(place.folder(), copyName_, place.file);
    return there && there->isSameFile(version);
  };
  if (last != 0 && isThere(last)) isKept_ = true;
  for (int number = last + 1; !isKept_; ++number) {
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

void SafetyCopy::keep() {
  isKept_ = true;
  constexpr std::size_t kMostCopies = 10;
  try {
    const std::vector<int> numbers = copies(place_, stem_);
    for (std::size_t index = 0; index + kMostCopies < numbers.size(); ++index) {
      tryToRemoveName(place_.folder(), stem_ + "-" + std::to_string(numbers[index]));
    }
  } catch (const FileError&) {
    // One too many is no reason to fail: the next copy tries again.
  }
}

void removeLeftovers(const DomainPlace& place) {
  try {
    const std::vector<std::string> names = namesWithPrefix(place, place.temporaryStem());
    if (names.empty()) return;
    const FileDescriptor lock = openLock(place);
    if (!tryLock(lock, place)) return;
    // No writer is exchanging names, and the files of those that are writing are locked.
    const FolderLock folder(place);
    for (const std::string& name : names) {
      constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
      const FileDescriptor left(retried([&] { return ::openat(place.folder(), name.c_str(), kFlags); }));
      if (left && !tryLock(left, place)) continue;
      tryToRemoveName(place.folder(), name);
    }
    unlock(lock);
  } catch (const FileError&) {
    // No reason not to read the domain: the next write removes it, or says why it can't.
  }
}

void removeFlushedVersion(const DomainPlace& place) {
  tryToRemoveName(place.folder(), place.flushedName());
}

}  // namespace quellar::host::linux

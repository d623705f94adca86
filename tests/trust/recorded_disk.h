// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "host/linux/file_descriptor.h"
#include "support/temporary_folder.h"

namespace quellar::tests {

/// What a file system asked its device to do.
struct DiskAction {
  enum class Kind { Write, Flush };
  Kind kind = Kind::Write;
  std::uint64_t offset = 0;
  std::string bytes;
};

/// A kind of file system, and how its image is made and mounted.
struct FileSystemKind {
  std::string name;
  /// The program that makes it, and its arguments before the image.
  std::vector<std::string> maker;
  std::uint64_t size = 0;
  /// Mount options for an image of which another copy may have been mounted before.
  std::string options;
};
void PrintTo(const FileSystemKind& kind, std::ostream* stream);
[[nodiscard]] const std::vector<FileSystemKind>& fileSystemKinds();

/// A real file system on a device that records each write and each flush in order, and that can be slow or fail.
///
/// The device is one file of a FUSE server in a process of its own, with a loop device on it. Nothing is cached below
/// the file system: what the log does not hold has not reached the device. All of it lies in a mount namespace that the
/// process enters for good, and goes with it.
class RecordedDisk {
 public:
  /// Why this machine allows no such disk; "" where it does.
  [[nodiscard]] static std::string whyNot(const FileSystemKind& kind);

  explicit RecordedDisk(const FileSystemKind& kind);
  ~RecordedDisk();
  RecordedDisk(const RecordedDisk&) = delete;
  RecordedDisk& operator=(const RecordedDisk&) = delete;

  /// Where the file system is mounted.
  [[nodiscard]] std::filesystem::path path() const { return folder_.path() / "mounted"; }

  /// How many actions the device has been given.
  [[nodiscard]] std::size_t count() const { return shared_->actions.load(); }

  /// From now on each flush takes this long.
  void delayFlushes(std::chrono::milliseconds delay) const { shared_->flushDelay = delay.count(); }
  /// The next flushes fail, and so do the next writes of a property list; neither is recorded.
  void failFlushes(int number) const { shared_->failingFlushes = number; }
  void failPropertyLists(int number) const { shared_->failingWrites = number; }
  [[nodiscard]] int failuresLeft() const { return shared_->failingFlushes + shared_->failingWrites; }

  /// Flushes all that there is, as a start from which to cut.
  void synchronize() const;

  /// Unmounts the file system and takes what was recorded.
  [[nodiscard]] std::vector<DiskAction> takeActions();

  /// The image before the first action.
  [[nodiscard]] std::filesystem::path firstImage() const { return folder_.path() / "first.img"; }

 private:
  struct Shared {
    std::atomic<std::size_t> actions;
    std::atomic<std::int64_t> flushDelay;
    std::atomic<int> failingFlushes;
    std::atomic<int> failingWrites;
  };

  void serve(int connection) const;

  FileSystemKind kind_;
  TemporaryFolder folder_;
  Shared* shared_ = nullptr;
  pid_t server_ = -1;
};

/// The images that a power cut can leave: what the device was told to keep is kept, of what came after the last flush
/// any part is.
class CutImages {
 public:
  CutImages(FileSystemKind kind, const std::filesystem::path& firstImage, std::vector<DiskAction> actions);

  /// What lasts of the writes that were not flushed.
  enum class Rest { None, All, Some };

  /// Whether any writes are not flushed after the first `count` actions.
  [[nodiscard]] bool hasRest(std::size_t count) const;

  /// Makes the image of a cut after the first `count` actions, which must not be fewer than in the call before; mounts
  /// it; gives the path to `look`, and unmounts it. Blocks of 4 KiB are whole; which ones last is drawn from `seed`.
  template <typename Look>
  void at(std::size_t count, Rest rest, unsigned seed, const Look& look) {
    mount(count, rest, seed);
    look(mounted());
    unmount();
  }

 private:
  [[nodiscard]] std::filesystem::path mounted() const { return folder_.path() / "mounted"; }
  void mount(std::size_t count, Rest rest, unsigned seed);
  void unmount();

  FileSystemKind kind_;
  TemporaryFolder folder_;
  std::vector<DiskAction> actions_;
  /// All writes before this action are in the flushed image.
  std::size_t flushed_ = 0;
};

}  // namespace quellar::tests

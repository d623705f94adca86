// SPDX-License-Identifier: MIT

// What happens around each flush: what is on the device when the file is replaced, and what others do meanwhile.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "host/linux/file_preferences.h"
#include "host/linux/property_list/property_list.h"
#include "store_files.h"

namespace quellar::tests::flush_test {

/// Runs in place of each flush of a file or folder; returns the error number with which the flush fails, or 0.
std::function<int(bool isFolder)>& duringFlush() {
  static std::function<int(bool)> action;
  return action;
}

/// Runs after each folder that is made.
std::function<void(int parent, const char* name)>& afterMakingAFolder() {
  static std::function<void(int, const char*)> action;
  return action;
}

}  // namespace quellar::tests::flush_test

// These take the place of the C library's in this program.

extern "C" int fsync(int descriptor) {
  thread_local bool isWithin = false;
  if (const auto& action = quellar::tests::flush_test::duringFlush(); action && !isWithin) {
    isWithin = true;
    struct stat status{};
    const int error = action(::fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode));
    isWithin = false;
    if (error != 0) {
      errno = error;
      return -1;
    }
  }
  return static_cast<int>(::syscall(SYS_fsync, descriptor));
}

extern "C" int mkdirat(int parent, const char* name, mode_t mode) noexcept {
  const int result = static_cast<int>(::syscall(SYS_mkdirat, parent, name, mode));
  if (const auto& action = quellar::tests::flush_test::afterMakingAFolder(); action && result == 0)
    action(parent, name);
  return result;
}

namespace quellar::tests::flush_test {

using host::linux::DeviceRoot;
using host::linux::FilePreferences;
using host::linux::parsePropertyList;
using host::linux::StoreTrouble;
using platform::Dictionary;
using platform::Value;
namespace fs = std::filesystem;

constexpr const char* kDomain = "com.vantorick.quellar2";

class Flush : public testing::Test {
 protected:
  void SetUp() override {
    // The folders above are flushed once.
    FilePreferences(DeviceRoot(root())).setAppValue("a", Value(1), kDomain);
  }
  ~Flush() override {
    duringFlush() = nullptr;
    afterMakingAFolder() = nullptr;
  }

  [[nodiscard]] fs::path root() const { return folder_.path() / "root"; }
  [[nodiscard]] fs::path file() const { return root() / "var/mobile/Library/Preferences/com.vantorick.quellar2.plist"; }
  [[nodiscard]] Dictionary stored() const { return *parsePropertyList(readFile(file())).as<Dictionary>(); }
  [[nodiscard]] std::vector<std::string> names() const { return namesIn(file().parent_path()); }
  [[nodiscard]] FilePreferences newStore() {
    return FilePreferences(DeviceRoot(root()), [this](const StoreTrouble& trouble) { troubles_.push_back(trouble); });
  }
  [[nodiscard]] StoreTrouble trouble(StoreTrouble::Kind kind, const std::string& cause) const {
    return {kind, file().string(), cause};
  }

  TemporaryFolder folder_;
  std::vector<StoreTrouble> troubles_;
};

TEST_F(Flush, ReplacesTheFileOnceItsNextVersionIsOnTheDeviceAndThenFlushesTheFolder) {
  auto store = newStore();
  struct Flushed {
    bool isFolder;
    Dictionary stored;
    bool operator==(const Flushed&) const = default;
  };
  std::vector<Flushed> flushes;
  duringFlush() = [&](bool isFolder) {
    flushes.push_back({isFolder, stored()});
    return 0;
  };
  store.setAppValue("b", Value(2), kDomain);
  const std::vector<Flushed> expected = {{false, {{"a", 1}}}, {true, {{"a", 1}, {"b", 2}}}};
  EXPECT_EQ(flushes, expected);
}

TEST_F(Flush, FlushesTheFoldersAboveOnce) {
  const fs::path fresh = folder_.path() / "fresh";
  int folders = 0;
  duringFlush() = [&](bool isFolder) {
    folders += isFolder ? 1 : 0;
    return 0;
  };
  FilePreferences(DeviceRoot(fresh)).setAppValue("a", Value(1), kDomain);
  // Preferences, Library, mobile, var, private, the device root, and the folders in which that lies.
  EXPECT_GT(folders, 7);
  folders = 0;
  FilePreferences(DeviceRoot(fresh)).setAppValue("a", Value(2), kDomain);
  EXPECT_EQ(folders, 1);
}

TEST_F(Flush, WritesToANewFileWhatAFailedFlushWasFor) {
  auto store = newStore();
  const ino_t former = inodeOf(file());
  int flushes = 0;
  host::linux::FileDescriptor failed;
  duringFlush() = [&](bool) {
    for (const std::string& name : names()) {
      const std::string path = file().parent_path() / name;
      if (!failed && name.find(".tmp-") != std::string::npos) {
        failed = host::linux::FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
      }
    }
    return ++flushes == 1 ? EIO : 0;
  };
  store.setAppValue("b", Value(2), kDomain);
  EXPECT_EQ(inodeOf(file()), former);
  EXPECT_EQ(stored(), (Dictionary{{"a", 1}}));
  EXPECT_EQ(store.copyAppValue("b", kDomain), Value(2));
  EXPECT_EQ(names(), (std::vector<std::string>{"com.vantorick.quellar2.plist", "com.vantorick.quellar2.plist.lock"}));
  EXPECT_TRUE(store.retryUnsaved());
  EXPECT_EQ(stored(), (Dictionary{{"a", 1}, {"b", 2}}));
  EXPECT_EQ(flushes, 3);
  EXPECT_EQ(troubles_,
            (std::vector<StoreTrouble>{trouble(StoreTrouble::Kind::Write, "can't flush it: Input/output error"),
                                       trouble(StoreTrouble::Kind::Resolved, "")}));
  struct stat status{};
  ASSERT_EQ(::fstat(failed.get(), &status), 0);
  EXPECT_NE(inodeOf(file()), status.st_ino);
}

TEST_F(Flush, WritesToANewFileWhatAFailedFlushOfTheFolderWasFor) {
  auto store = newStore();
  duringFlush() = [](bool isFolder) { return isFolder ? EIO : 0; };
  store.setAppValue("b", Value(2), kDomain);
  // Held open, so that no other file gets its inode.
  const host::linux::FileDescriptor doubtful(::open(file().c_str(), O_RDONLY | O_CLOEXEC));
  const ino_t doubtfulInode = inodeOf(file());
  EXPECT_EQ(stored(), (Dictionary{{"a", 1}, {"b", 2}}));
  EXPECT_FALSE(store.retryUnsaved());
  duringFlush() = nullptr;
  EXPECT_TRUE(store.retryUnsaved());
  EXPECT_NE(inodeOf(file()), doubtfulInode);
  EXPECT_EQ(stored(), (Dictionary{{"a", 1}, {"b", 2}}));
  EXPECT_EQ(troubles_,
            (std::vector<StoreTrouble>{trouble(StoreTrouble::Kind::Write, "can't flush it: Input/output error"),
                                       trouble(StoreTrouble::Kind::Resolved, "")}));
}

TEST_F(Flush, WritesAtTheEndWhatCouldNotBeWritten) {
  int flushes = 0;
  duringFlush() = [&](bool) { return ++flushes == 1 ? ENOSPC : 0; };
  {
    auto store = newStore();
    store.setAppValue("b", Value(2), kDomain);
    EXPECT_EQ(stored(), (Dictionary{{"a", 1}}));
  }
  EXPECT_EQ(stored(), (Dictionary{{"a", 1}, {"b", 2}}));
}

TEST_F(Flush, KeepsWhatAProgramWithoutTheLockRenamesIntoPlaceMeanwhile) {
  auto store = newStore();
  int foreign = 0;
  duringFlush() = [&](bool isFolder) {
    // As often as a new version is written, up to the third time.
    if (!isFolder && foreign < 3) replaceFile(file(), plist({{"a", 1}, {"foreign", ++foreign}}));
    return 0;
  };
  store.setAppValue("b", Value(2), kDomain);
  EXPECT_EQ(stored(), (Dictionary{{"a", 1}, {"b", 2}, {"foreign", 3}}));
  EXPECT_EQ(names(), (std::vector<std::string>{"com.vantorick.quellar2.plist", "com.vantorick.quellar2.plist.lock"}));
  EXPECT_EQ(troubles_, std::vector<StoreTrouble>{});
}

TEST_F(Flush, KeepsWhatAProgramWithoutTheLockWritesInPlaceMeanwhile) {
  auto store = newStore();
  bool isDone = false;
  duringFlush() = [&](bool) {
    if (!std::exchange(isDone, true)) writeFile(file(), plist({{"a", 7}}));
    return 0;
  };
  store.setAppValue("b", Value(2), kDomain);
  EXPECT_EQ(stored(), (Dictionary{{"a", 7}, {"b", 2}}));
}

TEST_F(Flush, KeepsBothValuesWhereTheLockIsRemovedUnderAWriter) {
  auto store = newStore();
  bool isDone = false;
  duringFlush() = [&](bool) {
    if (std::exchange(isDone, true)) return 0;
    fs::remove(file().string() + ".lock");
    FilePreferences(DeviceRoot(root())).setAppValue("other", Value(3), kDomain);
    return 0;
  };
  store.setAppValue("b", Value(2), kDomain);
  EXPECT_EQ(stored(), (Dictionary{{"a", 1}, {"b", 2}, {"other", 3}}));
  EXPECT_EQ(names(), (std::vector<std::string>{"com.vantorick.quellar2.plist", "com.vantorick.quellar2.plist.lock"}));
}

TEST_F(Flush, SaysSoWhereAProgramWithoutTheLockNeverStopsReplacingTheFile) {
  int number = 0;
  {
    auto store = newStore();
    duringFlush() = [&](bool) {
      replaceFile(file(), plist({{"foreign", ++number}}));
      return 0;
    };
    store.setAppValue("b", Value(2), kDomain);
    EXPECT_EQ(troubles_,
              (std::vector<StoreTrouble>{trouble(StoreTrouble::Kind::Write, "other programs keep replacing it")}));
    EXPECT_EQ(stored(), (Dictionary{{"foreign", number}}));
    duringFlush() = nullptr;
  }
  EXPECT_EQ(stored(), (Dictionary{{"b", 2}, {"foreign", number}}));
}

TEST_F(Flush, NeverChangesTheModeOfWhatALinkLeadsTo) {
  const fs::path outside = folder_.path() / "outside";
  fs::create_directory(outside);
  fs::permissions(outside, fs::perms(0755));
  const fs::path fresh = folder_.path() / "fresh";
  afterMakingAFolder() = [&](int parent, const char* name) {
    if (std::string_view(name) != "mobile") return;
    ::unlinkat(parent, name, AT_REMOVEDIR);
    ::symlinkat(outside.c_str(), parent, name);
  };
  {
    FilePreferences store(DeviceRoot{fresh});
    store.setAppValue("a", Value(1), kDomain);
    EXPECT_FALSE(store.takeTroubles().empty());
  }
  EXPECT_EQ(modeOf(outside), 0755U);
  EXPECT_EQ(namesIn(outside), std::vector<std::string>{});
}

}  // namespace quellar::tests::flush_test

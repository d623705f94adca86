// SPDX-License-Identifier: MIT
#include "host/linux/file_preferences.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <functional>
#include <limits>
#include <memory>
#include <mutex>
#include <ostream>
#include <random>
#include <thread>

#include "store_files.h"

namespace quellar::host::linux {

void PrintTo(const StoreTrouble& trouble, std::ostream* stream) {
  static constexpr const char* kKinds[] = {"corrupt", "unreadable", "recovered", "write", "kept aside", "resolved"};
  *stream << kKinds[static_cast<int>(trouble.kind)] << " trouble with " << trouble.file << ": " << trouble.cause;
}

}  // namespace quellar::host::linux

namespace quellar::tests {
namespace file_preferences_test {

using host::linux::DeviceRoot;
using host::linux::FilePreferences;
using host::linux::FilePreferencesOptions;
using host::linux::parsePropertyList;
using host::linux::StoreTrouble;
using platform::Array;
using platform::Dictionary;
using platform::Value;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr const char* kDomain = "com.vantorick.quellar2";
constexpr const char* kFile = "com.vantorick.quellar2.plist";

std::string xmlPlist(const std::string& body) {
  return "<plist version=\"1.0\"><dict>" + body + "</dict></plist>";
}

class FilePreferencesTest : public testing::Test {
 protected:
  [[nodiscard]] fs::path rootFolder() const { return folder_.path() / "root"; }
  [[nodiscard]] fs::path preferences() const { return rootFolder() / "var/mobile/Library/Preferences"; }
  [[nodiscard]] fs::path file() const { return preferences() / kFile; }
  [[nodiscard]] fs::path beside(const std::string& extension) const { return file().string() + extension; }

  /// A store as one more process has it; its troubles are collected.
  [[nodiscard]] std::unique_ptr<FilePreferences> newStore(FilePreferencesOptions options = {}) {
    return std::make_unique<FilePreferences>(
        DeviceRoot(rootFolder()), [this](const StoreTrouble& trouble) { troubles_.push_back(trouble); }, options);
  }

  /// What the holder of the lock calls the next version.
  [[nodiscard]] fs::path temporaryFile() const { return beside(".tmp-" + std::to_string(inodeOf(beside(".lock")))); }

  [[nodiscard]] Value stored() const { return parsePropertyList(readFile(file())); }
  [[nodiscard]] StoreTrouble writeTrouble(const std::string& cause) const {
    return {StoreTrouble::Kind::Write, file().string(), cause};
  }
  [[nodiscard]] StoreTrouble corruptTrouble(const std::string& cause) const {
    return {StoreTrouble::Kind::Corrupt, file().string(), cause};
  }
  [[nodiscard]] StoreTrouble unreadableTrouble(const std::string& cause) const {
    return {StoreTrouble::Kind::Unreadable, file().string(), cause};
  }

  TemporaryFolder folder_;
  std::vector<StoreTrouble> troubles_;
};

/// Runs `work` in a process of its own; true where it ends with `work` having returned true.
bool inProcess(const std::function<bool()>& work) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(work() ? 0 : 1);
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// Gives up the rights of root for a while, so that permission bits hold; nothing where there are none to give up.
class ScopedUnprivileged {
 public:
  explicit ScopedUnprivileged(const fs::path& folder) {
    constexpr uid_t kNobody = 65534;
    if (::geteuid() != 0) return;
    EXPECT_EQ(::chown(folder.c_str(), kNobody, kNobody), 0);
    EXPECT_EQ(::seteuid(kNobody), 0);
  }
  ~ScopedUnprivileged() { static_cast<void>(::seteuid(::getuid())); }
  ScopedUnprivileged(const ScopedUnprivileged&) = delete;
  ScopedUnprivileged& operator=(const ScopedUnprivileged&) = delete;
};

/// Lets files grow to `bytes` only; a longer write fails as on a full disk.
class ScopedFileLimit {
 public:
  explicit ScopedFileLimit(rlim_t bytes) : formerHandler_(std::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &former_);
    const rlimit limit{bytes, former_.rlim_max};
    EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
  }
  ~ScopedFileLimit() {
    ::setrlimit(RLIMIT_FSIZE, &former_);
    std::signal(SIGXFSZ, formerHandler_);
  }
  ScopedFileLimit(const ScopedFileLimit&) = delete;
  ScopedFileLimit& operator=(const ScopedFileLimit&) = delete;

 private:
  rlimit former_{};
  void (*formerHandler_)(int);
};

// The file.

TEST_F(FilePreferencesTest, WritesABinaryPropertyListAndALockFileAndNothingElse) {
  const auto store = newStore();
  store->setAppValue("StatusBar_Defaults", Value(Dictionary{{"disablesBatterySTBIcon", true}}), kDomain);
  EXPECT_EQ(readFile(file()).substr(0, 8), "bplist00");
  EXPECT_EQ(stored(), Value(Dictionary{{"StatusBar_Defaults", Dictionary{{"disablesBatterySTBIcon", true}}}}));
  EXPECT_EQ(namesIn(preferences()), (std::vector<std::string>{kFile, std::string(kFile) + ".lock"}));
  EXPECT_EQ(troubles_, std::vector<StoreTrouble>{});
}

TEST_F(FilePreferencesTest, ReadingMakesNothing) {
  const auto store = newStore();
  EXPECT_EQ(store->copyAppValue("key", kDomain), std::nullopt);
  EXPECT_EQ(store->readTrouble(kDomain), std::nullopt);
  store->appSynchronize(kDomain);
  EXPECT_FALSE(fs::exists(rootFolder()));
}

TEST_F(FilePreferencesTest, MakesFilesAndFoldersForTheirOwnerAloneWhateverTheUmask) {
  for (const mode_t umask : {0U, 0777U}) {
    const fs::path root = folder_.path() / std::to_string(umask);
    const mode_t former = ::umask(umask);
    {
      FilePreferences store{DeviceRoot(root), {}};
      store.setAppValue("key", Value(1), kDomain);
      store.appSynchronize(kDomain);
    }
    ::umask(former);
    for (const char* made : {"", "private", "private/var", "private/var/mobile", "private/var/mobile/Library",
                             "private/var/mobile/Library/Preferences"}) {
      EXPECT_EQ(modeOf(root / made), 0700U) << made;
    }
    const fs::path made = root / "var/mobile/Library/Preferences";
    for (const char* extension : {"", ".lock"}) {
      EXPECT_EQ(modeOf((made / kFile).string() + extension), 0600U) << extension;
    }
  }
}

TEST_F(FilePreferencesTest, TakesAFileForItsOwnerAloneInThePlaceOfOneForAll) {
  writeFile(file(), plist({{"a", 1}}));
  fs::permissions(file(), fs::perms(0644));
  newStore()->setAppValue("b", Value(2), kDomain);
  EXPECT_EQ(modeOf(file()), 0600U);
  EXPECT_EQ(stored(), Value(Dictionary{{"a", 1}, {"b", 2}}));
}

TEST_F(FilePreferencesTest, ReadsXmlAndWritesBinaryWithAllOtherKeysKept) {
  writeFile(file(), xmlPlist("<key>a</key><real>1.5</real><key>b</key><array><date>2001-01-01T00:00:01Z</date>"
                             "</array><key>c</key><integer>1</integer>"));
  const auto store = newStore();
  EXPECT_EQ(store->copyAppValue("a", kDomain), Value(1.5));
  store->setAppValue("c", Value(true), kDomain);
  EXPECT_EQ(readFile(file()).substr(0, 8), "bplist00");
  EXPECT_EQ(stored(), Value(Dictionary{{"a", 1.5}, {"b", Array{platform::Date{1}}}, {"c", true}}));
}

TEST_F(FilePreferencesTest, RefusesDomainNamesThatAreNoFileNames) {
  const auto store = newStore();
  for (const char* name : {"", "..", "../escape", "a/b", "/etc/passwd", "a..b"}) {
    troubles_.clear();
    store->setAppValue("key", Value(1), name);
    ASSERT_FALSE(troubles_.empty()) << name;
    EXPECT_EQ(troubles_.back().cause, "no domain can have this name") << name;
    EXPECT_EQ(store->takeTroubles().size(), 1U) << name;
    ASSERT_TRUE(store->readTrouble(name)) << name;
    EXPECT_EQ(store->readTrouble(name)->cause, "no domain can have this name") << name;
    EXPECT_EQ(store->copyAppValue("key", name), Value(1)) << name;
  }
  EXPECT_FALSE(fs::exists(rootFolder()));
}

// Other processes.

TEST_F(FilePreferencesTest, ReadsWhatAnotherStoreWrote) {
  const auto one = newStore();
  const auto other = newStore();
  for (int round = 0; round < 50; ++round) {
    one->setAppValue("one", Value(round), kDomain);
    EXPECT_EQ(other->copyAppValue("one", kDomain), Value(round));
    other->setAppValue("other", Value(-round), kDomain);
    EXPECT_EQ(one->copyAppValue("other", kDomain), Value(-round));
  }
  EXPECT_EQ(stored(), Value(Dictionary{{"one", 49}, {"other", -49}}));
}

TEST_F(FilePreferencesTest, SeesQuickUpdatesOfTheSameSizeAndTime) {
  const auto store = newStore();
  const timespec sameTime[2] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
  for (int round = 0; round < 100; ++round) {
    const std::string bytes = plist({{"key", round % 10}});
    if (round % 2 == 0) {
      writeFile(file(), bytes);
    } else {
      replaceFile(file(), bytes);
    }
    ASSERT_EQ(::utimensat(AT_FDCWD, file().c_str(), sameTime, 0), 0);
    ASSERT_EQ(store->copyAppValue("key", kDomain), Value(round % 10)) << round;
  }
}

TEST_F(FilePreferencesTest, ReadsAnEmptyDomainAgainWhenTheFileIsRemoved) {
  const auto store = newStore();
  store->setAppValue("key", Value(1), kDomain);
  store->appSynchronize(kDomain);
  fs::remove(file());
  EXPECT_EQ(store->copyAppValue("key", kDomain), std::nullopt);
  EXPECT_EQ(newStore()->copyAppValue("key", kDomain), std::nullopt);
  EXPECT_EQ(store->readTrouble(kDomain), std::nullopt);
  store->setAppValue("other", Value(2), kDomain);
  EXPECT_EQ(stored(), Value(Dictionary{{"other", 2}}));
}

TEST_F(FilePreferencesTest, LosesNoKeyWhenManyProcessesWriteAtOnce) {
  constexpr int kProcesses = 6;
  constexpr int kWrites = 60;
  std::vector<pid_t> children;
  for (int process = 0; process < kProcesses; ++process) {
    const pid_t child = ::fork();
    if (child == 0) {
      bool isRight = true;
      {
        FilePreferences store{DeviceRoot(rootFolder()), {}, {.lockLimit = 60s}};
        const std::string key = "key" + std::to_string(process);
        for (int write = 1; write <= kWrites; ++write) {
          store.setAppValue(key, Value(write), kDomain);
          isRight = isRight && store.copyAppValue(key, kDomain) == Value(write);
        }
        isRight = isRight && store.takeTroubles().empty();
      }
      ::_exit(isRight ? 0 : 1);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  }
  Dictionary expected;
  for (int process = 0; process < kProcesses; ++process) expected["key" + std::to_string(process)] = kWrites;
  EXPECT_EQ(stored(), Value(expected));
  EXPECT_EQ(namesIn(preferences()), (std::vector<std::string>{kFile, std::string(kFile) + ".lock"}));
}

TEST_F(FilePreferencesTest, LeavesAWholeFileAndNothingTemporaryWhenAWriterIsKilled) {
  std::mt19937 random(7);
  newStore()->setAppValue("kept", Value("untouched"), kDomain);
  std::int64_t last = 0;
  for (int death = 0; death < 60; ++death) {
    const pid_t child = ::fork();
    if (child == 0) {
      FilePreferences store{DeviceRoot(rootFolder()), {}, {.lockLimit = 5s}};
      for (std::int64_t write = last + 1;; ++write) store.setAppValue("count", Value(write), kDomain);
    }
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 8000));
    ASSERT_EQ(::kill(child, SIGKILL), 0);
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);

    const auto next = newStore({.lockLimit = 0s});
    const Value count = next->copyAppValue("count", kDomain).value_or(0);
    EXPECT_EQ(next->copyAppValue("kept", kDomain), Value("untouched"));
    EXPECT_FALSE(fs::exists(beside(".tmp")));
    EXPECT_GE(count.integerValue(), last);
    last = count.integerValue();
    next->setAppValue("after", Value(death), kDomain);
    EXPECT_EQ(stored(), Value(last == 0 ? Dictionary{{"after", death}, {"kept", "untouched"}}
                                        : Dictionary{{"after", death}, {"count", last}, {"kept", "untouched"}}));
  }
  EXPECT_GT(last, 0);
  EXPECT_EQ(troubles_, std::vector<StoreTrouble>{});
}

TEST_F(FilePreferencesTest, RemovesWhatADeadWriterLeftAtTheFirstRead) {
  writeFile(file(), plist({{"a", 1}}));
  writeFile(beside(".tmp"), "half");
  const auto store = newStore();
  EXPECT_EQ(store->copyAppValue("a", kDomain), Value(1));
  EXPECT_FALSE(fs::exists(beside(".tmp")));
}

TEST_F(FilePreferencesTest, WritesOverWhatADeadWriterLeftSince) {
  const auto store = newStore();
  store->setAppValue("a", Value(1), kDomain);
  writeFile(temporaryFile(), "half");
  store->setAppValue("b", Value(2), kDomain);
  EXPECT_EQ(stored(), Value(Dictionary{{"a", 1}, {"b", 2}}));
  EXPECT_FALSE(fs::exists(temporaryFile()));
}

TEST_F(FilePreferencesTest, LeavesTheTemporaryFileOfALivingWriterAlone) {
  writeFile(file(), plist({{"a", 1}}));
  writeFile(beside(".lock"), "");
  const int lock = ::open(beside(".lock").c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(::flock(lock, LOCK_EX), 0);
  writeFile(beside(".tmp"), "half");
  EXPECT_EQ(newStore()->copyAppValue("a", kDomain), Value(1));
  EXPECT_TRUE(fs::exists(beside(".tmp")));
  ::close(lock);
}

TEST_F(FilePreferencesTest, SaysSoWhenTheLockIsHeldForTooLong) {
  newStore()->setAppValue("a", Value(1), kDomain);
  const int lock = ::open(beside(".lock").c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(::flock(lock, LOCK_EX), 0);
  const auto store = newStore({.lockLimit = 100ms});
  const auto start = std::chrono::steady_clock::now();
  store->setAppValue("b", Value(2), kDomain);
  const auto took = std::chrono::steady_clock::now() - start;
  EXPECT_GE(took, 100ms);
  EXPECT_LT(took, 5s);
  const std::vector<StoreTrouble> expected = {
      writeTrouble("another program has kept com.vantorick.quellar2.plist.lock locked for 100 ms")};
  EXPECT_EQ(troubles_, expected);
  EXPECT_EQ(stored(), Value(Dictionary{{"a", 1}}));
  ASSERT_EQ(::flock(lock, LOCK_UN), 0);
  ::close(lock);
  store->setAppValue("c", Value(3), kDomain);
  EXPECT_EQ(stored(), Value(Dictionary{{"a", 1}, {"b", 2}, {"c", 3}}));
}

TEST_F(FilePreferencesTest, WaitsForTheLockAndThenWrites) {
  newStore()->setAppValue("a", Value(1), kDomain);
  const int lock = ::open(beside(".lock").c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(::flock(lock, LOCK_EX), 0);
  std::thread holder([&] {
    std::this_thread::sleep_for(50ms);
    ::close(lock);
  });
  newStore()->setAppValue("b", Value(2), kDomain);
  holder.join();
  EXPECT_EQ(stored(), Value(Dictionary{{"a", 1}, {"b", 2}}));
  EXPECT_EQ(troubles_, std::vector<StoreTrouble>{});
}

TEST_F(FilePreferencesTest, GetsOverALockHolderThatWasKilled) {
  newStore()->setAppValue("a", Value(1), kDomain);
  int ready[2];
  ASSERT_EQ(::pipe(ready), 0);
  const pid_t child = ::fork();
  if (child == 0) {
    const int lock = ::open(beside(".lock").c_str(), O_RDONLY);
    ::flock(lock, LOCK_EX);
    static_cast<void>(!::write(ready[1], "x", 1));
    ::pause();
  }
  char byte = 0;
  ASSERT_EQ(::read(ready[0], &byte, 1), 1);
  ASSERT_EQ(::kill(child, SIGKILL), 0);
  ASSERT_EQ(::waitpid(child, nullptr, 0), child);
  newStore({.lockLimit = 0s})->setAppValue("b", Value(2), kDomain);
  EXPECT_EQ(stored(), Value(Dictionary{{"a", 1}, {"b", 2}}));
  ::close(ready[0]);
  ::close(ready[1]);
}

// Corrupt files.

struct CorruptFile {
  const char* name;
  std::string bytes;
  const char* cause;
};

void PrintTo(const CorruptFile& corrupt, std::ostream* stream) {
  *stream << corrupt.name;
}

std::vector<CorruptFile> corruptFiles() {
  std::string deepXml;
  for (int level = 0; level < 10'000; ++level) deepXml += "<array>";
  std::vector<std::string> deep = {"\xD1" + reference(1) + reference(2),
                                   "\x51"
                                   "a"};
  for (std::size_t level = 2; level < 10'000; ++level) deep.push_back("\xA1" + reference(level + 1));
  deep.emplace_back("\xA0");
  const std::string whole = plist({{"key", "value"}});
  return {
      {"Garbage", "garbage", "not a property list"},
      {"Empty", "", "not a property list"},
      {"Zeros", std::string(4096, '\0'), "not a property list"},
      {"Truncated", whole.substr(0, 40), "damaged binary property list: it is cut off"},
      {"ArrayAtTheTop", "<plist><array/></plist>", "its top is not a dictionary"},
      {"DeepXml", xmlPlist("<key>a</key>" + deepXml), "deeper than 128 levels"},
      {"DeepBinary", binaryPlist(deep), "deeper than 128 levels"},
      {"Latin1", xmlPlist("<key>a</key><string>\xE9</string>"), "text is not UTF-8"},
      {"NotFinite", xmlPlist("<key>a</key><real>nan</real>"), "a number is not finite"},
      {"Huge", std::string((std::size_t{16} << 20) + 1, ' '), "larger than 16 MiB"},
  };
}

class CorruptDomain : public FilePreferencesTest, public testing::WithParamInterface<CorruptFile> {};

INSTANTIATE_TEST_SUITE_P(Each, CorruptDomain, testing::ValuesIn(corruptFiles()),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_P(CorruptDomain, ReadsAsEmptySaysSoAndStaysWhereItIs) {
  writeFile(file(), GetParam().bytes);
  const auto store = newStore();
  EXPECT_EQ(store->copyAppValue("a", kDomain), std::nullopt);
  EXPECT_EQ(store->readTrouble(kDomain), corruptTrouble(GetParam().cause));
  EXPECT_EQ(store->copyAppValue("key", kDomain), std::nullopt);
  EXPECT_EQ(troubles_, std::vector<StoreTrouble>{corruptTrouble(GetParam().cause)});
  EXPECT_EQ(namesIn(preferences()), std::vector<std::string>{kFile});
  EXPECT_EQ(readFile(file()), GetParam().bytes);
}

TEST_P(CorruptDomain, IsSetAsideByTheFirstWrite) {
  writeFile(file(), GetParam().bytes);
  const auto store = newStore();
  store->setAppValue("key", Value(1), kDomain);
  EXPECT_EQ(stored(), Value(Dictionary{{"key", 1}}));
  EXPECT_EQ(readFile(beside(".corrupt-1")), GetParam().bytes);
  EXPECT_EQ(store->readTrouble(kDomain), std::nullopt);
  EXPECT_EQ(store->takeTroubles(), std::vector<StoreTrouble>{});
  store->setAppValue("key", Value(2), kDomain);
  EXPECT_EQ(namesIn(preferences()),
            (std::vector<std::string>{kFile, std::string(kFile) + ".corrupt-1", std::string(kFile) + ".lock"}));
}

TEST_F(FilePreferencesTest, SetsACorruptFileAsideUnderANumberHigherThanAllOthers) {
  writeFile(beside(".corrupt-1"), "an old one");
  writeFile(beside(".corrupt-3"), "another");
  writeFile(file(), "garbage");
  newStore()->setAppValue("key", Value(1), kDomain);
  EXPECT_EQ(readFile(beside(".corrupt-1")), "an old one");
  EXPECT_EQ(readFile(beside(".corrupt-3")), "another");
  EXPECT_EQ(readFile(beside(".corrupt-4")), "garbage");
  EXPECT_FALSE(fs::exists(beside(".corrupt-2")));
}

TEST_F(FilePreferencesTest, CopiesTheFileBeforeADictionaryTakesThePlaceOfAnotherValue) {
  const std::string former = plist({{"Dock_Defaults", "odd"}, {"other", 1}});
  writeFile(file(), former);
  const auto store = newStore();
  EXPECT_EQ(store->copyAppValue("Dock_Defaults", kDomain), Value("odd"));
  store->setAppValue("Dock_Defaults", Value(Dictionary{{"a", 1}}), kDomain);
  EXPECT_EQ(readFile(beside(".kept-1")), former);
  EXPECT_EQ(stored(), Value(Dictionary{{"Dock_Defaults", Dictionary{{"a", 1}}}, {"other", 1}}));
  store->setAppValue("Dock_Defaults", Value(Dictionary{{"a", 2}}), kDomain);
  EXPECT_FALSE(fs::exists(beside(".kept-2")));
}

TEST_F(FilePreferencesTest, MakesNoCopyWhereAValueReplacesOneOfItsOwnType) {
  const auto store = newStore();
  store->setAppValue("Dock_Defaults", Value(Dictionary{{"a", 1}}), kDomain);
  store->setAppValue("Dock_Defaults", Value(Dictionary{}), kDomain);
  store->setAppValue("QLREnableKey", Value(true), kDomain);
  store->setAppValue("QLREnableKey", Value(0), kDomain);
  store->setAppValue("QLREnableKey", std::nullopt, kDomain);
  EXPECT_EQ(namesIn(preferences()), (std::vector<std::string>{kFile, std::string(kFile) + ".lock"}));
}

// Files that can't be opened or replaced.

TEST_F(FilePreferencesTest, NeverReplacesWhatIsNoRegularFile) {
  fs::create_directories(file());
  const auto store = newStore();
  EXPECT_EQ(store->copyAppValue("key", kDomain), std::nullopt);
  EXPECT_EQ(store->readTrouble(kDomain), unreadableTrouble("is not a regular file"));
  store->setAppValue("key", Value(1), kDomain);
  EXPECT_EQ(store->takeTroubles(), std::vector<StoreTrouble>{writeTrouble("is not a regular file")});
  EXPECT_TRUE(fs::is_directory(file()));
  EXPECT_EQ(namesIn(preferences()), (std::vector<std::string>{kFile, std::string(kFile) + ".lock"}));
  EXPECT_EQ(store->copyAppValue("key", kDomain), Value(1));
}

TEST_F(FilePreferencesTest, DoesNotHangOnAPipe) {
  fs::create_directories(preferences());
  ASSERT_EQ(::mkfifo(file().c_str(), 0600), 0);
  const auto store = newStore();
  EXPECT_EQ(store->readTrouble(kDomain), unreadableTrouble("is not a regular file"));
  store->setAppValue("key", Value(1), kDomain);
  EXPECT_EQ(store->takeTroubles(), std::vector<StoreTrouble>{writeTrouble("is not a regular file")});
}

TEST_F(FilePreferencesTest, NeverReplacesAFileThatItMayNotRead) {
  const ScopedUnprivileged unprivileged(folder_.path());
  writeFile(file(), plist({{"a", 1}}));
  fs::permissions(file(), fs::perms::none);
  const ino_t inode = inodeOf(file());
  const auto store = newStore();
  EXPECT_EQ(store->readTrouble(kDomain), unreadableTrouble("Permission denied"));
  store->setAppValue("b", Value(2), kDomain);
  EXPECT_EQ(store->takeTroubles(), std::vector<StoreTrouble>{writeTrouble("Permission denied")});
  EXPECT_EQ(inodeOf(file()), inode);
  // Once it can be read again, the next write brings both.
  fs::permissions(file(), fs::perms::owner_read);
  store->setAppValue("c", Value(3), kDomain);
  EXPECT_EQ(stored(), Value(Dictionary{{"a", 1}, {"b", 2}, {"c", 3}}));
  EXPECT_EQ(store->takeTroubles(), std::vector<StoreTrouble>{});
}

TEST_F(FilePreferencesTest, NeverWritesOverAValueThatCouldNotBeRead) {
  const ScopedUnprivileged unprivileged(folder_.path());
  writeFile(file(), plist({{"Dock_Defaults", Dictionary{{"a", 1}, {"b", 2}}}}));
  fs::permissions(file(), fs::perms::none);
  const auto store = newStore();
  EXPECT_EQ(store->copyAppValue("Dock_Defaults", kDomain), std::nullopt);
  EXPECT_FALSE(store->wasRead(kDomain));
  fs::permissions(file(), fs::perms::owner_read);
  // The page began with an empty dictionary and now writes it whole.
  store->setAppValue("Dock_Defaults", Value(Dictionary{{"c", 3}}), kDomain);
  EXPECT_EQ(stored(), Value(Dictionary{{"Dock_Defaults", Dictionary{{"a", 1}, {"b", 2}, {"c", 3}}}}));
  store->setAppValue("Dock_Defaults", Value(Dictionary{{"c", 4}}), kDomain);
  EXPECT_EQ(stored(), Value(Dictionary{{"Dock_Defaults", Dictionary{{"a", 1}, {"b", 2}, {"c", 4}}}}));
  // Once it has read the value, it is the page's to replace.
  EXPECT_TRUE(store->copyAppValue("Dock_Defaults", kDomain));
  EXPECT_TRUE(store->wasRead(kDomain));
  store->setAppValue("Dock_Defaults", Value(Dictionary{{"d", 5}}), kDomain);
  EXPECT_EQ(stored(), Value(Dictionary{{"Dock_Defaults", Dictionary{{"d", 5}}}}));
}

TEST_F(FilePreferencesTest, DoesNotTakeATornDomainForEmptyWhereTheKeptVersionCannotBeOpened) {
  const ScopedUnprivileged unprivileged(folder_.path());
  writeFile(file(), "torn");
  writeFile(beside(".flushed"), plist({{"a", 1}}));
  fs::permissions(beside(".flushed"), fs::perms::none);
  const std::string cause = "can't open com.vantorick.quellar2.plist.flushed: Permission denied";
  const auto store = newStore();
  EXPECT_EQ(store->readTrouble(kDomain), unreadableTrouble(cause));
  store->setAppValue("b", Value(2), kDomain);
  EXPECT_EQ(store->takeTroubles(), std::vector<StoreTrouble>{writeTrouble(cause)});
  EXPECT_EQ(readFile(file()), "torn");
  EXPECT_FALSE(fs::exists(beside(".corrupt-1")));
  // Once it can be opened again, nothing is lost.
  fs::permissions(beside(".flushed"), fs::perms::owner_read);
  store->setAppValue("c", Value(3), kDomain);
  EXPECT_EQ(stored(), Value(Dictionary{{"a", 1}, {"b", 2}, {"c", 3}}));
}

TEST_F(FilePreferencesTest, TellsOfAFolderThatItMayNotWriteTo) {
  const ScopedUnprivileged unprivileged(folder_.path());
  newStore()->setAppValue("a", Value(1), kDomain);
  fs::permissions(preferences(), fs::perms(0500));
  const std::string before = readFile(file());
  const auto store = newStore();
  store->setAppValue("b", Value(2), kDomain);
  EXPECT_EQ(store->takeTroubles(), std::vector<StoreTrouble>{writeTrouble(
                                       "can't create " + temporaryFile().filename().string() + ": Permission denied")});
  EXPECT_EQ(readFile(file()), before);
  fs::permissions(preferences(), fs::perms(0700));
}

TEST_F(FilePreferencesTest, TellsOfAFileInThePlaceOfTheFolder) {
  writeFile(preferences(), "no folder");
  const auto store = newStore();
  EXPECT_EQ(store->readTrouble(kDomain), unreadableTrouble("Not a directory"));
  store->setAppValue("key", Value(1), kDomain);
  const std::vector<StoreTrouble> expected = {unreadableTrouble("Not a directory"),
                                              {StoreTrouble::Kind::Write, preferences().string(), "Not a directory"}};
  EXPECT_EQ(store->takeTroubles(), expected);
  EXPECT_EQ(readFile(preferences()), "no folder");
}

TEST_F(FilePreferencesTest, LeavesTheFileAndNothingTemporaryWhenTheDiskIsFull) {
  newStore()->setAppValue("a", Value(1), kDomain);
  const std::string before = readFile(file());
  const auto store = newStore();
  {
    const ScopedFileLimit limit(before.size());
    store->setAppValue("long", Value(std::string(5000, 'x')), kDomain);
  }
  EXPECT_EQ(store->takeTroubles(), std::vector<StoreTrouble>{writeTrouble("File too large")});
  EXPECT_EQ(store->takeTroubles(), std::vector<StoreTrouble>{});
  EXPECT_EQ(readFile(file()), before);
  EXPECT_EQ(namesIn(preferences()), (std::vector<std::string>{kFile, std::string(kFile) + ".lock"}));
}

TEST_F(FilePreferencesTest, LeavesNothingBehindWhenTheFileCannotBeReplaced) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can make a file that its folder's other users may not replace";
  // In a folder with the sticky bit everyone may make files, and rename over their own ones only.
  writeFile(file(), "garbage");
  fs::permissions(preferences(), fs::perms(01777));
  const ScopedUnprivileged unprivileged(folder_.path());
  const auto store = newStore();
  store->setAppValue("a", Value(1), kDomain);
  EXPECT_EQ(store->takeTroubles(),
            std::vector<StoreTrouble>{writeTrouble("can't replace it: Operation not permitted")});
  EXPECT_EQ(readFile(file()), "garbage");
  EXPECT_EQ(namesIn(preferences()), (std::vector<std::string>{kFile, std::string(kFile) + ".lock"}));
}

TEST_F(FilePreferencesTest, LeavesNothingBehindWhenTheCopyOfACorruptFileFails) {
  const fs::path other = rootFolder() / "private/var/mobile/Library/Preferences" / kFile;
  writeFile(other, std::string(5000, 'x'));
  fs::create_directories(rootFolder() / "var");
  const auto store = newStore();
  {
    const ScopedFileLimit limit(1000);
    store->setAppValue("a", Value(1), kDomain);
  }
  EXPECT_EQ(store->takeTroubles(), std::vector<StoreTrouble>{writeTrouble("File too large")});
  EXPECT_EQ(namesIn(preferences()), std::vector<std::string>{std::string(kFile) + ".lock"});
  EXPECT_EQ(readFile(other), std::string(5000, 'x'));
}

TEST_F(FilePreferencesTest, KeepsWhatCouldNotBeWrittenAndWritesItWithTheNextValue) {
  newStore()->setAppValue("a", Value(1), kDomain);
  const auto store = newStore();
  const auto other = newStore();
  {
    const ScopedFileLimit limit(10);
    store->setAppValue("b", Value(2), kDomain);
    store->setAppValue("a", std::nullopt, kDomain);
    EXPECT_EQ(store->copyAppValue("b", kDomain), Value(2));
    EXPECT_EQ(store->copyAppValue("a", kDomain), std::nullopt);
    EXPECT_EQ(other->copyAppValue("b", kDomain), std::nullopt);
    EXPECT_EQ(other->copyAppValue("a", kDomain), Value(1));
  }
  store->setAppValue("c", Value(3), kDomain);
  EXPECT_EQ(stored(), Value(Dictionary{{"b", 2}, {"c", 3}}));
  // They are the file's now, and another process may change them.
  other->setAppValue("b", Value(20), kDomain);
  EXPECT_EQ(store->copyAppValue("b", kDomain), Value(20));
  store->setAppValue("c", Value(30), kDomain);
  EXPECT_EQ(stored(), Value(Dictionary{{"b", 20}, {"c", 30}}));
}

TEST_F(FilePreferencesTest, GivesWayToANewerWriteOfAnotherProcess) {
  const auto store = newStore();
  const auto other = newStore();
  store->setAppValue("a", Value(1), kDomain);
  store->setAppValue("b", Value(1), kDomain);
  {
    const ScopedFileLimit limit(10);
    store->setAppValue("a", Value(2), kDomain);
    store->setAppValue("b", Value(2), kDomain);
  }
  other->setAppValue("a", Value(3), kDomain);
  EXPECT_EQ(store->copyAppValue("a", kDomain), Value(3));
  EXPECT_EQ(store->copyAppValue("b", kDomain), Value(2));
  other->setAppValue("b", Value(4), kDomain);
  store->setAppValue("c", Value(5), kDomain);
  EXPECT_EQ(stored(), Value(Dictionary{{"a", 3}, {"b", 4}, {"c", 5}}));
}

TEST_F(FilePreferencesTest, KeepsAValueThatNoFileCanHoldToItself) {
  const auto store = newStore();
  store->setAppValue("a", Value(1), kDomain);
  store->setAppValue("bad", Value(std::numeric_limits<double>::infinity()), kDomain);
  EXPECT_EQ(store->takeTroubles(),
            std::vector<StoreTrouble>{writeTrouble("the value of bad can't be stored: a number is not finite")});
  EXPECT_EQ(store->copyAppValue("bad", kDomain), Value(std::numeric_limits<double>::infinity()));
  store->setAppValue("b", Value(2), kDomain);
  EXPECT_EQ(stored(), Value(Dictionary{{"a", 1}, {"b", 2}}));
  EXPECT_EQ(store->takeTroubles(), std::vector<StoreTrouble>{});
  EXPECT_EQ(store->copyAppValue("bad", kDomain), Value(std::numeric_limits<double>::infinity()));
  store->setAppValue("bad", Value(0.5), kDomain);
  EXPECT_EQ(stored(), Value(Dictionary{{"a", 1}, {"b", 2}, {"bad", 0.5}}));
  EXPECT_EQ(newStore()->copyAppValue("bad", kDomain), Value(0.5));
}

TEST_F(FilePreferencesTest, RefusesAValueThatMakesTheFileTooLarge) {
  const auto store = newStore();
  store->setAppValue("a", Value(1), kDomain);
  store->setAppValue("large", Value(std::string(std::size_t{16} << 20, 'x')), kDomain);
  EXPECT_EQ(store->takeTroubles(),
            std::vector<StoreTrouble>{writeTrouble("the value of large can't be stored: larger than 16 MiB")});
  store->setAppValue("b", Value(2), kDomain);
  EXPECT_EQ(stored(), Value(Dictionary{{"a", 1}, {"b", 2}}));
}

// Links.

TEST_F(FilePreferencesTest, FollowsALinkAndDoesNotReplaceIt) {
  const fs::path target = rootFolder() / "elsewhere/real.plist";
  writeFile(target, plist({{"a", 1}}));
  fs::create_directories(preferences());
  fs::create_symlink("../../../../elsewhere/real.plist", file());
  const auto store = newStore();
  store->setAppValue("b", Value(2), kDomain);
  store->appSynchronize(kDomain);
  EXPECT_EQ(fs::read_symlink(file()), "../../../../elsewhere/real.plist");
  EXPECT_EQ(parsePropertyList(readFile(target)), Value(Dictionary{{"a", 1}, {"b", 2}}));
  EXPECT_EQ(newStore()->copyAppValue("b", kDomain), Value(2));
  EXPECT_EQ(troubles_, std::vector<StoreTrouble>{});
}

TEST_F(FilePreferencesTest, MakesTheFileThatALinkNames) {
  fs::create_directories(preferences());
  fs::create_symlink("real.plist", file());
  newStore()->setAppValue("a", Value(1), kDomain);
  EXPECT_EQ(fs::read_symlink(file()), "real.plist");
  EXPECT_EQ(parsePropertyList(readFile(preferences() / "real.plist")), Value(Dictionary{{"a", 1}}));
}

TEST_F(FilePreferencesTest, SetsACorruptLinkTargetAsideAndKeepsTheLink) {
  writeFile(preferences() / "real.plist", "garbage");
  fs::create_symlink("real.plist", file());
  newStore()->setAppValue("a", Value(1), kDomain);
  EXPECT_EQ(fs::read_symlink(file()), "real.plist");
  EXPECT_EQ(stored(), Value(Dictionary{{"a", 1}}));
  EXPECT_EQ(readFile(beside(".corrupt-1")), "garbage");
}

TEST_F(FilePreferencesTest, RefusesALinkThatLeadsOutOfTheRoot) {
  const fs::path outside = folder_.path() / "outside.plist";
  const std::string bytes = plist({{"a", 1}});
  writeFile(outside, bytes);
  fs::create_directories(preferences());
  for (const fs::path& target : {outside, fs::path("../../../../../outside.plist"), folder_.path() / "missing"}) {
    fs::remove(file());
    fs::create_symlink(target, file());
    const auto store = newStore();
    EXPECT_EQ(store->readTrouble(kDomain), unreadableTrouble("leads out of the device root"));
    EXPECT_EQ(store->copyAppValue("a", kDomain), std::nullopt);
    store->setAppValue("a", Value(2), kDomain);
    EXPECT_EQ(store->takeTroubles(), std::vector<StoreTrouble>{writeTrouble("leads out of the device root")});
    EXPECT_EQ(fs::read_symlink(file()), target);
  }
  EXPECT_EQ(readFile(outside), bytes);
  EXPECT_EQ(namesIn(folder_.path()), (std::vector<std::string>{"outside.plist", "root"}));
  EXPECT_EQ(namesIn(preferences()), std::vector<std::string>{kFile});
}

TEST_F(FilePreferencesTest, RefusesALinkInThePlaceOfItsOwnFiles) {
  const fs::path outside = folder_.path() / "outside";
  writeFile(outside, "untouched");
  fs::create_directories(preferences());
  writeFile(beside(".lock"), "");
  fs::create_symlink(outside, temporaryFile());
  const auto store = newStore();
  store->setAppValue("a", Value(1), kDomain);
  EXPECT_EQ(stored(), Value(Dictionary{{"a", 1}}));
  fs::remove(beside(".lock"));
  fs::create_symlink(folder_.path() / "new", beside(".lock"));
  store->setAppValue("b", Value(1), kDomain);
  EXPECT_EQ(store->takeTroubles().size(), 1U);
  EXPECT_EQ(readFile(outside), "untouched");
  EXPECT_EQ(namesIn(folder_.path()), (std::vector<std::string>{"outside", "root"}));
}

// The two names of /var.

TEST_F(FilePreferencesTest, ReadsFromPrivateVarAndWritesUnderVarWhereBothAreReal) {
  const fs::path other = rootFolder() / "private/var/mobile/Library/Preferences" / kFile;
  const std::string former = plist({{"a", 1}, {"Dock_Defaults", "odd"}});
  writeFile(other, former);
  fs::create_directories(rootFolder() / "var");
  const auto store = newStore();
  EXPECT_EQ(store->copyAppValue("a", kDomain), Value(1));
  store->setAppValue("b", Value(2), kDomain);
  EXPECT_EQ(stored(), Value(Dictionary{{"Dock_Defaults", "odd"}, {"a", 1}, {"b", 2}}));
  EXPECT_EQ(readFile(other), former);
  store->setAppValue("Dock_Defaults", Value(Dictionary{}), kDomain);
  EXPECT_EQ(parsePropertyList(readFile(beside(".kept-1"))),
            Value(Dictionary{{"Dock_Defaults", "odd"}, {"a", 1}, {"b", 2}}));
  EXPECT_EQ(newStore()->copyAppValue("a", kDomain), Value(1));
}

TEST_F(FilePreferencesTest, CopiesACorruptFileOfPrivateVarToVar) {
  const fs::path other = rootFolder() / "private/var/mobile/Library/Preferences" / kFile;
  writeFile(other, "garbage");
  fs::create_directories(rootFolder() / "var");
  newStore()->setAppValue("b", Value(2), kDomain);
  EXPECT_EQ(stored(), Value(Dictionary{{"b", 2}}));
  EXPECT_EQ(readFile(beside(".corrupt-1")), "garbage");
  EXPECT_EQ(readFile(other), "garbage");
}

// What a former release left.

TEST_F(FilePreferencesTest, ReadsTheVersionThatAFormerReleaseKeptWhereTheFileIsTorn) {
  const std::string whole = plist({{"a", 1}});
  for (const std::string& torn : {std::string(), std::string(100, '\0'), whole.substr(0, 20)}) {
    writeFile(beside(".flushed"), whole);
    replaceFile(file(), torn);
    troubles_.clear();
    const auto store = newStore();
    EXPECT_EQ(store->copyAppValue("a", kDomain), Value(1));
    EXPECT_EQ(store->readTrouble(kDomain), std::nullopt);
    ASSERT_EQ(troubles_.size(), 1U);
    EXPECT_EQ(troubles_[0].kind, StoreTrouble::Kind::Recovered);
    EXPECT_EQ(readFile(file()), torn);
    store->setAppValue("b", Value(2), kDomain);
    EXPECT_EQ(stored(), Value(Dictionary{{"a", 1}, {"b", 2}}));
    EXPECT_FALSE(fs::exists(beside(".flushed")));
  }
  EXPECT_EQ(readFile(beside(".corrupt-3")), whole.substr(0, 20));
}

TEST_F(FilePreferencesTest, RemovesTheKeptVersionOfAFormerReleaseWhereTheFileIsWhole) {
  writeFile(file(), plist({{"a", 1}}));
  writeFile(beside(".flushed"), plist({{"a", 0}}));
  const auto store = newStore();
  EXPECT_EQ(store->copyAppValue("a", kDomain), Value(1));
  EXPECT_TRUE(fs::exists(beside(".flushed")));
  store->setAppValue("b", Value(2), kDomain);
  EXPECT_EQ(stored(), Value(Dictionary{{"a", 1}, {"b", 2}}));
  EXPECT_EQ(namesIn(preferences()), (std::vector<std::string>{kFile, std::string(kFile) + ".lock"}));
}

// Copies that are kept.

TEST_F(FilePreferencesTest, KeepsTheTenNewestCopiesOfEachKindAndReportsEach) {
  const auto store = newStore();
  for (int number = 1; number <= 13; ++number) {
    replaceFile(file(), "garbage " + std::to_string(number));
    troubles_.clear();
    store->setAppValue("a", Value("odd"), kDomain);
    const std::vector<StoreTrouble> expected = {
        corruptTrouble("not a property list"),
        {StoreTrouble::Kind::KeptAside, beside(".corrupt-" + std::to_string(number)), "not a property list"}};
    EXPECT_EQ(troubles_, expected);
    troubles_.clear();
    store->setAppValue("a", Value(Dictionary{{"number", number}}), kDomain);
    EXPECT_EQ(troubles_,
              (std::vector<StoreTrouble>{{StoreTrouble::Kind::KeptAside, beside(".kept-" + std::to_string(number)),
                                          "a value that is no dictionary was replaced"}}));
  }
  std::vector<std::string> expected = {kFile, std::string(kFile) + ".lock"};
  for (int number = 4; number <= 13; ++number) {
    expected.push_back(std::string(kFile) + ".corrupt-" + std::to_string(number));
    expected.push_back(std::string(kFile) + ".kept-" + std::to_string(number));
    EXPECT_EQ(readFile(beside(".corrupt-" + std::to_string(number))), "garbage " + std::to_string(number));
  }
  std::ranges::sort(expected);
  EXPECT_EQ(namesIn(preferences()), expected);
}

// Changes by programs side by side.

TEST_F(FilePreferencesTest, MergesAChangeIntoWhatAnotherProgramHasStoredMeanwhile) {
  const auto store = newStore();
  const Dictionary base = {{"cleared", true}, {"same", 1}};
  store->setAppValue("Dock_Defaults", Value(base), kDomain);
  newStore()->setAppValue("Dock_Defaults", Value(Dictionary{{"cleared", true}, {"other", 2}, {"same", 1}}), kDomain);
  const auto written = store->write(kDomain, {{.key = "Dock_Defaults",
                                               .value = Value(Dictionary{{"own", 3}, {"same", 1}}),
                                               .merges = true,
                                               .base = Value(base)}});
  const Value merged(Dictionary{{"other", 2}, {"own", 3}, {"same", 1}});
  ASSERT_TRUE(written);
  EXPECT_EQ(written->entries.value("Dock_Defaults"), merged);
  EXPECT_EQ(stored(), Value(Dictionary{{"Dock_Defaults", merged}}));
}

TEST_F(FilePreferencesTest, HoldsTheLockOfATransactionUntilItsWriteHasReplacedTheFile) {
  const auto store = newStore();
  const auto other = newStore({.lockLimit = 50ms});
  store->setAppValue("count", Value(1), kDomain);
  {
    const FilePreferences::Transaction transaction(*store, kDomain);
    other->setAppValue("late", Value(1), kDomain);
    EXPECT_EQ(other->takeTroubles(),
              std::vector<StoreTrouble>{
                  writeTrouble("another program has kept com.vantorick.quellar2.plist.lock locked for 50 ms")});
    store->setAppValue("count", Value(2), kDomain);
    EXPECT_TRUE(other->retryUnsaved());
  }
  EXPECT_EQ(stored(), Value(Dictionary{{"count", 2}, {"late", 1}}));
  {
    const FilePreferences::Transaction transaction(*store, kDomain);
  }
  other->setAppValue("late", Value(2), kDomain);
  EXPECT_EQ(stored(), Value(Dictionary{{"count", 2}, {"late", 2}}));
}

TEST_F(FilePreferencesTest, KeepsInATransactionWhatAProgramWithoutTheLockStores) {
  const auto store = newStore();
  store->setAppValue("Dock_Defaults", Value(Dictionary{{"a", 1}}), kDomain);
  {
    const FilePreferences::Transaction transaction(*store, kDomain);
    replaceFile(file(), plist({{"Dock_Defaults", Dictionary{{"a", 1}, {"foreign", 2}}}}));
    EXPECT_EQ(store->copyAppValue("other", kDomain), std::nullopt);
    store->setAppValue("Dock_Defaults", Value(Dictionary{{"a", 1}, {"own", 3}}), kDomain);
  }
  EXPECT_EQ(stored(), Value(Dictionary{{"Dock_Defaults", Dictionary{{"a", 1}, {"foreign", 2}, {"own", 3}}}}));
}

TEST_F(FilePreferencesTest, ServesWaitingWritersInTurn) {
  newStore()->setAppValue("a", Value(1), kDomain);
  const int lock = ::open(beside(".lock").c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(::flock(lock, LOCK_EX), 0);
  constexpr int kWriters = 5;
  std::mutex mutex;
  std::vector<int> order;
  std::vector<std::jthread> writers;
  for (int number = 1; number <= kWriters; ++number) {
    writers.emplace_back([&, number] {
      FilePreferences store{DeviceRoot(rootFolder())};
      const FilePreferences::Transaction transaction(store, kDomain);
      const std::lock_guard guard(mutex);
      order.push_back(number);
    });
    // Until it stands in the queue.
    struct flock place{};
    do {
      std::this_thread::sleep_for(1ms);
      place.l_type = F_WRLCK;
      place.l_whence = SEEK_SET;
      place.l_start = number;
      place.l_len = 1;
      ASSERT_EQ(::fcntl(lock, F_OFD_GETLK, &place), 0);
    } while (place.l_type == F_UNLCK);
  }
  ASSERT_EQ(::flock(lock, LOCK_UN), 0);
  writers.clear();
  ::close(lock);
  EXPECT_EQ(order, (std::vector<int>{1, 2, 3, 4, 5}));
}

TEST_F(FilePreferencesTest, TakesTheTurnOfACallerThatWasStoppedInTheQueue) {
  newStore()->setAppValue("a", Value(1), kDomain);
  // A caller that stands in the queue and never takes the lock.
  const int stopped = ::open(beside(".lock").c_str(), O_RDWR | O_CLOEXEC);
  struct flock place{};
  place.l_type = F_WRLCK;
  place.l_whence = SEEK_SET;
  place.l_start = 1;
  place.l_len = 1;
  ASSERT_EQ(::fcntl(stopped, F_OFD_SETLK, &place), 0);
  newStore()->setAppValue("b", Value(2), kDomain);
  ::close(stopped);
  EXPECT_EQ(troubles_, std::vector<StoreTrouble>{});
  EXPECT_EQ(stored(), Value(Dictionary{{"a", 1}, {"b", 2}}));
}

TEST_F(FilePreferencesTest, TakesTheNewLockWhereTheOldOneWasRemoved) {
  newStore()->setAppValue("a", Value(1), kDomain);
  const int lock = ::open(beside(".lock").c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(::flock(lock, LOCK_EX), 0);
  std::jthread writer([&] { newStore()->setAppValue("b", Value(2), kDomain); });
  struct flock place{};
  do {
    std::this_thread::sleep_for(1ms);
    place.l_type = F_WRLCK;
    place.l_whence = SEEK_SET;
    place.l_start = 1;
    ASSERT_EQ(::fcntl(lock, F_OFD_GETLK, &place), 0);
  } while (place.l_type == F_UNLCK);
  fs::remove(beside(".lock"));
  const auto store = newStore();
  const FilePreferences::Transaction transaction(*store, kDomain);
  ASSERT_EQ(::flock(lock, LOCK_UN), 0);
  store->setAppValue("c", Value(3), kDomain);
  writer.join();
  ::close(lock);
  EXPECT_EQ(stored(), Value(Dictionary{{"a", 1}, {"b", 2}, {"c", 3}}));
  EXPECT_EQ(namesIn(preferences()), (std::vector<std::string>{kFile, std::string(kFile) + ".lock"}));
}

TEST_F(FilePreferencesTest, SeesAChangeInPlaceOfTheSameSizeRightAfterItsOwnWrite) {
  const auto store = newStore();
  for (int round = 0; round < 50; ++round) {
    store->setAppValue("key", Value(round % 10), kDomain);
    const std::string bytes = plist({{"key", (round + 1) % 10}});
    ASSERT_EQ(readFile(file()).size(), bytes.size());
    writeFile(file(), bytes);
    ASSERT_EQ(store->copyAppValue("key", kDomain), Value((round + 1) % 10)) << round;
  }
}

TEST_F(FilePreferencesTest, IsReadByTheNextProcess) {
  newStore()->setAppValue("a", Value(1), kDomain);
  EXPECT_TRUE(inProcess([&] {
    FilePreferences store{DeviceRoot(rootFolder())};
    const bool isRead = store.copyAppValue("a", kDomain) == Value(1);
    store.setAppValue("b", Value(2), kDomain);
    return isRead;
  }));
  EXPECT_EQ(stored(), Value(Dictionary{{"a", 1}, {"b", 2}}));
}

}  // namespace file_preferences_test
}  // namespace quellar::tests

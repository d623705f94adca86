// SPDX-License-Identifier: MIT
#include "host/linux/background_preferences.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "host/linux/property_list/property_list.h"
#include "store_files.h"

namespace quellar::tests::background_preferences_test {

using host::linux::BackgroundPreferences;
using host::linux::BackgroundPreferencesOptions;
using host::linux::DeviceRoot;
using host::linux::FileDescriptor;
using host::linux::FilePreferences;
using host::linux::parsePropertyList;
using host::linux::StoreTrouble;
using platform::Dictionary;
using platform::Value;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr const char* kDomain = "com.vantorick.quellar2";
constexpr const char* kDock = "Dock_Defaults";

class BackgroundPreferencesTest : public testing::Test {
 protected:
  BackgroundPreferencesTest() { FilePreferences(DeviceRoot(root())).setAppValue("a", Value(1), kDomain); }
  ~BackgroundPreferencesTest() override { store_.reset(); }

  [[nodiscard]] fs::path root() const { return folder_.path() / "root"; }
  [[nodiscard]] fs::path file() const { return root() / "var/mobile/Library/Preferences/com.vantorick.quellar2.plist"; }
  [[nodiscard]] Dictionary stored() const { return *parsePropertyList(readFile(file())).as<Dictionary>(); }

  BackgroundPreferences& store(BackgroundPreferencesOptions options = {}) {
    if (!store_) {
      store_ = std::make_unique<BackgroundPreferences>(
          DeviceRoot(root()), [this](const StoreTrouble& trouble) { troubles_.push_back(trouble); },
          [this] {
            const std::lock_guard guard(mutex_);
            isAwake_ = true;
            awake_.notify_one();
          },
          options);
    }
    return *store_;
  }
  /// Delivers as the main thread does, until something holds.
  bool eventually(const std::function<bool()>& holds) {
    const auto limit = std::chrono::steady_clock::now() + 10s;
    while (!holds()) {
      std::unique_lock guard(mutex_);
      if (!awake_.wait_until(guard, limit, [this] { return isAwake_; })) return false;
      isAwake_ = false;
      guard.unlock();
      store_->deliver();
    }
    return true;
  }
  bool becomesIdle() {
    return eventually([this] { return store_->isIdle(); });
  }
  /// Another program, which has its own store.
  void storeElsewhere(const std::string& key, const Value& value) {
    FilePreferences(DeviceRoot(root())).setAppValue(key, value, kDomain);
  }
  /// A program that holds the lock until the descriptor is closed.
  [[nodiscard]] FileDescriptor stuckLock() const {
    FileDescriptor lock(::open((file().string() + ".lock").c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(::flock(lock.get(), LOCK_EX), 0);
    return lock;
  }

  TemporaryFolder folder_;
  std::vector<StoreTrouble> troubles_;

 private:
  std::mutex mutex_;
  std::condition_variable awake_;
  bool isAwake_ = false;
  std::unique_ptr<BackgroundPreferences> store_;
};

TEST_F(BackgroundPreferencesTest, ReadsBackAtOnceWhatIsWrittenLater) {
  FileDescriptor lock = stuckLock();
  store().setAppValue("b", Value(2), kDomain);
  EXPECT_EQ(store().copyAppValue("b", kDomain), Value(2));
  EXPECT_FALSE(store().isIdle());
  EXPECT_EQ(stored(), (Dictionary{{"a", 1}}));
  lock = FileDescriptor();
  ASSERT_TRUE(becomesIdle());
  EXPECT_EQ(stored(), (Dictionary{{"a", 1}, {"b", 2}}));
  EXPECT_EQ(store().copyAppValue("b", kDomain), Value(2));
  EXPECT_EQ(troubles_, std::vector<StoreTrouble>{});
}

TEST_F(BackgroundPreferencesTest, RunsWorksInOrderOnceWhatWasSetBeforeIsInTheFile) {
  std::vector<std::pair<std::string, Dictionary>> seen;
  const auto see = [&](const std::string& name) {
    store().whenWritten([&, name] { seen.emplace_back(name, stored()); });
  };
  FileDescriptor lock = stuckLock();
  see("before");
  store().setAppValue("b", Value(1), kDomain);
  see("first");
  store().setAppValue("b", Value(2), kDomain);
  see("second");
  ASSERT_EQ(seen.size(), 1U);
  lock = FileDescriptor();
  ASSERT_TRUE(becomesIdle());
  ASSERT_EQ(seen.size(), 3U);
  EXPECT_EQ(seen[0].first, "before");
  EXPECT_EQ(seen[1].first, "first");
  EXPECT_GE(seen[1].second.at("b").integerValue(), 1);
  EXPECT_EQ(seen[2], (std::pair<std::string, Dictionary>("second", {{"a", 1}, {"b", 2}})));
}

TEST_F(BackgroundPreferencesTest, MergesWritesThatHaveNotBegun) {
  FileDescriptor lock = stuckLock();
  store().setAppValue("first", Value(0), kDomain);
  for (int number = 1; number <= 100; ++number) store().setAppValue(kDock, Dictionary{{"n", number}}, kDomain);
  int versions = 0;
  ino_t last = inodeOf(file());
  const std::jthread watcher([&](const std::stop_token& stop) {
    while (!stop.stop_requested()) {
      const ino_t now = inodeOf(file());
      versions += now != last ? 1 : 0;
      last = now;
    }
  });
  lock = FileDescriptor();
  ASSERT_TRUE(becomesIdle());
  // One write may have begun before the others were set.
  EXPECT_LE(versions, 2);
  EXPECT_EQ(stored(), (Dictionary{{"a", 1}, {"first", 0}, {kDock, Dictionary{{"n", 100}}}}));
}

TEST_F(BackgroundPreferencesTest, KeepsWhatAnotherProgramHasChangedSinceTheLastRead) {
  storeElsewhere(kDock, Dictionary{{"read", 1}});
  EXPECT_EQ(store().copyAppValue(kDock, kDomain), Value(Dictionary{{"read", 1}}));
  storeElsewhere(kDock, Dictionary{{"other", 2}, {"read", 1}});
  EXPECT_EQ(store().changedElsewhere(), (std::vector<BackgroundPreferences::Place>{{kDomain, kDock}}));
  store().setAppValue(kDock, Dictionary{{"own", 3}, {"read", 1}}, kDomain);
  store().setAppValue(kDock, Dictionary{{"own", 4}, {"read", 1}}, kDomain);
  ASSERT_TRUE(becomesIdle());
  const Dictionary merged = {{"other", 2}, {"own", 4}, {"read", 1}};
  EXPECT_EQ(stored().at(kDock), Value(merged));
  // The program has another one in hand, and can know.
  EXPECT_EQ(store().changedElsewhere(), (std::vector<BackgroundPreferences::Place>{{kDomain, kDock}}));
  EXPECT_EQ(store().copyAppValue(kDock, kDomain), Value(merged));
  EXPECT_EQ(store().changedElsewhere(), std::vector<BackgroundPreferences::Place>{});
}

TEST_F(BackgroundPreferencesTest, ComparesWithoutReading) {
  EXPECT_EQ(store().copyAppValue(kDock, kDomain), std::nullopt);
  storeElsewhere(kDock, Dictionary{{"other", 2}});
  ASSERT_EQ(store().changedElsewhere().size(), 1U);
  store().setAppValue(kDock, Dictionary{{"own", 1}}, kDomain);
  ASSERT_TRUE(becomesIdle());
  EXPECT_EQ(stored().at(kDock), Value(Dictionary{{"other", 2}, {"own", 1}}));
  store().acceptChanges();
  EXPECT_EQ(store().changedElsewhere().size(), 0U);
}

TEST_F(BackgroundPreferencesTest, TriesAgainUntilTheStoreTakesTheValue) {
  store({.file = {.lockLimit = 10ms}, .firstRetry = 5ms, .lastRetry = 20ms});
  FileDescriptor lock = stuckLock();
  bool isPosted = false;
  store().setAppValue("b", Value(2), kDomain);
  store().whenWritten([&] { isPosted = true; });
  ASSERT_TRUE(eventually([&] { return isPosted; })) << "what is posted waits for no failed write";
  EXPECT_EQ(store().copyAppValue("b", kDomain), Value(2));
  const StoreTrouble locked{StoreTrouble::Kind::Write, file(),
                            "another program has kept com.vantorick.quellar2.plist.lock locked for 10 ms"};
  EXPECT_EQ(troubles_, std::vector<StoreTrouble>{locked});
  storeElsewhere("unrelated", Value(1));
  lock = FileDescriptor();
  ASSERT_TRUE(eventually([&] { return troubles_.size() == 2; }));
  EXPECT_EQ(troubles_[1], (StoreTrouble{StoreTrouble::Kind::Resolved, file(), ""}));
  EXPECT_EQ(stored().at("b"), Value(2));
}

TEST_F(BackgroundPreferencesTest, TriesAgainAtOnceWhenItIsAsked) {
  store({.file = {.lockLimit = 10ms}, .firstRetry = 1h, .lastRetry = 1h});
  FileDescriptor lock = stuckLock();
  store().setAppValue("b", Value(2), kDomain);
  ASSERT_TRUE(becomesIdle());
  lock = FileDescriptor();
  store().retry();
  ASSERT_TRUE(eventually([&] { return troubles_.size() == 2; }));
  EXPECT_EQ(stored(), (Dictionary{{"a", 1}, {"b", 2}}));
}

TEST_F(BackgroundPreferencesTest, WritesAndPostsAllThatIsLeftAtTheEnd) {
  FileDescriptor lock = stuckLock();
  bool isPosted = false;
  store().setAppValue("b", Value(2), kDomain);
  store().whenWritten([&] { isPosted = true; });
  std::jthread holder([&lock] {
    std::this_thread::sleep_for(30ms);
    lock = FileDescriptor();
  });
  store().finish();
  EXPECT_TRUE(isPosted);
  EXPECT_EQ(stored(), (Dictionary{{"a", 1}, {"b", 2}}));
}

TEST_F(BackgroundPreferencesTest, NeverHoldsTheCallerUpForAStuckLock) {
  const FileDescriptor lock = stuckLock();
  store({.file = {.lockLimit = 200ms}});
  const auto start = std::chrono::steady_clock::now();
  for (int number = 0; number < 100; ++number) store().setAppValue("b", Value(number), kDomain);
  EXPECT_LT(std::chrono::steady_clock::now() - start, 200ms);
}

TEST_F(BackgroundPreferencesTest, ReportsEachTroubleOfReadingOnce) {
  writeFile(file(), "garbage");
  EXPECT_EQ(store().copyAppValue("a", kDomain), std::nullopt);
  store().setAppValue("b", Value(2), kDomain);
  ASSERT_TRUE(becomesIdle());
  const std::vector<StoreTrouble> expected = {
      {StoreTrouble::Kind::Corrupt, file(), "not a property list"},
      {StoreTrouble::Kind::KeptAside, file().string() + ".corrupt-1", "not a property list"}};
  EXPECT_EQ(troubles_, expected);
}

}  // namespace quellar::tests::background_preferences_test

// SPDX-License-Identifier: MIT

// Who waits for the storage device, and who does not.

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

#include "host/linux/file_preferences.h"
#include "host/linux/property_list/property_list.h"
#include "store_files.h"

namespace quellar::tests::flush_test {

/// What happens while a thread waits for the device; set before a store has a thread.
std::function<void()>& duringFlushes() {
  static std::function<void()> action;
  return action;
}

}  // namespace quellar::tests::flush_test

// Takes the place of the C library's in this program.
extern "C" int fsync(int descriptor) {
  thread_local bool isWithin = false;
  if (const auto& action = quellar::tests::flush_test::duringFlushes(); action && !isWithin) {
    isWithin = true;
    action();
    isWithin = false;
  }
  return static_cast<int>(::syscall(SYS_fsync, descriptor));
}

namespace quellar::tests::flush_test {

using host::linux::DeviceRoot;
using host::linux::FilePreferences;
using platform::Dictionary;
using platform::Value;
using namespace std::chrono_literals;

TEST(Flush, HoldsUpNoWriterEvenIfEachVersionIsReplacedMeanwhile) {
  constexpr const char* kDomain = "com.vantorick.quellar2";
  constexpr int kWrites = 12;
  const TemporaryFolder folder;
  const auto file = folder.path() / "var/mobile/Library/Preferences/com.vantorick.quellar2.plist";
  const auto flushedFile = file.string() + ".flushed";
  FilePreferences other(DeviceRoot(folder.path()), {}, {.lockLimit = 2s, .flushDelay = 1h});
  std::atomic<int> writes = 0;
  duringFlushes() = [&] {
    // A writer that had to wait for this flush would wait for itself, and give up.
    if (writes < kWrites) other.setAppValue("other", Value(++writes), kDomain);
  };
  {
    FilePreferences store(DeviceRoot(folder.path()), {}, {.lockLimit = 2s, .flushDelay = 1ms});
    store.setAppValue("own", Value(1), kDomain);
    // Once nobody writes any more, it is flushed without being asked again.
    const auto isFlushed = [&] {
      return writes == kWrites && std::filesystem::exists(flushedFile) && inodeOf(flushedFile) == inodeOf(file);
    };
    const auto limit = std::chrono::steady_clock::now() + 20s;
    while (!isFlushed() && std::chrono::steady_clock::now() < limit) std::this_thread::sleep_for(2ms);
    EXPECT_TRUE(isFlushed());
    EXPECT_EQ(store.takeWriteTroubles().size(), 0U);
  }
  duringFlushes() = nullptr;
  for (const auto& trouble : other.takeWriteTroubles()) ADD_FAILURE() << trouble.cause;
  EXPECT_EQ(host::linux::parsePropertyList(readFile(file)), Value(Dictionary{{"other", kWrites}, {"own", 1}}));
}

}  // namespace quellar::tests::flush_test

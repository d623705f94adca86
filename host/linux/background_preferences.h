// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "host/linux/file_preferences.h"
#include "platform/ports.h"

namespace quellar::host::linux {

struct BackgroundPreferencesOptions {
  FilePreferencesOptions file;
  /// How long after a failed write it is tried again; each further failure doubles that, up to the second duration.
  std::chrono::milliseconds firstRetry{250};
  std::chrono::milliseconds lastRetry{30'000};
};

/// The preferences store of a program that must never wait for a storage device or for another program: a thread of its
/// own writes. What was set is read back at once. Values that are set while a write is under way go out with the next
/// one.
///
/// A write is a change of what the program last read or set under its key: entries of a dictionary that other programs
/// changed since are kept. What could not be written is tried again until it is.
///
/// All calls come from one thread, the main one; on it all callbacks but `wake` run.
class BackgroundPreferences final : public platform::Preferences {
 public:
  /// Called on the writing thread when deliver() has something to do.
  using Wake = std::function<void()>;

  BackgroundPreferences(const DeviceRoot& root, FilePreferences::TroubleListener listener, Wake wake,
                        BackgroundPreferencesOptions options = {});
  /// Calls finish().
  ~BackgroundPreferences() override;
  BackgroundPreferences(const BackgroundPreferences&) = delete;
  BackgroundPreferences& operator=(const BackgroundPreferences&) = delete;

  [[nodiscard]] std::optional<platform::Value> copyAppValue(std::string_view key, std::string_view domain) override;
  [[nodiscard]] bool wasRead(std::string_view domain) const override { return reader_.wasRead(domain); }
  void setAppValue(std::string_view key, const std::optional<platform::Value>& value, std::string_view domain) override;
  /// Does nothing: all that is set is written without being asked, and nobody waits for it.
  void appSynchronize(std::string_view /*domain*/) override {}

  /// A domain and a key.
  using Place = std::pair<std::string, std::string>;
  /// Where the store holds another value than the program last read or set there. Asking is no reading.
  [[nodiscard]] std::vector<Place> changedElsewhere();
  /// Takes what the store holds now for read.
  void acceptChanges();
  /// `listener` is called after each read, write and delivery.
  void setListener(std::function<void()> listener) { activity_ = std::move(listener); }

  /// Runs the work once all that was set before is on the storage device or could not be written; now where that is so.
  /// Works run in the order of the calls.
  void whenWritten(std::function<void()> work);
  /// Whether nothing that was set waits to be written, be it for the first time.
  [[nodiscard]] bool isIdle() const { return lastDelivered_ == lastSet_; }
  /// Takes over what the writing thread has done: reports troubles and runs the works that are due.
  void deliver();
  /// Tries at once to write what could not be written.
  void retry();
  /// Writes all that is left, waits for it and delivers. What is set after it is not written.
  void finish();

 private:
  struct Pending {
    std::optional<platform::Value> value;
    std::uint64_t number = 0;
  };
  struct Work {
    std::uint64_t after = 0;
    std::function<void()> run;
  };
  /// Changes by domain, in the order in which the domains were first changed.
  using Batch = std::vector<std::pair<std::string, std::vector<PreferenceChange>>>;
  struct Outcome {
    /// All changes up to this number were written or tried.
    std::uint64_t number = 0;
    bool hasUnsaved = false;
    std::vector<std::pair<std::string, WrittenVersion>> written;
    std::vector<StoreTrouble> troubles;
  };

  [[nodiscard]] std::optional<platform::Value> valueAt(const Place& place);
  void noteActivity() const;
  void enqueue(std::string domain, PreferenceChange change);
  void run(const std::stop_token& stop);
  Outcome write(const Batch& batch, std::uint64_t number);

  const FilePreferences::TroubleListener listener_;
  const Wake wake_;
  const BackgroundPreferencesOptions options_;

  /// The main thread's.
  std::function<void()> activity_;
  FilePreferences reader_;
  /// What the program last read or set.
  std::map<Place, std::optional<platform::Value>> known_;
  /// What is set and not known to be in the file.
  std::map<Place, Pending> pending_;
  std::deque<Work> works_;
  std::uint64_t lastSet_ = 0;
  std::uint64_t lastDelivered_ = 0;

  /// The writing thread's, and its troubles since its last outcome.
  std::vector<StoreTrouble> writerTroubles_;
  FilePreferences writer_;

  /// Guards what both threads share.
  std::mutex mutex_;
  std::condition_variable_any changed_;
  Batch queue_;
  std::uint64_t lastQueued_ = 0;
  bool retriesNow_ = false;
  std::vector<Outcome> outcomes_;
  std::jthread thread_;
};

/// A Darwin centre that posts once what was set before is written.
class WrittenFirstDarwinCenter final : public platform::DarwinCenter {
 public:
  /// All that it takes outlives it and its posts.
  WrittenFirstDarwinCenter(BackgroundPreferences& preferences, platform::DarwinCenter& next)
      : preferences_(preferences), next_(next) {}
  void postNotification(std::string_view name, bool deliverImmediately) override;
  void notifyPost(std::string_view name) override;

 private:
  BackgroundPreferences& preferences_;
  platform::DarwinCenter& next_;
};

/// A distributed centre that posts once what was set before is written.
class WrittenFirstDistributedCenter final : public platform::DistributedCenter {
 public:
  /// All that it takes outlives it and its posts.
  WrittenFirstDistributedCenter(BackgroundPreferences& preferences, platform::DistributedCenter& next)
      : preferences_(preferences), next_(next) {}
  void postNotification(std::string_view name, const std::optional<std::string>& object,
                        const std::optional<platform::Dictionary>& userInfo, bool deliverImmediately) override;

 private:
  BackgroundPreferences& preferences_;
  platform::DistributedCenter& next_;
};

}  // namespace quellar::host::linux

// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "host/linux/device_root.h"
#include "host/linux/domain_file.h"
#include "host/linux/property_list_file.h"
#include "platform/ports.h"

namespace quellar::host::linux {

/// Something that went wrong with a domain's file.
struct StoreTrouble {
  enum class Kind {
    /// The file can't be read: it is corrupt and reads as empty, or it can't be opened.
    Read,
    /// The last complete version is read, because the file was left torn.
    Recovered,
    /// A value could not be written, or could not be flushed to the storage device.
    Write,
  };
  Kind kind = Kind::Read;
  /// The file in the host's file system.
  std::string file;
  /// Why, in words for the user.
  std::string cause;

  bool operator==(const StoreTrouble&) const = default;
};

struct FilePreferencesOptions {
  /// How long a write waits for another writer.
  std::chrono::milliseconds lockLimit{5000};
  /// How long after the last write the domain is flushed to the storage device. While writes go on it is flushed
  /// after four times as long, unless they come faster than the device takes one.
  std::chrono::milliseconds flushDelay{500};
};

/// The preferences store: one property-list file a domain, /var/mobile/Library/Preferences/<domain>.plist in the
/// device root, shared with other processes.
///
/// Every read sees what any process wrote before it. A write replaces one key of what the file then holds. What can't
/// be written stays in memory, is read by this process, and goes out with the domain's next write that succeeds, unless
/// another process changed the key meanwhile.
///
/// All calls come from one thread. Flushing has a thread of its own, which runs from the first write on; what is
/// not flushed when the store is destroyed is flushed then.
class FilePreferences final : public platform::Preferences {
 public:
  /// Is told of each trouble as it arises; of a failed flush on the flushing thread, and of all others on the caller's.
  using TroubleListener = std::function<void(const StoreTrouble&)>;

  explicit FilePreferences(DeviceRoot root, TroubleListener listener = {}, FilePreferencesOptions options = {});
  ~FilePreferences() override;
  FilePreferences(const FilePreferences&) = delete;
  FilePreferences& operator=(const FilePreferences&) = delete;

  [[nodiscard]] std::optional<platform::Value> copyAppValue(std::string_view key, std::string_view domain) override;
  void setAppValue(std::string_view key, const std::optional<platform::Value>& value, std::string_view domain) override;
  void appSynchronize(std::string_view domain) override;

  /// Why the domain can't be read now, or nothing.
  [[nodiscard]] std::optional<StoreTrouble> readTrouble(std::string_view domain);

  /// The troubles with writing since the last call, the latest of each file.
  [[nodiscard]] std::vector<StoreTrouble> takeWriteTroubles();

 private:
  /// A value that is not in the file because its write failed.
  struct Unsaved {
    std::optional<platform::Value> value;
    /// False for one that no file can hold; it is not written again.
    bool isStorable = true;
    /// What the file held under the key then, where it could be read.
    bool wasReadable = false;
    std::optional<platform::Value> stored;
  };

  struct Domain {
    enum class State { Missing, Whole, Recovered, Corrupt, Unreadable };

    std::string name;
    std::string path;
    State state = State::Missing;
    /// Why, where the state is Corrupt or Unreadable, or before it was Recovered.
    StoreTrouble trouble;
    PropertyListDictionary entries;

    /// The file that `entries` was made from, held open so that its version stays its own.
    FileDescriptor handle;
    std::optional<FileVersion> version;
    /// The file was so new when it was read that a change after it may bear the same time.
    bool mayChangeUnseen = false;
    /// This store wrote the version, and sees to its flush.
    bool isOurs = false;
    bool isCleaned = false;

    std::map<std::string, Unsaved, std::less<>> unsaved;
    /// Keys that were read as empty while the file could not be opened.
    std::set<std::string, std::less<>> readBlind;
  };

  /// A domain with writes that are not flushed.
  struct Unflushed {
    std::chrono::steady_clock::time_point firstWrite;
    std::chrono::steady_clock::time_point due;
    std::uint64_t writes = 0;
    /// The flush failed; it is tried again with the next write, synchronize or at the end.
    bool hasFailed = false;
  };

  Domain& domainNamed(std::string_view name);
  [[nodiscard]] DomainPlace placeOf(const Domain& domain) const;

  void refresh(Domain& domain);
  void load(Domain& domain, FileDescriptor opened);
  [[nodiscard]] bool recover(Domain& domain);
  void become(Domain& domain, Domain::State state, const std::string& file, const std::string& cause);
  [[nodiscard]] bool isOnlyRelabelled(const Domain& domain, const FileVersion& now);
  [[nodiscard]] static bool isSuperseded(const Domain& domain, std::string_view key, const Unsaved& unsaved);

  void store(Domain& domain, std::string_view key, const std::optional<platform::Value>& value);
  void keepAside(Domain& domain, std::string_view key, const std::optional<platform::Value>& value, bool isStorable);
  void report(const StoreTrouble& trouble);

  void noteUnflushed(const Domain& domain);
  [[nodiscard]] bool isFlusherIdle() const;
  enum class Insistence { TryOnce, UntilDone };
  void flush(const std::string& name, Insistence insistence);
  void runFlushes(const std::stop_token& stop);

  const DeviceRoot root_;
  const TroubleListener listener_;
  const FilePreferencesOptions options_;
  std::map<std::string, Domain, std::less<>> domains_;

  /// Guards all below, which the flushing thread shares.
  std::mutex mutex_;
  std::condition_variable_any wake_;
  std::map<std::string, Unflushed> unflushed_;
  std::map<std::string, FlushedVersion> flushed_;
  std::vector<StoreTrouble> writeTroubles_;
  std::jthread flusher_;
};

}  // namespace quellar::host::linux

// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "host/linux/device_root.h"
#include "host/linux/dictionary_merge.h"
#include "host/linux/domain_file.h"
#include "host/linux/property_list/property_list.h"
#include "platform/ports.h"

namespace quellar::host::linux {

/// Something that went wrong with a domain's file, or is right again.
struct StoreTrouble {
  enum class Kind {
    /// The file is no property list that a domain can have; it reads as empty.
    Corrupt,
    /// The file can't be read. What it holds is not known, and is not written over.
    Unreadable,
    /// The version that a former release kept is read, because the file is torn.
    Recovered,
    /// A value could not be written to the storage device.
    Write,
    /// A copy of a damaged file, or of one whose values were replaced, was kept: `file` is the copy.
    KeptAside,
    /// All that could not be written before is written now.
    Resolved,
  };
  Kind kind = Kind::Corrupt;
  /// The file in the host's file system.
  std::string file;
  /// Why, in words for the user.
  std::string cause;

  bool operator==(const StoreTrouble&) const = default;
};

struct FilePreferencesOptions {
  /// How long a write waits where no writer ahead of it gets on.
  std::chrono::milliseconds lockLimit{5000};
};

/// A value for one key of a domain.
struct PreferenceChange {
  std::string key;
  /// Nothing removes the key.
  std::optional<platform::Value> value;
  /// Whether it is a change of `base`: what other programs changed since is kept. Else it replaces what is stored.
  bool merges = false;
  std::optional<platform::Value> base = std::nullopt;
  /// Where another program changed the same.
  Precedence precedence = Precedence::Ours;
};

/// What a write has put in place of what.
struct WrittenVersion {
  std::optional<FileVersion> replaced;
  FileVersion version;
  /// Holds the new file open, so that its version stays its own.
  FileDescriptor handle;
  std::size_t hash = 0;
  /// All that the file holds.
  PropertyListDictionary entries;
};

/// The preferences store: one property-list file a domain, /var/mobile/Library/Preferences/<domain>.plist in the
/// device root, shared with other processes.
///
/// Every read sees what any process wrote before it. A write replaces one key of what the file then holds, and returns
/// once the file is on the storage device. What can't be written stays in memory, is read by this process, and is
/// written again with the domain's next write, by retryUnsaved(), and at the end; what another process changed
/// meanwhile stays as it is then. A key whose last read failed is never written over: only the entries that changed
/// here are.
///
/// All calls come from one thread.
class FilePreferences final : public platform::Preferences {
 public:
  /// Is told of each trouble as it arises.
  using TroubleListener = std::function<void(const StoreTrouble&)>;

  explicit FilePreferences(DeviceRoot root, TroubleListener listener = {}, FilePreferencesOptions options = {});
  ~FilePreferences() override;
  FilePreferences(const FilePreferences&) = delete;
  FilePreferences& operator=(const FilePreferences&) = delete;

  [[nodiscard]] std::optional<platform::Value> copyAppValue(std::string_view key, std::string_view domain) override;
  [[nodiscard]] bool wasRead(std::string_view domain) const override;
  void setAppValue(std::string_view key, const std::optional<platform::Value>& value, std::string_view domain) override;
  void appSynchronize(std::string_view domain) override;

  /// Makes several changes by one write. Returns what was written; nothing where the write failed.
  std::optional<WrittenVersion> write(std::string_view domain, const std::vector<PreferenceChange>& changes);
  /// Takes over what another store of this process has just written, without reading the file.
  void adopt(std::string_view domain, const WrittenVersion& written);

  /// Holds a domain's lock from now on until the domain's next write has replaced the file, or to its own end. That
  /// write is a change of what the domain held when the transaction began, or was begun again: a program that takes no
  /// lock loses nothing either. Where the lock can't be taken, that write fails.
  class Transaction {
   public:
    Transaction(FilePreferences& preferences, std::string_view domain);
    ~Transaction() { preferences_.transaction_.reset(); }
    /// Begins again with what was last read of the domain.
    void beginAgain();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

   private:
    FilePreferences& preferences_;
  };
  /// A number that differs whenever the domain holds something else than before. Reads the domain.
  [[nodiscard]] std::uint64_t generation(std::string_view domain);

  /// Whether a value waits to be written again.
  [[nodiscard]] bool hasUnsaved() const;
  /// Writes again what could not be written; returns whether all is written now.
  bool retryUnsaved();

  /// Why the domain can't be read now, or nothing.
  [[nodiscard]] std::optional<StoreTrouble> readTrouble(std::string_view domain);

  /// The troubles of the kinds Write and Unreadable since the last call, the latest of each file.
  [[nodiscard]] std::vector<StoreTrouble> takeTroubles();

 private:
  /// A value that is not in the file because its write failed.
  struct Unsaved {
    std::optional<platform::Value> value;
    /// False for one that no file can hold; it is not written again.
    bool isStorable = true;
    /// What the value is a change of.
    std::optional<platform::Value> base;
  };

  struct Domain {
    enum class State { Missing, Whole, Recovered, Corrupt, Unreadable };

    std::string name;
    std::string path;
    State state = State::Missing;
    /// Why, where the state is Corrupt or Unreadable, or before it was Recovered.
    StoreTrouble trouble;
    PropertyListDictionary entries;
    std::uint64_t generation = 0;

    /// The file that `entries` was made from, held open so that its version stays its own.
    FileDescriptor handle;
    std::optional<FileVersion> version;
    /// Of the bytes of that file.
    std::size_t hash = 0;
    /// The file was so new when it was read that a change after it may bear the same time.
    bool mayChangeUnseen = false;
    /// What dead writers and former releases left was looked for.
    bool isCleaned = false;
    bool hasDroppedFlushed = false;

    std::map<std::string, Unsaved, std::less<>> unsaved;
    [[nodiscard]] bool hasUnsaved() const;
    /// The last write trouble that was reported and is not resolved.
    std::optional<StoreTrouble> writeTrouble;
    /// Keys whose last read failed, with what was known of them.
    std::map<std::string, std::optional<platform::Value>, std::less<>> unread;
  };
  struct HeldLock {
    std::string domain;
    std::variant<DomainLock, FileError> lock;
    /// What the domain held when the transaction began.
    PropertyListDictionary base;
  };

  Domain& domainNamed(std::string_view name);
  [[nodiscard]] DomainPlace placeOf(const Domain& domain) const;

  void refresh(Domain& domain);
  void load(Domain& domain, FileDescriptor opened);
  [[nodiscard]] bool recover(Domain& domain);
  void become(Domain& domain, Domain::State state, const std::string& file, const std::string& cause);

  [[nodiscard]] std::vector<PreferenceChange> withUnsaved(const Domain& domain,
                                                          const std::vector<PreferenceChange>& changes) const;
  WrittenVersion store(Domain& domain, const std::vector<PreferenceChange>& changes);
  [[nodiscard]] std::optional<WrittenVersion> tryToStore(Domain& domain, const DomainPlace& place,
                                                         const DomainLock& lock,
                                                         const std::vector<PreferenceChange>& changes);
  void keepAside(Domain& domain, const PreferenceChange& change, bool isStorable);
  void report(const StoreTrouble& trouble);

  const DeviceRoot root_;
  const TroubleListener listener_;
  const FilePreferencesOptions options_;
  std::map<std::string, Domain, std::less<>> domains_;
  std::optional<HeldLock> transaction_;
  std::vector<StoreTrouble> troubles_;
};

}  // namespace quellar::host::linux

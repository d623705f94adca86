// SPDX-License-Identifier: MIT
#include "host/linux/file_preferences.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <new>
#include <utility>

#include "host/linux/posix_call.h"

namespace quellar::host::linux {

using platform::Dictionary;
using platform::Value;

namespace {

constexpr std::string_view kPreferencesFolder = "/var/mobile/Library/Preferences/";
constexpr std::string_view kExtension = ".plist";

/// The clock of file times ticks this coarsely on kernels before 6.13; later ones tell any two changes apart on the
/// usual file systems.
constexpr std::chrono::milliseconds kFileClockTick{20};
/// How often a write starts over because a program that takes no lock keeps replacing the file.
constexpr int kMostAttempts = 100;

std::string pathOf(std::string_view domain) {
  return std::string(kPreferencesFolder) + std::string(domain) + std::string(kExtension);
}

/// A domain's name becomes a file's name, and must not become a path.
bool isDomainName(std::string_view name) {
  return !name.empty() && name.find('/') == std::string_view::npos && name.find('\0') == std::string_view::npos &&
         name.find("..") == std::string_view::npos;
}

}  // namespace

FilePreferences::FilePreferences(DeviceRoot root, TroubleListener listener, FilePreferencesOptions options)
    : root_(std::move(root)), listener_(std::move(listener)), options_(options) {}

FilePreferences::~FilePreferences() {
  retryUnsaved();
}

std::optional<Value> FilePreferences::copyAppValue(std::string_view key, std::string_view domainName) {
  Domain& domain = domainNamed(domainName);
  refresh(domain);
  const std::optional<Value> stored = domain.entries.value(key);
  if (domain.state == Domain::State::Unreadable) {
    domain.unread.try_emplace(std::string(key), stored);
  } else if (const auto unread = domain.unread.find(key); unread != domain.unread.end()) {
    domain.unread.erase(unread);
  }
  const auto unsaved = domain.unsaved.find(key);
  if (unsaved == domain.unsaved.end()) return stored;
  const auto& [value, isStorable, base] = unsaved->second;
  return domain.state == Domain::State::Unreadable ? value : mergedValue(base, value, stored, Precedence::Theirs);
}

bool FilePreferences::wasRead(std::string_view domainName) const {
  const auto domain = domains_.find(domainName);
  return domain == domains_.end() || domain->second.state != Domain::State::Unreadable;
}

void FilePreferences::setAppValue(std::string_view key, const std::optional<Value>& value,
                                  std::string_view domainName) {
  PreferenceChange change{.key = std::string(key), .value = value};
  if (transaction_ && transaction_->domain == domainName) {
    change.merges = true;
    change.base = transaction_->base.value(key);
  }
  write(domainName, {std::move(change)});
}

void FilePreferences::appSynchronize(std::string_view domainName) {
  // What is written is on the device; what could not be written gets one more chance.
  Domain& domain = domainNamed(domainName);
  if (domain.hasUnsaved()) write(domainName, {});
}

std::optional<WrittenVersion> FilePreferences::write(std::string_view domainName,
                                                     const std::vector<PreferenceChange>& changes) {
  Domain& domain = domainNamed(domainName);
  std::optional<StoreTrouble> trouble;
  bool isStorable = true;
  try {
    return store(domain, withUnsaved(domain, changes));
  } catch (const FileError& error) {
    trouble = {StoreTrouble::Kind::Write, error.file(), error.cause()};
  } catch (const PropertyListError& error) {
    isStorable = false;
    const std::string what = changes.size() == 1 ? "the value of " + changes.front().key : "a value";
    trouble = {StoreTrouble::Kind::Write, root_.hostPath(domain.path).string(),
               what + " can't be stored: " + error.what()};
  } catch (const std::bad_alloc&) {
    trouble = {StoreTrouble::Kind::Write, root_.hostPath(domain.path).string(), errorText(ENOMEM)};
  }
  for (const PreferenceChange& change : changes) keepAside(domain, change, isStorable);
  // What a retry still can't write is known.
  if (!changes.empty() || domain.writeTrouble != trouble) {
    domain.writeTrouble = trouble;
    report(*trouble);
  }
  return std::nullopt;
}

void FilePreferences::adopt(std::string_view domainName, const WrittenVersion& written) {
  Domain& domain = domainNamed(domainName);
  const bool isNext = domain.version.has_value() == written.replaced.has_value() &&
                      (!domain.version || domain.version->hasSameContents(*written.replaced));
  const bool isKnown = domain.state == Domain::State::Whole || domain.state == Domain::State::Missing;
  if (!isNext || !isKnown) return;
  FileDescriptor handle(::fcntl(written.handle.get(), F_DUPFD_CLOEXEC, 3));
  if (!handle) return;
  domain.entries = written.entries;
  ++domain.generation;
  domain.handle = std::move(handle);
  domain.hash = written.hash;
  become(domain, Domain::State::Whole, {}, {});
  domain.version = written.version;
  domain.mayChangeUnseen = written.version.age() < kFileClockTick;
}

FilePreferences::Transaction::Transaction(FilePreferences& preferences, std::string_view domainName)
    : preferences_(preferences) {
  Domain& domain = preferences.domainNamed(domainName);
  try {
    const DomainPlace place = preferences.placeOf(domain);
    preferences.transaction_.emplace(domain.name, DomainLock(place, preferences.options_.lockLimit), domain.entries);
  } catch (const FileError& error) {
    preferences.transaction_.emplace(domain.name, error, domain.entries);
  }
}

void FilePreferences::Transaction::beginAgain() {
  auto& transaction = preferences_.transaction_;
  if (transaction) transaction->base = preferences_.domainNamed(transaction->domain).entries;
}

std::uint64_t FilePreferences::generation(std::string_view domainName) {
  Domain& domain = domainNamed(domainName);
  refresh(domain);
  return domain.generation;
}

bool FilePreferences::Domain::hasUnsaved() const {
  return std::ranges::any_of(unsaved, [](const auto& entry) { return entry.second.isStorable; });
}

bool FilePreferences::hasUnsaved() const {
  return std::ranges::any_of(domains_, [](const auto& domain) { return domain.second.hasUnsaved(); });
}

bool FilePreferences::retryUnsaved() {
  for (auto& [name, domain] : domains_) {
    if (domain.hasUnsaved()) write(name, {});
  }
  return !hasUnsaved();
}

std::optional<StoreTrouble> FilePreferences::readTrouble(std::string_view domainName) {
  Domain& domain = domainNamed(domainName);
  refresh(domain);
  if (domain.state != Domain::State::Corrupt && domain.state != Domain::State::Unreadable) return std::nullopt;
  return domain.trouble;
}

std::vector<StoreTrouble> FilePreferences::takeTroubles() {
  return std::exchange(troubles_, {});
}

FilePreferences::Domain& FilePreferences::domainNamed(std::string_view name) {
  const auto known = domains_.find(name);
  if (known != domains_.end()) return known->second;
  Domain& domain = domains_[std::string(name)];
  domain.name = name;
  domain.path = pathOf(name);
  return domain;
}

DomainPlace FilePreferences::placeOf(const Domain& domain) const {
  return {root_.makePlaceForWriting(domain.path), root_.hostPath(domain.path)};
}

// Reading.

/// Brings `entries` up to what the file holds. Never throws a FileError: what can't be read is a state.
void FilePreferences::refresh(Domain& domain) {
  const std::filesystem::path file = root_.hostPath(domain.path);
  try {
    if (!isDomainName(domain.name)) throw FileError(file, "no domain can have this name");
    if (!std::exchange(domain.isCleaned, true)) {
      if (auto place = root_.placeForWriting(domain.path)) removeLeftovers({*std::move(place), file});
    }
    std::optional<FileDescriptor> opened = root_.openForReading(domain.path);
    if (!opened) {
      if (domain.state != Domain::State::Missing) ++domain.generation;
      domain.entries = PropertyListDictionary();
      domain.version.reset();
      domain.handle = FileDescriptor();
      become(domain, Domain::State::Missing, {}, {});
      return;
    }
    if (domain.version && !domain.mayChangeUnseen && versionOf(opened->get(), file) == domain.version) return;
    load(domain, *std::move(opened));
  } catch (const FileError& error) {
    // What was read before stays: it is the last that is known.
    domain.version.reset();
    domain.handle = FileDescriptor();
    become(domain, Domain::State::Unreadable, file.string(), error.cause());
  }
}

void FilePreferences::load(Domain& domain, FileDescriptor opened) {
  const std::filesystem::path file = root_.hostPath(domain.path);
  struct stat status{};
  if (retried([&] { return ::fstat(opened.get(), &status); }) != 0) throwErrno(file);
  if (!S_ISREG(status.st_mode)) throw FileError(file, "is not a regular file");
  // Taken before the bytes: a change while they are read shows as another version the next time.
  const FileVersion version(status);
  const bool mayChangeUnseen = version.age() < kFileClockTick;
  const std::optional<std::string> bytes = readWhole(opened.get(), kMaxPropertyListBytes, file);
  const std::size_t hash = bytes ? std::hash<std::string>()(*bytes) : 0;
  const bool isSame = bytes && domain.version && domain.state == Domain::State::Whole && hash == domain.hash &&
                      status.st_size == domain.version->size;
  if (!isSame) {
    // Where this fails half-way the file is read again.
    domain.version.reset();
    ++domain.generation;
    try {
      if (!bytes) checkPropertyListSize(kMaxPropertyListBytes + 1);
      domain.entries = PropertyListDictionary(*bytes);
      become(domain, Domain::State::Whole, {}, {});
    } catch (const PropertyListError& error) {
      if (recover(domain)) {
        become(domain, Domain::State::Recovered, file.string(), error.what());
      } else {
        domain.entries = PropertyListDictionary();
        become(domain, Domain::State::Corrupt, file.string(), error.what());
      }
    }
  }
  domain.version = version;
  domain.mayChangeUnseen = mayChangeUnseen;
  domain.hash = hash;
  domain.handle = std::move(opened);
}

/// Reads the version that a former release kept in the place of a file that is torn; false where there is none that is
/// whole.
bool FilePreferences::recover(Domain& domain) {
  const std::filesystem::path file = root_.hostPath(domain.path);
  std::optional<ConfinedFolder::Place> found = root_.placeForWriting(domain.path);
  if (!found) return false;
  const DomainPlace place{*std::move(found), file};
  constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  const std::string name = place.flushedName();
  const FileDescriptor kept(retried([&] { return ::openat(place.folder(), name.c_str(), kFlags); }));
  if (!kept) {
    if (errno == ENOENT || errno == ELOOP) return false;
    // It may well be there: taking the domain for empty would lose it with the next write.
    throwErrno(file, "can't open " + name);
  }
  try {
    const std::optional<std::string> bytes = readWhole(kept.get(), kMaxPropertyListBytes, file);
    if (!bytes) return false;
    domain.entries = PropertyListDictionary(*bytes);
    return true;
  } catch (const PropertyListError&) {
    return false;
  }
}

void FilePreferences::become(Domain& domain, Domain::State state, const std::string& file, const std::string& cause) {
  const StoreTrouble::Kind kind = state == Domain::State::Recovered ? StoreTrouble::Kind::Recovered
                                  : state == Domain::State::Corrupt ? StoreTrouble::Kind::Corrupt
                                                                    : StoreTrouble::Kind::Unreadable;
  const StoreTrouble trouble{kind, file, cause};
  const bool isNew = domain.state != state || domain.trouble != trouble;
  domain.state = state;
  domain.trouble = trouble;
  const bool isTrouble = state != Domain::State::Missing && state != Domain::State::Whole;
  if (isNew && isTrouble) report(trouble);
}

// Writing.

/// The changes of a write, with those that earlier writes could not make.
std::vector<PreferenceChange> FilePreferences::withUnsaved(const Domain& domain,
                                                           const std::vector<PreferenceChange>& changes) const {
  std::vector<PreferenceChange> all;
  for (const auto& [key, unsaved] : domain.unsaved) {
    const bool isReplaced = std::ranges::any_of(changes, [&](const auto& change) { return change.key == key; });
    if (unsaved.isStorable && !isReplaced) all.push_back({key, unsaved.value, true, unsaved.base, Precedence::Theirs});
  }
  for (PreferenceChange change : changes) {
    if (const auto unread = domain.unread.find(change.key); unread != domain.unread.end() && !change.merges) {
      change.merges = true;
      change.base = unread->second;
    }
    // What is stored lacks the change before this one too.
    const auto unsaved = domain.unsaved.find(change.key);
    if (unsaved != domain.unsaved.end() && change.merges) change.base = unsaved->second.base;
    all.push_back(std::move(change));
  }
  return all;
}

/// Writes the changes, and returns once they are on the device. Throws where that fails.
WrittenVersion FilePreferences::store(Domain& domain, const std::vector<PreferenceChange>& changes) {
  if (!isDomainName(domain.name)) throw FileError(root_.hostPath(domain.path), "no domain can have this name");
  std::optional<DomainLock> lock;
  if (transaction_ && transaction_->domain == domain.name) {
    auto held = std::move(std::exchange(transaction_, std::nullopt)->lock);
    if (const auto* error = std::get_if<FileError>(&held)) throw *error;
    lock.emplace(std::get<DomainLock>(std::move(held)));
  }
  const DomainPlace place = placeOf(domain);
  std::optional<WrittenVersion> written;
  for (int attempt = 0; !written; ++attempt) {
    if (attempt == kMostAttempts) throw FileError(place.file, "other programs keep replacing it");
    if (!lock || !lock->isCurrent(place)) {
      lock.reset();
      lock.emplace(place, options_.lockLimit);
    }
    written = tryToStore(domain, place, *lock, changes);
  }
  if (!std::exchange(domain.hasDroppedFlushed, true)) removeFlushedVersion(place);
  lock->release();
  lock->flushFolders(place);

  for (const PreferenceChange& change : changes) {
    const auto unread = domain.unread.find(change.key);
    if (unread != domain.unread.end()) unread->second = change.value;
    domain.unsaved.erase(change.key);
  }
  if (domain.writeTrouble && domain.unsaved.empty()) {
    const std::string file = std::exchange(domain.writeTrouble, std::nullopt)->file;
    report({StoreTrouble::Kind::Resolved, file, {}});
  }
  return *std::move(written);
}

/// One attempt under the lock: reads the file again where it changed, makes the changes and replaces it. Returns
/// nothing where a program that takes no lock has changed it meanwhile. Throws where it fails.
std::optional<WrittenVersion> FilePreferences::tryToStore(Domain& domain, const DomainPlace& place,
                                                          const DomainLock& lock,
                                                          const std::vector<PreferenceChange>& changes) {
  // Another process may have written since the last read; the usual answer is no, and takes one call.
  std::optional<FileVersion> replaced = place.version();
  if (!replaced || replaced != domain.version || domain.mayChangeUnseen) {
    refresh(domain);
    replaced = place.version();
  }
  if (domain.state == Domain::State::Unreadable) throw FileError(domain.trouble.file, domain.trouble.cause);
  // What was read may lie under the other name of /var, which is not replaced. Any other file was put there since.
  if (replaced && replaced != domain.version) return std::nullopt;

  PropertyListDictionary entries = domain.entries;
  bool losesValue = false;
  for (const PreferenceChange& change : changes) {
    const std::optional<Value> former = domain.entries.value(change.key);
    std::optional<Value> value = change.value;
    if (change.merges) value = mergedValue(change.base, change.value, former, change.precedence);
    if (value && value->is<Dictionary>() && former && !former->is<Dictionary>()) losesValue = true;
    if (value) {
      entries.set(change.key, *value);
    } else {
      entries.remove(change.key);
    }
  }
  const bool isTorn = domain.state == Domain::State::Recovered || domain.state == Domain::State::Corrupt;
  const bool wasRecovered = domain.state == Domain::State::Recovered;
  const EncodedPropertyList encoded = entries.encode();
  NextVersion next(place, lock, encoded.bytes());

  std::optional<SafetyCopy> corruptCopy;
  std::optional<SafetyCopy> keptCopy;
  const std::string stem = domain.name + std::string(kExtension);
  if (isTorn || losesValue) {
    const std::optional<FileDescriptor> source = root_.openForReading(domain.path);
    if (!source) throw FileError(place.file, "was removed by another program");
    if (isTorn) corruptCopy.emplace(place, stem + ".corrupt", *source, place.name());
    if (losesValue && wasRecovered) {
      const std::string name = place.flushedName();
      const FileDescriptor recovered(
          retried([&] { return ::openat(place.folder(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC); }));
      if (!recovered) throwErrno(place.file, "can't open " + name);
      keptCopy.emplace(place, stem + ".kept", recovered, name);
    } else if (losesValue) {
      keptCopy.emplace(place, stem + ".kept", *source, place.name());
    }
  }
  if (!next.commit(replaced)) return std::nullopt;

  // The value is in the file for all. Where what follows fails, the file is read again.
  const StoreTrouble damage = domain.trouble;
  domain.version.reset();
  ++domain.generation;
  domain.entries = entries;
  domain.handle = next.takeHandle();
  domain.hash = std::hash<std::string_view>()(encoded.bytes());
  domain.state = Domain::State::Whole;
  domain.trouble = {};
  const auto keep = [&](std::optional<SafetyCopy>& copy, const std::string& cause) {
    if (!copy) return;
    copy->keep();
    report({StoreTrouble::Kind::KeptAside, copy->file().string(), cause});
  };
  keep(corruptCopy, damage.cause);
  keep(keptCopy, "a value that is no dictionary was replaced");
  const FileVersion version = versionOf(domain.handle.get(), place.file);
  domain.mayChangeUnseen = version.age() < kFileClockTick;
  domain.version = version;
  return WrittenVersion{.replaced = replaced,
                        .version = version,
                        .handle = FileDescriptor(::fcntl(domain.handle.get(), F_DUPFD_CLOEXEC, 3)),
                        .hash = domain.hash,
                        .entries = std::move(entries)};
}

/// Remembers a value that could not be written.
void FilePreferences::keepAside(Domain& domain, const PreferenceChange& change, bool isStorable) {
  refresh(domain);
  const auto [unsaved, isNew] = domain.unsaved.try_emplace(change.key);
  if (isNew) {
    const auto unread = domain.unread.find(change.key);
    unsaved->second.base = change.merges                   ? change.base
                           : unread != domain.unread.end() ? unread->second
                                                           : domain.entries.value(change.key);
  }
  unsaved->second.value = change.value;
  unsaved->second.isStorable = isStorable;
}

void FilePreferences::report(const StoreTrouble& trouble) {
  if (trouble.kind == StoreTrouble::Kind::Write || trouble.kind == StoreTrouble::Kind::Unreadable) {
    std::erase_if(troubles_, [&](const StoreTrouble& known) { return known.file == trouble.file; });
    troubles_.push_back(trouble);
  }
  if (listener_) listener_(trouble);
}

}  // namespace quellar::host::linux

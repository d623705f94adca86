// SPDX-License-Identifier: MIT
#include "host/linux/file_preferences.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <system_error>
#include <utility>

#include "host/linux/posix_call.h"

namespace quellar::host::linux {

using platform::Dictionary;
using platform::Value;

namespace {

constexpr std::string_view kPreferencesFolder = "/var/mobile/Library/Preferences/";
constexpr std::string_view kExtension = ".plist";

/// The clock of file times ticks this coarsely on kernels before 6.13; later ones tell any two changes apart.
constexpr std::chrono::milliseconds kFileClockTick{20};
/// The longest that another store of ours needs to flush what it wrote.
constexpr std::chrono::seconds kFlushedByNow{10};

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
  if (flusher_.joinable()) {
    flusher_.request_stop();
    flusher_.join();
  }
  // The thread has ended; nothing is shared any more.
  std::vector<std::string> names;
  for (const auto& [name, unflushed] : unflushed_) names.push_back(name);
  for (const std::string& name : names) flush(name, Insistence::UntilDone);
}

std::optional<Value> FilePreferences::copyAppValue(std::string_view key, std::string_view domainName) {
  Domain& domain = domainNamed(domainName);
  refresh(domain);
  if (const auto unsaved = domain.unsaved.find(key); unsaved != domain.unsaved.end()) {
    if (!isSuperseded(domain, key, unsaved->second)) return unsaved->second.value;
    domain.unsaved.erase(unsaved);
  }
  std::optional<Value> value = domain.entries.value(key);
  if (domain.state == Domain::State::Unreadable && !value) domain.readBlind.emplace(key);
  return value;
}

void FilePreferences::setAppValue(std::string_view key, const std::optional<Value>& value,
                                  std::string_view domainName) {
  Domain& domain = domainNamed(domainName);
  try {
    store(domain, key, value);
  } catch (const FileError& error) {
    keepAside(domain, key, value, true);
    report({StoreTrouble::Kind::Write, error.file(), error.cause()});
  } catch (const PropertyListError& error) {
    keepAside(domain, key, value, false);
    report({StoreTrouble::Kind::Write, root_.hostPath(domain.path).string(),
            "the value of " + std::string(key) + " can't be stored: " + error.what()});
  }
}

void FilePreferences::appSynchronize(std::string_view domainName) {
  const std::string name(domainName);
  {
    const std::lock_guard guard(mutex_);
    if (!unflushed_.contains(name)) return;
  }
  flush(name, Insistence::UntilDone);
}

std::optional<StoreTrouble> FilePreferences::readTrouble(std::string_view domainName) {
  Domain& domain = domainNamed(domainName);
  refresh(domain);
  if (domain.state != Domain::State::Corrupt && domain.state != Domain::State::Unreadable) return std::nullopt;
  return domain.trouble;
}

std::vector<StoreTrouble> FilePreferences::takeWriteTroubles() {
  const std::lock_guard guard(mutex_);
  return std::exchange(writeTroubles_, {});
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
      domain.entries = PropertyListDictionary();
      domain.version.reset();
      domain.handle = FileDescriptor();
      become(domain, Domain::State::Missing, {}, {});
      return;
    }
    const FileVersion now = versionOf(opened->get(), file);
    if (domain.version && !domain.mayChangeUnseen) {
      if (now == domain.version) return;
      if (isOnlyRelabelled(domain, now)) {
        domain.version = now;
        return;
      }
    }
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
  domain.version = FileVersion(status);
  domain.mayChangeUnseen = domain.version->age() < kFileClockTick;
  domain.isOurs = false;
  const std::optional<std::string> bytes = readWhole(opened.get(), kMaxPropertyListBytes, file);
  domain.handle = std::move(opened);
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

/// Reads the last flushed version in the place of a file that is torn; false where there is none that is whole. A file
/// that was not torn by a power cut but written over in place is the flushed version itself, and stays corrupt.
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
  const StoreTrouble::Kind kind =
      state == Domain::State::Recovered ? StoreTrouble::Kind::Recovered : StoreTrouble::Kind::Read;
  const StoreTrouble trouble{kind, file, cause};
  const bool isNew = domain.state != state || domain.trouble != trouble;
  domain.state = state;
  domain.trouble = trouble;
  const bool isTrouble = state != Domain::State::Missing && state != Domain::State::Whole;
  if (isNew && isTrouble) report(trouble);
}

/// Whether the file is the version that was read, and only got its second name since.
bool FilePreferences::isOnlyRelabelled(const Domain& domain, const FileVersion& now) {
  const std::lock_guard guard(mutex_);
  const auto flushed = flushed_.find(domain.name);
  return flushed != flushed_.end() && flushed->second.before == domain.version && flushed->second.after == now;
}

/// Whether another process changed the key since its write failed here: that is the newer write.
bool FilePreferences::isSuperseded(const Domain& domain, std::string_view key, const Unsaved& unsaved) {
  const bool isReadable = domain.state != Domain::State::Unreadable;
  return unsaved.wasReadable && isReadable && domain.entries.value(key) != unsaved.stored;
}

// Writing.

void FilePreferences::store(Domain& domain, std::string_view key, const std::optional<Value>& value) {
  if (!isDomainName(domain.name)) throw FileError(root_.hostPath(domain.path), "no domain can have this name");
  const DomainPlace place = placeOf(domain);
  const DomainLock lock(place, options_.lockLimit);

  // Another process may have written since the last read; the usual answer is no, and takes one call.
  std::optional<FileVersion> replaced = place.version();
  if (!replaced || replaced != domain.version || domain.mayChangeUnseen) {
    refresh(domain);
    replaced = place.version();
  }
  if (domain.state == Domain::State::Unreadable) throw FileError(domain.trouble.file, domain.trouble.cause);

  // What this write is to change, with what earlier ones could not.
  std::map<std::string, std::optional<Value>, std::less<>> changes;
  for (const auto& [unsavedKey, unsaved] : domain.unsaved) {
    if (unsaved.isStorable && !isSuperseded(domain, unsavedKey, unsaved)) changes[unsavedKey] = unsaved.value;
  }
  changes[std::string(key)] = value;

  bool losesValue = false;
  for (const auto& [changedKey, changed] : changes) {
    const bool isDictionary = changed && changed->is<Dictionary>();
    const bool wasReadBlind = domain.readBlind.contains(changedKey);
    if (!isDictionary && !wasReadBlind) continue;
    const std::optional<Value> former = domain.entries.value(changedKey);
    if (former && (wasReadBlind || !former->is<Dictionary>())) losesValue = true;
  }

  // From here on `entries` is ahead of the file; where the write fails it is read anew.
  struct Rollback {
    Domain& domain;
    bool isDone = false;
    ~Rollback() {
      if (!isDone) domain.version.reset();
    }
  } rollback{domain};
  for (const auto& [changedKey, changed] : changes) {
    if (changed) {
      domain.entries.set(changedKey, *changed);
    } else {
      domain.entries.remove(changedKey);
    }
  }
  const EncodedPropertyList encoded = domain.entries.encode();

  // The file may lie under the other name of /var, and is not replaced then.
  const bool replacesWhatWasRead = replaced && domain.version && replaced->isSameFile(*domain.version);
  if (replacesWhatWasRead && domain.state == Domain::State::Whole && !domain.isOurs) {
    // A version of another writer's, to which a power cut must be able to go back. Where it is young, that writer is
    // just about to flush it.
    const std::optional<FileVersion> kept = versionAt(place.folder(), place.flushedName(), place.file);
    if (!kept || (!kept->isSameFile(*replaced) && replaced->age() > kFlushedByNow)) flushLockedDomainFile(place);
  }

  NextVersion next(place, encoded.bytes());
  std::optional<SafetyCopy> corruptCopy;
  std::optional<SafetyCopy> keptCopy;
  const std::string stem = domain.name + std::string(kExtension);
  const bool isTorn = domain.state == Domain::State::Recovered || domain.state == Domain::State::Corrupt;
  if (isTorn || losesValue) {
    const std::optional<FileDescriptor> source = root_.openForReading(domain.path);
    if (!source) throw FileError(place.file, "was removed by another program");
    if (isTorn) corruptCopy.emplace(place, stem + ".corrupt", *source, place.name());
    if (losesValue && domain.state == Domain::State::Recovered) {
      const std::string name = place.flushedName();
      const FileDescriptor recovered(
          retried([&] { return ::openat(place.folder(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC); }));
      if (!recovered) throwErrno(place.file, "can't open " + name);
      keptCopy.emplace(place, stem + ".kept", recovered, name);
    } else if (losesValue) {
      keptCopy.emplace(place, stem + ".kept", *source, place.name());
    }
  }
  next.commit();
  if (corruptCopy) corruptCopy->keep();
  if (keptCopy) keptCopy->keep();

  // The value is in the file for all; what fails from here on is told, but does not undo it.
  rollback.isDone = true;
  domain.handle = next.takeHandle();
  domain.state = Domain::State::Whole;
  domain.trouble = {};
  domain.isOurs = true;
  domain.mayChangeUnseen = false;
  std::erase_if(domain.unsaved, [&](const auto& unsaved) { return unsaved.second.isStorable || unsaved.first == key; });
  for (const auto& [changedKey, changed] : changes) domain.readBlind.erase(changedKey);
  noteUnflushed(domain);
  domain.version.reset();
  domain.version = versionOf(domain.handle.get(), place.file);
}

/// Remembers a value that could not be written.
void FilePreferences::keepAside(Domain& domain, std::string_view key, const std::optional<Value>& value,
                                bool isStorable) {
  refresh(domain);
  Unsaved unsaved{value, isStorable, domain.state != Domain::State::Unreadable, std::nullopt};
  if (unsaved.wasReadable) unsaved.stored = domain.entries.value(key);
  domain.unsaved.insert_or_assign(std::string(key), std::move(unsaved));
}

void FilePreferences::report(const StoreTrouble& trouble) {
  if (trouble.kind == StoreTrouble::Kind::Write) {
    const std::lock_guard guard(mutex_);
    std::erase_if(writeTroubles_, [&](const StoreTrouble& known) { return known.file == trouble.file; });
    writeTroubles_.push_back(trouble);
  }
  if (listener_) listener_(trouble);
}

// Flushing.

void FilePreferences::noteUnflushed(const Domain& domain) {
  const auto now = std::chrono::steady_clock::now();
  const std::lock_guard guard(mutex_);
  const bool wasIdle = isFlusherIdle();
  Unflushed& unflushed = unflushed_.try_emplace(domain.name, Unflushed{now, now, 0, false}).first->second;
  if (unflushed.hasFailed) unflushed.firstWrite = now;
  unflushed.hasFailed = false;
  unflushed.due = std::min(now + options_.flushDelay, unflushed.firstWrite + 4 * options_.flushDelay);
  ++unflushed.writes;
  if (!flusher_.joinable()) {
    try {
      flusher_ = std::jthread([this](const std::stop_token& stop) { runFlushes(stop); });
    } catch (const std::system_error&) {
      // The system has no thread left. The next write asks again; synchronize and the end flush without one.
      return;
    }
  }
  // A thread that waits for a time looks up what is due when that time has come.
  if (wasIdle) wake_.notify_one();
}

/// Whether there is nothing that the flushing thread is to do by itself. Needs the mutex.
bool FilePreferences::isFlusherIdle() const {
  return std::all_of(unflushed_.begin(), unflushed_.end(), [](const auto& entry) { return entry.second.hasFailed; });
}

/// Flushes a domain on the calling thread, and notes how it went.
void FilePreferences::flush(const std::string& name, Insistence insistence) {
  std::uint64_t writes = 0;
  {
    const std::lock_guard guard(mutex_);
    writes = unflushed_[name].writes;
  }
  const std::string path = pathOf(name);
  std::optional<StoreTrouble> trouble;
  Flush flushed;
  try {
    if (auto found = root_.placeForWriting(path)) {
      const DomainPlace place{*std::move(found), root_.hostPath(path)};
      if (insistence == Insistence::TryOnce) {
        flushed = tryToFlushDomainFile(place, options_.lockLimit);
      } else {
        flushed.version = flushDomainFile(place, options_.lockLimit);
      }
    }
  } catch (const FileError& error) {
    trouble = {StoreTrouble::Kind::Write, error.file(), error.cause()};
  }
  {
    const std::lock_guard guard(mutex_);
    if (flushed.version) flushed_[name] = *flushed.version;
    const auto unflushed = unflushed_.find(name);
    if (unflushed != unflushed_.end() && flushed.wasReplaced) {
      // Holding the writers up until the device has taken it would hold the panel up.
      unflushed->second.firstWrite = std::chrono::steady_clock::now();
      unflushed->second.due = unflushed->second.firstWrite + options_.flushDelay;
    } else if (unflushed != unflushed_.end() && unflushed->second.writes == writes) {
      if (trouble) {
        unflushed->second.hasFailed = true;
      } else {
        unflushed_.erase(unflushed);
      }
    }
  }
  if (trouble) report(*trouble);
}

void FilePreferences::runFlushes(const std::stop_token& stop) {
  std::unique_lock guard(mutex_);
  while (!stop.stop_requested()) {
    std::map<std::string, Unflushed>::const_iterator next = unflushed_.end();
    for (auto entry = unflushed_.cbegin(); entry != unflushed_.cend(); ++entry) {
      if (entry->second.hasFailed) continue;
      if (next == unflushed_.end() || entry->second.due < next->second.due) next = entry;
    }
    if (next == unflushed_.end()) {
      wake_.wait(guard, stop, [this] { return !isFlusherIdle(); });
    } else if (const auto due = next->second.due; due > std::chrono::steady_clock::now()) {
      // A later write may move it; what is due is looked up again then.
      wake_.wait_until(guard, stop, due, [] { return false; });
    } else {
      const std::string name = next->first;
      guard.unlock();
      flush(name, Insistence::TryOnce);
      guard.lock();
    }
  }
}

}  // namespace quellar::host::linux

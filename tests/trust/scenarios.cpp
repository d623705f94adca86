// SPDX-License-Identifier: MIT
#include "scenarios.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <sstream>
#include <system_error>

#include "host/linux/property_list/property_list.h"

namespace quellar::tests {

using host::linux::DeviceRoot;
using host::linux::FilePreferences;
using platform::Dictionary;
using platform::Value;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace {

void writeBytes(const fs::path& file, std::string_view bytes) {
  fs::create_directories(file.parent_path());
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!stream.flush()) throw std::runtime_error("can't write " + file.string());
}

std::string encoded(const Dictionary& dictionary) {
  return std::string(host::linux::encodePropertyList(dictionary).bytes());
}

Dictionary withOthers(const std::string& key, const Value& value) {
  Dictionary all = otherKeys();
  all.insert_or_assign(key, value);
  return all;
}

int writeAndSynchronize(const WrittenRoot& root, int output) {
  WritingTask task;
  task.root = root.root;
  task.first = kLatter;
  task.synchronizes = true;
  task.output = output;
  return runWriting(task);
}

int firstAllowed(bool isDone) {
  return isDone ? kLatter : kFormer;
}

/// The file after the next program has read and written: exactly these other names, each one with these bytes.
std::string faultsOfCopies(const WrittenRoot& root, const std::vector<std::string>& names, std::string_view bytes) {
  std::ostringstream faults;
  std::vector<std::string> expected = {kTrustFile};
  for (const std::string& name : names) expected.push_back(kTrustFile + name);
  expected.push_back(std::string(kTrustFile) + ".lock");
  const std::vector<std::string> found = filesIn(root.preferences());
  if (found != expected) {
    faults << "the files are:";
    for (const std::string& name : found) faults << ' ' << name;
    faults << "; ";
  }
  for (const std::string& name : names) {
    if (!fs::exists(root.beside(name)) || bytesOf(root.beside(name)) != bytes) {
      faults << name << " is not the former file; ";
    }
  }
  return faults.str();
}

/// A program that starts next, reads `key`, which must be one of `allowed`, and writes what the writer wrote.
std::string faultsOfNext(const WrittenRoot& root, const std::vector<std::optional<Value>>& allowed) {
  std::ostringstream faults;
  const host::linux::FileDescriptor lock(::open(root.beside(".lock").c_str(), O_RDONLY | O_CLOEXEC));
  if (lock && ::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) faults << "the lock is held; ";
  if (lock) ::flock(lock.get(), LOCK_UN);
  FilePreferences next{DeviceRoot(root.root)};
  const std::string key = WritingTask().key;
  const std::optional<Value> value = next.copyAppValue(key, kTrustDomain);
  bool isAllowed = false;
  for (const std::optional<Value>& each : allowed) isAllowed = isAllowed || value == each;
  if (!isAllowed) faults << "the value is another one; ";
  if (root.hasTemporaryFile()) faults << "a temporary file is left after the first read; ";
  next.setAppValue(key, numberedValue(kLatter), kTrustDomain);
  for (const auto& trouble : next.takeTroubles()) faults << trouble.cause << "; ";
  return faults.str();
}

std::vector<Scenario> makeScenarios() {
  const std::string key = WritingTask().key;
  const auto flushedFaults = [](const WrittenRoot& root, bool isDone) {
    return root.faultsAfterDeath(firstAllowed(isDone), kLatter);
  };
  std::vector<Scenario> all;
  all.push_back({.name = "AFlushedFile",
                 .prepare = [](const WrittenRoot& root) { root.makeWith(kFormer); },
                 .write = writeAndSynchronize,
                 .faults = flushedFaults});

  all.push_back({.name = "AnEmptyDeviceRoot",
                 .prepare = [](const WrittenRoot& root) { root.clear(); },
                 .write = writeAndSynchronize,
                 .faults =
                     [](const WrittenRoot& root, bool isDone) {
                       std::vector<std::optional<Value>> allowed = {numberedValue(kLatter)};
                       if (!isDone) allowed.emplace_back();
                       const std::string faults = faultsOfNext(root, allowed);
                       return faults + faultsOfCopies(root, {}, {});
                     }});

  all.push_back({.name = "AFileOfAnotherProgram",
                 .prepare =
                     [key](const WrittenRoot& root) {
                       root.clear();
                       writeBytes(root.file(), encoded(withOthers(key, numberedValue(kFormer))));
                     },
                 .write = writeAndSynchronize,
                 .faults = flushedFaults});

  static constexpr std::string_view kGarbage = "this is no property list";
  all.push_back({.name = "ACorruptFile",
                 .prepare =
                     [](const WrittenRoot& root) {
                       root.clear();
                       writeBytes(root.file(), kGarbage);
                     },
                 .write = writeAndSynchronize,
                 .faults =
                     [](const WrittenRoot& root, bool isDone) {
                       std::vector<std::optional<Value>> allowed = {numberedValue(kLatter)};
                       if (!isDone) allowed.emplace_back();
                       const std::string faults = faultsOfNext(root, allowed);
                       return faults + faultsOfCopies(root, {".corrupt-1"}, kGarbage);
                     }});

  const std::string odd = encoded(withOthers(key, Value("no dictionary")));
  all.push_back({.name = "AValueThatIsNoDictionary",
                 .prepare =
                     [odd](const WrittenRoot& root) {
                       root.clear();
                       writeBytes(root.file(), odd);
                     },
                 .write = writeAndSynchronize,
                 .faults =
                     [odd](const WrittenRoot& root, bool isDone) {
                       std::vector<std::optional<Value>> allowed = {numberedValue(kLatter)};
                       if (!isDone) allowed.emplace_back("no dictionary");
                       const std::string faults = faultsOfNext(root, allowed);
                       return faults + faultsOfCopies(root, {".kept-1"}, odd);
                     }});

  all.push_back({.name = "ATornFile",
                 .prepare =
                     [](const WrittenRoot& root) {
                       root.makeWith(kFormer);
                       // As a former release leaves it after a power cut: its file is torn, the version that it kept is
                       // not.
                       fs::rename(root.file(), root.beside(".flushed"));
                       writeBytes(root.file(), kGarbage);
                     },
                 .write = writeAndSynchronize,
                 .faults =
                     [](const WrittenRoot& root, bool isDone) {
                       std::vector<std::optional<Value>> allowed = {numberedValue(kLatter)};
                       if (!isDone) allowed.emplace_back(numberedValue(kFormer));
                       std::string faults = faultsOfNext(root, allowed);
                       faults += faultsOfCopies(root, {".corrupt-1"}, kGarbage);
                       for (const auto& [other, value] : otherKeys()) {
                         FilePreferences next{DeviceRoot(root.root)};
                         if (next.copyAppValue(other, kTrustDomain) != value) faults += other + " is lost; ";
                       }
                       return faults;
                     }});
  return all;
}

}  // namespace

void PrintTo(const Scenario& scenario, std::ostream* stream) {
  *stream << scenario.name;
}

const std::vector<Scenario>& scenarios() {
  static const std::vector<Scenario> all = makeScenarios();
  return all;
}

Pipe::Pipe() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
    throw std::system_error(errno, std::generic_category(), "pipe2");
  reading = host::linux::FileDescriptor(ends[0]);
  writing = host::linux::FileDescriptor(ends[1]);
}

std::string Pipe::contents() const {
  std::string all;
  std::array<char, 4096> part{};
  while (true) {
    const ssize_t got = ::read(reading.get(), part.data(), part.size());
    if (got <= 0) return all;
    all.append(part.data(), static_cast<std::size_t>(got));
  }
}

}  // namespace quellar::tests

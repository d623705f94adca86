// SPDX-License-Identifier: MIT
#include "writing.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "host/linux/file_descriptor.h"
#include "host/linux/property_list/property_list.h"

namespace quellar::tests {

using host::linux::DeviceRoot;
using host::linux::FilePreferences;
using host::linux::StoreTrouble;
using platform::Dictionary;
using platform::Value;
namespace fs = std::filesystem;

namespace {

void tell(int output, const std::string& line) {
  const std::string bytes = line + "\n";
  if (::write(output, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) ::_exit(3);
}

}  // namespace

int runWriting(const WritingTask& task) {
  bool isTroubled = false;
  const auto listener = [&](const StoreTrouble& trouble) {
    isTroubled = isTroubled || trouble.kind == StoreTrouble::Kind::Write;
    tell(task.output, "trouble " + trouble.file + ": " + trouble.cause);
  };
  auto store = std::make_unique<FilePreferences>(DeviceRoot(task.root), listener, task.options);
  for (int number = task.first; number < task.first + task.count; ++number) {
    if (std::chrono::steady_clock::now() >= task.until) break;
    store->setAppValue(task.key, numberedValue(number), kTrustDomain);
    tell(task.output, "set " + std::to_string(number));
    if (!task.synchronizes) continue;
    store->appSynchronize(kTrustDomain);
    tell(task.output, "synchronized " + std::to_string(number));
  }
  store.reset();
  tell(task.output, "ended 1");
  return isTroubled ? 1 : 0;
}

Value numberedValue(int number) {
  return Value(Dictionary{{"number", number}, {"text", std::string(static_cast<std::size_t>(number % 7) * 300, 'x')}});
}

std::optional<int> numberOf(const std::optional<Value>& value) {
  const Dictionary* dictionary = value ? value->as<Dictionary>() : nullptr;
  if (dictionary == nullptr || !dictionary->contains("number")) return std::nullopt;
  const std::int64_t* number = dictionary->at("number").as<std::int64_t>();
  if (number == nullptr || *value != numberedValue(static_cast<int>(*number))) return std::nullopt;
  return static_cast<int>(*number);
}

const Dictionary& otherKeys() {
  static const Dictionary keys = {{"Dock_Defaults", Dictionary{{"usesCustomDockBlur", true}, {"dockAlpha", 0.25}}},
                                  {"StatusBar_Defaults", Dictionary{{"disablesBatterySTBIcon", false}}},
                                  {"alone", "text"}};
  return keys;
}

std::optional<int> lastOf(std::string_view output, std::string_view word) {
  std::optional<int> last;
  while (output.find('\n') != std::string_view::npos) {
    const std::string_view line = output.substr(0, output.find('\n'));
    output.remove_prefix(line.size() + 1);
    if (!line.starts_with(word) || line.substr(word.size(), 1) != " ") continue;
    int number = 0;
    const std::string_view digits = line.substr(word.size() + 1);
    if (std::from_chars(digits.data(), digits.data() + digits.size(), number).ec == std::errc()) last = number;
  }
  return last;
}

void WrittenRoot::clear() const {
  fs::remove_all(root);
}

bool WrittenRoot::hasTemporaryFile() const {
  if (!fs::exists(preferences())) return false;
  return std::ranges::any_of(filesIn(preferences()),
                             [](const std::string& name) { return name.find(".tmp") != std::string::npos; });
}

void WrittenRoot::makeWith(int number) const {
  clear();
  FilePreferences store{DeviceRoot(root)};
  for (const auto& [key, value] : otherKeys()) store.setAppValue(key, value, kTrustDomain);
  store.setAppValue(WritingTask().key, numberedValue(number), kTrustDomain);
  store.appSynchronize(kTrustDomain);
  if (!store.takeTroubles().empty()) throw std::runtime_error("can't write " + file().string());
}

std::string WrittenRoot::faultsAfterDeath(int first, int last) const {
  std::ostringstream faults;
  // Nobody may have to wait for a lock of the dead.
  if (const host::linux::FileDescriptor lock(::open(beside(".lock").c_str(), O_RDONLY | O_CLOEXEC)); lock) {
    if (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) faults << "the lock is held; ";
  }
  {
    FilePreferences next{DeviceRoot(root), [&](const StoreTrouble& trouble) { faults << trouble.cause << "; "; }};
    const std::optional<int> number = numberOf(next.copyAppValue(WritingTask().key, kTrustDomain));
    if (!number) {
      faults << "the value is gone; ";
    } else if (*number < first || *number > last) {
      faults << "the value is " << *number << ", not one of " << first << " to " << last << "; ";
    }
    for (const auto& [key, value] : otherKeys()) {
      if (next.copyAppValue(key, kTrustDomain) != value) faults << key << " is lost; ";
    }
    if (hasTemporaryFile()) faults << "a temporary file is left after the first read; ";
    next.setAppValue("next", Value(1), kTrustDomain);
    if (numberOf(next.copyAppValue(WritingTask().key, kTrustDomain)) != number) faults << "the next write lost it; ";
  }
  std::string names;
  for (const std::string& name : filesIn(preferences())) names += name.substr(std::string(kTrustFile).size()) + ",";
  if (names != ",.lock,") faults << "beside the file are: " << names << "; ";
  try {
    const Value whole = host::linux::parsePropertyList(bytesOf(file()));
    if (whole.as<Dictionary>() == nullptr || whole.as<Dictionary>()->size() != otherKeys().size() + 2) {
      faults << "the file holds other keys; ";
    }
  } catch (const std::exception& error) {
    faults << "the file: " << error.what() << "; ";
  }
  return faults.str();
}

fs::path quickFolder() {
  const fs::path memory = "/dev/shm";
  return ::access(memory.c_str(), W_OK | X_OK) == 0 ? memory : fs::temp_directory_path();
}

bool isLongForm() {
  const char* form = std::getenv("QUELLAR_TRUST");
  return form != nullptr && std::string_view(form) == "long";
}

std::string bytesOf(const fs::path& file) {
  const std::ifstream stream(file, std::ios::binary);
  if (!stream) throw std::runtime_error("can't read " + file.string());
  std::ostringstream bytes;
  bytes << stream.rdbuf();
  return bytes.str();
}

std::vector<std::string> filesIn(const fs::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename());
  std::ranges::sort(names);
  return names;
}

}  // namespace quellar::tests

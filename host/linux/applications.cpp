// SPDX-License-Identifier: MIT
#include "host/linux/applications.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "host/linux/collation.h"
#include "host/linux/file_descriptor.h"
#include "host/linux/posix_call.h"
#include "host/linux/utf8.h"

namespace quellar::host::linux {

namespace {

// A desktop entry with a hundred languages has some twenty kilobytes.
constexpr std::size_t kEntrySizeLimit = std::size_t{1024} * 1024;

struct Entry {
  bool isApplication = false;
  bool isHidden = false;
  std::string name;
};

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kSpace = " \t\r";
  const std::size_t begin = std::min(text.find_first_not_of(kSpace), text.size());
  text.remove_prefix(begin);
  return text.substr(0, text.find_last_not_of(kSpace) + 1);
}

std::string unescaped(std::string_view value) {
  std::string text;
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (value[i] != '\\' || i + 1 == value.size()) {
      text += value[i];
      continue;
    }
    switch (value[++i]) {
      case 's':
        text += ' ';
        break;
      case 'n':
        text += '\n';
        break;
      case 't':
        text += '\t';
        break;
      case 'r':
        text += '\r';
        break;
      case '\\':
        text += '\\';
        break;
      default:
        text += '\\';
        text += value[i];
    }
  }
  return text;
}

// What the group "Desktop Entry" says; nothing where there is no such group, or neither a name that can be shown nor a
// word that hides the entry.
std::optional<Entry> parseEntry(std::string_view text, const std::vector<std::string>& nameKeys) {
  Entry entry;
  bool inGroup = false;
  std::size_t bestName = nameKeys.size();
  while (!text.empty()) {
    const std::string_view line = trimmed(text.substr(0, text.find('\n')));
    text.remove_prefix(std::min(text.find('\n'), text.size() - 1) + 1);
    if (line.starts_with('[')) {
      if (inGroup) break;
      inGroup = line == "[Desktop Entry]";
      continue;
    }
    const std::size_t equals = line.find('=');
    if (!inGroup || line.starts_with('#') || equals == std::string_view::npos) continue;
    const std::string_view key = trimmed(line.substr(0, equals));
    const std::string_view value = trimmed(line.substr(equals + 1));
    if (key == "Type") {
      entry.isApplication = value == "Application";
    } else if (key == "Hidden" || key == "NoDisplay") {
      entry.isHidden = entry.isHidden || value == "true";
    } else if (key.starts_with("Name")) {
      const auto found = std::find(nameKeys.begin(), nameKeys.end(), key);
      const auto rank = static_cast<std::size_t>(found - nameKeys.begin());
      if (rank < bestName && !value.empty()) {
        bestName = rank;
        entry.name = unescaped(value);
      }
    }
  }
  if (!inGroup) return std::nullopt;
  // One that only hides another needs no name.
  if (!entry.isHidden && (entry.name.empty() || !isUtf8(entry.name))) return std::nullopt;
  return entry;
}

// The bytes of a regular file; nothing where it can't be read. A pipe is opened without waiting for its other side.
std::optional<std::string> contentsOf(const std::filesystem::path& file) {
  const FileDescriptor opened(
      retried([&] { return ::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }));
  struct stat status = {};
  if (!opened || ::fstat(opened.get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  try {
    return readWhole(opened.get(), kEntrySizeLimit, file);
  } catch (const FileError&) {
    return std::nullopt;
  }
}

// Collects the desktop entries of an "applications" folder by their ids. Earlier ones stay.
class Collector {
 public:
  Collector(std::map<std::string, Entry>& entries, const std::vector<std::string>& nameKeys)
      : entries_(entries), nameKeys_(nameKeys) {}

  void collect(const std::filesystem::path& folder, const std::string& prefix) {
    // A folder that a link leads back to is read once.
    struct stat status = {};
    if (::stat(folder.c_str(), &status) != 0 || !visited_.emplace(status.st_dev, status.st_ino).second) return;

    std::vector<std::filesystem::directory_entry> found;
    std::error_code error;
    for (std::filesystem::directory_iterator i(folder, error), end; !error && i != end; i.increment(error)) {
      found.push_back(*i);
    }
    // The order in which a folder lists its files is nobody's; two of them may have the same id.
    std::ranges::sort(found, {}, [](const auto& item) { return item.path(); });
    for (const std::filesystem::directory_entry& item : found) {
      const std::string name = item.path().filename().string();
      if (!isUtf8(name)) continue;
      if (item.is_directory(error)) {
        collect(item.path(), prefix + name + "-");
      } else if (name.ends_with(".desktop") && !entries_.contains(prefix + name)) {
        const std::optional<std::string> text = contentsOf(item.path());
        std::optional<Entry> entry = text ? parseEntry(*text, nameKeys_) : std::nullopt;
        if (entry) entries_.emplace(prefix + name, std::move(*entry));
      }
    }
  }

 private:
  std::map<std::string, Entry>& entries_;
  const std::vector<std::string>& nameKeys_;
  std::set<std::pair<dev_t, ino_t>> visited_;
};

}  // namespace

std::vector<std::filesystem::path> dataFolders(const Environment& environment) {
  std::vector<std::filesystem::path> folders;
  const std::filesystem::path home = environment("XDG_DATA_HOME").value_or("");
  if (home.is_absolute()) {
    folders.push_back(home);
  } else if (const std::filesystem::path user = environment("HOME").value_or(""); user.is_absolute()) {
    folders.push_back(user / ".local/share");
  }
  std::string list = environment("XDG_DATA_DIRS").value_or("");
  if (list.empty()) list = "/usr/local/share:/usr/share";
  for (std::size_t begin = 0; begin < list.size();) {
    const std::size_t end = std::min(list.find(':', begin), list.size());
    const std::filesystem::path folder = list.substr(begin, end - begin);
    if (folder.is_absolute()) folders.push_back(folder);
    begin = end + 1;
  }
  return folders;
}

DesktopApplications::DesktopApplications(std::vector<std::filesystem::path> dataFolders,
                                         const std::vector<std::string>& languages)
    : dataFolders_(std::move(dataFolders)), language_(languages.empty() ? "" : languages.front()) {
  for (const std::string& language : languages) {
    for (const std::string& variant : localeVariants(language)) nameKeys_.push_back("Name[" + variant + "]");
  }
  nameKeys_.emplace_back("Name");
}

std::vector<platform::Application> DesktopApplications::installedApplications() {
  std::map<std::string, Entry> entries;
  for (const std::filesystem::path& folder : dataFolders_) {
    Collector(entries, nameKeys_).collect(folder / "applications", "");
  }

  std::vector<platform::Application> applications;
  for (auto& [identifier, entry] : entries) {
    if (!entry.isApplication || entry.isHidden) continue;
    applications.push_back({.identifier = identifier, .name = std::move(entry.name)});
  }
  const Collation collation(language_);
  // The map gave them in the order of their ids, which stays for equal names.
  std::ranges::stable_sort(
      applications, [&](const auto& left, const auto& right) { return collation.compare(left.name, right.name) < 0; });
  return applications;
}

}  // namespace quellar::host::linux
